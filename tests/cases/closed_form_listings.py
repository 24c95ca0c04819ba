#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks the expected files of cases/parameter/listing_of_* against closed formulas.

The atoms there have one 1s orbital each, and those of different exponents never meet, so that overlap and repulsion are
short formulas of x = zeta R. A plain iteration without any acceleration gives levels, density and energies of TNDO/1, a
second one the response to the contact perturbation. The iterations before the last aren't looked at: they are the path.
"""
import math
import pathlib
import re
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "python"))
from velkoran_runs.inputs import read_atoms, read_options, read_selection
from velkoran_runs.parameter_files import COUPLING_FILE, parse_records
from velkoran_runs.results import parse_parameter_result
from velkoran_runs.texts import read_text

CASES = pathlib.Path(__file__).resolve().parent
FOLDERS = sorted(CASES.glob("parameter/listing_of_*"))
PARAMETER_SETS = CASES.parent / "support" / "parameter_sets"

BOHRS = 1.889725985  # in an Angstrom
HARTREES = 0.03674930900274282  # in an eV
KCAL = 627.5220032  # in a Hartree
KCAL_OF_EV = 23.061
EV = 27.211395  # in a Hartree, for the levels
DEBYES = 2.5416  # in e bohr
REDUCED = 1.2438805210547523e-8 * 5.069040731147547e29  # of a response, in 1/cm3
HERTZ = 3.850008004857603e-21
MASSES = {"H": 1.0079, "He": 4.0026}
CORE_CHARGES = {"H": 1, "He": 2}

STEPS = 3000  # of the damped iterations, which need about a hundred
SMALLEST_CHANGE = 1e-13
ROUNDING = 0.51  # of the last printed place
CONVERGENCE = 2.0  # in the last printed place: what the limit of the run leaves in levels, coefficients, populations
COUPLING_ERROR = 1e-5  # relative


class System:
    """A folder's input, and the integrals of its atoms."""

    def __init__(self, folder):
        text = read_text(folder / "nmrparam.in")
        (atoms,) = read_atoms(text)
        self.charge = int(read_options(text)["TotalCharge"])
        self.perturbed = len(read_selection(text))
        self.elements = [atom.element for atom in atoms]
        self.places = [[x * BOHRS for x in atom.position] for atom in atoms]
        parameter_set = read_text(folder / "parameter_set").strip()
        records = parse_records(read_text(PARAMETER_SETS / parameter_set / COUPLING_FILE))
        self.parameters = [records[element] for element in self.elements]
        self.cores = [CORE_CHARGES[element] for element in self.elements]
        self.n = len(atoms)
        self.build_integrals()

    def build_integrals(self):
        n = range(self.n)
        zeta = self.parameters[0]["SlaterExponentS"]
        self.gamma = [[0.625 * zeta] * self.n for _ in n]
        self.core = [[0.0] * self.n for _ in n]
        self.repulsion = 0.0
        for i in n:
            for j in range(i):
                distance = math.dist(self.places[i], self.places[j])
                x = zeta * distance
                polynomial = 1 + 11 * x / 8 + 3 * x**2 / 4 + x**3 / 6
                self.gamma[i][j] = self.gamma[j][i] = (1 - polynomial * math.exp(-2 * x)) / distance
                overlap = math.exp(-x) * (1 + x + x**2 / 3)
                bonding = (
                    (self.parameters[i]["BondingParameter"] + self.parameters[j]["BondingParameter"]) / 2 * HARTREES
                )
                self.core[i][j] = self.core[j][i] = -overlap * bonding
                self.repulsion += self.cores[i] * self.cores[j] / distance
        for i in n:
            attraction = sum(self.cores[j] * self.gamma[i][j] for j in n)
            self.core[i][i] = self.parameters[i]["OrbitalEnergyS"] * HARTREES + self.gamma[i][i] / 2 - attraction


def eigen(matrix):
    """Levels in ascending order, and their coefficients in rows, by cyclic Jacobi rotations."""
    n = len(matrix)
    a = [row[:] for row in matrix]
    v = [[float(i == j) for j in range(n)] for i in range(n)]
    for p, q in [(p, q) for _ in range(50) for p in range(n) for q in range(p + 1, n)]:
        if abs(a[p][q]) < 1e-16:
            continue
        angle = math.atan2(2 * a[p][q], a[q][q] - a[p][p]) / 2
        c, s = math.cos(angle), math.sin(angle)
        for row in a + v:
            row[p], row[q] = c * row[p] - s * row[q], s * row[p] + c * row[q]
        for k in range(n):
            a[p][k], a[q][k] = c * a[p][k] - s * a[q][k], s * a[p][k] + c * a[q][k]
    order = sorted(range(n), key=lambda i: a[i][i])
    return [a[i][i] for i in order], [[row[i] for row in v] for i in order]


def iterate(start, step):
    """The fixed point of a step, damped by half."""
    old = start
    for _ in range(STEPS):
        new = step(old)
        change = max(abs(x - y) for row, other in zip(new, old) for x, y in zip(row, other))
        old = [[(x + y) / 2 for x, y in zip(row, other)] for row, other in zip(new, old)]
        if change < SMALLEST_CHANGE:
            return old
    sys.exit("closed_form_listings: no fixed point")


class Solution:
    """The closed shell of a system, and its contact responses."""

    def __init__(self, system):
        self.system = system
        n = range(system.n)
        self.pairs = (sum(system.cores) - system.charge) // 2
        start = [[2.0 * self.pairs / system.n if i == j else 0.0 for j in n] for i in n]
        self.density = iterate(start, self.next_density)
        fock = self.fock(self.density)
        self.levels, self.orbitals = eigen(fock)
        self.electronic = sum((system.core[i][j] + fock[i][j]) * self.density[i][j] for i in n for j in n) / 2

    def fock(self, density):
        system, n = self.system, range(self.system.n)
        fock = [[system.core[i][j] - density[i][j] * system.gamma[i][j] / 2 for j in n] for i in n]
        for i in n:
            fock[i][i] += sum(density[k][k] * system.gamma[i][k] for k in n)
        return fock

    def next_density(self, density):
        n = range(self.system.n)
        orbitals = eigen(self.fock(density))[1][: self.pairs]
        return [[2 * sum(c[i] * c[j] for c in orbitals) for j in n] for i in n]

    def responses(self, atom):
        """The contact responses of all atoms to one, per Hartree."""
        n = range(self.system.n)

        def step(change):
            fock = [[-change[k][l] * self.system.gamma[k][l] + (k == l == atom) for l in n] for k in n]
            result = [[0.0] * self.system.n for _ in n]
            for i, c in enumerate(self.orbitals[: self.pairs]):
                for a in range(self.pairs, self.system.n):
                    u = self.orbitals[a]
                    w = sum(u[k] * fock[k][l] * c[l] for k in n for l in n) / (self.levels[i] - self.levels[a])
                    for k in n:
                        for l in n:
                            result[k][l] += w * (c[k] * u[l] + u[k] * c[l])
            return result

        change = iterate([[0.0] * self.system.n for _ in n], step)
        return [2 * change[k][k] for k in n]


class Checker:
    """Compares numbers of a text with evaluated ones."""

    def __init__(self, folder):
        self.name = folder.name
        self.log = read_text(folder / "expected.log")
        self.result = parse_parameter_result(read_text(folder / "expected.out"))
        self.wrong = []
        self.compared = 0

    def compare(self, what, printed, values, places):
        """Printed numbers, as texts, with values, within so many units of the last printed place."""
        if len(printed) != len(values):
            self.wrong.append("%s: %s: %d numbers, not %d" % (self.name, what, len(printed), len(values)))
        for text, value in zip(printed, values):
            self.compared += 1
            if abs(float(text) - value) > places * 10.0 ** -len(text.split(".")[1]):
                self.wrong.append("%s: %s: %s, not %.8f" % (self.name, what, text, value))

    def section(self, begin, end):
        return re.findall(r"-?\d+\.\d+", self.log.split(begin)[-1].split(end)[0])


def check_energies(checker, system, solution):
    isolated = sum(parameters["IsolatedEnergyTndo1"] for parameters in system.parameters) * KCAL_OF_EV
    total = solution.electronic + system.repulsion
    heats = sum(parameters["AtomHeat"] for parameters in system.parameters)
    values = [
        total * KCAL,
        total,
        total * KCAL - isolated,
        isolated,
        solution.electronic * KCAL,
        system.repulsion * KCAL,
        heats + total * KCAL - isolated,
    ]
    # the energies end by what the iterations of the run leave, some millionths of a kcal/mol
    checker.compare("energies", checker.section("Energies\n", "Eigenvalues(eV)"), values, 20.0)
    checker.compare("progress", checker.section("\nEnergy=", "\n"), [values[2]], CONVERGENCE)


def check_wavefunction(checker, system, solution):
    n = range(system.n)
    levels = [level * EV for level in solution.levels]
    checker.compare("levels", checker.section("Eigenvalues(eV)", "Atomic Orbital"), levels, 6.0)
    populations = [solution.density[i][i] for i in n]
    checker.compare("populations", checker.section("Populations", "Net Charges"), populations, CONVERGENCE)
    charges = [system.cores[i] - populations[i] for i in n]
    rows = [(charges[i], *[x / BOHRS for x in system.places[i]]) for i in n]
    table = checker.log.split("x           y           z\n")[-1].split("====")[0].split("Dipole")[0]
    lines = re.findall(r"^ +\d+ +\d+ +(\S+) +(\S+) +(\S+) +(\S+)$", table, re.M)
    checker.compare("charges", [x for line in lines for x in line], [x for row in rows for x in row], CONVERGENCE)
    if system.n > 1:
        weights = [MASSES[element] if system.charge else 0.0 for element in system.elements]
        mass = sum(weights) or 1.0
        centre = [sum(weights[i] * system.places[i][k] for i in n) / mass for k in range(3)]
        dipole = [sum(charges[i] * (system.places[i][k] - centre[k]) for i in n) * DEBYES for k in range(3)]
        dipole.append(math.hypot(*dipole))
        checker.compare("dipole", checker.section("Point-Chg.", "sp Hybrid"), dipole, ROUNDING)
        checker.compare("hybrids", checker.section("sp Hybrid", "   Sum  "), [0.0] * 8, ROUNDING)
        checker.compare("dipole", checker.section("   Sum  ", "===="), dipole, ROUNDING)


def check_matrices(checker, system, solution):
    n = range(system.n)
    if "Core Hamiltonian" in checker.log:
        for title, matrix in [("Core Hamiltonian", system.core), ("Fock", solution.fock(solution.density))]:
            printed = checker.section(title + " Matrix(a.u.)", "Matrix" if title != "Fock" else "Eigenvalues")
            checker.compare(title, printed, [x for row in matrix for x in row], CONVERGENCE)
    last = checker.log.split("and Eigenvectors")[-1].split("\nEnergy=")[0].split("Iteration =")[0]
    head, density = last.split("Density Matrix")
    printed = re.search(r"^Eigenvalue (.*)$", head, re.M).group(1).split()
    checker.compare("eigenvalues", printed, solution.levels, CONVERGENCE)
    rows = [line.split() for line in re.findall(r"^  S [ H][He] +\d+  (.+)$", head, re.M)]
    for level in n:
        column = [row[level] for row in rows]
        sign = math.copysign(1.0, float(column[0]) * solution.orbitals[level][0])
        checker.compare("coefficients", column, [sign * c for c in solution.orbitals[level]], CONVERGENCE)
    printed = [x for line in re.findall(r"^  S [ H][He] +\d+  (.+)$", density, re.M) for x in line.split()]
    checker.compare("density", printed, [x for row in solution.density for x in row], CONVERGENCE)


def check_couplings(checker, system, solution):
    rows = re.findall(r"^ +(\d+)\(.{2}\) +(\d+)\(.{2}\) +(\S+) +(\S+) +(\S+) +(\S+) +(\S+) +(\S+)$", checker.log, re.M)
    expected_rows = []
    for a in range(system.perturbed):
        response = solution.responses(a)
        for b in range(system.n):
            first, second = system.parameters[a], system.parameters[b]
            reduced = response[b] * REDUCED * first["sDensity0"] * second["sDensity0"] if a != b else 0.0
            coupling = first["gFactor"] * second["gFactor"] * reduced * HERTZ
            if b < system.perturbed:
                places = ROUNDING + abs(coupling) * COUPLING_ERROR * 1e3
                checker.compare("result file", [f"{checker.result.couplings[a][b]:.3f}"], [coupling], places)
            if a != b:
                expected_rows.append(
                    (
                        a + 1,
                        b + 1,
                        first["gFactor"],
                        second["gFactor"],
                        first["sDensity0"],
                        second["sDensity0"],
                        reduced,
                        coupling,
                    )
                )
    if len(rows) != len(expected_rows):
        checker.wrong.append("%s: %d couplings, not %d" % (checker.name, len(rows), len(expected_rows)))
    for row, expected in zip(rows, expected_rows):
        checker.compared += 1
        if any(abs(float(x) - y) > COUPLING_ERROR * abs(y) + 5e-5 for x, y in zip(row, expected)):
            checker.wrong.append("%s: couplings: %s, not %s" % (checker.name, row, expected))


def main():
    wrong, compared = [], 0
    for folder in FOLDERS:
        system = System(folder)
        solution = Solution(system)
        checker = Checker(folder)
        check_energies(checker, system, solution)
        check_wavefunction(checker, system, solution)
        check_matrices(checker, system, solution)
        check_couplings(checker, system, solution)
        wrong += checker.wrong
        compared += checker.compared
    print("closed_form_listings: %d numbers of %d folders compared, %d wrong" % (compared, len(FOLDERS), len(wrong)))
    for line in wrong:
        print(line, file=sys.stderr)
    return 1 if wrong or not FOLDERS else 0


if __name__ == "__main__":
    sys.exit(main())
