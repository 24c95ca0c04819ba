# SPDX-License-Identifier: MIT
"""Reads fitting/data/literature: shifts, absolute shieldings and coupling constants of small molecules, quoted from
compilations, and their geometries."""
import csv
import json
from collections import defaultdict
from collections.abc import Iterable, Mapping
from pathlib import Path
from typing import Any

import numpy as np
from rdkit import Chem

from .atom_mapping import RADII, map_atoms
from .molecule_records import Coupling, Geometry, Molecule, Shift
from .shift_scales import ZERO_SHIELDING, shift_from_reference, shift_of_shielding

Row = Mapping[str, str]
GEOMETRY_KINDS = ("experimental", "optimised", "estimated", "standard_model")  # the first that a molecule has
SYMBOL_ORDER = ("Si", "P", "S", "N", "C", "O", "H", "F", "Cl")  # within the name of a coupling
COUPLED = {"H": "1H", "C": "13C", "N": "15N", "O": "17O", "F": "19F", "Si": "29Si", "P": "31P"}
NITROGEN_RATIO = -0.5663777 / 0.4037610  # of the g factors of 15N and 14N
LIQUID_NOTES = ("neat liquid", "85 %")  # in the notes of absolute shieldings, which are else those of a gas


def coupling_kind(mol: Chem.Mol, first: int, second: int) -> str:
    """ "2J(HF)" and the like: bonds between the atoms, and their symbols in the customary order."""
    symbols = [mol.GetAtomWithIdx(atom).GetSymbol() for atom in (first, second)]
    bonds = round(float(Chem.GetDistanceMatrix(mol)[first][second]))
    return f"{bonds}J({''.join(sorted(symbols, key=SYMBOL_ORDER.index))})"


def is_rigid_bond(bond: Chem.Bond) -> bool:
    return bool(
        bond.GetIsAromatic()
        or bond.GetBondType() in (Chem.BondType.DOUBLE, Chem.BondType.TRIPLE)
        or bond.IsInRingSize(3)
        or bond.IsInRingSize(4)
    )


def is_rigid_path(mol: Chem.Mol, first: int, second: int) -> bool:
    """Whether every bond between the outer two is aromatic, multiple or in a ring of three or four."""
    path = Chem.GetShortestPath(mol, first, second)[1:-1]
    return all(is_rigid_bond(mol.GetBondBetweenAtoms(i, j)) for i, j in zip(path, path[1:]))


def symmetry_classes(mol: Chem.Mol) -> tuple[int, ...]:
    """Equal numbers for atoms that the structural formula doesn't tell apart."""
    return tuple(int(rank) for rank in Chem.CanonicalRankAtoms(mol, breakTies=False))


def structural_key(mol: Chem.Mol) -> str:
    """The key of a molecule whose InChIKey isn't known: its canonical SMILES."""
    return "SMILES=" + Chem.MolToSmiles(Chem.RemoveHs(mol))


def read_shift(row: Row) -> Shift | None:
    """None for a nucleus that has no shift scale, and for a value that the table itself calls uncertain."""
    nucleus = row["nucleus"]
    if nucleus not in ZERO_SHIELDING or "uncertain" in row["note"]:
        return None
    value = float(row["value"])
    atoms = tuple(int(number) - 1 for number in row["atoms"].split())
    if row["quantity"] == "shielding":
        liquid = any(note in row["note"] for note in LIQUID_NOTES)
        return Shift(atoms, nucleus, shift_of_shielding(nucleus, value), row["source"], "solution" if liquid else "gas")
    return Shift(atoms, nucleus, shift_from_reference(row["zero"], value), row["source"])


def in_solution_first(shifts: Iterable[Shift]) -> tuple[Shift, ...]:
    """One shift for each set of atoms: in solution if it was measured there, else in the gas."""
    best: dict[tuple[int, ...], Shift] = {}
    for shift in shifts:
        if shift.atoms not in best or (best[shift.atoms].phase, shift.phase) == ("gas", "solution"):
            best[shift.atoms] = shift
    return tuple(best.values())


def read_coupling(row: Row, mol: Chem.Mol) -> Coupling | None:
    """None for isotopes that aren't fitted; a coupling of 14N is turned into that of 15N."""
    hertz = float(row["measured"])
    isotopes = [row["nucleus1"], row["nucleus2"]]
    if "14N" in isotopes:
        hertz *= NITROGEN_RATIO
        isotopes = ["15N" if isotope == "14N" else isotope for isotope in isotopes]
    if not set(isotopes) <= set(COUPLED.values()):
        return None
    ends = [[int(number) - 1 for number in pair.split("-")] for pair in row["pairs"].split()]
    pairs = tuple((i, j) for i, j in ends)
    kind = coupling_kind(mol, *pairs[0])
    return Coupling(pairs, kind, round(hertz, 2), is_rigid_path(mol, *pairs[0]), False, row["source"])


def read_table(path: Path) -> dict[str, list[Row]]:
    """The rows of each molecule."""
    rows = defaultdict(list)
    with open(path, newline="", encoding="utf-8") as file:
        for row in csv.DictReader(file):
            rows[row["molecule"]].append(row)
    return rows


def read_molecule(name: str, entry: Mapping[str, Any], shift_rows: list[Row], coupling_rows: list[Row]) -> Molecule:
    """Raises ValueError if the geometry doesn't show the molecule of the SMILES."""
    kinds = {geometry["kind"]: geometry["xyz"] for geometry in entry["geometries"]}
    coordinates = np.array(next(kinds[kind] for kind in GEOMETRY_KINDS if kind in kinds), dtype=np.float64)
    mol = map_atoms(entry["smiles"], entry["elements"], coordinates).mol
    stored = np.array(mol.GetConformer().GetPositions(), dtype=np.float64)
    return Molecule(
        key=structural_key(mol),
        name=name,
        smiles=entry["smiles"],
        source="literature",
        mol=mol,
        symmetry=symmetry_classes(mol),
        geometries=(Geometry("stored", 1.0, stored),),
        shifts=in_solution_first(filter(None, map(read_shift, shift_rows))),
        pairs=(),
        couplings=tuple(filter(None, (read_coupling(row, mol) for row in coupling_rows))),
        confidence="compilation",
    )


def read_literature(folder: Path) -> list[Molecule]:
    """The molecules of geometries.json of the elements that are fitted, with the values of both tables."""
    shift_rows = read_table(folder / "experiment_shielding.csv")
    coupling_rows = read_table(folder / "experiment_coupling.csv")
    with open(folder / "geometries.json", encoding="utf-8") as file:
        entries = json.load(file)["molecules"]
    return [
        read_molecule(name, entry, shift_rows.get(name, []), coupling_rows.get(name, []))
        for name, entry in entries.items()
        if set(entry["elements"]) <= set(RADII)
    ]
