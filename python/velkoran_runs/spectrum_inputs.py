# SPDX-License-Identifier: MIT
"""Writes nmrspect.in from shifts and couplings; see nmrspect.in(5)."""
from collections.abc import Sequence

LONGEST_LINE = 511  # characters; the program takes what is beyond for another line


def row(values: Sequence[float]) -> str:
    """Numbers with ten digits; the program rounds shifts and couplings to three decimals. ValueError if there are more
    than a line takes."""
    text = " ".join(f"{value:.10g}" for value in values)
    if len(text) > LONGEST_LINE:
        raise ValueError(f"{len(values)} numbers take {len(text)} characters; a line has at most {LONGEST_LINE}.")
    return text


def spectrum_input(
    shifts: Sequence[float],
    couplings: Sequence[Sequence[float]],
    frequency: int,
    *,
    sizes: Sequence[int] = (),
    masses: Sequence[int] = (),
    minimal_intensity: float = 0.001,
    weak: bool = False,
    title: str = "spins",
) -> str:
    """The text of nmrspect.in for n groups of nuclei.

    shifts are n numbers in ppm, couplings n rows of n numbers in Hz, of which those above the diagonal count, frequency
    is in MHz. sizes are the numbers of nuclei of each group and masses their mass numbers, n of each, or none for
    single protons. weak asks for the weak-coupling approximation. ValueError if the numbers don't fit together.
    """
    count = len(shifts)
    if len(couplings) != count or any(len(line) != count for line in couplings):
        raise ValueError(f"{count} shifts need {count} rows of {count} couplings.")
    if len(sizes or shifts) != count or len(masses or shifts) != count:
        raise ValueError(f"{count} shifts need {count} sizes and {count} mass numbers, or none.")
    if len(title.splitlines()) > 1:
        raise ValueError("The title has more than one line.")
    lines = [title, str(count), row([*(masses or [1] * count), *(sizes or [1] * count)]), "Frequency, MHz"]
    lines += [str(frequency), "Shifts, ppm", row(shifts), "Couplings, Hz", *map(row, couplings)]
    lines += ["Minimal intensity", str(minimal_intensity), "Weak coupling", str(int(weak))]
    return "\n".join(lines) + "\n"
