# SPDX-License-Identifier: MIT
"""Records of measured molecules: what the fit reads, whatever file it comes from.

Atoms count from 0 everywhere, in the order of Molecule.mol.
"""
from dataclasses import dataclass

import numpy as np
import numpy.typing as npt
from rdkit import Chem

Coordinates = npt.NDArray[np.float64]  # (atoms, 3), Angstrom


@dataclass(frozen=True)
class Geometry:
    """One arrangement of the atoms; the weights of the geometries of one kind sum to one."""

    kind: str  # "stored" with the measurement, or "made" from the structural formula
    weight: float  # share of the conformer
    coordinates: Coordinates


@dataclass(frozen=True)
class Shift:
    """A measured chemical shift: the average over the atoms."""

    atoms: tuple[int, ...]
    nucleus: str  # "13C"
    ppm: float  # from TMS (1H, 13C, 29Si), CFCl3, 85 % H3PO4, liquid NH3, liquid H2O
    source: str
    phase: str = "solution"  # or "gas"


@dataclass(frozen=True)
class Pair:
    """Two measured shifts of which nobody knows what belongs to which group: compare both sorted."""

    first: tuple[int, ...]
    second: tuple[int, ...]
    nucleus: str
    ppm: tuple[float, float]  # ascending
    source: str = ""


@dataclass(frozen=True)
class Coupling:
    """A measured coupling constant: the average over the pairs of atoms."""

    atom_pairs: tuple[tuple[int, int], ...]
    kind: str  # "3J(HH)", of the isotopes 1H, 13C, 15N, 17O, 19F, 29Si, 31P
    hertz: float  # with its sign
    rigid: bool  # no single bond outside small rings can turn between the two nuclei
    ambiguous: bool  # which proton of a CH2 group it belongs to is unknown
    source: str


@dataclass(frozen=True)
class Molecule:
    """A molecule with explicit hydrogen atoms and what was measured of it."""

    key: str  # InChIKey; the same molecule of two sources comes twice, with one key
    name: str
    smiles: str
    source: str
    mol: Chem.Mol  # atoms in the order of the stored coordinates, which are its conformer if there are any
    symmetry: tuple[int, ...]  # class of each atom
    geometries: tuple[Geometry, ...]  # empty where only the structural formula is known
    shifts: tuple[Shift, ...]
    pairs: tuple[Pair, ...]
    couplings: tuple[Coupling, ...]
    confidence: str  # "measured", "compilation", or "recalled, unverified"
