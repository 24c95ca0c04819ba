# SPDX-License-Identifier: MIT
"""Reads and writes the three parameter files; see nmrtype.txt(5), nmr_shft.abp(5) and nmr_cupl.abp(5)."""
from collections.abc import Mapping

TYPE_FILE = "nmrtype.txt"
SHIELDING_FILE = "nmr_shft.abp"
COUPLING_FILE = "nmr_cupl.abp"
FILE_NAMES = (TYPE_FILE, SHIELDING_FILE, COUPLING_FILE)

# The columns of a record behind its name, in the order of the file, and the decimals with which they are written. The
# shielding file has two columns that nobody reads where the coupling file has s and g.
COLUMNS = {
    "SlaterExponentS": 7,
    "SlaterExponentP": 7,
    "SlaterExponentD": 7,
    "OrbitalEnergyS": 5,
    "OrbitalEnergyP": 5,
    "OrbitalEnergyD": 5,
    "BondingParameter": 4,
    "SlaterCondonF2": 6,
    "SlaterCondonG1": 6,
    "sDensity0": 7,
    "gFactor": 7,
    "IsolatedEnergyTndo1": 7,
    "IsolatedEnergyTndo2": 7,
    "AtomHeat": 3,
}
COUPLING_ONLY = ("sDensity0", "gFactor")

Record = dict[str, float]  # by column


def parse_records(text: str) -> dict[str, Record]:
    """The records of nmr_shft.abp or nmr_cupl.abp by their names. ValueError if the last one isn't whole, or if a
    name stands twice."""
    words = text.split()
    size = len(COLUMNS) + 1
    if len(words) % size != 0:
        raise ValueError(f"The file has {len(words)} words, which are no whole records of {size}.")
    records: dict[str, Record] = {}
    for start in range(0, len(words), size):
        name, *numbers = words[start : start + size]
        if name in records:
            raise ValueError(f"The type {name} has two records.")
        records[name] = dict(zip(COLUMNS, map(float, numbers)))
    return records


def record_text(name: str, record: Mapping[str, float]) -> str:
    """A line of nmr_shft.abp or nmr_cupl.abp. ValueError if a number needs more decimals than its column has."""
    texts = []
    for column, decimals in COLUMNS.items():
        text = f"{record[column]:.{decimals}f}"
        if float(text) != record[column]:
            raise ValueError(f"{name} {column} has more than {decimals} decimals.")
        texts.append(f" {text:>{decimals + 6}}")
    return f"{name:<4}{''.join(texts)}\n"


def parse_types(text: str) -> dict[str, float]:
    """The masses of the atom types of nmrtype.txt by their names."""
    rows = [line.split() for line in text.splitlines()[1:]]
    return {row[0]: float(row[1]) for row in rows}


def types_text(heading: str, masses: Mapping[str, float]) -> str:
    """The text of nmrtype.txt."""
    return f"{heading}\n" + "".join(f"{name:<4}{mass:>10.5f}\n" for name, mass in masses.items())
