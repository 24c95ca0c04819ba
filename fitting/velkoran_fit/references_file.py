# SPDX-License-Identifier: MIT
"""references.json: all that turns computed shieldings to shifts, as JSON that other programs can evaluate.

    {"format": 1,
     "parameter_files": {"nmr_shft.abp": SHA-256, ...},
     "nuclei": {"13C": {
        "standard": "TMS", "zero": ppm, "slope": 0 or 1,
        "ranges": {type: [middle, reach]},
        "mean": ppm, "noise": variance, "families": {family: variance},
        "terms": {family: {text: [coefficient, variance]}},
        "uncertainty": {"novelties": [...], "widths": [...], "factors": {type: factor}, "rare": factor,
                        "without_physics": factor}}},
     "couplings": {kind: the same, with Hz in place of ppm and minus the constant in place of the shielding}}

To evaluate an atom: correction.py says how the deviation and the shift are formed, neighbourhoods.py how the names of
features, additive_model.py the sum and the novelty, uncertainty.py the width. A feature "n10:C4" is the text "C4" of
the family "n10". A family with variance 0 and its texts are absent.
"""
import hashlib
import json
from collections.abc import Iterable, Mapping
from dataclasses import dataclass
from pathlib import Path
from typing import Any

from .additive_model import AdditiveModel, Term
from .correction import Correction, NucleusCorrection, Range
from .neighbourhoods import TypeRow, type_chains
from .uncertainty import Uncertainty

FORMAT = 1
DIGITS = 6
STANDARDS = {
    "1H": "TMS",
    "13C": "TMS",
    "15N": "liquid NH3",
    "17O": "H2O",
    "19F": "CFCl3",
    "29Si": "TMS",
    "31P": "85 % H3PO4",
}


@dataclass(frozen=True)
class References:
    """The content of references.json."""

    shifts: Correction  # by nucleus
    couplings: Correction  # by kind, and "other"
    parameter_files: Mapping[str, str]  # name to SHA-256


def hashes(paths: Iterable[Path]) -> dict[str, str]:
    """SHA-256 of the files by name. OSError if one can't be read."""
    return {path.name: hashlib.sha256(path.read_bytes()).hexdigest() for path in sorted(paths)}


def write_references(path: Path, references: References) -> None:
    """Writes the file, the same bytes for the same content."""
    content = {
        "format": FORMAT,
        "parameter_files": dict(references.parameter_files),
        "nuclei": {name: _nucleus_record(name, own) for name, own in references.shifts.nuclei.items()},
        "couplings": {name: _nucleus_record(name, own) for name, own in references.couplings.nuclei.items()},
    }
    path.write_text(json_text(content), encoding="utf-8")


def read_references(path: Path, types: Iterable[TypeRow]) -> References:
    """Reads the file, with the table of atom types that lies beside it. ValueError if its format isn't known."""
    content = json.loads(path.read_text(encoding="utf-8"))
    if content.get("format") != FORMAT:
        raise ValueError(f"{path} has format {content.get('format')}, not {FORMAT}")
    chains = type_chains(types)
    shifts, couplings = (
        Correction({name: _nucleus(record) for name, record in content[part].items()}, chains)
        for part in ("nuclei", "couplings")
    )
    return References(shifts, couplings, content["parameter_files"])


def json_text(content: Mapping[str, Any]) -> str:
    """JSON with sorted names, broken into lines behind the records: the same bytes for the same content."""
    return json.dumps(content, sort_keys=True, separators=(",", ":")).replace('},"', '},\n"') + "\n"


def _rounded(value: float) -> float:
    return float(f"{value:.{DIGITS}g}")


def _nucleus_record(nucleus: str, own: NucleusCorrection) -> dict[str, Any]:
    terms: dict[str, dict[str, list[float]]] = {}
    for name, term in own.model.terms.items():
        family, _, text = name.partition(":")
        if own.model.families[family] > 0.0:
            terms.setdefault(family, {})[text] = [_rounded(term.coefficient), _rounded(term.variance)]
    return {
        "standard": STANDARDS.get(nucleus, ""),
        "zero": _rounded(own.zero),
        "slope": own.slope,
        "ranges": {name: [_rounded(one.middle), _rounded(one.reach)] for name, one in own.ranges.items()},
        "mean": _rounded(own.model.mean),
        "noise": _rounded(own.model.noise),
        "families": {name: _rounded(scale) for name, scale in own.model.families.items() if scale > 0.0},
        "terms": terms,
        "uncertainty": _uncertainty_record(own.uncertainty),
    }


def _uncertainty_record(table: Uncertainty) -> dict[str, Any]:
    return {
        "novelties": [_rounded(value) for value in table.novelties],
        "widths": [_rounded(value) for value in table.widths],
        "factors": {name: _rounded(factor) for name, factor in table.factors.items()},
        "rare": _rounded(table.rare),
        "without_physics": _rounded(table.without_physics),
    }


def _uncertainty(record: Mapping[str, Any]) -> Uncertainty:
    return Uncertainty(
        tuple(record["novelties"]),
        tuple(record["widths"]),
        record["factors"],
        record["rare"],
        record["without_physics"],
    )


def _nucleus(record: Mapping[str, Any]) -> NucleusCorrection:
    terms = {
        f"{family}:{text}": Term(coefficient, variance)
        for family, texts in record["terms"].items()
        for text, (coefficient, variance) in texts.items()
    }
    model = AdditiveModel(record["mean"], record["noise"], record["families"], terms)
    ranges = {name: Range(middle, reach) for name, (middle, reach) in record["ranges"].items()}
    return NucleusCorrection(record["zero"], record["slope"], ranges, model, _uncertainty(record["uncertainty"]))
