# SPDX-License-Identifier: MIT
"""Starts the program on a job in a folder of its own, waits for it, and says what it has left behind."""
import os
import pathlib
import re
import resource
import select
import shutil
import signal
import subprocess
import tempfile
import time

from fault_jobs import ROOT
from velkoran_runs.program import start_run
from velkoran_runs.results import LOG_REFUSAL, REFUSAL

HANG_SECONDS = 120
TICKS = 0.02  # s
OLDER = b"This is a comment line.\n1\nFREQUNCY INTENSITY DEGENERACY LINEWIDTH\n1.000 1.000 1 0\n"
LOG_TEXT = LOG_REFUSAL.encode()
TRUTH = {}  # by name of the job: the bytes of its result


class Child:
    """A run in progress."""

    def __init__(self, process):
        self.process = process
        self.said = b""  # on standard error, once the run has ended
        self.descriptor = os.pidfd_open(process.pid)

    def has_ended(self, seconds=0.0):
        return bool(select.select([self.descriptor], [], [], max(0.0, seconds))[0])

    def work(self):
        """Seconds of a processor that the run has had: they don't depend on how busy the machine is."""
        try:
            return int(pathlib.Path(f"/proc/{self.process.pid}/schedstat").read_text().split()[0]) * 1e-9
        except (OSError, IndexError):
            return float("inf")

    def wait_for_work(self, seconds):
        """Until the run has had so much of a processor, or has ended. The system keeps its account by ticks, so that
        shorter times are taken from the clock."""
        if seconds < TICKS:
            self.has_ended(seconds)
            return
        while not self.has_ended(0.0005) and self.work() < seconds:
            pass

    def wait(self):
        """The exit code, minus the number of a signal, or None for a run that had to be killed for its length."""
        in_time = self.has_ended(HANG_SECONDS)
        if not in_time:
            self.process.kill()
        code = self.process.wait()
        with self.process.stderr as stream:
            self.said = stream.read()
        os.close(self.descriptor)
        return code if in_time else None

    def wait_until_stoppable(self):
        """True once the run has its handler of SIGTERM; before, a signal ends any process."""
        while not self.has_ended():
            try:
                status = pathlib.Path(f"/proc/{self.process.pid}/status").read_text()
            except OSError:
                return False
            caught = [line for line in status.splitlines() if line.startswith("SigCgt:")]
            if caught and int(caught[0].split()[1], 16) >> (signal.SIGTERM - 1) & 1:
                return True
            time.sleep(0.0002)
        return False


class Arena:
    """A temporary folder with the program, the parameter files and one folder for each run. Runs start in it, since the
    paths of a run are short."""

    def __init__(self, program):
        self.top = pathlib.Path(tempfile.mkdtemp(prefix="velkoran_faults_"))
        self.top.chmod(0o755)
        self.program = self.top / "velkoran"
        shutil.copy(program, self.program)
        self.program.chmod(0o755)
        shutil.copytree(ROOT / "parameters" / "published", self.top / "parameters")
        self.times = {}  # by name of the job and whether there is a log
        self.logs = {}  # by name of the job

    def remove(self):
        shutil.rmtree(self.top, ignore_errors=True)

    def new_folder(self, job, older=False, name="w"):
        """An empty folder with the input of the job, and perhaps with an older result."""
        folder = self.top / name
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir()
        (folder / job.input).write_text(job.text)
        if older:
            (folder / job.output).write_bytes(OLDER)
        return folder

    def start(self, job, name="w", log="w.log", limits=(), through=(), **settings):
        """log is the path of the log as the run sees it, or None; limits are pairs for setrlimit; through is a command
        that starts the program."""

        def set_limits():
            for kind, value in limits:
                resource.setrlimit(kind, (value, value))

        settings = {"stdout": subprocess.DEVNULL, "stderr": subprocess.PIPE, **settings}
        settings["preexec_fn"] = set_limits if limits else None
        return Child(
            start_run(self.program, "parameters", name, job.kind, log, folder=self.top, through=through, **settings)
        )

    def measure(self, job, log=True):
        """Runs the job unharmed, a short one three times; keeps its bytes and returns its least work in seconds."""
        times = []
        while not times or (len(times) < 3 and times[-1] < 1):
            before = resource.getrusage(resource.RUSAGE_CHILDREN)
            self.new_folder(job, name="m")
            (self.top / "m.log").unlink(missing_ok=True)
            child = self.start(job, "m", "m.log" if log else None)
            if child.wait() != 0:
                raise SystemExit(f"{job.name}: the unharmed run fails")
            after = resource.getrusage(resource.RUSAGE_CHILDREN)
            times.append(after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime)
            result = (self.top / "m" / job.output).read_bytes()
            if result.startswith(b"ERRMSG") or TRUTH.setdefault(job.name, result) != result:
                raise SystemExit(f"{job.name}: no result, or two runs differ")
        if log:
            self.logs[job.name] = (self.top / "m.log").read_bytes()
        self.times[job.name, log] = min(times)
        return min(times)

    def time_of(self, job, log=True):
        return self.times.get((job.name, log)) or self.measure(job, log)


def kind_of_text(text, job, older=False):
    """What an output file holds, in one word."""
    if text == TRUTH[job.name]:
        return "whole"
    if older and text == OLDER:
        return "older"
    if text.startswith(REFUSAL.encode()) and len(text) > 9 and text.count(b"\n") == 1 and text.endswith(b"\n"):
        return "ERRMSG"
    if text == LOG_TEXT:
        return "log text"
    return "PARTIAL" if text else "empty"


def kind_of_output(folder, job, older=False):
    try:
        return kind_of_text((folder / job.output).read_bytes(), job, older)
    except (FileNotFoundError, NotADirectoryError):
        return "absent"


def says_why(said, outcome):
    """True if a run that wrote a text says nothing else, and one that couldn't says so in one line."""
    if outcome in ("whole", "ERRMSG", "log text"):
        return said == b""
    return re.fullmatch(rb"velkoran: cannot write \S+nmr\w+\.out \([A-Z][\w ]+\): .+\.\n", said) is not None


def neighbours(folder, job):
    """The files that a run has begun and not moved to their place."""
    return sorted(folder.glob(job.output + ".*")) if folder.is_dir() else []
