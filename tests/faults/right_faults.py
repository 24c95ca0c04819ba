# SPDX-License-Identifier: MIT
"""Missing rights, and outputs that aren't ordinary files."""
import os
import stat
import subprocess

from fault_arena import OLDER, TRUTH, kind_of_output, neighbours, says_why
from fault_jobs import ALL_TERMS, TIGHT, example_jobs, molecule_run, weak_spins

NOBODY = 65534


def campaign_jobs():
    examples = {job.name: job for job in example_jobs()}
    return [
        examples["methane"],
        examples["ethanol_60"],
        weak_spins(10),
        molecule_run("naphthalene", "all terms", ALL_TERMS | TIGHT),
    ]


def give_away(path):
    """To the user without rights, where this one has them all."""
    if os.geteuid() == 0:
        os.chown(path, NOBODY, NOBODY)


def run_without_rights(arena, job):
    settings = {"user": NOBODY, "group": NOBODY, "extra_groups": []} if os.geteuid() == 0 else {}
    child = arena.start(job, log=None, **settings)
    return child.wait(), child.said


# Each case prepares a folder that holds the input, and says what the output is afterwards.
def read_only_folder(folder, output):
    folder.chmod(0o555)
    return "absent"


def read_only_folder_with_output(folder, output):
    output.write_bytes(OLDER)
    give_away(output)
    folder.chmod(0o555)
    return "whole"


def read_only_folder_with_foreign_output(folder, output):
    output.write_bytes(OLDER)
    output.chmod(0o444)
    folder.chmod(0o555)
    return "older"


def output_without_rights(folder, output):
    output.write_bytes(OLDER)
    give_away(output)
    output.chmod(0o444)
    return "older"


def output_is_a_folder(folder, output):
    output.mkdir()
    give_away(output)
    return "a folder"


def link_to_a_file(folder, output):
    target = folder / "target"
    target.write_bytes(OLDER)
    give_away(target)
    output.symlink_to("target")
    return "whole"


def link_to_nothing(folder, output):
    output.symlink_to("target")
    return "whole"


def link_to_no_folder(folder, output):
    output.symlink_to("missing/target")
    return "absent"


CASES = {
    "work folder read-only": read_only_folder,
    "work folder read-only, an output that may be written": read_only_folder_with_output,
    "work folder read-only, an output that may not be written": read_only_folder_with_foreign_output,
    "an output that may not be written": output_without_rights,
    "the output is a folder": output_is_a_folder,
    "the output is a link to a file": link_to_a_file,
    "the output is a link to a file that isn't there yet": link_to_nothing,
    "the output is a link into a folder that isn't there": link_to_no_folder,
}


def run_case(arena, table, row, case, job):
    folder = arena.new_folder(job)
    output = folder / job.output
    give_away(folder)
    expected = case(folder, output)
    linked = output.is_symlink()
    code, said = run_without_rights(arena, job)
    outcome = "a folder" if output.is_dir() and not any(output.iterdir()) else kind_of_output(folder, job, older=True)
    row.count(outcome)
    table.expect(code == 0 and outcome == expected, f"{row.name}: {job.name}: exit code {code}, output {outcome}")
    table.expect(says_why(said, outcome), f"{row.name}: {job.name}: says {said}")
    table.expect(not neighbours(folder, job), f"{row.name}: {job.name}: a file is left beside the output")
    table.expect(output.is_symlink() == linked, f"{row.name}: {job.name}: the link is gone")
    folder.chmod(0o755)


def run_mounted_output(arena, table, jobs):
    """An output that is a mount of its own can't be replaced, only written."""
    row = table.add_row("the output is a mount of its own")
    for job in jobs:
        folder = arena.new_folder(job, older=True)
        held = arena.top / "held"
        held.write_bytes(OLDER)
        subprocess.run(["mount", "--bind", held, folder / job.output], check=True)
        try:
            code = arena.start(job, log=None).wait()
            outcome = kind_of_output(folder, job)
            row.count(outcome)
            table.expect(
                code == 0
                and outcome == "whole"
                and held.read_bytes() == TRUTH[job.name]
                and not neighbours(folder, job),
                f"{row.name}: {job.name}: exit code {code}, {outcome}",
            )
        finally:
            subprocess.run(["umount", folder / job.output], check=True)


def run_device(arena, table, jobs):
    row = table.add_row("the output is a link to /dev/null")
    for job in jobs:
        folder = arena.new_folder(job)
        (folder / job.output).symlink_to("/dev/null")
        code = arena.start(job, log=None).wait()
        kept = stat.S_ISCHR((folder / job.output).stat().st_mode)
        table.expect(code == 0 and kept, f"{row.name}: {job.name}: exit code {code}, device kept: {kept}")
        row.count("the device stays")


def run_rights(arena, table, mounts):
    jobs = campaign_jobs()
    for job in jobs:
        arena.time_of(job)
    for name, case in CASES.items():
        row = table.add_row(name)
        for job in jobs:
            run_case(arena, table, row, case, job)
    run_device(arena, table, jobs)
    if mounts:
        run_mounted_output(arena, table, jobs)
    else:
        table.skip("an output that is a mount of its own", "mounting needs root")
