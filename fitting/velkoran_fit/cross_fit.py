# SPDX-License-Identifier: MIT
"""Parameters fitted without some of the molecules, for cross-validation.

Each fold runs the last stage anew, from where it began for all, on the molecules of the other folds. They share the
first Jacobian, whose rows don't depend on the fold.
"""
from collections.abc import Callable, Sequence
from pathlib import Path

from .arrays import Reals
from .checkpoint import Checkpoint, load_checkpoint, save_checkpoint
from .least_squares import State, improve, total_loss
from .observations import Evaluation, evaluate
from .parameter_space import Parameters, scaled_bounds, with_scaled_values
from .stages import Fitted
from .worker import WorkerPool


def _fitted_without(
    fitted: Fitted, rest: Sequence[int], first: Evaluation, pool: WorkerPool, say: Callable[[str], None]
) -> State:
    """The stage on the rest of its molecules; first: of all of them at the start."""
    problem, rows = fitted.problem.of_molecules(rest), fitted.problem.rows_of(rest)
    bounds = scaled_bounds(fitted.parameters, fitted.variables)

    def value_at(u: Reals) -> Evaluation:
        return evaluate(problem, with_scaled_values(fitted.parameters, fitted.variables, u), pool)

    evaluation = Evaluation(first.values[rows], first.status[list(rest)])
    loss = total_loss(problem, evaluation, fitted.start, fitted.penalty)
    state = State(fitted.start, evaluation, loss, fitted.jacobian[rows])
    return improve(problem, state, fitted.penalty, bounds, value_at, say, fitted.stage.attempts)


def fold_parameters(
    fitted: Fitted, folds: Sequence[int], pool: WorkerPool, folder: Path, say: Callable[[str], None]
) -> dict[int, Parameters]:
    """The parameters without each fold. folds: the fold of each molecule of the stage; folder: of checkpoints."""
    first = evaluate(fitted.problem, with_scaled_values(fitted.parameters, fitted.variables, fitted.start), pool)
    parameters = {}
    for fold in sorted(set(folds)):
        path = folder / f"{fitted.problem.quantity.name.lower()}_without_fold_{fold}.npz"
        point = load_checkpoint(path)
        if point is None:
            rest = [i for i, own in enumerate(folds) if own != fold]
            say(f"without fold {fold}: {len(rest)} molecules")
            state = _fitted_without(fitted, rest, first, pool, say)
            point = Checkpoint(1, True, state.u, state.jacobian)
            save_checkpoint(path, point)
        parameters[fold] = with_scaled_values(fitted.parameters, fitted.variables, point.u)
    return parameters
