# SPDX-License-Identifier: MIT
"""Files that are removed or replaced in mid-run, and many runs in one work folder."""
import os
import random
import shutil
import signal

from fault_arena import KindOfOutput, Neighbours
from fault_jobs import ALL_TERMS, LONG_CAMPAIGN, SHIELDING, TIGHT, Examples, ExactSpins, Molecule, WeakSpins

CROWD = 20  # runs at once
CONTAINER = ["unshare", "--pid", "--fork"]  # each run has the process number 1


def Jobs():
    return [WeakSpins(16), ExactSpins(11), Molecule("cholesterol", "all terms", ALL_TERMS + TIGHT),
            Molecule("cholesterol", "both", "CalculateShielding = yes\nCalculateCoupling = yes\n" + TIGHT, 5)]


def Interrupt(arena, job, change):
    """Makes a change in mid-run, once the input has been read: the first line of the log says so."""
    folder = arena.Folder(job)
    log = arena.top / "w.log"
    shutil.rmtree(log, ignore_errors=True) if log.is_dir() else log.unlink(missing_ok=True)
    moment = random.random() * arena.Time(job)
    child = arena.Start(job)
    while not log.exists() and not child.Ended(0.0005):
        pass
    child.WaitForWork(moment)
    running = not child.Ended()
    if running:
        change(folder, log)
    return folder, child.Wait(), running


def RemoveLog(folder, log):
    log.unlink(missing_ok=True)


def ReplaceLog(folder, log):
    log.unlink(missing_ok=True)
    log.mkdir()


def RenameFolder(folder, log):
    folder.rename(folder.parent / "elsewhere")


def RemoveFolder(folder, log):
    shutil.rmtree(folder)


def RemoveParameters(folder, log):
    (folder.parent / "parameters").rename(folder.parent / "taken")


def RuinParameters(folder, log):
    for path in (folder.parent / "parameters").iterdir():
        path.write_text("ruined\n")


def ReplaceInput(folder, log):
    for path in folder.glob("*.in"):
        path.rename(folder / "old")
        path.write_text("another input\n")


def CutInput(folder, log):
    for path in folder.glob("*.in"):
        os.truncate(path, 100)


# What is done, and what the output may be then.
CHANGES = {"log removed in mid-run": (RemoveLog, {"whole"}),
           "log replaced by a folder in mid-run": (ReplaceLog, {"whole", "log text"}),
           "work folder renamed in mid-run": (RenameFolder, {"whole", "absent"}),
           "work folder removed in mid-run": (RemoveFolder, {"whole", "absent"}),
           "parameter files removed in mid-run": (RemoveParameters, {"whole"}),
           "parameter files overwritten in mid-run": (RuinParameters, {"whole"}),
           "input replaced in mid-run": (ReplaceInput, {"whole"}),
           "input cut in mid-run": (CutInput, {"whole"})}


def RestoreFolders(arena):
    shutil.rmtree(arena.top / "elsewhere", ignore_errors=True)
    taken = arena.top / "taken"
    source = taken if taken.exists() else arena.top / "kept"
    shutil.copytree(source, arena.top / "parameters", dirs_exist_ok=True)
    shutil.rmtree(taken, ignore_errors=True)


def RunChanges(arena, table, count):
    shutil.copytree(arena.top / "parameters", arena.top / "kept", dirs_exist_ok=True)
    jobs = Jobs() if count >= LONG_CAMPAIGN else Jobs()[1:2]
    for name, (change, allowed) in CHANGES.items():
        row = table.AddRow(name)
        for i in range(max(len(jobs), count // 20)):
            job = jobs[i % len(jobs)]
            folder, code, running = Interrupt(arena, job, change)
            moved = arena.top / "elsewhere"
            outcome = KindOfOutput(folder, job) if folder.exists() or not moved.exists() else KindOfOutput(moved, job)
            row.Count(outcome if running else "had ended: " + outcome)
            table.Expect(code == 0 and outcome in (allowed if running else {"whole"}),
                         f"{name}: {job.name}: exit code {code}, output {outcome}")
            left = Neighbours(folder, job) + Neighbours(moved, job)
            table.Expect(not left or change is RenameFolder, f"{name}: {job.name}: {left} left beside the output")
            if change is RemoveLog and (arena.top / "w.log").exists():
                table.Expect(arena.logs[job.name].endswith((arena.top / "w.log").read_bytes()),
                             f"{name}: {job.name}: the new log isn't the rest of the old one")
            RestoreFolders(arena)


def CheckCrowd(table, row, folder, jobs, codes, harmed):
    for job in jobs:
        outcome = KindOfOutput(folder, job)
        row.Count(outcome)
        table.Expect(outcome in ("whole", "absent") if harmed else outcome == "whole",
                     f"{row.name}: {job.name}: the output is {outcome}")
        left = len(Neighbours(folder, job))
        table.Expect(harmed or left == 0, f"{row.name}: {left} files are left beside the output")
    table.Expect(harmed or not any(codes), f"{row.name}: exit codes {codes}")


def Crowd(arena, table, row, jobs, harmed, through=()):
    """Some of the runs of a harmed crowd are killed, some stopped; each of the rest writes its result."""
    folder = arena.Folder(jobs[0])
    for job in jobs:
        (folder / job.input).write_text(job.text)
    children = [arena.Start(random.choice(jobs) if i >= len(jobs) else jobs[i], log=random.choice([None, "w/run.log"]),
                            through=through) for i in range(CROWD)]
    for child in children[::2] if harmed else []:
        child.WaitForWork(random.random() * 0.01)
        if not child.Ended():
            os.kill(child.process.pid, random.choice([signal.SIGKILL, signal.SIGTERM]))
    CheckCrowd(table, row, folder, jobs, [child.Wait() for child in children], harmed)


def RunCrowds(arena, table, count, mounts):
    examples = {job.name: job for job in Examples()}
    crowds = {"one kind": [WeakSpins(14)],
              "both kinds": [WeakSpins(12), Molecule("naphthalene", "shielding", SHIELDING + TIGHT)],
              "an example": [examples["methane"]]}
    if count < LONG_CAMPAIGN:
        del crowds["one kind"], crowds["an example"]
    for name, jobs in crowds.items():
        for job in jobs:
            arena.Time(job)
        for harmed in (False, True):
            row = table.AddRow(f"{CROWD} runs in one folder, {name}" + (", half of them killed or stopped" if harmed
                                                                        else ""))
            for _ in range(max(1, count // 20)):
                Crowd(arena, table, row, jobs, harmed)
    if mounts:
        row = table.AddRow(f"{CROWD} runs with the same process number in one folder")
        for _ in range(max(1, count // 20)):
            Crowd(arena, table, row, crowds["both kinds"], False, CONTAINER)
    else:
        table.Skip("runs with the same process number", "process numbers of their own need root")
