# SPDX-License-Identifier: MIT
"""docs/accuracy.md and its pictures, made from the figures of docs/measured/accuracy.json."""
import csv
import json
import math
import textwrap
from collections.abc import Mapping, Sequence
from pathlib import Path
from typing import Any

from .plots import curve_plot, scatter_plot

GOALS = {  # mean absolute deviation: corrected, physics alone
    "13C": (2.8, 3.8),
    "1H on C": (0.22, 0.30),
    "19F": (10.0, 15.0),
    "15N": (14.0, 18.0),
    "17O": (30.0, None),
    "31P": (12.0, None),
    "1J(CH)": (3.5, None),
    "1J(CC)": (5.0, None),
    "2J(HH)": (1.5, None),
    "3J(HH)": (0.6, None),
}
OPPONENTS = ("type mean", "environments", "additive")
CURVES = {
    "environments": "like environments",
    "additive": "additive model",
    "corrected": "with physics",
}
LEAST_OF_PLOT = 15  # values
TYPES_LISTED = 12  # of each column: the worst
TEXTS = ("largest deviation", "reason")
LINE = 120
FLAT = 0.04  # fall of the deviation for twice the data that counts as none

Results = Mapping[str, Any]


def unit_of(column: str) -> str:
    """ "Hz" for a kind of coupling, else "ppm"."""
    return "Hz" if "J(" in column else "ppm"


def place_of(column: str) -> tuple[int, str]:
    """Sorts columns: those with a goal first, as the goals stand."""
    return (list(GOALS).index(column) if column in GOALS else len(GOALS), column)


def file_name(column: str, kind: str) -> str:
    """Of a picture: "accuracy_1H_on_C.svg", "accuracy_1H_on_C_curve.svg"."""
    word = "".join(letter if letter.isalnum() else "_" for letter in column).strip("_")
    return f"accuracy_{word}{kind}.svg"


def figure(value: float | None, digits: int = 2) -> str:
    """A number to so many significant digits, or a dash."""
    if value is None:
        return "-"
    rounded = float(f"{value:.{digits}g}")
    if rounded == 0.0:
        return "0"
    decimals = max(0, digits - 1 - math.floor(math.log10(abs(rounded))))
    return f"{rounded:.{decimals}f}"


def table(heading: Sequence[str], rows: Sequence[Sequence[str]]) -> str:
    """A table of Markdown; the columns of figures to the right, the first and those of texts to the left."""
    lines = [heading, ["---", *("---" if name in TEXTS else "---:" for name in heading[1:])], *rows]
    return "".join("| " + " | ".join(line) + " |\n" for line in lines)


def goals_table(columns: Results) -> str:
    """Goals, our figures and those of the opponents; the best of each row is bold."""
    rows = []
    for name, results in columns.items():
        means = {method: results["methods"][method].get("mean") for method in (*OPPONENTS, "physics", "corrected")}
        known = [value for value in means.values() if value is not None]
        cells = {
            method: f"**{figure(value)}**" if known and value == min(known) else figure(value)
            for method, value in means.items()
        }
        goal = GOALS.get(name, (None, None))
        aim = figure(goal[0]) + (f" ({figure(goal[1])})" if goal[1] is not None else "")
        count = str(results["methods"]["corrected"]["values"])
        order = ("corrected", "physics", *OPPONENTS)
        rows.append([f"{name} / {unit_of(name)}", count, aim, *(cells[method] for method in order)])
    heading = ("", "values", "goal", "physics and correction", "physics alone", "type mean", "environments", "additive")
    return table(heading, rows)


def spread_table(columns: Results) -> str:
    """Mean, median and root mean square deviation, and the calibration."""
    rows = []
    for name, results in columns.items():
        own, check = results["methods"]["corrected"], results["calibration"]
        bins = ", ".join(f"{100 * one['share']:.0f}" for one in check["bins"] if one["share"] is not None)
        shares = [check["share"], check["rare types"]["share"]]
        percent = ["-" if share is None else f"{100 * share:.0f}" for share in shares]
        sizes = [figure(own.get(kind)) for kind in ("mean", "median", "root mean square")]
        rows.append([f"{name} / {unit_of(name)}", *sizes, percent[0], bins, percent[1]])
    heading = ("", "mean", "median", "root mean square", "within / %", "small to large / %", "rare types / %")
    return table(heading, rows)


def kinds_table(columns: Results) -> str:
    """Deviations in made and in stored geometries."""
    rows = []
    for name, results in columns.items():
        if "stored geometries" in results:
            kinds = (results["methods"], results["stored geometries"])
            cells = [figure(kind[method].get("mean")) for method in ("corrected", "physics") for kind in kinds]
            rows.append([f"{name} / {unit_of(name)}", *cells])
    heading = ("", "made", "stored", "physics alone, made", "physics alone, stored")
    return table(heading, rows)


def learning_sentence(name: str, curve: Sequence[Results]) -> str:
    """What the last doubling of the data brought, and what that says."""
    before, last = curve[-2]["corrected"], curve[-1]["corrected"]
    fall = (before - last) / before
    said = (
        "a better model or better data would help more than more data" if fall < FLAT else "more data would still help"
    )
    change = f"{abs(100 * fall):.0f} % {'smaller' if fall >= 0 else 'larger'}"
    return (
        f"{name}: with {curve[-2]['molecules']} molecules {figure(before, 3)}, with {curve[-1]['molecules']} "
        f"{figure(last, 3)} {unit_of(name)}, {change}; {said}."
    )


def types_table(results: Results) -> str:
    """The types with the largest deviations."""
    worst = sorted(results["types"], key=lambda row: (-(row["corrected"] or 0.0), row["type"]))[:TYPES_LISTED]
    rows = [
        [f"`{row['type']}`", str(row["values"]), *(figure(row[key]) for key in ("corrected", "bias", "physics"))]
        for row in worst
    ]
    return table(("type", "values", "physics and correction", "its mean", "physics alone"), rows)


def worst_table(worst: Sequence[Results], reasons: Mapping[str, str]) -> str:
    """The worst molecules, each with the reason that is known for it."""
    rows = []
    for one in worst:
        largest = one["largest"]
        value = f"{largest['column']}: {largest['measured']:g}, predicted {largest['predicted']:g}"
        rows.append([one["name"], f"{one['times the mean']:.1f}", value, reasons.get(one["key"], "not looked at yet")])
    return table(("molecule", "times the mean", "largest deviation", "reason"), rows)


def read_reasons(path: Path) -> dict[str, str]:
    """By key, from a table with the columns key and reason. OSError if there is no such file."""
    with open(path, encoding="utf-8", newline="") as stream:
        return {row["key"]: row["reason"] for row in csv.DictReader(stream)}


def pictures(columns: Results) -> dict[str, str]:
    """The SVG texts by file name."""
    drawn = {}
    for name, results in columns.items():
        own = results["methods"]["corrected"]
        if len(results["points"]) >= LEAST_OF_PLOT:
            note = f"{own['values']} values, mean deviation {figure(own['mean'])} {unit_of(name)}"
            title = f"{name}, cross-validated"
            drawn[file_name(name, "")] = scatter_plot(results["points"], title, unit_of(name), note)
        if "learning" in results:
            lines = {
                said: [(point["molecules"], point[method]) for point in results["learning"]]
                for method, said in CURVES.items()
                if all(point[method] is not None for point in results["learning"])
            }
            upwards = f"mean absolute deviation / {unit_of(name)}"
            title = f"{name}: what more molecules bring"
            drawn[file_name(name, "_curve")] = curve_plot(lines, title, "molecules learnt from", upwards)
    return drawn


def page(results: Results, reasons: Mapping[str, str]) -> str:
    """The text of docs/accuracy.md."""
    columns = {name: results["columns"][name] for name in sorted(results["columns"], key=place_of)}
    drawn = pictures(columns)
    shown = [name for name in columns if file_name(name, "") in drawn]
    curves = [name for name in columns if "learning" in columns[name]]
    parts = [
        "# How accurate the shifts and couplings are\n",
        f"{results['about']}\n",
        "Everything here is cross-validated by molecule: each value is predicted by parameters, corrections and tables "
        "that were learnt without any value of its molecule. Deviations are mean absolute ones, of the molecules whose "
        "run succeeded.\n",
        "## Beside the goals, and beside guesses without physics\n",
        goals_table(columns),
        "In brackets the goal of the physics alone. The opponents know nothing of quantum chemistry: the mean of the "
        "atom type; the mean of the same environment, up to four bonds (for couplings over three bonds a curve by the "
        "dihedral angle); and an additive model on the very features that the correction uses. The best is bold.\n",
        "## Spread and uncertainty\n",
        spread_table(columns),
        "Each prediction has a standard uncertainty, which 68 % of the deviations should keep within: of all values, "
        "of those with small to those with large uncertainties, and of types with few values.\n",
        "## Made and stored geometries\n",
        kinds_table(columns),
        "Made ones come from the structural formula, as a user without a structure has them; stored ones came with the "
        "data, from density functional or tight-binding calculations.\n",
        *_section("## Computed against measured\n", [_picture(name, "") for name in shown]),
        *_section("## Is more data or a better model the bottleneck?\n", _curve_parts(columns, curves)),
        "## Deviation by type\n",
        *(f"{name}, the types with the largest deviations:\n\n{types_table(columns[name])}" for name in shown),
        "## The ten worst molecules\n",
        "In units of the mean deviation of the column, of molecules with at least three values.\n",
        worst_table(results["worst"], reasons),
        *_section("## Runs that fail\n", results.get("convergence", [])),
        *_section("## What can't be predicted\n", results.get("limits", [])),
        "## How these figures were made\n",
        f"    {results['command']}\n",
        "It writes `docs/measured/accuracy.json`, from which this page and its pictures are made.\n",
    ]
    return "\n".join(_wrapped(part) + "\n" for part in parts)


def write_page(docs: Path) -> None:
    """Makes docs/accuracy.md and docs/pictures/accuracy_*.svg anew from docs/measured/accuracy.json and the reasons of
    docs/measured/worst_molecules.csv. OSError if one can't be read or written."""
    results = json.loads((docs / "measured" / "accuracy.json").read_text(encoding="utf-8"))
    reasons = read_reasons(docs / "measured" / "worst_molecules.csv")
    for old in sorted((docs / "pictures").glob("accuracy_*.svg")):
        old.unlink()
    for name, text in pictures(results["columns"]).items():
        (docs / "pictures" / name).write_text(text, encoding="utf-8")
    (docs / "accuracy.md").write_text(page(results, reasons), encoding="utf-8")


def _wrapped(part: str) -> str:
    """Lines of text broken at the width of the documents; tables, pictures and headings as they are."""
    lines = []
    for line in part.rstrip("\n").split("\n"):
        whole = line.startswith(("|", "!", "#", "    "))
        indent = "  " if line.startswith("- ") else ""
        lines += [line] if whole else textwrap.wrap(line, LINE, subsequent_indent=indent) or [""]
    return "\n".join(lines)


def _section(heading: str, parts: Sequence[str]) -> list[str]:
    return [heading, *parts] if parts else []


def _picture(name: str, kind: str) -> str:
    return f"![{name}](pictures/{file_name(name, kind)})"


def _curve_parts(columns: Results, names: Sequence[str]) -> list[str]:
    if not names:
        return []
    said = [f"- {learning_sentence(name, columns[name]['learning'])}" for name in names]
    return ["\n".join(said), *(_picture(name, "_curve") for name in names)]
