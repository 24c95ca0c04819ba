# SPDX-License-Identifier: MIT
"""Geometries made from the structural formula: the conformers that a user's own preparation would give.

Embedding by ETKDGv3 (Wang, Witek, Landrum, Riniker 2020), minimising by MMFF94s (Halgren 1999), or by UFF (Rappe and
others 1992) where MMFF94s lacks parameters, and Boltzmann weights.
"""
from collections.abc import Sequence
from dataclasses import dataclass

import numpy as np
import rdkit.ForceField  # registers the classes that rdForceFieldHelpers gives
from rdkit import Chem
from rdkit.Chem import rdDistGeom, rdForceFieldHelpers, rdMolDescriptors

from .handedness import with_handedness
from .molecule_records import Coordinates, Geometry

GAS_CONSTANT = 1.987204e-3  # kcal/(mol K)
SEED = 20170401
EMBEDDINGS = (10, 5, 50)  # at least, for each rotatable bond, at most
MINIMISING_STEPS = 5000
SAME_ENERGY = 0.1  # kcal/mol
SAME_POSITIONS = 0.25  # root mean square, Angstrom
MATCH_LIMIT = 200  # of equivalent orders of the atoms


@dataclass(frozen=True)
class Conformer:
    energy: float  # kcal/mol
    coordinates: Coordinates


def embed(mol: Chem.Mol, count: int, seed: int) -> Chem.Mol:
    """A copy with up to count conformers; with random coordinates where the first attempt gives none."""
    embedded = Chem.Mol(mol)
    for random_coordinates in (False, True):
        settings = rdDistGeom.ETKDGv3()
        settings.randomSeed = seed
        settings.numThreads = 1
        settings.useRandomCoords = random_coordinates
        settings.maxIterations = 50
        if rdDistGeom.EmbedMultipleConfs(embedded, count, settings):
            break
    return embedded


def minimise(embedded: Chem.Mol) -> list[Conformer]:
    """The minima that are reached from the conformers, by rising energy."""
    settings = None
    if rdForceFieldHelpers.MMFFHasAllMoleculeParams(embedded):
        settings = rdForceFieldHelpers.MMFFGetMoleculeProperties(embedded, "MMFF94s")
    elif not rdForceFieldHelpers.UFFHasAllMoleculeParams(embedded):
        return []
    minima = []
    for conformer in embedded.GetConformers():
        own = conformer.GetId()
        if settings is not None:
            field = rdForceFieldHelpers.MMFFGetMoleculeForceField(embedded, settings, confId=own)
        else:
            field = rdForceFieldHelpers.UFFGetMoleculeForceField(embedded, confId=own)
        field.Initialize()
        field.Minimize(maxIts=MINIMISING_STEPS)
        minima.append(Conformer(field.CalcEnergy(), np.array(conformer.GetPositions(), dtype=np.float64)))
    return sorted(minima, key=lambda minimum: minimum.energy)


def frame(mol: Chem.Mol) -> tuple[Chem.Mol, list[int]]:
    """The atoms that tell conformers apart, joined as in mol: all but the hydrogens on carbon (or all of a molecule
    without others), and their numbers in mol."""
    light = [
        atom.GetIdx()
        for atom in mol.GetAtoms()
        if atom.GetSymbol() == "H" and atom.GetDegree() == 1 and atom.GetNeighbors()[0].GetSymbol() in ("C", "H")
    ]
    if len(light) == mol.GetNumAtoms():
        light = []
    reduced = Chem.RWMol(mol)
    for atom in sorted(light, reverse=True):
        reduced.RemoveAtom(atom)
    return reduced.GetMol(), [atom for atom in range(mol.GetNumAtoms()) if atom not in set(light)]


def distinct(mol: Chem.Mol, minima: Sequence[Conformer], largest_count: int, window: float) -> list[Conformer]:
    """The first of each kind within the window (kcal/mol) above the lowest, largest_count at most."""
    reduced, kept_atoms = frame(mol)
    orders = reduced.GetSubstructMatches(reduced, uniquify=False, maxMatches=MATCH_LIMIT)
    orders = orders or (tuple(range(reduced.GetNumAtoms())),)
    kept: list[Conformer] = []
    for minimum in minima:
        if minimum.energy > minima[0].energy + window or len(kept) == largest_count:
            break
        own = minimum.coordinates[kept_atoms]
        alike = [other for other in kept if minimum.energy - other.energy < SAME_ENERGY]
        if all(smallest_deviation(own, other.coordinates[kept_atoms], orders) > SAME_POSITIONS for other in alike):
            kept.append(minimum)
    return kept


def smallest_deviation(first: Coordinates, second: Coordinates, orders: Sequence[tuple[int, ...]]) -> float:
    """Root mean square distance of the atoms after the best rotation (Kabsch 1976), over the orders of the second."""
    centred = first - first.mean(axis=0)
    smallest = np.inf
    for order in orders:
        other = second[list(order)]
        other = other - other.mean(axis=0)
        left, singular, right = np.linalg.svd(centred.T @ other)
        singular[-1] *= np.sign(np.linalg.det(left @ right))
        square = (centred**2).sum() + (other**2).sum() - 2 * singular.sum()
        smallest = min(smallest, float(np.sqrt(max(square, 0.0) / len(first))))
    return smallest


def boltzmann_weights(energies: Sequence[float], temperature: float) -> list[float]:
    """Shares at a temperature in K of states with energies in kcal/mol."""
    factors = np.exp(-(np.array(energies) - min(energies)) / (GAS_CONSTANT * temperature))
    return [float(weight) for weight in factors / factors.sum()]


def make_geometries(
    mol: Chem.Mol, largest_count: int = 10, window: float = 3.0, temperature: float = 298.15, seed: int = SEED
) -> tuple[Geometry, ...]:
    """Conformers of a molecule with explicit hydrogens, by falling weight: within window kcal/mol of the lowest,
    largest_count at most, at a temperature in K. If mol has a conformer, atoms that the structural formula doesn't
    tell apart get the sides that they have there. Empty if no conformer can be made."""
    tagged = with_handedness(mol)
    least, more, most = EMBEDDINGS
    count = min(most, least + more * rdMolDescriptors.CalcNumRotatableBonds(mol))
    minima = minimise(embed(tagged, count, seed))
    if not minima:
        return ()
    kept = distinct(mol, minima, largest_count, window)
    weights = boltzmann_weights([conformer.energy for conformer in kept], temperature)
    return tuple(Geometry("made", weight, conformer.coordinates) for weight, conformer in zip(weights, kept))
