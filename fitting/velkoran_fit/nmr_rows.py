# SPDX-License-Identifier: MIT
"""Reads fitting/data/nmr/fit.jsonl: one measured molecule a line.

What isn't for fitting is dropped here: shifts of protons on N, O and S, shifts of ions, and 1H shifts in D2O, which
are half a ppm off (their couplings are good).
"""
import json
from collections import defaultdict
from collections.abc import Iterator, Mapping, Sequence
from pathlib import Path
from typing import Any

import numpy as np
from rdkit import Chem

from .atom_mapping import map_atoms
from .molecule_records import Coupling, Geometry, Molecule, Pair, Shift

Row = Mapping[str, Any]


def is_in_heavy_water(row: Row, nucleus: str) -> bool:
    return "D2O" in row["solvent"].get(nucleus, "")


def read_shifts(row: Row) -> tuple[Shift, ...]:
    """One shift for each class of atoms and each value. Where the members of a class have different values (methyl
    groups next to a stereocentre), each value belongs to the atoms that carry it."""
    classes: Sequence[int] = row["cls"]
    carriers: dict[tuple[int, str], dict[float, set[int]]] = defaultdict(lambda: defaultdict(set))
    for atom, nucleus, ppm in row["shifts"]:
        if nucleus != "1H" or not is_in_heavy_water(row, nucleus):
            carriers[classes[atom], nucleus][float(ppm)].add(atom)
    shifts = []
    for (own, nucleus), values in sorted(carriers.items()):
        for ppm, atoms in sorted(values.items()):
            if len(values) == 1:
                atoms = {atom for atom, other in enumerate(classes) if other == own}
            shifts.append(Shift(tuple(sorted(atoms)), nucleus, ppm, row["source"]))
    return tuple(shifts)


def read_pairs(row: Row) -> tuple[Pair, ...]:
    """Pairs of protons of unknown order."""
    if is_in_heavy_water(row, "1H"):
        return ()
    return tuple(
        Pair((atoms[0],), (atoms[1],), "1H", (float(min(ppm)), float(max(ppm))), row["source"])
        for atoms, ppm in row["ambiguous"]
    )


def turning_group(mol: Chem.Mol, atom: int) -> tuple[int, ...]:
    """The three protons of a methyl group for one of them, else the atom alone."""
    own = mol.GetAtomWithIdx(atom)
    if own.GetSymbol() == "H":
        carbon = own.GetNeighbors()[0]
        protons = [other.GetIdx() for other in carbon.GetNeighbors() if other.GetSymbol() == "H"]
        if carbon.GetSymbol() == "C" and len(protons) == 3:
            return tuple(sorted(protons))
    return (atom,)


def read_couplings(row: Row, mol: Chem.Mol) -> tuple[Coupling, ...]:
    """One coupling for each kind, pair of classes and value: the average over the pairs of atoms that carry it, with
    methyl groups turning. A value of 2J within a methyl group isn't one: its protons are equivalent and it can't be
    seen, so that another coupling was entered in the wrong place."""
    classes: Sequence[int] = row["cls"]
    carriers: dict[tuple[str, int, int, float], set[tuple[int, int]]] = defaultdict(set)
    flags: dict[tuple[str, int, int, float], tuple[bool, bool]] = {}
    for (i, j, hertz), (kind, rigid, ambiguous) in zip(row["J"], row["Jinfo"], strict=True):
        group = turning_group(mol, i)
        if j in group:
            continue
        low, high = sorted((classes[i], classes[j]))
        key = (kind, low, high, float(hertz))
        for first in group:
            carriers[key].update(tuple(sorted((first, second))) for second in turning_group(mol, j))  # type: ignore
        old = flags.get(key, (True, False))
        flags[key] = (old[0] and rigid, old[1] or ambiguous)
    return tuple(
        Coupling(tuple(sorted(pairs)), key[0], key[3], *flags[key], row["source"])
        for key, pairs in sorted(carriers.items())
    )


def read_row(row: Row) -> Molecule:
    """Raises ValueError if the coordinates don't show the molecule of the SMILES."""
    coordinates = np.array([atom[1:] for atom in row["xyz"]], dtype=np.float64)
    mapped = map_atoms(row["smiles"], [atom[0] for atom in row["xyz"]], coordinates)
    stored = np.array(mapped.mol.GetConformer().GetPositions(), dtype=np.float64)
    return Molecule(
        key=row["key"],
        name=row["name"],
        smiles=row["smiles"],
        source=row["source"],
        mol=mapped.mol,
        symmetry=tuple(row["cls"]),
        geometries=(Geometry("stored", 1.0, stored),),
        shifts=read_shifts(row),
        pairs=read_pairs(row),
        couplings=read_couplings(row, mapped.mol),
        confidence="measured",
    )


def read_rows(path: Path) -> Iterator[Row]:
    with open(path, encoding="utf-8") as file:
        for line in file:
            yield json.loads(line)
