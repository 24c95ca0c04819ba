#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Processor time of the program beside that of an older one, on runs that show what has become faster.

Usage: version_cost.py [--molecules FILE] PROGRAM OLD_PROGRAM
The mean of so many runs each, taken in turn: one of the longest, fifty of the shortest. Where the old program has
another input, the run shows what a new option brings. Each line of FILE is a JSON object; its "xyz" is the list of
atoms [symbol, x, y, z] in Angstrom of a neutral closed-shell molecule: couplings and shieldings of all of them, added
up.
"""
import argparse
import dataclasses
import json
import pathlib
import random
import sys
from collections.abc import Mapping, Sequence

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "python"))
from cost_runs import COUPLING, ROOT, SHIELDING_TENSORS, Job, processor_seconds, work_folder
from velkoran_runs.inputs import Atom, atoms_text, parameter_input, read_atoms
from velkoran_runs.program import RunKind
from velkoran_runs.spectrum_inputs import spectrum_input

FIELD = {**COUPLING, "SemiEmpiricalMethod": 2}
SECOND_HELIX = 14.0  # Angstrom from the first
ONCE, SOMETIMES, OFTEN = 1, 5, 50
SHIELDING = {"CalculateShielding": True, "CalculateCoupling": False, "SemiEmpiricalMethod": 2}
ACCELERATION = {"ResponseAcceleration": True}


@dataclasses.dataclass(frozen=True)
class Comparison:
    """A job of the program, that of the old one, and how often both run."""

    new: Job
    old: Job
    runs: int


def spins(sizes: Sequence[int], name: str, runs: int, masses: Sequence[int] = ()) -> Comparison:
    """Single nuclei in parts of these sizes; those of a part are all coupled."""
    generator = random.Random(1)
    parts = [part for part, size in enumerate(sizes) for _ in range(size)]
    shifts = [generator.uniform(1.0, 8.0) for _ in parts]
    couplings = [[generator.uniform(0.5, 15.0) if p == q else 0.0 for q in parts] for p in parts]
    job = Job(name, RunKind.SPECTRUM, spectrum_input(shifts, couplings, 400, masses=masses))
    return Comparison(job, job, runs)


def atoms_of(file: str) -> str:
    return (ROOT / "benchmarks" / "molecules" / f"{file}.in").read_text()


def one_nucleus(name: str, file: str, options: Mapping[str, object], runs: int) -> Comparison:
    job = Job(name, RunKind.PARAMETER, parameter_input(atoms_of(file), options, 1))
    return Comparison(job, job, runs)


def accelerated(name: str, atoms: str, options: Mapping[str, object], runs: int) -> Comparison:
    """All nuclei; the old program without acceleration of the responses, the new one with it."""
    new, old = (
        Job(name, RunKind.PARAMETER, parameter_input(atoms, {**options, **more})) for more in (ACCELERATION, {})
    )
    return Comparison(new, old, runs)


def two_helices() -> Comparison:
    helix = read_atoms((ROOT / "benchmarks" / "molecules" / "helix.in").read_text())[0]
    moved = [moved_atom(atom) for atom in helix]
    text = parameter_input(atoms_text(helix, moved), FIELD, 1)
    job = Job("field of two helices, 1,550 orbitals", RunKind.PARAMETER, text)
    return Comparison(job, job, ONCE)


def moved_atom(atom: Atom) -> Atom:
    x, y, z = atom.position
    return dataclasses.replace(atom, position=(x, y + SECOND_HELIX, z))


def comparisons() -> list[Comparison]:
    return [
        spins([12], "12 spins", SOMETIMES),
        spins([13], "13 spins", SOMETIMES),
        spins([14], "14 spins", ONCE),
        spins([15], "15 spins", ONCE),
        spins([6, 6], "6 + 6 spins", OFTEN),
        spins([13], "12 spins and 31P", SOMETIMES, [1] * 12 + [31]),
        spins([12], "6 spins 1H, 6 spins 19F, all coupled", SOMETIMES, [1] * 6 + [19] * 6),
        one_nucleus("field of the helix, 775 orbitals", "helix", FIELD, SOMETIMES),
        two_helices(),
        one_nucleus("all terms of one carbon of cholesterol, no log", "cholesterol", SHIELDING_TENSORS, SOMETIMES),
        accelerated("couplings of naphthalene, accelerated", atoms_of("naphthalene"), FIELD, OFTEN),
        accelerated("couplings of cholesterol, accelerated", atoms_of("cholesterol"), FIELD, SOMETIMES),
    ]


def mean_of_both(programs: Sequence[pathlib.Path], comparison: Comparison) -> list[float]:
    """The mean of the program and of the old one."""
    with work_folder(comparison.new) as new_folder, work_folder(comparison.old) as old_folder:
        times = [
            (
                processor_seconds(programs[0], new_folder, comparison.new),
                processor_seconds(programs[1], old_folder, comparison.old),
            )
            for _ in range(comparison.runs)
        ]
    return [sum(of_program) / comparison.runs for of_program in zip(*times)]


def print_row(name: str, new: float, old: float) -> None:
    print(f"| {name} | {old:.4g} | {new:.4g} | {new / old:.3g} |", flush=True)


def compare_molecules(programs: Sequence[pathlib.Path], file: pathlib.Path) -> None:
    """A row for the couplings of all molecules of the file, and one for their shieldings."""
    with open(file, encoding="utf-8") as lines:
        molecules = [json.loads(line)["xyz"] for line in lines if line.strip()]
    for what, options in (("couplings", FIELD), ("four-term shieldings", SHIELDING)):
        name = f"{what} of {len(molecules)} molecules, accelerated"
        texts = [atoms_text([Atom(symbol, tuple(place)) for symbol, *place in atoms]) for atoms in molecules]
        sums = [mean_of_both(programs, accelerated(name, text, options, ONCE)) for text in texts]
        print_row(name, *(sum(of_program) for of_program in zip(*sums)))


def main() -> None:
    parser = argparse.ArgumentParser()
    parser.add_argument("--molecules", type=pathlib.Path)
    parser.add_argument("program", type=pathlib.Path)
    parser.add_argument("old_program", type=pathlib.Path)
    arguments = parser.parse_args()
    programs = [arguments.program.resolve(), arguments.old_program.resolve()]
    print("| Run | Before (s) | Now (s) | Ratio |")
    print("|---|---:|---:|---:|")
    for comparison in comparisons():
        print_row(comparison.new.name, *mean_of_both(programs, comparison))
    if arguments.molecules:
        compare_molecules(programs, arguments.molecules)


if __name__ == "__main__":
    main()
