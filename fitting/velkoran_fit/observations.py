# SPDX-License-Identifier: MIT
"""Measured values as functionals of computed ones, and the runs that compute them."""
from collections.abc import Callable, Mapping, Sequence
from dataclasses import dataclass, replace

import numpy as np
from scipy import sparse

from .arrays import Integers, Reals
from .computed_values import averaged_runs
from .parameter_space import Parameters, Variable, changes_of, scaled_values
from .worker import Job, Quantity, WorkerPool

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
    "2J(CH)": 3.0,
    "3J(CH)": 2.0,
    "1J(NH)": 6.0,
    "1J(NC)": 4.0,
    "1J(CF)": 30.0,
    "2J(CF)": 10.0,
    "2J(HF)": 6.0,
    "3J(HF)": 4.0,
    "1J(PH)": 40.0,
    "1J(SiH)": 20.0,
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
    types: tuple[Integers, ...]
    jobs: tuple[tuple[tuple[float, Job], ...], ...]
    observations: tuple[Observation, ...]

    def rows_of(self, chosen: Sequence[int]) -> Integers:
        """The places of the observations of some molecules."""
        wanted = set(chosen)
        return np.array([i for i, o in enumerate(self.observations) if o.molecule in wanted], int)

    def of_molecules(self, chosen: Sequence[int]) -> "Problem":
        """The same with some of the molecules."""
        place = {molecule: new for new, molecule in enumerate(chosen)}
        kept = self.rows_of(chosen).tolist()
        moved = {-1: -1} | {old: new for new, old in enumerate(kept)}
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

    values: Reals
    status: Integers


def evaluate(problem: Problem, parameters: Parameters, pool: WorkerPool) -> Evaluation:
    """The computed values of all observations, averaged over geometries."""
    averages = list(averaged_runs(problem.jobs, parameters, pool))
    flat = [None if mean is None else mean.ravel() for mean, _ in averages]
    means = ((flat[o.molecule], list(o.places)) for o in problem.observations)
    values = np.array([np.nan if mean is None else mean[places].mean() for mean, places in means])
    return Evaluation(values, np.array([bits for _, bits in averages], int))


@dataclass(frozen=True)
class _DerivativeRun:
    """A job with one variant for each variable that touches a molecule, and what is read from it: of each observation
    the first place alone, since nuclei whose values are averaged hardly differ in their derivatives."""

    job: Job
    variables: tuple[int, ...]
    rows: tuple[int, ...]  # observations
    places: tuple[int, ...]  # in the flat values, one each


def _derivative_run(
    job: Job,
    types: Integers,
    rows: Sequence[int],
    problem: Problem,
    parameters: Parameters,
    variables: Sequence[Variable],
    u: Reals,
) -> _DerivativeRun:
    present = sorted(set(types.tolist()))
    steps = [(k, changes_of(parameters, v, u[k] + DERIVATIVE_STEP, present)) for k, v in enumerate(variables)]
    steps = [(k, changes) for k, changes in steps if changes]
    width = len(job.numbers) if job.quantity == Quantity.COUPLING else 1
    first = [problem.observations[i].places[0] for i in rows]
    kept = sorted({place // width for place in first})
    new = replace(job, atoms=job.atoms[kept], variants=[changes for _, changes in steps])
    places = tuple(kept.index(place // width) * width + place % width for place in first)
    return _DerivativeRun(new, tuple(k for k, _ in steps), tuple(rows), places)


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
    count = len(problem.jobs)
    of_molecule: list[list[int]] = [[] for _ in range(count)]
    for i, observation in enumerate(problem.observations):
        of_molecule[observation.molecule].append(i)
    runs = [
        _derivative_run(problem.jobs[k][0][1], problem.types[k], of_molecule[k], problem, parameters, variables, u)
        for k in range(count)
    ]
    rows: list[int] = []
    columns: list[int] = []
    slopes: list[float] = []
    for done, (run, outcome) in enumerate(zip(runs, pool.run([run.job for run in runs], parameters.table()))):
        flat = outcome.values.reshape(len(outcome.values), -1)
        for i, place in zip(run.rows, run.places):
            rows += [i] * len(run.variables)
            columns += run.variables
            slopes += np.nan_to_num((flat[1:, place] - flat[0, place]) / DERIVATIVE_STEP).tolist()
        progress(done + 1, count)
    return sparse.csr_matrix((slopes, (rows, columns)), shape=(len(problem.observations), len(variables)))
