#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What hardening costs: processor time and instructions of the program as it is, beside one that is built without.

Usage: hardening_cost.py PROGRAM PLAIN_PROGRAM. The best of RUNS runs each, taken in turn; instructions by callgrind.
"""
import pathlib
import re
import subprocess
import sys
import tempfile

from fixed_order_cost import ROOT, cholesterol_couplings, processor_seconds, twelve_spins

RUNS = 20
MILLION = 1e6


def cholesterol_shielding():
    """All ten terms and the tensors."""
    return cholesterol_couplings().replace(
        "CalculateShielding = no\n",
        "CalculateShielding = yes\nCalculateCoupling = no\n"
        "ComputeThreeCenterTerms = yes\nCalculateShieldTensor = yes\n",
    )


def million_instructions(program, folder, kind):
    command = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null", program, "parameters", folder, kind]
    said = subprocess.run(command, cwd=ROOT, check=True, stderr=subprocess.PIPE, text=True).stderr
    return int(re.search(r"Collected : (\d+)", said).group(1)) / MILLION


JOBS = (
    ("exact spectrum of 12 spins", "nmrspect", "2", twelve_spins()),
    ("couplings of 25 nuclei of cholesterol", "nmrparam", "1", cholesterol_couplings()),
    ("shielding tensors of 25 nuclei of cholesterol", "nmrparam", "1", cholesterol_shielding()),
)


def main():
    programs = [pathlib.Path(name).resolve() for name in sys.argv[1:3]]
    print("| Run | As it is (s) | Plain (s) | Ratio | As it is (million instructions) | Plain | Ratio |")
    print("|---|---:|---:|---:|---:|---:|---:|")
    for name, stem, kind, text in JOBS:
        with tempfile.TemporaryDirectory() as folder:
            pathlib.Path(folder, stem + ".in").write_text(text)
            best = [
                min(times)
                for times in zip(
                    *([processor_seconds(program, folder, kind) for program in programs] for _ in range(RUNS))
                )
            ]
            counts = [million_instructions(program, folder, kind) for program in programs]
            result = pathlib.Path(folder, stem + ".out").read_text()
            if not result or result.startswith("ERRMSG"):
                sys.exit(f"{name}: no result")
        print(
            f"| {name} | {best[0]:.3f} | {best[1]:.3f} | {best[0] / best[1]:.3f} | "
            f"{counts[0]:.1f} | {counts[1]:.1f} | {counts[0] / counts[1]:.4f} |",
            flush=True,
        )


if __name__ == "__main__":
    main()
