# SPDX-License-Identifier: MIT
"""Opponents without physics, on sets whose answer is known by hand."""
import math
import unittest

import numpy as np
import small_molecules  # finds the package
from velkoran_fit import coupling_sites, neighbourhoods, opponents


def spheres(smiles, atom):
    mol, types = small_molecules.from_smiles(smiles)
    typed = neighbourhoods.typed_molecule(mol, types, small_molecules.CHAINS)
    return opponents.sphere_names([chain[0] for chain in typed.chains], typed.neighbours, atom)


class Means(unittest.TestCase):
    MEANS = opponents.means_by_name([("C", "C4"), ("C", "C4"), ("C", "C3")], [10.0, 20.0, 120.0])

    def test_most_special_one_counts(self):
        self.assertEqual(opponents.most_special(self.MEANS, ("C", "C4")), 15.0)
        self.assertEqual(opponents.most_special(self.MEANS, ("C", "C4", "CM")), 15.0)
        self.assertEqual(opponents.most_special(self.MEANS, ("C", "C2")), 50.0)
        self.assertTrue(math.isnan(opponents.most_special(self.MEANS, ("N",))))


class Environments(unittest.TestCase):
    def test_where_two_carbons_begin_to_differ(self):
        both = zip(spheres("CCCC", 0), spheres("CCCO", 0))
        self.assertEqual([one == other for one, other in both], [True, True, True, False, False])

    def test_equivalent_atoms(self):
        self.assertEqual(spheres("CCC", 0), spheres("CCC", 2))


class Curves(unittest.TestCase):
    def test_angles_by_hand(self):
        places = np.array([[1.0, 0, 0], [0, 0, 0], [0, 0, 1.0], [0, 1.0, 1.0]])
        self.assertAlmostEqual(abs(coupling_sites.dihedral(places)), math.pi / 2)
        places[3] = [-1.0, 0, 1.0]
        self.assertAlmostEqual(abs(coupling_sites.dihedral(places)), math.pi)

    def test_curve_comes_back(self):
        angles = np.linspace(0.0, math.pi, 12)
        features = [{"k1:p": math.cos(one), "k2:p": math.cos(2 * one)} for one in angles]
        curves = opponents.angle_curves(features, [7.0 - math.cos(one) + 5.0 * math.cos(2 * one) for one in angles])
        self.assertAlmostEqual(opponents.curve_value(curves, {"k1:p": -1.0, "k2:p": 1.0}), 13.0)
        self.assertTrue(math.isnan(opponents.curve_value(curves, {"k1:q": 1.0, "k2:q": 1.0})))


class CouplingFeatures(unittest.TestCase):
    def features(self, pair, kind):
        mol, types = small_molecules.from_smiles("CO")
        typed = neighbourhoods.typed_molecule(mol, types, small_molecules.CHAINS)
        return coupling_sites.coupling_features(typed, pair, kind, ())

    def test_direction_does_not_matter(self):
        self.assertEqual(self.features((2, 5), "3J(HH)"), self.features((5, 2), "3J(HH)"))

    def test_counts_by_hand(self):
        counts = self.features((0, 2), "1J(CH)")
        self.assertEqual(counts["c1p:C4-HC"], 1.0)
        self.assertEqual((counts["t0:C4-HC|0|H"], counts["t0:C4-HC|0|O"]), (2.0, 1.0))


if __name__ == "__main__":
    unittest.main()
