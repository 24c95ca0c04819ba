#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes core/numerics/gauss_rules.cpp: nodes and weights of Gauss-Legendre and Gauss-Laguerre rules.

With --check it writes nothing, and exits with 1 if the file isn't what it would write.

Legendre, on (-1, 1): the positive nodes of rules with an even number of nodes, rising; weights 2/((1 - x^2) P'(x)^2).
Laguerre, on (0, inf): nodes x, rising, and the weights times e^x, x e^x/((n + 1) L_{n+1}(x))^2, for integrands that
are not freed of their e^(-x).

Roots by Newton's method in 50 digits, from bisection; each number is rounded once, when it is written.
"""
import pathlib
import sys
from decimal import Decimal, getcontext

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "python"))
from generated_files import write_or_check

getcontext().prec = 50
TARGET = pathlib.Path(__file__).resolve().parent / "gauss_rules.cpp"
LEGENDRE = range(8, 49, 4)
LAGUERRE = (12, 16, 20, 24, 28)

HEAD = """// SPDX-License-Identifier: MIT
// Made by make_gauss_rules.py, which says how: not to be edited.
#include "numerics/gauss_rules.h"

"""


def legendre(n, x):
    before, value = Decimal(1), x
    for k in range(2, n + 1):
        before, value = value, ((2 * k - 1) * x * value - (k - 1) * before) / k
    return value, n * (before - x * value) / (1 - x * x)


def laguerre(n, x):
    before, value = Decimal(1), 1 - x
    for k in range(2, n + 1):
        before, value = value, ((2 * k - 1 - x) * value - (k - 1) * before) / k
    return value, n * (value - before) / x


def roots(function, n, low, high, steps, count):
    """All count roots in (low, high), which the steps must separate; the grid is quadratic, finest at low."""
    found = []
    left, left_value = low, function(n, low)[0]
    for i in range(1, steps + 1):
        right = low + (high - low) * Decimal(i) * i / (Decimal(steps) * steps)
        right_value = function(n, right)[0]
        if left_value * right_value < 0:
            a, b, sign = left, right, left_value
            for _ in range(40):
                middle = (a + b) / 2
                if function(n, middle)[0] * sign > 0:
                    a = middle
                else:
                    b = middle
            x = (a + b) / 2
            for _ in range(4):
                value, slope = function(n, x)
                x -= value / slope
            found.append(x)
        left, left_value = right, right_value
    assert len(found) == count, (n, len(found))
    return found


def upper_half(n):
    """The positive nodes of the Legendre rule of an even number of nodes, rising, each with its weight."""
    nodes = roots(legendre, n, Decimal("1e-9"), 1 - Decimal("1e-9"), 40 * n, n // 2)
    return [(x, 2 / ((1 - x * x) * legendre(n, x)[1] ** 2)) for x in nodes]


def legendre_rule(n):
    """All nodes of it, rising, each with its weight."""
    half = upper_half(n)
    return [(-x, weight) for x, weight in reversed(half)] + half


def listed(name, values):
    text = "static constexpr double %s[%d] = {\n" % (name, len(values))
    line = "   "
    for value in values:
        word = " %.17g," % float(value)
        if len(line) + len(word) > 110:
            text += line + "\n"
            line = "   "
        line += word
    return text + line + "\n};\n"


def make_files():
    text = HEAD
    for n in LEGENDRE:
        nodes, weights = zip(*upper_half(n))
        text += listed("LegendreNodes%d" % n, nodes)
        text += listed("LegendreWeights%d" % n, weights)
    for n in LAGUERRE:
        nodes = roots(laguerre, n, Decimal("1e-9"), Decimal(4 * n), 40 * n, n)
        text += listed("LaguerreNodes%d" % n, nodes)
        text += listed("LaguerreWeights%d" % n, [x * x.exp() / ((n + 1) * laguerre(n + 1, x)[0]) ** 2 for x in nodes])
    text += "\nconst GaussRule LegendreRules[LegendreRuleCount] = {\n"
    text += "".join("    {%d, LegendreNodes%d, LegendreWeights%d},\n" % (n, n, n) for n in LEGENDRE)
    text += "};\n\nconst GaussRule LaguerreRules[LaguerreRuleCount] = {\n"
    text += "".join("    {%d, LaguerreNodes%d, LaguerreWeights%d},\n" % (n, n, n) for n in LAGUERRE)
    return {TARGET: text + "};\n"}


if __name__ == "__main__":
    sys.exit(write_or_check(make_files))
