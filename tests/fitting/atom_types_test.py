# SPDX-License-Identifier: MIT
"""The table of atom types: its structure, what it says of known molecules, and that drawings don't matter."""
import csv
import json
import pathlib
import random
import unittest

from rdkit import Chem, RDLogger

from velkoran_fit import atom_types
from velkoran_fit.neighbourhoods import type_chains

FOLDER = pathlib.Path(__file__).resolve().parent
ROOT = FOLDER.parents[1]
TABLE = ROOT / "parameters" / "fitted" / "atom_types.csv"
ELEMENTS = "H He Li Be B C N O F Ne Na Mg Al Si P S Cl Ar".split()
# Two drawings of one thing.
DRAWINGS = [
    ("CN(=O)=O", "C[N+](=O)[O-]"),
    ("O=N(=O)c1ccccc1", "[O-][N+](=O)c1ccccc1"),
    ("O=n1ccccc1", "[O-][n+]1ccccc1"),
    ("C[N+](C)([O-])C", "CN(C)(=O)C"),
    ("CS(=O)C", "C[S+]([O-])C"),
    ("CS(=O)(=O)C", "C[S+2]([O-])([O-])C"),
    ("CP(=O)(C)C", "C[P+]([O-])(C)C"),
    ("CP(=S)(C)C", "C[P+]([S-])(C)C"),
    ("CN=N#N", "CN=[N+]=[N-]"),
    ("C[N-][N+]#N", "CN=[N+]=[N-]"),
    ("C=N#N", "C=[N+]=[N-]"),
    ("[CH2-][N+]#N", "C=[N+]=[N-]"),
    ("[C-]#[O+]", "[C]=O"),
    ("CC([O-])=O", "CC(=O)[O-]"),
    ("OP(O)(O)=O", "O[P+](O)(O)[O-]"),
    ("[O-]P([O-])([O-])=O", "[O-][P+]([O-])([O-])[O-]"),
    ("NC(N)=[NH2+]", "[NH2+]=C(N)N"),
    ("Cn1cc[n+](C)c1", "C[n+]1ccn(C)c1"),
    ("C1=CC=CC=C1", "c1ccccc1"),
    ("CC1=C(F)C=CC=C1", "CC1=CC=CC=C1F"),
    ("C1=CNC=C1", "c1cc[nH]c1"),
    ("O=C1C=CNC=C1", "O=c1cc[nH]cc1"),
    ("C1=CC2=CC=CC=C2C=C1", "c1ccc2ccccc2c1"),
    ("C1=NC=C2NC=NC2=N1", "c1ncc2[nH]cnc2n1"),
]


def read(smiles):
    """A molecule with the hydrogens that are drawn, those with a map number among them, and all others."""
    options = Chem.SmilesParserParams()
    options.removeHs = False
    return Chem.AddHs(Chem.MolFromSmiles(smiles, options))


def read_rows():
    """The rows of the molecules that were typed by hand."""
    with open(FOLDER / "typed_atoms.csv", encoding="utf-8", newline="") as stream:
        return list(csv.DictReader(stream))


def measured_smiles(step):
    """Every so many molecules of those that parameters are fitted to."""
    with open(ROOT / "fitting" / "data" / "nmr" / "fit.jsonl", encoding="utf-8") as stream:
        return [json.loads(line)["smiles"] for line in list(stream)[::step]]


class AtomTypes(unittest.TestCase):
    """What the shipped table is and says."""

    @classmethod
    def setUpClass(cls):
        RDLogger.DisableLog("rdApp.*")
        cls.types = atom_types.read_atom_types(TABLE)

    def test_atoms_typed_by_hand(self):
        count = 0
        for row in read_rows():
            molecule = read(row["smiles"])
            names = atom_types.type_atoms(molecule, self.types)
            numbered = {atom.GetAtomMapNum(): names[atom.GetIdx()] for atom in molecule.GetAtoms()}
            expected = row["types"].split()
            with self.subTest(row["molecule"]):
                self.assertEqual([numbered[number + 1] for number in range(len(expected))], expected)
            count += len(expected)
        self.assertGreaterEqual(count, 150)

    def test_every_element_has_a_root_of_its_symbol(self):
        roots = {kind.element: kind.name for kind in self.types if not kind.parent}
        self.assertEqual(roots, {symbol: symbol.upper() for symbol in ELEMENTS})

    def test_names_begin_with_their_element_and_no_longer_symbol(self):
        symbols = sorted((symbol.upper() for symbol in ELEMENTS), key=len, reverse=True)
        for kind in self.types:
            first = next(symbol for symbol in symbols if kind.name.startswith(symbol))
            self.assertEqual(first, kind.element.upper(), kind.name)
            self.assertLessEqual(len(kind.name), 3)
            self.assertTrue(kind.description, kind.name)

    def test_every_line_of_parents_ends_at_the_root(self):
        chains = type_chains(self.types)
        for kind in self.types:
            line = chains[kind.name][::-1]
            self.assertEqual(line[-1], kind.element.upper())
            self.assertEqual(len(set(line)), len(line))
        self.assertEqual(chains["CMK"][-2::-1], ("CM", "C4", "C"))

    def test_a_pattern_lies_within_that_of_its_parent(self):
        molecules = [read(smiles) for smiles in measured_smiles(6)] + [read(row["smiles"]) for row in read_rows()]
        by_name = {kind.name: kind for kind in self.types}
        matched = set()
        for molecule in molecules:
            atoms = {kind.name: atom_types.matching_atoms(molecule, kind) for kind in self.types}
            for name, kind in by_name.items():
                symbols = {molecule.GetAtomWithIdx(atom).GetSymbol() for atom in atoms[name]}
                self.assertLessEqual(symbols, {kind.element}, name)
                if kind.parent:
                    self.assertLessEqual(atoms[name], atoms[kind.parent], f"{name}: {Chem.MolToSmiles(molecule)}")
                matched.update([name] if atoms[name] else [])
        rare = {symbol.upper() for symbol in "He Li Be B Ne Na Mg Al Ar".split()}
        self.assertEqual(set(by_name) - matched - rare, set(), "a pattern that matches nothing")

    def test_order_of_the_atoms_does_not_matter(self):
        shuffle = random.Random(1).shuffle
        for smiles in measured_smiles(10):
            molecule = read(smiles)
            names = atom_types.type_atoms(molecule, self.types)
            order = list(range(molecule.GetNumAtoms()))
            shuffle(order)
            shuffled = atom_types.type_atoms(Chem.RenumberAtoms(molecule, order), self.types)
            self.assertEqual(shuffled, [names[atom] for atom in order], smiles)

    def test_kekule_drawing_does_not_matter(self):
        for smiles in measured_smiles(10):
            molecule = read(smiles)
            drawn = Chem.Mol(molecule)
            Chem.Kekulize(drawn, clearAromaticFlags=True)
            Chem.SanitizeMol(drawn)
            self.assertEqual(
                atom_types.type_atoms(drawn, self.types), atom_types.type_atoms(molecule, self.types), smiles
            )

    def test_two_drawings_of_one_thing(self):
        for first, second in DRAWINGS:
            with self.subTest(first):
                one, other = (atom_types.type_atoms(read(smiles), self.types) for smiles in (first, second))
                self.assertEqual(sorted(one), sorted(other))

    def test_units_of_a_long_chain_are_alike(self):
        # RDKit gives up after 1000 matches unless it is told not to.
        fluorines = read(f"C{'CC(C(F)(F)F)' * 300}C")
        names = atom_types.type_atoms(fluorines, self.types)
        self.assertEqual({names[atom.GetIdx()] for atom in fluorines.GetAtoms() if atom.GetSymbol() == "F"}, {"FTQ"})
        rings = read(f"C{'CC(c1ccccc1)' * 300}C")
        names = atom_types.type_atoms(rings, self.types)
        self.assertEqual({names[atom.GetIdx()] for atom in rings.GetAromaticAtoms()}, {"C6C", "C6H"})

    def test_foreign_element_is_named(self):
        with self.assertRaisesRegex(ValueError, "no atom types for the element Br"):
            atom_types.type_atoms(read("CBr"), self.types)


if __name__ == "__main__":
    unittest.main()
