// SPDX-License-Identifier: MIT
// Tests the parameters of the atoms of a run in one parameter table: a missing record shows as a Slater exponent of
// zero and ends the run, doubtful values draw warnings.
#include "ground/fatal_error.h"
#include "ground/run_state.h"
#include "molecule/element_tables.h"
#include "molecule/selected_atoms.h"
#include "wavefunction/prepare_system.h"

static const char* TypeName(const AtomRecord& atom) {
    return Run.Parameters.AtomTypeNames[atom.AtomType % Run.Parameters.AtomTypeCount].Text;
}

static void CheckExponent(const AtomRecord& atom, double exponent, const char* orbital, const char* fileName) {
    if (exponent <= 0.0) {
        FatalError(Message::AtomExponentNotPositive, atom.AtomIndex + 1, TypeName(atom), orbital, fileName);
    }
}

static void CheckEnergy(const AtomRecord& atom, double energy, const char* orbital, const char* fileName) {
    if (energy >= 0.0) {
        Warning(Message::AtomIonizationNotPositive, atom.AtomIndex + 1, TypeName(atom), orbital, fileName);
    }
}

static void CheckSlaterCondon(const AtomRecord& atom, double value, const char* constant, const char* fileName) {
    if (value <= 0.0) {
        Warning(Message::AtomSlaterCondonNotPositive, atom.AtomIndex + 1, TypeName(atom), constant, fileName);
    }
}

static void CheckSelectedAtom(const AtomRecord& atom, const AtomTypeParameters& parameters, const char* fileName) {
    CheckExponent(atom, parameters.SlaterExponentS, "s", fileName);
    CheckEnergy(atom, parameters.OrbitalEnergyS, "s", fileName);
    if (parameters.BondingParameter <= 0.0) {
        Warning(Message::AtomBondingNotPositive, atom.AtomIndex + 1, TypeName(atom), fileName);
    }
    if (atom.AtomicNumber > 2) {
        CheckExponent(atom, parameters.SlaterExponentP, "p", fileName);
        CheckEnergy(atom, parameters.OrbitalEnergyP, "p", fileName);
        if (Run.Options.SemiEmpiricalMethod == 2) {
            CheckSlaterCondon(atom, parameters.SlaterCondonG1, "G1(s,p)", fileName);
            CheckSlaterCondon(atom, parameters.SlaterCondonF2, "F2(p,p)", fileName);
        }
    }
    if (OrbitalCountTable[atom.AtomicNumber - 1] == 9) {
        CheckExponent(atom, parameters.SlaterExponentD, "d", fileName);
        CheckEnergy(atom, parameters.OrbitalEnergyD, "d", fileName);
    }
}

// The messages about a capping atom give its type as "-" and the name of the ordinary type.
static void CheckCappingOrbital(const AtomRecord& atom, double exponent, const char* orbital, const char* fileName) {
    if (exponent <= 0.0) {
        FatalError(Message::CappingExponentNotPositive, atom.AtomIndex + 1, "-", TypeName(atom), orbital, fileName);
    }
}

static void CheckCappingEnergy(const AtomRecord& atom, double energy, const char* orbital, const char* fileName) {
    if (energy >= 0.0) {
        Warning(Message::CappingIonizationNotPositive, atom.AtomIndex + 1, "-", TypeName(atom), orbital, fileName);
    }
}

static void CheckCappingAtom(const AtomRecord& atom, const AtomTypeParameters& parameters, const char* fileName) {
    CheckCappingOrbital(atom, parameters.SlaterExponentS, "s", fileName);
    CheckCappingEnergy(atom, parameters.OrbitalEnergyS, "s", fileName);
    if (parameters.BondingParameter <= 0.0) {
        Warning(Message::CappingBondingNotPositive, atom.AtomIndex + 1, "-", TypeName(atom), fileName);
    }
    CheckCappingOrbital(atom, parameters.SlaterExponentP, "p", fileName);
    CheckCappingEnergy(atom, parameters.OrbitalEnergyP, "p", fileName);
}

void CheckParameters(const AtomTypeParameters* table, const char* fileName) {
    for (int i = 0; i < Run.Molecule.AtomCount; ++i) {
        const AtomRecord& atom = Run.Molecule.AtomRecords[i];
        if (atom.SelectionState == 1 && atom.AtomicNumber > 0) {
            CheckExponent(atom, table[atom.AtomType].SlaterExponentS, "s", fileName);
        }
    }
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        const AtomRecord& atom = SelectedAtom(place);
        if (atom.SelectionState == -1) {
            CheckCappingAtom(atom, table[atom.AtomType], fileName);
        } else if (atom.AtomicNumber > 0) {
            CheckSelectedAtom(atom, table[atom.AtomType], fileName);
        }
    }
}
