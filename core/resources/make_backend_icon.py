#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Draws the icon "BackendIcon", a triplet of lines on a baseline, and writes backend_icon.ico beside this program.

With --check it writes nothing, and exits with 1 if the file isn't what it would write.
"""
import math
import pathlib
import struct
import sys

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "python"))
from generated_files import write_or_check

TARGET = pathlib.Path(__file__).resolve().parent / "backend_icon.ico"

SIZES = (16, 32, 48)
LINES = ((0.28, 0.35), (0.50, 0.72), (0.72, 0.35))  # position and height of each line, in widths of the picture
LINE_WIDTH = 0.035
BACKGROUND = (64, 32, 16, 255)  # blue, green, red, alpha
CURVE = (255, 255, 255, 255)


def pixels(size):
    """Rows from the bottom up, as the format wants them."""
    rows = []
    for y in range(size):
        row = b""
        for x in range(size):
            at = (x + 0.5) / size
            height = 0.14 + sum(h / (1.0 + ((at - p) / LINE_WIDTH) ** 2) for p, h in LINES)
            row += bytes(CURVE if (y + 0.5) / size < height else BACKGROUND)
        rows.append(row)
    return b"".join(rows)


def image(size):
    mask_row = math.ceil(size / 32) * 4
    header = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 32, 0, 4 * size * size, 0, 0, 0, 0)
    return header + pixels(size) + bytes(mask_row * size)


def make_files():
    images = [image(size) for size in SIZES]
    offset = 6 + 16 * len(SIZES)
    directory = struct.pack("<HHH", 0, 1, len(SIZES))
    for size, data in zip(SIZES, images):
        directory += struct.pack("<BBBBHHII", size, size, 0, 0, 1, 32, len(data), offset)
        offset += len(data)
    return {TARGET: directory + b"".join(images)}


if __name__ == "__main__":
    sys.exit(write_or_check(make_files))
