#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes docs/performance.md from benchmarks/results.json.

--collect FOLDER first makes results.json from the results of the benchmarks in that folder, run with --options; --check
compares the page instead of writing it.
"""
import argparse
import datetime
import json
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
RESULTS = ROOT / "benchmarks" / "results.json"
PAGE = ROOT / "docs" / "performance.md"
MEASURED_VERSIONS = ROOT / "docs" / "measured" / "versions.txt"
PROGRAMS = ("eigensolver", "spectrum", "parameter", "wavefunction")
SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
COUNTERS = ("MB", "N", "field_iterations", "lines", "ms_per_atom", "ratio")

INTRODUCTION = """# Performance

How long the program takes, and how much memory: version {version} on one core of "{processor}",
{date}. This page is written from `benchmarks/results.json`, and both are left by

    sh scripts/run_benchmarks.sh{options}

It takes some minutes. Run it on a machine that does nothing else: on a busy one all times are too long. The program
uses one thread. The numbers of a result don't depend on the processor; the times do, also through the width of its
vector registers.
"""

SPECTRA = """
## Spectra

Whole runs of the program: processor time (user and system) and the largest memory held. The systems have shifts of 1 to
8 ppm and couplings of 0.5 to 15 Hz at 400 MHz, each nucleus to each other one of its part. In brackets stand the nuclei
of each group; a number alone is one of protons that are all different, and + stands between parts that don't couple.
"With log" writes the list of lines to a log too; "weak" is the weak-coupling approximation. Each further group of one
nucleus multiplies the time of an exact simulation by six or so, once the matrices are large; a nucleus more in a group
that is there costs little, and so does a part. Sixteen coupled protons, run once on a busy machine, took 880 s of
processor time and 4.3 GB.
"""

VERSIONS = """
## Beside the version before

Processor time beside the program of 2026-11-21, in turn on one core. Spins are single protons, all of them coupled but
for those on both sides of a +. "No log": shielding terms of atoms outside the selection are left out. "Accelerated":
TNDO/2 with `ResponseAcceleration` now, which the version before didn't have; its responses are solved further than
those of the plain iteration. User time, measured by

    python3 benchmarks/version_cost.py --molecules FILE PROGRAM OLD_PROGRAM

"""

SHIELDING = """
## Shielding

Whole runs for the shielding of all atoms, TNDO/2, with the default limit of convergence. N is the number of orbitals.
"Four terms" is the default, "all terms" has the three-centre terms and the tensors. The time of the three-centre terms
grows with the cube of the number of atoms; an atom of sodium to argon costs more (thioanisole has sulfur).
"""

COUPLING = """
## Fields and couplings

Whole runs for couplings, with the default limit of convergence. "Field" has one nucleus selected, so that integrals and
the self-consistent field are nearly all of it; "coupling" has all atoms, or as many as it says. The last column is what
each further nucleus adds. Iterations are those of the field. The helix is a peptide.
"""

STEPS = """
## Steps of a parameter run

Single steps, TNDO/2. Overlap, gamma and core are done once for each field. Fock, density, exact or pseudo (the two
ways to diagonalise) and, on request, extrapolation make an iteration; "wavefunction" is a whole field. The last three
rows belong to the coupling of one nucleus: two steps of an iteration, and the whole response.
"""

EIGENSOLVER = """
## The eigensolver

All eigenvalues and eigenvectors of a random symmetric matrix: our solver beside the divide and conquer solver of
OpenBLAS (dsyevd), both in one thread. The ratio is our time over theirs. Ours is written for the same bytes on every
processor, which a tuned library doesn't promise.

Reduction to a band of eight first, with inverse iteration on the band, was tried for orders above 2,048: whole runs of
14 and 15 spins took 17 and 20 % less with registers of 512 bits and some 10 % with those of 256. It was left out:
spectra with many equal levels lost the orthogonality of their vectors, and to mend that takes another 600 lines.
"""


def collect(folder, options):
    """Joins the results of the benchmarks; leaves out what belongs to the machine's user and not to its speed."""
    cpu_info = pathlib.Path("/proc/cpuinfo").read_text()
    processor = re.search(r"^model name\s*: (.*)$", cpu_info, re.MULTILINE)
    version = re.search(r"project\(velkoran VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text()).group(1)
    results = {
        "version": version,
        "processor": processor.group(1) if processor else "unknown",
        "date": datetime.date.today().isoformat(),
        "options": f" {options}".rstrip(),
        "benchmarks": {},
    }
    for program in PROGRAMS:
        rows = json.loads((folder / f"{program}.json").read_text())["benchmarks"]
        results["benchmarks"][program] = {
            row["name"].removesuffix("/manual_time"): {
                "seconds": float(f"{row['real_time'] * SECONDS[row['time_unit']]:.4g}"),
                **{name: float(f"{row[name]:.4g}") for name in COUNTERS if name in row},
            }
            for row in rows
            if row["run_type"] == "iteration"
        }
    RESULTS.write_text(json.dumps(results, indent=1) + "\n")


def time_text(seconds):
    """A time with three digits and its unit."""
    for unit, size in (("s", 1.0), ("ms", 1e-3), ("µs", 1e-6)):
        if seconds >= size or unit == "µs":
            value = seconds / size
            return f"{value:.{2 if value < 10 else 1 if value < 100 else 0}f} {unit}"


def table_lines(header, rows):
    """A table whose first column is text and whose others are numbers."""
    lines = ["", f"| {' | '.join(header)} |", f"|---|{'---:|' * (len(header) - 1)}"]
    return lines + [f"| {' | '.join(row)} |" for row in rows]


def counter_text(row, name, digits=0):
    return f"{row[name]:.{digits}f}" if name in row else ""


def spectrum_rows(rows):
    return [
        (
            name.replace("/", ", ").replace("_", " "),
            time_text(row["seconds"]),
            counter_text(row, "MB", 1),
            counter_text(row, "lines"),
        )
        for name, row in rows.items()
    ]


def parameter_rows(rows, shielding):
    """The rows of the table of shieldings, or of the other."""
    table = []
    for name, row in rows.items():
        kind, *rest = name.split("/")
        if kind.startswith("shielding") != shielding:
            continue
        cells = [
            f"{kind.removeprefix('shielding_').replace('_', ' ')}, {', '.join(rest).replace('TNDO', 'TNDO/')}",
            counter_text(row, "N"),
            counter_text(row, "field_iterations"),
            time_text(row["seconds"]),
            counter_text(row, "MB", 1),
        ]
        table.append(cells if shielding else cells + [counter_text(row, "ms_per_atom", 2)])
    return table


def step_rows(rows):
    """One row a step, one column a molecule; the names of the molecules, with their orbitals."""
    molecules, steps = {}, {}
    for name, row in rows.items():
        step, molecule = name.split("/")
        molecules[molecule] = f"{molecule}, N = {row['N']:.0f}"
        steps.setdefault(step, {})[molecule] = time_text(row["seconds"])
    return list(molecules.values()), [
        [step.replace("_", " "), *(times.get(molecule, "") for molecule in molecules)] for step, times in steps.items()
    ]


def eigensolver_rows(rows):
    return [
        (
            name.partition("/")[2],
            time_text(row["seconds"]),
            time_text(rows[name.replace("Eigensolver", "Lapack")]["seconds"]),
            counter_text(row, "ratio", 2),
        )
        for name, row in rows.items()
        if name.startswith("Eigensolver")
    ]


def make_page(results):
    benchmarks = results["benchmarks"]
    lines = INTRODUCTION.format(**results).splitlines()
    lines += SPECTRA.splitlines()
    lines += table_lines(("Run", "Time", "MB", "Lines"), spectrum_rows(benchmarks["spectrum"]))
    lines += SHIELDING.splitlines()
    lines += table_lines(("Run", "N", "Iterations", "Time", "MB"), parameter_rows(benchmarks["parameter"], True))
    lines += COUPLING.splitlines()
    lines += table_lines(
        ("Run", "N", "Iterations", "Time", "MB", "ms per nucleus"), parameter_rows(benchmarks["parameter"], False)
    )
    lines += STEPS.splitlines()
    molecules, rows = step_rows(benchmarks["wavefunction"])
    lines += table_lines(["Step"] + molecules, rows)
    lines += EIGENSOLVER.splitlines()
    lines += table_lines(("Order", "Ours", "OpenBLAS", "Ratio"), eigensolver_rows(benchmarks["eigensolver"]))
    lines += VERSIONS.splitlines() + MEASURED_VERSIONS.read_text().splitlines()
    return "\n".join(lines) + "\n"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--collect", type=pathlib.Path)
    parser.add_argument("--options", default="")
    parser.add_argument("--check", action="store_true")
    arguments = parser.parse_args()
    if arguments.collect:
        collect(arguments.collect, arguments.options)
    page = make_page(json.loads(RESULTS.read_text()))
    if not arguments.check:
        PAGE.write_text(page)
    elif PAGE.read_text() != page:
        print(f"{PAGE.name} isn't what {pathlib.Path(__file__).name} makes of {RESULTS.name}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
