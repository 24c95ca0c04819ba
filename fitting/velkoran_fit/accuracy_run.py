# SPDX-License-Identifier: MIT
"""Cross-validates a finished fit, and learns from all of it what references.json ships.

Parameters are fitted without each fold; correction and opponents learn from the other folds, with shieldings averaged
over stored and made geometries, and predict the fold in either kind of geometry.
"""
from collections.abc import Callable, Mapping, Sequence
from dataclasses import dataclass
from pathlib import Path

import numpy as np

from .arrays import Reals
from .atom_types import AtomType
from .computed_values import Computed, compute
from .coupling_sites import coupling_sites
from .cross_fit import fold_parameters
from .cross_validation import FOLDS, fold_of
from .fitting_data import FittingData, heaviest
from .neighbourhoods import type_chains
from .parameter_space import Parameters
from .sites import Site, measured_sites
from .stages import Fitted
from .worker import Quantity, WorkerPool

CONFORMERS = {Quantity.SHIELDING: 3, Quantity.COUPLING: 10}  # made ones that are averaged


@dataclass(frozen=True)
class Runs:
    """Computed values of all molecules in both kinds of geometries, with one set of parameters."""

    stored: Computed
    made: Computed

    def of_kind(self, kind: str) -> tuple[Reals, ...]:
        """The values in one kind of geometry."""
        return self.stored.values if kind == "stored" else self.made.values

    def mean(self) -> tuple[Reals, ...]:
        """The mean of both kinds."""
        return tuple((a + b) / 2 for a, b in zip(self.stored.values, self.made.values, strict=True))


def run_all(
    quantity: Quantity, data: FittingData, rows: Mapping[str, int], parameters: Parameters, pool: WorkerPool
) -> Runs:
    """Computes what has been measured of all molecules."""
    types = [np.array([rows[name] for name in names]) for names in data.types]
    made = [heaviest(geometries, CONFORMERS[quantity]) for geometries in data.made]
    return Runs(
        compute(quantity, data.molecules, types, data.stored, parameters, pool),
        compute(quantity, data.molecules, types, made, parameters, pool),
    )


def runs_by_fold(
    quantity: Quantity,
    data: FittingData,
    rows: Mapping[str, int],
    fitted: Fitted,
    places: Sequence[int],
    pool: WorkerPool,
    folder: Path,
    say: Callable[[str], None],
) -> list[Runs]:
    """For each fold the values with parameters that were fitted without it. places: of the fit's molecules in the
    data; folder: of checkpoints."""
    folds = [fold_of(data.molecules[place].key) for place in places]
    parameters = fold_parameters(fitted, folds, pool, folder, say)
    return [run_all(quantity, data, rows, parameters.get(fold, fitted.parameters), pool) for fold in range(FOLDS)]


def sites_of(
    quantity: Quantity,
    data: FittingData,
    values: Sequence[Reals],
    types: Sequence[AtomType],
) -> list[Site]:
    """The sites of shifts or couplings with computed values. Angles are those of made geometries, as a user without a
    structure has them."""
    chains = type_chains(types)
    if quantity == Quantity.SHIELDING:
        return measured_sites(data.molecules, data.types, values, chains)
    return coupling_sites(data.with_made_geometries(), data.types, [value.tolist() for value in values], chains)


def sites_by_fold(
    quantity: Quantity, data: FittingData, runs: Sequence[Runs], kind: str, types: Sequence[AtomType]
) -> list[list[Site]]:
    """The sites once for each fold: those of the fold in one kind of geometry, the others, which the fold learns from,
    with the mean of both kinds."""
    result = []
    for fold, run in enumerate(runs):
        mean, own = run.mean(), run.of_kind(kind)
        held_out = [fold_of(molecule.key) == fold for molecule in data.molecules]
        values = [one if out else average for out, one, average in zip(held_out, own, mean, strict=True)]
        result.append(sites_of(quantity, data, values, types))
    return result
