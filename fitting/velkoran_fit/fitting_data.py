# SPDX-License-Identifier: MIT
"""The problems of a fit: which molecules, in which geometries, with which types."""
from collections.abc import Callable, Mapping, Sequence
from dataclasses import dataclass, replace
from pathlib import Path

import numpy as np

from .atom_types import AtomType, type_atoms
from .made_geometries import make_all
from .molecules import Geometry, Molecule
from .observations import Problem
from .problems import coupling_problem, fitted_couplings, fitted_shifts, shielding_problem
from .worker import Quantity

LAST_ELEMENT = 18  # argon
# Made geometries that stand for all while parameters are sought, the heaviest ones: couplings follow the dihedral
# angles and cost little.
FITTED_CONFORMERS = {Quantity.SHIELDING: 2, Quantity.COUPLING: 10}

# What is fitted of a molecule, and what makes the problem of it.
_PROBLEMS: Mapping[Quantity, tuple[Callable[[Molecule], Sequence[object]], Callable[..., Problem]]] = {
    Quantity.SHIELDING: (fitted_shifts, shielding_problem),
    Quantity.COUPLING: (fitted_couplings, coupling_problem),
}


@dataclass(frozen=True)
class FittingData:
    """Molecules with the names of their atoms' types and both kinds of geometries; where a kind is missing the other
    stands in for it."""

    molecules: tuple[Molecule, ...]
    types: tuple[tuple[str, ...], ...]
    stored: tuple[tuple[Geometry, ...], ...]
    made: tuple[tuple[Geometry, ...], ...]

    def with_made_geometries(self) -> list[Molecule]:
        """The molecules with the made geometries in place of the stored ones."""
        return [replace(m, geometries=forms) for m, forms in zip(self.molecules, self.made, strict=True)]


def fitting_data(molecules: Sequence[Molecule], types: Sequence[AtomType], cache: Path, processes: int) -> FittingData:
    """What can be fitted of molecules: elements up to argon, at least one geometry. cache: file of made geometries."""
    chosen = [m for m in molecules if all(a.GetAtomicNum() <= LAST_ELEMENT for a in m.mol.GetAtoms())]
    made = make_all(chosen, processes, cache)
    kept = [(m, g) for m, g in zip(chosen, made, strict=True) if g or m.geometries]
    return FittingData(
        tuple(m for m, _ in kept),
        tuple(tuple(type_atoms(m.mol, types)) for m, _ in kept),
        tuple(m.geometries or g for m, g in kept),
        tuple(g or m.geometries for m, g in kept),
    )


def heaviest(geometries: Sequence[Geometry], count: int) -> tuple[Geometry, ...]:
    """The geometries with the largest weights."""
    return tuple(sorted(geometries, key=lambda geometry: -geometry.weight)[:count])


def problem_of(data: FittingData, quantity: Quantity, rows: Mapping[str, int]) -> tuple[Problem, tuple[int, ...]]:
    """The shifts or couplings of all molecules that have some, and the places of the molecules in the data. rows: of
    the types in the parameter table. Every second molecule is in its stored geometry, the others are in made ones."""
    fitted, make = _PROBLEMS[quantity]
    chosen = [i for i, molecule in enumerate(data.molecules) if fitted(molecule)]
    geometries = [
        heaviest(data.made[i], FITTED_CONFORMERS[quantity]) if order % 2 else data.stored[i]
        for order, i in enumerate(chosen)
    ]
    types = [np.array([rows[name] for name in data.types[i]]) for i in chosen]
    return make([data.molecules[i] for i in chosen], types, geometries), tuple(chosen)
