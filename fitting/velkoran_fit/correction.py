# SPDX-License-Identifier: MIT
"""From shieldings to shifts: the zero of each scale, and an additive correction by typed neighbourhoods.

The physics alone gives shift = zero - shielding. The corrected shift is

    slope * (zero - trusted shielding) + sum over the features,

where a shielding is trusted as far as it lies within the usual range of its type (nearest one with a range), else the
end of the range stands for it, and the middle for a run that failed; slope is 1, or 0 where the computed shieldings say
nothing. Besides those of neighbourhoods.py the features hold the deviation from the middle of the range, times -1, as
`s<level>:label`: so the data can change the slope for each type.
"""
import math
from collections import Counter
from collections.abc import Iterable, Mapping, Sequence
from dataclasses import dataclass, replace

import numpy as np
from rdkit import Chem

from .additive_model import AdditiveModel, estimate, fit_additive_model
from .arrays import Reals
from .coupling_sites import coupling_features, coupling_sites, path_chain
from .molecule_records import Geometry, Molecule
from .neighbourhoods import LEAF, Level, TypeRow, label, shift_features, type_chains, typed_molecule
from .sites import Site, measured_sites
from .uncertainty import Uncertainty, calibrate, standard_uncertainty


SLOPE_LEVELS: tuple[Level, ...] = (0, 1, 2, LEAF)
LEAST_OF_RANGE = 6  # values of a type that has a range of its own
RANGE_WIDTH = 4.0  # standard deviations, by the median deviation
INNER_FOLDS = 5
LEAST_OF_KIND = 8  # couplings of a kind that has a correction
OTHER_KINDS = "other"


@dataclass(frozen=True)
class Range:
    """Computed shieldings of a type that are usual, in ppm: middle plus or minus reach."""

    middle: float
    reach: float


@dataclass(frozen=True)
class NucleusCorrection:
    """What turns the shieldings of one nucleus to shifts."""

    zero: float  # shielding at shift 0, ppm
    slope: float
    ranges: Mapping[str, Range]
    model: AdditiveModel
    uncertainty: Uncertainty


@dataclass(frozen=True)
class Correction:
    """The corrections by nucleus, and the chain of ancestors of each type."""

    nuclei: Mapping[str, NucleusCorrection]
    chains: Mapping[str, tuple[str, ...]]


@dataclass(frozen=True)
class CorrectionSettings:
    """types are the rows of the table of atom types; uncertainties by nucleus replace those of an inner
    cross-validation, which knows the physics only as fitted to the same molecules."""

    types: tuple[TypeRow, ...]
    uncertainties: Mapping[str, Uncertainty] | None = None


@dataclass(frozen=True)
class Prediction:
    """For one atom, in ppm; NaN where there is nothing to say."""

    shift: float
    correction: float  # shift less that of the physics alone
    uncertainty: float


NOTHING = Prediction(math.nan, math.nan, math.nan)


def fit_correction(
    molecules: Sequence[Molecule],
    types_by_molecule: Sequence[Sequence[str]],
    shieldings_by_molecule: Sequence[Reals],
    settings: CorrectionSettings,
) -> Correction:
    """Learns the corrections of all nuclei that were measured. Shieldings are (atoms,) for each molecule, in ppm, NaN
    where the run failed. ValueError if the sequences differ in length."""
    chains = type_chains(settings.types)
    sites = measured_sites(molecules, types_by_molecule, shieldings_by_molecule, chains)
    given = settings.uncertainties or {}
    nuclei = {}
    for nucleus in sorted({site.nucleus for site in sites}):
        own = [site for site in sites if site.nucleus == nucleus]
        nuclei[nucleus] = fit_nucleus(own)
        table = given.get(nucleus) or inner_uncertainty(own)
        nuclei[nucleus] = replace(nuclei[nucleus], uncertainty=table)
    return Correction(nuclei, chains)


def fit_couplings(
    molecules: Sequence[Molecule],
    types_by_molecule: Sequence[Sequence[str]],
    couplings_by_molecule: Sequence[Sequence[float]],
    settings: CorrectionSettings,
) -> Correction:
    """The same for coupling constants, by kind; computed ones in Hz as coupling_sites wants them. Kinds with few values
    share the entry OTHER_KINDS, which leaves the physics as it is. ValueError if the sequences differ in length."""
    chains = type_chains(settings.types)
    sites = coupling_sites(molecules, types_by_molecule, couplings_by_molecule, chains)
    kinds = Counter(site.nucleus for site in sites)
    given = settings.uncertainties or {}
    fits = {}
    for kind in sorted(kinds):
        if kinds[kind] >= LEAST_OF_KIND:
            own = [site for site in sites if site.nucleus == kind]
            fits[kind] = replace(fit_nucleus(own, 0.0), uncertainty=given.get(kind) or inner_uncertainty(own, 0.0))
    rest = [site for site in sites if site.nucleus not in fits and not math.isnan(site.shielding)]
    if rest:
        errors = np.array([-site.shielding - site.ppm for site in rest])
        table = calibrate(errors, np.zeros(len(rest)), [() for _ in rest])
        fits[OTHER_KINDS] = NucleusCorrection(0.0, 1.0, {}, AdditiveModel(0.0, 0.0, {}, {}), table)
    return Correction(fits, chains)


def predict_coupling(
    correction: Correction,
    mol: Chem.Mol,
    types: Sequence[str],
    pair: tuple[int, int],
    kind: str,
    computed: float,
    geometries: Sequence[Geometry],
) -> Prediction:
    """The coupling constant of a pair of atoms in Hz, its correction and uncertainty; computed is in Hz, NaN where
    unknown, the geometries are the conformers. All NaN if there is no entry for the kind nor for others."""
    own = correction.nuclei.get(kind) or correction.nuclei.get(OTHER_KINDS)
    if own is None:
        return NOTHING
    typed = typed_molecule(mol, types, correction.chains)
    features = coupling_features(typed, pair, kind, geometries)
    return predict_site(own, path_chain(typed, pair, kind), features, -computed)


def predict(
    correction: Correction, mol: Chem.Mol, types: Sequence[str], shieldings: Sequence[float]
) -> list[Prediction]:
    """The prediction for each atom of a molecule with explicit hydrogens; shieldings in ppm, averaged over conformers
    and equivalent atoms, NaN where unknown. An atom whose nucleus has no correction gets NaN."""
    typed = typed_molecule(mol, types, correction.chains)
    by_element = {nucleus.lstrip("0123456789"): nucleus for nucleus in correction.nuclei}
    result = []
    for atom in mol.GetAtoms():
        nucleus = by_element.get(atom.GetSymbol())
        if nucleus is None:
            result.append(NOTHING)
            continue
        own, chain = correction.nuclei[nucleus], typed.chains[atom.GetIdx()]
        result.append(predict_site(own, chain, shift_features(typed, atom.GetIdx()), float(shieldings[atom.GetIdx()])))
    return result


def predict_site(
    own: NucleusCorrection, chain: Sequence[str], features: Mapping[str, float], shielding: float
) -> Prediction:
    """The prediction for a site with such features and shielding (ppm)."""
    value, novelty = corrected_shift(own, chain, features, shielding)
    known = not math.isnan(shielding)
    width = standard_uncertainty(own.uncertainty, novelty, chain, known)
    return Prediction(value, value - (own.zero - shielding), width)


def corrected_shift(
    own: NucleusCorrection, chain: Sequence[str], features: Mapping[str, float], shielding: float
) -> tuple[float, float]:
    """The corrected shift in ppm and the novelty of its environment."""
    middle, deviation = trusted(own.ranges, chain, shielding)
    found = estimate(own.model, {**features, **slope_features(chain, deviation)})
    return own.slope * (own.zero - middle - deviation) + found.value, found.novelty


def trusted(ranges: Mapping[str, Range], chain: Sequence[str], shielding: float) -> tuple[float, float]:
    """The middle of the range of the nearest type with one, and the deviation from it, cut off at its reach; without
    any range the shielding itself."""
    own = next((ranges[name] for name in reversed(chain) if name in ranges), Range(0.0, 0.0))
    if math.isnan(shielding):
        return own.middle, 0.0
    if own.reach == 0.0:
        return shielding, 0.0
    return own.middle, min(max(shielding - own.middle, -own.reach), own.reach)


def slope_features(chain: Sequence[str], deviation: float) -> dict[str, float]:
    """The deviation (ppm) times -1 under the names of the type and its ancestors."""
    return {f"s{level}:{label(chain, level)}": -deviation for level in SLOPE_LEVELS}


def fit_nucleus(sites: Sequence[Site], zero: float | None = None) -> NucleusCorrection:
    """Learns from the sites of one nucleus; the uncertainty is the noise of the model. zero is that of the scale in
    ppm, the median of measured shift and shielding if it isn't given."""
    shieldings = np.array([site.shielding for site in sites])
    ppm = _measured(sites)
    known = ~np.isnan(shieldings)
    if zero is None:
        zero = float(np.median((shieldings + ppm)[known])) if known.any() else 0.0
    ranges = usual_ranges(sites)
    pairs = [trusted(ranges, site.chain, site.shielding) for site in sites]
    computed = np.array([zero - middle - deviation for middle, deviation in pairs])
    slope = 1.0 if known.any() and _spread(ppm - computed) < _spread(ppm) else 0.0
    features = [
        {**site.features, **slope_features(site.chain, deviation)} for site, (_, deviation) in zip(sites, pairs)
    ]
    model = fit_additive_model(features, ppm - slope * computed)
    width = max(math.sqrt(model.noise), 1e-9)
    return NucleusCorrection(zero, slope, ranges, model, Uncertainty((0.0,), (width,), {}))


def usual_ranges(sites: Iterable[Site]) -> dict[str, Range]:
    """For each type with enough values, and each root: the median, and several robust standard deviations of it."""
    found: dict[str, list[float]] = {}
    roots = set()
    for site in sites:
        if not math.isnan(site.shielding):
            roots.add(site.chain[0])
            for name in site.chain:
                found.setdefault(name, []).append(site.shielding)
    ranges = {}
    for name in sorted(found):
        if len(found[name]) >= LEAST_OF_RANGE or name in roots:
            values = np.array(found[name])
            ranges[name] = Range(float(np.median(values)), RANGE_WIDTH * max(_spread(values), 1e-9))
    return ranges


def inner_uncertainty(sites: Sequence[Site], zero: float | None = None) -> Uncertainty:
    """By cross-validation of the correction alone, by molecule."""
    keys = sorted({site.key for site in sites})
    folds = min(INNER_FOLDS, len(keys))
    if folds < 2:
        return fit_nucleus(sites, zero).uncertainty
    fold_of = {key: place % folds for place, key in enumerate(keys)}
    rests: list[Site] = []
    shifts: list[tuple[float, float, float]] = []  # corrected, novelty, corrected without physics
    for fold in range(folds):
        own = fit_nucleus([site for site in sites if fold_of[site.key] != fold], zero)
        rest = [site for site in sites if fold_of[site.key] == fold]
        rests += rest
        for site in rest:
            blind, _ = corrected_shift(own, site.chain, site.features, math.nan)
            shifts.append((*corrected_shift(own, site.chain, site.features, site.shielding), blind))
    values, novelties, blinds = np.array(shifts).T
    chains = [site.chain for site in rests]
    return calibrate(values - _measured(rests), novelties, chains, blinds - _measured(rests))


def _measured(sites: Sequence[Site]) -> Reals:
    return np.array([site.ppm for site in sites])


def _spread(values: Reals) -> float:
    """Standard deviation of a normal distribution with the same median deviation from the median."""
    return 1.4826 * float(np.median(np.abs(values - np.median(values))))
