#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the page of what no test runs, from the measurement of scripts/run_coverage.sh.

coverage_report.py MEASUREMENT EXPLANATIONS PAGE: the measurement is the JSON of gcovr. Each line of the explanations is
"FILE FUNCTION: reason". Exits with 1 if a function with something uncovered has none, or if less than 95 % of the lines
or of the branches are covered.
"""
import json
import re
import sys

LEAST_PER_CENT = 95.0


def function_name(demangled):
    """The bare name: without template arguments, parameters and what GCC appends."""
    name = demangled.split(" [")[0]
    while re.search(r"<[^<>]*>", name):
        name = re.sub(r"<[^<>]*>", "", name)
    match = re.search(r"([\w~]+(?:::\{lambda)?)\(", name)
    return match.group(1).replace("::{lambda", "") if match else name


class Count:
    """Covered and all of lines or branches."""

    def __init__(self):
        self.covered = 0
        self.all = 0

    def add(self, covered):
        self.covered += covered
        self.all += 1

    def per_cent(self):
        return 100.0 * self.covered / self.all if self.all else 100.0

    def __str__(self):
        return f"{self.covered} of {self.all} | {self.per_cent():.1f} %"


def read_measurement(path):
    """Counts by folder, and for each function with gaps its uncovered lines and the lines of its branches."""
    lines, branches, gaps = {}, {}, {}
    with open(path) as file:
        measurement = json.load(file)
    for source in measurement["files"]:
        folder = source["file"].split("/")[0]
        starts = sorted((f["lineno"], function_name(f["name"])) for f in source["functions"])
        for line in source["lines"]:
            if line.get("gcovr/noncode"):
                continue
            number = line["line_number"]
            lines.setdefault(folder, Count()).add(line["count"] > 0)
            taken = [b["count"] > 0 for b in line.get("branches", []) if not b.get("throw")]
            for branch in taken:
                branches.setdefault(folder, Count()).add(branch)
            if line["count"] > 0 and all(taken):
                continue
            function = [name for start, name in starts if start <= number][-1:] or ["-"]
            gap = gaps.setdefault((source["file"], function[0]), ([], [], 0))
            if line["count"] == 0:
                gap[0].append(number)
            if not all(taken):
                gap[1].append(number)
            gaps[source["file"], function[0]] = (gap[0], gap[1], gap[2] + taken.count(False))
    return lines, branches, gaps


def read_explanations(path):
    explanations = {}
    with open(path) as file:
        for line in file:
            match = re.match(r"(\S+) (\S+): (\S.*)", line)
            if match and not line.startswith("#"):
                explanations[match.group(1), match.group(2)] = match.group(3).strip()
    return explanations


def total(counts):
    result = Count()
    for count in counts.values():
        result.covered += count.covered
        result.all += count.all
    return result


def write_page(path, lines, branches, gaps, explanations):
    with open(path, "w") as page:
        page.write(
            "# Coverage\n\nWritten by `sh scripts/run_coverage.sh`, which runs all tests in a build of its own: "
            "g++, unoptimised,\nbranches of exceptions left out. Each line and branch of the program counts "
            "that is compiled on Linux.\n\n"
            "| Folder | Lines | | Branches | |\n|---|---|---|---|---|\n"
        )
        for folder in sorted(lines):
            page.write(f"| `{folder}/` | {lines[folder]} | {branches.get(folder, Count())} |\n")
        page.write(
            f"| All | {total(lines)} | {total(branches)} |\n\n"
            "## What no test runs\n\n"
            "The sizes are lines and branches that no test has taken.\n\n"
            "| File | Function | Lines | Branches | Why |\n|---|---|---|---|---|\n"
        )
        for (file, function), (uncovered, _, missing) in sorted(gaps.items()):
            why = explanations.get((file, function), "")
            page.write(f"| `{file}` | `{function}` | {len(uncovered)} | {missing} | {why} |\n")


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    measurement, explanation_file, page = sys.argv[1:]
    lines, branches, gaps = read_measurement(measurement)
    explanations = read_explanations(explanation_file)
    write_page(page, lines, branches, gaps, explanations)
    print(f"lines    {total(lines)}\nbranches {total(branches)}")
    failed = False
    for (file, function), (uncovered, at, missing) in sorted(gaps.items()):
        known = (file, function) in explanations
        failed = failed or not known
        note = "" if known else ": no reason is given"
        print(f"{file} {function}: lines {uncovered}, {missing} branches at {at}{note}")
    for file, function in sorted(set(explanations) - set(gaps)):
        print(f"{file} {function}: all is covered, the reason can go")
    for kind, counts in (("lines", lines), ("branches", branches)):
        if total(counts).per_cent() < LEAST_PER_CENT:
            print(f"less than {LEAST_PER_CENT} % of the {kind} are covered")
            failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
