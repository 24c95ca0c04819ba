# SPDX-License-Identifier: MIT
"""Parameters fitted without some of the molecules, for cross-validation.

The Jacobian of the whole fit stands for that of each fold: the fold's own minimum of the linearised loss is found with
the molecules left out, and these are then computed anew with its parameters. The linearisation makes it pessimistic.
"""
from collections.abc import Sequence

import numpy as np
from scipy import sparse

from .arrays import Reals
from .least_squares import Penalty, fit_offsets, residuals, solve_step
from .observations import Problem
from .parameter_space import Parameters, scaled_bounds, scaled_values, with_scaled_values
from .stages import Fitted

ROUNDS = 6  # of reweighting
STEP = 2.0  # largest change of a scaled variable in a round


def refitted(
    problem: Problem,
    values: Reals,
    jacobian: sparse.csr_matrix,
    u: Reals,
    penalty: Penalty,
    bounds: Reals,
) -> Reals:
    """The scaled variables that minimise the loss of a problem whose values are linear about those at u."""
    new = u.copy()
    for _ in range(ROUNDS):
        linear = values + jacobian @ (new - u)
        now = residuals(problem, linear, fit_offsets(problem, linear))
        new = new + solve_step(problem, now, jacobian, new, penalty, bounds, STEP)
    return new


def fold_parameters(fitted: Fitted, folds: Sequence[int]) -> dict[int, Parameters]:
    """The parameters without each fold. fitted: a stage on all molecules; folds: the fold of each of its molecules.

    What counts is how far the minimum moves as the fold is left out; where the fit stopped short of its linearised
    minimum, that distance is the same with and without the fold, and is left out of the difference.
    """
    problem, values = fitted.problem, fitted.evaluation.values
    u = scaled_values(fitted.parameters, fitted.variables)
    bounds = scaled_bounds(fitted.parameters, fitted.variables)
    fold_of_row = np.array([folds[o.molecule % problem.molecule_count] for o in problem.observations])
    whole = refitted(problem, values, fitted.jacobian, u, fitted.penalty, bounds)
    parameters = {}
    for fold in sorted(set(folds)):
        train = problem.of_molecules([i for i, own in enumerate(folds) if own != fold])
        seen = np.flatnonzero(fold_of_row != fold)
        without = refitted(train, values[seen], fitted.jacobian[seen], u, fitted.penalty, bounds)
        moved = np.clip(u + without - whole, bounds[0], bounds[1])
        parameters[fold] = with_scaled_values(fitted.parameters, fitted.variables, moved)
    return parameters
