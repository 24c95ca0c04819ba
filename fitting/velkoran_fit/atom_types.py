# SPDX-License-Identifier: MIT
"""The atom types: a tree of SMARTS patterns per element, from the element over hybridisation to neighbours.

A pattern's first atom is the typed one. Patterns are meant for molecules with explicit hydrogens that RDKit has
sanitised. frontend/atom_types.cpp reads the same table, and a test compares the two.
"""
import csv
import dataclasses
import functools
import pathlib
import re
from collections.abc import Iterable, Mapping, Sequence

from rdkit import Chem

TYPE_NAME = re.compile("[A-Z0-9]{1,3}")
MATCH_LIMIT = 2**31 - 1  # none: RDKit stops at 1000 by itself
COLUMNS = ("name", "element", "parent", "smarts", "description")


@dataclasses.dataclass(frozen=True)
class AtomType:
    """A row of the table. `parent` is empty for the root of an element; `figures` are the columns that a fit adds."""

    name: str
    element: str
    parent: str
    smarts: str
    description: str
    figures: Mapping[str, str] = dataclasses.field(default_factory=dict, compare=False)


@dataclasses.dataclass(frozen=True)
class _Tree:
    """The types ready for use: roots by element, children in the order of the table, compiled patterns by name."""

    roots: Mapping[str, str]
    children: Mapping[str, tuple[str, ...]]
    queries: Mapping[str, Chem.Mol]


def read_atom_types(path: str | pathlib.Path) -> tuple[AtomType, ...]:
    """The rows of a table of atom types, in its order; further columns than the five known ones go to `figures`.

    Raises ValueError with the place if a column is missing or a row doesn't fit the rules of the table.
    """
    with open(path, encoding="utf-8", newline="") as stream:
        reader = csv.DictReader(stream, strict=True)
        missing = [column for column in COLUMNS if column not in (reader.fieldnames or ())]
        if missing:
            raise ValueError(f"{path}:1: there is no column {missing[0]}")
        types: list[AtomType] = []
        known: dict[str, AtomType] = {}
        for row in reader:
            if None in row or None in row.values():
                raise ValueError(f"{path}:{reader.line_num}: the row hasn't as many fields as the heading")
            figures = {key: value for key, value in row.items() if key not in COLUMNS}
            kind = AtomType(row["name"], row["element"], row["parent"], row["smarts"], row["description"], figures)
            fault = _fault(kind, known)
            if fault:
                raise ValueError(f"{path}:{reader.line_num}: {fault}")
            types.append(kind)
            known[kind.name] = kind
    return tuple(types)


def type_atoms(mol: Chem.Mol, types: Sequence[AtomType]) -> list[str]:
    """The name of the type of each atom of a sanitised molecule with explicit hydrogens, in the order of its atoms.

    From the root of its element an atom goes down to the first child, in the order of the table, whose pattern matches
    it, until none does. Raises ValueError for an element without a root.
    """
    tree = _tree(tuple(types))
    names = [""] * mol.GetNumAtoms()
    atoms_of: dict[str, list[int]] = {}
    for atom in mol.GetAtoms():
        symbol = atom.GetSymbol()
        if symbol not in tree.roots:
            raise ValueError(f"there are no atom types for the element {symbol}")
        atoms_of.setdefault(tree.roots[symbol], []).append(atom.GetIdx())
    for root, atoms in atoms_of.items():
        _descend(mol, tree, root, atoms, names)
    return names


def matching_atoms(mol: Chem.Mol, kind: AtomType) -> frozenset[int]:
    """The atoms that a pattern matches as its first atom, whether or not the patterns of its ancestors match them."""
    return _matches(mol, Chem.MolFromSmarts(kind.smarts))


def _fault(kind: AtomType, known: Mapping[str, AtomType]) -> str:
    """What is wrong with a row, given the rows above it; empty if nothing is."""
    if not TYPE_NAME.fullmatch(kind.name):
        return f'the name "{kind.name}" isn\'t made of one to three capitals or digits'
    if kind.name in known:
        return f"the type {kind.name} is there twice"
    if Chem.MolFromSmarts(kind.smarts) is None:
        return f"the pattern {kind.smarts} of {kind.name} is no SMARTS"
    if kind.parent:
        if kind.parent not in known:
            return f"the parent {kind.parent} of {kind.name} doesn't stand above it"
        if known[kind.parent].element != kind.element:
            return f"the parent {kind.parent} of {kind.name} is a type of another element"
    elif any(other.element == kind.element and not other.parent for other in known.values()):
        return f"the element {kind.element} of {kind.name} has a root already"
    return ""


@functools.lru_cache(maxsize=8)
def _tree(types: tuple[AtomType, ...]) -> _Tree:
    children: dict[str, list[str]] = {kind.name: [] for kind in types}
    for kind in types:
        if kind.parent:
            children[kind.parent].append(kind.name)
    return _Tree(
        {kind.element: kind.name for kind in types if not kind.parent},
        {name: tuple(names) for name, names in children.items()},
        {kind.name: Chem.MolFromSmarts(kind.smarts) for kind in types},
    )


def _matches(mol: Chem.Mol, query: Chem.Mol) -> frozenset[int]:
    # Matches of the same atoms in another order may begin with another atom: they count.
    matches = mol.GetSubstructMatches(query, uniquify=False, maxMatches=MATCH_LIMIT)
    return frozenset(match[0] for match in matches)


def _descend(mol: Chem.Mol, tree: _Tree, name: str, atoms: Iterable[int], names: list[str]) -> None:
    """Types the atoms that have come down to a type, by its children or by itself."""
    rest = set(atoms)
    for child in tree.children[name]:
        if not rest:
            return
        below = rest & _matches(mol, tree.queries[child])
        if below:
            _descend(mol, tree, child, below, names)
            rest -= below
    for atom in rest:
        names[atom] = name
