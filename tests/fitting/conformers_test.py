# SPDX-License-Identifier: MIT
"""Geometries made from structural formulas: known conformers, kept stereochemistry, the same every time."""
import math
import pathlib
import sys
import tempfile
import unittest

import numpy as np
from rdkit import Chem
from rdkit.Chem import rdMolTransforms

sys.dont_write_bytecode = True
ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "fitting"))
from velkoran_fit.atom_mapping import contradictions, with_coordinates
from velkoran_fit.conformers import boltzmann_weights, make_geometries, smallest_deviation
from velkoran_fit.made_geometries import make_all
from velkoran_fit.molecules import read_molecules

MOLECULES = read_molecules(ROOT / "fitting" / "data")


def made(smiles):
    mol = Chem.AddHs(Chem.MolFromSmiles(smiles))
    return mol, make_geometries(mol)


def torsion(mol, geometry, atoms):
    return rdMolTransforms.GetDihedralDeg(with_coordinates(mol, geometry.coordinates).GetConformer(), *atoms)


class Conformers(unittest.TestCase):
    def test_butane(self):
        # Anti is 0.7 to 0.9 kcal/mol below gauche, of which there are two (Herrebout and others 1995: 0.67; gas).
        mol, geometries = made("CCCC")
        angles = [abs(torsion(mol, geometry, (0, 1, 2, 3))) for geometry in geometries]
        self.assertEqual(len(geometries), 3)
        self.assertGreater(angles[0], 175)
        self.assertTrue(all(55 < angle < 70 for angle in angles[1:]), angles)
        self.assertTrue(0.55 < geometries[0].weight < 0.75)
        self.assertAlmostEqual(geometries[1].weight, geometries[2].weight, places=2)

    def test_cyclohexane_is_a_chair(self):
        mol, geometries = made("C1CCCCC1")
        self.assertEqual(len(geometries), 1)
        angles = [torsion(mol, geometries[0], [(k + i) % 6 for i in range(4)]) for k in range(6)]
        self.assertTrue(all(50 < abs(angle) < 60 for angle in angles), angles)
        self.assertTrue(all(a * b < 0 for a, b in zip(angles, angles[1:])))

    def test_axial_methyl_group_is_rarer(self):
        # Methylcyclohexane: equatorial by 1.74 kcal/mol (Booth, Everett 1976), that is 95 %.
        mol, geometries = made("CC1CCCCC1")
        anti = sum(one.weight for one in geometries if abs(torsion(mol, one, (0, 1, 2, 3))) > 150)
        self.assertTrue(0.85 < anti < 0.99, anti)

    def test_weights(self):
        for smiles in ("CCCC", "OCCO", "CC(N)C(=O)O"):
            weights = [geometry.weight for geometry in made(smiles)[1]]
            self.assertAlmostEqual(sum(weights), 1.0)
            self.assertEqual(weights, sorted(weights, reverse=True))
            self.assertLessEqual(len(weights), 10)
        low, high = boltzmann_weights([0.0, 1.0], 298.15)
        self.assertAlmostEqual(high / low, math.exp(-4184 / (8.314463 * 298.15)), places=5)

    def test_the_same_every_time(self):
        first, second = made("CCOC(=O)C")[1], made("CCOC(=O)C")[1]
        self.assertEqual(len(first), len(second))
        for one, other in zip(first, second):
            np.testing.assert_array_equal(one.coordinates, other.coordinates)

    def test_small_molecules_have_geometries(self):
        for smiles in ("[H][H]", "N#N", "[C-]#[O+]", "F", "C", "C=C=O", "O=P(Cl)(Cl)Cl", "P12P3P1P23"):
            self.assertTrue(made(smiles)[1], smiles)

    def test_deviation_doesnt_see_rotation_but_mirroring(self):
        points = np.array([[0.0, 0, 0], [1, 0, 0], [0, 2, 0], [0, 0, 3]])
        turned = points @ np.array([[0, 1, 0], [0, 0, 1], [1, 0, 0]]) + 5
        order = [(0, 1, 2, 3)]
        self.assertAlmostEqual(smallest_deviation(points, turned, order), 0.0, places=6)
        self.assertGreater(smallest_deviation(points, points * [1, 1, -1], order), 0.5)


class Handedness(unittest.TestCase):
    def test_stereochemistry_of_the_smiles_is_kept(self):
        for smiles in ("C[C@H](N)C(=O)O", "C[C@@H](O)[C@H](C)Cl", "C/C=C\\Cl", "C/C=C/Cl", "C[C@H]1CC[C@@H](C)CC1"):
            mol, geometries = made(smiles)
            self.assertTrue(geometries)
            for geometry in geometries:
                self.assertEqual(contradictions(with_coordinates(mol, geometry.coordinates))[1:], (0, 0), smiles)

    def side(self, coordinates, centre, others):
        """The sign of the volume of three neighbours about a centre."""
        return np.sign(np.linalg.det(coordinates[list(others)] - coordinates[centre]))

    def test_protons_of_a_methylene_group_stay_on_their_sides(self):
        # 2-Chlorobutane, the two protons of CH2: which one is pro-R can't depend on the conformer.
        mol = Chem.AddHs(Chem.MolFromSmiles("C[C@H](Cl)CC"))
        stored = make_geometries(mol)[0].coordinates
        for coordinates in (stored, self.with_exchanged(mol, stored, 3)):
            again = make_geometries(with_coordinates(mol, coordinates))
            others = [atom.GetIdx() for atom in mol.GetAtomWithIdx(3).GetNeighbors()][-3:]
            for geometry in again:
                self.assertEqual(self.side(geometry.coordinates, 3, others), self.side(coordinates, 3, others))

    def with_exchanged(self, mol, coordinates, carbon):
        """The coordinates with the two protons of a carbon atom exchanged."""
        one, other = [atom.GetIdx() for atom in mol.GetAtomWithIdx(carbon).GetNeighbors() if atom.GetSymbol() == "H"]
        exchanged = coordinates.copy()
        exchanged[[one, other]] = coordinates[[other, one]]
        return exchanged

    def test_protons_of_a_vinyl_group_stay_on_their_sides(self):
        mol = Chem.AddHs(Chem.MolFromSmiles("C=CCl"))
        stored = make_geometries(mol)[0].coordinates
        for coordinates in (stored, self.with_exchanged(mol, stored, 0)):
            (geometry,) = make_geometries(with_coordinates(mol, coordinates))
            for proton in (3, 4):
                near = [
                    np.linalg.norm(points[proton] - points[2]) < 3.2 for points in (coordinates, geometry.coordinates)
                ]
                self.assertEqual(near[0], near[1])


class File(unittest.TestCase):
    def test_second_reading_gives_the_same_without_making(self):
        few = [one for one in MOLECULES if one.mol.GetNumAtoms() < 7][:8]
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "made.npz"
            first = make_all(few, 2, path)
            bytes_then = path.read_bytes()
            second = make_all(few, 1, path)
            self.assertEqual(path.read_bytes(), bytes_then)
        for molecule, one, other in zip(few, first, second):
            self.assertEqual(len(one), len(other))
            for a, b in zip(one, other):
                self.assertEqual(a.weight, b.weight)
                np.testing.assert_array_equal(a.coordinates, b.coordinates)
                self.assertEqual(a.coordinates.shape, (molecule.mol.GetNumAtoms(), 3))


if __name__ == "__main__":
    unittest.main()
