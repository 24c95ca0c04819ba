#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""compare_parameter.py CASEDIR ACTUAL_OUT [ACTUAL_LOG]

Token-wise comparison with CASEDIR/expected.out and expected.log.  Exit code 0 = same.
 - words exactly; runs of blanks count as one; line structure (blank lines too) must agree
 - numbers: 2 units of the last printed place, or 1e-5 relative, or 2e-5 absolute where 6 and more
   decimals are printed (the freedom that is left in the expansion of the Coulomb classes);
   energies in kcal/mol 0.02 absolute
 - K and J: 1e-4 relative or 0.02 Hz
 - progress lines of iterations: the counts in a block may differ by 1; values 2 % or 0.05 kcal/mol
   (Difference), 5 % or 2e-8 (Diff)
 - a path in front of a known file name is not looked at
 - '@@SHIELDING TABLES@@' in expected.log: what the program writes there is skipped, and so are the
   numbers of SHIELDING and TENSOR in the output file if the log holds that marker or CASEDIR/mask
 - CASEDIR/fuzzy, by its first word:
     signs       eigenvector coefficients are compared without their sign
     degenerate  eigenvector coefficient lines are not compared
     loose       as degenerate, and numbers with 2e-3 (absolute or relative), K/J 2e-2 relative or 0.5 Hz
     unstable    the result hangs on rounding noise (a degenerate level at the border of the occupied ones in
                 the first iteration): words and line structure only"""
import os
import re
import sys

PATH = re.compile(r"[^\s()]*[\\/](nmrparam\.in|nmrparam\.out|nmrtype\.txt|nmr_shft\.abp|nmr_cupl\.abp)")
FUZZ = ""
NUM = re.compile(r"^[+-]?(\d+\.?\d*|\.\d+)([eE][+-]?\d+)?$")
SPLITNUM = re.compile(r"(?<=\d)(?=-\d)")
PROG = re.compile(r"^(Iteration = |Perturbed )")
JROW = re.compile(r"^ +\d+\([ A-Z][A-Za-z]\) +\d+\([ A-Z][A-Za-z]\) ")
EVEC = re.compile(r"^(  S| P[xyz]|D\w\w) [ A-Z][A-Za-z] +\d+  ")


def norm(text):
    return [PATH.sub(lambda m: "@/" + m.group(1), l) for l in text.replace("\r", "").split("\n")]


def toks(line):
    out = []
    for t in line.split():
        if t.count("-") and not NUM.match(t) and re.match(r"^[-\d.]+$", t):
            out += SPLITNUM.sub(" ", t).split()  # glued %11.5f columns
        else:
            out.append(t)
    return out


def same_number(a, b, kind, fuzzy):
    x, y = float(a), float(b)
    if FUZZ == "unstable" and ("." in a or "e" in a):
        return True
    if x != x or y != y:
        return (x != x) == (y != y)
    if kind == "J":
        return abs(x - y) <= max((2e-2 if fuzzy else 1e-4) * abs(x), 0.5 if fuzzy else 0.02)
    m = NUM.match(a)
    if "." not in a and "e" not in a.lower():
        return x == y
    dec = len(a.split(".")[1].split("e")[0].split("E")[0]) if "." in a else 0
    ulp = 10.0**-dec
    if m.group(2):
        ulp *= 10.0 ** int(m.group(2)[1:])
    tol = max(2.0001 * ulp, 1e-5 * abs(x))
    if dec >= 6 and not m.group(2):
        tol = max(tol, 2e-5)
    if kind == "kcal":
        tol = max(tol, 0.02)
    if fuzzy:
        tol = max(tol, 2e-3 * abs(x), 2e-3)
    return abs(x - y) <= tol


def same_line(e, a, kind, fuzzy):
    te, ta = toks(e), toks(a)
    if FUZZ == "unstable":  # numbers may be glued or not: look at the words only
        w = lambda l: [x for x in toks(l.replace("=", " = ")) if not NUM.match(x)]
        return w(e) == w(a)
    if FUZZ == "signs" and EVEC.match(e):
        te, ta = [t.lstrip("-") for t in te], [t.lstrip("-") for t in ta]
    if len(te) != len(ta):
        return False
    if JROW.match(e) and len(te) >= 8:
        ke, je, ka, ja = te[-2], te[-1], ta[-2], ta[-1]
        if not same_number(je, ja, "J", fuzzy):
            return False
        try:
            k1, k2, j1 = float(ke), float(ka), float(je)
            tol = max((2e-2 if fuzzy else 1e-4) * abs(k1), abs((0.5 if fuzzy else 0.02) * k1 / j1) if j1 else 0.0)
            if j1 == 0.0:
                tol = max(tol, 1e14)
            if abs(k1 - k2) > tol:
                return False
        except ValueError:
            return False
        te, ta = te[:-2], ta[:-2]
    for x, y in zip(te, ta):
        if x == y:
            continue
        xs = re.split(r"(=)", x) if "=" in x else [x]
        ys = re.split(r"(=)", y) if "=" in y else [y]
        if len(xs) != len(ys):
            return False
        for p, q in zip(xs, ys):
            if p == q:
                continue
            if NUM.match(p) and NUM.match(q):
                if not same_number(p, q, kind, fuzzy):
                    return False
            else:
                return False
    return True


def progress_value(l):
    return float(l.rsplit("=", 1)[1]), l.rsplit("=", 1)[0]


def fail(what, n, e, a):
    print("%s line %d differs" % (what, n))
    print("  expected: %s" % e)
    print("  actual:   %s" % a)
    return 1


def compare_out(E, A, fuzzy, masked):
    i = j = 0
    section = ""
    if len(E) != len(A) and not masked:
        k = next((k for k in range(min(len(E), len(A))) if not same_line(E[k], A[k], "J", fuzzy)), min(len(E), len(A)))
        return fail("out", k + 1, E[k] if k < len(E) else "<end>", A[k] if k < len(A) else "<end>")
    while i < len(E) or j < len(A):
        e = E[i] if i < len(E) else None
        a = A[j] if j < len(A) else None
        if masked and e in ("SHIELDING", "TENSOR") and a == e:
            i += 1
            j += 1
            while i < len(E) and E[i] not in ("TENSOR", "COUPLING"):
                i += 1
            while j < len(A) and A[j] not in ("TENSOR", "COUPLING"):
                j += 1
            continue
        if e is None or a is None:
            return fail("out", i + 1, e if e is not None else "<end>", a if a is not None else "<end>")
        if e in ("SHIELDING", "COUPLING", "FIELD", "TENSOR"):
            section = e
        kind = "J" if section == "COUPLING" else ""
        if not same_line(e, a, kind, fuzzy):
            return fail("out", i + 1, e, a)
        i += 1
        j += 1
    return 0


def compare_log(E, A, fuzzy):
    A = [line for line in A if not line.startswith("CAUTION: ")]  # the evaluation knows no such lines
    i = j = 0
    while i < len(E) or j < len(A):
        e = E[i] if i < len(E) else None
        a = A[j] if j < len(A) else None
        if e == "@@SHIELDING TABLES@@":
            i += 1
            nxt = E[i] if i < len(E) else ""
            if nxt == "":
                return 0
            while j < len(A) and not (PROG.match(A[j]) and PROG.match(nxt)) and A[j] != nxt:
                j += 1
            continue
        if e is None or a is None:
            return fail("log", i + 1, e if e is not None else "<end>", a if a is not None else "<end>")
        if PROG.match(e):
            pe, pa = [], []
            while i < len(E) and PROG.match(E[i]):
                pe.append(E[i])
                i += 1
            while j < len(A) and PROG.match(A[j]):
                pa.append(A[j])
                j += 1
            groups = {}
            for side, lst in ((0, pe), (1, pa)):
                for l in lst:
                    k = "Iteration" if l.startswith("Iteration") else l.split(":")[0]
                    groups.setdefault(k, ([], []))[side].append(l)
            for k, (x, y) in groups.items():
                if abs(len(x) - len(y)) > (1000 if FUZZ == "unstable" else 5 if fuzzy else 1):
                    return fail("log (number of progress lines)", i, "%s: %d lines" % (k, len(x)), "%d lines" % len(y))
                for l, m in zip(x, y):
                    v, t = progress_value(l)
                    w, u = progress_value(m)
                    it = l.startswith("Iteration")
                    tol = max(abs(v) * (0.02 if it else 0.05), 0.05 if it else 2e-8)
                    if fuzzy:
                        tol = max(tol, abs(v) * 0.5, 1.0 if it else 1e-5)
                    if t != u or (abs(v - w) > tol and FUZZ != "unstable"):
                        return fail("log", i, l, m)
            continue
        if FUZZ in ("loose", "degenerate") and EVEC.match(e) and EVEC.match(a):
            if toks(e)[:3] != toks(a)[:3] or len(toks(e)) != len(toks(a)):
                return fail("log", i + 1, e, a)
        else:
            kind = "kcal" if ("kcal/mol" in e or e.startswith("Energy=")) else ""
            if not same_line(e, a, kind, fuzzy):
                return fail("log", i + 1, e, a)
        i += 1
        j += 1
    return 0


def read(p):
    with open(p, errors="replace") as f:
        return norm(f.read())


def main():
    global FUZZ
    case, out = sys.argv[1:3]
    log = sys.argv[3] if len(sys.argv) > 3 else None
    if os.path.exists(os.path.join(case, "fuzzy")):
        with open(os.path.join(case, "fuzzy")) as f:
            FUZZ = f.read().split()[0].strip(":")
    fuzzy = FUZZ in ("loose", "unstable")
    el = read(os.path.join(case, "expected.log"))
    masked = os.path.exists(os.path.join(case, "mask")) or "@@SHIELDING TABLES@@" in el
    if not os.path.exists(out):
        print("no output file")
        return 1
    r = compare_out(read(os.path.join(case, "expected.out")), read(out), fuzzy, masked)
    if r == 0 and log is not None:
        if not os.path.exists(log):
            if any(el):
                print("no log file")
                return 1
            return 0
        r = compare_log(el, read(log), fuzzy)
    return r


if __name__ == "__main__":
    sys.exit(main())
