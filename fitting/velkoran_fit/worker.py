# SPDX-License-Identifier: MIT
"""Runs of the core by worker processes: parameters, molecules and options go as records, doubles come back."""
import contextlib
import enum
import os
import queue
import struct
import subprocess
from collections.abc import Iterator, Sequence
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass, field
from pathlib import Path
from typing import IO

import numpy as np

from .arrays import Integers, Reals

# Columns of a parameter table, in the order of the worker's records: energies in eV, exponents in 1/bohr, the bonding
# parameter in eV, G1 and F2 in Hartree, energies of the free atom in eV, its heat of formation in kcal/mol, the g
# factor in nuclear magnetons, the density of the valence s orbital at the nucleus in 1/bohr^3.
FIELDS = (
    "OrbitalEnergyS",
    "OrbitalEnergyP",
    "OrbitalEnergyD",
    "SlaterExponentS",
    "SlaterExponentP",
    "SlaterExponentD",
    "BondingParameter",
    "SlaterCondonG1",
    "SlaterCondonF2",
    "IsolatedEnergyTndo1",
    "IsolatedEnergyTndo2",
    "AtomHeat",
    "gFactor",
    "sDensity0",
)

_HEAD = struct.Struct("<10id")
_ATOM = np.dtype([("number", "<i4"), ("type", "<i4"), ("position", "<f8", 3)])
_CHANGE = np.dtype([("variant", "<i4"), ("type", "<i4"), ("field", "<i4"), ("unused", "<i4"), ("value", "<f8")])


class Status(enum.IntFlag):
    """What may be wrong with a run; no bit: nothing."""

    FIELD = 1  # the field ended at its iteration limit
    CONTACT = 2  # a contact response did
    MAGNETIC = 4  # a magnetic response did
    UNSTABLE = 8  # the wavefunction isn't stable against such perturbations
    REFUSED = 16  # there are no values


class Quantity(enum.IntEnum):
    """What a run computes."""

    SHIELDING = 1
    COUPLING = 2


@dataclass(frozen=True)
class Change:
    """Another number in a parameter table."""

    row: int
    field: str  # one of FIELDS
    value: float


@dataclass(frozen=True)
class Job:
    """One molecule in one geometry.

    numbers, types: (n,) atomic numbers and rows of the parameter table; coordinates: (n, 3) Angstrom; atoms: places
    whose values are wanted. Each variant is a set of changes to the table, run after the table itself.
    """

    quantity: Quantity
    numbers: Integers
    types: Integers
    coordinates: Reals
    atoms: Integers
    charge: int = 0
    variants: Sequence[Sequence[Change]] = field(default=())


@dataclass(frozen=True)
class Options:
    """Options of all runs of a pool."""

    method: int = 2  # TNDO/1 or TNDO/2
    modify_exponents: bool = True
    iteration_limit: int = 300
    convergence_limit: float = 1e-7


@dataclass(frozen=True)
class Outcome:
    """Answers to a job: the table first, then its variants.

    status: (sets,) bits of Status; values: (sets, atoms) shieldings in ppm, or (sets, atoms, n) couplings in Hz, not
    a number where the run was refused.
    """

    status: Integers
    values: Reals


def request_bytes(job: Job, table: Reals, options: Options) -> bytes:
    """The request for a job with a parameter table of shape (types, 14), as the worker reads it."""
    atoms = np.zeros(len(job.numbers), _ATOM)
    atoms["number"], atoms["type"], atoms["position"] = job.numbers, job.types, job.coordinates
    flat = [(i, c.row, FIELDS.index(c.field), 0, c.value) for i, changes in enumerate(job.variants) for c in changes]
    head = _HEAD.pack(
        job.quantity,
        len(atoms),
        len(job.atoms),
        len(table),
        len(job.variants),
        len(flat),
        job.charge,
        options.method,
        options.modify_exponents,
        options.iteration_limit,
        options.convergence_limit,
    )
    places = np.asarray(job.atoms, "<i4").tobytes()
    return head + atoms.tobytes() + places + table.astype("<f8").tobytes() + np.array(flat, _CHANGE).tobytes()


def _read_exactly(stream: IO[bytes], count: int) -> bytes:
    data = stream.read(count)
    if len(data) != count:
        raise RuntimeError("a worker ended before it had answered; its reason stands on standard error")
    return data


def read_outcome(stream: IO[bytes], job: Job) -> Outcome:
    """The answers to a job. Raises RuntimeError where the worker ends before them."""
    shape = (len(job.atoms),) + ((len(job.numbers),) if job.quantity == Quantity.COUPLING else ())
    record = np.dtype([("status", "<u8"), ("values", "<f8", shape)])
    sets = len(job.variants) + 1
    answers = np.frombuffer(_read_exactly(stream, sets * record.itemsize), record)
    return Outcome(answers["status"].astype(int), answers["values"].copy())


class WorkerPool:
    """Worker processes, as many as there are cores unless said otherwise, to be used in a with statement."""

    def __init__(self, program: Path, options: Options = Options(), processes: int | None = None):
        self.options = options
        count = processes or len(os.sched_getaffinity(0))
        self._processes = [
            subprocess.Popen([program], stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=1 << 16)
            for _ in range(count)
        ]
        self._idle: queue.Queue[subprocess.Popen[bytes]] = queue.Queue()
        for process in self._processes:
            self._idle.put(process)
        self._threads = ThreadPoolExecutor(count)

    def __enter__(self) -> "WorkerPool":
        return self

    def __exit__(self, *exception: object) -> None:
        self._threads.shutdown(cancel_futures=True)
        for process in self._processes:
            assert process.stdin and process.stdout
            with contextlib.suppress(BrokenPipeError):  # of a worker that ended before it had read its request
                process.stdin.close()
            process.stdout.close()
            process.wait()

    def _run(self, job: Job, table: Reals) -> Outcome:
        request = request_bytes(job, table, self.options)
        process = self._idle.get()
        try:
            assert process.stdin and process.stdout
            with contextlib.suppress(BrokenPipeError):  # its output ends, too, and says so
                process.stdin.write(request)
                process.stdin.flush()
            return read_outcome(process.stdout, job)
        finally:
            self._idle.put(process)

    def run(self, jobs: Sequence[Job], table: Reals) -> Iterator[Outcome]:
        """The outcomes of jobs with a parameter table of shape (types, 14), in their order, as they come.

        Raises RuntimeError where a worker ends before it has answered: it was killed, or a job isn't one, with a type
        beyond the table for example. The pool is of no use then.
        """
        return self._threads.map(lambda job: self._run(job, table), jobs)
