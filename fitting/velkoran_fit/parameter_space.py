# SPDX-License-Identifier: MIT
"""Parameters by atom type: what may vary, in which units, within which bounds, and what a type inherits.

A type without a number of its own for a field takes that of its parent; the roots are the elements, whose numbers are
the published ones until they are fitted.
"""
import math
from collections.abc import Iterable, Mapping, Sequence
from dataclasses import dataclass, replace

import numpy as np

from .arrays import Reals
from .worker import FIELDS, Change


@dataclass(frozen=True)
class FreeField:
    """A field that a fit may change, and its scale.

    The scaled variable of a value is ln(value / published) / unit or (value - published) / unit; it's what penalty and
    trust region measure. Bounds are in the field's own unit, or ratios to the published value.
    """

    name: str
    unit: float
    logarithmic: bool
    lowest: float
    highest: float


# Beyond these bounds a number is no longer what its name says: energies stay those of bound electrons.
EXPONENTS = (
    FreeField("SlaterExponentS", 0.06, True, 0.70, 1.40),
    FreeField("SlaterExponentP", 0.06, True, 0.70, 1.40),
)
ENERGIES = (
    FreeField("OrbitalEnergyS", 2.0, False, -60.0, -1.0),
    FreeField("OrbitalEnergyP", 2.0, False, -30.0, -0.5),
)
BONDING = FreeField("BondingParameter", 0.20, True, 0.35, 3.0)
SLATER_CONDON = (
    FreeField("SlaterCondonG1", 0.15, True, 0.5, 1.6),
    FreeField("SlaterCondonF2", 0.15, True, 0.5, 1.6),
)
S_DENSITY = FreeField("sDensity0", 0.20, True, 0.3, 3.0)


@dataclass(frozen=True)
class Variable:
    """One number that a fit changes: a field of a type."""

    row: int
    field: FreeField


@dataclass(frozen=True)
class Parameters:
    """The parameters of all types.

    names, parents: of each type, the parent's row, -1 for an element; published: (types, 14) numbers of the type's
    element, columns by worker.FIELDS; own: the numbers that types have for themselves, by row and field.
    """

    names: tuple[str, ...]
    parents: tuple[int, ...]
    published: Reals
    own: Mapping[tuple[int, str], float]

    def with_own(self, numbers: Mapping[tuple[int, str], float]) -> "Parameters":
        """The same with further numbers of their own."""
        return replace(self, own={**self.own, **numbers})

    def giver(self, row: int, field: str) -> int:
        """The type whose own number a type takes for a field; -1: it takes the published one."""
        while row >= 0 and (row, field) not in self.own:
            row = self.parents[row]
        return row

    def value(self, row: int, field: str) -> float:
        """The number of a type for a field."""
        giver = self.giver(row, field)
        return self.own[giver, field] if giver >= 0 else self.published_value(row, field)

    def published_value(self, row: int, field: str) -> float:
        """The published number of a type's element for a field."""
        return float(self.published[row, FIELDS.index(field)])

    def table(self) -> Reals:
        """All numbers, (types, 14)."""
        table = self.published.copy()
        for field in sorted({field for _, field in self.own}):
            column = FIELDS.index(field)
            for row in range(len(self.names)):
                table[row, column] = self.value(row, field)
        return table


def scaled(parameters: Parameters, variable: Variable, value: float) -> float:
    """The scaled variable of a value."""
    published = parameters.published_value(variable.row, variable.field.name)
    if variable.field.logarithmic:
        return math.log(value / published) / variable.field.unit
    return (value - published) / variable.field.unit


def unscaled(parameters: Parameters, variable: Variable, u: float) -> float:
    """The value of a scaled variable."""
    published = parameters.published_value(variable.row, variable.field.name)
    if variable.field.logarithmic:
        return published * math.exp(u * variable.field.unit)
    return published + u * variable.field.unit


def scaled_bounds(parameters: Parameters, variables: Sequence[Variable]) -> Reals:
    """Lowest and highest scaled value of each variable, (2, variables)."""
    bounds = np.empty((2, len(variables)))
    for column, variable in enumerate(variables):
        for row, limit in enumerate((variable.field.lowest, variable.field.highest)):
            published = parameters.published_value(variable.row, variable.field.name)
            value = limit * published if variable.field.logarithmic else limit
            bounds[row, column] = scaled(parameters, variable, value)
    return bounds


def scaled_values(parameters: Parameters, variables: Sequence[Variable]) -> Reals:
    """The scaled values of variables as the parameters have them, (variables,)."""
    return np.array([scaled(parameters, v, parameters.value(v.row, v.field.name)) for v in variables])


def with_scaled_values(parameters: Parameters, variables: Sequence[Variable], u: Iterable[float]) -> Parameters:
    """The parameters with other values of the variables, which become the types' own."""
    pairs = zip(variables, u, strict=True)
    return parameters.with_own({(v.row, v.field.name): unscaled(parameters, v, x) for v, x in pairs})


def changes_of(parameters: Parameters, variable: Variable, u: float, rows: Iterable[int]) -> tuple[Change, ...]:
    """What another scaled value of a variable changes in the table, for these rows only: the type and all that inherit
    from it. The variable must be the type's own already."""
    value = unscaled(parameters, variable, u)
    name = variable.field.name
    return tuple(Change(row, name, value) for row in rows if parameters.giver(row, name) == variable.row)
