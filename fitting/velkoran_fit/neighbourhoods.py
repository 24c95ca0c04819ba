# SPDX-License-Identifier: MIT
"""Typed neighbourhoods: what stands around an atom, as counts with names.

A name is "family:text". The additive model gives every family a strength of its own, and every name a coefficient.

Labels of an atom are its type and the ancestors, counted from the root: 0 the element, 1 mostly the coordination,
2 and 3 the next ones, `*` the type itself; a type that has fewer ancestors has the same label at deeper levels.
Bonds are - = # and : (aromatic).

| Family | Name for an atom A | Counts |
|---|---|---|
| `o0` .. `o5` | label of A | 1 |
| `n<d><l>` | label l of another atom B | atoms B at d bonds, d = 1 to 4 |
| `x<d><l>` | label 2 of A `|` label l of B | the same |
| `p<d>1` | `A-B=C`, label 1 of each | paths of d bonds from A without repeated atoms, d = 2 to 4 |
| `p<d>*` | the same, the last label being `*` | the same |
| `e1<l>` | label l of A, then in brackets the neighbours: bond and label, in the order of bytes | 1 |
| `e21` | `e11` with the brackets of the neighbours inside, empty ones where only A is next to them | 1 |
"""
from collections.abc import Iterable, Mapping, Sequence
from dataclasses import dataclass
from typing import Protocol

import numpy as np
import numpy.typing as npt
from rdkit import Chem

Level = int | str

FARTHEST = 4  # bonds

LEAF: Level = "*"

LEVELS: tuple[Level, ...] = (0, 1, 2, LEAF)  # of neighbours
CROSS_LEVELS: tuple[Level, ...] = (0, 2)
CROSS_OWN_LEVEL = 2
DEEPEST_OWN_LEVEL = 5
BOND_SIGNS = {1.0: "-", 2.0: "=", 3.0: "#", 1.5: ":"}


class TypeRow(Protocol):
    """What is used of an AtomType."""

    @property
    def name(self) -> str:
        ...

    @property
    def parent(self) -> str:
        ...


def type_chains(types: Iterable[TypeRow]) -> dict[str, tuple[str, ...]]:
    """For each type its ancestors from the root down, itself last. KeyError if a parent isn't a type."""
    parents = {row.name: row.parent for row in types}
    chains: dict[str, tuple[str, ...]] = {}
    for name in parents:
        line = [name]
        while parents[line[0]]:
            line.insert(0, parents[line[0]])
        chains[name] = tuple(line)
    return chains


def label(chain: Sequence[str], level: Level) -> str:
    """The type of a chain at a level, its last one where the chain is shorter."""
    return chain[-1] if level == LEAF else chain[min(int(level), len(chain) - 1)]


@dataclass(frozen=True)
class TypedMolecule:
    """A molecule with explicit hydrogens and the chain of types of each atom."""

    chains: tuple[tuple[str, ...], ...]
    neighbours: tuple[tuple[tuple[int, str], ...], ...]  # of each atom: other atom, sign of the bond
    distances: npt.NDArray[np.float64]  # (atoms, atoms), bonds on the shortest path


def typed_molecule(mol: Chem.Mol, types: Sequence[str], chains: Mapping[str, tuple[str, ...]]) -> TypedMolecule:
    """types are the names for each atom. KeyError if one isn't in chains, or a bond is of another kind."""
    if len(types) != mol.GetNumAtoms():
        raise ValueError(f"{len(types)} types for {mol.GetNumAtoms()} atoms")
    neighbours: list[list[tuple[int, str]]] = [[] for _ in types]
    for bond in mol.GetBonds():
        first, second, sign = bond.GetBeginAtomIdx(), bond.GetEndAtomIdx(), BOND_SIGNS[bond.GetBondTypeAsDouble()]
        neighbours[first].append((second, sign))
        neighbours[second].append((first, sign))
    return TypedMolecule(
        tuple(chains[name] for name in types), tuple(map(tuple, neighbours)), Chem.GetDistanceMatrix(mol)
    )


def paths_from(molecule: TypedMolecule, atom: int, longest: int) -> list[tuple[tuple[int, ...], str]]:
    """Paths of 1 to longest bonds without repeated atoms: the atoms, and the signs of the bonds between them."""
    found: list[tuple[tuple[int, ...], str]] = []
    ends: list[tuple[tuple[int, ...], str]] = [((atom,), "")]
    for _ in range(longest):
        ends = [
            ((*path, other), signs + sign)
            for path, signs in ends
            for other, sign in molecule.neighbours[path[-1]]
            if other not in path
        ]
        found += ends
    return found


def path_text(labels: Sequence[str], signs: str) -> str:
    """Labels with the signs of the bonds between them: "C4-C3=O1"."""
    return "".join(name + sign for name, sign in zip(labels, signs)) + labels[-1]


def environment(molecule: TypedMolecule, atom: int, level: Level, radius: int, origin: int = -1) -> str:
    """Labels within radius bonds, each atom's neighbours but origin in brackets, in the order of their texts."""
    own = label(molecule.chains[atom], level)
    if radius == 0:
        return own
    inside = sorted(
        sign + environment(molecule, other, level, radius - 1, atom)
        for other, sign in molecule.neighbours[atom]
        if other != origin
    )
    return f"{own}({','.join(inside)})"


def shift_features(molecule: TypedMolecule, atom: int) -> dict[str, float]:
    """The counts of all families of the table above."""
    counts: dict[str, float] = {}

    def add(name: str) -> None:
        counts[name] = counts.get(name, 0.0) + 1.0

    own = molecule.chains[atom]
    for depth in range(DEEPEST_OWN_LEVEL + 1):
        add(f"o{depth}:{label(own, depth)}")
    crossed = label(own, CROSS_OWN_LEVEL)
    for other, bonds in enumerate(molecule.distances[atom]):
        if 1 <= bonds <= FARTHEST:
            for level in LEVELS:
                add(f"n{int(bonds)}{level}:{label(molecule.chains[other], level)}")
            for level in CROSS_LEVELS:
                add(f"x{int(bonds)}{level}:{crossed}|{label(molecule.chains[other], level)}")
    for path, signs in paths_from(molecule, atom, FARTHEST):
        if len(signs) > 1:
            labels = [label(molecule.chains[place], 1) for place in path]
            add(f"p{len(signs)}1:{path_text(labels, signs)}")
            add(f"p{len(signs)}*:{path_text([*labels[:-1], label(molecule.chains[path[-1]], LEAF)], signs)}")
    for level in LEVELS:
        add(f"e1{level}:{environment(molecule, atom, level, 1)}")
    add(f"e21:{environment(molecule, atom, 1, 2)}")
    return counts


def averaged(features: Sequence[Mapping[str, float]]) -> dict[str, float]:
    """The mean of counts, over atoms whose shifts are measured together."""
    if len(features) == 1:
        return dict(features[0])
    total: dict[str, float] = {}
    for counts in features:
        for name, value in counts.items():
            total[name] = total.get(name, 0.0) + value / len(features)
    return total
