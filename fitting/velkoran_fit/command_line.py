# SPDX-License-Identifier: MIT
"""The command line of the fit."""
import argparse
import os
import time
from collections.abc import Callable, Mapping, Sequence
from dataclasses import dataclass, replace
from pathlib import Path

from .atom_types import AtomType, read_atom_types
from .fitting_data import FittingData, fitting_data, problem_of
from .molecules import read_molecules
from .accuracy_results import write_results
from .parameter_tables import fitted_files, read_parameters, start_parameters
from .shipping import (
    accuracy_of,
    convergence_lines,
    measure,
    ship_references,
    with_stored,
    write_sums,
    write_type_figures,
)
from .stages import STAGES, Fitted, Stage, quick, run_stage
from .worker import Options, Quantity, WorkerPool

ROOT = Path(__file__).resolve().parents[2]
DATA = ROOT / "fitting" / "data"
PUBLISHED = ROOT / "parameters" / "published"
FITTED = ROOT / "parameters" / "fitted"
QUICK_EVERY = 90  # a quick fit takes one molecule of so many


@dataclass(frozen=True)
class Setting:
    """What a fit is run with."""

    stages: tuple[Stage, ...]
    molecules_every: int
    processes: int
    worker: Path
    folder: Path  # of checkpoints and made geometries


def parse_arguments(words: Sequence[str] | None) -> argparse.Namespace:
    """The arguments of the command line."""
    parser = argparse.ArgumentParser(
        prog="fit.py",
        description="Fits the parameters of the method to measured shifts and couplings, stage by stage from elements "
        "to neighbours, and writes the files of a parameter directory. A fit that was stopped goes on where it was.",
    )
    names = [stage.name for stage in STAGES]
    parser.add_argument("--stage", choices=names, default=names[-1], help="the last stage (default: %(default)s)")
    parser.add_argument(
        "--quick", action="store_true", help="few molecules and steps, to see the whole road in minutes"
    )
    parser.add_argument("--processes", type=int, default=len(os.sched_getaffinity(0)), help="worker processes")
    parser.add_argument("--worker", type=Path, default=ROOT / "build/release/fitting/velkoran_worker")
    parser.add_argument("--folder", type=Path, default=ROOT / "build/fit", help="checkpoints and made geometries")
    parser.add_argument("--write", type=Path, metavar="DIRECTORY", required=True, help="where the files go")
    return parser.parse_args(words)


def setting_of(arguments: argparse.Namespace) -> Setting:
    """The setting that the arguments ask for."""
    names = [stage.name for stage in STAGES]
    stages = STAGES[: names.index(arguments.stage) + 1]
    if arguments.quick:
        stages = tuple(quick(stage) for stage in stages)
    every = QUICK_EVERY if arguments.quick else 1
    return Setting(stages, every, arguments.processes, arguments.worker.resolve(), arguments.folder)


def read_data(setting: Setting, types: Sequence[AtomType]) -> FittingData:
    """The molecules of a fit; geometries that have been made before are taken from the folder."""
    setting.folder.mkdir(parents=True, exist_ok=True)
    molecules = read_molecules(DATA)[:: setting.molecules_every]
    return fitting_data(molecules, types, setting.folder / "made_geometries.npz", setting.processes)


def fit_quantity(
    quantity: Quantity,
    data: FittingData,
    types: Sequence[AtomType],
    setting: Setting,
    pool: WorkerPool,
    say: Callable[[str], None],
) -> tuple[Fitted, tuple[int, ...]]:
    """All stages for one quantity: the last stage as it stands at the end, and the places of its molecules."""
    rows = {kind.name: row for row, kind in enumerate(types)}
    problem, places = problem_of(data, quantity, rows)
    parameters = start_parameters(types, PUBLISHED, quantity == Quantity.COUPLING)
    for stage in setting.stages:
        if quantity == Quantity.COUPLING:
            stage = replace(stage, every=1)  # couplings are few and cost little
        fitted = run_stage(stage, problem, parameters, pool, setting.folder, say)
        parameters = fitted.parameters
    return fitted, places[:: fitted.stage.every]


def write_parameters(directory: Path, types: Sequence[AtomType], fits: Mapping[Quantity, Fitted]) -> None:
    """Writes the three parameter files."""
    directory.mkdir(parents=True, exist_ok=True)
    shielding, coupling = (fits[quantity].parameters for quantity in Quantity)
    for name, text in fitted_files(types, shielding, coupling, PUBLISHED).items():
        (directory / name).write_text(text, encoding="ascii")


def main(words: Sequence[str] | None = None) -> int:
    """Runs a fit; the exit code."""
    arguments = parse_arguments(words)
    setting = setting_of(arguments)
    start = time.monotonic()

    def say(text: str) -> None:
        print(f"{time.monotonic() - start:7.0f} s  {text}", flush=True)

    types = read_atom_types(FITTED / "atom_types.csv")
    data = read_data(setting, types)
    say(f"{len(data.molecules)} molecules")
    with WorkerPool(setting.worker, Options(), setting.processes) as pool:
        done = {quantity: fit_quantity(quantity, data, types, setting, pool, say) for quantity in Quantity}
        fits = {quantity: fitted for quantity, (fitted, _) in done.items()}
        write_parameters(arguments.write, types, fits)
        say("parameters written")
        measured = {}
        for quantity, (fitted, places) in done.items():
            shipped = read_parameters(types, PUBLISHED, arguments.write, quantity == Quantity.COUPLING)
            measured[quantity] = measure(quantity, data, types, fitted, places, shipped, pool, setting.folder, say)
            say(f"{quantity.name.lower()}: cross-validated")
    texts = {
        "about": f"{len(data.molecules)} molecules, with the parameters and references of `parameters/fitted`, in "
        "geometries that were made from the structural formula (ETKDGv3, MMFF94s).",
        "command": "sh scripts/run_fit.sh",
        "convergence": convergence_lines(data, measured),
    }
    made, stored = (accuracy_of(data, types, measured, kind, texts) for kind in ("made", "stored"))
    say("accuracy measured")
    ship_references(arguments.write / "references.json", data, types, measured, made)
    write_type_figures(arguments.write / "atom_types.csv", data, types, made.outcomes)
    write_sums(arguments.write)
    write_results(arguments.write / "accuracy.json", with_stored(made, stored))
    say("done")
    return 0
