# SPDX-License-Identifier: MIT
"""Runs under limits of memory, stack and open files."""
import os
import random
import resource
import subprocess

from fault_arena import KindOfOutput, KindOfText, Neighbours
from fault_jobs import ALL_TERMS, COUPLING, LONG_CAMPAIGN, SHIELDING, TIGHT, ExactSpins, Molecule, WeakSpins

SIZES = 60            # memory limits of each kind of run in a campaign of 1000
LARGEST = 1 << 28     # more than any of these runs takes
STEP = 1 << 16
LOADER_FAILED = 127   # exit code of the system's program loader
SET_UP_TEXT = b"This application has exhausted all available memory.\n"
MEMORY_TEXTS = (b"ERRMSG: The molecule selected for calculation is too large and has consumed all available memory.\n",
                b"ERRMSG: " + SET_UP_TEXT)
OPENING_TEXTS = (b"Trouble has been occured when openning", b"Velkoran can not open the input file",
                 b"Velkoran can not create its output file")  # the C library found no memory for a stream


def Jobs():
    return [ExactSpins(11), WeakSpins(14), WeakSpins(17),
            Molecule("naphthalene", "couplings", COUPLING + TIGHT),
            Molecule("naphthalene", "shielding", SHIELDING + TIGHT),
            Molecule("cholesterol", "shielding", SHIELDING + TIGHT),
            Molecule("naphthalene", "all terms", ALL_TERMS + TIGHT)]


def CanLoad(arena, limits):
    """True if the system can load the program under these limits; it is loaded and not run."""
    try:
        child = arena.Start(Jobs()[0], limits=limits, env={**os.environ, "LD_TRACE_LOADED_OBJECTS": "1"})
    except (OSError, subprocess.SubprocessError):
        return False
    return child.Wait() == 0


def RunLimited(arena, job, limits, log):
    """The outcome of a run under limits for setrlimit."""
    return KindOfRun(arena, job, log, lambda: not CanLoad(arena, limits), limits=limits)


def KindOfRun(arena, job, log, cannotStart, **settings):
    """The outcome of a run in a few words; one in capitals is a broken promise. cannotStart tells of a run that failed
    whether the program has no room at all."""
    folder = arena.Folder(job)
    (arena.top / "w.log").unlink(missing_ok=True)
    with open(arena.top / "stdout", "w+b") as printed:
        try:
            child = arena.Start(job, log="w.log" if log else None, stdout=printed, **settings)
        except (OSError, subprocess.SubprocessError):
            return "not started"
        code = child.Wait()
        printed.seek(0)
        text = printed.read()
    outcome = KindOfOutput(folder, job)
    if code is None:
        return "HANG"
    if code == LOADER_FAILED or (code != 0 and cannotStart()):
        return "not started"
    if code == 3 and text == SET_UP_TEXT and outcome == "absent":
        return "out of memory in the set-up"
    if code != 0:
        return f"EXIT CODE {code}"
    if Neighbours(folder, job):
        return "FILE LEFT BESIDE THE OUTPUT"
    return outcome if outcome in ("whole", "log text") else KindOfFailure(folder, job, outcome)


def KindOfFailure(folder, job, outcome):
    if outcome == "absent":
        return "no output"
    text = (folder / job.output).read_bytes()
    if text in MEMORY_TEXTS:
        return "out of memory"
    if KindOfText(text, job) == "ERRMSG" and any(part in text for part in OPENING_TEXTS):
        return "a file can't be opened"
    return "STRANGE OUTPUT " + outcome


def SmallestLimit(works, largest=LARGEST):
    """The smallest limit in large steps at which works(limit) holds, if it holds from there on."""
    low, high = 0, largest
    while high - low > STEP:
        middle = (low + high) // 2 // STEP * STEP
        if works(middle):
            high = middle
        else:
            low = middle
    return high


def MemorySizes(low, high, count):
    """Half of the sizes in a geometric row from low to high, half at random between them."""
    row = [round(low * (high / low) ** (i / max(1, count // 2 - 1))) for i in range(count // 2)]
    return row + [random.randrange(low, high) for _ in range(count - len(row))]


def RunMemoryKind(arena, table, kind, job, count, allowed):
    row = table.AddRow(f"{'RLIMIT_AS' if kind == resource.RLIMIT_AS else 'RLIMIT_DATA'}, {job.name}")
    arena.Time(job)
    low = SmallestLimit(lambda limit: CanLoad(arena, [(kind, limit)]))
    high = SmallestLimit(lambda limit: RunLimited(arena, job, [(kind, limit)], True) == "whole")
    for log in (False, True):
        for size in MemorySizes(max(4096, low - 2 * STEP), high * 21 // 20, count):
            outcome = RunLimited(arena, job, [(kind, size)], log)
            table.Expect(outcome in allowed, f"{row.name}, limit {size}, log {log}: {outcome}")
            row.Count(outcome)
    table.Expect(row.outcomes["out of memory"] > 0 and row.outcomes["whole"] > 0,
                 f"{row.name}: the limits from {low} to {high} miss a failure or a success")


def RunMemoryLimits(arena, table, count):
    memory = {"whole", "out of memory", "out of memory in the set-up", "not started"}
    size_count = max(6, SIZES * count // 1000)
    for job in Jobs() if count >= LONG_CAMPAIGN else Jobs()[1:2]:
        RunMemoryKind(arena, table, resource.RLIMIT_AS, job, size_count, memory)
    for job in Jobs()[:2] if count >= LONG_CAMPAIGN else []:
        RunMemoryKind(arena, table, resource.RLIMIT_DATA, job, max(6, size_count // 2), memory)


def RunOtherLimits(arena, table, count):
    row = table.AddRow("RLIMIT_STACK, 256 kB to 8 MB")
    jobs = Jobs() if count >= LONG_CAMPAIGN else Jobs()[1:2]
    for size in (256, 512, 1024, 2048, 4096, 8192):
        for job in jobs:
            arena.Time(job)
            outcome = RunLimited(arena, job, [(resource.RLIMIT_STACK, size * 1024)], True)
            table.Expect(outcome == "whole", f"stack of {size} kB, {job.name}: {outcome}")
            row.Count(outcome)
    row = table.AddRow("RLIMIT_NOFILE, up to 10")
    for files in range(11) if count >= LONG_CAMPAIGN else range(2, 6):
        for job in jobs:
            for log in (False, True):
                outcome = RunLimited(arena, job, [(resource.RLIMIT_NOFILE, files)], log)
                allowed = {"whole"} if files > 4 else {"whole", "not started", "no output", "log text",
                                                       "a file can't be opened"}
                table.Expect(outcome in allowed, f"{files} open files, {job.name}, log {log}: {outcome}")
                row.Count(outcome)


def RunLimits(arena, table, count):
    RunMemoryLimits(arena, table, count)
    RunOtherLimits(arena, table, count)
