#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""compare_spectrum.py CASEDIR ACTUAL_OUT [ACTUAL_LOG]

Compares an actual nmrspect.out (and log) with CASEDIR/expected.out and
CASEDIR/expected.log; prints the first difference; exit 0 equal, 1 different.

Exact: ERRMSG lines (any path that ends in nmrspect.in stands for <INPUT>; the
exponent of %e may have two or three digits), fixed lines, counts,
degeneracies, layout of every line.  Frequencies within 0.002 Hz, intensities
within 0.002 or 2e-5 relative (the last unit of the float32 is allowed on top
for very large values).  Line endings don't matter.

With a file `fuzzy` in CASEDIR the list is compared loosely: no counts, no
degeneracies; the intensity summed in windows must agree (see loose()).
With CASEDIR/expected_second.* either pair of files passes: the degeneracy of a
line from two coinciding levels depends on whether the eigensolver mixes them.
ACTUAL_LOG `-`, or a path that doesn't exist, stands for an empty log.
"""
import os
import re
import sys

LINE = re.compile(r"^-?\d+\.\d{3} -?\d+\.\d{3} -?\d+ 0$")
ROW = re.compile(r"^ +\d+ +-?\d+\.\d{4} +-?\d+\.\d{4} +-?\d+$")
TABLE_HEAD = "        Line        Frequncy(in Hz)      Intensity       Degeneracy"


def read(path, missing_ok=False):
    if path == "-" or (missing_ok and not os.path.exists(path)):
        return ""
    with open(path, "rb") as f:
        return f.read().decode("latin-1").replace("\r\n", "\n")


def norm(text):
    text = re.sub(r"(\de[+-])0*(\d\d)(?!\d)", r"\1\2", text)
    return text


def message_regex(expected):
    return re.compile("^" + re.escape(norm(expected)).replace(re.escape("<INPUT>"), r"\S.*[\\/]nmrspect\.in") + "$")


def close_f(a, b):
    return abs(a - b) <= 0.002 + 1.3e-7 * abs(a)


def close_i(a, b):
    return abs(a - b) <= max(0.002, 2e-5 * abs(a))


class Different(Exception):
    pass


def fail(text):
    raise Different(text)


def loose(exp, act, what):
    """Sum of intensities, and for every expected line above 1 % of the largest
    the intensity within +-0.01 Hz of it."""
    se, sa = sum(e[1] for e in exp), sum(a[1] for a in act)
    if abs(se - sa) > max(0.01, 1e-3 * abs(se)):
        fail("%s (fuzzy): total intensity %.4f, expected %.4f" % (what, sa, se))
    if not exp:
        return
    top = max(e[1] for e in exp)
    for A, B, t in ((exp, act, "expected"), (act, exp, "actual")):
        for f, i in A:
            if i < 0.01 * top:
                continue
            x = sum(v for g, v in A if abs(g - f) <= 0.01)
            lo = sum(v for g, v in B if abs(g - f) <= 0.006) * (1 - 1e-2) - 0.02
            hi = sum(v for g, v in B if abs(g - f) <= 0.015) * (1 + 1e-2) + 0.02
            if not lo <= x <= hi:
                fail("%s (fuzzy): %s line at %.3f has %.4f nearby, the other side %.4f..%.4f" % (what, t, f, x, lo, hi))


def compare_out(exp, act, fuzzy):
    e, a = exp.split("\n"), act.split("\n")
    if exp.startswith("ERRMSG: "):
        if not act.startswith("ERRMSG: "):
            fail(".out: expected a refusal [%s], got [%s]" % (e[0], a[0]))
        if not message_regex(e[0]).match(norm(a[0])):
            fail(".out line 1:\n  expected %s\n  actual   %s" % (e[0], a[0]))
        if a[1:] != [""]:
            fail(".out: a refusal must be one line ending in one newline")
        return
    if act.startswith("ERRMSG: "):
        fail(".out: unexpected refusal [%s]" % a[0])
    for k in (0, 2):
        if k >= len(a) or a[k] != e[k]:
            fail(".out line %d:\n  expected %s\n  actual   %s" % (k + 1, e[k], a[k] if k < len(a) else "(none)"))
    if a[-1] != "":
        fail(".out: last line has no newline")
    for k in range(3, len(a) - 1):
        if not LINE.match(a[k]):
            fail('.out line %d: not of the form "%%.3f %%.3f %%ld 0": [%s]' % (k + 1, a[k]))
    if a[1] != str(len(a) - 4):
        fail(".out: count line says %s, %d lines follow" % (a[1], len(a) - 4))
    pe = [t.split() for t in e[3:-1]]
    pa = [t.split() for t in a[3:-1]]
    if fuzzy:
        loose([(float(t[0]), float(t[1])) for t in pe], [(float(t[0]), float(t[1])) for t in pa], ".out")
        return
    for k in range(min(len(pe), len(pa))):
        x, y = pe[k], pa[k]
        if not close_f(float(x[0]), float(y[0])) or not close_i(float(x[1]), float(y[1])) or x[2] != y[2]:
            fail(
                ".out line %d:\n  expected %s\n  actual   %s%s"
                % (
                    k + 4,
                    " ".join(x),
                    " ".join(y),
                    "" if len(pe) == len(pa) else "\n  (expected %d lines, actual %d)" % (len(pe), len(pa)),
                )
            )
    if len(pe) != len(pa):
        fail(".out: expected %d lines, actual %d" % (len(pe), len(pa)))


def compare_log(exp, act, fuzzy):
    e, a = exp.split("\n"), act.split("\n")
    table = False
    for k in range(min(len(e), len(a))):
        if table and k > start + 1 and (ROW.match(e[k]) or e[k] == ""):
            if fuzzy:
                return
            if e[k] == a[k]:
                continue
            if not ROW.match(e[k]) or not ROW.match(a[k]):
                fail("log line %d:\n  expected [%s]\n  actual   [%s]" % (k + 1, e[k], a[k]))
            x, y = e[k].split(), a[k].split()
            if (
                "       %4d      %15.4f  %15.4f         %4d" % (int(y[0]), float(y[1]), float(y[2]), int(y[3])) != a[k]
                and float(y[1]) != 0
            ):
                fail("log line %d: columns [%s]" % (k + 1, a[k]))
            if (
                x[0] != y[0]
                or x[3] != y[3]
                or not close_f(float(x[1]), float(y[1]))
                or not close_i(float(x[2]), float(y[2]))
            ):
                fail("log line %d:\n  expected [%s]\n  actual   [%s]" % (k + 1, e[k], a[k]))
            continue
        if e[k] != a[k]:
            fail("log line %d:\n  expected [%s]\n  actual   [%s]" % (k + 1, e[k], a[k]))
        if e[k] == TABLE_HEAD:
            table, start = True, k
    if fuzzy and table:
        return
    if len(e) != len(a):
        fail(
            "log: expected %d lines, actual %d; first beyond: [%s]"
            % (len(e) - 1, len(a) - 1, (e + a)[min(len(e), len(a))] if len(e) > len(a) else a[len(e)])
        )


def main(argv):
    case, out = argv[1], argv[2]
    fuzzy = os.path.exists(os.path.join(case, "fuzzy"))
    first = None
    for base in ("expected", "expected_second"):
        if not os.path.exists(os.path.join(case, base + ".out")):
            continue
        try:
            if not os.path.exists(out):
                fail(".out was not written")
            compare_out(read(os.path.join(case, base + ".out")), read(out), fuzzy)
            if len(argv) > 3:
                compare_log(read(os.path.join(case, base + ".log")), read(argv[3], True), fuzzy)
            sys.exit(0)
        except Different as e:
            first = first or str(e)
    print("DIFF " + first)
    sys.exit(1)


if __name__ == "__main__":
    main(sys.argv)
