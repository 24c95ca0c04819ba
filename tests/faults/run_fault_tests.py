#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Does to the program whatever a machine can do to it: kills and stops at random moments, little memory, a full disk,
missing rights, files that vanish in mid-run, twenty runs at once. Prints a table of what came of it.

Usage: run_fault_tests.py --program PATH [--count N] [--seed S] [--quick] [--part NAME ...]
The exit status is 1 if a promise was broken. --quick judges times loosely, for a busy machine; --part takes the
beginning of a part's name: kills, limits, groups, disks, rights, files, crowds, stops.
"""
import argparse
import functools
import os
import pathlib
import random
import signal
import subprocess
import sys
import time

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "python"))
import disk_faults
import file_faults
import group_faults
import limit_faults
import right_faults
import signal_faults
from fault_arena import Arena
from fault_table import Table

OWN_MOUNTS = "VELKORAN_FAULTS_OWN_MOUNTS"  # set where mounts are private to this process


def enter_own_mounts():
    """Starts this program again where its mounts end with it; False where that isn't allowed."""
    if OWN_MOUNTS in os.environ:
        return os.environ[OWN_MOUNTS] == "1"
    private = ["unshare", "--mount", "--propagation", "private"]
    trial = ["sh", "-c", "mount -t tmpfs -o size=4k tmpfs /mnt"]
    try:
        allowed = os.geteuid() == 0 and subprocess.run(private + trial, stderr=subprocess.DEVNULL).returncode == 0
    except FileNotFoundError:
        allowed = False
    os.environ[OWN_MOUNTS] = "1" if allowed else "0"
    if allowed:
        os.execvp("unshare", private + [sys.executable, *sys.argv])
    return False


def campaign_parts(arena, table, options, mounts):
    """The parts of a campaign by name, in their order."""
    count = options.count
    return {
        "kills": lambda: signal_faults.run_kills(arena, table, count),
        "limits": lambda: limit_faults.run_limits(arena, table, count),
        "groups": lambda: group_faults.run_groups(arena, table, count),
        "disks": lambda: disk_faults.run_disks(arena, table, count, mounts),
        "rights": lambda: right_faults.run_rights(arena, table, mounts),
        "files": lambda: file_faults.run_changes(arena, table, count),
        "crowds": lambda: file_faults.run_crowds(arena, table, count, mounts),
        **{
            f"stops, {kind}": functools.partial(signal_faults.run_stops, arena, table, kind, count, not options.quick)
            for kind in signal_faults.stop_kinds()
        },
    }


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True)
    parser.add_argument("--count", type=int, default=1000)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--part", action="append")
    options = parser.parse_args()
    mounts = enter_own_mounts()
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    random.seed(options.seed)
    table = Table()
    arena = Arena(options.program)
    interrupted = False
    try:
        for name, part in campaign_parts(arena, table, options, mounts).items():
            if options.part is None or name.startswith(tuple(options.part)):
                start = time.monotonic()
                part()
                print(f"{name}: {time.monotonic() - start:.0f} s, load {os.getloadavg()[0]:.1f}", flush=True)
    except KeyboardInterrupt:
        interrupted = True
        print("interrupted: the table holds what was done so far")
    finally:
        arena.remove()
    table.print_all()
    sys.exit(1 if table.broken or interrupted else 0)


if __name__ == "__main__":
    main()
