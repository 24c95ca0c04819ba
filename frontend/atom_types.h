// SPDX-License-Identifier: MIT
// The atom types: a tree of SMARTS patterns per element, from the element over hybridisation to neighbours. A pattern's
// first atom is the typed one. fitting/velkoran_fit/atom_types.py reads the same table, and a test compares the two.
#pragma once

#include <GraphMol/ROMol.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

// A row of the table; what a fit adds to the right of the description isn't read.
struct AtomType {
    std::string Name;         // 1 to 3 capital letters and digits
    std::string Element;      // the symbol, as "Cl"
    std::string Parent;       // the name of a row above; empty for the root of an element
    std::string Smarts;       // for sanitised molecules with explicit hydrogens
    std::string Description;  // in a chemist's words
};

// The types of a table, ready for use.
class AtomTypeTable {
public:
    // Reads a table: comma-separated, quoted where need be, with a heading. Throws std::runtime_error with the place if
    // the file can't be read, a column is missing or a row doesn't fit the rules of the table.
    explicit AtomTypeTable(const std::string& path);

    // The rows in their order.
    const std::vector<AtomType>& Types() const { return Rows; }

    // The name of the type of each atom of a sanitised molecule with explicit hydrogens, in the order of its atoms:
    // from the root of its element an atom goes down to the first child, in the order of the table, whose pattern
    // matches it, until none does. Throws std::invalid_argument for an element without a root.
    std::vector<std::string> TypeAtoms(const RDKit::ROMol& molecule) const;

private:
    void AddRow(AtomType row);
    void Descend(const RDKit::ROMol& molecule, int row, std::vector<bool> here, std::vector<std::string>& names) const;

    std::vector<AtomType> Rows;
    std::vector<std::vector<int>> Children;               // of each row
    std::vector<std::shared_ptr<RDKit::ROMol>> Patterns;  // of each row
    std::map<std::string, int> RowsByName;
    std::map<std::string, int> Roots;  // by element
};
