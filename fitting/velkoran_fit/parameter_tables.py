# SPDX-License-Identifier: MIT
"""Parameters of the types from and to the files of a parameter directory."""
from collections.abc import Mapping, Sequence
from pathlib import Path

import numpy as np
from velkoran_runs.parameter_files import (
    COLUMNS,
    COUPLING_FILE,
    COUPLING_ONLY,
    SHIELDING_FILE,
    TYPE_FILE,
    Record,
    parse_records,
    parse_types,
    record_text,
    types_text,
)

from .atom_types import AtomType
from .neighbourhoods import type_chains
from .parameter_space import Parameters
from .worker import FIELDS

HEADING = "Type  Mass     atom types of atom_types.csv"


def _read(folder: Path, name: str) -> str:
    return (folder / name).read_text(encoding="ascii")


def _parents(types: Sequence[AtomType]) -> tuple[int, ...]:
    """The row of each type's parent, -1 for an element."""
    row = {kind.name: i for i, kind in enumerate(types)}
    return tuple(row[kind.parent] if kind.parent else -1 for kind in types)


def _elements(types: Sequence[AtomType]) -> list[str]:
    """The name of the root of each type."""
    chains = type_chains(types)
    return [chains[kind.name][0] for kind in types]


def start_parameters(types: Sequence[AtomType], published: Path, coupling: bool) -> Parameters:
    """All types with the published numbers of their elements, for shielding or for coupling. Nuclear constants stand
    in the coupling file alone and serve both."""
    own = parse_records(_read(published, COUPLING_FILE if coupling else SHIELDING_FILE))
    nuclei = parse_records(_read(published, COUPLING_FILE))
    table = np.array(
        [
            [(nuclei if field in COUPLING_ONLY else own)[element][field] for field in FIELDS]
            for element in _elements(types)
        ]
    )
    return Parameters(tuple(kind.name for kind in types), _parents(types), table, {})


def read_parameters(types: Sequence[AtomType], published: Path, fitted: Path, coupling: bool) -> Parameters:
    """The parameters of a fitted directory; every number counts as the type's own."""
    start = start_parameters(types, published, coupling)
    records = parse_records(_read(fitted, COUPLING_FILE if coupling else SHIELDING_FILE))
    fields = [field for field in FIELDS if coupling or field not in COUPLING_ONLY]
    own = {(row, f): records[name][f] for row, name in enumerate(start.names) for f in fields}
    return start.with_own(own)


def _record(values: Mapping[str, float], coupling: bool) -> Record:
    """A record in the decimals of the file, without what a shielding file has no use of."""
    record = {}
    for column, decimals in COLUMNS.items():
        wanted = coupling or column not in COUPLING_ONLY
        record[column] = round(values[column], decimals) if wanted else 0.0
    return record


def _file_text(parameters: Parameters, elements: Sequence[str], capping: Mapping[str, Record], coupling: bool) -> str:
    table = parameters.table()
    lines = [
        record_text(name, _record(dict(zip(FIELDS, table[row].tolist())), coupling))
        for row, name in enumerate(parameters.names)
    ]
    lines += [
        record_text("-" + name, _record(capping["-" + element], coupling))
        for name, element in zip(parameters.names, elements, strict=True)
    ]
    return "".join(lines)


def fitted_files(
    types: Sequence[AtomType], shielding: Parameters, coupling: Parameters, published: Path
) -> dict[str, str]:
    """The texts of the three files of a parameter directory by name. Capping atoms keep the published numbers."""
    elements = _elements(types)
    masses = parse_types(_read(published, TYPE_FILE))
    texts = {TYPE_FILE: types_text(HEADING, {t.name: masses[e] for t, e in zip(types, elements, strict=True)})}
    for name, parameters, is_coupling in ((SHIELDING_FILE, shielding, False), (COUPLING_FILE, coupling, True)):
        capping = parse_records(_read(published, name))
        texts[name] = _file_text(parameters, elements, capping, is_coupling)
    return texts
