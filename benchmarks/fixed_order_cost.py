#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What the fixed order of arithmetic costs: processor time of the program as it is, beside one whose compiler may
contract products and sums and use every instruction of this processor.

Usage: fixed_order_cost.py PROGRAM CONTRACTING_PROGRAM. The best of ten runs each, taken in turn.
"""
import pathlib
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "python"))
from cost_runs import COUPLING, best_seconds, cholesterol, twelve_spins, work_folder

RUNS = 10


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    programs = [pathlib.Path(name).resolve() for name in sys.argv[1:]]
    print("| Run | As it is (s) | Contracting (s) | Ratio |\n|---|---:|---:|---:|")
    for job in (twelve_spins(), cholesterol("couplings", COUPLING)):
        with work_folder(job) as folder:
            best = best_seconds(programs, folder, job, RUNS)
        print(f"| {job.name} | {best[0]:.3f} | {best[1]:.3f} | {best[0] / best[1]:.2f} |")


if __name__ == "__main__":
    main()
