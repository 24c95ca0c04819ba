# SPDX-License-Identifier: MIT
"""The runs of the fault campaign: the examples, and longer runs made here."""
import pathlib

from velkoran_runs.inputs import Atom, atoms_text, parameter_input
from velkoran_runs.program import RunKind
from velkoran_runs.spectrum_inputs import spectrum_input

ROOT = pathlib.Path(__file__).resolve().parents[2]

LONG_CAMPAIGN = 100  # count from which a campaign takes all of its jobs

SHIELDING = {"CalculateShielding": True, "CalculateCoupling": False}
COUPLING = {"CalculateShielding": False, "CalculateCoupling": True}
BOTH = {"CalculateShielding": True, "CalculateCoupling": True}
ALL_TERMS = {**SHIELDING, "ComputeThreeCenterTerms": True, "CalculateShieldTensor": True}


def field(limit, iterations):
    """Options of a wavefunction of TNDO/2; with a limit of 0 all iterations are made."""
    return {"SemiEmpiricalMethod": 2, "SCFConvergenceLimit": limit, "SCFIterationLimit": iterations}


TIGHT = field("1e-6", 200)


class Job:
    """One run: its name in the table, its kind, the text of its input file."""

    def __init__(self, name, kind, text):
        self.name = name
        self.kind = kind
        self.text = text
        self.input = kind.input_name
        self.output = kind.output_name


def example_jobs():
    """All folders of examples/, in the order of their names."""
    return [
        Job(path.parent.name, kind, path.read_text())
        for kind in RunKind
        for path in sorted((ROOT / "examples").glob(f"*/{kind.input_name}"))
    ]


def spin_run(name, count, weak, coupling):
    """Count single nuclei at 400 MHz; coupling(i, j) in Hz of a pair with i < j."""
    places = range(count)
    couplings = [[coupling(min(i, j), max(i, j)) if i != j else 0 for j in places] for i in places]
    shifts = [i + 0.013 * (i * i % 7) for i in places]
    return Job(name, RunKind.SPECTRUM, spectrum_input(shifts, couplings, 400, weak=weak, title=name))


def exact_spins(count):
    return spin_run(f"exact spectrum of {count} spins", count, False, lambda i, j: 5 + 0.37 * i if j == i + 1 else 0)


def weak_spins(count):
    """All couplings differ, so that many lines stay apart and the result is long."""
    return spin_run(
        f"weak spectrum of {count} groups",
        count,
        True,
        lambda i, j: 1 + (j * (j + 1) // 2 + i) * (j + 7) * 37 % 7919 / 1000,
    )


def molecule_run(molecule, what, options, nuclei=None):
    """A molecule of benchmarks/molecules with its first nuclei selected, or all."""
    atoms = (ROOT / "benchmarks" / "molecules" / f"{molecule}.in").read_text()
    return Job(f"{what}, {molecule}", RunKind.PARAMETER, parameter_input(atoms, options, nuclei))


def many_atoms_run(count, what, options):
    """A hydrogen molecule among atoms that aren't in the calculation."""
    atoms = atoms_text([Atom("H", (2.0 * i, 0.0, 0.74 * (i == 1))) for i in range(count)])
    text = parameter_input(atoms, options, [(1, 1), (1, 2)], [(1, 1), (1, 2)])
    return Job(f"{what}, {count} atoms", RunKind.PARAMETER, text)


def chain_run(units, what, options, nuclei=None):
    """A zigzag chain of CH2 units with hydrogen at both ends; its first nuclei selected, or all."""
    atoms = []
    for unit in range(units):
        side = 1 if unit % 2 else -1
        z = 1.258 * unit
        atoms += [Atom("C", (0, 0.43 * side, z)), Atom("H", (0.89, 1.06 * side, z)), Atom("H", (-0.89, 1.06 * side, z))]
    last = 1.258 * (units - 1) + 0.88
    atoms += [Atom("H", (0, 0.25, -0.88)), Atom("H", (0, 0.25 if units % 2 else -0.25, last))]
    text = parameter_input(atoms_text(atoms), options, nuclei)
    return Job(f"{what}, chain of {units} CH2", RunKind.PARAMETER, text)
