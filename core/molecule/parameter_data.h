// SPDX-License-Identifier: MIT
// The parameters of the method by atom type.
#pragma once

// Parameters of one atom type; zeros where a file has no record.
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

// The tables of the parameter files, T = AtomTypeCount; entry i is type i as an ordinary atom, T + i the same as a
// capping atom. Filled by ReadParameterFiles; they outlive the run's own arrays, and the process frees them by its end.
struct ParameterData {
    int AtomTypeCount = 0;                                 // at least 1 once read
    AtomTypeName* AtomTypeNames = nullptr;                 // [T] names in upper case
    AtomTypeParameters* ParameterFileShielding = nullptr;  // [2T] nmr_shft.abp
    AtomTypeParameters* ParameterFileCoupling = nullptr;   // [2T] nmr_cupl.abp
    NuclearConstants* CouplingConstants = nullptr;         // [2T] nmr_cupl.abp

    // The table in force: nmr/calculate_nmr_parameters.cpp sets it before each wavefunction.
    const AtomTypeParameters* ActiveParameters = nullptr;  // ParameterFileShielding or ParameterFileCoupling
    const char* ActiveParameterFile = "";                  // its file, for the listing
};
