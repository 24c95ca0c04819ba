#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Counts the fields and responses that end at their iteration limit, over many molecules, by the cautions of the log.

Usage: measure_convergence.py [--program PATH] MOLECULES
Each line of the file MOLECULES is a JSON object; its "xyz" is the list of atoms [symbol, x, y, z] in Angstrom of a
neutral closed-shell molecule. Shieldings and couplings of all atoms are computed one molecule after the other, with
both methods, with and without SCFAccelerateConvergence, and the default limits. Prints a table.
"""
import argparse
import json
import pathlib
import re
import resource
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
CAUTION = re.compile(r"^CAUTION: (field with \S+|response to the \w+)", re.M)
KINDS = ["field with nmr_shft.abp", "field with nmr_cupl.abp", "response to the contact", "response to the magnetic"]
HEADS = [
    "Method",
    "Acceleration",
    "Runs",
    "Fields, shielding",
    "Fields, coupling",
    "Contact responses",
    "Magnetic responses",
    "Runs with any",
    "Processor time (s)",
    "Ratio",
]


def input_of(atoms, method, acceleration):
    lines = [
        f"SemiEmpiricalMethod = {method}",
        f"SCFAccelerateConvergence = {acceleration}",
        "NMRSelectionBegin",
        str(len(atoms)),
        *(f"mol 1 atom {number + 1}" for number in range(len(atoms))),
        "NMRSelectionEnd",
        "AtomsBegin",
        str(len(atoms)),
        "mol 1",
    ]
    for number, (symbol, x, y, z) in enumerate(atoms):
        lines.append(f"atom {number + 1} {symbol} {symbol} {symbol} - 0.0 {x:.8f} {y:.8f} {z:.8f} 0")
    return "\n".join([*lines, "AtomsEnd", ""])


def cautions_of(program, work, atoms, method, acceleration):
    """The cautions of one run, by their first words."""
    (work / "nmrparam.in").write_text(input_of(atoms, method, acceleration))
    (work / "run.log").unlink(missing_ok=True)
    subprocess.run([program, "parameters", ".", "1", "run.log"], cwd=work, check=True)
    result = (work / "nmrparam.out").read_text()
    if not result.startswith("Results"):
        sys.exit(f"measure_convergence: {result}")
    return CAUTION.findall((work / "run.log").read_text())


def processor_seconds():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def share_of(count, total):
    return f"{count} of {total}"


def measure(program, work, molecules, method, acceleration):
    """One row of the table without its ratio, and the processor time."""
    counts = dict.fromkeys(KINDS, 0)
    doubtful = 0
    start = processor_seconds()
    for atoms in molecules:
        cautions = cautions_of(program, work, atoms, method, acceleration)
        doubtful += bool(cautions)
        for caution in cautions:
            counts[caution] += 1
    seconds = processor_seconds() - start
    totals = [len(molecules), len(molecules), sum(map(len, molecules)), 3 * len(molecules)]
    shares = [share_of(counts[kind], total) for kind, total in zip(KINDS, totals)]
    return [f"TNDO/{method}", acceleration, str(len(molecules)), *shares, str(doubtful), f"{seconds:.0f}"], seconds


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", default=str(ROOT / "build" / "release" / "velkoran"))
    parser.add_argument("molecules", type=pathlib.Path)
    arguments = parser.parse_args()
    program = pathlib.Path(arguments.program).resolve()
    with open(arguments.molecules, encoding="utf-8") as file:
        molecules = [json.loads(line)["xyz"] for line in file if line.strip()]
    print("| " + " | ".join(HEADS) + " |")
    print("|---|---|" + "---:|" * (len(HEADS) - 2))
    with tempfile.TemporaryDirectory() as folder:
        work = pathlib.Path(folder)
        (work / "parameters").symlink_to(ROOT / "parameters")
        for method in (1, 2):
            row, plain = measure(program, work, molecules, method, "no")
            print("| " + " | ".join([*row, "1"]) + " |", flush=True)
            row, accelerated = measure(program, work, molecules, method, "yes")
            print("| " + " | ".join([*row, f"{accelerated / plain:.2f}"]) + " |", flush=True)


main()
