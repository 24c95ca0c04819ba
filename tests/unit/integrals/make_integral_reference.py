#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes tests/unit/integrals/integral_reference.inc: values of the auxiliary functions, Coulomb and overlap integrals in
multi-precision arithmetic. Needs mpmath; takes about two minutes.

With --check it writes nothing, and exits with 1 if the file isn't what it would write.

"exact" columns are quadratures of the defining integrals, by another road than the program's. "formula" columns are
the program's own formulas with every term they keep and no rounding, so that only rounding separates the two.
"""
import os
import sys

from mpmath import mp, mpf, quad, exp, sqrt, log, factorial, gammainc, ei, e1, binomial, pi, cos, sin, inf

mp.dps = 30
TARGET = os.path.join(os.path.dirname(os.path.abspath(__file__)), "integral_reference.inc")


def text(value):
    if isinstance(value, float):
        return repr(value)
    return mp.nstr(mpf(value), 17, min_fixed=0, max_fixed=0) if value else "0.0"


# --- tables A and B

EVEN_MOMENTS = [
    "2.0",
    "0.666666666667",
    "0.4",
    "0.285714285714",
    "0.222222222222",
    "0.181818181818",
    "0.153846153846",
    "0.133333333333",
    "0.117647058824",
    "0.105263157895",
]


def a_exact(n, p):
    """With t = 1 + x/p, so that the exponential is that of x."""
    return exp(-p) / p * quad(lambda x: (1 + x / p) ** n * exp(-x), [0, n + 2, 4 * n + 20, inf])


def b_exact(n, q):
    return quad(lambda t: t**n * exp(-q * t), [-1, 0, 1])


def b_terms(q, order):
    """Terms of the series that B is cut to, None for none, 0 for the limit."""
    size = abs(q)
    if size <= mpf(1e-06):
        return 0
    if size <= mpf("0.5"):
        return 7
    for upper, last, terms in ((1, 5, 8), (2, 7, 13), (3, 10, 16)):
        if size <= upper:
            return terms if order > last else None
    return None


def b_formula(n, q, order):
    if abs(q) >= 100:
        return mpf(0)
    terms = b_terms(q, order)
    if terms == 0:
        return mpf(EVEN_MOMENTS[n // 2]) if n % 2 == 0 else mpf(0)
    if terms is None:  # integration by parts, as the recursion does it; exact but for rounding
        return sum(
            -end
            * exp(-q * end)
            * sum(factorial(n) / factorial(n - k) * mpf(end) ** (n - k) / q ** (k + 1) for k in range(n + 1))
            for end in (1, -1)
        )
    return 2 * sum((-q) ** k / ((n + 1 + k) * factorial(k)) for k in range(n % 2, terms, 2))


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
A_POINTS = [1.0000001e-06, 0.001, 0.1, 0.9, 3.0, 12.0, 60.0, 99.999999]


def rows_a():
    for p in A_POINTS:
        for n in (0, 1, 2, 6, 12, 19):
            yield [text(p), str(n), text(a_exact(n, mpf(p)))]


def rows_b():
    for size in B_POINTS:
        for q in (size, -size):
            exact = {}
            for order in B_ORDERS:
                for n in sorted({0, 1, order - 1, order}):
                    if n not in exact:
                        exact[n] = b_exact(n, mpf(q))
                    yield [
                        text(q),
                        str(order),
                        str(n),
                        str(b_terms(mpf(q), order) or 0),
                        text(exact[n]),
                        text(b_formula(n, mpf(q), order)),
                    ]


# --- the exponential integral

LARGE = [
    "0.24999999",
    "-0.062498588",
    "0.031208561",
    "-0.022951979",
    "0.020412099",
    "-0.017555779",
    "0.011723273",
    "-0.0049362007",
    "0.00094427614",
]
SMALL = [
    "-1",
    "0.25",
    "-0.05555552",
    "0.010416662",
    "-0.0016666906",
    "0.00023148392",
    "-2.833759e-05",
    "3.099604e-06",
    "-3.0726221e-07",
    "2.763583e-08",
    "-2.1915699e-09",
    "1.6826592e-10",
    "-1.5798675e-11",
    "1.0317602e-12",
]


def e1_exact(x):
    return e1(x) if x > 0 else -ei(-x)


def e1_formula(x):
    if x > 4:
        return exp(-x) * (4 / x) * sum(mpf(c) * (4 / x) ** k for k, c in enumerate(LARGE))
    if x >= -4:
        if abs(x) < mpf(1e-06):
            return mpf("1e38")
        return -log(abs(x)) - x * sum(mpf(c) * x**k for k, c in enumerate(SMALL)) - mpf("0.57721566")
    a = -x
    total, term, k = log(a) + mpf("0.577215664901533") + a, a, 1
    while abs(term) > mpf("1e-06"):
        k += 1
        term = a**k / (k * factorial(k))
        total += term
    return -total


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


def pair(sign, a, b):
    if abs(b) >= mpf(1e-06):
        d = a - b
        return exp(d) * e1_formula(2 * a) + sign * exp(-d) * (log(abs(b / a)) + e1_formula(2 * b))
    return exp(a) * e1_formula(2 * a) - sign * (log(2 * a) + mpf("0.577215")) * exp(-a)


PAIR_POINTS = [(2.1, 0.7), (0.4, 1.3), (3.0, -0.6), (1.2, 2e-06), (1.2, 1e-06), (1.2, 9e-07), (1.2, 0.0), (2.5, 2.2)]


def rows_pair():
    for a, b in PAIR_POINTS:
        yield [text(a), text(b), text(pair(1, mpf(a), mpf(b))), text(pair(-1, mpf(a), mpf(b)))]


# --- Coulomb integrals


def screened(n, zeta, r):
    """r times the potential of a cloud at the distance r."""
    s = 2 * zeta * r
    return 1 - exp(-s) * sum(s**k / factorial(k) * (1 - mpf(k) / (2 * n)) for k in range(2 * n))


def distribution(n, zeta, r):
    return (2 * zeta) ** (2 * n + 1) / factorial(2 * n) * r ** (2 * n) * exp(-2 * zeta * r)


def screened_integral(n, zeta, low, high):
    """Integral of the screened charge from low to high: by spherical averages the potential around another centre."""
    b = 2 * zeta
    return (
        high
        - low
        - sum((1 - mpf(k) / (2 * n)) / factorial(k) * gammainc(k + 1, b * low, b * high) / b for k in range(2 * n))
    )


def breaks(n, zeta, distance):
    """Where the quadrature over the first cloud is divided: the cusp at the other centre, and the cloud's scale."""
    scale = mpf(2 * n + 1) / (2 * zeta)
    return sorted({mpf(0), distance, scale, 2 * scale, 4 * scale, 8 * scale, 16 * scale})


def coulomb_exact(n1, n2, zeta1, zeta2, distance):
    # the inner average has a closed form; 16 scales leave less than 1e-25 of the charge outside
    def integrand(r):
        if r == 0:
            return mpf(0)
        low, high = abs(r - distance), r + distance
        return distribution(n1, zeta1, r) * screened_integral(n2, zeta2, low, high) / (2 * r * distance)

    with mp.workdps(22):
        return quad(integrand, breaks(n1, zeta1, distance), method="gauss-legendre")


ORDERS = {
    (1, 1): 7,
    (1, 2): 9,
    (1, 3): 10,
    (1, 4): 12,
    (1, 5): 14,
    (2, 2): 10,
    (2, 3): 13,
    (2, 4): 14,
    (2, 5): 16,
    (3, 3): 14,
    (3, 4): 16,
    (3, 5): 18,
}


def a_closed(n, p):
    return exp(-p) * sum(factorial(n) / factorial(n - k) / p ** (k + 1) for k in range(n + 1))


def coulomb_formula(n1, n2, zeta1, zeta2, distance):
    p = distance * zeta1 + distance * zeta2
    q = distance * zeta1 - distance * zeta2
    if p >= 100:
        return 1 / distance
    order = ORDERS[n1, n2]

    def product(i, j):
        return a_closed(i, p) * b_formula(j, q, order)

    if (n1, n2) == (1, 1):
        s1 = product(0, 1) + product(1, 0)
        s2 = product(0, 2) - product(2, 0)
        s3 = product(0, 1) - 3 * product(1, 0) + 4 * product(0, 0)
        terms = [
            (0, 0, 64),
            (1, 0, -32 * product(0, 0)),
            (2, 0, -16 * product(0, 0)),
            (3, 0, -4 * s1),
            (4, 0, s2),
            (1, 1, 16 * (2 * product(0, 1) + product(0, 0))),
            (2, 1, 4 * s3),
            (3, 1, 2 * s2),
            (1, 2, 4 * s3),
            (0, 3, -4 * s1),
            (1, 3, -2 * s2),
            (0, 4, -s2),
        ]
        return sum(p**i * q**j * c for i, j, c in terms) / (64 * distance)
    a, b = 2 * zeta1, 2 * zeta2
    total = mpf(0)
    for k in range(2 * n1):
        weight = (a * distance / 2) ** k / factorial(k) * (1 - mpf(k) / (2 * n1))
        for x in range(2 * n2):  # powers of eta from (xi - eta)^(2 n2 - 1) and from (xi + eta)^k
            for y in range(k + 1):
                total += (
                    weight
                    * (-1) ** x
                    * binomial(2 * n2 - 1, x)
                    * binomial(k, y)
                    * product(2 * n2 - 1 + k - x - y, x + y)
                )
    c2 = b ** (2 * n2 + 1) / factorial(2 * n2)
    return screened(n2, zeta2, distance) / distance - distance / 4 * c2 * (distance / 2) ** (2 * n2 - 1) * total


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
            yield [str(n1), str(n2)] + [text(x) for x in point] + [
                text(coulomb_exact(n1, n2, zeta1, zeta2, distance)),
                text(coulomb_formula(n1, n2, zeta1, zeta2, distance)),
            ]


def rows_one_centre():
    for n1 in (1, 2, 3):
        for n2 in (1, 2, 3, 5):
            for zeta1, zeta2 in ((1.0, 1.0), (1.3, 0.7), (0.4, 2.9)):
                value = quad(
                    lambda r: distribution(n1, mpf(zeta1), r) * screened(n2, mpf(zeta2), r) / r if r else mpf(0),
                    breaks(n1, mpf(zeta1), mpf(1)),
                )
                yield [str(n1), str(n2), text(zeta1), text(zeta2), text(value)]


# --- overlaps


def gauss_legendre(count):
    nodes = []
    for k in range(count):
        x = cos(pi * (k + mpf(3) / 4) / (count + mpf(1) / 2))
        for _ in range(12):
            low, high = mpf(1), x
            for n in range(2, count + 1):
                low, high = high, ((2 * n - 1) * x * high - (n - 1) * low) / n
            slope = count * (x * high - low) / (x * x - 1)
            x -= high / slope
        nodes.append((x, 2 / ((1 - x * x) * slope * slope)))
    return nodes


def gauss_laguerre(count):
    coefficients = [binomial(count, k) * (-1) ** k / factorial(k) for k in range(count, -1, -1)]
    nodes = []
    for x in mp.polyroots(coefficients, maxsteps=500, extraprec=200):
        following = sum(binomial(count + 1, k) * (-x) ** k / factorial(k) for k in range(count + 2))
        nodes.append((x, x / ((count + 1) * following) ** 2))
    return nodes


# x, y, z over r; in the order of the orbitals of an atom
ANGULAR = [
    lambda x, y, z: mpf(1),
    lambda x, y, z: sqrt(3) * x,
    lambda x, y, z: sqrt(3) * y,
    lambda x, y, z: sqrt(3) * z,
    lambda x, y, z: sqrt(5) / 2 * (3 * z * z - 1),
    lambda x, y, z: sqrt(15) * x * z,
    lambda x, y, z: sqrt(15) * y * z,
    lambda x, y, z: sqrt(15) / 2 * (x * x - y * y),
    lambda x, y, z: sqrt(15) * x * y,
]


def orbital_values(n, kinds, zeta, vector, r):
    """By kind, the exponential apart."""
    radial = sqrt((2 * zeta) ** (2 * n + 1) / factorial(2 * n) / (4 * pi)) * r ** (n - 1)
    unit = [c / r for c in vector]
    return {kind: radial * ANGULAR[kind](*unit) for kind in kinds}


def overlap_blocks(n1, n2, kinds, zeta1, zeta2, vector):
    """Overlaps of pairs of kinds: Gauss-Laguerre in xi, Gauss-Legendre in eta, the trapezoidal
    rule in phi. Of a polynomial 8 nodes in xi and 6 in phi are exact; 24 in eta are for e^(-q eta)."""
    distance = sqrt(sum(c * c for c in vector))
    axis = [c / distance for c in vector]
    helper = [mpf(1), mpf(0), mpf(0)] if abs(axis[0]) < mpf("0.7") else [mpf(0), mpf(1), mpf(0)]
    along = sum(h * a for h, a in zip(helper, axis))
    side = [h - along * a for h, a in zip(helper, axis)]
    length = sqrt(sum(c * c for c in side))
    side = [c / length for c in side]
    other = [
        axis[1] * side[2] - axis[2] * side[1],
        axis[2] * side[0] - axis[0] * side[2],
        axis[0] * side[1] - axis[1] * side[0],
    ]
    p = (zeta1 + zeta2) * distance / 2
    q = (zeta1 - zeta2) * distance / 2
    sums = {pair_of_kinds: mpf(0) for pair_of_kinds in kinds}
    for x, x_weight in LAGUERRE:
        xi = 1 + x / p
        for eta, eta_weight in LEGENDRE:
            ra, rb = distance * (xi + eta) / 2, distance * (xi - eta) / 2
            height = distance * (1 + xi * eta) / 2
            radius = distance / 2 * sqrt((xi * xi - 1) * (1 - eta * eta))
            weight = (
                x_weight
                * exp(-p)
                / p
                * eta_weight
                * exp(-q * eta)
                * (distance / 2) ** 3
                * (xi * xi - eta * eta)
                * 2
                * pi
                / PHI_NODES
            )
            for k in range(PHI_NODES):
                phi = 2 * pi * k / PHI_NODES
                va = [height * a + radius * (cos(phi) * s + sin(phi) * o) for a, s, o in zip(axis, side, other)]
                vb = [a - c for a, c in zip(va, vector)]
                first = orbital_values(n1, {kind for kind, _ in kinds}, zeta1, va, ra)
                second = orbital_values(n2, {kind for _, kind in kinds}, zeta2, vb, rb)
                for kind1, kind2 in kinds:
                    sums[kind1, kind2] += weight * first[kind1] * second[kind2]
    return sums


PHI_NODES = 6
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


def rows_overlap():
    mp.dps = 20
    global LAGUERRE, LEGENDRE
    LAGUERRE = gauss_laguerre(8)
    LEGENDRE = gauss_legendre(24)
    for n1, n2 in PAIRS_OF_SHELLS:
        for zeta1, zeta2, vector in OVERLAP_POINTS:
            tilted = vector[0] != 0.0
            kinds = [(a, b) for a, b in kinds_of(n1, n2, tilted) if a < n1 * n1 and b < n2 * n2]
            sums = overlap_blocks(n1, n2, kinds, mpf(zeta1), mpf(zeta2), [mpf(c) for c in vector])
            for kind1, kind2 in kinds:
                value = sums[kind1, kind2]
                yield [
                    str(n1),
                    str(n2),
                    str(kind1),
                    str(kind2),
                    text(zeta1),
                    text(zeta2),
                    "{" + ", ".join(text(c) for c in vector) + "}",
                    text(value) if abs(value) > mpf("1e-18") else "0.0",
                ]
    mp.dps = 30


TABLES = [
    ("AuxiliaryA", "p, n, exact", rows_a),
    ("AuxiliaryB", "q, order, n, terms of the series or 0, exact, formula", rows_b),
    ("IntegralE1", "x, exact, formula", rows_e1),
    ("ExponentialPair", "a, b, plus, minus; both by the formula", rows_pair),
    ("Coulomb", "n1, n2, zeta1, zeta2, distance, exact, formula", rows_coulomb),
    ("OneCentre", "n1, n2, zeta1, zeta2, exact", rows_one_centre),
    ("Overlap", "n1, n2, orbital 1, orbital 2, zeta1, zeta2, x, y, z from 1 to 2, exact", rows_overlap),
]


def generated():
    out = "// SPDX-License-Identifier: MIT\n// Made by make_integral_reference.py, which says how: not to be edited.\n"
    for name, columns, rows in TABLES:
        out += "\n// " + columns + "\ninline constexpr " + name + "Row " + name + "Rows[] = {\n"
        for row in rows():
            out += "    {" + ", ".join(row) + "},\n"
        out += "};\n"
    return out


def main():
    if sys.argv[1:] == ["--check"]:
        with open(TARGET, encoding="ascii") as file:
            if file.read() != generated():
                print("integral_reference.inc isn't what make_integral_reference.py makes", file=sys.stderr)
                return 1
        return 0
    made = generated()
    with open(TARGET, "w", encoding="ascii", newline="\n") as file:
        file.write(made)
    return 0


if __name__ == "__main__":
    sys.exit(main())
