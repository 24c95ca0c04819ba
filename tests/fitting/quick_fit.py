#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""A whole fit of few molecules: from the data to files that the program takes.

Usage: quick_fit.py --program PATH --worker PATH
"""
import argparse
import json
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "fitting"), str(ROOT / "python")]
from velkoran_fit.atom_types import read_atom_types
from velkoran_fit.references_file import read_references
from velkoran_runs.parameter_files import COUPLING_FILE, FILE_NAMES, SHIELDING_FILE, parse_records

METHANE = ROOT / "examples" / "methane" / "nmrparam.in"
FILES = ("atom_types.csv", *FILE_NAMES, "references.json", "SHA256SUMS", "accuracy.json")


class QuickFitTest(unittest.TestCase):
    program: Path
    worker: Path
    folder: Path

    @classmethod
    def setUpClass(cls) -> None:
        own = tempfile.TemporaryDirectory()
        cls.addClassCleanup(own.cleanup)
        cls.folder = Path(own.name)
        cls.log = cls.fit("first")

    @classmethod
    def fit(cls, name: str) -> str:
        """Runs a fit that writes to a folder of this name; its log."""
        command = [sys.executable, ROOT / "fitting" / "fit.py", "--quick", "--worker", cls.worker]
        command += ["--folder", cls.folder / "work", "--write", cls.folder / name]
        done = subprocess.run(command, capture_output=True, text=True)
        if done.returncode != 0:
            raise AssertionError(f"the fit failed:\n{done.stdout}{done.stderr}")
        return done.stdout

    def test_all_files_are_there(self) -> None:
        self.assertEqual(sorted(path.name for path in (self.folder / "first").iterdir()), sorted(FILES))

    def test_the_loss_falls_in_every_stage(self) -> None:
        steps = [
            line.split("loss ")[1].split(",")[0].split(" -> ") for line in self.log.splitlines() if "loss " in line
        ]
        self.assertGreaterEqual(len(steps), 6)
        falls = [float(after) < float(before) for before, after in steps]
        self.assertGreater(sum(falls), len(falls) / 2)

    def test_a_fit_that_is_done_gives_the_same_bytes_again(self) -> None:
        self.fit("second")
        for name in FILES:
            first, second = ((self.folder / run / name).read_bytes() for run in ("first", "second"))
            self.assertEqual(first, second, name)

    def test_every_type_has_a_record_in_both_files(self) -> None:
        names = [kind.name for kind in read_atom_types(self.folder / "first" / "atom_types.csv")]
        for name in (SHIELDING_FILE, COUPLING_FILE):
            records = parse_records((self.folder / "first" / name).read_text())
            self.assertEqual(list(records), names + ["-" + kind for kind in names])

    def test_the_references_belong_to_the_files(self) -> None:
        types = read_atom_types(self.folder / "first" / "atom_types.csv")
        references = read_references(self.folder / "first" / "references.json", types)
        self.assertEqual(sorted(references.parameter_files), sorted(FILE_NAMES))
        self.assertIn("13C", references.shifts.nuclei)

    def test_the_program_takes_the_files(self) -> None:
        work = self.folder / "methane"
        work.mkdir()
        text = METHANE.read_text().replace("C1   C  C ", "C1   C  CM")
        (work / "nmrparam.in").write_text(text)
        subprocess.run([self.program, "first", "methane", "1"], cwd=self.folder, check=True)
        self.assertNotIn("ERRMSG", (work / "nmrparam.out").read_text())

    def test_the_accuracy_is_that_of_the_molecules(self) -> None:
        columns = json.loads((self.folder / "first" / "accuracy.json").read_text())["columns"]
        self.assertGreater(columns["13C"]["methods"]["physics"]["values"], 10)


if __name__ == "__main__":
    parser = argparse.ArgumentParser(add_help=False, usage=__doc__)
    parser.add_argument("--program", type=Path, required=True)
    parser.add_argument("--worker", type=Path, required=True)
    arguments, rest = parser.parse_known_args()
    QuickFitTest.program = arguments.program.resolve()
    QuickFitTest.worker = arguments.worker.resolve()
    unittest.main(argv=[sys.argv[0], *rest])
