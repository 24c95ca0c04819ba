# SPDX-License-Identifier: MIT
"""The figures of a cross-validation as plain data: what docs/measured/accuracy.json holds and the page is made from."""
import math
from collections.abc import Mapping, Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import Any

import numpy as np

from .arrays import Reals
from .cross_validation import (
    COUPLING_COLUMNS,
    METHODS,
    SHIFT_COLUMNS,
    Column,
    Outcome,
    cross_validate,
    cross_validated_uncertainties,
    outcome_uncertainty,
)
from .references_file import json_text
from .sites import Site
from .uncertainty import Uncertainty, share_within


FRACTIONS = (0.125, 0.25, 0.5)
LEAST_OF_CURVE = 60  # sites of a column that has a learning curve
LEAST_OF_TYPE = 10  # values of a type that is listed
LEAST_OF_WORST = 3  # values of a molecule that can be among the worst
WORST = 10
BINS = 4  # of the uncertainty, to check the calibration


def summary(deviations: Reals) -> dict[str, float]:
    """Number, mean and median absolute and root mean square deviation, of those that aren't NaN."""
    known = np.abs(deviations[~np.isnan(deviations)])
    if not len(known):
        return {"values": 0}
    return {
        "values": len(known),
        "mean": _rounded(known.mean()),
        "median": _rounded(np.median(known)),
        "root mean square": _rounded(math.sqrt(np.mean(known**2))),
    }


def column_results(
    column: Column, sites_by_fold: Sequence[Sequence[Site]], curves: bool = True
) -> tuple[Outcome, dict[str, Any]]:
    """Cross-validates a column; curves are the learning curves, which take most of the time."""
    outcome = cross_validate(column, sites_by_fold)
    results = {
        "molecules": len({site.key for site in outcome.sites}),
        "methods": {method: summary(outcome.deviations(method)) for method in METHODS},
        "types": by_type(outcome),
        "calibration": calibration(outcome),
        "points": points(outcome),
    }
    if curves and len(outcome.sites) >= LEAST_OF_CURVE:
        results["learning"] = learning_curve(column, sites_by_fold, outcome)
    return outcome, results


@dataclass(frozen=True)
class Accuracy:
    """The figures for the page, the uncertainties by nucleus or kind that ship, and what they come from by column."""

    results: dict[str, Any]
    uncertainties: dict[str, Uncertainty]
    outcomes: dict[str, Outcome]


def measure_accuracy(
    shifts_by_fold: Sequence[Sequence[Site]],
    couplings_by_fold: Sequence[Sequence[Site]],
    texts: Mapping[str, Any],
    curves: bool = True,
) -> Accuracy:
    """Cross-validates all columns that have sites. texts holds what the page says besides the figures: "about" (the
    parameters and geometries), "command", and if wanted "convergence" and "limits", lists of paragraphs."""
    outcomes, columns = {}, {}
    for group, sites_by_fold in ((SHIFT_COLUMNS, shifts_by_fold), (COUPLING_COLUMNS, couplings_by_fold)):
        for column in group:
            if any(column.holds(site) for site in sites_by_fold[0]):
                outcomes[column.name], columns[column.name] = column_results(column, sites_by_fold, curves)
    results = {**texts, "columns": columns, "worst": worst_molecules(outcomes)}
    tables = {
        outcome.column.nucleus: outcome_uncertainty(outcome)
        for outcome in outcomes.values()
        if np.isfinite(outcome.deviations("corrected")).any()
    }
    return Accuracy(results, tables, outcomes)


def by_type(outcome: Outcome) -> list[dict[str, Any]]:
    """Mean absolute deviations, and the mean deviation, for each type with enough values."""
    listed = []
    errors = {method: outcome.deviations(method) for method in ("additive", "physics", "corrected")}
    own = np.array([site.chain[-1] for site in outcome.sites])
    for name in sorted(set(own)):
        rows = own == name
        if rows.sum() >= LEAST_OF_TYPE:
            means = {method: summary(values[rows]).get("mean") for method, values in errors.items()}
            bias = _rounded(np.nanmean(errors["corrected"][rows]))
            row: dict[str, Any] = {"type": str(name), "values": int(rows.sum()), "bias": bias}
            listed.append({**row, **means})
    return listed


def calibration(outcome: Outcome) -> dict[str, Any]:
    """The share of deviations within their uncertainty: of all, by size of the uncertainty, and of small types."""
    errors, widths = outcome.deviations("corrected"), cross_validated_uncertainties(outcome)
    known = np.flatnonzero(~np.isnan(errors) & ~np.isnan(widths))
    order = known[np.argsort(widths[known], kind="stable")]
    names = [site.chain[-1] for site in outcome.sites]
    rare = [row for row in known if names.count(names[row]) < LEAST_OF_TYPE]
    return {
        "share": _share(errors[known], widths[known]),
        "bins": [
            {"width": _rounded(np.median(widths[rows])), "share": _share(errors[rows], widths[rows])}
            for rows in np.array_split(order, min(BINS, max(len(order) // LEAST_OF_TYPE, 1)))
        ],
        "rare types": {"values": len(rare), "share": _share(errors[rare], widths[rare])},
    }


def points(outcome: Outcome) -> list[list[float]]:
    """Measured and predicted for each site that has a prediction; of a pair in the order that was compared."""
    values = outcome.predictions["corrected"]
    errors = outcome.deviations("corrected")
    return [[round(value - error, 2), round(value, 2)] for value, error in zip(values, errors) if not math.isnan(value)]


def learning_curve(column: Column, sites_by_fold: Sequence[Sequence[Site]], whole: Outcome) -> list[dict[str, Any]]:
    """Mean absolute deviations by the fraction of the molecules that correction and opponents learn from; the
    parameters of the physics stay those of the whole. whole is the outcome of all."""
    molecules = len({site.key for site in whole.sites}) * (len(sites_by_fold) - 1) / len(sites_by_fold)
    result = []
    for fraction in (*FRACTIONS, 1.0):
        outcome = whole if fraction == 1.0 else cross_validate(column, sites_by_fold, fraction)
        means = {method: summary(outcome.deviations(method)).get("mean") for method in METHODS}
        point: dict[str, Any] = {"molecules": round(molecules * fraction)}
        result.append({**point, **means})
    return result


def worst_molecules(outcomes: Mapping[str, Outcome]) -> list[dict[str, Any]]:
    """Those with the largest mean deviation in units of the mean deviation of the column, worst first."""
    relative: dict[str, list[tuple[float, str, float, float]]] = {}
    names = {}
    for column, outcome in outcomes.items():
        errors = outcome.deviations("corrected")
        unit = float(np.nanmean(np.abs(errors)))
        for site, error in zip(outcome.sites, errors):
            if not math.isnan(error):
                names[site.key] = site.name or site.key
                entry = (abs(error) / unit, column, site.ppm, site.ppm + error)
                relative.setdefault(site.key, []).append(entry)
    means = {
        key: sum(one[0] for one in found) / len(found)
        for key, found in relative.items()
        if len(found) >= LEAST_OF_WORST
    }
    worst = sorted(means, key=lambda key: (-means[key], key))[:WORST]
    return [_worst_record(key, names[key], means[key], max(relative[key])) for key in worst]


def _worst_record(key: str, name: str, mean: float, largest: tuple[float, str, float, float]) -> dict[str, Any]:
    return {
        "key": key,
        "name": name,
        "times the mean": _rounded(mean),
        "largest": {"column": largest[1], "measured": _rounded(largest[2]), "predicted": _rounded(largest[3])},
    }


def write_results(path: Path, results: Mapping[str, Any]) -> None:
    """Writes the results, the same bytes for the same figures."""
    path.write_text(json_text(results), encoding="utf-8")


def _share(errors: Reals, widths: Reals) -> float | None:
    return _rounded(share_within(errors, widths)) if len(errors) else None


def _rounded(value: float) -> float:
    return float(f"{float(value):.4g}")
