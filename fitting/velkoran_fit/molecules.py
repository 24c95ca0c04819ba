# SPDX-License-Identifier: MIT
"""All measured molecules of fitting/data, as one list.

What fitting/data/left_out.csv names is left out, each row with its reason.
"""
import csv
from dataclasses import dataclass, replace
from pathlib import Path

from rdkit import Chem

from .literature import read_literature
from .molecule_records import Coupling, Geometry, Molecule, Pair, Shift
from .nmr_rows import read_row, read_rows
from .recalled import read_recalled

__all__ = ["Coupling", "Geometry", "Molecule", "Pair", "Shift", "read_molecules"]


@dataclass(frozen=True)
class LeftOut:
    """A line of left_out.csv: a measured value, or a whole molecule."""

    name: str
    source: str
    quantity: str  # a nucleus, a kind of coupling, or "all"
    value: float | None  # every value of the quantity where none is given


def read_left_out(path: Path) -> tuple[LeftOut, ...]:
    with open(path, newline="", encoding="utf-8") as file:
        return tuple(
            LeftOut(row["name"], row["source"], row["quantity"], float(row["value"]) if row["value"] else None)
            for row in csv.DictReader(file)
        )


def is_left_out(left_out: list[LeftOut], quantity: str, values: tuple[float, ...]) -> bool:
    return any(row.quantity == quantity and (row.value is None or row.value in values) for row in left_out)


def without_left_out(molecule: Molecule, left_out: tuple[LeftOut, ...]) -> Molecule:
    own = [row for row in left_out if (row.name, row.source) == (molecule.name, molecule.source)]
    if not own:
        return molecule
    return replace(
        molecule,
        shifts=tuple(shift for shift in molecule.shifts if not is_left_out(own, shift.nucleus, (shift.ppm,))),
        pairs=tuple(pair for pair in molecule.pairs if not is_left_out(own, pair.nucleus, pair.ppm)),
        couplings=tuple(one for one in molecule.couplings if not is_left_out(own, one.kind, (one.hertz,))),
    )


def with_known_keys(molecules: list[Molecule]) -> list[Molecule]:
    """Molecules of which only the structural formula is known get the InChIKey of the same one that has one."""
    keys: dict[str, str] = {}
    for molecule in molecules:
        if not molecule.key.startswith("SMILES="):
            keys.setdefault(Chem.CanonSmiles(molecule.smiles), molecule.key)
    return [replace(one, key=keys.get(one.key.removeprefix("SMILES="), one.key)) for one in molecules]


def read_molecules(folder: Path) -> list[Molecule]:
    """The molecules of a folder as fitting/data is, in the order of its files. Raises ValueError with the name of a
    molecule that can't be read, and OSError for a missing file."""
    left_out = read_left_out(folder / "left_out.csv")
    whole = {(row.name, row.source) for row in left_out if row.quantity == "all"}
    molecules = []
    for row in read_rows(folder / "nmr" / "fit.jsonl"):
        if (row["name"], row["source"]) not in whole:
            molecules.append(read_row(row))
    molecules += read_literature(folder / "literature")
    molecules += read_recalled(folder / "literature" / "recalled.csv")
    kept = [without_left_out(molecule, left_out) for molecule in with_known_keys(molecules)]
    return [molecule for molecule in kept if molecule.shifts or molecule.pairs or molecule.couplings]
