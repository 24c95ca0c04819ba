# SPDX-License-Identifier: MIT
"""Runs of velkoran from Python: writes inputs, starts the program, reads its results, log and parameter files.

The formats are those of the manual pages. Of a script that lies in the project two lines find this package, the number
being that of the folders above the script's own:

    sys.dont_write_bytecode = True
    sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "python"))
"""
