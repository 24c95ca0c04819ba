# SPDX-License-Identifier: MIT
"""The stages of a fit, from parent to child: elements, hybridisations, neighbours."""
import time
from collections.abc import Callable, Sequence
from dataclasses import dataclass, replace
from pathlib import Path

import numpy as np
from scipy import sparse

from .arrays import Integers, Reals
from .checkpoint import Checkpoint, load_checkpoint, save_checkpoint
from .least_squares import Penalty, State, improve, total_loss
from .observations import Evaluation, Problem, derivatives, evaluate
from .parameter_space import (
    BONDING,
    ENERGIES,
    EXPONENTS,
    S_DENSITY,
    SLATER_CONDON,
    FreeField,
    Parameters,
    Variable,
    scaled,
    scaled_bounds,
    scaled_values,
    with_scaled_values,
)
from .worker import FIELDS, Quantity, WorkerPool


@dataclass(frozen=True)
class Stage:
    """One stage: which types get numbers of their own, and how long it may take.

    depths: of the types in their tree, elements being 0; jacobians: Jacobians at most, with so many attempts at a step
    each; every: every how many-th molecule is run; molecules: that must hold a type before it is freed; penalty:
    weight of the pull towards the parent.
    """

    name: str
    depths: tuple[int, ...]
    slater_condon: bool
    jacobians: int
    attempts: int
    every: int
    molecules: int
    penalty: float


STAGES = (
    Stage("element", (0,), True, 2, 8, 8, 10, 1.0),
    Stage("hybridisation", (1, 2), False, 2, 8, 3, 12, 4.0),
    Stage("neighbours", (1, 2, 3, 4, 5, 6), False, 2, 8, 1, 12, 8.0),
)


def lineage(parameters: Parameters, row: int) -> tuple[int, ...]:
    """A type and its ancestors."""
    rows = [row]
    while parameters.parents[rows[-1]] >= 0:
        rows.append(parameters.parents[rows[-1]])
    return tuple(rows)


def depth(parameters: Parameters, row: int) -> int:
    """Steps from a type up to its element."""
    return len(lineage(parameters, row)) - 1


def molecules_of_types(problem: Problem, parameters: Parameters) -> Integers:
    """For each type the number of molecules that hold it or one that descends from it."""
    counts = np.zeros(len(parameters.names), int)
    for types in problem.types:
        counts[sorted({ancestor for row in set(types.tolist()) for ancestor in lineage(parameters, row)})] += 1
    return counts


def _fields_of(parameters: Parameters, row: int, stage: Stage, quantity: Quantity) -> list[FreeField]:
    """What is free of a type: no p orbital of hydrogen, no stand-in for a constant that the method has no use of."""
    fields = [*EXPONENTS, *ENERGIES, BONDING]
    if stage.slater_condon:
        fields += SLATER_CONDON
    if quantity == Quantity.COUPLING:
        fields.append(S_DENSITY)
    published = dict(zip(FIELDS, parameters.published[row]))
    return [field for field in fields if abs(published[field.name]) > 0.002]


def variables_of(stage: Stage, problem: Problem, parameters: Parameters) -> list[Variable]:
    """The variables of a stage, in the order of the types."""
    counts = molecules_of_types(problem, parameters)
    return [
        Variable(row, field)
        for row in range(len(parameters.names))
        if depth(parameters, row) in stage.depths and counts[row] >= stage.molecules
        for field in _fields_of(parameters, row, stage, problem.quantity)
    ]


def hierarchical_penalty(parameters: Parameters, variables: Sequence[Variable], weight: float) -> Penalty:
    """Pulls each variable towards its nearest ancestor: to the variable of that, if it has one, or to its number."""
    place = {(v.row, v.field.name): k for k, v in enumerate(variables)}
    differences = sparse.lil_matrix((len(variables), len(variables)))
    centre = np.zeros(len(variables))
    for k, variable in enumerate(variables):
        differences[k, k] = 1.0
        name = variable.field.name
        ancestors = lineage(parameters, variable.row)[1:]
        nearest = next((place[row, name] for row in ancestors if (row, name) in place), None)
        if nearest is not None:
            differences[k, nearest] = -1.0
        elif ancestors:
            centre[k] = scaled(parameters, variable, parameters.value(ancestors[0], name))
    return Penalty(differences.tocsr(), centre, weight)


@dataclass(frozen=True)
class Fitted:
    """A stage when it is done, and what a fit of it without some of the molecules starts from.

    problem: of the molecules of the stage; start: scaled variables before its first step, jacobian: there.
    """

    stage: Stage
    parameters: Parameters
    problem: Problem
    variables: tuple[Variable, ...]
    penalty: Penalty
    start: Reals
    jacobian: sparse.csr_matrix


def run_stage(
    stage: Stage,
    problem: Problem,
    parameters: Parameters,
    pool: WorkerPool,
    folder: Path,
    say: Callable[[str], None],
) -> Fitted:
    """Fits the variables of a stage; goes on from the checkpoint in folder where there is one of this stage."""
    problem = problem.of_molecules(range(0, len(problem.jobs), stage.every))
    variables = variables_of(stage, problem, parameters)
    penalty = hierarchical_penalty(parameters, variables, stage.penalty)
    start = scaled_values(parameters, variables)
    parameters = with_scaled_values(parameters, variables, start)
    bounds = scaled_bounds(parameters, variables)
    path = folder / f"{problem.quantity.name.lower()}_{stage.name}.npz"
    point = load_checkpoint(path) or Checkpoint(0, not variables, start, sparse.csr_matrix((0, 0)))
    say(f"{stage.name}: {len(variables)} variables, {len(problem.jobs)} molecules, {len(problem.observations)} values")

    def value_at(u: Reals) -> Evaluation:
        return evaluate(problem, with_scaled_values(parameters, variables, u), pool)

    while not point.finished:
        evaluation = value_at(point.u)
        before = total_loss(problem, evaluation, point.u, penalty)
        began = time.monotonic()
        here = with_scaled_values(parameters, variables, point.u)
        jacobian = derivatives(problem, here, variables, pool, _progress(say))
        say(f"{stage.name}: Jacobian {point.jacobians + 1} of {stage.jacobians}, {time.monotonic() - began:.0f} s")
        state = State(point.u, evaluation, before, jacobian)
        state = improve(problem, state, penalty, bounds, value_at, say, stage.attempts)
        finished = point.jacobians + 1 == stage.jacobians or state.loss > 0.99 * before
        first = jacobian if point.jacobians == 0 else point.jacobian
        point = Checkpoint(point.jacobians + 1, finished, state.u, first)
        save_checkpoint(path, point)
    fitted = with_scaled_values(parameters, variables, point.u)
    return Fitted(stage, fitted, problem, tuple(variables), penalty, start, point.jacobian)


def _progress(say: Callable[[str], None]) -> Callable[[int, int], None]:
    """Says each tenth of the molecules."""

    def report(done: int, count: int) -> None:
        if done * 10 // count > (done - 1) * 10 // count:
            say(f"  derivatives: {done} of {count} molecules")

    return report


def quick(stage: Stage) -> Stage:
    """A stage with one Jacobian on all molecules that there are, for a fit of few."""
    return replace(stage, every=1, jacobians=1, attempts=2, molecules=3)
