# SPDX-License-Identifier: MIT
"""Shieldings and couplings of molecules with given parameters, averaged over their geometries."""
from collections.abc import Callable, Iterator, Sequence
from dataclasses import dataclass

import numpy as np

from .arrays import Integers, Reals
from .molecules import Geometry, Molecule
from .parameter_space import Parameters
from .worker import Job, Quantity, Status, WorkerPool


@dataclass(frozen=True)
class Computed:
    """Values of one quantity for each molecule, not a number where they weren't asked for or a run failed.

    values: shieldings (atoms,) in ppm, or couplings in Hz, one for each measured coupling in their order; status: the
    bits of all runs of a molecule.
    """

    values: tuple[Reals, ...]
    status: Integers


def molecule_jobs(
    molecule: Molecule, types: Integers, atoms: Integers, quantity: Quantity, geometries: Sequence[Geometry]
) -> tuple[tuple[float, Job], ...]:
    """Pairs of weight and job, one for each geometry, the weights summing to 1. types: rows of the parameter table."""
    numbers = np.array([atom.GetAtomicNum() for atom in molecule.mol.GetAtoms()])
    charge = sum(atom.GetFormalCharge() for atom in molecule.mol.GetAtoms())
    total = sum(geometry.weight for geometry in geometries)
    return tuple(
        (geometry.weight / total, Job(quantity, numbers, types, geometry.coordinates, atoms, charge))
        for geometry in geometries
    )


def averaged_runs(
    jobs: Sequence[Sequence[tuple[float, Job]]], parameters: Parameters, pool: WorkerPool
) -> Iterator[tuple[Reals | None, int]]:
    """For each molecule the weighted mean of the values of its jobs, with the bits of status of all of them; None in
    place of the mean where there is no job, or where one was refused or has no converged field."""
    outcomes = pool.run([job for of_molecule in jobs for _, job in of_molecule], parameters.table())
    for of_molecule in jobs:
        mean, bits = np.zeros(1), 0
        for weight, _ in of_molecule:
            outcome = next(outcomes)
            mean = mean + weight * outcome.values[0]
            bits |= int(outcome.status[0])
        failed = not of_molecule or bits & (Status.REFUSED | Status.FIELD)
        yield None if failed else mean, bits


def _shift_atoms(molecule: Molecule) -> Integers:
    groups = [shift.atoms for shift in molecule.shifts]
    groups += [atoms for pair in molecule.pairs for atoms in (pair.first, pair.second)]
    return np.array(sorted({atom for atoms in groups for atom in atoms}), int)


def _coupling_atoms(molecule: Molecule) -> Integers:
    return np.array(sorted({pair[0] for coupling in molecule.couplings for pair in coupling.atom_pairs}), int)


def _shieldings(molecule: Molecule, atoms: Integers, mean: Reals | None) -> Reals:
    values = np.full(molecule.mol.GetNumAtoms(), np.nan)
    if mean is not None:
        values[atoms] = mean
    return values


def _couplings(molecule: Molecule, atoms: Integers, mean: Reals | None) -> Reals:
    if mean is None:
        return np.full(len(molecule.couplings), np.nan)
    row = {int(atom): i for i, atom in enumerate(atoms)}
    return np.array([np.mean([mean[row[i], j] for i, j in one.atom_pairs]) for one in molecule.couplings])


_READERS: dict[
    Quantity,
    tuple[Callable[[Molecule], Integers], Callable[[Molecule, Integers, Reals | None], Reals]],
] = {Quantity.SHIELDING: (_shift_atoms, _shieldings), Quantity.COUPLING: (_coupling_atoms, _couplings)}


def compute(
    quantity: Quantity,
    molecules: Sequence[Molecule],
    types: Sequence[Integers],
    geometries: Sequence[Sequence[Geometry]],
    parameters: Parameters,
    pool: WorkerPool,
) -> Computed:
    """Runs what has measured values of the quantity. types: rows of the atoms of each molecule; geometries: those that
    are averaged."""
    wanted, read = _READERS[quantity]
    atoms = [wanted(molecule) for molecule in molecules]
    jobs = [
        molecule_jobs(molecule, rows, own, quantity, forms) if len(own) else ()
        for molecule, rows, own, forms in zip(molecules, types, atoms, geometries, strict=True)
    ]
    status = np.zeros(len(molecules), int)
    values = []
    for place, (mean, bits) in enumerate(averaged_runs(jobs, parameters, pool)):
        status[place] = bits
        values.append(read(molecules[place], atoms[place], mean))
    return Computed(tuple(values), status)
