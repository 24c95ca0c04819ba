# SPDX-License-Identifier: MIT
"""The measured molecules: atoms and coordinates belong together, values belong to the right atoms, scales are right."""
import csv
import pathlib
import sys
import unittest

import numpy as np
from rdkit import Chem

sys.dont_write_bytecode = True
ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "fitting"))
from velkoran_fit.atom_mapping import contradictions, map_atoms
from velkoran_fit.molecules import read_molecules
from velkoran_fit.nmr_rows import read_couplings, read_pairs, read_shifts
from velkoran_fit.shift_scales import shift_of_shielding

DATA = ROOT / "fitting" / "data"
MOLECULES = read_molecules(DATA)


def named(name, source):
    return next(one for one in MOLECULES if one.name == name and one.source == source)


def shift_of(molecule, nucleus, atoms):
    return next(one for one in molecule.shifts if one.nucleus == nucleus and set(one.atoms) == set(atoms))


def row_of(smiles, classes, **more):
    """A line of fit.jsonl without coordinates, and its molecule with atoms in the order of the SMILES."""
    mol = Chem.AddHs(Chem.MolFromSmiles(smiles))
    row = {
        "cls": classes,
        "solvent": {"1H": "CDCl3"},
        "source": "",
        "shifts": [],
        "ambiguous": [],
        "J": [],
        "Jinfo": [],
    }
    return {**row, **more}, mol


class Mapping(unittest.TestCase):
    def test_bonds_have_lengths_of_bonds(self):
        # A wrong order of the atoms would make bonds of many Angstrom; 0.6 is below H2, 2.4 above Si-Si and P-S.
        for molecule in MOLECULES:
            for geometry in molecule.geometries:
                for bond in molecule.mol.GetBonds():
                    ends = geometry.coordinates[[bond.GetBeginAtomIdx(), bond.GetEndAtomIdx()]]
                    length = np.linalg.norm(ends[0] - ends[1])
                    self.assertTrue(0.6 < length < 2.4, f"{molecule.name}: {length:.2f}")

    def test_classes_hold_one_element_and_one_number_of_neighbours(self):
        for molecule in MOLECULES:
            self.assertEqual(len(molecule.symmetry), molecule.mol.GetNumAtoms())
            kinds = {}
            for own, atom in zip(molecule.symmetry, molecule.mol.GetAtoms()):
                kinds.setdefault(own, set()).add((atom.GetSymbol(), atom.GetDegree()))
            self.assertTrue(all(len(kind) == 1 for kind in kinds.values()), molecule.name)

    def test_measured_atoms_are_of_the_nucleus(self):
        for molecule in MOLECULES:
            for value in [*molecule.shifts, *molecule.pairs]:
                atoms = value.atoms if hasattr(value, "atoms") else value.first + value.second
                symbols = {molecule.mol.GetAtomWithIdx(atom).GetSymbol() for atom in atoms}
                self.assertEqual(symbols, {value.nucleus.lstrip("0123456789")}, molecule.name)

    def test_coupled_atoms_are_at_the_number_of_bonds_of_the_kind(self):
        for molecule in MOLECULES:
            distances = Chem.GetDistanceMatrix(molecule.mol)
            for coupling in molecule.couplings:
                lengths = {int(distances[i][j]) for i, j in coupling.atom_pairs}
                self.assertEqual(lengths, {int(coupling.kind[0])}, f"{molecule.name} {coupling.kind}")

    def test_stereochemistry_of_the_smiles_agrees_with_the_coordinates(self):
        # One bicyclobutane is the exception: its coordinates are those of another diastereomer.
        differing = [one.name for one in MOLECULES if one.geometries and any(contradictions(one.mol)[1:])]
        self.assertLessEqual(len(differing), 1, differing)

    def test_coordinates_of_the_other_hand_are_mirrored(self):
        molecule = next(one for one in MOLECULES if one.geometries and contradictions(one.mol)[0] == 1)
        elements = [atom.GetSymbol() for atom in molecule.mol.GetAtoms()]
        mirrored = map_atoms(molecule.smiles, elements, molecule.geometries[0].coordinates * [-1, 1, 1])
        self.assertTrue(mirrored.mirrored)
        self.assertEqual(contradictions(mirrored.mol), (1, 0, 0))

    def test_coordinates_of_another_molecule_are_refused(self):
        ethanol = named("C2H5OH", "literature")
        elements = [atom.GetSymbol() for atom in ethanol.mol.GetAtoms()]
        with self.assertRaisesRegex(ValueError, "COC"):
            map_atoms("COC", elements, ethanol.geometries[0].coordinates)


class Rows(unittest.TestCase):
    # Ethanol, atoms C C O H H H H H H: classes of CH3 and CH2.
    CLASSES = [5, 4, 3, 0, 0, 0, 1, 1, 2]

    def test_shifts_of_a_class_become_one(self):
        row, _ = row_of("CCO", self.CLASSES, shifts=[[3, "1H", 1.2], [4, "1H", 1.2], [6, "1H", 3.7]])
        values = {shift.atoms: shift.ppm for shift in read_shifts(row)}
        self.assertEqual(values, {(3, 4, 5): 1.2, (6, 7): 3.7})

    def test_different_shifts_of_a_class_stay_apart(self):
        row, _ = row_of("CCO", self.CLASSES, shifts=[[6, "1H", 3.6], [7, "1H", 3.8]])
        self.assertEqual({shift.atoms: shift.ppm for shift in read_shifts(row)}, {(6,): 3.6, (7,): 3.8})

    def test_protons_in_heavy_water_keep_their_couplings_alone(self):
        row, mol = row_of(
            "CCO",
            self.CLASSES,
            solvent={"1H": "D2O buffer pH 7.4"},
            shifts=[[3, "1H", 1.2], [0, "13C", 18.0]],
            ambiguous=[[[6, 7], [3.6, 3.7]]],
            J=[[3, 6, 7.1]],
            Jinfo=[["3J(HH)", False, False]],
        )
        self.assertEqual([shift.nucleus for shift in read_shifts(row)], ["13C"])
        self.assertEqual(read_pairs(row), ())
        self.assertEqual(len(read_couplings(row, mol)), 1)
        gissmo = [one for one in MOLECULES if one.source.startswith("GISSMO")]
        self.assertGreater(len(gissmo), 200)
        self.assertFalse([one.name for one in gissmo if one.shifts or one.pairs])

    def test_methyl_groups_turn(self):
        row, mol = row_of("CCO", self.CLASSES, J=[[3, 6, 7.1]], Jinfo=[["3J(HH)", False, False]])
        (coupling,) = read_couplings(row, mol)
        self.assertEqual(coupling.atom_pairs, ((3, 6), (4, 6), (5, 6)))

    def test_couplings_of_unassigned_protons_are_averaged(self):
        # CHCl2-CH2Cl, atoms C C Cl Cl Cl H H H: one proton of CH, two of CH2.
        info = [["3J(HH)", False, True]] * 2
        row, mol = row_of("C(Cl)(Cl)CCl", [0, 1, 1, 2, 3, 4, 5, 5], J=[[5, 6, 4.0], [5, 7, 10.0]], Jinfo=info)
        (coupling,) = read_couplings(row, mol)
        self.assertEqual((coupling.hertz, coupling.atom_pairs, coupling.ambiguous), (7.0, ((5, 6), (5, 7)), False))

    def test_cis_and_trans_protons_of_a_vinyl_group_stay_apart(self):
        # CH2=CHCl, atoms C C Cl H H H.
        info = [["3J(HH)", True, False]] * 2
        row, mol = row_of("C=CCl", [0, 1, 2, 3, 3, 4], J=[[3, 5, 7.3], [4, 5, 14.8]], Jinfo=info)
        self.assertEqual([one.hertz for one in read_couplings(row, mol)], [7.3, 14.8])

    def test_geminal_coupling_that_no_spectrum_shows_is_dropped(self):
        row, mol = row_of("CCO", self.CLASSES, J=[[3, 4, -7.1]], Jinfo=[["2J(HH)", True, False]])
        self.assertEqual(read_couplings(row, mol), ())
        row, mol = row_of("CCO", self.CLASSES, J=[[6, 7, -10.5]], Jinfo=[["2J(HH)", True, True]])
        self.assertEqual([one.hertz for one in read_couplings(row, mol)], [-10.5])


class Scales(unittest.TestCase):
    def test_references_are_at_zero(self):
        standard = named("tetramethylsilane", "literature")
        for nucleus, atoms in (("13C", (0, 2, 3, 4)), ("29Si", (1,))):
            self.assertAlmostEqual(shift_of(standard, nucleus, atoms).ppm, 0.0)
        self.assertEqual(shift_of(named("CFCl3", "literature"), "19F", (0,)).ppm, 0.0)

    def test_absolute_shieldings_agree_with_shifts_in_solution(self):
        # Gas and solution differ by some ppm, and by more for hydrogen-bonded liquids.
        self.assertTrue(128 < shift_of_shielding("13C", 57.2) < 131.5)  # benzene, 128.4 in CDCl3
        self.assertAlmostEqual(shift_of_shielding("1H", 23.54), 7.36, delta=0.15)  # benzene
        self.assertAlmostEqual(shift_of_shielding("15N", -135.8), 380.4, places=3)  # nitromethane
        self.assertAlmostEqual(shift_of_shielding("15N", -61.6), 309.6, delta=5)  # N2 in benzene
        self.assertAlmostEqual(shift_of_shielding("17O", 344.0), -36.1, places=3)  # water vapour
        self.assertAlmostEqual(shift_of_shielding("19F", 258.6), -62.5, delta=2)  # CF4 in CFCl3
        self.assertAlmostEqual(shift_of_shielding("31P", 594.4), -238, delta=30)  # PH3, liquid

    def test_solution_goes_before_gas(self):
        benzene = named("benzene", "literature")
        self.assertEqual(shift_of(benzene, "13C", range(6)).phase, "solution")
        self.assertTrue(128 < shift_of(benzene, "13C", range(6)).ppm < 130)
        self.assertEqual(shift_of(named("H2O", "literature"), "1H", (1, 2)).phase, "gas")

    def test_nitrogen_14_becomes_nitrogen_15(self):
        # The magnetogyric ratios are 1.934 and -2.713, in 10^7 rad/(T s).
        (coupling,) = named("NF3", "literature").couplings
        self.assertAlmostEqual(coupling.hertz, 155 * -2.713 / 1.934, delta=0.1)


class Recalled(unittest.TestCase):
    RANGES = {
        "1J(CH)": (100, 280), "1J(CC)": (10, 200), "2J(HH)": (-22, 45), "1J(PH)": (150, 750), "1J(NH)": (-110, -55),
        "1J(CF)": (-460, -150), "2J(CF)": (10, 60), "3J(CF)": (0, 20), "4J(CF)": (0, 6), "2J(PH)": (-25, 10),
        "3J(PH)": (0, 25), "1J(PC)": (-50, 200), "13C": (-10, 240), "15N": (-20, 950), "17O": (-60, 1700),
        "29Si": (-130, 50),
    }  # fmt: skip

    def test_every_line_says_that_it_is_from_memory(self):
        with open(DATA / "literature" / "recalled.csv", newline="", encoding="utf-8") as file:
            rows = list(csv.DictReader(file))
        self.assertGreater(len(rows), 300)
        self.assertEqual({row["confidence"] for row in rows}, {"recalled, unverified"})
        self.assertTrue(all(row["source"] for row in rows))
        keys = [(row["smiles_with_maps"], row["quantity"]) for row in rows]
        self.assertEqual(len(keys), len(set(keys)))

    def test_values_are_in_the_range_of_the_quantity(self):
        for molecule in MOLECULES:
            if molecule.source == "recalled":
                values = [(one.nucleus, one.ppm) for one in molecule.shifts]
                values += [(one.kind, one.hertz) for one in molecule.couplings]
                for quantity, value in values:
                    low, high = self.RANGES[quantity]
                    self.assertTrue(low < value < high, f"{molecule.name} {quantity} {value}")

    def test_one_value_for_one_quantity_of_the_same_atoms(self):
        for molecule in MOLECULES:
            if molecule.source == "recalled":
                own = [(one.nucleus, one.atoms) for one in molecule.shifts]
                own += [(one.kind, one.atom_pairs) for one in molecule.couplings]
                self.assertEqual(len(own), len(set(own)), molecule.name)

    def test_coupling_of_chloroform_and_dichloromethane(self):
        # A proton gains 25 to 30 Hz for each chlorine atom (Muller, Pritchard 1959): 125, 150, 178, 209.
        values = {one.smiles: one.couplings[0].hertz for one in MOLECULES if one.source == "recalled" and one.couplings}
        self.assertEqual((values["ClCCl"], values["ClC(Cl)Cl"]), (178.0, 209.0))


class LeftOut(unittest.TestCase):
    def test_every_line_names_a_row_that_is_there_and_is_gone(self):
        with open(DATA / "left_out.csv", newline="", encoding="utf-8") as file:
            rows = list(csv.DictReader(file))
        text = (DATA / "nmr" / "fit.jsonl").read_text(encoding="utf-8")
        known = {(one.name, one.source): one for one in MOLECULES}
        for row in rows:
            self.assertTrue(row["reason"])
            self.assertTrue(row["source"] == "literature" or f'"source":"{row["source"]}"' in text, row)
            molecule = known.get((row["name"], row["source"]))
            if molecule is not None and row["value"]:
                values = [(one.nucleus, one.ppm) for one in molecule.shifts]
                values += [(one.kind, one.hertz) for one in molecule.couplings]
                self.assertNotIn((row["quantity"], float(row["value"])), values)


if __name__ == "__main__":
    unittest.main()
