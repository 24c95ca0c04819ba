#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures the exact simulation of many spin systems, whole, at one frequency: processor time and memory of each run.

Usage: refined_systems.py [--program PATH] [--frequency MHZ] [--slowest COUNT] SYSTEMS
Each line of the file SYSTEMS is a JSON object: "ppm" the shifts of single protons, "J" a list of [place, place, Hz],
places from 0. Protons of one shift and equal couplings to all others become a group. Prints a table.
"""
import argparse
import dataclasses
import json
import os
import pathlib
import statistics
import sys
import tempfile
from collections.abc import Iterable, Mapping, Sequence

sys.dont_write_bytecode = True
ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "python"))
from velkoran_runs.program import RunKind, start_run
from velkoran_runs.results import refusal_of
from velkoran_runs.spectrum_inputs import spectrum_input

Couplings = Mapping[tuple[int, int], float]


@dataclasses.dataclass(frozen=True)
class Cost:
    """What a run took, and what it refused."""

    name: str
    nuclei: int
    groups: int
    seconds: float
    megabytes: float
    refusal: str | None


def couplings_of(pairs: Iterable[Sequence[float]]) -> Couplings:
    """Couplings in Hz by both orders of a pair of places."""
    couplings = {}
    for first, second, value in pairs:
        couplings[int(first), int(second)] = couplings[int(second), int(first)] = value
    return couplings


def are_equivalent(first: int, second: int, shifts: Sequence[float], couplings: Couplings) -> bool:
    """True for one shift and equal couplings to every other proton."""
    others = set(range(len(shifts))) - {first, second}
    return shifts[first] == shifts[second] and all(
        couplings.get((first, other), 0.0) == couplings.get((second, other), 0.0) for other in others
    )


def groups_of(shifts: Sequence[float], couplings: Couplings) -> list[list[int]]:
    """The places of equivalent protons, group by group."""
    groups: list[list[int]] = []
    for place in range(len(shifts)):
        for group in groups:
            if are_equivalent(group[0], place, shifts, couplings):
                group.append(place)
                break
        else:
            groups.append([place])
    return groups


def input_of(shifts: Sequence[float], couplings: Couplings, groups: Sequence[Sequence[int]], frequency: int) -> str:
    places = [group[0] for group in groups]
    rows = [[0.0 if i == j else couplings.get((i, j), 0.0) for j in places] for i in places]
    return spectrum_input([shifts[i] for i in places], rows, frequency, sizes=[len(group) for group in groups])


def cost_of(program: pathlib.Path, folder: pathlib.Path, system: Mapping[str, object], frequency: int) -> Cost:
    """Runs one system. SystemExit where the program fails."""
    shifts: Sequence[float] = system["ppm"]  # type: ignore[assignment]
    couplings = couplings_of(system["J"])  # type: ignore[arg-type]
    groups = groups_of(shifts, couplings)
    (folder / RunKind.SPECTRUM.input_name).write_text(input_of(shifts, couplings, groups, frequency))
    process = start_run(program, ".", ".", RunKind.SPECTRUM, folder=folder)
    status, usage = os.wait4(process.pid, 0)[1:]
    if status != 0:
        sys.exit(f"{system['name']}: the run failed with status {status}")
    refusal = refusal_of((folder / RunKind.SPECTRUM.output_name).read_text())
    seconds = usage.ru_utime + usage.ru_stime
    return Cost(str(system["name"]), len(shifts), len(groups), seconds, usage.ru_maxrss / 1024, refusal)


def print_table(costs: Sequence[Cost], slowest: int) -> None:
    done = [cost for cost in costs if cost.refusal is None]
    print("| Systems | Done | Median (ms) | Mean (ms) | Largest (s) | Largest (MB) |")
    print("|---:|---:|---:|---:|---:|---:|")
    seconds = [cost.seconds for cost in done]
    figures = f"{1000 * statistics.median(seconds):.1f} | {1000 * statistics.mean(seconds):.1f} | {max(seconds):.2f}"
    print(f"| {len(costs)} | {len(done)} | {figures} | {max(cost.megabytes for cost in done):.0f} |")
    for cost in sorted(done, key=lambda cost: -cost.seconds)[:slowest]:
        print(
            f"{cost.name}: {cost.nuclei} protons, {cost.groups} groups, {cost.seconds:.2f} s, {cost.megabytes:.0f} MB"
        )
    for cost in costs:
        if cost.refusal is not None:
            print(f"{cost.name}: {cost.nuclei} protons, {cost.groups} groups: {cost.refusal}")


def main() -> None:
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", default=str(ROOT / "build" / "release" / "velkoran"))
    parser.add_argument("--frequency", type=int, default=600)
    parser.add_argument("--slowest", type=int, default=0)
    parser.add_argument("systems", type=pathlib.Path)
    arguments = parser.parse_args()
    with open(arguments.systems, encoding="utf-8") as file:
        systems = [json.loads(line) for line in file if line.strip()]
    with tempfile.TemporaryDirectory() as name:
        program = pathlib.Path(arguments.program).resolve()
        costs = [cost_of(program, pathlib.Path(name), system, arguments.frequency) for system in systems]
    print_table(costs, arguments.slowest)


if __name__ == "__main__":
    main()
