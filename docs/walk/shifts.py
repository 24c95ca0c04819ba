#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
# Runs the program on many molecules at once, and prints their shifts from the first one.
# Usage: python3 shifts.py PROGRAM PARAMDIR WORKDIR..., each a folder with an nmrparam.in; the first is the reference.
import collections
import concurrent.futures
import pathlib
import subprocess
import sys

SYMBOLS = {1: "H", 6: "C", 7: "N", 8: "O", 9: "F", 14: "Si", 15: "P", 16: "S", 17: "Cl"}


def run_molecule(program, parameters, folder):
    """The selected nuclei as atomic numbers, their shieldings in ppm, and the couplings in Hz row by row."""
    log = pathlib.Path(folder, "run.log")
    log.unlink(missing_ok=True)  # the program appends to it
    subprocess.run([program, parameters, folder, "1", str(log)], check=True)
    lines = pathlib.Path(folder, "nmrparam.out").read_text().splitlines()
    if lines[0].startswith("ERRMSG: "):
        raise RuntimeError(f"{folder}: {lines[0]}")
    for line in log.read_text().splitlines():
        if line.startswith("CAUTION: "):  # not converged, or doubtful in another way
            raise RuntimeError(f"{folder}: {line}")
    elements = [int(word) for word in lines[2].split()]
    shieldings = [float(word) for word in lines[lines.index("SHIELDING") + 1].split()]
    first = lines.index("COUPLING") + 1
    couplings = [[float(word) for word in line.split()] for line in lines[first : first + len(elements)]]
    return elements, shieldings, couplings


def mean_shieldings(elements, shieldings):
    """The mean of the nuclei of each element, by atomic number."""
    values = collections.defaultdict(list)
    for element, shielding in zip(elements, shieldings):
        values[element].append(shielding)
    return {element: sum(numbers) / len(numbers) for element, numbers in values.items()}


def main():
    program, parameters, *folders = sys.argv[1:]
    with concurrent.futures.ThreadPoolExecutor() as pool:  # a run uses one processor core
        results = list(pool.map(lambda folder: run_molecule(program, parameters, folder), folders))
    reference = mean_shieldings(*results[0][:2])
    print("molecule      nucleus  shielding    shift")
    for folder, (elements, shieldings, _) in zip(folders, results):
        for element, shielding in mean_shieldings(elements, shieldings).items():
            if element in reference:
                print(
                    f"{pathlib.Path(folder).name:13} {SYMBOLS[element]:7} {shielding:10.2f} "
                    f"{reference[element] - shielding:8.2f}"
                )


main()
