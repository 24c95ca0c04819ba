# SPDX-License-Identifier: MIT
"""The files of a run as texts."""
import pathlib


def read_text(path: pathlib.Path) -> str:
    """The bytes of a file, one character each: the program knows no encoding. Ends of lines stay what they are."""
    return path.read_bytes().decode("latin-1")


def read_text_if_there(path: pathlib.Path) -> str | None:
    """The same, or None where there is no file."""
    try:
        return read_text(path)
    except FileNotFoundError:
        return None
