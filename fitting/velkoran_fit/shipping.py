# SPDX-License-Identifier: MIT
"""From a finished fit to what ships with it: references.json, the figures of the type table, those of the page of
accuracy."""
import csv
from collections.abc import Callable, Mapping, Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import Any

import numpy as np
from velkoran_runs.parameter_files import FILE_NAMES

from .accuracy_results import Accuracy, measure_accuracy
from .accuracy_run import Runs, run_all, runs_by_fold, sites_by_fold
from .atom_types import COLUMNS, AtomType
from .correction import CorrectionSettings, fit_correction, fit_couplings
from .cross_validation import SHIFT_COLUMNS, Outcome
from .fitting_data import FittingData
from .neighbourhoods import type_chains
from .parameter_space import Parameters
from .references_file import References, hashes, write_references
from .stages import Fitted
from .worker import Quantity, Status, WorkerPool

LEAST_OF_SPREAD = 5  # values of a type whose deviation is told
LISTED_FAILURES = 40
DOUBTS = {
    Status.FIELD: "the field doesn't converge",
    Status.CONTACT: "a contact response doesn't converge",
    Status.MAGNETIC: "a magnetic response doesn't converge",
    Status.UNSTABLE: "the wavefunction isn't stable against such perturbations",
    Status.REFUSED: "the run is refused",
}


@dataclass(frozen=True)
class Measured:
    """Computed values of one quantity: with the parameters that ship, and with those without each fold."""

    whole: Runs
    folds: tuple[Runs, ...]


def measure(
    quantity: Quantity,
    data: FittingData,
    types: Sequence[AtomType],
    fitted: Fitted,
    places: Sequence[int],
    shipped: Parameters,
    pool: WorkerPool,
    folder: Path,
    say: Callable[[str], None],
) -> Measured:
    """Computes all that a cross-validation needs. places: of the molecules of the fit's last stage in the data; folder:
    of checkpoints."""
    rows = {kind.name: row for row, kind in enumerate(types)}
    whole = run_all(quantity, data, rows, shipped, pool)
    return Measured(whole, tuple(runs_by_fold(quantity, data, rows, fitted, places, pool, folder, say)))


def accuracy_of(
    data: FittingData,
    types: Sequence[AtomType],
    measured: Mapping[Quantity, Measured],
    kind: str,
    texts: Mapping[str, Any],
) -> Accuracy:
    """Cross-validates all columns in one kind of geometry, "stored" or "made"; learning curves in made ones alone."""
    shifts, couplings = (sites_by_fold(quantity, data, measured[quantity].folds, kind, types) for quantity in Quantity)
    return measure_accuracy(shifts, couplings, texts, curves=kind == "made")


def with_stored(made: Accuracy, stored: Accuracy) -> dict[str, Any]:
    """The results in made geometries, and beside each column the deviations in stored ones."""
    columns = {
        name: {**column, "stored geometries": stored.results["columns"][name]["methods"]}
        for name, column in made.results["columns"].items()
    }
    return {**made.results, "columns": columns}


def convergence_lines(data: FittingData, measured: Mapping[Quantity, Measured]) -> list[str]:
    """How many molecules failed in which way, and which."""
    lines = []
    for quantity, own in measured.items():
        status = own.whole.stored.status | own.whole.made.status
        asked = np.array([bool(np.isfinite(values).any()) for values in own.whole.stored.values]) | (status != 0)
        good, count = int((asked & (status == 0)).sum()), int(asked.sum())
        lines.append(f"- {quantity.name.lower()}: {good} of {count} molecules ({100 * good / count:.1f} %) in order.")
        for bit, words in DOUBTS.items():
            failing = [data.molecules[i].name for i in np.flatnonzero(status & bit)]
            if failing:
                names = ", ".join(failing[:LISTED_FAILURES])
                lines.append(f"  - {words}: {len(failing)}: {names}")
    return ["\n".join(lines)]


def ship_references(
    path: Path,
    data: FittingData,
    types: Sequence[AtomType],
    measured: Mapping[Quantity, Measured],
    accuracy: Accuracy,
) -> None:
    """Learns the corrections from all molecules, and writes them with the uncertainties of the cross-validation."""
    settings = CorrectionSettings(tuple(types), accuracy.uncertainties)
    shieldings, couplings = (measured[quantity].whole.mean() for quantity in Quantity)
    references = References(
        fit_correction(data.molecules, data.types, shieldings, settings),
        fit_couplings(data.with_made_geometries(), data.types, [one.tolist() for one in couplings], settings),
        hashes(path.parent / name for name in FILE_NAMES),
    )
    write_references(path, references)


def _spread(outcome: Outcome) -> dict[str, str]:
    """Root mean square deviation of the corrected values by type, with those below it."""
    of_type: dict[str, list[float]] = {}
    for site, error in zip(outcome.sites, outcome.deviations("corrected")):
        if np.isfinite(error):
            for kind in site.chain:
                of_type.setdefault(kind, []).append(float(error))
    return {
        kind: f"{np.sqrt(np.mean(np.square(found))):.3g}"
        for kind, found in of_type.items()
        if len(found) >= LEAST_OF_SPREAD
    }


def write_type_figures(
    path: Path, data: FittingData, types: Sequence[AtomType], outcomes: Mapping[str, Outcome]
) -> None:
    """Writes the table of types with the molecules that hold a type or one below it, the values measured at such
    atoms, and the root mean square deviation of the cross-validated shifts of each nucleus, ppm."""
    chains = type_chains(types)
    molecules = {kind.name: 0 for kind in types}
    values = dict(molecules)
    for names, molecule in zip(data.types, data.molecules, strict=True):
        for held in {ancestor for name in set(names) for ancestor in chains[name]}:
            molecules[held] += 1
        for shift in molecule.shifts:
            for held in chains[names[shift.atoms[0]]]:
                values[held] += 1
    spreads = {c.nucleus: _spread(outcomes[c.name]) for c in SHIFT_COLUMNS if c.name in outcomes}
    with open(path, "w", newline="", encoding="utf-8") as stream:
        writer = csv.writer(stream, lineterminator="\n")
        writer.writerow([*COLUMNS, "molecules", "values", *(f"sd_{nucleus}" for nucleus in spreads)])
        for kind in types:
            own = [kind.name, kind.element, kind.parent, kind.smarts, kind.description]
            spread = [found.get(kind.name, "") for found in spreads.values()]
            writer.writerow([*own, molecules[kind.name], values[kind.name], *spread])


def write_sums(directory: Path) -> None:
    """Writes SHA256SUMS of the files of a fit, in the form of sha256sum."""
    sums = hashes(directory / name for name in ("atom_types.csv", *FILE_NAMES, "references.json"))
    text = "".join(f"{total}  {name}\n" for name, total in sorted(sums.items()))
    (directory / "SHA256SUMS").write_text(text, encoding="ascii")
