# SPDX-License-Identifier: MIT
"""Files that are removed or replaced in mid-run, and many runs in one work folder."""
import os
import random
import shutil
import signal

from fault_arena import kind_of_output, neighbours
from fault_jobs import (
    ALL_TERMS,
    BOTH,
    LONG_CAMPAIGN,
    SHIELDING,
    TIGHT,
    example_jobs,
    exact_spins,
    molecule_run,
    weak_spins,
)

CROWD = 20  # runs at once
CONTAINER = ["unshare", "--pid", "--fork"]  # each run has the process number 1


def campaign_jobs():
    return [
        weak_spins(16),
        exact_spins(11),
        molecule_run("cholesterol", "all terms", ALL_TERMS | TIGHT),
        molecule_run("cholesterol", "both", BOTH | TIGHT, 5),
    ]


def interrupt(arena, job, change):
    """Makes a change in mid-run, once the input has been read: the first line of the log says so."""
    folder = arena.new_folder(job)
    log = arena.top / "w.log"
    shutil.rmtree(log, ignore_errors=True) if log.is_dir() else log.unlink(missing_ok=True)
    moment = random.random() * arena.time_of(job)
    child = arena.start(job)
    while not log.exists() and not child.has_ended(0.0005):
        pass
    child.wait_for_work(moment)
    running = not child.has_ended()
    if running:
        change(folder, log)
    return folder, child.wait(), running


def remove_log(folder, log):
    log.unlink(missing_ok=True)


def replace_log(folder, log):
    log.unlink(missing_ok=True)
    log.mkdir()


def rename_folder(folder, log):
    folder.rename(folder.parent / "elsewhere")


def remove_folder(folder, log):
    shutil.rmtree(folder)


def remove_parameters(folder, log):
    (folder.parent / "parameters").rename(folder.parent / "taken")


def ruin_parameters(folder, log):
    for path in (folder.parent / "parameters").iterdir():
        path.write_text("ruined\n")


def replace_input(folder, log):
    for path in folder.glob("*.in"):
        path.rename(folder / "old")
        path.write_text("another input\n")


def cut_input(folder, log):
    for path in folder.glob("*.in"):
        os.truncate(path, 100)


# What is done, and what the output may be then.
CHANGES = {
    "log removed in mid-run": (remove_log, {"whole"}),
    "log replaced by a folder in mid-run": (replace_log, {"whole", "log text"}),
    "work folder renamed in mid-run": (rename_folder, {"whole", "absent"}),
    "work folder removed in mid-run": (remove_folder, {"whole", "absent"}),
    "parameter files removed in mid-run": (remove_parameters, {"whole"}),
    "parameter files overwritten in mid-run": (ruin_parameters, {"whole"}),
    "input replaced in mid-run": (replace_input, {"whole"}),
    "input cut in mid-run": (cut_input, {"whole"}),
}


def restore_folders(arena):
    shutil.rmtree(arena.top / "elsewhere", ignore_errors=True)
    taken = arena.top / "taken"
    source = taken if taken.exists() else arena.top / "kept"
    shutil.copytree(source, arena.top / "parameters", dirs_exist_ok=True)
    shutil.rmtree(taken, ignore_errors=True)


def run_changes(arena, table, count):
    shutil.copytree(arena.top / "parameters", arena.top / "kept", dirs_exist_ok=True)
    jobs = campaign_jobs() if count >= LONG_CAMPAIGN else campaign_jobs()[1:2]
    for name, (change, allowed) in CHANGES.items():
        row = table.add_row(name)
        for i in range(max(len(jobs), count // 20)):
            job = jobs[i % len(jobs)]
            folder, code, running = interrupt(arena, job, change)
            moved = arena.top / "elsewhere"
            outcome = (
                kind_of_output(folder, job) if folder.exists() or not moved.exists() else kind_of_output(moved, job)
            )
            row.count(outcome if running else "had ended: " + outcome)
            table.expect(
                code == 0 and outcome in (allowed if running else {"whole"}),
                f"{name}: {job.name}: exit code {code}, output {outcome}",
            )
            left = neighbours(folder, job) + neighbours(moved, job)
            table.expect(not left or change is rename_folder, f"{name}: {job.name}: {left} left beside the output")
            if change is remove_log and (arena.top / "w.log").exists():
                table.expect(
                    arena.logs[job.name].endswith((arena.top / "w.log").read_bytes()),
                    f"{name}: {job.name}: the new log isn't the rest of the old one",
                )
            restore_folders(arena)


def check_crowd(table, row, folder, jobs, codes, harmed):
    for job in jobs:
        outcome = kind_of_output(folder, job)
        row.count(outcome)
        table.expect(
            outcome in ("whole", "absent") if harmed else outcome == "whole",
            f"{row.name}: {job.name}: the output is {outcome}",
        )
        left = len(neighbours(folder, job))
        table.expect(harmed or left == 0, f"{row.name}: {left} files are left beside the output")
    table.expect(harmed or not any(codes), f"{row.name}: exit codes {codes}")


def crowd(arena, table, row, jobs, harmed, through=()):
    """Some of the runs of a harmed crowd are killed, some stopped; each of the rest writes its result."""
    folder = arena.new_folder(jobs[0])
    for job in jobs:
        (folder / job.input).write_text(job.text)
    children = [
        arena.start(
            random.choice(jobs) if i >= len(jobs) else jobs[i], log=random.choice([None, "w/run.log"]), through=through
        )
        for i in range(CROWD)
    ]
    for child in children[::2] if harmed else []:
        child.wait_for_work(random.random() * 0.01)
        if not child.has_ended():
            os.kill(child.process.pid, random.choice([signal.SIGKILL, signal.SIGTERM]))
    check_crowd(table, row, folder, jobs, [child.wait() for child in children], harmed)


def run_crowds(arena, table, count, mounts):
    examples = {job.name: job for job in example_jobs()}
    crowds = {
        "one kind": [weak_spins(14)],
        "both kinds": [weak_spins(12), molecule_run("naphthalene", "shielding", SHIELDING | TIGHT)],
        "an example": [examples["methane"]],
    }
    if count < LONG_CAMPAIGN:
        del crowds["one kind"], crowds["an example"]
    for name, jobs in crowds.items():
        for job in jobs:
            arena.time_of(job)
        for harmed in (False, True):
            row = table.add_row(
                f"{CROWD} runs in one folder, {name}" + (", half of them killed or stopped" if harmed else "")
            )
            for _ in range(max(1, count // 20)):
                crowd(arena, table, row, jobs, harmed)
    if mounts:
        row = table.add_row(f"{CROWD} runs with the same process number in one folder")
        for _ in range(max(1, count // 20)):
            crowd(arena, table, row, crowds["both kinds"], False, CONTAINER)
    else:
        table.skip("runs with the same process number", "process numbers of their own need root")
