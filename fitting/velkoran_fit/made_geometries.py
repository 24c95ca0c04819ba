# SPDX-License-Identifier: MIT
"""Makes the geometries of many molecules in child processes, and keeps them in a file.

One child a molecule, with a limit of processor time, because an embedding can go on for ever. The file holds the
conformers of every structure and setting that was asked for, so that the next fit makes none again.
"""
import hashlib
import multiprocessing
import os
import resource
from collections.abc import Iterable, Sequence
from dataclasses import dataclass
from multiprocessing.connection import Connection, wait
from multiprocessing.process import BaseProcess
from pathlib import Path
from typing import cast

import numpy as np
from rdkit import Chem, rdBase

from .conformers import EMBEDDINGS, SEED, make_geometries
from .handedness import with_handedness
from .molecule_records import Geometry, Molecule

SECONDS = 30  # of processor time for a molecule
SAVED_AFTER = 50  # molecules
Made = dict[str, tuple[Geometry, ...]]


@dataclass(frozen=True)
class Settings:
    """The arguments of make_geometries."""

    largest_count: int = 10
    window: float = 3.0  # kcal/mol
    temperature: float = 298.15  # K
    seed: int = SEED


def fingerprint(mol: Chem.Mol, settings: Settings) -> str:
    """Tells apart structures, orders of their atoms, stereochemistry, settings, and versions of RDKit."""
    tagged = with_handedness(mol)
    atoms = [(atom.GetAtomicNum(), atom.GetFormalCharge(), int(atom.GetChiralTag())) for atom in tagged.GetAtoms()]
    bonds = [
        (bond.GetBeginAtomIdx(), bond.GetEndAtomIdx(), str(bond.GetBondType()), int(bond.GetStereo()))
        + tuple(bond.GetStereoAtoms())
        for bond in tagged.GetBonds()
    ]
    text = repr((atoms, bonds, settings, EMBEDDINGS, SECONDS, rdBase.rdkitVersion))
    return hashlib.sha256(text.encode()).hexdigest()[:32]


def read_made(path: Path) -> Made:
    """What the file holds; nothing if there is none."""
    if not path.exists():
        return {}
    with np.load(path) as file:
        return {
            name.removesuffix(".weights"): tuple(
                Geometry("made", float(weight), coordinates)
                for weight, coordinates in zip(file[name], file[name.removesuffix("weights") + "coordinates"])
            )
            for name in file.files
            if name.endswith(".weights")
        }


def write_made(path: Path, made: Made) -> None:
    arrays: dict[str, np.ndarray[tuple[int, ...], np.dtype[np.float64]]] = {}
    for name, geometries in sorted(made.items()):
        arrays[f"{name}.weights"] = np.array([geometry.weight for geometry in geometries])
        arrays[f"{name}.coordinates"] = np.array([geometry.coordinates for geometry in geometries])
    new = path.with_suffix(".new.npz")
    np.savez_compressed(new, **arrays)
    os.replace(new, path)


def make_in_child(mol: Chem.Mol, settings: Settings, answer: Connection) -> None:
    resource.setrlimit(resource.RLIMIT_CPU, (SECONDS, SECONDS))
    rdBase.DisableLog("rdApp.*")
    answer.send(make_geometries(mol, settings.largest_count, settings.window, settings.temperature, settings.seed))


def start_child(mol: Chem.Mol, settings: Settings) -> tuple[Connection, BaseProcess]:
    context = multiprocessing.get_context("fork")
    receiver, sender = context.Pipe(duplex=False)
    child = context.Process(target=make_in_child, args=(mol, settings, sender))
    child.start()
    sender.close()
    return receiver, child


def answer_of(receiver: Connection, child: BaseProcess) -> tuple[Geometry, ...]:
    """Nothing from a child that ran into its limit."""
    try:
        made = cast(tuple[Geometry, ...], receiver.recv())
    except EOFError:
        made = ()
    receiver.close()
    child.join()
    return made


def make_all(
    molecules: Sequence[Molecule], processes: int, path: Path, settings: Settings = Settings()
) -> list[tuple[Geometry, ...]]:
    """The made geometries of each molecule, with that many children at a time; empty for one of which none can be
    made. Structures that the file at path holds aren't made again; the others are added to it. Raises OSError if it
    can't be written."""
    names = [fingerprint(molecule.mol, settings) for molecule in molecules]
    made = read_made(path)
    wanted = {name: molecule.mol for name, molecule in zip(names, molecules) if name not in made}
    running: dict[Connection, tuple[str, BaseProcess]] = {}
    waiting = iter(wanted.items())
    unsaved = 0
    while True:
        for name, mol in take(waiting, processes - len(running)):
            receiver, child = start_child(mol, settings)
            running[receiver] = (name, child)
        if not running:
            break
        for receiver in cast(list[Connection], wait(list(running))):
            name, child = running.pop(receiver)
            made[name] = answer_of(receiver, child)
            unsaved += 1
        if unsaved >= SAVED_AFTER:
            write_made(path, made)
            unsaved = 0
    if unsaved:
        write_made(path, made)
    return [made[name] for name in names]


def take(waiting: Iterable[tuple[str, Chem.Mol]], count: int) -> list[tuple[str, Chem.Mol]]:
    return [item for _, item in zip(range(count), waiting)]  # in this order, or zip takes one too many
