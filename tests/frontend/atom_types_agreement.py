#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Compares the atom types that C++ gives with those of Python, for thousands of molecules and for damaged tables.

Usage: python3 atom_types_agreement.py --program PATH [--every N] [unittest arguments]

Of the collections every N-th molecule is taken: 1, or more for a slow program.
"""
import argparse
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

from rdkit import Chem, RDConfig, RDLogger

sys.dont_write_bytecode = True
ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "fitting"))
from velkoran_fit import atom_types  # noqa: E402

TABLE = ROOT / "parameters" / "fitted" / "atom_types.csv"
# Collections that come with RDKit: of the National Cancer Institute, of ChEMBL and of ZINC.
COLLECTIONS = [
    pathlib.Path(RDConfig.RDDataDir, "NCI", "first_5K.smi"),
    pathlib.Path(RDConfig.RDContribDir, "FreeWilson", "data", "CHEMBL2321810.smi"),
    pathlib.Path(RDConfig.RDContribDir, "fraggle", "data", "ChEMBL_11265_actives.smi"),
    pathlib.Path(RDConfig.RDContribDir, "SA_Score", "data", "zim.100.txt"),
]
# Rows that break a rule of the table, below the row "C,C,,[#6],carbon".
DAMAGED_ROWS = [
    "CABC,C,C,[CX4],a name of four characters",
    "c4,C,C,[CX4],a small letter",
    ",C,C,[CX4],no name",
    "C,C,C,[CX4],the same name again",
    "C4,C,C9,[CX4],no such parent",
    "C4,C,C4,[CX4],its own parent",
    "C4,C,C,[CX4,no SMARTS",
    "C4,C,,[CX4],a second root",
    "N3,N,C,[NX3],a parent of another element",
    "C4,C,C,[CX4]",
    "C4,C,C,[CX4],text,text",
]


def collection_smiles():
    """The SMILES of all collections, and of the molecules that parameters are fitted to."""
    with open(ROOT / "fitting" / "data" / "nmr" / "fit.jsonl", encoding="utf-8") as stream:
        smiles = [json.loads(line)["smiles"] for line in stream]
    for path in COLLECTIONS:
        rows = [line.split() for line in path.read_text(encoding="utf-8").splitlines()]
        smiles += [row[0] for row in rows if row and row[0].lower() != "smiles"]
    return smiles


def types_of_program(smiles, table=TABLE):
    """What the C++ program says: its exit code, the words of each line, and its standard error."""
    command = [os.environ["TYPE_SMILES"], str(table)]
    text = "".join(f"{line}\n" for line in smiles)
    run = subprocess.run(command, input=text, capture_output=True, text=True, check=False)
    return run.returncode, run.stdout.splitlines(), run.stderr


def types_of_python(smiles, types):
    """A line of the same form, from Python."""
    molecule = Chem.MolFromSmiles(smiles)
    if molecule is None:
        return "error: no SMILES"
    try:
        return " ".join(atom_types.type_atoms(Chem.AddHs(molecule), types))
    except ValueError as error:
        return f"error: {error}"


class AtomTypesAgreement(unittest.TestCase):
    """The same types and the same errors on both sides."""

    @classmethod
    def setUpClass(cls):
        RDLogger.DisableLog("rdApp.*")
        cls.types = atom_types.read_atom_types(TABLE)

    def test_collections_get_the_same_types(self):
        smiles = collection_smiles()[:: int(os.environ["EVERY"])]
        code, lines, _ = types_of_program(smiles)
        self.assertEqual(code, 0)
        self.assertEqual(len(lines), len(smiles))
        typed = 0
        for text, line in zip(smiles, lines):
            self.assertEqual(line, types_of_python(text, self.types), text)
            typed += not line.startswith("error")
        self.assertGreater(typed, 0.9 * len(smiles))

    def test_element_without_types_is_named(self):
        code, lines, _ = types_of_program(["CCBr", "[K+].[Cl-]"])
        self.assertEqual(code, 0)
        self.assertEqual(lines, [f"error: there are no atom types for the element {name}" for name in ("Br", "K")])

    def test_damaged_tables_are_refused_alike(self):
        heading = "name,element,parent,smarts,description\n"
        with tempfile.TemporaryDirectory() as folder:
            table = pathlib.Path(folder, "table.csv")
            texts = [f"{heading}C,C,,[#6],carbon\n{row}\n" for row in DAMAGED_ROWS]
            texts.append(heading.replace("parent,", "") + "C,C,[#6],carbon\n")
            for text in texts:
                table.write_text(text, encoding="utf-8")
                code, lines, error = types_of_program(["C"], table)
                with self.subTest(text):
                    self.assertEqual((code, lines), (1, []))
                    with self.assertRaises(ValueError) as caught:
                        atom_types.read_atom_types(table)
                    self.assertEqual(error, f"type_smiles: {caught.exception}\n")

    def test_further_columns_change_nothing(self):
        heading, *rows = TABLE.read_text(encoding="utf-8").splitlines()
        with tempfile.TemporaryDirectory() as folder:
            table = pathlib.Path(folder, "table.csv")
            rows = [f"{row},{number},0.5" for number, row in enumerate(rows)]
            table.write_text("\n".join([f"{heading},values,sd_13C", *rows]) + "\n", encoding="utf-8")
            self.assertEqual(types_of_program(["CCO"], table), types_of_program(["CCO"]))
            self.assertEqual(atom_types.read_atom_types(table), self.types)


if __name__ == "__main__":
    parser = argparse.ArgumentParser(add_help=False, usage=__doc__)
    parser.add_argument("--program", required=True)
    parser.add_argument("--every", default="1")
    arguments, rest = parser.parse_known_args()
    os.environ["TYPE_SMILES"] = os.path.abspath(arguments.program)
    os.environ["EVERY"] = arguments.every
    unittest.main(argv=[sys.argv[0], *rest])
