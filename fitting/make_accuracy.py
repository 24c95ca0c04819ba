#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes docs/accuracy.md and its pictures from docs/measured/accuracy.json."""
import sys
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(ROOT / "fitting"), str(ROOT / "python")]
from velkoran_fit.accuracy_page import write_page

write_page(ROOT / "docs")
