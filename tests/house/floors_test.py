#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Reads the includes of core/ and fails on an arrow that runs up, or in a circle.

The floors are those of docs/architecture.md, from the ground up. A header of a record (*_data.h, run_options.h) and the
catalogue of messages belong to no floor: everything may include them, and they include only one another.
"""
import pathlib
import re
import sys

CORE = pathlib.Path(__file__).resolve().parent.parent.parent / "core"
FLOORS = ["ground", "numerics", "molecule", "integrals", "wavefunction", "spectrum", "nmr", "files", "shell"]
RECORD = re.compile(r"\w+/(\w+_data\.h|run_options\.h|message_catalogue\.inc)$")
GENERATED = {"velkoran_version.h"}


def includes_of(path):
    """The files of core/ that a file includes, by their paths from there."""
    return [name for name in re.findall(r'^#include "([^"]+)"', path.read_text(), re.M) if name not in GENERATED]


def faults_of(name, included):
    """What is wrong with the includes of one file, a sentence each."""
    folder = name.split("/")[0]
    for other in included:
        if not (CORE / other).is_file():
            yield f"{name} includes {other}, which isn't there"
        elif RECORD.match(name) and not RECORD.match(other):
            yield f"{name} is a record and includes {other}"
        elif not RECORD.match(other) and FLOORS.index(other.split("/")[0]) > FLOORS.index(folder):
            yield f"{name} includes {other}, which stands on a floor above"


def circle(files):
    """The headers of one circle, or none."""
    finished = set()

    def walk(name, road):
        if name in road:
            return road[road.index(name) :]
        if name in finished:
            return []
        for other in files.get(name, []):
            found = walk(other, road + [name])
            if found:
                return found
        finished.add(name)
        return []

    for name in files:
        found = walk(name, [])
        if found:
            return found
    return []


def main():
    sources = [path for path in sorted(CORE.rglob("*")) if path.suffix in (".h", ".cpp", ".inc")]
    files = {path.relative_to(CORE).as_posix(): includes_of(path) for path in sources}
    faults = [fault for name, included in files.items() for fault in faults_of(name, included)]
    # A source stands for its header: two files that need one another are a circle, whoever includes whom where.
    pairs = {}
    for name, included in files.items():
        pairs.setdefault(name.rsplit(".", 1)[0], set()).update(other.rsplit(".", 1)[0] for other in included)
    for name in pairs:
        pairs[name].discard(name)
    found = circle(pairs)
    if found:
        faults.append("a circle: " + " -> ".join(found))
    arrows = sum(len(included) for included in files.values())
    if arrows < 300:
        faults.append(f"only {arrows} includes are found")
    print("\n".join(faults) or f"floors: {arrows} includes, none runs up")
    return 1 if faults else 0


sys.exit(main())
