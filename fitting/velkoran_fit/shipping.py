# SPDX-License-Identifier: MIT
"""From a finished fit to what ships with it: references.json, the figures of the type table, docs/measured/accuracy.json."""
import csv
from collections.abc import Mapping, Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import Any

import numpy as np
from velkoran_runs.parameter_files import FILE_NAMES

from .accuracy_results import column_results, worst_molecules
from .accuracy_run import KINDS, Runs, run_all, runs_by_fold, sites_by_fold
from .atom_types import AtomType
from .correction import CorrectionSettings, fit_correction
from .cross_validation import COUPLING_COLUMNS, SHIFT_COLUMNS, Column, Outcome, outcome_uncertainty
from .fitting_data import FittingData
from .neighbourhoods import type_chains
from .parameter_space import Parameters
from .references_file import References, hashes, write_references
from .sites import Site
from .stages import Fitted
from .worker import Quantity, Status, WorkerPool

LEAST_OF_SPREAD = 5  # values of a type whose standard deviation is told
LISTED_FAILURES = 40


@dataclass(frozen=True)
class Measured:
    """What a cross-validation of one quantity gives.

    whole: values with the parameters that ship; sites: of each kind of geometry, once a fold; outcomes: of each kind,
    by column; figures: the plain data of each.
    """

    whole: Runs
    outcomes: Mapping[str, Mapping[str, Outcome]]
    figures: Mapping[str, Mapping[str, Any]]


def columns_of(quantity: Quantity) -> tuple[Column, ...]:
    """The columns of the table."""
    return SHIFT_COLUMNS if quantity == Quantity.SHIELDING else COUPLING_COLUMNS


def _holds(sites: Sequence[Site], column: Column) -> bool:
    return any(column.holds(site) for site in sites)


def measure(
    quantity: Quantity,
    data: FittingData,
    types: Sequence[AtomType],
    fitted: Fitted,
    places: Sequence[int],
    shipped: Parameters,
    pool: WorkerPool,
) -> Measured:
    """Cross-validates a quantity in both kinds of geometries; learning curves for made ones alone."""
    rows = {kind.name: row for row, kind in enumerate(types)}
    whole = run_all(quantity, data, rows, shipped, pool)
    runs = runs_by_fold(quantity, data, rows, fitted, places, pool)
    outcomes: dict[str, dict[str, Outcome]] = {}
    figures: dict[str, dict[str, Any]] = {}
    for kind in KINDS:
        sites = sites_by_fold(quantity, data, runs, kind, types)
        found = {
            column.name: column_results(column, sites, curves=kind == "made")
            for column in columns_of(quantity)
            if _holds(sites[0], column)
        }
        outcomes[kind] = {name: outcome for name, (outcome, _) in found.items()}
        figures[kind] = {name: result for name, (_, result) in found.items()}
    return Measured(whole, outcomes, figures)


def columns_with_kinds(measured: Measured) -> dict[str, Any]:
    """The figures in made geometries, and of each column the deviations in stored ones beside."""
    columns = {name: dict(result) for name, result in measured.figures["made"].items()}
    for name, result in measured.figures["stored"].items():
        columns[name]["stored geometries"] = result["methods"]
    return columns


def convergence_lines(data: FittingData, measured: Mapping[Quantity, Measured]) -> list[str]:
    """How many molecules failed in which way, and which."""
    lines = []
    for quantity, own in measured.items():
        status = own.whole.stored.status | own.whole.made.status
        asked = np.array([bool(len(values)) and bool(np.isfinite(values).any()) for values in own.whole.stored.values])
        asked |= status != 0
        for bit in Status:
            failing = [data.molecules[i].name for i in np.flatnonzero(status & bit)]
            if failing:
                names = ", ".join(failing[:LISTED_FAILURES])
                lines.append(
                    f"- {quantity.name.lower()}, {bit.name.lower() if bit.name else ''}: {len(failing)} of "
                    f"{int(asked.sum())} molecules: {names}."
                )
        good = int((asked & (status == 0)).sum())
        share = 100.0 * good / max(int(asked.sum()), 1)
        lines.append(
            f"- {quantity.name.lower()}: {good} of {int(asked.sum())} molecules, {share:.1f} %, without a doubt."
        )
    return ["\n".join(lines)]


def _has_predictions(outcome: Outcome) -> bool:
    return bool(np.isfinite(outcome.deviations("corrected")).any())


def ship_references(
    path: Path, data: FittingData, types: Sequence[AtomType], measured: Mapping[Quantity, Measured]
) -> None:
    """Learns the correction from all molecules, and writes it with the uncertainties of the cross-validation."""
    shifts = measured[Quantity.SHIELDING].outcomes["made"]
    by_nucleus = {column.nucleus: column.name for column in SHIFT_COLUMNS}
    uncertainties = {
        nucleus: outcome_uncertainty(shifts[name])
        for nucleus, name in by_nucleus.items()
        if name in shifts and _has_predictions(shifts[name])
    }
    correction = fit_correction(
        data.molecules,
        data.types,
        measured[Quantity.SHIELDING].whole.mean(),
        CorrectionSettings(tuple(types), uncertainties),
    )
    couplings = {
        name: outcome_uncertainty(outcome)
        for name, outcome in measured[Quantity.COUPLING].outcomes["made"].items()
        if _has_predictions(outcome)
    }
    files = hashes(path.parent / name for name in FILE_NAMES)
    write_references(path, References(correction, couplings, files))


def _spreads(outcomes: Mapping[str, Outcome], types: Sequence[AtomType]) -> dict[str, dict[str, str]]:
    """Standard deviation of the corrected values by column and type, with descendants."""
    spreads: dict[str, dict[str, str]] = {}
    for name, outcome in outcomes.items():
        errors = outcome.deviations("corrected")
        of_type: dict[str, list[float]] = {}
        for site, error in zip(outcome.sites, errors):
            if np.isfinite(error):
                for kind in site.chain:
                    of_type.setdefault(kind, []).append(float(error))
        spreads[name] = {
            kind: f"{np.sqrt(np.mean(np.square(found))):.3g}"
            for kind, found in of_type.items()
            if len(found) >= LEAST_OF_SPREAD
        }
    return spreads


def write_type_figures(
    path: Path, data: FittingData, types: Sequence[AtomType], outcomes: Mapping[str, Outcome]
) -> None:
    """Writes the table of types anew with the molecules that hold a type or one below it, the values measured at such
    atoms, and the root mean square deviation of the cross-validated ones for each nucleus."""
    chains = type_chains(types)
    molecules = {kind.name: 0 for kind in types}
    values = dict(molecules)
    for names, molecule in zip(data.types, data.molecules, strict=True):
        for kind in {ancestor for name in set(names) for ancestor in chains[name]}:
            molecules[kind] += 1
        for shift in molecule.shifts:
            for kind in chains[names[shift.atoms[0]]]:
                values[kind] += 1
    spreads = _spreads(outcomes, types)
    sd_columns = [f"sd {outcome.column.nucleus}" for outcome in outcomes.values()]
    with open(path, "w", newline="", encoding="utf-8") as stream:
        writer = csv.writer(stream, lineterminator="\n")
        writer.writerow(["name", "element", "parent", "smarts", "description", "molecules", "values", *sd_columns])
        for kind in types:
            own = [kind.name, kind.element, kind.parent, kind.smarts, kind.description]
            spread = [spreads[name].get(kind.name, "") for name in outcomes]
            writer.writerow([*own, molecules[kind.name], values[kind.name], *spread])


def write_sums(directory: Path) -> None:
    """Writes SHA256SUMS of the files of a fit, in the form of sha256sum."""
    names = ["atom_types.csv", *FILE_NAMES, "references.json"]
    sums = hashes(directory / name for name in names)
    text = "".join(f"{total}  {name}\n" for name, total in sorted(sums.items()))
    (directory / "SHA256SUMS").write_text(text, encoding="ascii")


def worst(measured: Mapping[Quantity, Measured]) -> list[dict[str, Any]]:
    """The worst molecules over all columns, in made geometries."""
    return worst_molecules({n: o for own in measured.values() for n, o in own.outcomes["made"].items()})
