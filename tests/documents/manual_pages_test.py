#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Tests the manual pages: mandoc finds no fault in them, their examples are what the program reads and writes, and the
messages that they explain are those that the program raises.

An example stands behind a comment .\\" example: LABEL and between .Bd and .Ed. A label is a file name, "log of" and an
input file (several such examples are one log), or "commands" with what is before it, and the same with "output".

Usage: manual_pages_test.py --program PATH [unittest arguments]
"""
import argparse
import csv
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "python"))
from velkoran_runs.log import PROGRESS, field_differences
from velkoran_runs.parameter_files import FILE_NAMES
from velkoran_runs.program import RunKind, make_run, start_run
from velkoran_runs.results import parse_parameter_result, parse_spectrum_result, refusal_of

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGES = [
    "velkoran.1",
    "nmrparam.in.5",
    "nmrparam.out.5",
    "nmrspect.in.5",
    "nmrspect.out.5",
    "nmrtype.txt.5",
    "nmr_shft.abp.5",
    "nmr_cupl.abp.5",
    "velkoran-log.5",
]
RUN_LIMIT = 100  # seconds, of a run in a build with sanitizers

STRING = r'"(?:[^"\\]|\\.)*"'
ESCAPES = {r"\-": "-", r"\(aq": "'", r"\(ga": "`", r"\(ha": "^", r"\(ti": "~", r"\e": "\\", r"\&": ""}

program = None


def plain(text):
    """The text of a page as a reader sees it."""
    return re.sub(r"\\(?:\(..|.)", lambda match: ESCAPES[match[0]], text)


def c_text(literals):
    """The text of adjoining string literals of the source."""
    return "".join(literal[1:-1].encode().decode("unicode_escape") for literal in re.findall(STRING, literals))


class Page:
    """A page: its examples as pairs of label and lines, its messages, the pages that it names."""

    def __init__(self, name):
        self.path = ROOT / "man" / name
        lines = self.path.read_text().splitlines()
        self.examples = []
        for place, line in enumerate(lines):
            if line.startswith('.\\" example: '):
                assert lines[place + 1].startswith(".Bd -literal"), f"{name}:{place + 1}: an example without .Bd"
                end = lines.index(".Ed", place)
                self.examples.append((line.split(": ", 1)[1], [plain(text) for text in lines[place + 2 : end]]))
        self.messages = [
            plain(match.replace('""', '"')) for match in re.findall(r'^\.It Sy "(.*)"$', "\n".join(lines), re.M)
        ]
        self.names = {match.replace(" ", ".") for match in re.findall(r"^\.Xr (\S+ \d)", "\n".join(lines), re.M)}
        self.keys = re.findall(r"^\.It Cm ([A-Z]\w+)$", "\n".join(lines), re.M)
        self.sections = re.findall(r"^\.Sh (.*)$", "\n".join(lines), re.M)

    def rendered(self):
        """The lines that a reader sees, without bold print and trailing blanks."""
        output = subprocess.run(["mandoc", "-T", "utf8", self.path], capture_output=True, text=True, check=True).stdout
        return [line.rstrip() for line in re.sub(".\b", "", output).splitlines()]


class Sources:
    """What the program can say: texts by number from the catalogue, the numbers that are raised, its own texts."""

    def __init__(self):
        catalogue = (ROOT / "core" / "resources" / "message_catalogue.inc").read_text()
        entries = re.findall(rf"CATALOGUE_TEXT\((\w+), (\d+), ({STRING})\)", catalogue)
        self.texts = {int(number): c_text(text) for _, number, text in entries}
        numbers = {name: int(number) for name, number, _ in entries}
        code = "".join(path.read_text() for path in sorted((ROOT / "core").rglob("*.cpp")))
        named = {numbers.get(name, 0) for name in re.findall(r"\bMessage::(\w+)", code)}
        self.raised = {number for number in named if number >= 16384}  # the others are lines of the log
        literals = rf"{STRING}(?:\s*{STRING})*"
        self.literals = {c_text(match) for match in re.findall(literals, code)}
        # a refusal that isn't in the catalogue is formed by snprintf, or handed over as it is
        self.own = {c_text(match) for match in re.findall(rf"WriteFatalFile\(({literals})\)", code)}
        self.own |= {
            c_text(match)
            for match in re.findall(
                rf"snprintf\(text, sizeof text,\s*({literals})[^;]*;\s*WriteFatalFile\(text\)", code
            )
        }
        self.fatal_files = len(re.findall(r"^ +WriteFatalFile\(", code, re.M))
        self.without_mark = {c_text(match) for match in re.findall(rf"fputs\(({literals}), file\)", code)}
        keys = (ROOT / "core" / "files" / "option_keys.cpp").read_text()
        self.keys = re.findall(r'^    \{"(\w+)", ', keys, re.M)


def match_log(test, expected, log):
    """Compares a log with the lines of a page, where three dots stand for one or more progress lines."""
    place = 0
    for number, line in enumerate(expected):
        if line == "...":
            start = place
            following = expected[number + 1]
            while place < len(log) and log[place] != following:
                test.assertRegex(log[place], PROGRESS, f"line {place + 1} of the log isn't in the page")
                place += 1
            test.assertGreater(place, start, f"the dots before {following!r} stand for nothing")
            continue
        test.assertLess(place, len(log), f"the log ends before {line!r}")
        test.assertEqual(line, log[place], f"line {place + 1} of the log")
        place += 1
    test.assertEqual(log[place:], [], "the log goes on behind the page")


class ManualPages(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        if shutil.which("mandoc") is None:
            raise AssertionError("mandoc isn't installed: sh scripts/install_packages.sh mandoc")
        cls.pages = {name: Page(name) for name in PAGES}
        cls.sources = Sources()
        cls.examples = {}  # the pieces of a log are one example
        for page in cls.pages.values():
            for label, lines in page.examples:
                cls.examples.setdefault(label, []).extend(lines)

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.write("parameters", *FILE_NAMES)
        self.write("water", "nmrparam.in")
        self.write("chloro", "nmrspect.in")

    def write(self, folder, *names):
        (self.folder / folder).mkdir()
        for name in names:
            (self.folder / folder / name).write_text(self.text(name))

    def text(self, label):
        return "".join(line + "\n" for line in self.examples[label])

    def shell(self, commands, folder=None):
        path = os.path.dirname(program) + os.pathsep + os.environ["PATH"]
        done = subprocess.run(
            ["sh", "-c", commands],
            cwd=folder or self.folder,
            env=os.environ | {"PATH": path},
            capture_output=True,
            text=True,
            timeout=RUN_LIMIT,
        )
        self.assertEqual(done.stderr, "")
        return done.stdout

    def run_program(self, work, kind, parameters="parameters"):
        """Output and log of a run in a work folder, without an older output or log."""
        texts = make_run(program, parameters, work, kind, f"{work}/run.log", folder=self.folder, seconds=RUN_LIMIT)
        self.assertEqual(texts.complaint, "")
        return texts.output, texts.log

    def test_every_page_is_tested(self):
        self.assertEqual(sorted(path.name for path in (ROOT / "man").iterdir()), sorted(PAGES))

    def test_mandoc_finds_no_fault(self):
        # in a tree of manuals, so that mandoc finds the pages that others name
        for name in PAGES:
            section = self.folder / ("man" + name[-1])
            section.mkdir(exist_ok=True)
            shutil.copy(ROOT / "man" / name, section)
        lint = subprocess.run(
            ["mandoc", "-T", "lint", "-W", "style", *[ROOT / "man" / name for name in PAGES]],
            env=os.environ | {"MANPATH": str(self.folder)},
            capture_output=True,
            text=True,
        )
        self.assertEqual(lint.stdout, "")
        self.assertEqual(lint.returncode, 0)

    def test_named_pages_exist(self):
        for name, page in self.pages.items():
            self.assertLessEqual(page.names, set(PAGES), name)

    def test_pages_of_formats_are_complete(self):
        for name, page in self.pages.items():
            for section in ["NAME", "DESCRIPTION", "EXAMPLES", "DIAGNOSTICS", "SEE ALSO"]:
                self.assertIn(section, page.sections, name)
            self.assertTrue(page.examples, f"{name} has no example")

    def test_reader_sees_the_examples(self):
        for name, page in self.pages.items():
            rendered = page.rendered()
            for label, lines in page.examples:
                seen = [line.rstrip() for line in lines]
                while seen[0] == "":
                    del seen[0]
                while seen[-1] == "":
                    del seen[-1]
                found = any(
                    [indent + line if line else "" for line in seen] == rendered[at : at + len(seen)]
                    for indent in (" " * 5, " " * 9)
                    for at in range(len(rendered))
                )
                self.assertTrue(found, f"{name}: the example {label!r} reads otherwise than it is tested")

    def test_parameter_run(self):
        output, log = self.run_program("water", RunKind.PARAMETER)
        self.assertEqual(output, self.text("nmrparam.out"))
        match_log(self, self.examples["log of nmrparam.in"], log.splitlines())

    def test_accelerated_responses(self):
        _, log = self.run_water(lambda text: "ResponseAcceleration = yes\n" + text)
        lines = [line for line in log.splitlines() if re.match(r"Perturbed [xyz]:", line)]
        match_log(self, self.examples["accelerated responses"], lines)

    def test_parameter_run_with_the_parameters_of_the_project(self):
        shutil.copytree(ROOT / "parameters" / "published", self.folder / "all")
        output, _ = self.run_program("water", RunKind.PARAMETER, "all")
        self.assertEqual(output, self.text("nmrparam.out"))

    def test_spectrum_run(self):
        output, log = self.run_program("chloro", RunKind.SPECTRUM)
        self.assertEqual(output, self.text("nmrspect.out"))
        match_log(self, self.examples["log of nmrspect.in"], log.splitlines())

    def test_commands(self):
        for label in ["commands", "spectrum commands"]:
            self.assertEqual(self.shell(self.text(label)), self.text(label + " output"))
        self.assertEqual(self.shell(self.text("log commands"), self.folder / "water"), self.text("log commands output"))

    def run_water(self, change):
        """Output and log of the input of the page after a change of its text."""
        (self.folder / "water" / "nmrparam.in").write_text(change(self.text("nmrparam.in")))
        return self.run_program("water", RunKind.PARAMETER)

    def test_values_are_taken_as_the_page_says(self):
        shown = {
            "SemiEmpiricalMethod": r"Starting (TNDO/\d)",
            "SCFIterationLimit": r"Iteration limit = (\S+)",
            "SCFAccelerateConvergence": r"Applying the SCF accelerate convergence\?  (\w+)",
            "SCFConvergenceLimit": r"Convergence limit = (\S+)",
            "TotalCharge": r"Charge on the system = (\S+)",
        }
        text = self.pages["nmrparam.in.5"].path.read_text()
        rows = re.findall(r'^\.It Li "(\S+) = (.*)" Ta ([^,\n]+)(.*)$', text, re.M)
        self.assertEqual({row[0].lower() for row in rows}, {key.lower() for key in shown})
        for key, value, taken, rest in rows:
            option = f"{key} = {plain(value)}"
            name = next(name for name in shown if name.lower() == key.lower())
            _, log = self.run_water(lambda text: option + "\n" + re.sub(rf"^{name} = .*\n", "", text, flags=re.M))
            seen = re.search(shown[name], log).group(1).lower()
            if name == "SCFConvergenceLimit":
                self.assertEqual(float(seen), float(taken), option)
            else:
                self.assertEqual(seen, taken.lower(), option)
            self.assertEqual("Unknown initialization" in log, "warning" in rest, option)

    def test_no_neighbours_are_enough_where_nothing_is_cut(self):
        result, log = self.run_water(lambda text: text)
        bare = re.sub(r"^(atom .*?)  \d+  .* s$", r"\1 0", self.text("nmrparam.in"), flags=re.M)
        self.assertEqual(len(re.findall(r"^atom .* 0$", bare, re.M)), 3)
        self.assertEqual(self.run_water(lambda _: bare), (result, log))

    def test_two_atoms_at_one_place_give_an_ordinary_looking_result(self):
        result, log = self.run_water(lambda text: text.replace("-0.7572", "0.7572"))
        self.assertEqual(round(parse_parameter_result(result).couplings[1][2]), 106)  # Hz, the figure of docs/method.md
        self.assertLess(field_differences(log)[-1], 1e-5)
        self.assertNotIn("Iter = 199 ", log)

    def test_backslash_at_the_end_of_the_parameter_directory(self):
        self.write("pp", *FILE_NAMES)
        (self.folder / "w").mkdir()
        self.assertIsNotNone(refusal_of(self.run_at("pp", "w\\")))
        for directory in ["pp\\", "pp/"]:
            for work in ["w", "w/", "w\\"]:
                self.assertEqual(self.run_at(directory, work), self.text("nmrparam.out"), f"{directory} {work}")

    def run_at(self, directory, work):
        """The result of a run in the folder w with both directories as they are written on the command line."""
        output = self.folder / "w" / "nmrparam.out"
        output.unlink(missing_ok=True)
        (self.folder / "w" / "nmrparam.in").write_text(self.text("nmrparam.in"))
        with start_run(program, directory, work, RunKind.PARAMETER, folder=self.folder) as process:
            self.assertEqual(process.wait(RUN_LIMIT), 0)
        return output.read_text()

    def spectrum(self, *changes):
        """The lines of the spectrum of the page as pairs of frequency and intensity, after changes of its text."""
        text = self.text("nmrspect.in")
        for old, new in changes:
            self.assertEqual(text.count(old), 1, old)
            text = text.replace(old, new)
        (self.folder / "chloro" / "nmrspect.in").write_text(text)
        output, _ = self.run_program("chloro", RunKind.SPECTRUM)
        return [(line.frequency, line.intensity) for line in parse_spectrum_result(output)]

    def test_every_mass_number_is_a_spin_of_one_half(self):
        # a pair of unlike isotopes is of first order: doublets, where a spin 1 would split its neighbour into three
        for mass in [2, 14, 19]:
            pair = self.spectrum(("1 1  1 2", f"1 {mass}  1 1"))
            self.assertEqual(pair, [(234.0, 1.0), (240.0, 1.0), (343.2, 1.0), (349.2, 1.0)], mass)

    def test_shifts_are_rounded_on_reading_but_finer_in_hertz(self):
        self.assertEqual(self.spectrum(("5.77 3.95", "5.7704 3.9496")), self.spectrum())
        uncoupled = [("\n60\n", "\n600\n"), ("0 6.0", "0 0")]
        self.assertEqual(
            [line[0] for line in self.spectrum(*uncoupled, ("5.77 3.95", "5.7706 3.9504"))], [2370.0, 3462.6]
        )
        uncoupled[0] = ("\n60\n", "\n1\n")
        self.assertEqual(
            [line[0] for line in self.spectrum(*uncoupled, ("5.77 3.95", "3462.36 2370.24"))], [2370.24, 3462.36]
        )

    def test_ratios_of_frequencies_are_those_of_the_g_factors(self):
        # apart from the shieldings of the references, less than 0.1 %
        with open(ROOT / "parameters" / "published" / "parameter_figures.csv", newline="") as file:
            factors = {row[0]: abs(float(row[2])) for row in csv.reader(file) if row[1] == "gFactor"}
        text = self.pages["nmrspect.in.5"].path.read_text()
        ratios = re.findall(r"^\.It \d+([A-Z][a-z]?) Ta (\d\.\d+)$", text, re.M)
        self.assertEqual([element for element, _ in ratios], ["F", "P", "C", "Si", "N"])
        walk = re.findall(r"\d\.\d{7}", (ROOT / "docs" / "first_walk.md").read_text())
        for element, ratio in ratios:
            self.assertLess(abs(float(ratio) * factors["H"] / factors[element.upper()] - 1), 1e-3, element)
            self.assertIn(ratio, walk)

    def test_equal_couplings_of_a_pair_say_nothing(self):
        def couplings(options):
            change = f"{options}\nCalculateShielding = no\n"
            text = re.sub(r"^SCF.*\n", "", self.text("nmrparam.in"), flags=re.M)
            return parse_parameter_result(self.run_water(lambda _: change + text)[0]).couplings

        converged = couplings("SCFConvergenceLimit = 1e-6\nSCFIterationLimit = 200")
        for options, least, most in [
            ("SCFIterationLimit = 2", 0, 0),
            ("SCFIterationLimit = 4", 0.1, 10),
            ("", 0, 0.03),
        ]:
            values = couplings(options)
            self.assertTrue(least <= abs(values[0][1] - values[1][0]) <= most, options)
            if options:
                self.assertGreater(abs(values[0][1] - converged[0][1]), 1, options)

    def test_every_message_is_explained(self):
        self.assertEqual(
            self.sources.fatal_files,
            len(self.sources.own) + 1,  # and ShowMessage hands one on
            "a refusal whose text isn't found where it is formed escapes this test",
        )
        raised = {self.sources.texts[number] for number in self.sources.raised}
        explained = {message for page in self.pages.values() for message in page.messages}
        refusals = raised | self.sources.own | self.sources.without_mark
        self.assertEqual(sorted(refusals - explained), [], "not explained in any page")
        self.assertEqual(sorted(explained - raised - self.sources.literals), [], "the program never says this")

    def test_warnings_are_in_the_page_of_the_log(self):
        warnings = {self.sources.texts[number] for number in self.sources.raised if 16384 <= number < 24576}
        self.assertTrue(warnings)
        self.assertLessEqual(warnings, set(self.pages["velkoran-log.5"].messages))

    def test_every_option_is_explained(self):
        self.assertTrue(self.sources.keys)
        self.assertEqual(sorted(self.pages["nmrparam.in.5"].keys), sorted(self.sources.keys))


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True, type=pathlib.Path)
    arguments, rest = parser.parse_known_args()
    program = arguments.program.resolve()
    unittest.main(argv=[sys.argv[0], *rest])
