#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes tests/unit/integrals/integral_reference.inc: values of the auxiliary functions, Coulomb and overlap integrals
in multi-precision arithmetic. Needs mpmath; takes about a minute.

With --check it writes nothing, and exits with 1 if the file isn't what it would write.
"""
import pathlib
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[3] / "python"))
from generated_files import write_or_check
from mpmath import mp, mpf, quad
from reference_integrals import (
    ORDERS,
    a_exact,
    b_exact,
    b_formula,
    b_terms,
    breaks,
    coulomb_exact,
    coulomb_formula,
    distribution,
    e1_exact,
    e1_formula,
    gauss_laguerre,
    gauss_legendre,
    overlap_blocks,
    pair,
    screened,
)

TARGET = pathlib.Path(__file__).resolve().parent / "integral_reference.inc"
HEAD = "// SPDX-License-Identifier: MIT\n// Made by make_integral_reference.py, which says how: not to be edited.\n"


def text(value):
    if isinstance(value, float):
        return repr(value)
    return mp.nstr(mpf(value), 17, min_fixed=0, max_fixed=0) if value else "0.0"


B_POINTS = [
    1e-07,
    1e-06,
    1.0000001e-06,
    0.01,
    0.3,
    0.5,
    0.5000001,
    0.75,
    1.0,
    1.0000001,
    1.5,
    2.0,
    2.0000001,
    2.5,
    3.0,
    3.0000001,
    4.5,
    12.0,
    60.0,
    99.999999,
]
B_ORDERS = [2, 5, 6, 7, 8, 10, 11, 19]
B_PLACES = [(order, n) for order in B_ORDERS for n in sorted({0, 1, order - 1, order})]
A_POINTS = [1.0000001e-06, 0.001, 0.1, 0.9, 3.0, 12.0, 60.0, 99.999999]


def rows_a():
    for p in A_POINTS:
        for n in (0, 1, 2, 6, 12, 19):
            yield [text(p), str(n), text(a_exact(n, mpf(p)))]


def rows_b():
    for q in (sign * size for size in B_POINTS for sign in (1, -1)):
        exact = {}
        for order, n in B_PLACES:
            if n not in exact:
                exact[n] = b_exact(n, mpf(q))
            terms = str(b_terms(mpf(q), order) or 0)
            yield [text(q), str(order), str(n), terms, text(exact[n]), text(b_formula(n, mpf(q), order))]


E1_POINTS = [
    1.0000001e-06,
    0.001,
    0.5,
    1.0,
    2.5,
    3.9999999,
    4.0,
    4.0000001,
    6.0,
    20.0,
    80.0,
    -1.0000001e-06,
    -0.001,
    -0.37,
    -0.38,
    -1.0,
    -2.5,
    -3.9999999,
    -4.0,
    -4.0000001,
    -6.0,
    -20.0,
    -80.0,
]


def rows_e1():
    for x in E1_POINTS:
        yield [text(x), text(e1_exact(mpf(x))), text(e1_formula(mpf(x)))]


PAIR_POINTS = [(2.1, 0.7), (0.4, 1.3), (3.0, -0.6), (1.2, 2e-06), (1.2, 1e-06), (1.2, 9e-07), (1.2, 0.0), (2.5, 2.2)]


def rows_pair():
    for a, b in PAIR_POINTS:
        yield [text(a), text(b), *(text(pair(sign, mpf(a), mpf(b))) for sign in (1, -1))]


# |q| around every switch of B, and on the last two lines short and long distances
COULOMB_POINTS = [
    (1.0, 1.0, 2.0),
    (1.0000005, 1.0, 1.0),
    (1.25, 1.2500003, 4.0),
    (1.1, 1.45, 2.3),
    (1.3, 1.1, 1.5),
    (1.5, 1.25, 2.0),
    (1.5000001, 1.25, 2.0),
    (1.0, 1.4, 2.0),
    (1.5, 1.0, 2.0),
    (1.0, 1.5000001, 2.0),
    (1.9, 1.15, 2.0),
    (1.0, 2.0, 2.0),
    (2.0000001, 1.0, 2.0),
    (1.35, 2.65, 2.0),
    (2.5, 1.0, 2.0),
    (1.0, 2.5000001, 2.0),
    (2.4, 1.2, 6.5),
    (0.8, 3.2, 8.0),
    (1.3, 1.625, 0.00101),
    (1.3, 1.625, 0.05),
    (1.3, 1.625, 0.5),
    (1.3, 1.5, 20.0),
    (1.25, 1.2499, 40.0),
    (1.3, 1.6, 99.0),
]


def rows_coulomb():
    for n1, n2 in sorted(ORDERS):
        for point in COULOMB_POINTS:
            zeta1, zeta2, distance = (mpf(x) for x in point)
            exact = coulomb_exact(n1, n2, zeta1, zeta2, distance)
            formula = coulomb_formula(n1, n2, zeta1, zeta2, distance)
            yield [str(n1), str(n2), *map(text, point), text(exact), text(formula)]


def one_centre(n1, n2, zeta1, zeta2):
    def integrand(r):
        return distribution(n1, zeta1, r) * screened(n2, zeta2, r) / r if r else mpf(0)

    return quad(integrand, breaks(n1, zeta1, mpf(1)))


def rows_one_centre():
    for n1 in (1, 2, 3):
        for n2 in (1, 2, 3, 5):
            for zeta1, zeta2 in ((1.0, 1.0), (1.3, 0.7), (0.4, 2.9)):
                value = one_centre(n1, n2, mpf(zeta1), mpf(zeta2))
                yield [str(n1), str(n2), text(zeta1), text(zeta2), text(value)]


PAIRS_OF_SHELLS = [(1, 1), (1, 2), (2, 1), (1, 3), (2, 2), (2, 3), (3, 2), (3, 3)]
OVERLAP_POINTS = [
    (1.3, 1.1, (0.0, 0.0, 1.9)),
    (1.2, 1.9, (0.0, 0.0, -2.2)),
    (1.625, 1.95, (1.1, -1.7, 1.4)),
    (2.2, 1.0, (-1.9, 0.8, -3.1)),
]


def kinds_of(n1, n2, tilted):
    count1, count2 = (min(n1, 3) ** 2, min(n2, 3) ** 2)
    if tilted:  # all of the smaller shell pairs, a choice of the larger ones
        chosen = [(a, b) for a in range(count1) for b in range(count2)]
        return chosen if len(chosen) <= 16 else chosen[::2] if len(chosen) < 50 else chosen[::4]
    return [
        (0, 0),
        (0, 3),
        (3, 0),
        (3, 3),
        (1, 1),
        (2, 2),
        (0, 4),
        (4, 0),
        (3, 4),
        (4, 3),
        (1, 5),
        (5, 1),
        (2, 6),
        (4, 4),
        (5, 5),
        (6, 6),
        (7, 7),
        (8, 8),
    ]


def overlap_rows(n1, n2, kinds, zeta1, zeta2, vector, rules):
    place = [mpf(c) for c in vector]
    sums = overlap_blocks(n1, n2, kinds, mpf(zeta1), mpf(zeta2), place, *rules)
    shown = [text(zeta1), text(zeta2), "{" + ", ".join(text(c) for c in vector) + "}"]
    for kind1, kind2 in kinds:
        value = sums[kind1, kind2]
        yield [str(n1), str(n2), str(kind1), str(kind2), *shown, text(value) if abs(value) > mpf("1e-18") else "0.0"]


def rows_overlap():
    with mp.workdps(20):
        rules = gauss_laguerre(8), gauss_legendre(24)
        for n1, n2 in PAIRS_OF_SHELLS:
            for zeta1, zeta2, vector in OVERLAP_POINTS:
                tilted = vector[0] != 0.0
                kinds = [(a, b) for a, b in kinds_of(n1, n2, tilted) if a < n1 * n1 and b < n2 * n2]
                yield from overlap_rows(n1, n2, kinds, zeta1, zeta2, vector, rules)


TABLES = [
    ("AuxiliaryA", "p, n, exact", rows_a),
    ("AuxiliaryB", "q, order, n, terms of the series or 0, exact, formula", rows_b),
    ("IntegralE1", "x, exact, formula", rows_e1),
    ("ExponentialPair", "a, b, plus, minus; both by the formula", rows_pair),
    ("Coulomb", "n1, n2, zeta1, zeta2, distance, exact, formula", rows_coulomb),
    ("OneCentre", "n1, n2, zeta1, zeta2, exact", rows_one_centre),
    ("Overlap", "n1, n2, orbital 1, orbital 2, zeta1, zeta2, x, y, z from 1 to 2, exact", rows_overlap),
]


def make_files():
    out = HEAD
    for name, columns, rows in TABLES:
        lines = ["    {" + ", ".join(row) + "},\n" for row in rows()]
        out += f"\n// {columns}\ninline constexpr {name}Row {name}Rows[] = {{\n" + "".join(lines) + "};\n"
    return {TARGET: out}


if __name__ == "__main__":
    sys.exit(write_or_check(make_files))
