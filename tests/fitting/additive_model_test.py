# SPDX-License-Identifier: MIT
"""The additive model, on values whose coefficients are known."""
import math
import unittest

import numpy as np
import small_molecules  # finds the package
from velkoran_fit import additive_model
from velkoran_fit.additive_model import AdditiveModel, Term, estimate, fit_additive_model

assert small_molecules


def rows(count, seed):
    """Counts of five names of one family and the values that they and normal noise of 0.1 give."""
    random = np.random.default_rng(seed)
    true = np.array([4.0, -3.0, 2.0, 0.0, 1.0])
    counts = random.integers(0, 4, size=(count, 5))
    values = counts @ true + 0.1 * random.standard_normal(count)
    features = [{"o:all": 1.0, **{f"n:{name}": float(one) for name, one in enumerate(row) if one}} for row in counts]
    return features, values, true


class Fit(unittest.TestCase):
    def test_coefficients_come_back(self):
        features, values, true = rows(200, 1)
        model = fit_additive_model(features, values)
        found = [model.terms[f"n:{name}"].coefficient for name in range(5)]
        np.testing.assert_allclose(found, true, atol=0.05)
        self.assertAlmostEqual(math.sqrt(model.noise), 0.1, delta=0.03)

    def test_ridge_of_known_solution(self):
        # One name, seen n times with count 1: the mean of n values, shrunk by n s / (n s + noise).
        design = additive_model._design([{"a:x": 1.0}] * 4)
        model = additive_model._solve(design, np.full(4, 3.0), 10.0, np.array([2.0]), 1.0)
        self.assertAlmostEqual(model.terms["a:x"].coefficient, 3.0 * 4 * 2.0 / (4 * 2.0 + 1.0), places=9)
        self.assertAlmostEqual(model.terms["a:x"].variance, 2.0 / (1.0 + 2.0 * 4), places=9)

    def test_gradient_of_the_evidence(self):
        random = np.random.default_rng(3)
        parts = [random.standard_normal((12, 3)) for _ in range(2)]
        kernels, values = [part @ part.T for part in parts], random.standard_normal(12)
        weights, middle, point = random.uniform(0.5, 1.5, 12), np.zeros(3), np.array([0.3, -0.4, 0.2])
        _, gradient = additive_model._evidence(point, kernels, values, weights, middle)
        for place in range(3):
            step = np.zeros(3)
            step[place] = 1e-5
            ends = [
                additive_model._evidence(point + sign * step, kernels, values, weights, middle)[0] for sign in (1, -1)
            ]
            self.assertAlmostEqual((ends[0] - ends[1]) / 2e-5, gradient[place], places=5)

    def test_evidence_is_that_of_a_normal_distribution(self):
        # Two values, no kernel: minus log of two normal densities of variance 4, without the constant.
        value, _ = additive_model._evidence(
            np.array([math.log(4.0)]), [], np.array([1.0, -2.0]), np.ones(2), np.array([0.0])
        )
        self.assertAlmostEqual(value, (1.0 + 4.0) / (2 * 4.0) + math.log(2.0) * 2, places=12)

    def test_gross_errors_hardly_matter(self):
        features, values, true = rows(200, 2)
        values[::20] += 300.0
        model = fit_additive_model(features, values)
        found = [model.terms[f"n:{name}"].coefficient for name in range(5)]
        np.testing.assert_allclose(found, true, atol=0.3)

    def test_family_that_says_nothing_is_shrunk(self):
        features, values, _ = rows(200, 4)
        random = np.random.default_rng(5)
        noisy = [{**row, f"z:{random.integers(100)}": 1.0} for row in features]
        model = fit_additive_model(noisy, values)
        largest = max((abs(term.coefficient) for name, term in model.terms.items() if name[0] == "z"), default=0.0)
        self.assertLess(largest, 0.1)

    def test_same_data_same_model(self):
        features, values, _ = rows(80, 6)
        self.assertEqual(fit_additive_model(features, values), fit_additive_model(features, values))

    def test_values_that_are_all_equal(self):
        model = fit_additive_model([{"a:x": 1.0}] * 3, np.full(3, 7.0))
        self.assertEqual(estimate(model, {"a:x": 1.0}).value, 7.0)

    def test_no_values(self):
        with self.assertRaises(ValueError):
            fit_additive_model([], np.zeros(0))


class Estimates(unittest.TestCase):
    MODEL = AdditiveModel(10.0, 1.0, {"a": 4.0, "b": 0.0}, {"a:x": Term(2.0, 0.5)})

    def test_sum_and_novelty(self):
        found = estimate(self.MODEL, {"a:x": 3.0, "a:new": 2.0, "b:new": 1.0})
        self.assertEqual((found.value, found.novelty), (16.0, 9 * 0.5 + 4 * 4.0))


if __name__ == "__main__":
    unittest.main()
