#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes nmrtype.txt, nmr_shft.abp and nmr_cupl.abp beside itself from parameter_figures.csv.

Usage: make_parameters.py           writes the three files
       make_parameters.py --check   writes nothing; the exit code is 1 if a file isn't what it would write
"""
import csv
import sys
from pathlib import Path

FOLDER = Path(__file__).resolve().parent

ELEMENTS = "H HE LI BE B C N O F NE NA MG AL SI P S CL AR".split()

MASSES = [
    1.0079,
    4.0026,
    6.94,
    9.01218,
    10.81,
    12.011,
    14.0067,
    15.9994,
    18.9984,
    20.179,
    22.98977,
    24.305,
    26.98154,
    28.0855,
    30.97376,
    32.06,
    35.453,
    39.948,
]

# The columns after the name, as (parameter, decimals). F2 stands before G1, and s before g: the file's order.
# The shielding file has two columns that nobody reads where the coupling file has s and g.
COLUMNS = [
    ("SlaterExponentS", 7),
    ("SlaterExponentP", 7),
    ("SlaterExponentD", 7),
    ("OrbitalEnergyS", 5),
    ("OrbitalEnergyP", 5),
    ("OrbitalEnergyD", 5),
    ("BondingParameter", 4),
    ("SlaterCondonF2", 6),
    ("SlaterCondonG1", 6),
    ("sDensity0", 7),
    ("gFactor", 7),
    ("IsolatedEnergyTndo1", 7),
    ("IsolatedEnergyTndo2", 7),
    ("AtomHeat", 3),
]
COUPLING_ONLY = ("sDensity0", "gFactor")

# What a type may leave out, and then is 0: p and d orbitals that it hasn't got, and their constants.
MAY_BE_ABSENT = (
    "SlaterExponentP",
    "SlaterExponentD",
    "OrbitalEnergyP",
    "OrbitalEnergyD",
    "SlaterCondonF2",
    "SlaterCondonG1",
)

# Figures of the table that document a type and stand in no file.
NOT_WRITTEN = ("Isotope", "Spin")


def read_figures():
    """The table as {type: {parameter: text}}; a figure given twice or unknown is an error."""
    known = [name for name, _ in COLUMNS] + list(NOT_WRITTEN)
    figures = {}
    with open(FOLDER / "parameter_figures.csv", newline="", encoding="ascii") as stream:
        for row in csv.DictReader(stream):
            of_type = figures.setdefault(row["type"], {})
            if row["parameter"] not in known or row["parameter"] in of_type:
                sys.exit(f"parameter_figures.csv: {row['type']} {row['parameter']} is unknown or stands there twice")
            of_type[row["parameter"]] = row["value"]
    return figures


def record(name, figures, is_coupling):
    """One record: the name and 14 numbers."""
    texts = []
    for parameter, decimals in COLUMNS:
        value = 0.0
        if is_coupling or parameter not in COUPLING_ONLY:
            if parameter in figures:
                value = float(figures[parameter])
            elif parameter not in MAY_BE_ABSENT:
                sys.exit(f"parameter_figures.csv: {name} has no {parameter}")
        text = f"{value:.{decimals}f}"
        if float(text) != value:
            sys.exit(f"parameter_figures.csv: {name} {parameter} has more than {decimals} decimals")
        texts.append(f" {text:>{decimals + 6}}")
    return f"{name:<4}{''.join(texts)}\n"


def make_files():
    """The contents of the three files by name."""
    figures = read_figures()
    names = ELEMENTS + ["-" + name for name in ELEMENTS]
    if sorted(figures) != sorted(names):
        sys.exit("parameter_figures.csv: the types aren't the 18 elements and their capping atoms")
    types = ["Type  Mass     one generic type for each element\n"]
    types += [f"{name:<4}{mass:>10.5f}\n" for name, mass in zip(ELEMENTS, MASSES)]
    return {
        "nmrtype.txt": "".join(types),
        "nmr_shft.abp": "".join(record(name, figures[name], False) for name in names),
        "nmr_cupl.abp": "".join(record(name, figures[name], True) for name in names),
    }


def main():
    if sys.argv[1:] not in ([], ["--check"]):
        sys.exit(__doc__)
    is_check = len(sys.argv) == 2
    stale = []
    for name, content in make_files().items():
        path = FOLDER / name
        if not is_check:
            path.write_bytes(content.encode("ascii"))
        elif not path.is_file() or path.read_bytes() != content.encode("ascii"):
            stale.append(name)
    if stale:
        sys.exit("Not what parameter_figures.csv gives: " + ", ".join(stale) + ". Run make_parameters.py.")


if __name__ == "__main__":
    main()
