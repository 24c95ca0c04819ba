#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes core/numerics/elementary_tables.h: the tables and constants of core/numerics/elementary_functions.cpp.

With --check it writes nothing, and exits with 1 if the file isn't what it would write.

Values are computed in integers with 1400 binary digits after the point, and rounded once, when they are written. A
value that takes two doubles is the nearest double and the nearest double to what is left.
"""
import pathlib
import sys
from fractions import Fraction

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "python"))
from generated_files import write_or_check

TARGET = pathlib.Path(__file__).resolve().parent / "elementary_tables.h"
DIGITS = 1400
ONE = 1 << DIGITS
EXPONENTIAL_STEPS = 64  # of a factor of 2
LOGARITHM_STEPS = 128  # of 1
FIRST_LOGARITHM = 90  # sqrt(1/2) and sqrt(2), in these steps
LAST_LOGARITHM = 182
ANGLE_STEPS = 64  # of 1
LAST_SINE = 51  # pi/4, in these steps
WORDS = 40  # of 32 bits, of 2/pi

HEAD = """// SPDX-License-Identifier: MIT
// Made by make_elementary_tables.py, which says how: not to be edited.
#pragma once

#include <cstdint>

"""


def arc_tangent_of_inverse(n):
    total, power, k = 0, ONE // n, 1
    while power:
        total += power // k if k % 4 == 1 else -(power // k)
        power //= n * n
        k += 2
    return total


PI = 4 * (4 * arc_tangent_of_inverse(5) - arc_tangent_of_inverse(239))


def series(first, next_term):
    """Sum of first and the terms that next_term makes of their forerunner and their number."""
    total, term, k = 0, first, 1
    while term not in (0, -1):
        total += term
        term = next_term(term, k)
        k += 1
    return total


def exponential(x):
    return series(ONE, lambda term, k: term * x // ONE // k)


def sine(x):
    return series(x, lambda term, k: -(term * x // ONE * x // ONE) // (2 * k * (2 * k + 1)))


def cosine(x):
    return series(ONE, lambda term, k: -(term * x // ONE * x // ONE) // (2 * k * (2 * k - 1)))


def arc_tangent(x):
    """x up to 1: halved twice by tan(a/2) = tan(a)/(1 + sqrt(1 + tan(a)^2)), so that the series is short."""
    for _ in range(2):
        x = x * ONE // (ONE + root(ONE + x * x // ONE))
    total, power, k = 0, x, 1
    while power:
        total += power // k if k % 4 == 1 else -(power // k)
        power = power * x // ONE * x // ONE
        k += 2
    return 4 * total


def root(x):
    """Newton's iteration in integers, from above."""
    target = x * ONE
    guess = 1 << (target.bit_length() + 1) // 2 + 1
    while True:
        better = (guess + target // guess) // 2
        if better >= guess:
            return guess
        guess = better


def logarithm(x):
    """By the series of the inverse hyperbolic tangent, of 1/2 to 2."""
    z = (x - ONE) * ONE // (x + ONE)
    total, power, k = 0, z, 1
    while power not in (0, -1):
        total += power // k
        power = power * z // ONE * z // ONE
        k += 2
    return 2 * total


def two_doubles(x):
    exact = Fraction(x, ONE)
    high = float(exact)
    return [high, float(exact - Fraction(high))]


def pieces(x, *bits):
    """x cut into pieces of so many bits, each rounded towards zero, and a double for the rest."""
    row, rest = [], Fraction(x, ONE)
    for count in bits:
        unit = Fraction(2) ** (rest.numerator.bit_length() - rest.denominator.bit_length() - count)
        row.append(float(rest // unit * unit))
        rest -= Fraction(row[-1])
    return row + [float(rest)]


def braces(values):
    return "{" + ", ".join(value.hex() for value in values) + "}"


def table(declaration, rows):
    return "inline constexpr " + declaration + " = {\n" + "".join("    " + row + ",\n" for row in rows) + "};\n\n"


def logarithm_row(j):
    inverse = float((2 * LOGARITHM_STEPS * LOGARITHM_STEPS + j // 2) // j) / (2 * LOGARITHM_STEPS)
    return [inverse] + two_doubles(-logarithm(int(Fraction(inverse) * ONE)))


def make_files():
    ln2 = -logarithm(ONE // 2)
    ln10 = 3 * ln2 + logarithm(ONE * 5 // 4)
    out = HEAD
    for name, value in (("HalfPi", PI // 2), ("InverseLn10", ONE * ONE // ln10)):
        high, low = two_doubles(value)
        out += f"inline constexpr double {name}High = {high.hex()};\n"
        out += f"inline constexpr double {name}Low = {low.hex()};\n"
    out += "\n// 64/ln 2, and ln 2/64 in pieces whose product with an integer of 17 bits is exact.\n"
    out += f"inline constexpr double ExponentialScale = {two_doubles(EXPONENTIAL_STEPS * ONE * ONE // ln2)[0].hex()};\n"
    out += table("double ExponentialStep[3]", [value.hex() for value in pieces(ln2 // EXPONENTIAL_STEPS, 35, 35)])
    out += "// ln 2; the product of the first piece with an integer of 11 bits is exact.\n"
    out += table("double Ln2[2]", [value.hex() for value in pieces(ln2, 41)])
    out += f"// 2^(i/{EXPONENTIAL_STEPS}), in two doubles.\n"
    out += table(
        f"double ExponentialTable[{EXPONENTIAL_STEPS}][2]",
        [braces(two_doubles(exponential(ln2 * i // EXPONENTIAL_STEPS))) for i in range(EXPONENTIAL_STEPS)],
    )
    out += f"// Nine bits of 1/c, and ln c in two doubles, c being near i/{LOGARITHM_STEPS}.\n"
    out += f"inline constexpr int FirstLogarithm = {FIRST_LOGARITHM};\n"
    rows = [logarithm_row(j) for j in range(FIRST_LOGARITHM, LAST_LOGARITHM + 1)]
    out += table(f"double LogarithmTable[{len(rows)}][3]", [braces(row) for row in rows])
    angles = [ONE * i // ANGLE_STEPS for i in range(ANGLE_STEPS + 1)]
    out += f"// Sine and cosine of i/{ANGLE_STEPS}, each in two doubles.\n"
    out += table(
        f"double SineTable[{LAST_SINE}][4]",
        [braces(two_doubles(sine(x)) + two_doubles(cosine(x))) for x in angles[:LAST_SINE]],
    )
    out += f"// The angle whose tangent is i/{ANGLE_STEPS}, in two doubles.\n"
    out += table(f"double ArcTangentTable[{ANGLE_STEPS + 1}][2]", [braces(two_doubles(arc_tangent(x))) for x in angles])
    bits = (2 * ONE * ONE // PI) >> (DIGITS - 32 * WORDS)
    words = [f"0x{bits >> 32 * (WORDS - 1 - i) & 0xffffffff:08x}" for i in range(WORDS)]
    out += "// 2/pi, the first word being that of 2^-32.\n"
    out += table(f"std::uint32_t TwoOverPi[{WORDS}]", [", ".join(words[i : i + 8]) for i in range(0, WORDS, 8)])
    return {TARGET: out.rstrip("\n") + "\n"}


if __name__ == "__main__":
    sys.exit(write_or_check(make_files))
