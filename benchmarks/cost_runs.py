# SPDX-License-Identifier: MIT
"""The runs whose cost fixed_order_cost.py and hardening_cost.py compare between two builds of the program."""
import contextlib
import dataclasses
import pathlib
import resource
import sys
import tempfile

from velkoran_runs.inputs import parameter_input
from velkoran_runs.program import RunKind, start_run
from velkoran_runs.results import refusal_of
from velkoran_runs.spectrum_inputs import spectrum_input
from velkoran_runs.texts import read_text_if_there

ROOT = pathlib.Path(__file__).resolve().parents[1]
TIGHT = {"SemiEmpiricalMethod": 2, "SCFConvergenceLimit": "1e-6", "SCFIterationLimit": 200}
COUPLING = {"CalculateShielding": False}
SHIELDING_TENSORS = {  # all ten terms
    "CalculateShielding": True,
    "CalculateCoupling": False,
    "ComputeThreeCenterTerms": True,
    "CalculateShieldTensor": True,
}


@dataclasses.dataclass(frozen=True)
class Job:
    """A run: its name in the table, its kind, the text of its input."""

    name: str
    kind: RunKind
    text: str


def twelve_spins() -> Job:
    places = range(12)
    couplings = [[5 + 0.37 * min(i, j) if abs(i - j) == 1 else 0 for j in places] for i in places]
    text = spectrum_input([1 + 0.613 * i for i in places], couplings, 400)
    return Job("exact spectrum of 12 spins", RunKind.SPECTRUM, text)


def cholesterol(what: str, options: dict[str, object]) -> Job:
    """The first 25 nuclei of cholesterol."""
    atoms = (ROOT / "benchmarks" / "molecules" / "cholesterol.in").read_text()
    text = parameter_input(atoms, {**TIGHT, **options}, 25)
    return Job(f"{what} of 25 nuclei of cholesterol", RunKind.PARAMETER, text)


@contextlib.contextmanager
def work_folder(job: Job):
    """A temporary work folder with the input of a job; ends this program if its runs have left no result."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / job.kind.input_name).write_text(job.text)
        yield folder
        output = read_text_if_there(folder / job.kind.output_name)
        if not output or refusal_of(output) is not None:
            sys.exit(f"{job.name}: no result")


def processor_seconds(program: pathlib.Path, folder: pathlib.Path, job: Job) -> float:
    """User time of one run of a job."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
    if start_run(program, "parameters/published", folder, job.kind, folder=ROOT).wait() != 0:
        sys.exit(f"{job.name}: the run failed")
    return resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before


def best_seconds(programs: list[pathlib.Path], folder: pathlib.Path, job: Job, runs: int) -> list[float]:
    """The least time of each program, of so many runs taken in turn."""
    times = [[processor_seconds(program, folder, job) for program in programs] for _ in range(runs)]
    return [min(of_program) for of_program in zip(*times)]
