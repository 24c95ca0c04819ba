# SPDX-License-Identifier: MIT
"""Runs in a control group with a limit of memory, as a batch system or a service manager sets it: the system kills a
process that touches more. A run is refused or done, never killed."""
import os
import pathlib
import signal
import time

from fault_jobs import (
    ALL_TERMS,
    COUPLING,
    LONG_CAMPAIGN,
    SHIELDING,
    TIGHT,
    chain_run,
    exact_spins,
    field,
    many_atoms_run,
    molecule_run,
    weak_spins,
)
from limit_faults import kind_of_run, memory_sizes, smallest_limit

SIZES = 60  # limits of each kind of run in a campaign of 1000
LARGEST = 1 << 30  # more than any of these runs takes
SMALLEST = 1 << 20  # in half of it no process comes to its main function
HIGH_SHARE = 1.1  # of the smallest limit under which a run is done: the largest size
TRIALS = 200  # of setting a limit
FEW_STEPS = field(10, 4)
ENTER = 'echo $$ >"$0/cgroup.procs" && exec "$@"'  # $0 is the folder of the group


def campaign_jobs():
    return [
        molecule_run("naphthalene", "couplings", COUPLING | TIGHT),
        molecule_run("cholesterol", "shielding", SHIELDING | TIGHT),
        molecule_run("naphthalene", "all terms", ALL_TERMS | TIGHT),
        chain_run(60, "shielding", SHIELDING | FEW_STEPS),
        chain_run(60, "couplings, kept histories", COUPLING | FEW_STEPS | {"SCFAccelerateConvergence": True}, 3),
        many_atoms_run(300000, "couplings", COUPLING | TIGHT),
        exact_spins(12),
        weak_spins(14),
        weak_spins(16),
        chain_run(60, "couplings, accelerated", COUPLING | FEW_STEPS | {"ResponseAcceleration": True}),
        chain_run(60, "shielding, accelerated", SHIELDING | FEW_STEPS | {"ResponseAcceleration": True}),
    ]


class Group:
    """A control group of our own below that of this process, so that its limits hold here too."""

    def __init__(self, folder, limit):
        self.folder = folder
        self.limit = folder / limit

    def set_limit(self, size):
        """Sets the limit, once the system has given back what the last run had."""
        for trial in range(TRIALS):
            try:
                self.limit.write_text(str(size))
                return
            except OSError:
                if trial + 1 == TRIALS:
                    raise
                time.sleep(0.05)

    def command(self):
        """What starts a program in the group."""
        return ["sh", "-c", ENTER, str(self.folder)]

    def remove(self):
        """Ends what an interrupted campaign has left in the group, and removes it."""
        for process in (self.folder / "cgroup.procs").read_text().split():
            os.kill(int(process), signal.SIGKILL)
        while (self.folder / "cgroup.procs").read_text():
            time.sleep(0.01)
        self.folder.rmdir()


def own_folders():
    """The folders of this process's groups that count memory, each with the name of its limit."""
    paths = {}
    for line in pathlib.Path("/proc/self/cgroup").read_text().splitlines():
        _, controllers, path = line.split(":", 2)
        paths[controllers] = path
    for line in pathlib.Path("/proc/self/mountinfo").read_text().splitlines():
        mount, _, system = line.partition(" - ")
        root, point = mount.split()[3:5]
        kind, _, options = system.split()[:3]
        counted = "" if kind == "cgroup2" else next((name for name in paths if "memory" in name.split(",")), None)
        if kind == "cgroup2" or (kind == "cgroup" and "memory" in options.split(",")):
            path = paths.get(counted, "")
            below = path[len(root) :] if root != "/" and path.startswith(root) else path
            yield (
                pathlib.Path(point + below.rstrip("/")),
                "memory.max" if kind == "cgroup2" else "memory.limit_in_bytes",
            )


def new_group():
    """A group, or None where none can be made."""
    for parent, limit in own_folders():
        folder = parent / f"velkoran_faults_{os.getpid()}"
        try:
            folder.mkdir()
        except OSError:
            continue
        group = Group(folder, limit)
        try:
            group.set_limit(LARGEST)
            return group
        except OSError:
            group.remove()
    return None


def run_in_group(arena, group, job, size, log):
    """The outcome of a run in a few words; one in capitals is a broken promise."""
    group.set_limit(size)
    outcome = kind_of_run(arena, job, log, lambda: False, through=group.command())
    return "KILLED" if outcome == f"EXIT CODE {-signal.SIGKILL}" else outcome


def run_group_kind(arena, table, group, job, count):
    row = table.add_row(f"limit of a control group, {job.name}")
    arena.time_of(job)
    done = smallest_limit(lambda limit: run_in_group(arena, group, job, limit, False) == "whole", LARGEST)
    for log in (False, True):
        for size in memory_sizes(SMALLEST, int(HIGH_SHARE * done), count):
            outcome = run_in_group(arena, group, job, size, log)
            table.expect(outcome in {"whole", "out of memory"}, f"{row.name}, limit {size}, log {log}: {outcome}")
            row.count(outcome)
    table.expect(
        row.outcomes["out of memory"] > 0 and row.outcomes["whole"] > 0,
        f"{row.name}: the limits up to {done} miss a failure or a success",
    )


def run_groups(arena, table, count):
    group = new_group()
    if group is None:
        table.skip("limits of control groups", "no group with a limit of memory can be made here")
        return
    try:
        for job in campaign_jobs() if count >= LONG_CAMPAIGN else campaign_jobs()[1:7:2]:
            run_group_kind(arena, table, group, job, max(6, SIZES * count // 1000))
    finally:
        group.remove()
