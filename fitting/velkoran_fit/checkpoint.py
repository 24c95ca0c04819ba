# SPDX-License-Identifier: MIT
"""Keeps a fit after each iteration, so that it can go on where it was stopped."""
import os
from dataclasses import dataclass
from pathlib import Path

import numpy as np

from .arrays import Reals
from scipy import sparse


@dataclass(frozen=True)
class Checkpoint:
    """Where a stage stands: Jacobians done, whether that was the last, the scaled variables, the first Jacobian."""

    jacobians: int
    finished: bool
    u: Reals
    jacobian: sparse.csr_matrix


def save_checkpoint(path: Path, checkpoint: Checkpoint) -> None:
    """Writes a checkpoint; the one before stays until the new one is whole."""
    path.parent.mkdir(parents=True, exist_ok=True)
    matrix = checkpoint.jacobian
    whole = path.with_suffix(".new.npz")
    np.savez_compressed(
        whole,
        jacobians=checkpoint.jacobians,
        finished=checkpoint.finished,
        u=checkpoint.u,
        data=matrix.data,
        indices=matrix.indices,
        indptr=matrix.indptr,
        shape=np.array(matrix.shape),
    )
    os.replace(whole, path)


def load_checkpoint(path: Path) -> Checkpoint | None:
    """The checkpoint at a path, None where there is none."""
    if not path.exists():
        return None
    with np.load(path) as file:
        matrix = sparse.csr_matrix((file["data"], file["indices"], file["indptr"]), shape=tuple(file["shape"]))
        return Checkpoint(int(file["jacobians"]), bool(file["finished"]), file["u"], matrix)
