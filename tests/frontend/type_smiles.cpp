// SPDX-License-Identifier: MIT
// Types the atoms of molecules: reads a SMILES a line, adds the hydrogens and writes a line of types, or one that
// begins with "error: ". Usage: type_smiles TABLE
#include "frontend/atom_types.h"

#include <GraphMol/MolOps.h>
#include <GraphMol/RWMol.h>
#include <GraphMol/SanitException.h>
#include <GraphMol/SmilesParse/SmilesParse.h>
#include <RDGeneral/RDLog.h>

#include <exception>
#include <iostream>
#include <memory>
#include <string>

// The molecule of a SMILES, or nothing if there is none or it can't be sanitised.
static std::unique_ptr<RDKit::RWMol> ReadMolecule(const std::string& smiles) {
    try {
        return std::unique_ptr<RDKit::RWMol>(RDKit::SmilesToMol(smiles));
    } catch (const RDKit::MolSanitizeException&) {
        return nullptr;
    }
}

static void WriteTypes(const AtomTypeTable& table, const std::string& smiles) {
    const std::unique_ptr<RDKit::RWMol> molecule = ReadMolecule(smiles);
    if (!molecule) {
        std::cout << "error: no SMILES\n";
        return;
    }
    RDKit::MolOps::addHs(*molecule);
    const char* separator = "";
    for (const std::string& name : table.TypeAtoms(*molecule)) {
        std::cout << separator << name;
        separator = " ";
    }
    std::cout << '\n';
}

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: type_smiles TABLE\n";
        return 2;
    }
    RDLog::InitLogs();
    boost::logging::disable_logs("rdApp.*");
    try {
        const AtomTypeTable table(argv[1]);
        for (std::string smiles; std::getline(std::cin, smiles);) {
            try {
                WriteTypes(table, smiles);
            } catch (const std::exception& error) {
                std::cout << "error: " << error.what() << '\n';
            }
        }
    } catch (const std::exception& error) {
        std::cerr << "type_smiles: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
