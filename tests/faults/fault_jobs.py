# SPDX-License-Identifier: MIT
"""The runs of the fault campaign: the examples, and longer runs made here."""
import pathlib

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent

LONG_CAMPAIGN = 100  # count from which a campaign takes all of its jobs
PARAMETER_RUN = 1
SPECTRUM_RUN = 2
STEMS = {PARAMETER_RUN: "nmrparam", SPECTRUM_RUN: "nmrspect"}

TIGHT = "SemiEmpiricalMethod = 2\nSCFConvergenceLimit = 1e-6\nSCFIterationLimit = 200\n"
ENDLESS = "SemiEmpiricalMethod = 2\nSCFConvergenceLimit = 0\nSCFIterationLimit = {}\n"
SHIELDING = "CalculateShielding = yes\nCalculateCoupling = no\n"
COUPLING = "CalculateShielding = no\nCalculateCoupling = yes\n"
ALL_TERMS = SHIELDING + "ComputeThreeCenterTerms = yes\nCalculateShieldTensor = yes\n"


class Job:
    """One run: its name in the table, its kind, the text of its input file."""

    def __init__(self, name, kind, text):
        self.name = name
        self.kind = kind
        self.text = text
        self.input = STEMS[kind] + ".in"
        self.output = STEMS[kind] + ".out"


def example_jobs():
    """All folders of examples/, in the order of their names."""
    return [
        Job(path.parent.name, kind, path.read_text())
        for kind, stem in STEMS.items()
        for path in sorted((ROOT / "examples").glob(f"*/{stem}.in"))
    ]


def spin_run(name, count, weak, coupling):
    """Count single nuclei at 400 MHz; coupling(i, j) in Hz of a pair with i < j."""
    rows = [
        " ".join(f"{coupling(min(i, j), max(i, j)):.3f}" if i != j else "0" for j in range(count)) for i in range(count)
    ]
    shifts = " ".join(f"{i + 0.013 * (i * i % 7):.3f}" for i in range(count))
    lines = [
        name,
        str(count),
        "1 " * count,
        "MHz",
        "400",
        "ppm",
        shifts,
        "Hz",
        *rows,
        "minimal intensity",
        "0.001",
        "weak",
        "1" if weak else "0",
    ]
    return Job(name, SPECTRUM_RUN, "\n".join(lines) + "\n")


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


def selected_run(name, options, count, atoms):
    """A parameter run with the first count atoms selected."""
    selection = "".join(f"mol 1 atom {i + 1}\n" for i in range(count))
    return Job(name, PARAMETER_RUN, f"{options}NMRSelectionBegin\n{count}\n{selection}NMRSelectionEnd\n{atoms}")


def molecule_run(molecule, what, options, nuclei=1000):
    """A molecule of benchmarks/molecules with its first nuclei selected."""
    atoms = (ROOT / "benchmarks" / "molecules" / f"{molecule}.in").read_text()
    total = sum(line.split()[:1] == ["atom"] for line in atoms.splitlines())
    return selected_run(f"{what}, {molecule}", options, min(nuclei, total), atoms)


def many_atoms_run(count, what, options):
    """A hydrogen molecule among atoms that aren't in the calculation."""
    rows = "".join(f"atom {i + 1} A H H - 0 {2.0 * i:.1f} 0 {0.74 * (i == 1):.2f} 0\n" for i in range(count))
    return Job(
        f"{what}, {count} atoms",
        PARAMETER_RUN,
        f"{options}NMRSelectionBegin\n2\nmol 1 atom 1\nmol 1 atom 2\nNMRSelectionEnd\n"
        "QuantumSelectionBegin\n2\nmol 1 atom 1\nmol 1 atom 2\nQuantumSelectionEnd\n"
        f"AtomsBegin\n{count}\nmol 1 many\n{rows}endmol 1\nAtomsEnd\n",
    )


def chain_run(units, what, options, nuclei=1000):
    """A zigzag chain of CH2 units with hydrogen at both ends."""
    places = []
    for unit in range(units):
        side = 1 if unit % 2 else -1
        z = 1.258 * unit
        places += [("C", 0, 0.43 * side, z), ("H", 0.89, 1.06 * side, z), ("H", -0.89, 1.06 * side, z)]
    places += [("H", 0, 0.25, -0.88), ("H", 0, 0.25 if units % 2 else -0.25, 1.258 * (units - 1) + 0.88)]
    atoms = "".join(
        f"atom {i + 1} A {element} {element} - 0 {x:.4f} {y:.4f} {z:.4f} 0\n"
        for i, (element, x, y, z) in enumerate(places)
    )
    count = len(places)
    return selected_run(
        f"{what}, chain of {units} CH2",
        options,
        min(nuclei, count),
        f"AtomsBegin\n{count}\nmol 1 chain\n{atoms}endmol 1\nAtomsEnd\n",
    )
