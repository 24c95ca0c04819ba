# SPDX-License-Identifier: MIT
"""A stand-in for the worker whose values are a known smooth function of the parameters, so that a fit has a known
end."""
from collections.abc import Iterator, Sequence

import numpy as np
from velkoran_fit.observations import Observation, Problem
from velkoran_fit.parameter_space import Parameters
from velkoran_fit.worker import FIELDS, Job, Outcome, Quantity, Status

PUBLISHED = dict(
    OrbitalEnergyS=-14.0,
    OrbitalEnergyP=-5.5,
    SlaterExponentS=1.6,
    SlaterExponentP=1.6,
    BondingParameter=21.0,
    SlaterCondonG1=0.27,
    SlaterCondonF2=0.17,
    sDensity0=4.0,
    gFactor=1.4,
)
SLOPES = {"OrbitalEnergyP": 3.0, "SlaterExponentP": 40.0, "BondingParameter": 1.5}  # ppm a unit


def three_types() -> Parameters:
    """An element with two child types."""
    row = [PUBLISHED.get(field, 0.0) for field in FIELDS]
    return Parameters(("C", "C4", "C3"), (-1, 0, 0), np.array([row] * 3), {})


def value_of(row: np.ndarray) -> float:
    """The shielding of an atom with such parameters, ppm."""
    return float(sum(slope * row[FIELDS.index(field)] for field, slope in SLOPES.items()))


class LinearPool:
    """Answers jobs by value_of; molecules whose first coordinate is negative are refused."""

    def __init__(self) -> None:
        self.sets = 0  # parameter sets that were run

    def _values(self, job: Job, table: np.ndarray) -> list[float]:
        return [value_of(table[job.types[atom]]) for atom in job.atoms]

    def run(self, jobs: Sequence[Job], table: np.ndarray) -> Iterator[Outcome]:
        """As WorkerPool.run."""
        for job in jobs:
            rows = [self._values(job, table)]
            for variant in job.variants:
                changed = table.copy()
                for change in variant:
                    changed[change.row, FIELDS.index(change.field)] = change.value
                rows.append(self._values(job, changed))
            self.sets += len(rows)
            refused = job.coordinates[0, 0] < 0
            values = np.full((len(rows), len(job.atoms)), np.nan) if refused else np.array(rows)
            yield Outcome(np.full(len(rows), int(Status.REFUSED) if refused else 0), values)


def molecule_job(types: Sequence[int], refused: bool = False) -> Job:
    """A molecule of carbon atoms of these types, all of them selected."""
    count = len(types)
    coordinates = np.full((count, 3), -1.0 if refused else 1.0)
    return Job(Quantity.SHIELDING, np.full(count, 6), np.array(types), coordinates, np.arange(count))


def problem_for(types: Sequence[Sequence[int]], measured: Sequence[Sequence[float]]) -> Problem:
    """Molecules with one measured 13C shift an atom."""
    jobs = tuple(((1.0, molecule_job(own)),) for own in types)
    observations = tuple(
        Observation(molecule, (atom,), "13C", ppm, 3.0)
        for molecule, shifts in enumerate(measured)
        for atom, ppm in enumerate(shifts)
    )
    return Problem(Quantity.SHIELDING, tuple(np.array(own) for own in types), jobs, observations)
