// SPDX-License-Identifier: MIT
// The atom-type and parameter files of a parameter run: names of atom types, and one set of parameters for shielding
// and one for coupling.
#pragma once

// Parameters of one atom type. Filled by ReadParameterFiles; zeros where a file has no record.
struct AtomTypeParameters {
    double OrbitalEnergyS;       // negative of the mean of ionization potential and electron affinity, s, eV
    double OrbitalEnergyP;       // the same, p, eV
    double OrbitalEnergyD;       // the same, d, eV
    double SlaterExponentS;      // Slater exponent, s, 1/bohr
    double SlaterExponentP;      // the same, p, 1/bohr
    double SlaterExponentD;      // the same, d, 1/bohr
    double BondingParameter;     // bonding parameter, eV
    double SlaterCondonG1;       // Slater-Condon constant G1(s,p), Hartree
    double SlaterCondonF2;       // Slater-Condon constant F2(p,p), Hartree
    double IsolatedEnergyTndo1;  // energy of the isolated atom, TNDO/1, eV
    double IsolatedEnergyTndo2;  // the same, TNDO/2, eV
    double AtomHeat;             // heat of formation of the atom, kcal/mol
};

// The nuclear constants of one atom type.
struct NuclearConstants {
    double GFactor;   // printed as gA, gB; multiplied in the conversion to J
    double SDensity;  // density of the valence s orbital at the nucleus, printed as sA, sB; multiplied in K
};

// The name of an atom type: up to 3 characters in upper case.
struct AtomTypeName {
    char Text[5];
};

// Reads nmrtype.txt, nmr_shft.abp and nmr_cupl.abp of ParameterDirectory into AtomTypeCount, AtomTypeNames,
// ParameterFileShielding, ParameterFileCoupling and CouplingConstants of Run. Raises 24595 without types, 24596 for a
// file that can't be opened, 24576 without memory. Damaged records give no message: reading stops, zeros follow.
void ReadParameterFiles();

// Frees what the reader keeps while it reads: to be called where a stop has ended it.
void FreeParameterFileWork();
