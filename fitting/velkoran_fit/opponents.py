# SPDX-License-Identifier: MIT
"""Predictions without physics, which the computed ones have to beat: of the values of a type, of like environments.

For couplings over three bonds a curve by the dihedral angle takes the place of the environments. The third opponent,
the additive model on the same features as the correction, is fit_additive_model itself.
"""
from collections.abc import Iterable, Mapping, Sequence

import numpy as np

from .neighbourhoods import FARTHEST

Values = Mapping[str, float]
Curve = tuple[float, float, float]

LEAST_OF_CURVE = 8  # couplings of a class that has a curve


def means_by_name(names: Sequence[Sequence[str]], values: Iterable[float]) -> dict[str, float]:
    """The mean of the values of each name; a value can have several names."""
    found: dict[str, list[float]] = {}
    for own, value in zip(names, values):
        for name in own:
            found.setdefault(name, []).append(value)
    return {name: float(np.mean(listed)) for name, listed in found.items()}


def most_special(means: Values, names: Sequence[str]) -> float:
    """The mean of the last of the names that has one: of a chain of types, or of spheres. NaN if none has."""
    return next((means[name] for name in reversed(names) if name in means), float("nan"))


def sphere_names(elements: Sequence[str], neighbours: Sequence[Sequence[tuple[int, str]]], atom: int) -> list[str]:
    """Names of the environments of an atom within 0 to FARTHEST bonds, by elements and bonds, after the HOSE code
    (Bremser 1978, Anal. Chim. Acta 103, 355). neighbours are for each atom the others with the sign of the bond."""
    current = list(elements)
    names = [f"0:{current[atom]}"]
    for radius in range(1, FARTHEST + 1):
        current = [
            f"{own}({','.join(sorted(sign + current[other] for other, sign in around))})"
            for own, around in zip(elements, neighbours)
        ]
        names.append(f"{radius}:{current[atom]}")
    return names


def angle_class(features: Values) -> str:
    """The class of the path of a coupling over three bonds, by the name of its only `k1` feature; empty if none."""
    found = [name[3:] for name in features if name.startswith("k1:")]
    return found[0] if len(found) == 1 else ""


def angle_curves(features: Sequence[Values], values: Iterable[float]) -> dict[str, Curve]:
    """Least squares for each class with enough values: J = a + b cos(phi) + c cos(2 phi) (Karplus 1963, J. Am. Chem.
    Soc. 85, 2870)."""
    rows: dict[str, list[tuple[float, float, float]]] = {}
    for own, value in zip(features, values):
        name = angle_class(own)
        if name:
            rows.setdefault(name, []).append((own[f"k1:{name}"], own[f"k2:{name}"], value))
    curves = {}
    for name, listed in rows.items():
        if len(listed) >= LEAST_OF_CURVE:
            first, second, measured = np.array(listed).T
            design = np.column_stack([np.ones(len(listed)), first, second])
            a, b, c = np.linalg.lstsq(design, measured, rcond=None)[0]
            curves[name] = (float(a), float(b), float(c))
    return curves


def curve_value(curves: Mapping[str, Curve], features: Values) -> float:
    """The value of the curve of the class in Hz, NaN if the class has none."""
    name = angle_class(features)
    if name not in curves:
        return float("nan")
    a, b, c = curves[name]
    return a + b * features[f"k1:{name}"] + c * features[f"k2:{name}"]
