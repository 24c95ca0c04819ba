# SPDX-License-Identifier: MIT
"""How far off a prediction is likely to be, learnt from cross-validated deviations.

The standard uncertainty is a width for the novelty of the environment (see additive_model), times a factor for the
type, times another where few values of the type are known. 68.3 % of the deviations that it was learnt from lie within
it, as of a normal distribution.
"""
from collections.abc import Mapping, Sequence
from dataclasses import dataclass, replace

import numpy as np

from .arrays import Reals


SHARE = 0.683
LARGEST_NUMBER_OF_BINS = 8
LEAST_IN_BIN = 25
LEAST_OF_TYPE = 20
SHRINKAGE = 30.0  # values that the parent's factor counts for


@dataclass(frozen=True)
class Uncertainty:
    """Widths at novelties, interpolated between and constant beyond them, and factors by type."""

    novelties: tuple[float, ...]  # ascending
    widths: tuple[float, ...]
    factors: Mapping[str, float]
    rare: float = 1.0  # factor where the type has no factor of its own but an ancestor or nothing has
    without_physics: float = 1.0  # factor where the run of the physics failed


def standard_uncertainty(table: Uncertainty, novelty: float, chain: Sequence[str], physics: bool = True) -> float:
    """In the unit of the widths. The factor is that of the last type of the chain that has one."""
    width = float(np.interp(novelty, table.novelties, table.widths))
    factor = _factor(table.factors, chain) * (1.0 if _is_known(table.factors, chain) else table.rare)
    return width * factor * (1.0 if physics else table.without_physics)


def share_within(deviations: Reals, uncertainties: Reals) -> float:
    """The share of deviations that are no larger than their uncertainties."""
    return float(np.mean(np.abs(deviations) <= uncertainties))


def calibrate(
    deviations: Reals,
    novelties: Reals,
    chains: Sequence[Sequence[str]],
    without_physics: Reals | None = None,
) -> Uncertainty:
    """Learns the table from deviations (n,) of things of such novelties (n,) and types; without_physics are the
    deviations (n,) of predictions that didn't know the computed values. ValueError if there are no deviations."""
    sizes = np.abs(np.asarray(deviations, dtype=np.float64))
    if not len(sizes):
        raise ValueError("there are no deviations to calibrate by")
    middles, widths = _widths(sizes, np.asarray(novelties, dtype=np.float64))
    ratios = sizes / np.interp(novelties, middles, widths)
    factors = _factors(ratios, chains)
    ratios /= np.array([_factor(factors, chain) for chain in chains])
    known = np.array([_is_known(factors, chain) for chain in chains])
    scale = _reach(ratios[known] if known.any() else ratios)
    rare = _reach(ratios[~known]) / scale if known.any() and np.sum(~known) >= LEAST_OF_TYPE else 1.0
    table = Uncertainty(tuple(middles), tuple(float(width * scale) for width in widths), factors, rare)
    if without_physics is None:
        return table
    usual = [standard_uncertainty(table, novelty, chain) for novelty, chain in zip(novelties, chains)]
    return replace(table, without_physics=max(1.0, _reach(np.abs(without_physics) / np.array(usual))))


def _factor(factors: Mapping[str, float], chain: Sequence[str]) -> float:
    """That of the last type of the chain that has one."""
    return next((factors[name] for name in reversed(chain) if name in factors), 1.0)


def _is_known(factors: Mapping[str, float], chain: Sequence[str]) -> bool:
    """Whether the type itself has a factor."""
    return bool(chain) and chain[-1] in factors


def _reach(sizes: Reals) -> float:
    """The size that a share of SHARE doesn't exceed, never 0."""
    return max(float(np.quantile(sizes, SHARE)), 1e-9)


def _widths(sizes: Reals, novelties: Reals) -> tuple[list[float], list[float]]:
    """Of bins with equally many values; widths never fall with the novelty (pooled where they would)."""
    count = max(1, min(LARGEST_NUMBER_OF_BINS, len(sizes) // LEAST_IN_BIN))
    pooled = [[part] for part in np.array_split(np.argsort(novelties, kind="stable"), count)]
    place = 1
    while place < len(pooled):
        if _reach(sizes[np.concatenate(pooled[place])]) < _reach(sizes[np.concatenate(pooled[place - 1])]):
            pooled[place - 1] += pooled.pop(place)
            place = max(place - 1, 1)
        else:
            place += 1
    rows = [np.concatenate(parts) for parts in pooled]
    return [float(np.median(novelties[part])) for part in rows], [_reach(sizes[part]) for part in rows]


def _factors(ratios: Reals, chains: Sequence[Sequence[str]]) -> dict[str, float]:
    """For types with enough values, from the root down: their own reach, shrunk to the parent's in the logarithm."""
    members: dict[str, list[int]] = {}
    parent: dict[str, str] = {}
    depth: dict[str, int] = {}
    for row, chain in enumerate(chains):
        for level, name in enumerate(chain):
            members.setdefault(name, []).append(row)
            parent[name] = chain[level - 1] if level else ""
            depth[name] = level
    factors: dict[str, float] = {}
    for name in sorted(members, key=lambda one: (depth[one], one)):
        if len(members[name]) >= LEAST_OF_TYPE:
            own = np.log(_reach(ratios[members[name]]))
            above = np.log(factors.get(parent[name], 1.0))
            count = len(members[name])
            factors[name] = float(np.exp((count * own + SHRINKAGE * above) / (count + SHRINKAGE)))
    return factors
