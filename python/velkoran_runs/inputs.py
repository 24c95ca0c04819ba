# SPDX-License-Identifier: MIT
"""Writes nmrparam.in from atoms and options, and reads it back; see nmrparam.in(5)."""
import dataclasses
import re
from collections.abc import Mapping, Sequence

Position = tuple[float, float, float]
Place = tuple[int, int]  # number of a molecule, and of an atom in it; both from 1
BLOCK = r"^{0}Begin *\n(.*?)(?:^{0}End *$|\Z)"


@dataclasses.dataclass(frozen=True)
class Atom:
    """One atom of a molecule."""

    element: str  # its symbol
    position: Position  # Angstrom
    type: str = ""  # its atom type; the element if empty
    charge: float = 0.0  # elementary charges
    neighbours: tuple[tuple[int, str], ...] = ()  # numbers in the molecule from 1, each with a letter of bond order


def options_text(options: Mapping[str, object]) -> str:
    """A line for each option; True and False are yes and no."""
    words = {key: ("no", "yes")[value] if isinstance(value, bool) else value for key, value in options.items()}
    return "".join(f"{key} = {value}\n" for key, value in words.items())


def selection_text(name: str, places: Sequence[Place]) -> str:
    """A block of the name "NMRSelection" or "QuantumSelection"."""
    entries = "".join(f"mol {molecule} atom {atom}\n" for molecule, atom in places)
    return f"{name}Begin\n{len(places)}\n{entries}{name}End\n"


def atom_text(number: int, atom: Atom) -> str:
    """The line of an atom, whose name is its element."""
    place = " ".join(f"{value:.8f}" for value in atom.position)
    fields = [str(len(atom.neighbours)), *(f"{other} {letter}" for other, letter in atom.neighbours)]
    kind = atom.type or atom.element
    return f"atom {number} {atom.element} {atom.element} {kind} - {atom.charge} {place} {' '.join(fields)}\n"


def atoms_text(*molecules: Sequence[Atom]) -> str:
    """The block of the atoms of all molecules. ValueError if a neighbour isn't in its molecule."""
    lines = []
    for number, atoms in enumerate(molecules, 1):
        lines.append(f"mol {number}\n")
        for position, atom in enumerate(atoms, 1):
            if any(not 1 <= other <= len(atoms) for other, _ in atom.neighbours):
                raise ValueError(f"Atom {position} of molecule {number} has a neighbour that isn't in the molecule.")
            lines.append(atom_text(position, atom))
        lines.append(f"endmol {number}\n")
    return f"AtomsBegin\n{sum(map(len, molecules))}\n{''.join(lines)}AtomsEnd\n"


def parameter_input(
    atoms: str,
    options: Mapping[str, object],
    selected: int | Sequence[Place] | None = None,
    quantum: Sequence[Place] = (),
) -> str:
    """The text of nmrparam.in.

    atoms is a block of atoms as atoms_text makes it. selected are the nuclei to report: places, or so many of the first
    molecule's first atoms, or all atoms of the first molecule. quantum are the atoms of the calculation where that
    isn't the whole system.
    """
    if selected is None or isinstance(selected, int):
        count = len(read_atoms(atoms)[0])
        selected = [(1, number + 1) for number in range(count if selected is None else min(selected, count))]
    chosen = selection_text("NMRSelection", selected) + (selection_text("QuantumSelection", quantum) if quantum else "")
    return options_text(options) + chosen + atoms


def bonded_atoms(
    elements: Sequence[str], positions: Sequence[Position], bonds: Sequence[tuple[int, int, str]]
) -> list[Atom]:
    """Atoms of the elements at positions in Angstrom, with bonds as two numbers from 1 and a letter of bond order."""
    if len(elements) != len(positions):
        raise ValueError(f"There are {len(elements)} elements and {len(positions)} positions.")
    neighbours: list[list[tuple[int, str]]] = [[] for _ in elements]
    for first, second, letter in bonds:
        neighbours[first - 1].append((second, letter))
        neighbours[second - 1].append((first, letter))
    return [
        Atom(element, position, neighbours=tuple(others))
        for element, position, others in zip(elements, positions, neighbours)
    ]


def read_atoms(text: str) -> list[list[Atom]]:
    """The atoms of each molecule of an nmrparam.in. ValueError if there are none, or if a line isn't an atom's."""
    molecules: list[list[Atom]] = []
    for line in block(text, "Atoms").splitlines():
        words = line.split()
        if line.lower().startswith("mol"):
            molecules.append([])
        elif line.lower().startswith("atom"):
            if not molecules or len(words) < 11:
                raise ValueError(f"This isn't an atom of a molecule: {line}")
            x, y, z = (float(word) for word in words[7:10])
            pairs = tuple((int(number), letter) for number, letter in zip(words[11::2], words[12::2]))
            molecules[-1].append(Atom(words[3], (x, y, z), words[4], float(words[6]), pairs))
    if not molecules or not molecules[0]:
        raise ValueError("The text has no atoms.")
    return molecules


def read_options(text: str) -> dict[str, str]:
    """The options of an nmrparam.in as words; of two of the same key the later one counts."""
    return dict(re.findall(r"^ *(\w+) *= *(.*?) *$", text, re.M))


def read_selection(text: str, name: str = "NMRSelection") -> list[Place]:
    """The places of a selection of an nmrparam.in. ValueError if it has none of that name."""
    entries = block(text, name).split()[1:]
    return [(int(molecule), int(atom)) for molecule, atom in zip(entries[1::4], entries[3::4])]


def block(text: str, name: str) -> str:
    """The inside of a block. ValueError if there is none."""
    found = re.search(BLOCK.format(name), text, re.M | re.S)
    if found is None:
        raise ValueError(f"The text has no line {name}Begin.")
    return found.group(1)
