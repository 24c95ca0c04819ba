// SPDX-License-Identifier: MIT
// Molecules for the tests of the wavefunction and of what follows it: put into Run by the real readers with the
// parameters of parameters/published/, so that single steps can be called; and the field of a density by plain loops.
#pragma once

#include "ground/run_state.h"
#include "tests/support/test_support.h"

#include <string>
#include <utility>
#include <vector>

struct MoleculeAtom {
    std::string Element;  // symbol, and name of the atom type; "Lp" for a lone pair
    double X, Y, Z;       // Angstrom
    double Charge = 0.0;  // elementary charges
};

// Atoms count from 1 in the lists.
struct Molecule {
    std::vector<MoleculeAtom> Atoms;
    std::vector<std::string> Options = {};  // lines of nmrparam.in; the method is TNDO/1 without one
    std::vector<int> NMRAtoms = {};         // none: all
    std::vector<int> QuantumAtoms = {};     // none: all, without a block
    std::vector<std::pair<int, int>> Bonds = {};
};

Molecule HydrogenMolecule(double distance);  // along z, Angstrom
Molecule HeliumHydride(double distance);     // HeH+, helium first
Molecule WaterMolecule();
Molecule MethaneMolecule();
Molecule FormaldehydeMolecule();
Molecule With(Molecule molecule, const std::vector<std::string>& options);

// A rotation about a slanted axis through the origin, no axis mapped on another.
void Rotate(const double* vector, double* rotated);
Molecule Rotated(const Molecule& molecule);

// The text of nmrparam.in.
std::string MoleculeInput(const Molecule& molecule);

// Folder of the parameter files, of the examples.
std::string ParameterFolder();
std::string ExampleFolder();

// Copies the parameter files of parameters/published/ into a directory.
void CopyParameterFiles(const std::string& directory);

// Reads and prepares a molecule as a run does, up to PrepareSystem, and puts the coupling table in force with its
// tables by orbital. The state is reset at the end of the scope.
struct LoadedMolecule {
    explicit LoadedMolecule(const Molecule& molecule);
    ~LoadedMolecule();
    LoadedMolecule(const LoadedMolecule&) = delete;
    LoadedMolecule& operator=(const LoadedMolecule&) = delete;
    std::string Log() const;  // as written so far
    void ClearLog() const;
    std::string Output() const;
    TemporaryDirectory Work;
};

// The first and the last step of LoadedMolecule: the readers, and the table in force.
void ReadMolecule(const std::string& directory, const Molecule& molecule);
void UseCouplingTable();

// Makes the table of the shielding the one in force instead, as the stage of the shielding does.
void UseShieldingTable();

// A whole run within the process: result file and log.
struct RunTexts {
    std::string Output;
    std::string Log;
};
RunTexts RunMolecule(const Molecule& molecule);

// The output file of a run that is refused.
std::string RefusalOf(const Molecule& molecule);

// Overlap, gamma and core Hamiltonian into CoreHamiltonian and GammaMatrix.
void BuildIntegrals();

// The square matrices of Run, as values.
std::vector<double> SquareOf(const double* matrix);
void SetSquare(double* matrix, const std::vector<double>& values);

// The parameters in force of a place of the list, free to be changed.
struct AtomTypeParameters& ParametersAt(int place);

// The field of the alpha electrons on top of CoreHamiltonian: from the two-electron integrals of the methods one by
// one, (mu nu|la si) of one atom and gamma between atoms, with the densities of both spins.
std::vector<double> PlainFock(const std::vector<double>& alpha, const std::vector<double>& beta);

// Half the sum of P (H + F), of a closed shell with the total density.
double PlainElectronicEnergy(const std::vector<double>& density);

// Eigenvalues, ascending, and eigenvectors in rows, by cyclic Jacobi rotations.
void JacobiEigen(std::vector<double> matrix, int n, std::vector<double>* values, std::vector<double>* vectors);

// The numbers that follow a label in a text.
std::vector<double> NumbersAfter(const std::string& text, const std::string& label, int count);

// How often a part is in a text.
int CountOf(const std::string& text, const std::string& part);
