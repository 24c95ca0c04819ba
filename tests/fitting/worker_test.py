# SPDX-License-Identifier: MIT
"""The worker of the fit beside the program itself, with refused parameters, and with requests that are none."""
import dataclasses
import os
import pathlib
import struct
import subprocess
import tempfile
import unittest

import numpy as np
from velkoran_fit.worker import FIELDS, Change, Job, Options, Quantity, Status, WorkerPool, request_bytes
from velkoran_runs.inputs import atoms_text, parameter_input, read_atoms
from velkoran_runs.parameter_files import COUPLING_FILE, SHIELDING_FILE, TYPE_FILE, parse_records, record_text
from velkoran_runs.program import RunKind, make_run
from velkoran_runs.results import parse_parameter_result

ROOT = pathlib.Path(__file__).resolve().parents[2]
PUBLISHED = ROOT / "parameters" / "published"
RECORDS = parse_records((PUBLISHED / COUPLING_FILE).read_text())
ELEMENTS = "H HE LI BE B C N O F NE NA MG AL SI P S CL AR".split()  # by row, which is the atomic number less one
TABLE = np.array([[RECORDS[element][name] for name in FIELDS] for element in ELEMENTS])
HYDROGEN, CARBON, OXYGEN = 0, 5, 7
SECONDS = 300  # for what would hang otherwise

# The options that a worker sets without being asked, and the defaults of Options.
PROGRAM_OPTIONS = {
    "SemiEmpiricalMethod": "TNDO2",
    "SCFConvergenceLimit": 1e-7,
    "SCFIterationLimit": 300,
    "SCFAccelerateConvergence": True,
    "ResponseAcceleration": True,
    "ModifySlaterExponents": True,
    "ComputeThreeCenterTerms": True,
}

# A run of both would begin the second field with the density of the first one.
WANTED = {
    Quantity.SHIELDING: {"CalculateShielding": True, "CalculateCoupling": False},
    Quantity.COUPLING: {"CalculateShielding": False, "CalculateCoupling": True},
}

# Bytes of a request: the head, an atom, a type; and places of numbers in the head.
HEAD, ATOM, TYPE = 48, 32, 14 * 8
HEAD_FIELDS = "quantity atoms selected types variants changes charge method modify_exponents iteration_limit".split()


def atoms_of(name):
    """The atoms of an example."""
    return read_atoms((ROOT / "examples" / name / "nmrparam.in").read_text())[0]


def make_job(quantity, atoms, selected=None, **settings):
    """A job for atoms of generic types, which asks for all of them or for the selected places."""
    rows = np.array([ELEMENTS.index(atom.element.upper()) for atom in atoms])
    places = np.arange(len(atoms)) if selected is None else np.array(selected, int)
    return Job(quantity, rows + 1, rows, np.array([atom.position for atom in atoms]), places, **settings)


def run_jobs(*jobs, table=TABLE, processes=1, **options):
    with WorkerPool(pathlib.Path(os.environ["VELKORAN_WORKER"]), Options(**options), processes) as pool:
        return list(pool.run(jobs, table))


def run_program(quantity, atoms, records=RECORDS, **options):
    """Shieldings or couplings of all atoms as the program writes them, with the same records for both."""
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        for part in ("work", "published"):
            (folder / part).mkdir()
        (folder / "published" / TYPE_FILE).write_bytes((PUBLISHED / TYPE_FILE).read_bytes())
        for file in (SHIELDING_FILE, COUPLING_FILE):
            (folder / "published" / file).write_text("".join(record_text(*item) for item in records.items()))
        text = parameter_input(atoms_text(atoms), PROGRAM_OPTIONS | WANTED[quantity] | options)
        (folder / "work" / RunKind.PARAMETER.input_name).write_text(text)
        program = os.environ["VELKORAN_PROGRAM"]
        texts = make_run(program, "published", "work", RunKind.PARAMETER, folder=folder, seconds=SECONDS)
        result = parse_parameter_result(texts.output)
        return result.shieldings if quantity == Quantity.SHIELDING else result.couplings


def assert_rounded(values, expected):
    """Values are those of a result file, which has three decimals."""
    np.testing.assert_array_equal([float(f"{value:.3f}") for value in np.ravel(values)], np.ravel(expected))


def ask_worker(request):
    """Exit code, answer and complaint of a worker that reads these bytes and then the end of its input."""
    done = subprocess.run([os.environ["VELKORAN_WORKER"]], input=request, capture_output=True, timeout=SECONDS)
    return done.returncode, done.stdout, done.stderr.decode()


class Values(unittest.TestCase):
    """Values beside those of the program, which have three decimals."""

    def compare(self, atoms, **options):
        words = {"method": "SemiEmpiricalMethod", "modify_exponents": "ModifySlaterExponents"}
        for quantity in Quantity:
            (outcome,) = run_jobs(make_job(quantity, atoms), **options)
            expected = run_program(quantity, atoms, **{words[name]: value for name, value in options.items()})
            self.assertEqual(list(outcome.status), [0])
            assert_rounded(outcome.values, expected)
            self.assertGreater(np.ptp(outcome.values), 10)  # not all of them 0

    def test_ethanol(self):
        self.compare(atoms_of("ethanol"))

    def test_second_row(self):
        self.compare(atoms_of("methanethiol"))

    def test_other_options(self):
        self.compare(atoms_of("fluoromethane"), method=1, modify_exponents=False)

    def test_ion(self):
        atoms = atoms_of("ammonium")
        (outcome,) = run_jobs(make_job(Quantity.COUPLING, atoms, charge=1))
        assert_rounded(outcome.values, run_program(Quantity.COUPLING, atoms, TotalCharge=1))

    def test_selected_atoms(self):
        atoms = atoms_of("ethanol")
        for quantity in Quantity:
            whole, part = run_jobs(make_job(quantity, atoms), make_job(quantity, atoms, [6, 0, 2]))
            np.testing.assert_allclose(part.values[0], whole.values[0][[6, 0, 2]], rtol=0, atol=1e-5)

    def test_no_selected_atom(self):
        for quantity, shape in ((Quantity.SHIELDING, (2, 0)), (Quantity.COUPLING, (2, 0, 3))):
            variants = [[Change(OXYGEN, "BondingParameter", 30.0)]]
            empty, after = run_jobs(
                make_job(quantity, atoms_of("water"), [], variants=variants), make_job(quantity, atoms_of("water"))
            )
            self.assertEqual(empty.values.shape, shape)
            self.assertEqual([*empty.status, *after.status], [0, 0, 0])

    def test_field_that_does_not_converge(self):
        (outcome,) = run_jobs(make_job(Quantity.COUPLING, atoms_of("ethanol")), iteration_limit=2)
        self.assertTrue(outcome.status[0] & Status.FIELD)
        self.assertTrue(np.isfinite(outcome.values).all())


class Variants(unittest.TestCase):
    """Sets of changed parameters in one job."""

    CHANGES = (
        (Change(CARBON, "SlaterExponentP", 1.7), Change(HYDROGEN, "sDensity0", 0.5)),
        (Change(OXYGEN, "OrbitalEnergyS", -24.0),),
    )

    def changed(self, changes):
        """Table and records with the changes."""
        table = TABLE.copy()
        records = {name: dict(record) for name, record in RECORDS.items()}
        for change in changes:
            table[change.row, FIELDS.index(change.field)] = change.value
            records[ELEMENTS[change.row]][change.field] = change.value
        return table, records

    def test_variant_is_a_run_with_the_changed_table(self):
        atoms = atoms_of("ethanol")
        for quantity in Quantity:
            (outcome,) = run_jobs(make_job(quantity, atoms, variants=self.CHANGES))
            for number, changes in enumerate(((), *self.CHANGES)):
                table, records = self.changed(changes)
                (alone,) = run_jobs(make_job(quantity, atoms), table=table)
                np.testing.assert_array_equal(outcome.values[number], alone.values[0])
                assert_rounded(outcome.values[number], run_program(quantity, atoms, records))

    def test_every_field_has_its_place(self):
        # a coupling is proportional to both densities and both g factors, a field of another type has no effect
        atoms = atoms_of("water")
        names = ("sDensity0", "gFactor")
        changes = [[Change(OXYGEN, name, 2 * RECORDS["O"][name])] for name in names]
        changes += [[Change(CARBON, name, 1.0)] for name in FIELDS]
        (outcome,) = run_jobs(make_job(Quantity.COUPLING, atoms, variants=changes))
        oxygen = [atom.element for atom in atoms].index("O")
        first, *others = outcome.values
        protons = [place for place in range(3) if place != oxygen]
        for doubled in others[:2]:
            np.testing.assert_allclose(doubled[oxygen][protons], 2 * first[oxygen][protons], rtol=1e-12)
            np.testing.assert_array_equal(doubled[protons[0], protons[1]], first[protons[0], protons[1]])
        for same in others[2:]:
            np.testing.assert_array_equal(same, first)

    def test_each_field_that_a_run_uses_has_an_effect(self):
        names = [name for name in FIELDS if name not in ("OrbitalEnergyD", "SlaterExponentD", "AtomHeat")]
        names = [name for name in names if not name.startswith("IsolatedEnergy")]
        changes = [[Change(OXYGEN, name, 1.01 * RECORDS["O"][name])] for name in names]
        (outcome,) = run_jobs(make_job(Quantity.COUPLING, atoms_of("water"), variants=changes))
        different = {row.tobytes() for row in outcome.values}
        self.assertEqual(len(different), len(names) + 1)

    def test_refused_variant_costs_only_itself(self):
        refused = (Change(HYDROGEN, "SlaterExponentS", -1.0),)
        sound = self.CHANGES[1]
        for quantity in Quantity:
            job = make_job(quantity, atoms_of("ethanol"), variants=(sound, refused, refused, sound, refused))
            (outcome,) = run_jobs(job)
            (expected,) = run_jobs(dataclasses.replace(job, variants=(sound,)))
            self.assertEqual(list(outcome.status), [0, 0, Status.REFUSED, Status.REFUSED, 0, Status.REFUSED])
            self.assertTrue(np.isnan(outcome.values[[2, 3, 5]]).all())
            np.testing.assert_array_equal(outcome.values[[0, 1, 4]], expected.values[[0, 1, 1]])

    def test_parameters_that_are_no_numbers(self):
        # nothing to be refused, nothing to be had either, and what follows is unharmed
        for value in (np.nan, np.inf, 1e300):
            changes = ((Change(OXYGEN, "SlaterExponentS", value),), ())
            (outcome,) = run_jobs(make_job(Quantity.COUPLING, atoms_of("water"), variants=changes))
            self.assertNotEqual(outcome.status[1], 0)
            self.assertEqual(outcome.status[2], 0)
            np.testing.assert_array_equal(outcome.values[2], outcome.values[0])

    def test_refused_table_with_sound_variants(self):
        table = TABLE.copy()
        table[HYDROGEN, FIELDS.index("SlaterExponentS")] = 0.0
        mended = (Change(HYDROGEN, "SlaterExponentS", 1.2),)
        job = make_job(Quantity.SHIELDING, atoms_of("water"), variants=(mended,))
        (outcome,) = run_jobs(job, table=table)
        (expected,) = run_jobs(dataclasses.replace(job, variants=()))
        self.assertEqual(list(outcome.status), [Status.REFUSED, 0])
        np.testing.assert_array_equal(outcome.values[1], expected.values[0])


class Molecules(unittest.TestCase):
    """Molecules that the method can't compute, and several of them."""

    def assert_refused(self, job):
        for quantity in Quantity:
            refused, water = run_jobs(
                dataclasses.replace(job, quantity=quantity), make_job(quantity, atoms_of("water"))
            )
            self.assertEqual([*refused.status, *water.status], [Status.REFUSED, 0])
            self.assertTrue(np.isnan(refused.values).all())
            self.assertTrue(np.isfinite(water.values).all())

    def test_odd_number_of_electrons(self):
        self.assert_refused(make_job(Quantity.SHIELDING, atoms_of("water")[:2]))

    def test_element_beyond_argon(self):
        job = make_job(Quantity.SHIELDING, atoms_of("methane"))
        self.assert_refused(dataclasses.replace(job, numbers=np.where(job.numbers == 6, 32, job.numbers)))

    def test_more_electrons_than_orbitals_hold(self):
        self.assert_refused(make_job(Quantity.SHIELDING, atoms_of("water"), charge=-6))

    def test_outcomes_stand_in_the_order_of_the_jobs(self):
        names = ["ethanol", "water", "methane", "fluoromethane", "ammonium", "water", "methanethiol", "ethanol"]
        jobs = [
            make_job(quantity, atoms_of(name), charge=int(name == "ammonium"), variants=Variants.CHANGES)
            for name in names
            for quantity in Quantity
        ]
        one, several = run_jobs(*jobs), run_jobs(*jobs, processes=4)
        for job, first, second in zip(jobs, one, several, strict=True):
            atoms = len(job.numbers)
            shape = (3, atoms) if job.quantity == Quantity.SHIELDING else (3, atoms, atoms)
            self.assertEqual((first.values.shape, list(first.status)), (shape, [0] * 3))
            self.assertEqual(first.values.tobytes(), second.values.tobytes())
            self.assertEqual(list(first.status), list(second.status))
        np.testing.assert_array_equal(one[0].values, one[-2].values)  # ethanol, first and last


class Requests(unittest.TestCase):
    """Bytes that make no request."""

    def setUp(self):
        variants = ((Change(OXYGEN, "SlaterExponentP", 2.3),), (Change(HYDROGEN, "SlaterExponentS", 1.1),))
        job = make_job(Quantity.SHIELDING, atoms_of("water"), variants=variants)
        self.request = request_bytes(job, TABLE, Options())
        self.selection = HEAD + 3 * ATOM
        self.changes = len(self.request) - 2 * 24

    def replaced(self, place, form, *values):
        data = bytearray(self.request)
        struct.pack_into(form, data, place, *values)
        return bytes(data)

    def with_head(self, **numbers):
        data = bytearray(self.request)
        for name, value in numbers.items():
            struct.pack_into("<i", data, 4 * HEAD_FIELDS.index(name), value)
        return bytes(data)

    def assert_refused(self, request, sentence):
        code, answer, complaint = ask_worker(request)
        self.assertEqual((code, answer), (1, b""))
        self.assertRegex(complaint, rf"^velkoran_worker: .*{sentence}.*\n$")

    def test_whole_request(self):
        code, answer, _ = ask_worker(self.request)
        self.assertEqual((code, len(answer)), (0, 3 * (8 + 3 * 8)))

    def test_no_request(self):
        self.assertEqual(ask_worker(b""), (0, b"", ""))

    def test_truncated(self):
        parts = (HEAD, self.selection, self.selection + 3 * 4, self.changes)
        lengths = {1, len(self.request) - 1, *parts, *(part - 1 for part in parts), *(part + 1 for part in parts)}
        for length in sorted(lengths):
            with self.subTest(length=length):
                self.assert_refused(self.request[:length], "end within one")

    def test_truncated_after_a_whole_one(self):
        code, answer, complaint = ask_worker(self.request + self.request[:20])
        self.assertEqual((code, len(answer)), (1, 3 * (8 + 3 * 8)))
        self.assertIn("end within one", complaint)

    def test_counts_out_of_range(self):
        for name in ("atoms", "selected", "types", "variants", "changes"):
            for count in (-1, -(2**31), 2**31 - 1):
                with self.subTest(name=name, count=count):
                    self.assert_refused(self.with_head(**{name: count}), "count")

    def test_no_atoms(self):
        self.assert_refused(self.with_head(atoms=0), "count")

    def test_numbers_out_of_range(self):
        for quantity in (0, 3, -1):
            self.assert_refused(self.with_head(quantity=quantity), "quantity")
        for number in (0, -6):
            self.assert_refused(self.replaced(HEAD, "<i", number), "element")
        for row in (-1, len(TABLE), 2**31 - 1):
            self.assert_refused(self.replaced(HEAD + ATOM + 4, "<i", row), "type")
        for atom in (-1, 3):
            self.assert_refused(self.replaced(self.selection, "<i", atom), "selects an atom")
        for change in ((2, 0, 0), (-1, 0, 0), (0, len(TABLE), 0), (0, -1, 0), (0, 0, len(FIELDS)), (0, 0, -1)):
            self.assert_refused(self.replaced(self.changes, "<3i", *change), "changes a parameter")

    def test_options_that_the_core_refuses(self):
        code, answer, _ = ask_worker(self.with_head(method=3))
        self.assertEqual(code, 0)
        self.assertEqual([answer[32 * k : 32 * k + 8] for k in range(3)], [struct.pack("<Q", Status.REFUSED)] * 3)


class DyingWorkers(unittest.TestCase):
    """Programs in the worker's place that end too early: nothing hangs, and the reason is told."""

    def run_script(self, commands, jobs=6, processes=2):
        with tempfile.TemporaryDirectory() as name:
            script = pathlib.Path(name) / "worker"
            script.write_text(f"#!/bin/sh\n{commands}\n")
            script.chmod(0o755)
            atoms = atoms_of("ethanol") * 40  # more bytes than a pipe holds
            work = [make_job(Quantity.COUPLING, atoms)] * jobs
            with WorkerPool(script, Options(), processes) as pool:
                return list(pool.run(work, TABLE))

    def test_worker_that_ends_at_once(self):
        with self.assertRaisesRegex(RuntimeError, "ended"):
            self.run_script("exit 0")

    def test_worker_that_ends_within_an_answer(self):
        with self.assertRaisesRegex(RuntimeError, "ended"):
            self.run_script("head -c 5000 >/dev/null; printf 12345678901; exit 1")

    def test_worker_that_is_killed(self):
        with self.assertRaisesRegex(RuntimeError, "ended"):
            self.run_script("kill -9 $$")

    def test_broken_job_leaves_the_pool_whole(self):
        water = make_job(Quantity.COUPLING, atoms_of("water"))
        broken = dataclasses.replace(water, types=water.types + len(TABLE))
        with self.assertRaisesRegex(RuntimeError, "ended"):
            run_jobs(broken, water, water, processes=2)
        with self.assertRaises(ValueError):
            run_jobs(dataclasses.replace(water, variants=[[Change(0, "Unknown", 1.0)]]))
