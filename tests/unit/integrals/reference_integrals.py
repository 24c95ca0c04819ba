# SPDX-License-Identifier: MIT
"""The integrals of make_integral_reference.py in multi-precision arithmetic, with 30 digits: auxiliary functions,
Coulomb and overlap integrals of Slater orbitals.

"exact" functions are quadratures of the defining integrals, by another road than the program's. "formula" functions are
the program's own formulas with every term they keep and no rounding.
"""
from mpmath import binomial, cos, e1, ei, exp, factorial, gammainc, inf, log, mp, mpf, pi, quad, sin, sqrt

mp.dps = 30

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


def pair(sign, a, b):
    if abs(b) >= mpf(1e-06):
        d = a - b
        return exp(d) * e1_formula(2 * a) + sign * exp(-d) * (log(abs(b / a)) + e1_formula(2 * b))
    return exp(a) * e1_formula(2 * a) - sign * (log(2 * a) + mpf("0.577215")) * exp(-a)


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


PHI_NODES = 6

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


def overlap_blocks(n1, n2, kinds, zeta1, zeta2, vector, laguerre, legendre):
    """Overlaps of pairs of kinds: a Gauss-Laguerre rule in xi, a Gauss-Legendre rule in eta, the trapezoidal rule in
    phi. Of a polynomial 8 nodes in xi and 6 in phi are exact; 24 in eta are for e^(-q eta)."""
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
    for x, x_weight in laguerre:
        xi = 1 + x / p
        for eta, eta_weight in legendre:
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
