# SPDX-License-Identifier: MIT
"""Measured values as functionals of computed ones, and the runs that compute them."""
from collections.abc import Callable, Mapping, Sequence
from dataclasses import dataclass, replace

import numpy as np
from scipy import sparse

from .parameter_space import Parameters, Variable, changes_of, scaled_values
from .worker import Job, Outcome, Quantity, Status, WorkerPool

# Deviation that counts as one in a fit, ppm or Hz; nuclei and kinds that aren't here aren't fitted.
SHIFT_UNITS: Mapping[str, float] = {"13C": 3.0, "1H": 0.25, "19F": 10.0, "15N": 12.0, "17O": 25.0, "29Si": 12.0}
# The same for couplings, by kind.
COUPLING_UNITS: Mapping[str, float] = {
    "1J(CH)": 4.0,
    "1J(CC)": 4.0,
    "2J(HH)": 1.5,
    "3J(HH)": 0.8,
    "4J(HH)": 0.5,
    "5J(HH)": 0.5,
}

DERIVATIVE_STEP = 0.15  # in scaled units


@dataclass(frozen=True)
class Observation:
    """One measured value.

    molecule: place in the list of molecules; places: indices into the flat values of its job, whose mean is compared;
    group: nucleus or kind of coupling; partner: place of the observation that it may be exchanged with, or -1.
    """

    molecule: int
    places: tuple[int, ...]
    group: str
    measured: float
    unit: float
    weight: float = 1.0
    partner: int = -1


@dataclass(frozen=True)
class Problem:
    """What is fitted: molecules with the types of their atoms, one job a geometry, and the observations.

    jobs: for each molecule pairs of weight and job, the weights of a molecule summing to 1.
    """

    quantity: Quantity
    types: tuple[np.ndarray, ...]
    jobs: tuple[tuple[tuple[float, Job], ...], ...]
    observations: tuple[Observation, ...]

    def of_molecules(self, chosen: Sequence[int]) -> "Problem":
        """The same with some of the molecules."""
        place = {molecule: new for new, molecule in enumerate(chosen)}
        kept = [i for i, o in enumerate(self.observations) if o.molecule in place]
        moved = {old: new for new, old in enumerate(kept)}
        moved[-1] = -1
        observations = tuple(
            replace(o, molecule=place[o.molecule], partner=moved[o.partner])
            for o in (self.observations[i] for i in kept)
        )
        return replace(
            self,
            types=tuple(self.types[i] for i in chosen),
            jobs=tuple(self.jobs[i] for i in chosen),
            observations=observations,
        )


@dataclass(frozen=True)
class Evaluation:
    """Computed values, (observations,), not a number where a molecule failed; and the worst status of each molecule."""

    values: np.ndarray
    status: np.ndarray


def _mean_values(problem: Problem, outcomes: Sequence[Outcome]) -> Evaluation:
    """Averages the base sets of all jobs of each molecule."""
    status = np.zeros(len(problem.jobs), int)
    means: list[np.ndarray] = []
    outcome = iter(outcomes)
    for place, jobs in enumerate(problem.jobs):
        mean = np.zeros(1)
        for weight, _ in jobs:
            answer = next(outcome)
            status[place] |= int(answer.status[0])
            mean = mean + weight * answer.values[0].ravel()
        means.append(mean)
    failed = (status & (Status.REFUSED | Status.FIELD)) != 0
    values = np.array([means[o.molecule][list(o.places)].mean() for o in problem.observations])
    values[[bool(failed[o.molecule]) for o in problem.observations]] = np.nan
    return Evaluation(values, status)


def evaluate(problem: Problem, parameters: Parameters, pool: WorkerPool) -> Evaluation:
    """The computed values of all observations, averaged over geometries."""
    jobs = [job for of_molecule in problem.jobs for _, job in of_molecule]
    return _mean_values(problem, list(pool.run(jobs, parameters.table())))


def _derivative_job(job: Job, types: np.ndarray, parameters: Parameters, variables: Sequence[Variable], u: np.ndarray):
    """A job with one variant for each variable that touches the molecule, and the variables' places."""
    rows = sorted(set(types.tolist()))
    steps = [(k, changes_of(parameters, v, u[k] + DERIVATIVE_STEP, rows)) for k, v in enumerate(variables)]
    steps = [(k, changes) for k, changes in steps if changes]
    return replace(job, variants=[changes for _, changes in steps]), [k for k, _ in steps]


def derivatives(
    problem: Problem,
    parameters: Parameters,
    variables: Sequence[Variable],
    pool: WorkerPool,
    progress: Callable[[int, int], None],
) -> sparse.csr_matrix:
    """Derivatives of the computed values by the scaled variables, (observations, variables), by one-sided differences
    in the first geometry of each molecule; only the variables that touch a molecule are run. Zero where a run failed.
    progress is called with the molecules done and all."""
    u = scaled_values(parameters, variables)
    derived = [
        _derivative_job(jobs[0][1], types, parameters, variables, u)
        for jobs, types in zip(problem.jobs, problem.types, strict=True)
    ]
    of_molecule: list[list[int]] = [[] for _ in problem.jobs]
    for i, observation in enumerate(problem.observations):
        of_molecule[observation.molecule].append(i)
    rows: list[int] = []
    columns: list[int] = []
    slopes: list[float] = []
    for place, outcome in enumerate(pool.run([job for job, _ in derived], parameters.table())):
        flat = outcome.values.reshape(len(outcome.values), -1)
        for i in of_molecule[place]:
            seen = flat[:, list(problem.observations[i].places)].mean(axis=1)
            slope = np.nan_to_num((seen[1:] - seen[0]) / DERIVATIVE_STEP)
            rows += [i] * len(slope)
            columns += derived[place][1]
            slopes += slope.tolist()
        progress(place + 1, len(derived))
    shape = (len(problem.observations), len(variables))
    return sparse.csr_matrix((slopes, (rows, columns)), shape=shape)
