#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes helix.in: a peptide of 30 alanines and a glycine as a right-handed alpha helix, from usual bond lengths and
angles. 310 atoms, 775 orbitals, no two atoms further apart than the integrals reach.

With --check it writes nothing, and exits with 1 if the file isn't what it would write.
"""
import math
import pathlib
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "python"))
from generated_files import write_or_check

TARGET = pathlib.Path(__file__).resolve().parent / "helix.in"

ALANINES = 30
PHI, PSI, OMEGA = -57.0, -47.0, 180.0  # degrees


def place(a, b, c, length, angle, torsion):
    """The point at that length from c, angle with b and torsion with a, in degrees."""

    def unit(v):
        norm = math.sqrt(sum(x * x for x in v))
        return [x / norm for x in v]

    def cross(u, v):
        return [u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]]

    axis = unit([y - x for x, y in zip(b, c)])
    normal = unit(cross([y - x for x, y in zip(a, b)], axis))
    third = cross(normal, axis)
    angle, torsion = math.radians(angle), math.radians(torsion)
    along, across, up = (
        -length * math.cos(angle),
        length * math.sin(angle) * math.cos(torsion),
        length * math.sin(angle) * math.sin(torsion),
    )
    return [c[k] + along * axis[k] + across * third[k] + up * normal[k] for k in range(3)]


class Chain:
    def __init__(self):
        self.atoms = []  # (element, position)
        self.neighbours = []

    def add(self, element, position, *bonds):
        """Adds an atom with its bonds, each (atom, order letter); its number from 0."""
        self.atoms.append((element, position))
        self.neighbours.append([])
        for other, order in bonds:
            self.neighbours[-1].append((other, order))
            self.neighbours[other].append((len(self.atoms) - 1, order))
        return len(self.atoms) - 1

    def grow(self, element, a, b, c, length, angle, torsion, order="s"):
        """Adds an atom bonded to c."""
        position = place(self.atoms[a][1], self.atoms[b][1], self.atoms[c][1], length, angle, torsion)
        return self.add(element, position, (c, order))


def add_methyl(chain, n, alpha):
    return [chain.grow("H", n[0], n[1], alpha, 1.09, 109.5, torsion) for torsion in (60.0, 180.0, 300.0)]


def make_peptide():
    chain = Chain()
    n = chain.add("N", [0.0, 0.0, 0.0])
    alpha = chain.add("C", [1.46, 0.0, 0.0], (n, "s"))
    angle = math.radians(111.0)
    carbon = chain.add("C", [1.46 - 1.52 * math.cos(angle), 1.52 * math.sin(angle), 0.0], (alpha, "s"))
    for torsion in (60.0, 180.0):
        chain.grow("H", carbon, alpha, n, 1.01, 109.5, torsion)
    for residue in range(ALANINES + 1):
        last = residue == ALANINES
        for element, length, torsion in (("H" if last else "C", 1.09 if last else 1.53, 122.0), ("H", 1.09, -119.0)):
            side = chain.grow(element, carbon, n, alpha, length, 109.5, -torsion)
            if element == "C":
                add_methyl(chain, (carbon, alpha), side)
        if last:
            chain.grow("O", n, alpha, carbon, 1.22, 122.0, PSI + 180.0, "d")
            hydroxyl = chain.grow("O", n, alpha, carbon, 1.34, 113.0, PSI)
            chain.grow("H", alpha, carbon, hydroxyl, 0.97, 107.0, 180.0)
            return chain
        chain.grow("O", n, alpha, carbon, 1.23, 121.0, PSI + 180.0, "d")
        next_n = chain.grow("N", n, alpha, carbon, 1.33, 117.0, PSI)
        next_alpha = chain.grow("C", alpha, carbon, next_n, 1.46, 122.0, OMEGA)
        chain.grow("H", alpha, carbon, next_n, 1.01, 119.0, OMEGA + 180.0)
        next_carbon = chain.grow("C", carbon, next_n, next_alpha, 1.52, 111.0, PHI)
        n, alpha, carbon = next_n, next_alpha, next_carbon


def make_files():
    chain = make_peptide()
    lines = [
        "; A peptide of 30 alanines and a glycine, 310 atoms",
        "; Geometry: right-handed alpha helix from usual bond lengths and angles, made by make_helix.py",
        "AtomsBegin",
        str(len(chain.atoms)),
        "; atom, number, name, element, type, flags, charge, x, y, z in Angstrom, neighbours with bond letters",
        "mol 1 helix",
    ]
    for number, (element, (x, y, z)) in enumerate(chain.atoms):
        bonds = " ".join(f"{other + 1} {order}" for other, order in sorted(chain.neighbours[number]))
        lines.append(
            f"atom {number + 1:3} {element + str(number + 1):4} {element:2} {element:2} -  0.0 "
            f"{x:10.5f} {y:10.5f} {z:10.5f}  {len(chain.neighbours[number])}  {bonds}"
        )
    return {TARGET: "\n".join([*lines, "endmol 1", "AtomsEnd", ""])}


if __name__ == "__main__":
    sys.exit(write_or_check(make_files))
