#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""compare_spectrum.py CASEDIR ACTUAL_OUT [ACTUAL_LOG]

Compares an actual nmrspect.out (and log) with CASEDIR/expected.out and
CASEDIR/expected.log; prints the first difference; exit 0 equal, 1 different.

Exact: ERRMSG lines (any path that ends in nmrspect.in stands for <INPUT>; the
exponent of %e may have two or three digits), fixed lines, counts,
degeneracies, layout of every line.  Frequencies within 0.002 Hz, intensities
within 0.002 or 2e-5 relative (the last unit of the float32 is allowed on top
for very large values).  Line endings don't matter.

With a file `fuzzy` in CASEDIR the list is compared loosely: no counts, no
degeneracies; the intensity summed in windows must agree (see compare_loosely).
With CASEDIR/expected_second.* either pair of files passes: the degeneracy of a
line from two coinciding levels depends on whether the eigensolver mixes them.
ACTUAL_LOG `-`, or a path that doesn't exist, stands for an empty log.
"""
import pathlib
import re
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[3] / "python"))
from velkoran_runs.program import RunKind
from velkoran_runs.results import SpectrumLine, parse_spectrum_result, refusal_of
from velkoran_runs.texts import read_text_if_there

LINE = re.compile(r"^-?\d+\.\d{3} -?\d+\.\d{3} -?\d+ 0$")
ROW = re.compile(r"^ +\d+ +-?\d+\.\d{4} +-?\d+\.\d{4} +-?\d+$")
TABLE_HEAD = "        Line        Frequncy(in Hz)      Intensity       Degeneracy"


class Difference(Exception):
    """The first difference that was found."""


def read(path):
    """A text with the ends of lines of this system; an empty one where there is no file."""
    return (read_text_if_there(path) or "").replace("\r\n", "\n")


def with_short_exponents(text):
    return re.sub(r"(\de[+-])0*(\d\d)(?!\d)", r"\1\2", text)


def differ_in(what, expected, actual):
    raise Difference(f"{what}:\n  expected {expected}\n  actual   {actual}")


def same_line(expected, actual):
    """The degeneracies aren't looked at."""
    frequency_error = abs(expected.frequency - actual.frequency)
    intensity_error = abs(expected.intensity - actual.intensity)
    return frequency_error <= 0.002 + 1.3e-7 * abs(expected.frequency) and intensity_error <= max(
        0.002, 2e-5 * abs(expected.intensity)
    )


def compare_loosely(expected, actual):
    """The sum of intensities, and the intensity within 0.01 Hz of every line above 1 % of the largest expected one."""
    sums = [sum(line.intensity for line in lines) for lines in (expected, actual)]
    if abs(sums[0] - sums[1]) > max(0.01, 1e-3 * abs(sums[0])):
        raise Difference(f".out (fuzzy): total intensity {sums[1]:.4f}, expected {sums[0]:.4f}")
    largest = max((line.intensity for line in expected), default=0.0)
    for name, lines, others in (("expected", expected, actual), ("actual", actual, expected)):
        for line in lines if expected else []:
            if line.intensity < 0.01 * largest:
                continue
            near = intensity_near(lines, line.frequency, 0.01)
            low = intensity_near(others, line.frequency, 0.006) * (1 - 1e-2) - 0.02
            high = intensity_near(others, line.frequency, 0.015) * (1 + 1e-2) + 0.02
            if not low <= near <= high:
                raise Difference(
                    f".out (fuzzy): {name} line at {line.frequency:.3f} has {near:.4f} nearby, "
                    f"the other side {low:.4f}..{high:.4f}"
                )


def intensity_near(lines, frequency, width):
    return sum(line.intensity for line in lines if abs(line.frequency - frequency) <= width)


def compare_refusals(expected, actual):
    """Two output files, of which the expected one is a refusal."""
    wanted, found = expected.split("\n"), actual.split("\n")
    if refusal_of(actual) is None:
        raise Difference(f".out: expected a refusal [{wanted[0]}], got [{found[0]}]")
    path = rf"\S.*[\\/]{re.escape(RunKind.SPECTRUM.input_name)}"
    pattern = "^" + re.escape(with_short_exponents(wanted[0])).replace(re.escape("<INPUT>"), path) + "$"
    if not re.match(pattern, with_short_exponents(found[0])):
        differ_in(".out line 1", wanted[0], found[0])
    if found[1:] != [""]:
        raise Difference(".out: a refusal must be one line ending in one newline")


def compare_outputs(expected, actual, fuzzy):
    if refusal_of(expected) is not None:
        compare_refusals(expected, actual)
        return
    try:
        wanted, found = parse_spectrum_result(expected), parse_spectrum_result(actual)
    except ValueError as error:
        raise Difference(f".out: {error}") from None
    for number, line in enumerate(actual.split("\n")[3:-1], 4):
        if not LINE.match(line):
            raise Difference(f'.out line {number}: not of the form "%.3f %.3f %ld 0": [{line}]')
    if not actual.endswith("\n"):
        raise Difference(".out: last line has no newline")
    if fuzzy:
        compare_loosely(wanted, found)
        return
    counts = "" if len(wanted) == len(found) else f"\n  (expected {len(wanted)} lines, actual {len(found)})"
    for number, (x, y) in enumerate(zip(wanted, found), 4):
        if not same_line(x, y) or x.degeneracy != y.degeneracy:
            differ_in(f".out line {number}", x, f"{y}{counts}")
    if len(wanted) != len(found):
        raise Difference(f".out: expected {len(wanted)} lines, actual {len(found)}")


def read_row(line):
    """The number and the line of a row of the table of the log."""
    number, frequency, intensity, degeneracy = line.split()
    return int(number), SpectrumLine(float(frequency), float(intensity), int(degeneracy))


def compare_rows(expected, actual, where):
    """Two rows of the table of the log."""
    if not ROW.match(expected) or not ROW.match(actual):
        differ_in(where, f"[{expected}]", f"[{actual}]")
    (number, wanted), (other_number, found) = read_row(expected), read_row(actual)
    columns = "       %4d      %15.4f  %15.4f         %4d"
    printed = columns % (other_number, found.frequency, found.intensity, found.degeneracy)
    if printed != actual and found.frequency != 0:
        raise Difference(f"{where}: columns [{actual}]")
    if number != other_number or wanted.degeneracy != found.degeneracy or not same_line(wanted, found):
        differ_in(where, f"[{expected}]", f"[{actual}]")


def compare_logs(expected, actual, fuzzy):
    """If fuzzy, only what stands before the rows of the table."""
    wanted, found = expected.split("\n"), actual.split("\n")
    head = None
    for place, (x, y) in enumerate(zip(wanted, found)):
        if head is not None and place > head + 1 and (ROW.match(x) or x == ""):
            if fuzzy:
                return
            if x != y:
                compare_rows(x, y, f"log line {place + 1}")
            continue
        if x != y:
            differ_in(f"log line {place + 1}", f"[{x}]", f"[{y}]")
        if x == TABLE_HEAD:
            head = place
    if len(wanted) != len(found) and not (fuzzy and head is not None):
        beyond = max(wanted, found, key=len)[min(len(wanted), len(found))]
        raise Difference(f"log: expected {len(wanted) - 1} lines, actual {len(found) - 1}; first beyond: [{beyond}]")


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    case, output, *logs = map(pathlib.Path, sys.argv[1:])
    fuzzy = (case / "fuzzy").exists()
    first = None
    for name in ("expected", "expected_second"):
        if not (case / f"{name}.out").exists():
            continue
        try:
            if not output.exists():
                raise Difference(".out was not written")
            compare_outputs(read(case / f"{name}.out"), read(output), fuzzy)
            for log in logs:
                compare_logs(read(case / f"{name}.log"), read(log), fuzzy)
            return 0
        except Difference as difference:
            first = first or str(difference)
    print(f"DIFF {first}")
    return 1


if __name__ == "__main__":
    sys.exit(main())
