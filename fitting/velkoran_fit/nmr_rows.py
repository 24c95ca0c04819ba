# SPDX-License-Identifier: MIT
"""Reads fitting/data/nmr/fit.jsonl: one measured molecule a line.

What isn't for fitting is dropped here: shifts of protons on N, O and S, shifts of ions, and 1H shifts in D2O, which
are half a ppm off (their couplings are good).
"""
import json
from collections import defaultdict
from collections.abc import Iterator, Mapping, Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import Any

import numpy as np
from rdkit import Chem

from .atom_mapping import map_atoms
from .molecule_records import Coupling, Geometry, Molecule, Pair, Shift

Row = Mapping[str, Any]


@dataclass(frozen=True)
class Entry:
    """One line of J and Jinfo."""

    first: int
    second: int
    hertz: float
    kind: str
    rigid: bool
    ambiguous: bool


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


def all_pairs(classes: Sequence[int], mol: Chem.Mol, pair: tuple[int, int]) -> set[tuple[int, int]]:
    """Pairs of atoms of the same classes and at the same number of bonds."""
    distances = Chem.GetDistanceMatrix(mol)
    wanted = sorted(classes[atom] for atom in pair)
    atoms = [atom for atom, own in enumerate(classes) if own in wanted]
    return {
        (i, j)
        for i in atoms
        for j in atoms
        if i < j and sorted((classes[i], classes[j])) == wanted and distances[i][j] == distances[pair[0]][pair[1]]
    }


def turned_pairs(mol: Chem.Mol, i: int, j: int) -> list[tuple[int, int]]:
    return [(min(a, b), max(a, b)) for a in turning_group(mol, i) for b in turning_group(mol, j)]


def merged_couplings(entries: Sequence[Entry], classes: Sequence[int], mol: Chem.Mol, source: str) -> list[Coupling]:
    """The couplings of one kind between two classes. Different values that nobody can assign to the pairs, or that
    change places as single bonds turn, become one: the average over all the pairs."""
    kind = entries[0].kind
    rigid = all(entry.rigid for entry in entries)
    ambiguous = any(entry.ambiguous for entry in entries)
    pairs: dict[float, set[tuple[int, int]]] = defaultdict(set)
    for entry in entries:
        pairs[entry.hertz].update(turned_pairs(mol, entry.first, entry.second))
    listed = set().union(*pairs.values())
    complete = listed == all_pairs(classes, mol, next(iter(sorted(listed))))
    if len(pairs) > 1 and complete and (ambiguous or not rigid):
        mean = sum(hertz * len(own) for hertz, own in pairs.items()) / sum(map(len, pairs.values()))
        return [Coupling(tuple(sorted(listed)), kind, round(mean, 3), rigid, False, source)]
    return [
        Coupling(tuple(sorted(own)), kind, hertz, rigid, ambiguous and not complete, source)
        for hertz, own in sorted(pairs.items())
    ]


def read_couplings(row: Row, mol: Chem.Mol) -> tuple[Coupling, ...]:
    """One coupling for each kind, pair of classes and value that can be assigned, with methyl groups turning. A 2J
    between two protons of a class that aren't a diastereotopic pair is left out: it doesn't show in a spectrum, and
    what is entered there is a start value of the refinement, or another coupling in the wrong place."""
    classes: Sequence[int] = row["cls"]
    groups: dict[tuple[str, int, int], list[Entry]] = defaultdict(list)
    for (i, j, hertz), (kind, rigid, ambiguous) in zip(row["J"], row["Jinfo"], strict=True):
        if kind != "2J(HH)" or classes[i] != classes[j] or ambiguous:
            low, high = sorted((classes[i], classes[j]))
            groups[kind, low, high].append(Entry(i, j, float(hertz), kind, rigid, ambiguous))
    merged = (merged_couplings(entries, classes, mol, row["source"]) for _, entries in sorted(groups.items()))
    return tuple(coupling for couplings in merged for coupling in couplings)


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
