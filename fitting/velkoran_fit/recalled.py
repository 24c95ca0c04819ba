# SPDX-License-Identifier: MIT
"""Reads fitting/data/literature/recalled.csv: values written from memory, of molecules given by their SMILES.

Map numbers of the SMILES name the atoms; a value is the average over all atoms, or pairs at the same number of bonds,
that the structural formula doesn't tell apart from them.
"""
import csv
from collections import defaultdict
from collections.abc import Mapping
from pathlib import Path

from rdkit import Chem

from .literature import coupling_kind, is_rigid_path, structural_key, symmetry_classes
from .molecule_records import Coupling, Molecule, Shift

Row = Mapping[str, str]
CONFIDENCE = "recalled, unverified"


def read_mapped_smiles(smiles: str) -> tuple[Chem.Mol, dict[int, int]]:
    """The molecule with explicit hydrogens, and the atom of each map number. Raises ValueError if it can't be read."""
    options = Chem.SmilesParserParams()
    options.removeHs = False
    mol = Chem.MolFromSmiles(smiles, options)
    if mol is None:
        raise ValueError(f"the SMILES {smiles} can't be read")
    mol = Chem.AddHs(mol)
    maps = {atom.GetAtomMapNum(): atom.GetIdx() for atom in mol.GetAtoms() if atom.GetAtomMapNum()}
    for atom in mol.GetAtoms():
        atom.SetAtomMapNum(0)
    Chem.AssignStereochemistry(mol, cleanIt=True, force=True)
    return mol, maps


def in_canonical_order(mol: Chem.Mol, maps: Mapping[int, int]) -> tuple[Chem.Mol, dict[int, int]]:
    """The same atoms in an order that doesn't depend on how the SMILES was written."""
    ranks = list(Chem.CanonicalRankAtoms(mol, breakTies=True))
    order = sorted(range(mol.GetNumAtoms()), key=ranks.__getitem__)
    return Chem.RenumberAtoms(mol, order), {number: order.index(atom) for number, atom in maps.items()}


def equivalent_pairs(mol: Chem.Mol, first: int, second: int) -> tuple[tuple[int, int], ...]:
    classes = symmetry_classes(mol)
    distances = Chem.GetDistanceMatrix(mol)
    alike = [[i for i, own in enumerate(classes) if own == classes[atom]] for atom in (first, second)]
    pairs = {
        (min(i, j), max(i, j)) for i in alike[0] for j in alike[1] if distances[i][j] == distances[first][second] != 0
    }
    return tuple(sorted(pairs))


def read_value(row: Row, mol: Chem.Mol, maps: Mapping[int, int]) -> Shift | Coupling:
    """Raises ValueError if the atoms don't fit the quantity."""
    value, source = float(row["value"]), row["source"]
    first = maps[int(row["first_map"])]
    if not row["second_map"]:
        nucleus = row["quantity"]
        if nucleus.lstrip("0123456789") != mol.GetAtomWithIdx(first).GetSymbol():
            raise ValueError(f"{row['smiles_with_maps']}: atom {row['first_map']} isn't {nucleus}")
        classes = symmetry_classes(mol)
        atoms = tuple(i for i, own in enumerate(classes) if own == classes[first])
        return Shift(atoms, nucleus, value, source)
    second = maps[int(row["second_map"])]
    kind = coupling_kind(mol, first, second)
    if kind != row["quantity"]:
        raise ValueError(f"{row['smiles_with_maps']}: the atoms have {kind}, not {row['quantity']}")
    pairs = equivalent_pairs(mol, first, second)
    return Coupling(pairs, kind, value, is_rigid_path(mol, first, second), False, source)


def read_recalled(path: Path) -> list[Molecule]:
    """One molecule for each structural formula, in the order of their first lines. Raises ValueError with the line
    that can't be read."""
    mols: dict[str, Chem.Mol] = {}
    values: dict[str, list[Shift | Coupling]] = defaultdict(list)
    with open(path, newline="", encoding="utf-8") as file:
        for row in csv.DictReader(file):
            mol, maps = in_canonical_order(*read_mapped_smiles(row["smiles_with_maps"]))
            key = structural_key(mol)
            mols.setdefault(key, mol)
            values[key].append(read_value(row, mol, maps))
    return [
        Molecule(
            key=key,
            name=key.removeprefix("SMILES="),
            smiles=key.removeprefix("SMILES="),
            source="recalled",
            mol=mol,
            symmetry=symmetry_classes(mol),
            geometries=(),
            shifts=tuple(value for value in values[key] if isinstance(value, Shift)),
            pairs=(),
            couplings=tuple(value for value in values[key] if isinstance(value, Coupling)),
            confidence=CONFIDENCE,
        )
        for key, mol in mols.items()
    ]
