# SPDX-License-Identifier: MIT
"""What every program does that makes files of this project: writes them, or with --check compares them."""
import inspect
import pathlib
import sys
from collections.abc import Callable, Mapping


def write_or_check(make_files: Callable[[], Mapping[pathlib.Path, str | bytes]]) -> int:
    """The main function of a program that makes files; its exit code.

    make_files gives the contents of the files by their paths, texts in ASCII. Without an argument they are written;
    with --check nothing is written, and the code is 1 if one isn't what would be written. Any other argument ends the
    program with its description.
    """
    if sys.argv[1:] not in ([], ["--check"]):
        sys.exit(inspect.getmodule(make_files).__doc__)
    files = {path: made.encode("ascii") if isinstance(made, str) else made for path, made in make_files().items()}
    if len(sys.argv) == 1:
        for path, content in files.items():
            path.write_bytes(content)
        return 0
    stale = [path.name for path, content in files.items() if not path.is_file() or path.read_bytes() != content]
    for name in stale:
        print(f"{name} isn't what {pathlib.Path(sys.argv[0]).name} makes", file=sys.stderr)
    return 1 if stale else 0
