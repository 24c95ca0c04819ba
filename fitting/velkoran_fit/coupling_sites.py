# SPDX-License-Identifier: MIT
"""Measured coupling constants as sites of the statistics: minus the constant takes the place of the shielding.

So the same correction, opponents and uncertainties serve couplings, with a zero of 0. In place of the chain of types
stands a chain of paths between the nuclei, from the kind ("3J(HH)") over paths with labels of level 0, 1 and 2 to `*`.

| Family | Name, with labels as in neighbourhoods.py | Counts |
|---|---|---|
| `c0` | the kind | 1 |
| `c<l>p` | path between the nuclei, read from the end that comes first in the order of bytes | paths |
| `t<l>` | path of label 1 `|` place from 0 `|` label l of a neighbour outside the path | neighbours |
| `k1`, `k2` | path of label 1, if it has three bonds | cos, cos of the double, of its dihedral angle |
"""
import math
from collections.abc import Mapping, Sequence

import numpy as np

from .arrays import Reals
from .molecule_records import Geometry, Molecule
from .neighbourhoods import LEAF, Level, TypedMolecule, averaged, label, path_text, paths_from, typed_molecule
from .sites import Site

Couplings = Sequence[float]

PATH_LEVELS: tuple[Level, ...] = (0, 1, 2, LEAF)
NEIGHBOUR_LEVELS: tuple[Level, ...] = (0, 1, LEAF)


def coupling_sites(
    molecules: Sequence[Molecule],
    types_by_molecule: Sequence[Sequence[str]],
    couplings_by_molecule: Sequence[Couplings],
    chains: Mapping[str, tuple[str, ...]],
) -> list[Site]:
    """Sites of all measured couplings. couplings_by_molecule holds for each molecule one computed constant in Hz for
    each of its couplings, in their order, NaN where the run failed. ValueError if the sequences differ in length."""
    if not len(molecules) == len(types_by_molecule) == len(couplings_by_molecule):
        raise ValueError("molecules, types and couplings aren't as many")
    sites = []
    for molecule, types, computed in zip(molecules, types_by_molecule, couplings_by_molecule):
        if len(molecule.couplings) != len(computed):
            raise ValueError(f"{molecule.name}: {len(computed)} computed for {len(molecule.couplings)} couplings")
        typed = typed_molecule(molecule.mol, types, chains)
        for coupling, value in zip(molecule.couplings, computed):
            each = [coupling_features(typed, pair, coupling.kind, molecule.geometries) for pair in coupling.atom_pairs]
            first = coupling.atom_pairs[0]
            chain = path_chain(typed, first, coupling.kind)
            sites.append(
                Site(
                    molecule.key,
                    molecule.name,
                    coupling.kind,
                    first,
                    chain,
                    averaged(each),
                    chain,
                    coupling.hertz,
                    -float(value),
                )
            )
    return sites


def bonds_of(kind: str) -> int:
    """The number of bonds of a kind such as 3J(HH). ValueError if it doesn't begin with a number."""
    return int(kind.partition("J")[0])


def paths_between(typed: TypedMolecule, pair: tuple[int, int], bonds: int) -> list[tuple[tuple[int, ...], str]]:
    """Paths of so many bonds between the two atoms: atoms, and signs of the bonds."""
    found = paths_from(typed, pair[0], bonds)
    return [(path, signs) for path, signs in found if len(signs) == bonds and path[-1] == pair[1]]


def directed_text(typed: TypedMolecule, path: Sequence[int], signs: str, level: Level) -> str:
    """The text of a path, from the end that gives the lesser one."""
    labels = [label(typed.chains[atom], level) for atom in path]
    return min(path_text(labels, signs), path_text(labels[::-1], signs[::-1]))


def path_chain(typed: TypedMolecule, pair: tuple[int, int], kind: str) -> tuple[str, ...]:
    """The kind, and the texts of the first path of its length, from elements to types."""
    paths = paths_between(typed, pair, bonds_of(kind))
    if not paths:
        return (kind,)
    path, signs = min(paths, key=lambda one: directed_text(typed, one[0], one[1], LEAF))
    return (kind, *(f"{level}|{directed_text(typed, path, signs, level)}" for level in PATH_LEVELS))


def coupling_features(
    typed: TypedMolecule, pair: tuple[int, int], kind: str, geometries: Sequence[Geometry]
) -> dict[str, float]:
    """The counts of the table above; cosines are averaged over the geometries by their weights."""
    counts = {f"c0:{kind}": 1.0}

    def add(name: str, value: float) -> None:
        counts[name] = counts.get(name, 0.0) + value

    for path, signs in paths_between(typed, pair, bonds_of(kind)):
        for level in PATH_LEVELS:
            add(f"c{level}p:{directed_text(typed, path, signs, level)}", 1.0)
        own = directed_text(typed, path, signs, 1)
        labels = [label(typed.chains[atom], 1) for atom in path]
        backwards = path_text(labels, signs) != own
        for place, atom in enumerate(path):
            side = len(path) - 1 - place if backwards else place
            for other, _ in typed.neighbours[atom]:
                if other not in path:
                    for level in NEIGHBOUR_LEVELS:
                        add(f"t{level}:{own}|{side}|{label(typed.chains[other], level)}", 1.0)
        if len(path) == 4:
            for order in (1, 2):
                add(f"k{order}:{own}", mean_cosine(geometries, path, order))
    return counts


def mean_cosine(geometries: Sequence[Geometry], path: Sequence[int], order: int) -> float:
    """Of order times the dihedral angle of four atoms, averaged by the weights; 0 without geometries."""
    total = sum(geometry.weight for geometry in geometries)
    if total == 0.0:
        return 0.0
    cosines = [
        geometry.weight * math.cos(order * dihedral(geometry.coordinates[list(path)])) for geometry in geometries
    ]
    return sum(cosines) / total


def dihedral(places: Reals) -> float:
    """The angle in radians of four places (4, 3)."""
    first, axis, last = places[1] - places[0], places[2] - places[1], places[3] - places[2]
    left, right = np.cross(first, axis), np.cross(axis, last)
    return math.atan2(float(np.dot(np.cross(left, right), axis) / np.linalg.norm(axis)), float(np.dot(left, right)))
