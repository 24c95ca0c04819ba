# SPDX-License-Identifier: MIT
"""A full disk: tiny file systems, a limit on the size of files, and a device that is always full."""
import contextlib
import resource
import subprocess

from fault_arena import TRUTH, KindOfOutput, Neighbours, SaysWhy
from fault_jobs import ALL_TERMS, LONG_CAMPAIGN, TIGHT, Examples, Molecule, WeakSpins

PAGE = 4096
LEFT_OF_FAILURE = ("absent", "ERRMSG")  # what a result may be that couldn't be written whole


def Jobs():
    examples = {job.name: job for job in Examples()}
    return [examples["methane"], examples["ethanol_60"], Molecule("naphthalene", "all terms", ALL_TERMS + TIGHT),
            WeakSpins(10), WeakSpins(12)]


def PagesOf(size):
    return (size + PAGE - 1) // PAGE


def Spread(first, last, count):
    """At most count whole numbers from first to last, both included, evenly spread."""
    if last - first < count:
        return range(first, last + 1)
    return sorted({first + (last - first) * i // (count - 1) for i in range(count)})


@contextlib.contextmanager
def SmallDisk(path, pages):
    """A file system of so many pages, at least one, under an existing folder."""
    subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={pages * PAGE},mode=755", "tmpfs", path], check=True)
    try:
        yield
    finally:
        subprocess.run(["umount", path], check=True)


def LogSize(arena, job):
    arena.Time(job)
    return len(arena.logs[job.name])


def RunOn(arena, job, folder, log, older=False, limits=()):
    """The ended run in a folder that stands, its exit code and the kind of its output."""
    child = arena.Start(job, folder.name, log, limits)
    return child, child.Wait(), KindOfOutput(folder, job, older)


def Judge(table, row, where, folder, job, run, must_be_whole, failures=LEFT_OF_FAILURE):
    child, code, outcome = run
    allowed = ("whole",) if must_be_whole else ("whole", *failures)
    left = len(Neighbours(folder, job))
    table.Expect(code == 0, f"{row.name}: {where}: exit code {code}")
    table.Expect(outcome in allowed, f"{row.name}: {where}: the output is {outcome}")
    table.Expect(SaysWhy(child.said, outcome), f"{row.name}: {where}: the output is {outcome}, says {child.said}")
    table.Expect(left == 0, f"{row.name}: {where}: {left} files are left beside the output")
    row.Count(outcome)


def FillWork(folder, job, older):
    (folder / job.input).write_text(job.text)
    if older:
        (folder / job.output).write_bytes(b"an older and longer result\n" * 200)


def RunFullWork(arena, table, jobs, count):
    """The work folder is the small disk; the log is elsewhere, or on it too."""
    rows = {(older, log): table.AddRow(
        "disk full in the work folder, log " + ("there too" if log.startswith("w/") else "elsewhere") +
        (", an older result there" if older else ""))
            for older in (False, True) for log in ("w.log", "w/run.log")}
    for (older, log), row in rows.items():
        for job in jobs:
            used = PagesOf(len(job.text)) + (PagesOf(27 * 200) if older else 0)
            log_size = LogSize(arena, job)
            result = len(TRUTH[job.name])
            needed = PagesOf(result) + (PagesOf(log_size) if log.startswith("w/") else 0)
            for pages in Spread(0, needed + 1, count):
                folder = arena.top / "w"
                folder.mkdir(exist_ok=True)
                with SmallDisk(folder, used + pages):
                    FillWork(folder, job, older)
                    run = RunOn(arena, job, folder, log)
                    Judge(table, row, f"{job.name}, {pages} pages left", folder, job, run, pages >= needed)


def RunFullLog(arena, table, jobs, count):
    row = table.AddRow("disk full in the folder of the log")
    for job in jobs:
        (arena.top / "l").mkdir(exist_ok=True)
        for pages in Spread(0, PagesOf(LogSize(arena, job)), count):
            with SmallDisk(arena.top / "l", pages + 1):
                (arena.top / "l" / "filler").write_bytes(bytes(PAGE))
                folder = arena.Folder(job)
                run = RunOn(arena, job, folder, "l/run.log")
                Judge(table, row, f"{job.name}, {pages} pages for the log", folder, job, run, True)


def RunLinkedOutput(arena, table, jobs, count):
    """The output is a link to a file on the small disk: written in place, so that an empty file can be left."""
    row = table.AddRow("disk full behind a link to the output")
    for job in jobs:
        (arena.top / "l").mkdir(exist_ok=True)
        arena.Time(job)
        needed = PagesOf(len(TRUTH[job.name]))
        for pages in Spread(0, needed + 1, count):
            with SmallDisk(arena.top / "l", pages + 1):
                (arena.top / "l" / "filler").write_bytes(bytes(PAGE))
                folder = arena.Folder(job)
                (folder / job.output).symlink_to("../l/result")
                run = RunOn(arena, job, folder, None)
                Judge(table, row, f"{job.name}, {pages} pages", folder, job, run, pages >= needed,
                      ("ERRMSG", "empty"))
                table.Expect((folder / job.output).is_symlink(), f"{row.name}: {job.name}: the link is gone")


def RunFileSizes(arena, table, jobs, count):
    """The limit holds for log and result alike; a log that is cut doesn't harm the result."""
    for log in (None, "w.log"):
        row = table.AddRow("RLIMIT_FSIZE, " + ("with a log" if log else "without a log"))
        for job in jobs:
            size = LogSize(arena, job)
            result = len(TRUTH[job.name])
            for limit in sorted({*Spread(0, 300, count // 2), *Spread(0, max(size, result) + 1, count),
                                 *Spread(result - 2, result + 1, 4)}):
                folder = arena.Folder(job)
                (arena.top / "w.log").unlink(missing_ok=True)
                run = RunOn(arena, job, folder, log, limits=[(resource.RLIMIT_FSIZE, limit)])
                Judge(table, row, f"{job.name}, limit {limit}", folder, job, run, limit >= result)


def RunFullDevice(arena, table, jobs):
    row = table.AddRow("/dev/full as the log")
    for job in jobs:
        arena.Time(job)
        folder = arena.Folder(job)
        run = RunOn(arena, job, folder, "/dev/full")
        Judge(table, row, job.name, folder, job, run, True)
    row = table.AddRow("/dev/full behind a link as the output")
    for job in jobs:
        folder = arena.Folder(job)
        (folder / job.output).symlink_to("/dev/full")
        child = arena.Start(job)
        code = child.Wait()
        kept = (folder / job.output).is_symlink() and not Neighbours(folder, job)
        table.Expect(code == 0 and kept, f"{row.name}: {job.name}: exit code {code}, link kept: {kept}")
        table.Expect(SaysWhy(child.said, "empty"), f"{row.name}: {job.name}: says {child.said}")
        row.Count("the run ends, the link stays")


def RunDisks(arena, table, count, mounts):
    jobs = Jobs() if count >= LONG_CAMPAIGN else Jobs()[1:3]
    steps = max(4, min(count // 10, 100))
    if mounts:
        RunFullWork(arena, table, jobs, steps)
        RunFullLog(arena, table, jobs, steps)
        RunLinkedOutput(arena, table, jobs, steps)
    else:
        table.Skip("tiny file systems", "mounting needs root")
    RunFileSizes(arena, table, jobs, steps)
    RunFullDevice(arena, table, jobs)
