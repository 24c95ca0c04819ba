# SPDX-License-Identifier: MIT
"""Molecules, types and sites that the tests of the statistics share."""
import pathlib
import sys
from types import SimpleNamespace

import numpy as np
from rdkit import Chem

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "fitting"))

from velkoran_fit.molecule_records import Molecule, Shift  # noqa: E402
from velkoran_fit.sites import Site  # noqa: E402

TYPES = tuple(
    SimpleNamespace(name=name, parent=parent)
    for name, parent in (
        ("H", ""),
        ("HC", "H"),
        ("C", ""),
        ("C4", "C"),
        ("CM", "C4"),
        ("C3", "C"),
        ("O", ""),
        ("O1", "O"),
        ("O2", "O"),
    )
)
CHAINS = {
    "H": ("H",),
    "HC": ("H", "HC"),
    "C": ("C",),
    "C4": ("C", "C4"),
    "CM": ("C", "C4", "CM"),
    "C3": ("C", "C3"),
    "O": ("O",),
    "O1": ("O", "O1"),
    "O2": ("O", "O2"),
}


def type_of(atom):
    """By hand for molecules of C, H and O."""
    if atom.GetSymbol() == "H":
        return "HC" if atom.GetNeighbors()[0].GetSymbol() == "C" else "H"
    if atom.GetSymbol() == "O":
        return "O1" if atom.GetDegree() == 1 else "O2"
    hydrogens = sum(other.GetSymbol() == "H" for other in atom.GetNeighbors())
    return "C3" if atom.GetDegree() == 3 else "CM" if hydrogens >= 3 else "C4"


def from_smiles(smiles):
    """A molecule with explicit hydrogens and the types of its atoms."""
    mol = Chem.AddHs(Chem.MolFromSmiles(smiles))
    return mol, [type_of(atom) for atom in mol.GetAtoms()]


def measured(smiles, shifts, key=""):
    """A record with shifts {atom: ppm} of 13C, and its types."""
    mol, types = from_smiles(smiles)
    listed = tuple(Shift((atom,), "13C", ppm, "made up") for atom, ppm in shifts.items())
    symmetry = tuple(range(mol.GetNumAtoms()))
    record = Molecule(key or smiles, smiles, smiles, "made up", mol, symmetry, (), listed, (), (), "measured")
    return record, types


def site(key, ppm, shielding=float("nan"), features=None, chain=("C", "C4"), nucleus="13C", pair=-1, both=None):
    """A site with the features that are given."""
    counts = {"o0:C": 1.0} if features is None else features
    return Site(key, key, nucleus, (0,), chain, counts, chain, ppm, shielding, pair, both)


def alkyl_series(count, seed, zero=190.0, noise=0.0):
    """Sites whose shift is that of the physics, but 5 ppm more for each oxygen next to them, with normal noise."""
    random = np.random.default_rng(seed)
    sites = []
    for number in range(count):
        oxygens = float(number % 3)
        shielding = float(random.uniform(100.0, 180.0))
        ppm = zero - shielding + 5.0 * oxygens + noise * float(random.standard_normal())
        features = {"o0:C": 1.0, "n10:O": oxygens} if oxygens else {"o0:C": 1.0}
        sites.append(site(f"M{number}", ppm, shielding, features))
    return sites
