# SPDX-License-Identifier: MIT
"""The stages of a fit, from parent to child: elements, hybridisations, neighbours."""
import time
from collections.abc import Callable, Sequence
from dataclasses import dataclass, replace
from pathlib import Path

import numpy as np

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
    Stage("element", (0,), True, 3, 4, 4, 10, 1.0),
    Stage("hybridisation", (1,), False, 2, 4, 2, 10, 2.0),
    Stage("neighbours", (2, 3, 4), False, 2, 4, 1, 10, 2.0),
)


def depth(parameters: Parameters, row: int) -> int:
    """Steps from a type up to its element."""
    steps = 0
    while parameters.parents[row] >= 0:
        row = parameters.parents[row]
        steps += 1
    return steps


def lineage(parameters: Parameters, row: int) -> tuple[int, ...]:
    """A type and its ancestors."""
    rows = [row]
    while parameters.parents[rows[-1]] >= 0:
        rows.append(parameters.parents[rows[-1]])
    return tuple(rows)


def molecules_of_types(problem: Problem, parameters: Parameters) -> np.ndarray:
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


def _centre(parameters: Parameters, variables: Sequence[Variable]) -> np.ndarray:
    """Where the penalty pulls to: the number of the parent, of an element the published one."""
    values = []
    for variable in variables:
        parent = parameters.parents[variable.row]
        name = variable.field.name
        value = parameters.value(parent, name) if parent >= 0 else parameters.published[variable.row, FIELDS.index(name)]
        values.append(scaled(parameters, variable, float(value)))
    return np.array(values)


def run_stage(
    stage: Stage,
    problem: Problem,
    parameters: Parameters,
    pool: WorkerPool,
    folder: Path,
    say: Callable[[str], None],
) -> Parameters:
    """Fits the variables of a stage; goes on from the checkpoint in folder where there is one of this stage."""
    problem = problem.of_molecules(range(0, len(problem.jobs), stage.every))
    variables = variables_of(stage, problem, parameters)
    centre = _centre(parameters, variables)
    parameters = with_scaled_values(parameters, variables, scaled_values(parameters, variables))
    bounds = scaled_bounds(parameters, variables)
    penalty = Penalty(centre, stage.penalty)
    path = folder / f"{problem.quantity.name.lower()}_{stage.name}.npz"
    resumed = load_checkpoint(path)
    done, u = (resumed.jacobians, resumed.u) if resumed else (0, scaled_values(parameters, variables))
    say(f"{stage.name}: {len(variables)} variables, {len(problem.jobs)} molecules, {len(problem.observations)} values")

    def at(u: np.ndarray) -> Parameters:
        return with_scaled_values(parameters, variables, u)

    def value_at(u: np.ndarray) -> Evaluation:
        return evaluate(problem, at(u), pool)

    evaluation = value_at(u)
    while done < stage.jacobians:
        before = total_loss(problem, evaluation, u, penalty)
        start = time.monotonic()
        jacobian = derivatives(problem, at(u), variables, pool, _progress(say))
        say(f"{stage.name}: Jacobian {done + 1} of {stage.jacobians} in {time.monotonic() - start:.0f} s")
        state = improve(
            problem, State(u, evaluation, before, jacobian), penalty, bounds, value_at, say, stage.attempts
        )
        u, evaluation, done = state.u, state.evaluation, done + 1
        save_checkpoint(path, Checkpoint(done, u, state.jacobian))
        if state.loss > 0.99 * before:
            break
    return at(u)


def _progress(say: Callable[[str], None]) -> Callable[[int, int], None]:
    """Says each tenth of the molecules."""

    def report(done: int, count: int) -> None:
        if done * 10 // count > (done - 1) * 10 // count:
            say(f"  derivatives: {done} of {count} molecules")

    return report


def quick(stage: Stage, every: int) -> Stage:
    """A stage on fewer molecules, with one Jacobian: for a look at the whole road."""
    return replace(stage, every=every, jacobians=1, attempts=2)
