# SPDX-License-Identifier: MIT
"""A full disk: tiny file systems, a limit on the size of files, and a device that is always full."""
import contextlib
import resource
import subprocess

from fault_arena import TRUTH, kind_of_output, neighbours, says_why
from fault_jobs import ALL_TERMS, LONG_CAMPAIGN, TIGHT, example_jobs, molecule_run, weak_spins

PAGE = 4096
LEFT_OF_FAILURE = ("absent", "ERRMSG")  # what a result may be that couldn't be written whole


def campaign_jobs():
    examples = {job.name: job for job in example_jobs()}
    return [
        examples["methane"],
        examples["ethanol_60"],
        molecule_run("naphthalene", "all terms", ALL_TERMS | TIGHT),
        weak_spins(10),
        weak_spins(12),
    ]


def pages_of(size):
    return (size + PAGE - 1) // PAGE


def spread(first, last, count):
    """At most count whole numbers from first to last, both included, evenly spread."""
    if last - first < count:
        return range(first, last + 1)
    return sorted({first + (last - first) * i // (count - 1) for i in range(count)})


@contextlib.contextmanager
def small_disk(path, pages):
    """A file system of so many pages, at least one, under an existing folder."""
    subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={pages * PAGE},mode=755", "tmpfs", path], check=True)
    try:
        yield
    finally:
        subprocess.run(["umount", path], check=True)


def size_of_log(arena, job):
    arena.time_of(job)
    return len(arena.logs[job.name])


def run_on(arena, job, folder, log, older=False, limits=()):
    """The ended run in a folder that stands, its exit code and the kind of its output."""
    child = arena.start(job, folder.name, log, limits)
    return child, child.wait(), kind_of_output(folder, job, older)


def judge(table, row, where, folder, job, run, must_be_whole, failures=LEFT_OF_FAILURE):
    child, code, outcome = run
    allowed = ("whole",) if must_be_whole else ("whole", *failures)
    left = len(neighbours(folder, job))
    table.expect(code == 0, f"{row.name}: {where}: exit code {code}")
    table.expect(outcome in allowed, f"{row.name}: {where}: the output is {outcome}")
    table.expect(says_why(child.said, outcome), f"{row.name}: {where}: the output is {outcome}, says {child.said}")
    table.expect(left == 0, f"{row.name}: {where}: {left} files are left beside the output")
    row.count(outcome)


def fill_work(folder, job, older):
    (folder / job.input).write_text(job.text)
    if older:
        (folder / job.output).write_bytes(b"an older and longer result\n" * 200)


def run_full_work(arena, table, jobs, count):
    """The work folder is the small disk; the log is elsewhere, or on it too."""
    rows = {
        (older, log): table.add_row(
            "disk full in the work folder, log "
            + ("there too" if log.startswith("w/") else "elsewhere")
            + (", an older result there" if older else "")
        )
        for older in (False, True)
        for log in ("w.log", "w/run.log")
    }
    for (older, log), row in rows.items():
        for job in jobs:
            used = pages_of(len(job.text)) + (pages_of(27 * 200) if older else 0)
            log_size = size_of_log(arena, job)
            result = len(TRUTH[job.name])
            needed = pages_of(result) + (pages_of(log_size) if log.startswith("w/") else 0)
            for pages in spread(0, needed + 1, count):
                folder = arena.top / "w"
                folder.mkdir(exist_ok=True)
                with small_disk(folder, used + pages):
                    fill_work(folder, job, older)
                    run = run_on(arena, job, folder, log)
                    judge(table, row, f"{job.name}, {pages} pages left", folder, job, run, pages >= needed)


def run_full_log(arena, table, jobs, count):
    row = table.add_row("disk full in the folder of the log")
    for job in jobs:
        (arena.top / "l").mkdir(exist_ok=True)
        for pages in spread(0, pages_of(size_of_log(arena, job)), count):
            with small_disk(arena.top / "l", pages + 1):
                (arena.top / "l" / "filler").write_bytes(bytes(PAGE))
                folder = arena.new_folder(job)
                run = run_on(arena, job, folder, "l/run.log")
                judge(table, row, f"{job.name}, {pages} pages for the log", folder, job, run, True)


def run_linked_output(arena, table, jobs, count):
    """The output is a link to a file on the small disk: written in place, so that an empty file can be left."""
    row = table.add_row("disk full behind a link to the output")
    for job in jobs:
        (arena.top / "l").mkdir(exist_ok=True)
        arena.time_of(job)
        needed = pages_of(len(TRUTH[job.name]))
        for pages in spread(0, needed + 1, count):
            with small_disk(arena.top / "l", pages + 1):
                (arena.top / "l" / "filler").write_bytes(bytes(PAGE))
                folder = arena.new_folder(job)
                (folder / job.output).symlink_to("../l/result")
                run = run_on(arena, job, folder, None)
                judge(table, row, f"{job.name}, {pages} pages", folder, job, run, pages >= needed, ("ERRMSG", "empty"))
                table.expect((folder / job.output).is_symlink(), f"{row.name}: {job.name}: the link is gone")


def run_file_sizes(arena, table, jobs, count):
    """The limit holds for log and result alike; a log that is cut doesn't harm the result."""
    for log in (None, "w.log"):
        row = table.add_row("RLIMIT_FSIZE, " + ("with a log" if log else "without a log"))
        for job in jobs:
            size = size_of_log(arena, job)
            result = len(TRUTH[job.name])
            for limit in sorted(
                {
                    *spread(0, 300, count // 2),
                    *spread(0, max(size, result) + 1, count),
                    *spread(result - 2, result + 1, 4),
                }
            ):
                folder = arena.new_folder(job)
                (arena.top / "w.log").unlink(missing_ok=True)
                run = run_on(arena, job, folder, log, limits=[(resource.RLIMIT_FSIZE, limit)])
                judge(table, row, f"{job.name}, limit {limit}", folder, job, run, limit >= result)


def run_full_device(arena, table, jobs):
    row = table.add_row("/dev/full as the log")
    for job in jobs:
        arena.time_of(job)
        folder = arena.new_folder(job)
        run = run_on(arena, job, folder, "/dev/full")
        judge(table, row, job.name, folder, job, run, True)
    row = table.add_row("/dev/full behind a link as the output")
    for job in jobs:
        folder = arena.new_folder(job)
        (folder / job.output).symlink_to("/dev/full")
        child = arena.start(job)
        code = child.wait()
        kept = (folder / job.output).is_symlink() and not neighbours(folder, job)
        table.expect(code == 0 and kept, f"{row.name}: {job.name}: exit code {code}, link kept: {kept}")
        table.expect(says_why(child.said, "empty"), f"{row.name}: {job.name}: says {child.said}")
        row.count("the run ends, the link stays")


def run_disks(arena, table, count, mounts):
    jobs = campaign_jobs() if count >= LONG_CAMPAIGN else campaign_jobs()[1:3]
    steps = max(4, min(count // 10, 100))
    if mounts:
        run_full_work(arena, table, jobs, steps)
        run_full_log(arena, table, jobs, steps)
        run_linked_output(arena, table, jobs, steps)
    else:
        table.skip("tiny file systems", "mounting needs root")
    run_file_sizes(arena, table, jobs, steps)
    run_full_device(arena, table, jobs)
