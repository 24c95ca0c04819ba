# SPDX-License-Identifier: MIT
"""Keeps what the coordinates say about atoms that the structural formula doesn't tell apart.

Of the two protons of a CH2 group, or the two ends of a double bond, each has its own measured values. Conformers that
are made from the structural formula must have each on the same side as the stored coordinates.
"""
from rdkit import Chem
from rdkit.Chem import rdMolTransforms

from .atom_mapping import CHIRAL

CENTRES = ("C", "Si")  # whose handedness no conformer changes
LARGEST_PLANAR_DEVIATION = 30.0  # degrees of a torsion about a double bond
UNKNOWN = (Chem.BondStereo.STEREONONE, Chem.BondStereo.STEREOANY)


def tag_centres(mol: Chem.Mol, tagged: Chem.Mol) -> None:
    """Gives every centre of four neighbours without a tag that of the conformer of mol."""
    seen = Chem.Mol(mol)
    Chem.AssignAtomChiralTagsFromStructure(seen, replaceExistingTags=True)
    for atom, own in zip(tagged.GetAtoms(), seen.GetAtoms()):
        protons = sum(neighbour.GetSymbol() == "H" for neighbour in own.GetNeighbors())
        if atom.GetChiralTag() not in CHIRAL and own.GetChiralTag() in CHIRAL:
            if own.GetSymbol() in CENTRES and own.GetDegree() == 4 and protons < 3:
                atom.SetChiralTag(own.GetChiralTag())


def tag_double_bonds(mol: Chem.Mol, tagged: Chem.Mol) -> None:
    """Gives every open double bond of three neighbours at both ends without stereochemistry that of the conformer."""
    conformer = mol.GetConformer()
    for bond in tagged.GetBonds():
        if bond.GetBondType() != Chem.BondType.DOUBLE or bond.IsInRing() or bond.GetStereo() not in UNKNOWN:
            continue
        i, j = bond.GetBeginAtom(), bond.GetEndAtom()
        if i.GetSymbol() != "C" or j.GetSymbol() != "C" or i.GetDegree() != 3 or j.GetDegree() != 3:
            continue
        first = min(other.GetIdx() for other in i.GetNeighbors() if other.GetIdx() != j.GetIdx())
        last = min(other.GetIdx() for other in j.GetNeighbors() if other.GetIdx() != i.GetIdx())
        torsion = abs(rdMolTransforms.GetDihedralDeg(conformer, first, i.GetIdx(), j.GetIdx(), last))
        if min(torsion, 180 - torsion) < LARGEST_PLANAR_DEVIATION:
            bond.SetStereoAtoms(first, last)
            bond.SetStereo(Chem.BondStereo.STEREOCIS if torsion < 90 else Chem.BondStereo.STEREOTRANS)


def with_handedness(mol: Chem.Mol) -> Chem.Mol:
    """A copy without conformers for making others: its stereochemistry, and where it has none, that of the conformer
    of mol, if mol has one, also at centres and bonds with equal groups."""
    tagged = Chem.Mol(mol)
    if mol.GetNumConformers():
        tag_centres(mol, tagged)
        tag_double_bonds(mol, tagged)
    tagged.RemoveAllConformers()
    return tagged
