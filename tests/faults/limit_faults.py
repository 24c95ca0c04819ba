# SPDX-License-Identifier: MIT
"""Runs under limits of memory, stack and open files."""
import os
import random
import resource
import subprocess

from fault_arena import kind_of_output, kind_of_text, neighbours
from fault_jobs import ALL_TERMS, COUPLING, LONG_CAMPAIGN, SHIELDING, TIGHT, exact_spins, molecule_run, weak_spins

SIZES = 60  # memory limits of each kind of run in a campaign of 1000
LARGEST = 1 << 28  # more than any of these runs takes
STEP = 1 << 16
LOADER_FAILED = 127  # exit code of the system's program loader
SET_UP_TEXT = b"This application has exhausted all available memory.\n"
MEMORY_TEXTS = (
    b"ERRMSG: The molecule selected for calculation is too large and has consumed all available memory.\n",
    b"ERRMSG: " + SET_UP_TEXT,
)
OPENING_TEXTS = (
    b"Trouble has been occured when openning",
    b"Velkoran can not open the input file",
    b"Velkoran can not create its output file",
)  # the C library found no memory for a stream


def campaign_jobs():
    return [
        exact_spins(11),
        weak_spins(14),
        weak_spins(17),
        molecule_run("naphthalene", "couplings", COUPLING | TIGHT),
        molecule_run("naphthalene", "shielding", SHIELDING | TIGHT),
        molecule_run("cholesterol", "shielding", SHIELDING | TIGHT),
        molecule_run("naphthalene", "all terms", ALL_TERMS | TIGHT),
    ]


def can_load(arena, limits):
    """True if the system can load the program under these limits; it is loaded and not run."""
    try:
        child = arena.start(campaign_jobs()[0], limits=limits, env={**os.environ, "LD_TRACE_LOADED_OBJECTS": "1"})
    except (OSError, subprocess.SubprocessError):
        return False
    return child.wait() == 0


def run_limited(arena, job, limits, log):
    """The outcome of a run under limits for setrlimit."""
    return kind_of_run(arena, job, log, lambda: not can_load(arena, limits), limits=limits)


def kind_of_run(arena, job, log, cannot_start, **settings):
    """The outcome of a run in a few words; one in capitals is a broken promise. cannotStart tells of a run that failed
    whether the program has no room at all."""
    folder = arena.new_folder(job)
    (arena.top / "w.log").unlink(missing_ok=True)
    with open(arena.top / "stdout", "w+b") as printed:
        try:
            child = arena.start(job, log="w.log" if log else None, stdout=printed, **settings)
        except (OSError, subprocess.SubprocessError):
            return "not started"
        code = child.wait()
        printed.seek(0)
        text = printed.read()
    outcome = kind_of_output(folder, job)
    if code is None:
        return "HANG"
    if code == LOADER_FAILED or (code != 0 and cannot_start()):
        return "not started"
    if code == 3 and text == SET_UP_TEXT and outcome == "absent":
        return "out of memory in the set-up"
    if code != 0:
        return f"EXIT CODE {code}"
    if neighbours(folder, job):
        return "FILE LEFT BESIDE THE OUTPUT"
    return outcome if outcome in ("whole", "log text") else kind_of_failure(folder, job, outcome)


def kind_of_failure(folder, job, outcome):
    if outcome == "absent":
        return "no output"
    text = (folder / job.output).read_bytes()
    if text in MEMORY_TEXTS:
        return "out of memory"
    if kind_of_text(text, job) == "ERRMSG" and any(part in text for part in OPENING_TEXTS):
        return "a file can't be opened"
    return "STRANGE OUTPUT " + outcome


def smallest_limit(works, largest=LARGEST):
    """The smallest limit in large steps at which works(limit) holds, if it holds from there on."""
    low, high = 0, largest
    while high - low > STEP:
        middle = (low + high) // 2 // STEP * STEP
        if works(middle):
            high = middle
        else:
            low = middle
    return high


def memory_sizes(low, high, count):
    """Half of the sizes in a geometric row from low to high, half at random between them."""
    row = [round(low * (high / low) ** (i / max(1, count // 2 - 1))) for i in range(count // 2)]
    return row + [random.randrange(low, high) for _ in range(count - len(row))]


def run_memory_kind(arena, table, kind, job, count, allowed):
    row = table.add_row(f"{'RLIMIT_AS' if kind == resource.RLIMIT_AS else 'RLIMIT_DATA'}, {job.name}")
    arena.time_of(job)
    low = smallest_limit(lambda limit: can_load(arena, [(kind, limit)]))
    high = smallest_limit(lambda limit: run_limited(arena, job, [(kind, limit)], True) == "whole")
    for log in (False, True):
        for size in memory_sizes(max(4096, low - 2 * STEP), high * 21 // 20, count):
            outcome = run_limited(arena, job, [(kind, size)], log)
            table.expect(outcome in allowed, f"{row.name}, limit {size}, log {log}: {outcome}")
            row.count(outcome)
    table.expect(
        row.outcomes["out of memory"] > 0 and row.outcomes["whole"] > 0,
        f"{row.name}: the limits from {low} to {high} miss a failure or a success",
    )


def run_memory_limits(arena, table, count):
    memory = {"whole", "out of memory", "out of memory in the set-up", "not started"}
    size_count = max(6, SIZES * count // 1000)
    for job in campaign_jobs() if count >= LONG_CAMPAIGN else campaign_jobs()[1:2]:
        run_memory_kind(arena, table, resource.RLIMIT_AS, job, size_count, memory)
    for job in campaign_jobs()[:2] if count >= LONG_CAMPAIGN else []:
        run_memory_kind(arena, table, resource.RLIMIT_DATA, job, max(6, size_count // 2), memory)


def run_other_limits(arena, table, count):
    row = table.add_row("RLIMIT_STACK, 256 kB to 8 MB")
    jobs = campaign_jobs() if count >= LONG_CAMPAIGN else campaign_jobs()[1:2]
    for size in (256, 512, 1024, 2048, 4096, 8192):
        for job in jobs:
            arena.time_of(job)
            outcome = run_limited(arena, job, [(resource.RLIMIT_STACK, size * 1024)], True)
            table.expect(outcome == "whole", f"stack of {size} kB, {job.name}: {outcome}")
            row.count(outcome)
    row = table.add_row("RLIMIT_NOFILE, up to 10")
    for files in range(11) if count >= LONG_CAMPAIGN else range(2, 6):
        for job in jobs:
            for log in (False, True):
                outcome = run_limited(arena, job, [(resource.RLIMIT_NOFILE, files)], log)
                allowed = (
                    {"whole"}
                    if files > 4
                    else {"whole", "not started", "no output", "log text", "a file can't be opened"}
                )
                table.expect(outcome in allowed, f"{files} open files, {job.name}, log {log}: {outcome}")
                row.count(outcome)


def run_limits(arena, table, count):
    run_memory_limits(arena, table, count)
    run_other_limits(arena, table, count)
