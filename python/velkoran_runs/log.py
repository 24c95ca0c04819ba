# SPDX-License-Identifier: MIT
"""Reads the log of a parameter run; see velkoran-log(5)."""
import dataclasses
import re

CAUTION = "CAUTION: "
PROGRESS = re.compile(r"Iteration = |Perturbed ")


@dataclasses.dataclass(frozen=True)
class Response:
    """Where the iterations of a response ended."""

    iterations: int
    difference: float  # the last change of the first-order density


def is_progress(line: str) -> bool:
    """True of a line that tells of one iteration."""
    return PROGRESS.match(line) is not None


def is_caution(line: str) -> bool:
    """True of a line that tells of a doubt about the result."""
    return line.startswith(CAUTION)


def cautions(log: str) -> list[str]:
    """What the log says of doubts, in its order."""
    return [line.removeprefix(CAUTION) for line in log.splitlines() if is_caution(line)]


def is_accelerated(log: str) -> bool:
    """True if the Fock matrix was extrapolated."""
    return "convergence?  Yes" in log


def field_differences(log: str) -> list[float]:
    """The changes of the electronic energy, in kcal/mol: one for each iteration of each wavefunction."""
    return [float(word) for word in re.findall(r"^Iteration = \d+ Difference = (\S+)", log, re.M)]


def responses(log: str) -> dict[str, Response]:
    """The last line of each response, by "atom 1" for a contact and by "x" for a direction of the magnetic field."""
    found = re.findall(r"^Perturbed (atom \d+|[xyz]):  Iter = (\d+)  Diff = (\S+)", log, re.M)
    return {name: Response(int(iterations), float(difference)) for name, iterations, difference in found}


def total_energies(log: str) -> list[float]:
    """In Hartree, one for each wavefunction."""
    return [float(word) for word in re.findall(r"Total Energy\s+=\s+(\S+) \(a\.u\.\)", log)]


def dipole_moments(log: str) -> list[float]:
    """The whole dipole moment in Debye, one for each wavefunction; of a single atom there is none."""
    return [float(word) for word in re.findall(r"^ +Sum +\S+ +\S+ +\S+ +(\S+)$", log, re.M)]
