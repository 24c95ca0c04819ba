#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes docs/validation.md from runs of the program: published results of the methods beside those computed here,
measured couplings and shieldings beside computed ones, and linear molecules in many orientations.

Usage: make_validation.py [--check] [--program PATH]
--check compares with the committed page instead, up to one unit of the last digit of a number. Either way the exit
status is 1 if a published result isn't met.
"""
import argparse
import csv
import json
import pathlib
import re
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "python"))
from molecule_runs import CONVERGENCE, ROOT, Runner
from shielding_table import shielding_section

HERE = pathlib.Path(__file__).resolve().parent
MEASURED = ROOT / "fitting" / "data" / "literature"  # experiment_*.csv and geometries.json, which the fit takes too
PAGE = ROOT / "docs" / "validation.md"

ISOTOPE_G = {"14N": 0.4037610, "15N": -0.5663777}  # for a measurement of another isotope than the parameters have

# Directions of a molecular axis: along the axes, in a plane of them, and in general.
DIRECTIONS = [
    (1, 0, 0),
    (0, 1, 0),
    (0, 0, 1),
    (0.6, 0.8, 0),
    (0.8, 0, -0.6),
    (0, 0.28, 0.96),
    (0.36, 0.48, 0.8),
    (-0.48, 0.6, 0.64),
    (2 / 3, -2 / 3, 1 / 3),
    (2 / 7, 3 / 7, 6 / 7),
    (-6 / 11, -2 / 11, 9 / 11),
    (1 / 9, 4 / 9, -8 / 9),
]
HYDROXIDE = {
    "charge": -1,
    "elements": ["O", "H"],
    "bonds": [[1, 2, 1]],
    "geometries": [{"kind": "experimental", "source": "r_e", "xyz": [[0, 0, 0], [0, 0, 0.964]]}],
}


def geometry_of(molecule, kind):
    return next(g for g in molecule["geometries"] if g["kind"] == kind)


def read_table(file_path):
    with open(file_path, newline="") as file:
        return list(csv.DictReader(file))


def computed_result(row, result):
    if row["quantity"] == "total_energy":
        return result.energy
    if row["quantity"] == "dipole":
        return result.dipole
    return result.mean_coupling(row["pairs"])


def why_not_met(runner, molecule, row, result):
    """What the runs say about a published result that isn't met."""
    if not result.converged:
        return "the field doesn't converge."
    if not result.responses and row["pairs"]:
        return "the response doesn't converge."
    others = [
        f"{computed_result(row, runner.run(molecule, geometry['xyz'], row['method'])):.2f} with "
        f"the geometry {geometry['source']}"
        for geometry in molecule["geometries"]
        if geometry["kind"] != row["geometry"]
    ]
    if others:
        return "the geometry may differ, the result is " + ", ".join(others) + "."
    return "no reason is known."


def literature_section(runner, molecules, lines):
    """The table of published results; the rows that aren't met."""
    ammonia = molecules["NH3"]
    tetrahedral = runner.run(ammonia, geometry_of(ammonia, "standard_model")["xyz"], "TNDO/1").dipole
    lines += [
        "## Published results",
        "",
        "TNDO/1 has the parameters of CNDO/2, TNDO/2 those of INDO. The geometries are the standard ones of "
        "Pople and Gordon (1967),",
        "which the published couplings belong to, and experimental ones for "
        "diatomics that have no standard and for ammonia,",
        f"whose published dipole moment isn't that of a tetrahedral angle ({tetrahedral:.2f} Debye here). A "
        "value quoted from memory of the print",
        "is marked *.",
        "",
        "| Molecule | Quantity | Method | Geometry | Published | Computed | Difference | Tolerance | Met " "| Source |",
        "|---|---|---|---|---:|---:|---:|---:|---|---|",
    ]
    rows = read_table(HERE / "literature.csv")
    failed = []
    reasons = []
    for row in rows:
        molecule = molecules[row["molecule"]]
        result = runner.run(molecule, geometry_of(molecule, row["geometry"])["xyz"], row["method"])
        digits = 4 if row["quantity"] == "total_energy" else 2
        computed = computed_result(row, result)
        difference = computed - float(row["published"])
        met = result.converged and (result.responses or not row["pairs"]) and abs(difference) <= float(row["tolerance"])
        quantity = row["quantity"].replace("_", " ")
        if not met:
            failed.append(row)
            reasons.append(
                f"Not met: {row['molecule']}, {quantity}, {row['method']}: "
                f"{why_not_met(runner, molecule, row, result)}"
            )
        mark = "" if row["confidence"] == "published" else "*"
        lines.append(
            f"| {row['molecule']} | {quantity}, {row['unit']} | {row['method']} | "
            f"{row['geometry'].replace('_model', '')} | {row['published']}{mark} | {computed:.{digits}f} | "
            f"{difference:+.{digits}f} | {row['tolerance']} | {'yes' if met else '**no**'} | "
            f"{row['source']} |"
        )
    lines += ["", f"{len(rows) - len(failed)} of {len(rows)} are met.", ""]
    for reason in reasons:
        lines += [reason, ""]
    return failed


def element_of(nucleus):
    return nucleus.lstrip("0123456789")


def kind_of(row):
    return f"{row['bonds']}J({element_of(row['nucleus1'])}{element_of(row['nucleus2'])})"


def computed_coupling(row, result):
    computed = result.mean_coupling(row["pairs"])
    if "14N" in (row["nucleus1"], row["nucleus2"]):
        computed *= ISOTOPE_G["14N"] / ISOTOPE_G["15N"]
    return computed


def measured_section(runner, molecules, lines):
    """The table of measured couplings and its summary by kind."""
    deviations = {}
    table = []
    for row in read_table(MEASURED / "experiment_coupling.csv"):
        molecule = molecules[row["molecule"]]
        result = runner.run(molecule, geometry_of(molecule, row["geometry"])["xyz"], "TNDO/2")
        notes = [row["note"]] if row["note"] else []
        text, difference = "-", "-"
        if not result.converged:
            notes.append("the field doesn't converge")
        elif not result.responses:
            notes.append("the response doesn't converge")
        else:
            computed = computed_coupling(row, result)
            deviation = computed - float(row["measured"])
            deviations.setdefault(kind_of(row), []).append((deviation, row["molecule"]))
            text, difference = f"{computed:.1f}", f"{deviation:+.1f}"
        if result.accelerated:
            notes.append("with `SCFAccelerateConvergence`")
        table.append(
            f"| {row['molecule']} | {row['label']} | {row['nucleus1']} {row['nucleus2']} | "
            f"{row['measured']} | {text} | {difference} | {row['geometry']} | {row['source']} | "
            f"{'; '.join(notes)} |"
        )
    lines += [
        "## Measured couplings",
        "",
        "TNDO/2, in Hz. The deviation is computed less measured; couplings of equivalent pairs are averaged. "
        "Where no experimental",
        "geometry is at hand, one optimised by another method is used. All " "conformations are single ones.",
        "",
        "| Kind | Couplings | Mean deviation | Mean absolute | Largest | Molecule |",
        "|---|---:|---:|---:|---:|---|",
    ]
    for kind, values in deviations.items():
        numbers = [value for value, _ in values]
        largest, name = max(values, key=lambda item: abs(item[0]))
        lines.append(
            f"| {kind} | {len(numbers)} | {sum(numbers) / len(numbers):+.1f} | "
            f"{sum(map(abs, numbers)) / len(numbers):.1f} | {largest:+.1f} | {name} |"
        )
    lines += (
        [
            "",
            "| Molecule | Coupling | Nuclei | Measured | Computed | Deviation | Geometry | Source | Note |",
            "|---|---|---|---:|---:|---:|---|---|---|",
        ]
        + table
        + [""]
    )


def run_shielding(runner, molecules, row):
    molecule = molecules[row["molecule"]]
    return runner.run(molecule, geometry_of(molecule, row["geometry"])["xyz"], "TNDO/2", "shielding")


LIMITS = """## What the couplings leave out

Only the Fermi contact term is computed. The orbital and the spin-dipolar term are small for couplings between hydrogen
atoms and between carbon and hydrogen; between carbon atoms of multiple bonds they are some hertz. For fluorine they are
as large as the contact term: couplings of 19F are far off, and that of hydrogen fluoride has the wrong sign. The same
holds, less strongly, for nitrogen and oxygen with lone pairs or multiple bonds. The densities at the nucleus are known
well for hydrogen and carbon only ([published parameters](../parameters/published/README.md)), and those of other
elements scale all their couplings. From sodium on there is next to no one-centre exchange here, and couplings of these
elements show trends at best; one-bond couplings of phosphines have the wrong sign.

What is left is an error of the approximation itself, as published for it: geminal couplings between hydrogen atoms come
out too positive, vicinal ones over 180 degrees too large, 1J(CC) too large and 1J(CH) too small.

The response needs a wavefunction that is stable against unpairing of its electrons. Where it isn't, as in nitromethane
and fluorine, or nearly isn't, as in phosphoryl fluoride and chlorine fluoride, the response doesn't converge, and what
the program then prints are large numbers without a meaning. The log shows it: the differences of a perturbed atom go on
up to the limit of iterations. A field that doesn't converge, as that of nitrous oxide, does with
`SCFAccelerateConvergence = yes`.
"""


def linear_section(runner, molecules, lines):
    """Molecules whose highest occupied levels are a degenerate pair."""
    lines += [
        "## Linear molecules",
        "",
        "Two levels of the same energy at the top of the occupied ones, whose order rounding decides, must not "
        "make a result depend on",
        "the orientation. Each molecule was computed with its axis in "
        f"{len(DIRECTIONS)} directions. Energies in Hartree, dipole moments in",
        "Debye, couplings in Hz; the spread is that of the energy over the directions, in 1e-9 Hartree.",
        "",
        "| Molecule | Method | Field converged | Iterations | Energy | Spread | Dipole | Response converged | J " "|",
        "|---|---|---|---:|---:|---:|---:|---|---:|",
    ]
    for name in ("HCl", "Cl2", "OH-", "HF", "ClF", "F2"):
        molecule = HYDROXIDE if name == "OH-" else molecules[name]
        ends = geometry_of(molecule, "experimental")["xyz"]
        length = ends[1][2] - ends[0][2]
        for method in ("TNDO/1", "TNDO/2"):
            results = [
                runner.run(molecule, [[0.0] * 3, [length * x for x in direction]], method) for direction in DIRECTIONS
            ]
            energies = [result.energy for result in results]
            counts = sorted({result.iterations for result in results})
            iterations = f"{counts[0]}" if len(counts) == 1 else f"{counts[0]} to {counts[-1]}"
            spread = max(energies) - min(energies)
            converged = sum(result.converged for result in results)
            responses = sum(result.responses for result in results)
            couplings = [result.couplings[0][1] for result in results]
            steady = responses == len(results) and max(couplings) - min(couplings) < 0.01
            lines.append(
                f"| {name} | {method} | {converged} of {len(results)} | "
                f"{iterations} | {energies[0]:.6f} | "
                f"{'below 20' if spread < 2e-8 else f'{spread * 1e9:.0f}'} | {results[0].dipole:.2f} | "
                f"{responses} of {len(results)} | {f'{couplings[0]:.2f}' if steady else '-'} |"
            )
    lines.append("")


def make_page(program):
    """The page, and the published results that aren't met."""
    with open(MEASURED / "geometries.json") as file:
        molecules = json.load(file)["molecules"]
    lines = [
        "# Validation",
        "",
        "What the program gives beside published results of the same methods, and beside experiment. Every number "
        "of this page comes",
        f"from a run with the [published parameters](../parameters/published/README.md) and "
        f"`SCFConvergenceLimit = {CONVERGENCE}`; data and their",
        "sources are in " "[validation](../validation).",
        "",
    ]
    with tempfile.TemporaryDirectory() as folder:
        runner = Runner(program, folder)
        failed = literature_section(runner, molecules, lines)
        measured_section(runner, molecules, lines)
        lines += LIMITS.splitlines() + [""]
        shielding_section(
            lambda row: run_shielding(runner, molecules, row), read_table(MEASURED / "experiment_shielding.csv"), lines
        )
        linear_section(runner, molecules, lines)
    lines += ["## How this page is made", "", "    sh scripts/make_validation.sh"]
    return "\n".join(lines) + "\n", failed


NUMBER = re.compile(r"[-+]?\d+(?:\.\d+)?")


def same_but_for_rounding(a, b):
    """True if two lines differ at most by a unit of the last digit of their numbers."""
    if NUMBER.split(a) != NUMBER.split(b):
        return False
    for x, y in zip(NUMBER.findall(a), NUMBER.findall(b)):
        digits = [len(n.partition(".")[2]) for n in (x, y)]
        if x != y and (
            digits[0] != digits[1] or digits[0] == 0 or abs(float(x) - float(y)) > 1.01 * 10.0 ** -digits[0]
        ):
            return False
    return True


def compare(page, committed):
    """The first difference that isn't rounding, or None."""
    new, old = page.splitlines(), committed.splitlines()
    for number, (a, b) in enumerate(zip(new, old), 1):
        if not same_but_for_rounding(a, b):
            return f"line {number}:\n  now       {a}\n  committed {b}"
    return None if len(new) == len(old) else f"{len(new)} lines in place of {len(old)}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--program", default=str(ROOT / "build" / "release" / "velkoran"))
    arguments = parser.parse_args()
    page, failed = make_page(arguments.program)
    status = 0
    if arguments.check:
        difference = compare(page, PAGE.read_text())
        if difference:
            print(f"{PAGE.name} isn't what the program gives now, {difference}", file=sys.stderr)
            status = 1
    else:
        PAGE.parent.mkdir(exist_ok=True)
        PAGE.write_text(page)
    for row in failed:
        print(f"not met: {row['molecule']}, {row['quantity']}, {row['method']}", file=sys.stderr)
        status = 1
    return status


if __name__ == "__main__":
    sys.exit(main())
