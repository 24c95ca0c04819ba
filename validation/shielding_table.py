# SPDX-License-Identifier: MIT
"""The section of shieldings of docs/validation.md: measured differences from a reference compound of each element
beside computed ones."""

# Nucleus: the element's name and its reference compound.
REFERENCES = {
    "1H": ("Hydrogen", "CH4"),
    "13C": ("Carbon", "CH4"),
    "15N": ("Nitrogen", "NH3"),
    "17O": ("Oxygen", "H2O"),
    "19F": ("Fluorine", "CH3F"),
    "29Si": ("Silicon", "SiH4"),
    "31P": ("Phosphorus", "PH3"),
    "33S": ("Sulfur", "H2S"),
}

HEAD = """## Shielding

TNDO/2 with `ComputeThreeCenterTerms = yes`, in ppm. The inner shells aren't computed, which for carbon are about 200
ppm, so that absolute values can't be compared. They are nearly the same in all compounds of an element: what is
compared is the difference of the shielding from that of a reference compound, positive if the nucleus is shielded
more than there. Of two measurements that of the absolute shielding in the gas goes before that of a shift. A measured
shift counts from the shift of the reference compound on its own scale; where that isn't measured, it follows from the
absolute shieldings of the reference and of the zero of the scale. The deviation is computed less measured, equivalent
atoms are averaged. Many of the shifts are those of liquids and solutions, which can be some ppm off the gas, for
nitrogen and oxygen some tens.
"""


def experiment_differences(rows):
    """Per nucleus the row of the reference, and (row, difference) of the others; a site comes once."""
    result = {}
    for nucleus, (_, reference) in REFERENCES.items():
        own = [row for row in rows if row["nucleus"] == nucleus]
        shieldings = {
            (row["molecule"], row["atoms"]): float(row["value"]) for row in own if row["quantity"] == "shielding"
        }
        of_molecule = {molecule: value for (molecule, _), value in shieldings.items()}
        shifts = {
            row["zero"]: float(row["value"])
            for row in own
            if row["quantity"] == "shift" and row["molecule"] == reference
        }
        differences = []
        for row in own:
            value = float(row["value"])
            if row["molecule"] == reference:
                continue
            if row["quantity"] == "shielding":
                differences.append((row, value - of_molecule[reference]))
            elif (row["molecule"], row["atoms"]) not in shieldings:
                zero = row["zero"]
                start = shifts[zero] if zero in shifts else of_molecule[zero] - of_molecule[reference]
                differences.append((row, start - value))
        reference_row = next(row for row in own if row["molecule"] == reference and row["quantity"] == "shielding")
        result[nucleus] = (reference_row, differences)
    return result


def correlation(pairs):
    count = len(pairs)
    if count < 3:
        return "-"
    means = [sum(pair[k] for pair in pairs) / count for k in (0, 1)]
    product, first, second = (
        sum((pair[a] - means[a]) * (pair[b] - means[b]) for pair in pairs) for a, b in ((0, 1), (0, 0), (1, 1))
    )
    return f"{product / (first * second) ** 0.5:.2f}"


def element_table(run, nucleus, reference, differences):
    """The rows of an element's table, (measured, computed, molecule) of those that converge, and the reference's."""
    base = run(reference).mean_shielding(reference["atoms"])
    table = []
    values = []
    for row, measured in differences:
        result = run(row)
        notes = [row["note"]] if row["note"] else []
        text, deviation = "-", "-"
        if not result.converged:
            notes.append("the field doesn't converge")
        elif not result.magnetic:
            notes.append("the response doesn't converge")
        else:
            computed = result.mean_shielding(row["atoms"]) - base
            values.append((measured, computed, row["molecule"]))
            text, deviation = f"{computed:+.1f}", f"{computed - measured:+.1f}"
        if result.accelerated:
            notes.append("with `SCFAccelerateConvergence`")
        table.append(
            f"| {row['molecule']} | {row['site']} | {measured:+.1f} | {text} | {deviation} | "
            f"{row['quantity']} | {row['geometry']} | {row['source']} | {'; '.join(notes)} |"
        )
    return table, values, base


def shielding_section(run, rows, lines):
    """run gives the result of the molecule of a row."""
    summary = []
    tables = []
    for nucleus, (reference, differences) in experiment_differences(rows).items():
        name, molecule = REFERENCES[nucleus]
        table, values, base = element_table(run, nucleus, reference, differences)
        deviations = [(computed - measured, other) for measured, computed, other in values]
        numbers = [deviation for deviation, _ in deviations]
        largest, worst = max(deviations, key=lambda item: abs(item[0]))
        spread = max(measured for measured, _, _ in values) - min(measured for measured, _, _ in values)
        summary.append(
            f"| {name} | {molecule} | {float(reference['value']):.1f} | {base:.1f} | {len(numbers)} | "
            f"{spread:.1f} | {sum(numbers) / len(numbers):+.1f} | "
            f"{sum(map(abs, numbers)) / len(numbers):.1f} | {largest:+.1f} | {worst} | "
            f"{correlation(values)} |"
        )
        tables += (
            [
                f"### {name}, from {molecule}",
                "",
                "| Molecule | Atom | Measured | Computed | Deviation | Measured as | Geometry | Source | Note |",
                "|---|---|---:|---:|---:|---|---|---|---|",
            ]
            + table
            + [""]
        )
    lines += (
        HEAD.splitlines()
        + [
            "",
            "| Element | Reference | Its shielding | Computed | Values | Range measured | "
            "Mean deviation | Mean absolute | Largest | Molecule | Correlation |",
            "|---|---|---:|---:|---:|---:|---:|---:|---:|---|---:|",
        ]
        + summary
        + [""]
    )
    lines += MEANING.splitlines() + [""] + tables


MEANING = """\
These numbers are a report, nothing was fitted to them. The method sorts carbon into saturated, unsaturated and
carbonyl, and hydrogen into the same kinds, but with about half of the range measured for carbon; differences within a
kind are hardly predicted. Its trends with substitution are too weak or wrong: a methyl group or a fluorine atom,
which deshields a carbon atom by 10 to 80 ppm, shields it slightly here or changes nothing, and for nitrogen and
fluorine most computed differences are above the measured ones by 50 to 300 ppm. Hydrogen bound to oxygen, nitrogen,
fluorine, chlorine or sulfur comes out 2 to 5 ppm too little shielded.

The shieldings of the references show a part of the reason. From nitrogen to fluorine they are negative where the
measured ones are several hundred ppm: the inner shells explain about half of that, the rest is a paramagnetic term
that is too large already in the reference, and then varies too little. From silicon on it is the other way round:
orbitals without nodes have a mean inverse cube of the radius many times too small, the paramagnetic term nearly
vanishes, and the differences between compounds with it. Shieldings of these elements predict nothing.

Where the wavefunction is nearly unstable against a magnetic field, as in ozone and for the oxygen of dimethyl
sulfoxide and of phosphoryl chloride, the response converges to deviations of about 2000 ppm, and these make the mean
of oxygen. For sulfur dioxide it doesn't converge at all; the log shows it as with couplings.
"""
