#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs the tests of fitting/, all files *_test.py of this folder.

Usage: python3 tests/fitting [--program PATH] [--worker PATH] [unittest arguments]
"""
import argparse
import os
import pathlib
import sys
import unittest

sys.dont_write_bytecode = True
FOLDER = pathlib.Path(__file__).resolve().parent
ROOT = FOLDER.parents[1]
sys.path[:0] = [str(ROOT / "fitting"), str(ROOT / "python")]


def load_tests(loader, *_):
    """All tests of the folder; unittest asks for them."""
    return loader.discover(str(FOLDER), "*_test.py", str(FOLDER))


if __name__ == "__main__":
    release = ROOT / "build" / "release"
    parser = argparse.ArgumentParser(add_help=False, usage=__doc__)
    parser.add_argument("--program", default=str(release / "velkoran"))
    parser.add_argument("--worker", default=str(release / "fitting" / "velkoran_worker"))
    arguments, rest = parser.parse_known_args()
    os.environ["VELKORAN_PROGRAM"] = os.path.abspath(arguments.program)
    os.environ["VELKORAN_WORKER"] = os.path.abspath(arguments.worker)
    unittest.main(argv=[sys.argv[0], *rest])
