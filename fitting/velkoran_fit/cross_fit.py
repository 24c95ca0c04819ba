# SPDX-License-Identifier: MIT
"""Parameters fitted without some of the molecules, for cross-validation.

The Jacobian of the whole fit stands for that of each fold: the fold's own minimum of the linearised loss is found with
the molecules left out, and these are then computed anew with its parameters. A test of the whole road against a fit
that never saw a fold stands in docs/accuracy.md.
"""
from collections.abc import Sequence

import numpy as np
from scipy import sparse

from .least_squares import Penalty, fit_offsets, residuals, solve_step
from .observations import Problem, evaluate
from .parameter_space import Parameters, Variable, scaled_bounds, scaled_values, with_scaled_values
from .worker import WorkerPool

ROUNDS = 12  # of reweighting
STEP = 2.0  # largest change of a scaled variable in a round


def refitted(
    problem: Problem,
    values: np.ndarray,
    jacobian: sparse.csr_matrix,
    u: np.ndarray,
    penalty: Penalty,
    bounds: np.ndarray,
) -> np.ndarray:
    """The scaled variables that minimise the loss of a problem whose values are linear about those at u."""
    new = u.copy()
    for _ in range(ROUNDS):
        linear = values + jacobian @ (new - u)
        now = residuals(problem, linear, fit_offsets(problem, linear))
        new = new + solve_step(problem, now, jacobian, new, penalty, bounds, STEP)
    return new


def held_out_values(
    problem: Problem,
    parameters: Parameters,
    variables: Sequence[Variable],
    penalty: Penalty,
    jacobian: sparse.csr_matrix,
    values: np.ndarray,
    folds: Sequence[int],
    pool: WorkerPool,
) -> np.ndarray:
    """Computed values of all observations, (observations,), each with parameters that were fitted without the fold of
    its molecule. folds: the fold of each molecule; jacobian, values: at the parameters of the whole fit."""
    u = scaled_values(parameters, variables)
    bounds = scaled_bounds(parameters, variables)
    fold_of_row = np.array([folds[o.molecule % problem.molecule_count] for o in problem.observations])
    held_out = np.full(len(values), np.nan)
    for fold in sorted(set(folds)):
        train = problem.of_molecules([i for i, f in enumerate(folds) if f != fold])
        seen = fold_of_row != fold
        new = refitted(train, values[seen], jacobian[np.flatnonzero(seen)], u, penalty, bounds)
        test = problem.of_molecules([i for i, f in enumerate(folds) if f == fold])
        held_out[~seen] = evaluate(test, with_scaled_values(parameters, variables, new), pool).values
    return held_out
