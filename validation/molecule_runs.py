# SPDX-License-Identifier: MIT
"""Runs of the molecules of geometries.json, each only once, and what the validation takes from them."""
import json
import pathlib
import sys

from velkoran_runs import log
from velkoran_runs.inputs import atoms_text, bonded_atoms, parameter_input
from velkoran_runs.program import RunKind, make_run
from velkoran_runs.results import parse_parameter_result

ROOT = pathlib.Path(__file__).resolve().parents[1]
CONVERGENCE = "1e-6"  # kcal/mol
ITERATIONS = 400
MAGNETIC_LIMIT = 1e-6  # of the last change in the response to a magnetic field
WANTED = {
    "coupling": {"CalculateShielding": False},
    "shielding": {"CalculateShielding": True, "ComputeThreeCenterTerms": True, "CalculateCoupling": False},
}
BOND_LETTERS = {1: "s", 2: "d", 3: "t", 1.5: "a"}


class Result:
    """What one run has given."""

    def __init__(self, output, text):
        numbers = parse_parameter_result(output)
        self.couplings = numbers.couplings  # Hz
        self.shieldings = numbers.shieldings  # ppm
        self.iterations = len(log.field_differences(text))
        self.converged = 1 < self.iterations < ITERATIONS
        self.accelerated = log.is_accelerated(text)
        self.energy = log.total_energies(text)[0]
        self.dipole = (log.dipole_moments(text) or [0.0])[0]
        responses = log.responses(text)
        contacts = [response.iterations for name, response in responses.items() if name.startswith("atom")]
        self.responses = len(contacts) == len(self.shieldings) and max(contacts) < ITERATIONS - 1
        self.magnetic = all(responses[axis].difference < MAGNETIC_LIMIT for axis in "xyz" if axis in responses)

    def mean_coupling(self, pairs):
        """Over the pairs "i-j j-k ...", each in both directions."""
        values = []
        for pair in pairs.split():
            i, j = (int(number) - 1 for number in pair.split("-"))
            values += [self.couplings[i][j], self.couplings[j][i]]
        return sum(values) / len(values)

    def mean_shielding(self, atoms):
        values = [self.shieldings[int(number) - 1] for number in atoms.split()]
        return sum(values) / len(values)


def input_of(molecule, positions, method, accelerate, wanted):
    """The input of a molecule of geometries.json with its atoms at positions in Angstrom."""
    bonds = [(first, second, BOND_LETTERS[order]) for first, second, order in molecule["bonds"]]
    options = {
        "SemiEmpiricalMethod": method,
        "TotalCharge": molecule["charge"],
        "SCFConvergenceLimit": CONVERGENCE,
        "SCFIterationLimit": ITERATIONS,
        "SCFAccelerateConvergence": accelerate,
        **WANTED[wanted],
    }
    return parameter_input(atoms_text(bonded_atoms(molecule["elements"], positions, bonds)), options)


class Runner:
    """Runs the program in folders of its own below a folder; the same run only once."""

    def __init__(self, program, folder):
        self.program = pathlib.Path(program).resolve()
        self.folder = pathlib.Path(folder)
        self.results = {}
        self.runs = 0
        (self.folder / "parameters").symlink_to(ROOT / "parameters" / "published")

    def run_once(self, molecule, positions, method, accelerate, wanted):
        self.runs += 1
        name = f"run{self.runs}"
        (self.folder / name).mkdir()
        text = input_of(molecule, positions, int(method[-1]), accelerate, wanted)
        (self.folder / name / RunKind.PARAMETER.input_name).write_text(text)
        texts = make_run(self.program, "parameters", name, RunKind.PARAMETER, f"{name}/run.log", folder=self.folder)
        try:
            return Result(texts.output or "", texts.log or "")
        except ValueError as error:
            sys.exit(f"{molecule['elements']}: {error}")

    def run(self, molecule, positions, method, wanted="coupling"):
        """A field that doesn't converge gets a second try with the Fock matrix extrapolated."""
        key = json.dumps([molecule["elements"], molecule["charge"], positions, method, wanted])
        if key not in self.results:
            result = self.run_once(molecule, positions, method, False, wanted)
            if not result.converged:
                result = self.run_once(molecule, positions, method, True, wanted)
            self.results[key] = result
        return self.results[key]
