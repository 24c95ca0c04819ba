# SPDX-License-Identifier: MIT
"""The correction of shifts and its file, on sites whose law is known."""
import dataclasses
import math
import pathlib
import tempfile
import unittest

import numpy as np
from rdkit import Chem
from small_molecules import TYPES, alkyl_series, from_smiles, measured, site
from velkoran_fit import correction, references_file
from velkoran_fit.correction import CorrectionSettings, fit_correction, fit_nucleus, predict
from velkoran_fit.sites import deviations, with_shieldings
from velkoran_fit.uncertainty import Uncertainty

WIDTH = {"13C": Uncertainty((0.0,), (2.5,), {})}
SERIES = ("C", "CC", "CCC", "CO", "CCO", "COC", "CC(C)C", "CC=O", "C=C", "CC(=O)C", "OCCO", "CC(=O)O")


def fitted():
    """A correction learnt from a few molecules, their shieldings being 180 less twice the atom's number."""
    records, types, shieldings = [], [], []
    for smiles in SERIES:
        mol, own = from_smiles(smiles)
        carbons = [atom.GetIdx() for atom in mol.GetAtoms() if atom.GetSymbol() == "C"]
        values = np.array([180.0 - 2.0 * atom for atom in range(mol.GetNumAtoms())])
        oxygens = {atom: sum(o.GetSymbol() == "O" for o in mol.GetAtomWithIdx(atom).GetNeighbors()) for atom in carbons}
        record, _ = measured(smiles, {atom: 190.0 - values[atom] + 40.0 * oxygens[atom] for atom in carbons})
        records.append(record)
        types.append(own)
        shieldings.append(values)
    return fit_correction(records, types, shieldings, CorrectionSettings(TYPES, WIDTH))


class Nucleus(unittest.TestCase):
    def test_law_comes_back(self):
        own = fit_nucleus(alkyl_series(90, 1, noise=0.1))
        self.assertEqual(own.slope, 1.0)
        for oxygens in (0.0, 2.0):
            value, _ = correction.corrected_shift(own, ("C", "C4"), {"o0:C": 1.0, "n10:O": oxygens}, 150.0)
            self.assertAlmostEqual(value, 40.0 + 5.0 * oxygens, delta=0.5)

    def test_shieldings_that_say_nothing(self):
        random = np.random.default_rng(2)
        sites = [
            dataclasses.replace(one, shielding=float(random.uniform(-5000.0, 5000.0)), ppm=one.ppm / 10.0)
            for one in alkyl_series(60, 2)
        ]
        own = fit_nucleus(sites)
        values = [correction.corrected_shift(own, ("C", "C4"), {"o0:C": 1.0}, one)[0] for one in (-4000.0, 4000.0)]
        self.assertEqual(own.slope, 0.0)
        self.assertLess(abs(values[0] - values[1]), 5.0)

    def test_nonsense_is_cut_off(self):
        own = fit_nucleus(alkyl_series(60, 3))
        far, further = (correction.corrected_shift(own, ("C", "C4"), {"o0:C": 1.0}, one)[0] for one in (1e4, 1e6))
        self.assertEqual(far, further)

    def test_given_zero(self):
        self.assertEqual(fit_nucleus(alkyl_series(30, 4), 0.0).zero, 0.0)


class Predictions(unittest.TestCase):
    def test_molecule_that_was_not_seen(self):
        mol, types = from_smiles("CCCO")
        found = predict(fitted(), mol, types, [170.0] * mol.GetNumAtoms())
        self.assertGreater(found[2].shift, found[1].shift + 20.0)
        self.assertEqual(found[0].uncertainty, 2.5)
        self.assertTrue(math.isnan(found[3].shift))  # oxygen was never measured

    def test_correction_is_what_the_physics_lacks(self):
        mol, types = from_smiles("CCO")
        learnt = fitted()
        one = predict(learnt, mol, types, [170.0] * mol.GetNumAtoms())[0]
        self.assertAlmostEqual(one.shift - one.correction, learnt.nuclei["13C"].zero - 170.0, places=9)

    def test_failed_run_still_has_a_shift(self):
        mol, types = from_smiles("CCO")
        one = predict(fitted(), mol, types, [math.nan] * mol.GetNumAtoms())[0]
        self.assertFalse(math.isnan(one.shift))
        self.assertTrue(math.isnan(one.correction))

    def test_order_of_atoms_does_not_matter(self):
        mol, types = from_smiles("CC(=O)OCC")
        order = list(range(mol.GetNumAtoms()))[::-1]
        shieldings = [150.0 + atom for atom in range(mol.GetNumAtoms())]
        learnt = fitted()
        plain = predict(learnt, mol, types, shieldings)
        turned = predict(
            learnt,
            Chem.RenumberAtoms(mol, order),
            [types[atom] for atom in order],
            [shieldings[atom] for atom in order],
        )
        for place, atom in enumerate(order):
            if mol.GetAtomWithIdx(atom).GetSymbol() == "C":
                self.assertAlmostEqual(turned[place].shift, plain[atom].shift, places=9)

    def test_unequal_numbers(self):
        with self.assertRaises(ValueError):
            fit_correction([], [[]], [], CorrectionSettings(TYPES))


class Pairs(unittest.TestCase):
    SITES = [
        site("M", 0.0, 28.0, nucleus="1H", pair=0, both=(1.0, 3.0)),
        site("M", 0.0, 30.0, nucleus="1H", pair=0, both=(1.0, 3.0)),
    ]

    def test_less_shielded_one_gets_the_larger_shift(self):
        self.assertEqual([one.ppm for one in with_shieldings(self.SITES, np.array([28.0, 30.0]))], [3.0, 1.0])
        self.assertEqual([one.ppm for one in with_shieldings(self.SITES, np.array([30.0, 28.0]))], [1.0, 3.0])
        self.assertEqual([one.ppm for one in with_shieldings(self.SITES, np.array([30.0, 30.0]))], [2.0, 2.0])

    def test_are_compared_by_size(self):
        for shifts, expected in (((1.5, 2.5), (0.5, -0.5)), ((2.5, 1.5), (-0.5, 0.5))):
            np.testing.assert_allclose(deviations(self.SITES, np.array(shifts)), expected)


class File(unittest.TestCase):
    def test_there_and_back(self):
        learnt = fitted()
        mol, types = from_smiles("CC(=O)OCC")
        values = [160.0] * mol.GetNumAtoms()
        with tempfile.TemporaryDirectory() as folder:
            paths = [pathlib.Path(folder, name) for name in ("first.json", "second.json")]
            for path in paths:
                references_file.write_references(path, references_file.References(learnt, learnt, {"a": "0"}))
            self.assertEqual(paths[0].read_bytes(), paths[1].read_bytes())
            back = references_file.read_references(paths[0], TYPES)
        self.assertEqual(back.parameter_files, {"a": "0"})
        for one, other in zip(predict(learnt, mol, types, values), predict(back.shifts, mol, types, values)):
            np.testing.assert_allclose(dataclasses.astuple(one), dataclasses.astuple(other), rtol=1e-4, atol=1e-3)

    def test_unknown_format(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "references.json")
            path.write_text('{"format": 99}', encoding="utf-8")
            with self.assertRaisesRegex(ValueError, "format 99"):
                references_file.read_references(path, TYPES)

    def test_hash(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "empty")
            path.write_bytes(b"")
            known = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"  # FIPS 180, no bytes
            self.assertEqual(references_file.hashes([path]), {"empty": known})


if __name__ == "__main__":
    unittest.main()
