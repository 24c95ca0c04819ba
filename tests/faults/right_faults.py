# SPDX-License-Identifier: MIT
"""Missing rights, and outputs that aren't ordinary files."""
import os
import stat
import subprocess

from fault_arena import OLDER, TRUTH, KindOfOutput, Neighbours, SaysWhy
from fault_jobs import ALL_TERMS, TIGHT, Examples, Molecule, WeakSpins

NOBODY = 65534


def Jobs():
    examples = {job.name: job for job in Examples()}
    return [examples["methane"], examples["ethanol_60"], WeakSpins(10),
            Molecule("naphthalene", "all terms", ALL_TERMS + TIGHT)]


def GiveAway(path):
    """To the user without rights, where this one has them all."""
    if os.geteuid() == 0:
        os.chown(path, NOBODY, NOBODY)


def RunWithoutRights(arena, job):
    settings = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if os.geteuid() == 0 else {}
    child = arena.Start(job, log=None, **settings)
    return child.Wait(), child.said


# Each case prepares a folder that holds the input, and says what the output is afterwards.
def ReadOnlyFolder(folder, output):
    folder.chmod(0o555)
    return "absent"


def ReadOnlyFolderWithOutput(folder, output):
    output.write_bytes(OLDER)
    GiveAway(output)
    folder.chmod(0o555)
    return "whole"


def ReadOnlyFolderWithForeignOutput(folder, output):
    output.write_bytes(OLDER)
    output.chmod(0o444)
    folder.chmod(0o555)
    return "older"


def OutputWithoutRights(folder, output):
    output.write_bytes(OLDER)
    GiveAway(output)
    output.chmod(0o444)
    return "older"


def OutputIsAFolder(folder, output):
    output.mkdir()
    GiveAway(output)
    return "a folder"


def LinkToAFile(folder, output):
    target = folder / "target"
    target.write_bytes(OLDER)
    GiveAway(target)
    output.symlink_to("target")
    return "whole"


def LinkToNothing(folder, output):
    output.symlink_to("target")
    return "whole"


def LinkToNoFolder(folder, output):
    output.symlink_to("missing/target")
    return "absent"


CASES = {"work folder read-only": ReadOnlyFolder,
         "work folder read-only, an output that may be written": ReadOnlyFolderWithOutput,
         "work folder read-only, an output that may not be written": ReadOnlyFolderWithForeignOutput,
         "an output that may not be written": OutputWithoutRights,
         "the output is a folder": OutputIsAFolder,
         "the output is a link to a file": LinkToAFile,
         "the output is a link to a file that isn't there yet": LinkToNothing,
         "the output is a link into a folder that isn't there": LinkToNoFolder}


def RunCase(arena, table, row, case, job):
    folder = arena.Folder(job)
    output = folder / job.output
    GiveAway(folder)
    expected = case(folder, output)
    linked = output.is_symlink()
    code, said = RunWithoutRights(arena, job)
    outcome = "a folder" if output.is_dir() and not any(output.iterdir()) else KindOfOutput(folder, job, older=True)
    row.Count(outcome)
    table.Expect(code == 0 and outcome == expected, f"{row.name}: {job.name}: exit code {code}, output {outcome}")
    table.Expect(SaysWhy(said, outcome), f"{row.name}: {job.name}: says {said}")
    table.Expect(not Neighbours(folder, job), f"{row.name}: {job.name}: a file is left beside the output")
    table.Expect(output.is_symlink() == linked, f"{row.name}: {job.name}: the link is gone")
    folder.chmod(0o755)


def RunMountedOutput(arena, table, jobs):
    """An output that is a mount of its own can't be replaced, only written."""
    row = table.AddRow("the output is a mount of its own")
    for job in jobs:
        folder = arena.Folder(job, older=True)
        held = arena.top / "held"
        held.write_bytes(OLDER)
        subprocess.run(["mount", "--bind", held, folder / job.output], check=True)
        try:
            code = arena.Start(job, log=None).Wait()
            outcome = KindOfOutput(folder, job)
            row.Count(outcome)
            table.Expect(code == 0 and outcome == "whole" and held.read_bytes() == TRUTH[job.name]
                         and not Neighbours(folder, job), f"{row.name}: {job.name}: exit code {code}, {outcome}")
        finally:
            subprocess.run(["umount", folder / job.output], check=True)


def RunDevice(arena, table, jobs):
    row = table.AddRow("the output is a link to /dev/null")
    for job in jobs:
        folder = arena.Folder(job)
        (folder / job.output).symlink_to("/dev/null")
        code = arena.Start(job, log=None).Wait()
        kept = stat.S_ISCHR((folder / job.output).stat().st_mode)
        table.Expect(code == 0 and kept, f"{row.name}: {job.name}: exit code {code}, device kept: {kept}")
        row.Count("the device stays")


def RunRights(arena, table, mounts):
    jobs = Jobs()
    for job in jobs:
        arena.Time(job)
    for name, case in CASES.items():
        row = table.AddRow(name)
        for job in jobs:
            RunCase(arena, table, row, case, job)
    RunDevice(arena, table, jobs)
    if mounts:
        RunMountedOutput(arena, table, jobs)
    else:
        table.Skip("an output that is a mount of its own", "mounting needs root")
