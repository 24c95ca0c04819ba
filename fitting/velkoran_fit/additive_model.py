# SPDX-License-Identifier: MIT
"""A sum over named features, each family of names shrunk by a strength of its own that the data decide.

value = mean + sum of coefficient(name) * count(name). The coefficients have normal priors around 0, of one variance
for each family; the variances and the noise maximise the probability of the data (the evidence: MacKay 1992, Neural
Comput. 4, 415), so that a feature seen once hardly moves from what its family's broader names say. Deviations follow
Student's distribution, whose long tails make it robust (weights as by Lange, Little and Taylor 1989, JASA 84, 881).
"""
import zlib
from collections.abc import Mapping, Sequence
from dataclasses import dataclass

import numpy as np
from scipy import linalg, optimize, sparse

from .arrays import Integers, Reals

Features = Mapping[str, float]

FREEDOM = 4.0  # degrees of freedom of Student's distribution
PRIOR_SHARE = 0.05  # of the variance of the values: where the search for a family's variance starts
PRIOR_WIDTH = 3.0  # standard deviation of the logarithm of a family's variance around that
NOISE_SHARE = 0.05
BOUND = 14.0  # of that logarithm
LARGEST_SAMPLE = 700  # values of which the variances of the families are learnt
EVIDENCE_STEPS = 25
ROBUST_STEPS = 5
LEAST_SHARE = 1e-6  # families that explain less of the variance are left out


@dataclass(frozen=True)
class Term:
    """What a name contributes for each count, and the variance of that after the data were seen."""

    coefficient: float
    variance: float


@dataclass(frozen=True)
class AdditiveModel:
    """All that is needed to evaluate the sum; variances are squares of the unit of the values."""

    mean: float
    noise: float  # variance of a single value around the sum
    families: Mapping[str, float]  # prior variance of a coefficient
    terms: Mapping[str, Term]


@dataclass(frozen=True)
class Estimate:
    """A value of the model, and the variance of its sum if the coefficients were independent: the novelty."""

    value: float
    novelty: float


@dataclass(frozen=True)
class _Design:
    names: tuple[str, ...]
    families: tuple[str, ...]  # sorted
    family_of: Integers  # of each name
    counts: sparse.csc_matrix  # (values, names)

    def kernel(self, family: int, rows: Integers) -> Reals:
        own = self.counts[rows][:, self.family_of == family]
        return np.asarray((own @ own.T).todense())


def family_of(name: str) -> str:
    """The part of a feature's name before the colon."""
    return name.partition(":")[0]


def fit_additive_model(features: Sequence[Features], values: Reals) -> AdditiveModel:
    """Fits to values (n,) of things with such features. ValueError if there are none, or not as many."""
    if len(features) != len(values) or not len(values):
        raise ValueError(f"{len(features)} sets of features for {len(values)} values")
    mean = float(np.median(values))
    design = _design(features)
    centred = np.asarray(values, dtype=np.float64) - mean
    if np.ptp(centred) == 0.0:
        return AdditiveModel(mean, 0.0, {name: 0.0 for name in design.families}, {})
    scales, noise = _learn_scales(design, centred)
    return _solve(design, centred, mean, scales, noise)


def estimate(model: AdditiveModel, features: Features) -> Estimate:
    """Names that the model doesn't know add their family's prior variance to the novelty, and nothing to the value."""
    value, novelty = model.mean, 0.0
    for name, count in features.items():
        term = model.terms.get(name)
        if term is None:
            novelty += count * count * model.families.get(family_of(name), 0.0)
        else:
            value += count * term.coefficient
            novelty += count * count * term.variance
    return Estimate(value, novelty)


def _design(features: Sequence[Features]) -> _Design:
    names = tuple(sorted({name for counts in features for name in counts}))
    place = {name: number for number, name in enumerate(names)}
    families = tuple(sorted({family_of(name) for name in names}))
    number_of = {family: number for number, family in enumerate(families)}
    rows = [row for row, counts in enumerate(features) for _ in counts]
    columns = [place[name] for counts in features for name in counts]
    data = [count for counts in features for count in counts.values()]
    return _Design(
        names,
        families,
        np.array([number_of[family_of(name)] for name in names], dtype=np.int64),
        sparse.csc_matrix((data, (rows, columns)), shape=(len(features), len(names))),
    )


def _sample(count: int) -> Integers:
    """At most LARGEST_SAMPLE of count rows, the same at every call."""
    order = sorted(range(count), key=lambda row: (zlib.crc32(str(row).encode()), row))
    return np.array(sorted(order[:LARGEST_SAMPLE]), dtype=np.int64)


def _learn_scales(design: _Design, values: Reals) -> tuple[Reals, float]:
    """Prior variance of a coefficient of each family, and the noise, of the most probable explanation."""
    rows = _sample(len(values))
    chosen = values[rows]
    kernels = [design.kernel(family, rows) for family in range(len(design.families))]
    sizes = np.array([max(np.trace(kernel) / len(rows), 1e-300) for kernel in kernels])
    kernels = [kernel / size for kernel, size in zip(kernels, sizes)]
    spread = float(np.mean((1.4826 * np.median(np.abs(chosen))) ** 2 + chosen.var()) / 2)
    start = np.log(np.r_[np.full(len(kernels), PRIOR_SHARE * spread), NOISE_SHARE * spread])
    logarithms = _most_probable(start, start, kernels, chosen, np.ones(len(rows)))
    total = sum(np.exp(one) * kernel for one, kernel in zip(logarithms[:-1], kernels))
    weights = _robust(np.asarray(total), chosen, float(np.exp(logarithms[-1])))[1]
    alive = np.r_[np.flatnonzero(np.exp(logarithms[:-1]) >= LEAST_SHARE * spread), len(kernels)]
    kept = [kernels[family] for family in alive[:-1]]
    logarithms[alive] = _most_probable(logarithms[alive], start[alive], kept, chosen, weights)
    scales = np.exp(logarithms[:-1])
    scales[scales < LEAST_SHARE * spread] = 0.0
    return scales / sizes, float(np.exp(logarithms[-1]))


def _most_probable(first: Reals, middle: Reals, kernels: Sequence[Reals], values: Reals, weights: Reals) -> Reals:
    """The logarithms of the variances, the noise last, that maximise the evidence; the search begins at first."""
    found = optimize.minimize(
        _evidence,
        first,
        args=(kernels, values, weights, middle),
        jac=True,
        method="L-BFGS-B",
        bounds=[(one - BOUND, one + BOUND) for one in middle],
        options={"maxiter": EVIDENCE_STEPS},
    )
    return np.asarray(found.x)


def _evidence(
    logarithms: Reals, kernels: Sequence[Reals], values: Reals, weights: Reals, middle: Reals
) -> tuple[float, Reals]:
    """Minus the logarithm of the evidence with the prior of the variances, and its gradient."""
    scales = np.exp(logarithms)
    covariance = np.diag(scales[-1] / weights)
    for scale, kernel in zip(scales[:-1], kernels):
        covariance += scale * kernel
    factor = linalg.cholesky(covariance, lower=True, overwrite_a=True, check_finite=False)
    below, _ = linalg.lapack.dpotri(factor, lower=True)
    inverse = np.tril(below) + np.tril(below, -1).T
    dual = inverse @ values
    excess = inverse - np.outer(dual, dual)
    gradient = [0.5 * scale * float(np.vdot(excess, kernel)) for scale, kernel in zip(scales[:-1], kernels)]
    gradient.append(0.5 * scales[-1] * float(np.sum(np.diag(excess) / weights)))
    off = (logarithms - middle) / PRIOR_WIDTH
    off[-1] = 0.0
    value = 0.5 * float(values @ dual) + float(np.log(np.diag(factor)).sum()) + 0.5 * float(off @ off)
    return value, np.array(gradient) + off / PRIOR_WIDTH


def _robust(kernel: Reals, values: Reals, noise: float) -> tuple[Reals, Reals]:
    """The dual coefficients, and the weights of the values that Student's distribution gives to their residuals."""
    weights = np.ones(len(values))
    dual = np.zeros(len(values))
    for _ in range(ROBUST_STEPS):
        dual = linalg.solve(kernel + np.diag(noise / weights), values, assume_a="pos", check_finite=False)
        residuals = noise / weights * dual
        square = max(float(np.median(np.abs(residuals))) * 1.4826, 1e-12) ** 2
        weights = (FREEDOM + 1.0) / (FREEDOM + residuals**2 / square)
        weights /= max(float(np.median(weights)), 1e-12)
    return dual, weights


def _solve(design: _Design, values: Reals, mean: float, scales: Reals, noise: float) -> AdditiveModel:
    variances = scales[design.family_of]
    scaled = design.counts @ sparse.diags(variances)
    kernel = np.asarray((scaled @ design.counts.T).todense())
    dual, weights = _robust(kernel, values, noise)
    coefficients = scaled.T @ dual
    seen = design.counts.multiply(design.counts).T @ weights
    after = variances / (1.0 + variances * seen / noise)
    terms = {
        name: Term(float(coefficients[number]), float(after[number]))
        for number, name in enumerate(design.names)
        if variances[number] > 0.0
    }
    return AdditiveModel(mean, noise, dict(zip(design.families, map(float, scales))), terms)
