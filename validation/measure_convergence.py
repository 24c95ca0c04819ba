#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Counts the fields and responses that end at their iteration limit, over many molecules, by the cautions of the log.

Usage: measure_convergence.py [--program PATH] MOLECULES
Each line of the file MOLECULES is a JSON object; its "xyz" is the list of atoms [symbol, x, y, z] in Angstrom of a
neutral closed-shell molecule. Shieldings and couplings of all atoms are computed one molecule after the other, with
both methods, without and with SCFAccelerateConvergence, then with ResponseAcceleration too, and the default limits.
Prints a table.
"""
import argparse
import json
import pathlib
import resource
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "python"))
from velkoran_runs.inputs import Atom, atoms_text, parameter_input
from velkoran_runs.log import cautions
from velkoran_runs.program import RunKind, make_run
from velkoran_runs.results import parse_parameter_result

ROOT = pathlib.Path(__file__).resolve().parents[1]
UNSTABLE = "response unstable: the lowest eigenvalue of the "
KINDS = [
    "field with nmr_shft.abp",
    "field with nmr_cupl.abp",
    "response to the contact",
    "response to the magnetic",
    UNSTABLE + "contact",
    UNSTABLE + "magnetic",
]
SETTINGS = [("no", "no"), ("yes", "no"), ("yes", "yes")]  # of the field, of the responses
HEADS = [
    "Method",
    "Acceleration",
    "Of responses",
    "Runs",
    "Fields, shielding",
    "Fields, coupling",
    "Contact responses",
    "Magnetic responses",
    "Unstable, contact",
    "Unstable, magnetic",
    "Runs with any",
    "Processor time (s)",
    "Ratio",
]


def cautions_of(program, work, atoms, options):
    """The kinds of the cautions of one run, in their order."""
    text = parameter_input(atoms_text([Atom(symbol, tuple(place)) for symbol, *place in atoms]), options)
    (work / RunKind.PARAMETER.input_name).write_text(text)
    texts = make_run(program, "parameters", ".", RunKind.PARAMETER, folder=work)
    try:
        parse_parameter_result(texts.output or "")
    except ValueError as error:
        sys.exit(f"measure_convergence: {error}")
    said = cautions(texts.log or "")
    return [kind for caution in said for kind in KINDS if caution.startswith(kind)]


def processor_seconds():
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def share_of(count, total):
    return f"{count} of {total}"


def measure(program, work, molecules, method, setting):
    """One row of the table without its ratio, and the processor time."""
    field, responses = setting
    options = {
        "SemiEmpiricalMethod": method,
        "SCFAccelerateConvergence": field,
        "ResponseAcceleration": responses,
    }
    counts = dict.fromkeys(KINDS, 0)
    doubtful = 0
    start = processor_seconds()
    for atoms in molecules:
        cautions = cautions_of(program, work, atoms, options)
        doubtful += bool(cautions)
        for caution in cautions:
            counts[caution] += 1
    seconds = processor_seconds() - start
    runs = len(molecules)
    totals = [runs, runs, sum(map(len, molecules)), 3 * runs, runs, runs]
    shares = [share_of(counts[kind], total) for kind, total in zip(KINDS, totals)]
    if responses == "no":  # which looks for no instability
        shares[-2:] = ["-", "-"]
    return [f"TNDO/{method}", *setting, str(runs), *shares, str(doubtful), f"{seconds:.0f}"], seconds


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", default=str(ROOT / "build" / "release" / "velkoran"))
    parser.add_argument("molecules", type=pathlib.Path)
    arguments = parser.parse_args()
    program = pathlib.Path(arguments.program).resolve()
    with open(arguments.molecules, encoding="utf-8") as file:
        molecules = [json.loads(line)["xyz"] for line in file if line.strip()]
    print("| " + " | ".join(HEADS) + " |")
    print("|---|---|---|" + "---:|" * (len(HEADS) - 3))
    with tempfile.TemporaryDirectory() as folder:
        work = pathlib.Path(folder)
        (work / "parameters").symlink_to(ROOT / "parameters" / "published")
        for method in (1, 2):
            first = None
            for setting in SETTINGS:
                row, seconds = measure(program, work, molecules, method, setting)
                first = first or seconds
                print("| " + " | ".join([*row, f"{seconds / first:.2f}"]) + " |", flush=True)


if __name__ == "__main__":
    main()
