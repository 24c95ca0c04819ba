# SPDX-License-Identifier: MIT
"""Starts the program on a work folder, with a limit of time, and gives what it left there."""
import dataclasses
import enum
import pathlib
import subprocess
from collections.abc import Sequence
from typing import Any

from .texts import read_text_if_there

PathLike = str | pathlib.Path
STOP_SECONDS = 10.0  # that a run has for its end once it was asked to stop


class RunKind(enum.IntEnum):
    """The kinds of runs, by their number on the command line."""

    PARAMETER = 1
    SPECTRUM = 2

    @property
    def stem(self) -> str:
        return {RunKind.PARAMETER: "nmrparam", RunKind.SPECTRUM: "nmrspect"}[self]

    @property
    def input_name(self) -> str:
        return self.stem + ".in"

    @property
    def output_name(self) -> str:
        return self.stem + ".out"


class RunFailed(RuntimeError):
    """The program didn't come to its end. A refused run isn't this: its output says why."""


@dataclasses.dataclass(frozen=True)
class RunTexts:
    """What a run has left."""

    output: str | None  # the whole output file, a refusal too; None where there is none
    log: str | None  # None where there is none
    complaint: str  # what it said on standard error


def command_line(
    program: PathLike,
    parameters: PathLike,
    work: PathLike,
    kind: RunKind,
    log: PathLike | None = None,
    through: Sequence[str] = (),
) -> list[str]:
    """The arguments that start a run; through is a command that starts the program."""
    fields = [str(program), str(parameters), str(work), str(kind.value)]
    return [*through, *fields] + ([] if log is None else [str(log)])


def start_run(
    program: PathLike,
    parameters: PathLike,
    work: PathLike,
    kind: RunKind,
    log: PathLike | None = None,
    *,
    folder: PathLike = ".",
    through: Sequence[str] = (),
    **settings: Any,
) -> subprocess.Popen[Any]:
    """A run in progress. Parameter folder, work folder and log are seen from folder: the paths that the program takes
    are short and have no blanks. The settings go to subprocess.Popen. Raises OSError if the program can't be started.
    """
    arguments = command_line(program, parameters, work, kind, log, through)
    settings.setdefault("stdin", subprocess.DEVNULL)
    process: subprocess.Popen[Any] = subprocess.Popen(arguments, cwd=folder, **settings)
    return process


def make_run(
    program: PathLike,
    parameters: PathLike,
    work: PathLike,
    kind: RunKind,
    log: PathLike | None = "run.log",
    *,
    folder: PathLike = ".",
    seconds: float | None = None,
) -> RunTexts:
    """Makes a whole run, as start_run starts it; an older output and an older log are removed before. The log is seen
    from folder, not from the work folder. RunFailed if the run ends with another code than 0, or not within so many
    seconds: then it is stopped."""
    output_path = pathlib.Path(folder, work, kind.output_name)
    log_path = None if log is None else pathlib.Path(folder, log)
    for path in [output_path] + ([] if log_path is None else [log_path]):
        path.unlink(missing_ok=True)
    settings: dict[str, Any] = {"stdout": subprocess.DEVNULL, "stderr": subprocess.PIPE}
    with start_run(program, parameters, work, kind, log, folder=folder, **settings) as process:
        try:
            complaint = process.communicate(timeout=seconds)[1].decode("latin-1")
        except subprocess.TimeoutExpired:
            stop(process)
            raise RunFailed(f"The run in {work} was stopped: it took more than {seconds} s.") from None
    if process.returncode != 0:
        raise RunFailed(f"The run in {work} ended with code {process.returncode}: {complaint.strip() or 'no word'}.")
    log_text = None if log_path is None else read_text_if_there(log_path)
    return RunTexts(read_text_if_there(output_path), log_text, complaint)


def stop(process: subprocess.Popen[Any]) -> None:
    """Asks a run to stop, and kills it if it doesn't."""
    process.terminate()
    try:
        process.communicate(timeout=STOP_SECONDS)
    except subprocess.TimeoutExpired:
        process.kill()
        process.communicate()
