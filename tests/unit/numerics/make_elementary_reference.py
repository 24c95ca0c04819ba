#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes tests/unit/numerics/elementary_reference.inc: values of the elementary functions in multi-precision
arithmetic. Needs mpmath; takes about ten seconds.

With --check it writes nothing, and exits with 1 if the file isn't what it would write.

A value is its nearest double and what is left, in units of the last place of that double. Arguments are random ones;
those of many random ones whose values lie closest to the middle of two doubles; and those around the ends of ranges.
"""
import math
import pathlib
import random
import sys
from fractions import Fraction

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[3] / "python"))
import mpmath
from generated_files import write_or_check
from mpmath import mp, mpf

mp.prec = 240
TARGET = pathlib.Path(__file__).resolve().parent / "elementary_reference.inc"
RANDOM_ROWS = 30
HARD_ROWS = 30
TRIALS = 30000  # for each range
TINY = [2.0**-1074, 2.0**-1022, 1e-300, 1e-100, 2.0**-60, 2.0**-54, 2.0**-28, 2.0**-27, 1e-05, 0.001]
HUGE = [1e5, 2.0**30 + 1.0, 1e16, 1e22, 1e100, 2.0**1023, 1.7976931348623157e308]
# Of all doubles the closest one to a multiple of pi/2, and one that is close to 31 quarter turns.
NEAR_QUARTERS = [6381956970095103.0 * 2.0**797, 48.6946861306418]


def split(value):
    """The nearest double, and what is left in units of its last place."""
    sign, mantissa, exponent, _ = value._mpf_
    exact = Fraction(-mantissa if sign else mantissa) * Fraction(2) ** exponent
    nearest = float(exact)
    return nearest, float((exact - Fraction(nearest)) / Fraction(math.ulp(nearest)))


def around(value):
    x = float(value)
    return [math.nextafter(x, -math.inf), x, math.nextafter(x, math.inf)]


def both_signs(values):
    return [sign * value for value in values for sign in (1.0, -1.0)]


def exponential_edges():
    steps = [mpmath.log(2) * (2 * i + 1) / 128 for i in (-64 * 1022, -129, -33, -2, -1, 0, 1, 17, 31, 63, 64 * 1000)]
    whole = [mpmath.log(2) * i for i in (-1074, -1073, -1030, -1023, -1022, -1021, -1, 1, 1023)]
    ends = [709.782712893384, 709.0, -708.0, -708.5, -720.25, -735.5, -744.4400719213812, -745.1332191019411, -745.5]
    return both_signs(TINY) + [x for value in steps + whole for x in around(value)] + ends


def logarithm_edges():
    switches = [x for j in range(90, 184, 7) for x in around((j - 0.5) / 128)] + around(mpmath.sqrt(2))
    near_one = [1.0 + sign * 2.0**-k for k in (8, 9, 20, 30, 40, 52) for sign in (1, -1)] + around(127.5 / 128)
    return TINY + HUGE + switches + near_one + [1.0, 2.0, 0.5, 3.0 * 2.0**-1074, 1.9999999999999998]


def decimal_edges():
    return logarithm_edges() + [10.0**k for k in (-3, -1, 1, 2, 3, 15, 22)]


def angle_edges():
    quarters = [x for n in (1, 2, 3, 4, 5, 31, 100, 99999, 10**9) for x in around(mpmath.pi / 2 * n)]
    switches = [x for i in (0, 1, 7, 20, 33, 49) for x in around((i + 0.5) / 64)] + around(0.78) + around(mpmath.pi / 4)
    return both_signs(TINY + HUGE + NEAR_QUARTERS + quarters + switches)


def cosine_edges():
    return [1.0 - 2.0**-k for k in (10, 20, 40, 53)] + TINY + [0.5, 0.7071067811865475, 0.7071067811865476]


def points():
    sizes = [1e-300, 1e-18, 1e-09, 0.5, 1.0, 3.0, 1e300, 1.7e308]
    edges = [(y, x) for y in both_signs(sizes) for x in both_signs(sizes)]
    subnormal = [(3.0 * 2.0**-1074, 7.0 * 2.0**-1074), (3e-308, 5e-308)]
    return edges + [((2 * i + 1) / 128, 1.0) for i in (0, 1, 20, 62, 63)] + subnormal


def choose(function, draws, edges):
    """Arguments as tuples, without doubles."""
    chosen = []
    for draw in draws:
        drawn = [draw() for _ in range(TRIALS)]
        hardest = sorted(drawn, key=lambda x: abs(abs(split(function(*map(mpf, x)))[1]) - 0.5))
        chosen += drawn[:RANDOM_ROWS] + hardest[:HARD_ROWS]
    return list(dict.fromkeys(chosen + edges))


def one(values):
    return [(value,) for value in values]


def tables():
    source = random.Random(20)

    def uniform(*ends):
        return [
            lambda low=low, high=high: (low + (high - low) * source.random(),)
            for low, high in zip(ends[::2], ends[1::2])
        ]

    def plane():
        return (2.0 * source.random() - 1.0, 2.0 * source.random() - 1.0)

    sides = both_signs(cosine_edges())
    return [
        ("Exponential", mpmath.exp, choose(mpmath.exp, uniform(-50.0, 50.0, -711.0, -708.5), one(exponential_edges()))),
        ("NaturalLogarithm", mpmath.log, choose(mpmath.log, uniform(0.0, 40.0, 0.99, 1.01), one(logarithm_edges()))),
        ("DecimalLogarithm", mpmath.log10, choose(mpmath.log10, uniform(0.0, 4.0, 0.99, 1.01), one(decimal_edges()))),
        ("Sine", mpmath.sin, choose(mpmath.sin, uniform(-7.0, 7.0), one(angle_edges()))),
        ("Cosine", mpmath.cos, choose(mpmath.cos, uniform(-7.0, 7.0), one(angle_edges()))),
        ("ArcSine", mpmath.asin, choose(mpmath.asin, uniform(-1.0, 1.0), one(sides))),
        ("ArcCosine", mpmath.acos, choose(mpmath.acos, uniform(-1.0, 1.0), one(sides))),
        ("ArcTangent2", mpmath.atan2, choose(mpmath.atan2, [plane], points())),
    ]


def make_files():
    out = "// SPDX-License-Identifier: MIT\n"
    out += "// Made by make_elementary_reference.py, which says how: not to be edited.\n"
    for name, function, arguments in tables():
        pair = len(arguments[0]) == 2
        out += "\n// " + ("y, x" if pair else "x") + ", nearest double, rest in units of its last place\n"
        out += f"inline constexpr {'PointRow' if pair else 'FunctionRow'} {name}Rows[] = {{\n"
        for x in arguments:
            nearest, rest = split(function(*map(mpf, x)))
            out += "    {" + ", ".join([v.hex() for v in x] + [nearest.hex(), f"{rest:.9f}"]) + "},\n"
        out += "};\n"
    return {TARGET: out}


if __name__ == "__main__":
    sys.exit(write_or_check(make_files))
