#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What hardening costs: processor time and instructions of the program as it is, beside one that is built without.

Usage: hardening_cost.py PROGRAM PLAIN_PROGRAM. The best of RUNS runs each, taken in turn; instructions by callgrind.
"""
import pathlib
import re
import subprocess
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "python"))
from cost_runs import COUPLING, ROOT, SHIELDING_TENSORS, best_seconds, cholesterol, twelve_spins, work_folder
from velkoran_runs.program import command_line

RUNS = 20
MILLION = 1e6
CALLGRIND = ("valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null")


def million_instructions(program, folder, job):
    command = command_line(program, "parameters/published", folder, job.kind, through=CALLGRIND)
    said = subprocess.run(command, cwd=ROOT, check=True, stderr=subprocess.PIPE, text=True).stderr
    return int(re.search(r"Collected : (\d+)", said).group(1)) / MILLION


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    programs = [pathlib.Path(name).resolve() for name in sys.argv[1:]]
    print("| Run | As it is (s) | Plain (s) | Ratio | As it is (million instructions) | Plain | Ratio |")
    print("|---|---:|---:|---:|---:|---:|---:|")
    tensors = cholesterol("shielding tensors", SHIELDING_TENSORS)
    for job in (twelve_spins(), cholesterol("couplings", COUPLING), tensors):
        with work_folder(job) as folder:
            best = best_seconds(programs, folder, job, RUNS)
            counts = [million_instructions(program, folder, job) for program in programs]
        print(
            f"| {job.name} | {best[0]:.3f} | {best[1]:.3f} | {best[0] / best[1]:.3f} | "
            f"{counts[0]:.1f} | {counts[1]:.1f} | {counts[0] / counts[1]:.4f} |",
            flush=True,
        )


if __name__ == "__main__":
    main()
