#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Fits the parameters of the method by atom type; fit.py --help says how."""
import sys
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(ROOT / "fitting"), str(ROOT / "python")]
from velkoran_fit.command_line import main

sys.exit(main())
