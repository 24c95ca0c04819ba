// SPDX-License-Identifier: MIT
#include "frontend/atom_types.h"

#include <GraphMol/Atom.h>
#include <GraphMol/RWMol.h>
#include <GraphMol/SmilesParse/SmilesParse.h>
#include <GraphMol/Substruct/SubstructMatch.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <limits>
#include <stdexcept>
#include <utility>

static constexpr std::size_t LongestName = 3;
static constexpr unsigned MatchLimit = std::numeric_limits<int>::max();  // none: RDKit stops at 1000 by itself
static const std::array<const char*, 5> ColumnNames = {"name", "element", "parent", "smarts", "description"};

// The fields of a line. A quoted field may hold commas, and two quotes for one (RFC 4180); none holds a line break.
static std::vector<std::string> FieldsOfLine(const std::string& line) {
    std::vector<std::string> fields(1);
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == '"') {
            const bool doubled = quoted && i + 1 < line.size() && line[i + 1] == '"';
            if (doubled) {
                fields.back() += line[++i];
            } else {
                quoted = !quoted;
            }
        } else if (line[i] == ',' && !quoted) {
            fields.emplace_back();
        } else if (line[i] != '\r') {
            fields.back() += line[i];
        }
    }
    if (quoted) {
        throw std::runtime_error("a quote isn't closed");
    }
    return fields;
}

// Where each known column stands in the heading.
static std::array<std::size_t, 5> PlacesOfColumns(const std::vector<std::string>& heading) {
    std::array<std::size_t, 5> places = {};
    for (std::size_t column = 0; column < places.size(); ++column) {
        const auto found = std::find(heading.begin(), heading.end(), ColumnNames[column]);
        if (found == heading.end()) {
            throw std::runtime_error(std::string("there is no column ") + ColumnNames[column]);
        }
        places[column] = static_cast<std::size_t>(found - heading.begin());
    }
    return places;
}

static bool IsTypeName(const std::string& name) {
    const auto fits = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); };
    return !name.empty() && name.size() <= LongestName && std::all_of(name.begin(), name.end(), fits);
}

// The atoms that a pattern matches as its first atom. Matches of the same atoms in another order may begin with another
// atom: they count.
static std::vector<bool> FirstAtoms(const RDKit::ROMol& molecule, const RDKit::ROMol& pattern) {
    RDKit::SubstructMatchParameters parameters;
    parameters.uniquify = false;
    parameters.maxMatches = MatchLimit;
    std::vector<bool> matched(molecule.getNumAtoms(), false);
    for (const RDKit::MatchVectType& match : RDKit::SubstructMatch(molecule, pattern, parameters)) {
        matched[static_cast<std::size_t>(match.front().second)] = true;
    }
    return matched;
}

AtomTypeTable::AtomTypeTable(const std::string& path) {
    std::ifstream stream(path);
    std::string line;
    if (!std::getline(stream, line)) {
        throw std::runtime_error(path + " can't be read");
    }
    int number = 1;
    try {
        const std::vector<std::string> heading = FieldsOfLine(line);
        const std::array<std::size_t, 5> places = PlacesOfColumns(heading);
        while (std::getline(stream, line)) {
            ++number;
            const std::vector<std::string> fields = FieldsOfLine(line);
            if (fields.size() != heading.size()) {
                throw std::runtime_error("the row hasn't as many fields as the heading");
            }
            AddRow({fields[places[0]], fields[places[1]], fields[places[2]], fields[places[3]], fields[places[4]]});
        }
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(path + ":" + std::to_string(number) + ": " + error.what());
    }
}

// Adds a row below those that are there. Throws std::runtime_error if it breaks a rule of the table.
void AtomTypeTable::AddRow(AtomType row) {
    if (!IsTypeName(row.Name)) {
        throw std::runtime_error("the name \"" + row.Name + "\" isn't made of one to three capitals or digits");
    }
    const int number = static_cast<int>(Rows.size());
    if (!RowsByName.emplace(row.Name, number).second) {
        throw std::runtime_error("the type " + row.Name + " is there twice");
    }
    std::shared_ptr<RDKit::ROMol> pattern(RDKit::SmartsToMol(row.Smarts));
    if (!pattern || pattern->getNumAtoms() == 0) {
        throw std::runtime_error("the pattern " + row.Smarts + " of " + row.Name + " is no SMARTS");
    }
    if (row.Parent.empty()) {
        if (!Roots.emplace(row.Element, number).second) {
            throw std::runtime_error("the element " + row.Element + " of " + row.Name + " has a root already");
        }
    } else {
        const auto parent = RowsByName.find(row.Parent);
        if (parent == RowsByName.end() || parent->second == number) {
            throw std::runtime_error("the parent " + row.Parent + " of " + row.Name + " doesn't stand above it");
        }
        const auto above = static_cast<std::size_t>(parent->second);
        if (Rows[above].Element != row.Element) {
            throw std::runtime_error("the parent " + row.Parent + " of " + row.Name + " is a type of another element");
        }
        Children[above].push_back(number);
    }
    Rows.push_back(std::move(row));
    Patterns.push_back(std::move(pattern));
    Children.emplace_back();
}

std::vector<std::string> AtomTypeTable::TypeAtoms(const RDKit::ROMol& molecule) const {
    std::map<int, std::vector<bool>> atomsOfRoots;
    for (const RDKit::Atom* atom : molecule.atoms()) {
        const auto root = Roots.find(atom->getSymbol());
        if (root == Roots.end()) {
            throw std::invalid_argument("there are no atom types for the element " + atom->getSymbol());
        }
        std::vector<bool>& atoms = atomsOfRoots[root->second];
        atoms.resize(molecule.getNumAtoms(), false);
        atoms[atom->getIdx()] = true;
    }
    std::vector<std::string> names(molecule.getNumAtoms());
    for (auto& [root, atoms] : atomsOfRoots) {
        Descend(molecule, root, std::move(atoms), names);
    }
    return names;
}

// Types the atoms that have come down to a row, by its children or by itself.
void AtomTypeTable::Descend(const RDKit::ROMol& molecule, int row, std::vector<bool> here,
                            std::vector<std::string>& names) const {
    for (const int child : Children[static_cast<std::size_t>(row)]) {
        if (std::find(here.begin(), here.end(), true) == here.end()) {
            return;
        }
        std::vector<bool> below = FirstAtoms(molecule, *Patterns[static_cast<std::size_t>(child)]);
        bool any = false;
        for (std::size_t atom = 0; atom < here.size(); ++atom) {
            below[atom] = below[atom] && here[atom];
            here[atom] = here[atom] && !below[atom];
            any = any || below[atom];
        }
        if (any) {
            Descend(molecule, child, std::move(below), names);
        }
    }
    for (std::size_t atom = 0; atom < here.size(); ++atom) {
        if (here[atom]) {
            names[atom] = Rows[static_cast<std::size_t>(row)].Name;
        }
    }
}
