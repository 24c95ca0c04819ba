# SPDX-License-Identifier: MIT
"""Features of neighbourhoods, against counts by hand."""
import random
import unittest

import small_molecules
from rdkit import Chem
from velkoran_fit import neighbourhoods


def features_of(smiles, atom):
    mol, types = small_molecules.from_smiles(smiles)
    typed = neighbourhoods.typed_molecule(mol, types, small_molecules.CHAINS)
    return neighbourhoods.shift_features(typed, atom)


class Chains(unittest.TestCase):
    def test_from_the_root_down(self):
        self.assertEqual(neighbourhoods.type_chains(small_molecules.TYPES), small_molecules.CHAINS)

    def test_parent_that_is_no_type(self):
        orphan = small_molecules.SimpleNamespace(name="CX", parent="C9")
        with self.assertRaises(KeyError):
            neighbourhoods.type_chains([orphan])

    def test_short_chain_repeats_its_type(self):
        self.assertEqual(
            [neighbourhoods.label(("O", "O2"), level) for level in (0, 1, 2, "*")], ["O", "O2", "O2", "O2"]
        )


class Features(unittest.TestCase):
    def test_methyl_carbon_of_ethanol(self):
        counts = features_of("CCO", 0)
        expected = {
            "o0:C": 1, "o1:C4": 1, "o2:CM": 1,
            "n10:C": 1, "n10:H": 3, "n1*:C4": 1, "n20:O": 1, "n20:H": 2, "n30:H": 1,
            "x20:CM|O": 1, "x10:CM|H": 3,
            "p21:C4-C4-O2": 1, "p21:C4-C4-HC": 2, "p31:C4-C4-O2-H": 1,
            "e10:C(-C,-H,-H,-H)": 1, "e21:C4(-C4(-HC,-HC,-O2),-HC(),-HC(),-HC())": 1,
        }  # fmt: skip
        self.assertEqual({name: counts.get(name) for name in expected}, expected)
        self.assertNotIn("n40:H", counts)

    def test_signs_of_bonds(self):
        self.assertIn("p21:C4-C3=O1", features_of("CC(=O)C", 0))
        self.assertIn("e10:C(#C,-H)", features_of("C#C", 0))
        self.assertIn("p21:C3:C3:C3", features_of("c1ccccc1", 0))

    def test_ring_is_walked_both_ways(self):
        self.assertEqual(features_of("C1CC1", 0)["p31:C4-C4-C4-HC"], 4)

    def test_order_of_atoms_does_not_matter(self):
        mol, types = small_molecules.from_smiles("CC(=O)OCc1ccccc1O")
        order = list(range(mol.GetNumAtoms()))
        random.Random(5).shuffle(order)
        turned = neighbourhoods.typed_molecule(
            Chem.RenumberAtoms(mol, order), [types[atom] for atom in order], small_molecules.CHAINS
        )
        typed = neighbourhoods.typed_molecule(mol, types, small_molecules.CHAINS)
        for place, atom in enumerate(order):
            self.assertEqual(neighbourhoods.shift_features(turned, place), neighbourhoods.shift_features(typed, atom))

    def test_too_few_types(self):
        mol, types = small_molecules.from_smiles("CO")
        with self.assertRaises(ValueError):
            neighbourhoods.typed_molecule(mol, types[:-1], small_molecules.CHAINS)

    def test_average(self):
        self.assertEqual(neighbourhoods.averaged([{"a": 1.0}, {"a": 2.0, "b": 1.0}]), {"a": 1.5, "b": 0.5})


if __name__ == "__main__":
    unittest.main()
