#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What the fixed order of arithmetic costs: processor time of the program as it is, beside one whose compiler may
contract products and sums and use every instruction of this processor.

Usage: fixed_order_cost.py PROGRAM CONTRACTING_PROGRAM. The best of ten runs each, taken in turn.
"""
import pathlib
import resource
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
RUNS = 10


def twelve_spins():
    count = 12
    rows = [" ".join(str(5 + 0.37 * min(i, j)) if abs(i - j) == 1 else "0" for j in range(count)) for i in range(count)]
    shifts = " ".join(f"{1 + 0.613 * i:.3f}" for i in range(count))
    return (
        "\n".join(
            [
                "12 spins",
                str(count),
                "1 " * count,
                "MHz",
                "400",
                "ppm",
                shifts,
                "Hz",
                *rows,
                "intensity",
                "0.001",
                "weak",
                "0",
            ]
        )
        + "\n"
    )


def cholesterol_couplings():
    atoms = (ROOT / "benchmarks" / "molecules" / "cholesterol.in").read_text()
    selection = "".join(f"mol 1 atom {i}\n" for i in range(1, 26))
    return (
        "SemiEmpiricalMethod = 2\nSCFConvergenceLimit = 1e-6\nSCFIterationLimit = 200\nCalculateShielding = no\n"
        f"NMRSelectionBegin\n25\n{selection}NMRSelectionEnd\n{atoms}"
    )


def processor_seconds(program, folder, kind):
    before = resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime
    subprocess.run([program, "parameters", folder, kind], cwd=ROOT, check=True)
    return resource.getrusage(resource.RUSAGE_CHILDREN).ru_utime - before


def main():
    programs = [pathlib.Path(name).resolve() for name in sys.argv[1:3]]
    print("| Run | As it is (s) | Contracting (s) | Ratio |\n|---|---:|---:|---:|")
    for name, stem, kind, text in (
        ("exact spectrum of 12 spins", "nmrspect", "2", twelve_spins()),
        ("couplings of 25 nuclei of cholesterol", "nmrparam", "1", cholesterol_couplings()),
    ):
        with tempfile.TemporaryDirectory() as folder:
            pathlib.Path(folder, stem + ".in").write_text(text)
            best = [
                min(times)
                for times in zip(
                    *([processor_seconds(program, folder, kind) for program in programs] for _ in range(RUNS))
                )
            ]
            if pathlib.Path(folder, stem + ".out").read_text().startswith("ERRMSG"):
                sys.exit(f"{name}: no result")
        print(f"| {name} | {best[0]:.3f} | {best[1]:.3f} | {best[0] / best[1]:.2f} |")


if __name__ == "__main__":
    main()
