#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes nmrtype.txt, nmr_shft.abp and nmr_cupl.abp beside itself from parameter_figures.csv.

Usage: make_parameters.py           writes the three files
       make_parameters.py --check   writes nothing; the exit code is 1 if a file isn't what it would write
"""
import csv
import sys
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "python"))
from generated_files import write_or_check
from velkoran_runs.parameter_files import (
    COLUMNS,
    COUPLING_FILE,
    COUPLING_ONLY,
    SHIELDING_FILE,
    TYPE_FILE,
    record_text,
    types_text,
)

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
    known = [*COLUMNS, *NOT_WRITTEN]
    figures = {}
    with open(FOLDER / "parameter_figures.csv", newline="", encoding="ascii") as stream:
        for row in csv.DictReader(stream):
            of_type = figures.setdefault(row["type"], {})
            if row["parameter"] not in known or row["parameter"] in of_type:
                sys.exit(f"parameter_figures.csv: {row['type']} {row['parameter']} is unknown or stands there twice")
            of_type[row["parameter"]] = row["value"]
    return figures


def record(name, figures, is_coupling):
    """The record of a type in the coupling or the shielding file."""
    values = dict.fromkeys(COLUMNS, 0.0)
    for column in COLUMNS:
        if column in COUPLING_ONLY and not is_coupling:
            continue
        if column in figures:
            values[column] = float(figures[column])
        elif column not in MAY_BE_ABSENT:
            sys.exit(f"parameter_figures.csv: {name} has no {column}")
    try:
        return record_text(name, values)
    except ValueError as error:
        sys.exit(f"parameter_figures.csv: {error}")


def make_files():
    """The contents of the three files by path."""
    figures = read_figures()
    names = ELEMENTS + ["-" + name for name in ELEMENTS]
    if sorted(figures) != sorted(names):
        sys.exit("parameter_figures.csv: the types aren't the 18 elements and their capping atoms")
    return {
        FOLDER / TYPE_FILE: types_text("Type  Mass     one generic type for each element", dict(zip(ELEMENTS, MASSES))),
        FOLDER / SHIELDING_FILE: "".join(record(name, figures[name], False) for name in names),
        FOLDER / COUPLING_FILE: "".join(record(name, figures[name], True) for name in names),
    }


if __name__ == "__main__":
    sys.exit(write_or_check(make_files))
