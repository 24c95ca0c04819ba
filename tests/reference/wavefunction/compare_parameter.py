#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""compare_parameter.py CASEDIR ACTUAL_OUT [ACTUAL_LOG]

Token-wise comparison with CASEDIR/expected.out and expected.log.  Exit code 0 = same.
 - words exactly; runs of blanks count as one; line structure (blank lines too) must agree
 - numbers: 2 units of the last printed place, or 1e-5 relative, or 2e-5 absolute where 6 and more
   decimals are printed (the freedom that is left in the expansion of the Coulomb classes);
   energies in kcal/mol 0.02 absolute
 - K and J: 1e-4 relative or 0.02 Hz
 - progress lines of iterations: the counts in a block may differ by 1; values 2 % or 0.05 kcal/mol
   (Difference), 5 % or 2e-8 (Diff)
 - a path in front of a known file name is not looked at
 - '@@SHIELDING TABLES@@' in expected.log: what the program writes there is skipped, and so are the
   numbers of SHIELDING and TENSOR in the output file if the log holds that marker or CASEDIR/mask
 - CASEDIR/fuzzy, by its first word:
     signs       eigenvector coefficients are compared without their sign
     degenerate  eigenvector coefficient lines are not compared
     loose       as degenerate, and numbers with 2e-3 (absolute or relative), K/J 2e-2 relative or 0.5 Hz
     unstable    the result hangs on rounding noise (a degenerate level at the border of the occupied ones in
                 the first iteration): words and line structure only"""
import pathlib
import re
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[3] / "python"))
from velkoran_runs.log import is_caution, is_progress
from velkoran_runs.parameter_files import FILE_NAMES
from velkoran_runs.program import RunKind
from velkoran_runs.results import SECTIONS
from velkoran_runs.texts import read_text_if_there

KNOWN_FILES = [RunKind.PARAMETER.input_name, RunKind.PARAMETER.output_name, *FILE_NAMES]
PATH = re.compile(r"[^\s()]*[\\/](%s)" % "|".join(map(re.escape, KNOWN_FILES)))
NUMBER = re.compile(r"^[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)?$")
GLUED = re.compile(r"(?<=\d)(?=-\d)")
COUPLING_ROW = re.compile(r"^ +\d+\([ A-Z][A-Za-z]\) +\d+\([ A-Z][A-Za-z]\) ")
EIGENVECTOR_ROW = re.compile(r"^(  S| P[xyz]|D\w\w) [ A-Z][A-Za-z] +\d+  ")
SKIPPED_TABLES = "@@SHIELDING TABLES@@"
END = "<end>"


class Difference(Exception):
    """The first difference that was found."""

    def __init__(self, what, number, expected, actual):
        shown = [END if line is None else line for line in (expected, actual)]
        super().__init__(f"{what} line {number} differs\n  expected: {shown[0]}\n  actual:   {shown[1]}")


def read_lines(path):
    """The lines of a file without paths before known file names, or None where there is no file."""
    text = read_text_if_there(path)
    return None if text is None else [PATH.sub(r"@/\1", line) for line in text.replace("\r", "").split("\n")]


def read_mark(case):
    """The words of CASEDIR/fuzzy, the first without a colon; one empty word where there is none."""
    words = (read_text_if_there(case / "fuzzy") or "").split() or [""]
    return [words[0].strip(":"), *words[1:]]


def line_at(lines, place):
    return lines[place] if place < len(lines) else None


def tokens(line):
    """The words of a line; columns of numbers that touch are parted."""
    words = []
    for word in line.split():
        glued = "-" in word and not NUMBER.match(word) and re.match(r"^[-\d.]+$", word)
        words += GLUED.sub(" ", word).split() if glued else [word]
    return words


class Rules:
    """How lines are compared under the mark of a case."""

    def __init__(self, mark):
        self.mark = mark
        self.fuzzy = mark in ("loose", "unstable")

    def same_number(self, expected, actual, kind):
        """kind is "J" for couplings and "kcal" for energies."""
        x, y = float(expected), float(actual)
        if self.mark == "unstable" and ("." in expected or "e" in expected):
            return True
        if x != x or y != y:
            return (x != x) == (y != y)
        if kind == "J":
            return abs(x - y) <= max((2e-2 if self.fuzzy else 1e-4) * abs(x), 0.5 if self.fuzzy else 0.02)
        if "." not in expected and "e" not in expected.lower():
            return x == y
        exponent = NUMBER.match(expected).group(2)
        decimals = len(expected.lower().partition(".")[2].split("e")[0])
        last_place = 10.0**-decimals * (10.0 ** int(exponent[1:]) if exponent else 1.0)
        tolerance = max(2.0001 * last_place, 1e-5 * abs(x))
        if decimals >= 6 and not exponent:
            tolerance = max(tolerance, 2e-5)
        if kind == "kcal":
            tolerance = max(tolerance, 0.02)
        if self.fuzzy:
            tolerance = max(tolerance, 2e-3 * abs(x), 2e-3)
        return abs(x - y) <= tolerance

    def same_couplings(self, expected, actual):
        """K and J, the last two words of a row."""
        if not self.same_number(expected[1], actual[1], "J"):
            return False
        try:
            reduced, other, coupling = float(expected[0]), float(actual[0]), float(expected[1])
        except ValueError:
            return False
        tolerance = (2e-2 if self.fuzzy else 1e-4) * abs(reduced)
        if coupling == 0.0:
            tolerance = max(tolerance, 1e14)
        else:
            tolerance = max(tolerance, abs((0.5 if self.fuzzy else 0.02) * reduced / coupling))
        return abs(reduced - other) <= tolerance

    def same_word(self, expected, actual, kind):
        """Numbers around an equals sign are compared one by one."""
        first, second = (re.split(r"(=)", word) for word in (expected, actual))
        return len(first) == len(second) and all(
            x == y or (NUMBER.match(x) and NUMBER.match(y) and self.same_number(x, y, kind))
            for x, y in zip(first, second)
        )

    def same_words_only(self, expected, actual):
        """Numbers may touch or not: the words are looked at alone."""
        first, second = (tokens(line.replace("=", " = ")) for line in (expected, actual))
        return [word for word in first if not NUMBER.match(word)] == [word for word in second if not NUMBER.match(word)]

    def same_line(self, expected, actual, kind):
        if self.mark == "unstable":
            return self.same_words_only(expected, actual)
        first, second = tokens(expected), tokens(actual)
        if self.mark == "signs" and EIGENVECTOR_ROW.match(expected):
            first, second = ([word.lstrip("-") for word in words] for words in (first, second))
        if len(first) != len(second):
            return False
        if COUPLING_ROW.match(expected) and len(first) >= 8:
            if not self.same_couplings(first[-2:], second[-2:]):
                return False
            first, second = first[:-2], second[:-2]
        return all(x == y or self.same_word(x, y, kind) for x, y in zip(first, second))

    def same_log_line(self, expected, actual):
        if self.mark in ("loose", "degenerate") and EIGENVECTOR_ROW.match(expected) and EIGENVECTOR_ROW.match(actual):
            first, second = tokens(expected), tokens(actual)
            return first[:3] == second[:3] and len(first) == len(second)
        energy = "kcal/mol" in expected or expected.startswith("Energy=")
        return self.same_line(expected, actual, "kcal" if energy else "")

    def same_progress(self, expected, actual):
        """Two lines of the same iteration, or of iterations that may be one apart."""
        (text, _, value), (other_text, _, other_value) = (line.rpartition("=") for line in (expected, actual))
        if text != other_text:
            return False
        x, y = float(value), float(other_value)
        of_field = expected.startswith("Iteration")
        tolerance = max(abs(x) * (0.02 if of_field else 0.05), 0.05 if of_field else 2e-8)
        if self.fuzzy:
            tolerance = max(tolerance, abs(x) * 0.5, 1.0 if of_field else 1e-5)
        return abs(x - y) <= tolerance or self.mark == "unstable"

    def compare_progress(self, expected, actual, number):
        """The progress lines of a block, those of each iteration apart."""
        groups = {}
        for side, lines in enumerate((expected, actual)):
            for line in lines:
                name = "Iteration" if line.startswith("Iteration") else line.split(":")[0]
                groups.setdefault(name, ([], []))[side].append(line)
        freedom = 1000 if self.mark == "unstable" else 5 if self.fuzzy else 1
        for name, (first, second) in groups.items():
            if abs(len(first) - len(second)) > freedom:
                what = "log (number of progress lines)"
                raise Difference(what, number, f"{name}: {len(first)} lines", f"{len(second)} lines")
            for x, y in zip(first, second):
                if not self.same_progress(x, y):
                    raise Difference("log", number, x, y)


def compare_output(expected, actual, rules, masked):
    """Raises Difference. If masked, the numbers under SHIELDING and TENSOR aren't compared."""
    if len(expected) != len(actual) and not masked:
        common = min(len(expected), len(actual))
        place = next((k for k in range(common) if not rules.same_line(expected[k], actual[k], "J")), common)
        raise Difference("out", place + 1, line_at(expected, place), line_at(actual, place))
    i = j = 0
    section = ""
    while i < len(expected) or j < len(actual):
        wanted, found = line_at(expected, i), line_at(actual, j)
        if masked and wanted in ("SHIELDING", "TENSOR") and found == wanted:
            i, j = end_of_section(expected, i + 1), end_of_section(actual, j + 1)
            continue
        if wanted in SECTIONS:
            section = wanted
        if wanted is None or found is None or not rules.same_line(wanted, found, "J" if section == "COUPLING" else ""):
            raise Difference("out", i + 1, wanted, found)
        i += 1
        j += 1


def end_of_section(lines, place):
    while place < len(lines) and lines[place] not in ("TENSOR", "COUPLING"):
        place += 1
    return place


def compare_logs(expected, actual, rules):
    """Raises Difference."""
    actual = [line for line in actual if not is_caution(line)]  # the evaluation knows no such lines
    i = j = 0
    while i < len(expected) or j < len(actual):
        wanted, found = line_at(expected, i), line_at(actual, j)
        if wanted == SKIPPED_TABLES:
            i += 1
            following = line_at(expected, i) or ""
            if following == "":
                return
            while (
                j < len(actual) and actual[j] != following and not (is_progress(actual[j]) and is_progress(following))
            ):
                j += 1
            continue
        if wanted is None or found is None:
            raise Difference("log", i + 1, wanted, found)
        if is_progress(wanted):
            i, of_expected = end_of_progress(expected, i)
            j, of_actual = end_of_progress(actual, j)
            rules.compare_progress(of_expected, of_actual, i)
            continue
        if not rules.same_log_line(wanted, found):
            raise Difference("log", i + 1, wanted, found)
        i += 1
        j += 1


def end_of_progress(lines, place):
    """The place behind a row of progress lines, and the row."""
    end = place
    while end < len(lines) and is_progress(lines[end]):
        end += 1
    return end, lines[place:end]


def compare_case(case, output_path, log_path, compare_outputs, compare_the_logs):
    """0 if both comparisons find the files of a case to be the same, else 1, and prints the difference. The first takes
    the expected and the actual lines, and the lines of the expected log too."""
    expected_log = read_lines(case / "expected.log") or [""]
    output = read_lines(output_path)
    if output is None:
        print("no output file")
        return 1
    try:
        compare_outputs(read_lines(case / "expected.out"), output, expected_log)
        actual_log = None if log_path is None else read_lines(log_path)
        if actual_log is not None:
            compare_the_logs(expected_log, actual_log)
    except Difference as difference:
        print(difference)
        return 1
    if log_path is not None and actual_log is None and any(expected_log):
        print("no log file")
        return 1
    return 0


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    case, output, log = (*map(pathlib.Path, sys.argv[1:]), None)[:3]
    rules = Rules(read_mark(case)[0])

    def compare_outputs(expected, actual, expected_log):
        compare_output(expected, actual, rules, (case / "mask").exists() or SKIPPED_TABLES in expected_log)

    return compare_case(case, output, log, compare_outputs, lambda first, second: compare_logs(first, second, rules))


if __name__ == "__main__":
    sys.exit(main())
