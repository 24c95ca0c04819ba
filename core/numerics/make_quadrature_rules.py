#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes core/numerics/quadrature_rules.h: the Gauss-Legendre rules of 14 and 32 nodes of the three-centre quadrature.

With --check it writes nothing, and exits with 1 if the file isn't what it would write.

Nodes and weights come from make_gauss_rules.py, with 50 digits, and every number is rounded once, when it is written,
but the weights of the inner rule: they are those of a table with 17 digits, and rounded once more from there. So the
seventh and the eleventh of them are the second nearest double. That is on purpose: results rest on these bytes.
"""
import pathlib
import sys
from decimal import Decimal

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "python"))
from generated_files import write_or_check
from make_gauss_rules import legendre_rule

TARGET = pathlib.Path(__file__).resolve().parent / "quadrature_rules.h"
OUTER = 14
LANES = 16
INNER = 32
COLUMNS = 4

HEAD = f"""// SPDX-License-Identifier: MIT
// Made by make_quadrature_rules.py, which says how: not to be edited.
// The two Gauss-Legendre rules of the three-centre quadrature: nodes are the roots of the Legendre polynomials of
// degree {OUTER} and {INNER}, mapped from (-1, 1) to (0, 1).
#pragma once

// The outer rule is held in lanes; the two lanes behind its {OUTER} nodes have weight 0.
constexpr int OuterCount = {OUTER};
constexpr int OuterLanes = {LANES};
constexpr int InnerPairs = {INNER // 2};  // the inner rule has {INNER} nodes in mirrored pairs (t, 1 - t) of one weight
"""


def declaration(name, size, comment, rows):
    return f"\n// {comment}\nconstexpr double {name}[{size}] = {{\n" + "".join(f"    {row}\n" for row in rows) + "};\n"


def outer_table(name, comment, values, idle):
    """One number a line, and the idle lanes."""
    words = [f"{float(value):.17g}" for value in values] + [str(idle)] * (LANES - OUTER)
    return declaration(name, "OuterLanes", comment, [word + "," for word in words])


def inner_table(name, comment, words):
    """Some numbers a line, in columns."""
    words = [word + "," for word in words]
    widths = [max(map(len, words[k::COLUMNS])) for k in range(COLUMNS)]
    lines = [words[k : k + COLUMNS] for k in range(0, len(words), COLUMNS)]
    rows = [" ".join(f"{word:{width}}" for word, width in zip(line, widths)).rstrip() for line in lines]
    return declaration(name, "InnerPairs", comment, rows)


def make_files():
    outer = legendre_rule(OUTER)
    nodes, complements = [(1 + x) / 2 for x, _ in outer], [(1 - x) / 2 for x, _ in outer]
    factors = [weight / 2 / (u * v) ** Decimal("1.5") for u, v, (_, weight) in zip(nodes, complements, outer)]
    lower = legendre_rule(INNER)[: INNER // 2]
    text = HEAD
    text += outer_table("OuterNodes", "u", nodes, 0.5)
    text += outer_table("OuterComplements", "1 - u", complements, 0.5)
    text += outer_table("OuterFactors", "(w/2) [u (1 - u)]^(-3/2)", factors, 0.0)
    comment = "t below 1/2, from the outermost pair inward"
    text += inner_table("InnerNodes", comment, [f"{float((1 + x) / 2):.17g}" for x, _ in lower])
    text += inner_table("InnerMirrors", "1 - t of the same pairs", [f"{float((1 - x) / 2):.17g}" for x, _ in lower])
    weights = [repr(float(f"{weight / 2:.16e}")) for _, weight in lower]
    text += inner_table("InnerWeights", "Weight of each node of a pair, for (0, 1).", weights)
    return {TARGET: text}


if __name__ == "__main__":
    sys.exit(write_or_check(make_files))
