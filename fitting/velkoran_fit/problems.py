# SPDX-License-Identifier: MIT
"""Makes problems of molecules: which value of which run belongs to which measured one."""
from collections.abc import Mapping, Sequence

import numpy as np

from .arrays import Integers
from .computed_values import molecule_jobs
from .molecules import Coupling, Geometry, Molecule
from .observations import COUPLING_UNITS, SHIFT_UNITS, Observation, Problem
from .worker import Quantity

# A coupling along a rigid path counts fully; one that conformers average half where there are several, and hardly
# where one geometry has to stand for them.
AVERAGED_WEIGHT = 0.5
ONE_GEOMETRY_WEIGHT = 0.1
UNVERIFIED_WEIGHT = 0.5  # of values from memory, times that of the others


def _confidence_weight(molecule: Molecule) -> float:
    return UNVERIFIED_WEIGHT if "unverified" in molecule.confidence else 1.0


def fitted_shifts(molecule: Molecule) -> list[tuple[tuple[int, ...], str, float, bool]]:
    """Atoms, nucleus, value of each shift that is fitted; True where the next row may be exchanged with this one."""
    rows = [(s.atoms, s.nucleus, s.ppm, False) for s in molecule.shifts]
    for pair in molecule.pairs:
        rows.append((pair.first, pair.nucleus, pair.ppm[0], True))
        rows.append((pair.second, pair.nucleus, pair.ppm[1], False))
    return [row for row in rows if row[1] in SHIFT_UNITS]


def fitted_couplings(molecule: Molecule) -> list[Coupling]:
    """The couplings that are fitted."""
    return [c for c in molecule.couplings if c.kind in COUPLING_UNITS and not c.ambiguous]


def shielding_problem(
    molecules: Sequence[Molecule], types: Sequence[Integers], geometries: Sequence[Sequence[Geometry]]
) -> Problem:
    """The shifts of molecules; types: rows of their atoms; geometries: those of each molecule that are averaged."""
    jobs = []
    observations: list[Observation] = []
    for number, (molecule, rows, forms) in enumerate(zip(molecules, types, geometries, strict=True)):
        shifts = fitted_shifts(molecule)
        atoms = np.array(sorted({atom for row in shifts for atom in row[0]}), int)
        place = {int(atom): i for i, atom in enumerate(atoms)}
        jobs.append(molecule_jobs(molecule, rows, atoms, Quantity.SHIELDING, forms))
        for own, nucleus, ppm, exchanged in shifts:
            places = tuple(place[atom] for atom in own)
            here = len(observations)
            partner = here + 1 if exchanged else -1
            weight = _confidence_weight(molecule)
            observations.append(Observation(number, places, nucleus, ppm, SHIFT_UNITS[nucleus], weight, partner))
    return Problem(Quantity.SHIELDING, tuple(types), tuple(jobs), tuple(observations))


def _coupling_places(coupling: Coupling, rows: Mapping[int, int], atom_count: int) -> tuple[int, ...]:
    return tuple(rows[i] * atom_count + j for i, j in coupling.atom_pairs)


def coupling_problem(
    molecules: Sequence[Molecule], types: Sequence[Integers], geometries: Sequence[Sequence[Geometry]]
) -> Problem:
    """The couplings of molecules, as for shifts; those between all spins of a molecule are one run."""
    jobs = []
    observations: list[Observation] = []
    for number, (molecule, rows, forms) in enumerate(zip(molecules, types, geometries, strict=True)):
        couplings = fitted_couplings(molecule)
        atoms = np.array(sorted({pair[0] for c in couplings for pair in c.atom_pairs}), int)
        row_of = {int(atom): i for i, atom in enumerate(atoms)}
        jobs.append(molecule_jobs(molecule, rows, atoms, Quantity.COUPLING, forms))
        for coupling in couplings:
            places = _coupling_places(coupling, row_of, molecule.mol.GetNumAtoms())
            averaged = AVERAGED_WEIGHT if forms[0].kind == "made" else ONE_GEOMETRY_WEIGHT
            weight = _confidence_weight(molecule) * (1.0 if coupling.rigid else averaged)
            unit = COUPLING_UNITS[coupling.kind]
            observations.append(Observation(number, places, coupling.kind, coupling.hertz, unit, weight))
    return Problem(Quantity.COUPLING, tuple(types), tuple(jobs), tuple(observations))
