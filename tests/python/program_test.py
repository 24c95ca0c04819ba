# SPDX-License-Identifier: MIT
"""Runs: of the program itself, and of scripts in its place that die, hang or complain."""
import os
import pathlib
import subprocess
import tempfile
import time
import unittest

from velkoran_runs import log
from velkoran_runs.inputs import Atom, atoms_text, parameter_input
from velkoran_runs.program import RunFailed, RunKind, command_line, make_run, start_run
from velkoran_runs.results import RefusedRun, parse_parameter_result, parse_spectrum_result
from velkoran_runs.spectrum_inputs import spectrum_input

PARAMETERS = pathlib.Path(__file__).resolve().parents[2] / "parameters" / "published"
HYDROGEN = parameter_input(atoms_text([Atom("H", (0, 0, 0)), Atom("H", (0, 0, 0.74))]), {"SemiEmpiricalMethod": 2})


class Runs(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "w").mkdir()
        (self.folder / "parameters").symlink_to(PARAMETERS)
        self.program = os.environ["VELKORAN_PROGRAM"]

    def run_input(self, kind, text, **settings):
        (self.folder / "w" / kind.input_name).write_text(text)
        return make_run(self.program, "parameters", "w", kind, folder=self.folder, **settings)

    def write_program(self, commands):
        path = self.folder / "script"
        path.write_text("#!/bin/sh\n" + commands)
        path.chmod(0o755)
        self.program = str(path)

    def test_hydrogen_molecule(self):
        texts = self.run_input(RunKind.PARAMETER, HYDROGEN)
        result = parse_parameter_result(texts.output)
        self.assertEqual(result.elements, [1, 1])
        self.assertEqual(result.shieldings[0], result.shieldings[1])
        self.assertEqual(result.couplings[0][1], result.couplings[1][0])
        self.assertNotEqual(result.couplings[0][1], 0)
        self.assertEqual(len(log.total_energies(texts.log)), 2)
        self.assertEqual(set(log.responses(texts.log)), {"x", "y", "z", "atom 1", "atom 2"})
        self.assertEqual(log.cautions(texts.log), [])
        self.assertEqual(texts.complaint, "")

    def test_spin_pair(self):
        # a pair of unlike isotopes is of first order: each shift in Hz, split by the coupling
        text = spectrum_input([1, 2], [[0, 6], [6, 0]], 100, masses=[1, 19])
        lines = parse_spectrum_result(self.run_input(RunKind.SPECTRUM, text).output)
        self.assertEqual([line.frequency for line in lines], [97.0, 103.0, 197.0, 203.0])
        self.assertEqual([line.intensity for line in lines], [1.0] * 4)

    def test_groups(self):
        text = spectrum_input([1, 2], [[0, 6], [6, 0]], 100, masses=[1, 19], sizes=[1, 2])
        lines = parse_spectrum_result(self.run_input(RunKind.SPECTRUM, text).output)
        self.assertEqual([line.frequency for line in lines[:3]], [94.0, 100.0, 106.0])

    def test_refusal(self):
        with self.assertRaisesRegex(RefusedRun, "cann't be equal to zero"):
            parse_spectrum_result(self.run_input(RunKind.SPECTRUM, spectrum_input([1], [[0]], 0)).output)

    def test_older_files_are_removed(self):
        first = self.run_input(RunKind.PARAMETER, HYDROGEN)
        self.assertEqual(self.run_input(RunKind.PARAMETER, HYDROGEN), first)
        self.write_program("exit 0\n")
        texts = self.run_input(RunKind.PARAMETER, HYDROGEN)
        self.assertEqual((texts.output, texts.log), (None, None))

    def test_log_is_seen_from_the_folder(self):
        (self.folder / "w" / "nmrparam.in").write_text(HYDROGEN)
        texts = make_run(self.program, "parameters", "w", RunKind.PARAMETER, "w/here", folder=self.folder)
        self.assertEqual((self.folder / "w" / "here").read_text(), texts.log)
        texts = make_run(self.program, "parameters", "w", RunKind.PARAMETER, None, folder=self.folder)
        self.assertIsNone(texts.log)
        self.assertFalse((self.folder / "run.log").exists())

    def test_limit_of_time(self):
        self.write_program("exec sleep 100\n")
        begin = time.monotonic()
        with self.assertRaisesRegex(RunFailed, "more than 0.2 s"):
            self.run_input(RunKind.PARAMETER, HYDROGEN, seconds=0.2)
        self.assertLess(time.monotonic() - begin, 50)

    def test_program_that_dies(self):
        self.write_program("echo alas >&2; exit 3\n")
        with self.assertRaisesRegex(RunFailed, "code 3: alas"):
            self.run_input(RunKind.PARAMETER, HYDROGEN)

    def test_complaint(self):
        self.write_program("echo alas >&2\n")
        self.assertEqual(self.run_input(RunKind.PARAMETER, HYDROGEN).complaint, "alas\n")

    def test_program_that_is_not_there(self):
        with self.assertRaises(OSError):
            make_run(self.folder / "nothing", "parameters", "w", RunKind.PARAMETER, folder=self.folder)

    def test_command_line(self):
        self.assertEqual(command_line("p", "a", "b", RunKind.SPECTRUM), ["p", "a", "b", "2"])
        self.assertEqual(
            command_line("p", "a", pathlib.Path("b"), RunKind.PARAMETER, "l", ["wine"]),
            ["wine", "p", "a", "b", "1", "l"],
        )

    def test_settings_and_a_command_before_the_program(self):
        with start_run(
            "x", "a", "b", RunKind.PARAMETER, folder=self.folder, through=["echo", "-n"], stdout=subprocess.PIPE
        ) as process:
            self.assertEqual(process.communicate()[0], b"x a b 1")


if __name__ == "__main__":
    unittest.main()
