#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes core/integrals/coulomb_coefficients.cpp: the expansion of the Coulomb repulsion of two spherical Slater clouds
in products A(i) B(j) of the auxiliary integrals.

With --check it writes nothing, and exits with 1 if the file isn't what it would write.

A cloud of principal number n and exponent zeta has the radial distribution c r^(2n) e^(-2 zeta r). With a = 2 zeta1
and b = 2 zeta2 the potential of a cloud at the distance r is

    V(r) = 1/r - e^(-br)/r sum over k of (br)^k/k! (1 - k/(2n)),    k from 0 to 2n - 1,

and the potential of the first cloud over the density of the second one gives, with r_a = R (xi + eta)/2 and
r_b = R (xi - eta)/2,

    R J = R V2(R) - (bR)^(2 n2 + 1)/(4 (2 n2)! 2^(2 n2 - 1))
          sum over k of (aR)^k/(2^k k!) (1 - k/(2 n1)) T(k),    k from 0 to 2 n1 - 1,
    T(k)  = double integral of (xi - eta)^(2 n2 - 1) (xi + eta)^k e^(-p xi - q eta).

Every number is an exact integer or fraction here and is rounded once, when it is written.
"""
import pathlib
import sys
from fractions import Fraction
from math import factorial

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "python"))
from generated_files import write_or_check

TARGET = pathlib.Path(__file__).resolve().parent / "coulomb_coefficients.cpp"
SMALLEST_SHELL = 2  # of the second cloud: class (1, 1) has a table of its own
LARGEST_FIRST = 3
LARGEST_SECOND = 5
POWERS = 2 * LARGEST_FIRST
ENTRIES = 2 * LARGEST_SECOND - 1 + POWERS

HEAD = """// SPDX-License-Identifier: MIT
// Made by make_coulomb_coefficients.py, which says how: not to be edited.
#include "integrals/coulomb_coefficients.h"

"""


def product_row(n2, k):
    """Coefficients of xi^(N - j) eta^j in (xi - eta)^(2 n2 - 1) (xi + eta)^k, N being the sum of the powers."""
    row = [1]
    for sign in [-1] * (2 * n2 - 1) + [1] * k:
        row = [low + sign * high for low, high in zip(row + [0], [0] + row)]
    return row


def screening(n, k):
    return Fraction(2 * n - k, 2 * n) / factorial(k)


def weight(n1, n2, k):
    return screening(n1, k) / (2**k * 4 * factorial(2 * n2) * 2 ** (2 * n2 - 1))


def number(value):
    return repr(float(value))


def braces(values, width):
    values = [number(v) for v in values] + ["0.0"] * (width - len(values))
    return "{" + ", ".join(values) + "}"


def wrapped(text, indent):
    lines = []
    line = indent
    for word in text.split(" "):
        if len(line) + len(word) > 110:
            lines.append(line.rstrip())
            line = indent + " "
        line += word + " "
    lines.append(line.rstrip())
    return "\n".join(lines)


def make_files():
    out = HEAD
    shells = range(SMALLEST_SHELL, LARGEST_SECOND + 1)
    out += "const double CoulombProducts[CoulombShells][CoulombPowers][CoulombEntries] = {\n"
    for n2 in shells:
        rows = [wrapped(braces(product_row(n2, k), ENTRIES), "     ") for k in range(POWERS)]
        out += "    {\n" + ",\n".join(rows) + ",\n    },\n"
    out += "};\n\nconst double CoulombWeights[CoulombFirstShells][CoulombShells][CoulombPowers] = {\n"
    for n1 in range(1, LARGEST_FIRST + 1):
        rows = []
        for n2 in shells:
            values = [weight(n1, n2, k) for k in range(2 * n1)] if n1 <= n2 else []
            rows.append(wrapped(braces(values, POWERS), "     "))
        out += "    {\n" + ",\n".join(rows) + ",\n    },\n"
    out += "};\n\nconst double CoulombScreening[CoulombShells][CoulombScreeningPowers] = {\n"
    for n2 in shells:
        out += wrapped(braces([screening(n2, k) for k in range(2 * n2)], 2 * LARGEST_SECOND), "    ") + ",\n"
    return {TARGET: out + "};\n"}


if __name__ == "__main__":
    sys.exit(write_or_check(make_files))
