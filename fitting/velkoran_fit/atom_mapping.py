# SPDX-License-Identifier: MIT
"""Gives the molecule of a SMILES the atom order of stored coordinates.

The graph of the SMILES is matched with that of the distances by elements and neighbours alone: bond orders can't be
seen in coordinates. Of several matches the one whose stereochemistry agrees with the coordinates is taken.
"""
from collections.abc import Sequence
from dataclasses import dataclass

import numpy as np
from rdkit import Chem
from rdkit.Geometry import Point3D

from .molecule_records import Coordinates

# Covalent radii, Angstrom (Cordero and others, Dalton Trans. 2008, 2832).
RADII = {"H": 0.31, "C": 0.76, "N": 0.71, "O": 0.66, "F": 0.57, "Si": 1.11, "P": 1.07, "S": 1.05, "Cl": 1.02}
# Longest bond in sums of radii: short enough for rings of four with sulfur, or else long enough for strained bonds.
REACHES = (1.18, 1.27)
Bonds = Sequence[tuple[int, int]]
MATCH_LIMIT = 2000
CHIRAL = (Chem.ChiralType.CHI_TETRAHEDRAL_CW, Chem.ChiralType.CHI_TETRAHEDRAL_CCW)
BOND_STEREO = (Chem.BondStereo.STEREOE, Chem.BondStereo.STEREOZ)


@dataclass(frozen=True)
class MappedMolecule:
    """mol has the stored atom order and the coordinates as its conformer, mirrored if that is what the SMILES says."""

    mol: Chem.Mol
    mirrored: bool
    differing_centres: int  # centres and double bonds whose coordinates contradict the SMILES


def distance_bonds(elements: Sequence[str], coordinates: Coordinates, reach: float) -> list[tuple[int, int]]:
    """Pairs of atoms nearer than reach times the sum of their covalent radii; coordinates (n, 3) in Angstrom."""
    radii = np.array([RADII[element] for element in elements])
    distances = np.linalg.norm(coordinates[:, None] - coordinates[None], axis=2)
    near = distances < reach * (radii[:, None] + radii[None])
    return [(int(i), int(j)) for i, j in zip(*np.nonzero(near)) if i < j]


def skeleton(elements: Sequence[str], bonds: Bonds) -> tuple[Chem.Mol, list[int], list[list[int]]]:
    """The heavy atoms (or all, without any) joined by single bonds, with the count of their hydrogens as isotope;
    the atom of each, and its hydrogens."""
    neighbours: list[list[int]] = [[] for _ in elements]
    for i, j in bonds:
        neighbours[i].append(j)
        neighbours[j].append(i)
    heavy = [i for i, element in enumerate(elements) if element != "H"] or list(range(len(elements)))
    place = {atom: k for k, atom in enumerate(heavy)}
    hydrogens = [[j for j in neighbours[i] if j not in place] for i in heavy]
    mol = Chem.RWMol()
    for i, own in zip(heavy, hydrogens):
        atom = Chem.Atom(elements[i])
        atom.SetNoImplicit(True)
        atom.SetIsotope(100 + len(own))
        mol.AddAtom(atom)
    for i, j in bonds:
        if i in place and j in place:
            mol.AddBond(place[i], place[j], Chem.BondType.SINGLE)
    return mol.GetMol(), heavy, hydrogens


def atom_orders(mol: Chem.Mol, elements: Sequence[str], stored_bonds: Bonds) -> list[list[int]]:
    """All orders (at most MATCH_LIMIT, hydrogens of one atom in one order): the atom of mol for each stored atom."""
    own_elements = [atom.GetSymbol() for atom in mol.GetAtoms()]
    own_bonds = [(bond.GetBeginAtomIdx(), bond.GetEndAtomIdx()) for bond in mol.GetBonds()]
    if sorted(own_elements) != sorted(elements):
        return []
    own, own_heavy, own_hydrogens = skeleton(own_elements, own_bonds)
    if len(stored_bonds) != len(own_bonds):
        return []
    stored, stored_heavy, stored_hydrogens = skeleton(elements, stored_bonds)
    orders = []
    for match in own.GetSubstructMatches(stored, uniquify=False, maxMatches=MATCH_LIMIT):
        order = [-1] * len(elements)
        for k, place in enumerate(match):
            for ours, theirs in zip(
                [stored_heavy[k], *stored_hydrogens[k]], [own_heavy[place], *own_hydrogens[place]], strict=True
            ):
                order[ours] = theirs
        orders.append(order)
    return orders


def with_coordinates(mol: Chem.Mol, coordinates: Coordinates) -> Chem.Mol:
    """A copy whose only conformer has these coordinates, (n, 3) in Angstrom."""
    copy = Chem.Mol(mol)
    copy.RemoveAllConformers()
    conformer = Chem.Conformer(mol.GetNumAtoms())
    for atom, (x, y, z) in enumerate(coordinates):
        conformer.SetAtomPosition(atom, Point3D(float(x), float(y), float(z)))
    copy.AddConformer(conformer)
    return copy


def contradictions(mol: Chem.Mol) -> tuple[int, int, int]:
    """How many stereocentres mol has, how many of them its conformer shows the other way round, and the same of double
    bonds."""
    seen = Chem.Mol(mol)
    Chem.AssignAtomChiralTagsFromStructure(seen, replaceExistingTags=True)
    centres = [
        (atom.GetChiralTag(), other.GetChiralTag())
        for atom, other in zip(mol.GetAtoms(), seen.GetAtoms())
        if atom.GetChiralTag() in CHIRAL
    ]
    seen = Chem.Mol(mol)
    Chem.AssignStereochemistryFrom3D(seen, replaceExistingTags=True)
    bonds = sum(
        bond.GetStereo() in BOND_STEREO and other.GetStereo() in BOND_STEREO and bond.GetStereo() != other.GetStereo()
        for bond, other in zip(mol.GetBonds(), seen.GetBonds())
    )
    return len(centres), sum(own != other for own, other in centres), bonds


def map_atoms(smiles: str, elements: Sequence[str], coordinates: Coordinates) -> MappedMolecule:
    """The molecule of the SMILES in the order of the elements; coordinates (n, 3) in Angstrom. Its stereochemistry is
    that of the SMILES. Raises ValueError if the SMILES can't be read or no match exists."""
    plain = Chem.MolFromSmiles(smiles)
    if plain is None:
        raise ValueError(f"the SMILES {smiles} can't be read")
    mol = Chem.AddHs(plain)
    best: MappedMolecule | None = None
    candidates = (atom_orders(mol, elements, distance_bonds(elements, coordinates, reach)) for reach in REACHES)
    for order in next(filter(None, candidates), []):
        candidate = with_coordinates(Chem.RenumberAtoms(mol, order), coordinates)
        Chem.AssignStereochemistry(candidate, cleanIt=True, force=True)
        centres, inverted, bonds = contradictions(candidate)
        mirrored = 2 * inverted > centres
        differing = bonds + min(inverted, centres - inverted)
        if best is None or (differing, mirrored) < (best.differing_centres, best.mirrored):
            best = MappedMolecule(candidate, mirrored, differing)
        if (differing, mirrored) == (0, False):
            break
    if best is None:
        raise ValueError(f"the coordinates don't show the bonds of {smiles}")
    if best.mirrored:
        return MappedMolecule(with_coordinates(best.mol, coordinates * [1, 1, -1]), True, best.differing_centres)
    return best
