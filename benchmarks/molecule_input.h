// SPDX-License-Identifier: MIT
// Inputs of parameter runs for the benchmarks: options and a selection in front of the atoms of a molecule of
// benchmarks/molecules. Coupling only, unless the options say otherwise; those not named are the program's own.
#pragma once

#include "benchmarks/program_run.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>

// A new work folder with a link to the parameter files: the paths of a run have to be short.
inline std::string MakeParameterFolder() {
    const std::string folder = MakeWorkFolder();
    if (symlink(VELKORAN_SOURCE "/parameters/published", (folder + "/parameters").c_str()) != 0) {
        EndBenchmark("cannot link the parameters");
    }
    return folder;
}

// A molecule of benchmarks/molecules.
struct Molecule {
    std::string Text;  // its file
    int AtomCount;
    int OrbitalCount;  // one for hydrogen, four for each other atom
};

inline Molecule ReadMolecule(const std::string& name) {
    const std::string path = std::string(VELKORAN_SOURCE) + "/benchmarks/molecules/" + name + ".in";
    std::ifstream file(path);
    if (!file) {
        EndBenchmark("cannot open " + path);
    }
    Molecule molecule = {"", 0, 0};
    std::string line;
    while (std::getline(file, line)) {
        molecule.Text += line + "\n";
        std::istringstream words(line);
        std::string keyword, number, atomName, element;
        if (words >> keyword >> number >> atomName >> element && keyword == "atom") {
            ++molecule.AtomCount;
            molecule.OrbitalCount += element == "H" ? 1 : 4;
        }
    }
    return molecule;
}

// Writes folder/nmrparam.in with the couplings of the first nmrAtoms atoms; returns how many these are.
inline int WriteParameterInput(const std::string& folder, const Molecule& molecule, int nmrAtoms,
                               const std::string& options) {
    const int count = std::min(nmrAtoms, molecule.AtomCount);
    std::ofstream file(folder + "/nmrparam.in");
    file << "CalculateShielding = no\nCalculateCoupling = yes\n" << options << "NMRSelectionBegin\n" << count << "\n";
    for (int atom = 1; atom <= count; ++atom) {
        file << "mol 1 atom " << atom << "\n";
    }
    file << "NMRSelectionEnd\n" << molecule.Text;
    if (!file.flush()) {
        EndBenchmark("cannot write the input");
    }
    return count;
}
