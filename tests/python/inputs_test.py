# SPDX-License-Identifier: MIT
"""The inputs that the package writes, against the manual pages and against what it reads back."""
import pathlib
import unittest

from velkoran_runs.inputs import (
    Atom,
    atoms_text,
    bonded_atoms,
    options_text,
    parameter_input,
    read_atoms,
    read_options,
    read_selection,
)
from velkoran_runs.spectrum_inputs import spectrum_input
from velkoran_runs.texts import read_text

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
WATER = bonded_atoms(
    ["O", "H", "H"], [(0, 0, 0), (0.7572, 0.5865, 0), (-0.7572, 0.5865, 0)], [(1, 2, "s"), (1, 3, "s")]
)


class ParameterInput(unittest.TestCase):
    def test_whole_text(self):
        text = parameter_input(atoms_text([Atom("H", (0, 0, -0.5)), Atom("C", (1.25, 0, 0), "CX", 0.5)]), {"A": 1}, 1)
        self.assertEqual(
            text,
            "A = 1\nNMRSelectionBegin\n1\nmol 1 atom 1\nNMRSelectionEnd\nAtomsBegin\n2\nmol 1\n"
            "atom 1 H H H - 0.0 0.00000000 0.00000000 -0.50000000 0\n"
            "atom 2 C C CX - 0.5 1.25000000 0.00000000 0.00000000 0\nendmol 1\nAtomsEnd\n",
        )

    def test_bonds_stand_at_both_atoms(self):
        self.assertEqual([atom.neighbours for atom in WATER], [((2, "s"), (3, "s")), ((1, "s"),), ((1, "s"),)])

    def test_what_is_written_is_read_back(self):
        molecules = [WATER, [Atom("He", (1, 2, 3), "X1", -0.25)]]
        places = [(2, 1), (1, 3)]
        text = parameter_input(atoms_text(*molecules), {"TotalCharge": -1}, places, [(1, 1)])
        self.assertEqual(
            read_atoms(text),
            [
                [Atom(a.element, a.position, a.type or a.element, a.charge, a.neighbours) for a in atoms]
                for atoms in molecules
            ],
        )
        self.assertEqual(read_selection(text), places)
        self.assertEqual(read_selection(text, "QuantumSelection"), [(1, 1)])
        self.assertEqual(read_options(text), {"TotalCharge": "-1"})

    def test_selection_of_all_or_of_the_first(self):
        atoms = atoms_text(WATER)
        self.assertEqual(read_selection(parameter_input(atoms, {})), [(1, 1), (1, 2), (1, 3)])
        self.assertEqual(read_selection(parameter_input(atoms, {}, 2)), [(1, 1), (1, 2)])
        self.assertEqual(read_selection(parameter_input(atoms, {}, 99)), [(1, 1), (1, 2), (1, 3)])

    def test_no_quantum_selection_unless_asked_for(self):
        self.assertNotIn("Quantum", parameter_input(atoms_text(WATER), {}))
        with self.assertRaisesRegex(ValueError, "QuantumSelectionBegin"):
            read_selection(parameter_input(atoms_text(WATER), {}), "QuantumSelection")

    def test_words_for_yes_and_no(self):
        self.assertEqual(
            options_text({"A": True, "B": False, "C": 1, "D": "1e-6"}), "A = yes\nB = no\nC = 1\nD = 1e-6\n"
        )

    def test_later_option_counts(self):
        self.assertEqual(read_options("A = 1\nB = x y \nA=2\n"), {"A": "2", "B": "x y"})

    def test_neighbour_that_is_not_there(self):
        for number in (0, 2):
            with self.assertRaisesRegex(ValueError, "Atom 1 of molecule 1"):
                atoms_text([Atom("H", (0, 0, 0), neighbours=((number, "s"),))])

    def test_damaged_texts(self):
        for text, said in [("", "AtomsBegin"), ("AtomsBegin\n1\n", "no atoms"), ("AtomsBegin\n1\nmol 1\n", "no atoms")]:
            with self.assertRaisesRegex(ValueError, said):
                read_atoms(text)
        with self.assertRaisesRegex(ValueError, "isn't an atom"):
            read_atoms("AtomsBegin\n1\nmol 1\natom 1 H H H - 0 0 0\n")
        with self.assertRaisesRegex(ValueError, "isn't an atom"):
            read_atoms("AtomsBegin\n1\natom 1 H H H - 0 0 0 0 0\n")
        with self.assertRaisesRegex(ValueError, "2 elements and 1 positions"):
            bonded_atoms(["H", "H"], [(0, 0, 0)], [])

    def test_examples_are_read(self):
        for path in sorted(EXAMPLES.glob("*/nmrparam.in")):
            text = read_text(path)
            count = int(text.split("AtomsBegin\n")[1].split()[0])
            self.assertEqual(sum(map(len, read_atoms(text))), count, path)
            self.assertTrue(read_selection(text), path)


class SpectrumInput(unittest.TestCase):
    def test_whole_text(self):
        text = spectrum_input([5.77, 3.95], [[0, 6.0], [6.0, 0]], 60, sizes=[1, 2], title="trichloroethane", weak=True)
        self.assertEqual(
            text.splitlines(),
            ["trichloroethane", "2", "1 1 1 2", "Frequency, MHz", "60", "Shifts, ppm", "5.77 3.95", "Couplings, Hz",
             "0 6", "6 0", "Minimal intensity", "0.001", "Weak coupling", "1"],
        )  # fmt: skip

    def test_masses_stand_before_sizes(self):
        self.assertEqual(spectrum_input([1], [[0]], 1, masses=[19], sizes=[3]).splitlines()[2], "19 3")

    def test_shapes(self):
        for shifts, couplings, more in [
            ([1, 2], [[0, 0]], {}),
            ([1, 2], [[0, 0], [0]], {}),
            ([1], [[0]], {"sizes": [1, 1]}),
            ([1], [[0]], {"masses": [1, 1]}),
            ([1], [[0]], {"title": "two\nlines"}),
        ]:
            with self.assertRaises(ValueError):
                spectrum_input(shifts, couplings, 60, **more)

    def test_longest_line(self):
        self.assertEqual(max(map(len, spectrum_input([1] * 128, [[0] * 128] * 128, 60).splitlines())), 511)
        with self.assertRaisesRegex(ValueError, "513 characters"):
            spectrum_input([11] + [1] * 127, [[0] * 128] * 128, 60, masses=[100] + [1] * 127)


if __name__ == "__main__":
    unittest.main()
