# SPDX-License-Identifier: MIT
"""Measured shifts as the statistics see them: one site for each value, with its features and what was computed."""
import math
from collections.abc import Mapping, Sequence
from dataclasses import dataclass, replace

import numpy as np

from .arrays import Reals
from .molecule_records import Molecule
from .neighbourhoods import TypedMolecule, averaged, shift_features, typed_molecule
from .opponents import sphere_names


@dataclass(frozen=True)
class Site:
    """A measured shift of the atoms of a molecule, or one of the two of a pair of unknown order."""

    key: str  # of the molecule
    name: str
    nucleus: str
    atoms: tuple[int, ...]
    chain: tuple[str, ...]  # types of the first atom, from the root down
    features: Mapping[str, float]
    spheres: tuple[str, ...]  # of the first atom, for the opponent by environments
    ppm: float
    shielding: float  # mean over the atoms, NaN where the run failed
    pair: int = -1  # number that the two sites of a pair of unknown order share
    both: tuple[float, float] | None = None  # the shifts of the pair


def measured_sites(
    molecules: Sequence[Molecule],
    types_by_molecule: Sequence[Sequence[str]],
    shieldings_by_molecule: Sequence[Reals],
    chains: Mapping[str, tuple[str, ...]],
) -> list[Site]:
    """The sites in the order of the molecules. Of a pair the less shielded group gets the larger shift, or both the
    mean if the shieldings aren't known. ValueError if the sequences differ in length."""
    if not len(molecules) == len(types_by_molecule) == len(shieldings_by_molecule):
        raise ValueError("molecules, types and shieldings aren't as many")
    sites: list[Site] = []
    pairs = 0
    for molecule, types, shieldings in zip(molecules, types_by_molecule, shieldings_by_molecule):
        typed = typed_molecule(molecule.mol, types, chains)
        for shift in molecule.shifts:
            sites.append(_site(molecule, typed, shieldings, shift.nucleus, shift.atoms, shift.ppm))
        for pair in molecule.pairs:
            for atoms in (pair.first, pair.second):
                site = _site(molecule, typed, shieldings, pair.nucleus, atoms, 0.0)
                sites.append(replace(site, pair=pairs, both=pair.ppm))
            pairs += 1
    return _with_ordered_pairs(sites)


def with_shieldings(sites: Sequence[Site], shieldings: Reals) -> list[Site]:
    """The sites with other computed values (n,)."""
    return _with_ordered_pairs([replace(site, shielding=float(value)) for site, value in zip(sites, shieldings)])


def _with_ordered_pairs(sites: Sequence[Site]) -> list[Site]:
    result = list(sites)
    for first, second in partners(sites):
        both = sites[first].both or (0.0, 0.0)
        values = ordered_values(both, sites[first].shielding, sites[second].shielding)
        result[first], result[second] = (replace(sites[n], ppm=ppm) for n, ppm in zip((first, second), values))
    return result


def partners(sites: Sequence[Site]) -> list[tuple[int, int]]:
    """The places of the two sites of each pair of unknown order."""
    found: dict[int, list[int]] = {}
    for place, site in enumerate(sites):
        if site.pair >= 0:
            found.setdefault(site.pair, []).append(place)
    return [(both[0], both[1]) for both in found.values()]


def ordered_values(ppm: tuple[float, float], first: float, second: float) -> tuple[float, float]:
    """The two shifts for groups of these shieldings: the larger for the less shielded, the mean for equal ones."""
    if math.isnan(first - second) or first == second:
        return (sum(ppm) / 2, sum(ppm) / 2)
    return (min(ppm), max(ppm)) if first > second else (max(ppm), min(ppm))


def _site(
    molecule: Molecule,
    typed: TypedMolecule,
    shieldings: Reals,
    nucleus: str,
    atoms: tuple[int, ...],
    ppm: float,
) -> Site:
    features = averaged([shift_features(typed, atom) for atom in atoms])
    shielding = float(np.mean(np.asarray(shieldings, dtype=np.float64)[list(atoms)]))
    spheres = tuple(sphere_names([chain[0] for chain in typed.chains], typed.neighbours, atoms[0]))
    return Site(molecule.key, molecule.name, nucleus, atoms, typed.chains[atoms[0]], features, spheres, ppm, shielding)


def deviations(sites: Sequence[Site], shifts: Reals) -> Reals:
    """Predicted less measured (ppm) for each site; of a pair both are compared by size. NaN stays."""
    result = np.array([shift - site.ppm for site, shift in zip(sites, shifts)])
    for first, second in partners(sites):
        low, high = sorted(sites[first].both or (0.0, 0.0))
        if not np.isnan(shifts[first] - shifts[second]):
            order = (low, high) if shifts[first] <= shifts[second] else (high, low)
            result[first], result[second] = shifts[first] - order[0], shifts[second] - order[1]
    return result
