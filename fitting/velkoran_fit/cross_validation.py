# SPDX-License-Identifier: MIT
"""Cross-validation by molecule: what physics, correction and the opponents without physics give on the same splits.

A molecule's fold depends on its key alone, so that new data don't move the old.
"""
import hashlib
import math
from collections.abc import Mapping, Sequence
from dataclasses import dataclass

import numpy as np
import numpy.typing as npt

from .additive_model import AdditiveModel, estimate, fit_additive_model
from .arrays import Integers, Reals
from .correction import NucleusCorrection, corrected_shift, fit_nucleus
from .opponents import Curve, angle_curves, curve_value, means_by_name, most_special
from .sites import Site, deviations
from .uncertainty import Uncertainty, calibrate, standard_uncertainty


FOLDS = 5
METHODS = ("type mean", "environments", "additive", "physics", "corrected")


@dataclass(frozen=True)
class Column:
    """A column of the table: a nucleus or a kind of coupling, perhaps only some of its sites."""

    name: str
    nucleus: str
    type: str = ""  # an ancestor that the sites must have, if any
    zero: float | None = None  # of the scale; None if the data decide

    def holds(self, site: Site) -> bool:
        return site.nucleus == self.nucleus and (not self.type or self.type in site.chain)


SHIFT_COLUMNS = (
    Column("13C", "13C"),
    Column("1H on C", "1H", "HC"),
    Column("19F", "19F"),
    Column("15N", "15N"),
    Column("17O", "17O"),
    Column("31P", "31P"),
    Column("29Si", "29Si"),
)
COUPLING_COLUMNS = tuple(
    Column(kind, kind, zero=0.0) for kind in ("1J(CH)", "1J(CC)", "2J(HH)", "3J(HH)", "4J(HH)", "1J(CF)", "3J(HF)")
)


@dataclass(frozen=True)
class Outcome:
    """Of one column: the sites with the values of their own fold's physics, and what each method predicted, (n,)."""

    column: Column
    sites: tuple[Site, ...]
    folds: Integers
    predictions: dict[str, Reals]
    novelties: Reals
    blind: Reals  # the corrected prediction if the run of the physics had failed

    def deviations(self, method: str) -> Reals:
        """Predicted less measured, NaN where there is no prediction."""
        return deviations(self.sites, self.predictions[method])


def fold_of(key: str, folds: int = FOLDS) -> int:
    """The fold of a molecule, from 0."""
    return int(hashlib.sha256(key.encode()).hexdigest(), 16) % folds


def is_in_fraction(key: str, fraction: float) -> bool:
    """Whether a molecule belongs to a fraction of all; smaller fractions are parts of larger ones."""
    return int(hashlib.sha256(f"fraction {key}".encode()).hexdigest(), 16) < fraction * 2**256


def cross_validate(column: Column, sites_by_fold: Sequence[Sequence[Site]], fraction: float = 1.0) -> Outcome:
    """sites_by_fold holds all sites once for each fold, with what was computed by parameters that were fitted without
    the molecules of that fold. Correction and opponents learn from a fraction of the other molecules. ValueError if the
    folds don't have the same sites."""
    chosen = [[site for site in sites if column.holds(site)] for sites in sites_by_fold]
    names = [[(site.key, site.atoms) for site in sites] for sites in chosen]
    if any(own != names[0] for own in names):
        raise ValueError(f"{column.name}: the folds have different sites")
    folds = np.array([fold_of(site.key, len(chosen)) for site in chosen[0]], dtype=np.int64)
    count = len(folds)
    predictions = {method: np.full(count, math.nan) for method in METHODS}
    novelties, blind = np.zeros(count), np.full(count, math.nan)
    result = list(chosen[0])
    for fold, sites in enumerate(chosen):
        training = [site for site, own in zip(sites, folds) if own != fold and is_in_fraction(site.key, fraction)]
        if not training:
            continue
        fits = fit_all(training, column.zero)
        for place in np.flatnonzero(folds == fold):
            site = result[place] = sites[place]
            for method, value in fits.predictions(site).items():
                predictions[method][place] = value
            own = fits.corrected
            novelties[place] = corrected_shift(own, site.chain, site.features, site.shielding)[1]
            blind[place] = corrected_shift(own, site.chain, site.features, math.nan)[0]
    return Outcome(column, tuple(result), folds, predictions, novelties, blind)


@dataclass(frozen=True)
class Fits:
    """All methods, fitted to the same sites."""

    types: Mapping[str, float]
    environments: Mapping[str, float]
    curves: Mapping[str, Curve]
    additive: AdditiveModel
    corrected: NucleusCorrection

    def predictions(self, site: Site) -> dict[str, float]:
        """The prediction of each method, NaN where it has none."""
        by_angle = curve_value(self.curves, site.features)
        return {
            "type mean": most_special(self.types, site.chain),
            "environments": most_special(self.environments, site.spheres) if math.isnan(by_angle) else by_angle,
            "additive": estimate(self.additive, site.features).value,
            "physics": self.corrected.zero - site.shielding,
            "corrected": corrected_shift(self.corrected, site.chain, site.features, site.shielding)[0],
        }


def fit_all(training: Sequence[Site], zero: float | None) -> Fits:
    """Fits all methods to the sites. ValueError if there are none."""
    values = np.array([site.ppm for site in training])
    return Fits(
        means_by_name([site.chain for site in training], values),
        means_by_name([site.spheres for site in training], values),
        angle_curves([site.features for site in training], values),
        fit_additive_model([site.features for site in training], values),
        fit_nucleus(training, zero),
    )


def outcome_uncertainty(outcome: Outcome) -> Uncertainty:
    """The table that all cross-validated deviations give: what ships."""
    return _calibrated(outcome, np.ones(len(outcome.sites), dtype=bool))


def cross_validated_uncertainties(outcome: Outcome) -> Reals:
    """The uncertainty of each prediction (n,), by a table that the deviations of the other folds give."""
    result = np.full(len(outcome.sites), math.nan)
    for fold in np.unique(outcome.folds):
        others = outcome.folds != fold
        if not others.any():
            continue
        table = _calibrated(outcome, others)
        for place in np.flatnonzero(~others):
            site = outcome.sites[place]
            known = not math.isnan(site.shielding)
            result[place] = standard_uncertainty(table, outcome.novelties[place], site.chain, known)
    return result


def _calibrated(outcome: Outcome, chosen: npt.NDArray[np.bool_]) -> Uncertainty:
    """By the chosen sites that have a prediction."""
    errors = outcome.deviations("corrected")
    rows = np.flatnonzero(chosen & ~np.isnan(errors))
    chains = [outcome.sites[row].chain for row in rows]
    blind = deviations(outcome.sites, outcome.blind)[rows]
    return calibrate(errors[rows], outcome.novelties[rows], chains, blind)
