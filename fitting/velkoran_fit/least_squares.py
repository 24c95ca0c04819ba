# SPDX-License-Identifier: MIT
"""Penalised robust least squares: Gauss-Newton with bounds and a trust region, and Broyden steps between Jacobians.

Residuals are in the units of their observations. The loss is that of Huber (1964), by iterated weights; a Jacobian is
carried on by rank-one updates within its pattern (Schubert 1970).
"""
from collections.abc import Callable, Sequence
from dataclasses import dataclass

import numpy as np
from scipy import sparse
from scipy.linalg import cho_factor, cho_solve

from .arrays import Reals
from .observations import Evaluation, Problem
from .worker import Quantity

HUBER = 2.0  # units from which on a residual counts linearly
FAILED = 6.0  # units that a value of a failed molecule counts
TRUST = 1.0  # largest change of a scaled variable in a step
SMALLEST_TRUST = 0.05
ACTIVE_SET_ROUNDS = 50


@dataclass(frozen=True)
class Readout:
    """From computed to predicted values: predicted = offset of the group + slope * computed."""

    slope: float
    offsets: dict[str, float]


@dataclass(frozen=True)
class Residuals:
    """Residuals in units, (observations,), 0 where a molecule failed, and their Huber weights, 0 there too."""

    units: Reals
    weights: Reals
    loss: float


def slope_of(problem: Problem) -> float:
    """Shifts fall as shieldings rise."""
    return -1.0 if problem.quantity == Quantity.SHIELDING else 1.0


def _exchanged_measured(problem: Problem, predicted: Reals) -> Reals:
    """Measured values, those of unknown order sorted as the predicted ones are."""
    measured = np.array([o.measured for o in problem.observations])
    for i, observation in enumerate(problem.observations):
        j = observation.partner
        if j >= 0 and (predicted[i] - predicted[j]) * (measured[i] - measured[j]) < 0:
            measured[i], measured[j] = measured[j], measured[i]
    return measured


def huber_loss(units: Reals) -> Reals:
    """Huber's loss, a square up to HUBER units."""
    size = np.abs(units)
    return np.where(size <= HUBER, size**2, 2 * HUBER * size - HUBER**2)


def _offset(deviations: Reals, units: Reals) -> float:
    """The robust centre of deviations, by iterated weights."""
    centre = float(np.median(deviations))
    for _ in range(30):
        size = np.abs(deviations - centre) / units
        weights = np.where(size <= HUBER, 1.0, HUBER / np.maximum(size, HUBER)) / units**2
        centre = float(np.sum(weights * deviations) / np.sum(weights))
    return centre


def fit_offsets(problem: Problem, values: Reals) -> Readout:
    """The zero of each nucleus that suits the computed values best; couplings have none."""
    slope = slope_of(problem)
    groups = sorted({o.group for o in problem.observations})
    offsets = dict.fromkeys(groups, 0.0)
    if problem.quantity == Quantity.SHIELDING:
        group_of = np.array([o.group for o in problem.observations])
        measured = _exchanged_measured(problem, slope * values)
        units = np.array([o.unit for o in problem.observations])
        for group in groups:
            seen = (group_of == group) & np.isfinite(values)
            if seen.any():
                offsets[group] = _offset(measured[seen] - slope * values[seen], units[seen])
    return Readout(slope, offsets)


def residuals(problem: Problem, values: Reals, readout: Readout) -> Residuals:
    """Measured less predicted."""
    offsets = np.array([readout.offsets[o.group] for o in problem.observations])
    predicted = offsets + readout.slope * values
    units = (_exchanged_measured(problem, predicted) - predicted) / np.array([o.unit for o in problem.observations])
    failed = ~np.isfinite(units)
    importance = np.array([o.weight for o in problem.observations])
    units[failed] = FAILED
    loss = float(np.sum(importance * huber_loss(units)))
    size = np.abs(units)
    weights = importance * np.where(size <= HUBER, 1.0, HUBER / np.maximum(size, HUBER))
    units[failed] = 0.0
    weights[failed] = 0.0
    return Residuals(units, weights, loss)


@dataclass(frozen=True)
class Penalty:
    """weight * |differences @ u - centre|^2, in scaled variables: how far each is from its parent."""

    differences: sparse.csr_matrix  # (variables, variables)
    centre: Reals  # (variables,), the parent's value where it isn't a variable, else 0
    weight: float

    def loss(self, u: Reals) -> float:
        """The penalty's part of the loss."""
        return self.weight * float(np.sum((self.differences @ u - self.centre) ** 2))


def _offset_columns(problem: Problem) -> Reals:
    groups = sorted({o.group for o in problem.observations})
    if problem.quantity == Quantity.COUPLING:
        return np.zeros((len(problem.observations), 0))
    columns = np.zeros((len(problem.observations), len(groups)))
    for i, observation in enumerate(problem.observations):
        columns[i, groups.index(observation.group)] = 1.0 / observation.unit
    return columns


def bounded_minimum(gram: Reals, right: Reals, lowest: Reals, highest: Reals) -> Reals:
    """The x within bounds that minimises x gram x / 2 - right x, gram positive definite: an active set that takes up
    all that leave the bounds and gives up all whose gradient points inwards (Kunisch, Rendl 2003)."""
    x = np.clip(np.zeros(len(right)), lowest, highest)
    fixed = np.zeros(len(right), bool)
    for _ in range(ACTIVE_SET_ROUNDS):
        free = ~fixed
        x[free] = cho_solve(cho_factor(gram[np.ix_(free, free)]), right[free] - gram[np.ix_(free, fixed)] @ x[fixed])
        gradient = gram @ x - right
        leaving = free & ((x < lowest) | (x > highest))
        returning = fixed & (((x <= lowest) & (gradient < -1e-9)) | ((x >= highest) & (gradient > 1e-9)))
        if not leaving.any() and not returning.any():
            break
        fixed = (fixed | leaving) & ~returning
        x[leaving] = np.clip(x[leaving], lowest[leaving], highest[leaving])
    return np.clip(x, lowest, highest)


def solve_step(
    problem: Problem,
    now: Residuals,
    jacobian: sparse.csr_matrix,
    u: Reals,
    penalty: Penalty,
    bounds: Reals,
    trust: float,
) -> Reals:
    """The change of the scaled variables that minimises the linearised loss within bounds and trust region. The
    offsets are solved along with it."""
    roots = np.sqrt(now.weights)
    units = np.array([o.unit for o in problem.observations])
    physics = sparse.diags(roots * slope_of(problem) / units) @ jacobian
    offsets = roots[:, None] * _offset_columns(problem)
    count, extra = len(u), offsets.shape[1]
    gram = np.zeros((count + extra, count + extra))
    gram[:count, :count] = (physics.T @ physics).toarray()
    gram[:count, count:] = physics.T @ offsets
    gram[count:, :count] = gram[:count, count:].T
    gram[count:, count:] = offsets.T @ offsets
    right = np.concatenate([physics.T @ (roots * now.units), offsets.T @ (roots * now.units)])
    gram[:count, :count] += penalty.weight * (penalty.differences.T @ penalty.differences).toarray()
    right[:count] += penalty.weight * (penalty.differences.T @ (penalty.centre - penalty.differences @ u))
    gram += 1e-9 * np.eye(count + extra)
    lowest = np.concatenate([np.maximum(bounds[0] - u, -trust), np.full(extra, -np.inf)])
    highest = np.concatenate([np.minimum(bounds[1] - u, trust), np.full(extra, np.inf)])
    solution = bounded_minimum(gram, right, np.minimum(lowest, 0.0), np.maximum(highest, 0.0))
    return np.clip(solution[:count], bounds[0] - u, bounds[1] - u)


def updated_jacobian(jacobian: sparse.csr_matrix, step: Reals, change: Reals) -> sparse.csr_matrix:
    """The Jacobian after a step that changed the computed values so: each row within its own pattern."""
    new = jacobian.copy()
    miss = np.nan_to_num(change - jacobian @ step)
    squares = jacobian.copy()
    squares.data = step[jacobian.indices] ** 2
    length = np.asarray(squares.sum(axis=1)).ravel()
    factor = np.where(length > 1e-12, miss / np.maximum(length, 1e-12), 0.0)
    counts = np.diff(jacobian.indptr)
    new.data = jacobian.data + np.repeat(factor, counts) * step[jacobian.indices]
    return new


@dataclass
class State:
    """Where an optimisation stands."""

    u: Reals
    evaluation: Evaluation
    loss: float
    jacobian: sparse.csr_matrix
    trust: float = TRUST


def total_loss(problem: Problem, evaluation: Evaluation, u: Reals, penalty: Penalty) -> float:
    """Loss of residuals with the best offsets, and penalty."""
    readout = fit_offsets(problem, evaluation.values)
    return residuals(problem, evaluation.values, readout).loss + penalty.loss(u)


def improve(
    problem: Problem,
    state: State,
    penalty: Penalty,
    bounds: Reals,
    evaluate: Callable[[Reals], Evaluation],
    report: Callable[[str], None],
    attempts: int,
) -> State:
    """Steps with one Jacobian, carried on by updates, until the loss falls by less than a thousandth, the trust region
    is used up or the attempts are."""
    for _ in range(attempts):
        readout = fit_offsets(problem, state.evaluation.values)
        now = residuals(problem, state.evaluation.values, readout)
        step = solve_step(problem, now, state.jacobian, state.u, penalty, bounds, state.trust)
        if not step.any():
            break
        tried = evaluate(state.u + step)
        loss = total_loss(problem, tried, state.u + step, penalty)
        report(f"loss {state.loss:.1f} -> {loss:.1f}, longest step {np.abs(step).max():.2f}, trust {state.trust:.2f}")
        jacobian = updated_jacobian(state.jacobian, step, tried.values - state.evaluation.values)
        if loss < state.loss:
            gain = (state.loss - loss) / state.loss
            state = State(state.u + step, tried, loss, jacobian, min(TRUST, 1.5 * state.trust))
            if gain < 1e-3:
                break
        else:
            state = State(state.u, state.evaluation, state.loss, jacobian, 0.4 * state.trust)
            if state.trust < SMALLEST_TRUST:
                break
    return state
