# SPDX-License-Identifier: MIT
"""The least squares of the fit, on problems whose answer is known."""
import unittest
from dataclasses import replace

import numpy as np
from linear_model import LinearPool, molecule_job, problem_for, three_types, value_of
from scipy import sparse
from velkoran_fit.least_squares import (
    Penalty,
    State,
    fit_offsets,
    huber_loss,
    improve,
    residuals,
    solve_step,
    total_loss,
    updated_jacobian,
)
from velkoran_fit.observations import Observation, derivatives, evaluate
from velkoran_fit.parameter_space import EXPONENTS, Variable, scaled_bounds, scaled_values, with_scaled_values

VARIABLES = [Variable(1, EXPONENTS[1]), Variable(2, EXPONENTS[1])]
ZERO = 190.0


def silent(*_: object) -> None:
    """Says nothing."""


def shifts_of(parameters, types):
    """What would be measured if these parameters were the truth."""
    table = parameters.table()
    return [[ZERO - value_of(table[row]) for row in own] for own in types]


def no_penalty(count):
    return Penalty(sparse.identity(count, format="csr"), np.zeros(count), 1e-9)


class LeastSquaresTest(unittest.TestCase):
    def setUp(self) -> None:
        self.start = with_scaled_values(three_types(), VARIABLES, [0.0, 0.0])
        self.truth = with_scaled_values(three_types(), VARIABLES, [0.8, -0.6])
        # atoms of the element's own type hold the zero fast
        self.types = [[0, 1], [1, 2], [2, 0], [1, 1, 2]]
        self.problem = problem_for(self.types, shifts_of(self.truth, self.types))
        self.bounds = scaled_bounds(self.start, VARIABLES)
        self.pool = LinearPool()

    def fit(self, problem, penalty=None, bounds=None, attempts=20):
        penalty = penalty or no_penalty(2)
        bounds = self.bounds if bounds is None else bounds

        def value_at(u):
            return evaluate(problem, with_scaled_values(self.start, VARIABLES, u), self.pool)

        u = scaled_values(self.start, VARIABLES)
        first = value_at(u)
        jacobian = derivatives(problem, self.start, VARIABLES, self.pool, silent)
        state = State(u, first, total_loss(problem, first, u, penalty), jacobian)
        return improve(problem, state, penalty, bounds, value_at, silent, attempts)

    def test_the_truth_is_found(self) -> None:
        np.testing.assert_allclose(self.fit(self.problem).u, [0.8, -0.6], atol=0.02)

    def test_an_outlier_hardly_moves_the_answer(self) -> None:
        wrong = list(self.problem.observations)
        wrong[1] = replace(wrong[1], measured=wrong[1].measured + 100.0)
        types = self.types * 6
        problem = problem_for(types, shifts_of(self.truth, types))
        problem = replace(problem, observations=(wrong[1], *problem.observations))
        np.testing.assert_allclose(self.fit(problem).u, [0.8, -0.6], atol=0.25)

    def test_bounds_hold(self) -> None:
        bounds = np.array([[-0.3, -0.3], [0.3, 0.3]])
        np.testing.assert_allclose(self.fit(self.problem, bounds=bounds).u, [0.3, -0.3], atol=1e-9)

    def test_a_strong_penalty_keeps_the_centre(self) -> None:
        penalty = Penalty(sparse.identity(2, format="csr"), np.array([0.1, 0.2]), 1e6)
        np.testing.assert_allclose(self.fit(self.problem, penalty).u, [0.1, 0.2], atol=1e-3)

    def test_a_penalty_on_a_difference_lets_both_move_together(self) -> None:
        truth = with_scaled_values(three_types(), VARIABLES, [0.7, 0.7])
        problem = problem_for(self.types, shifts_of(truth, self.types))
        together = Penalty(sparse.csr_matrix([[1.0, -1.0], [0.0, 0.0]]), np.zeros(2), 1e6)
        np.testing.assert_allclose(self.fit(problem, together).u, [0.7, 0.7], atol=0.02)

    def test_derivatives_are_those_of_the_model(self) -> None:
        jacobian = derivatives(self.problem, self.start, VARIABLES, self.pool, silent).toarray()
        slope = 40.0 * 1.6 * 0.06  # of an exponent in its scaled unit, at 0
        expected = [[0, 0], [slope, 0], [slope, 0], [0, slope], [0, slope], [0, 0], [slope, 0], [slope, 0], [0, slope]]
        np.testing.assert_allclose(jacobian, expected, rtol=0.01)

    def test_only_molecules_with_the_type_are_run(self) -> None:
        derivatives(self.problem, self.start, VARIABLES, self.pool, silent)
        self.assertEqual(self.pool.sets, 4 + 6)  # each molecule once, and once for each of its two fitted types

    def test_a_refused_molecule_counts_and_has_no_weight(self) -> None:
        jobs = (*self.problem.jobs[:3], ((1.0, molecule_job(self.types[3], refused=True)),))
        problem = replace(self.problem, jobs=jobs)
        evaluation = evaluate(problem, self.truth, self.pool)
        self.assertTrue(np.isnan(evaluation.values[6:]).all())
        seen = residuals(problem, evaluation.values, fit_offsets(problem, evaluation.values))
        self.assertEqual(seen.weights[6:].tolist(), [0.0, 0.0, 0.0])
        self.assertAlmostEqual(seen.loss, 3 * float(huber_loss(np.array([6.0]))[0]), 6)

    def test_a_pair_of_unknown_order_is_compared_sorted(self) -> None:
        observations = (
            Observation(0, (0,), "13C", 10.0, 3.0, partner=1),
            Observation(0, (1,), "13C", 20.0, 3.0),
        )
        problem = replace(self.problem, observations=observations)
        readout = fit_offsets(problem, np.array([-20.0, -10.0]))
        seen = residuals(problem, np.array([-20.0, -10.0]), readout)
        np.testing.assert_allclose(seen.units, [0.0, 0.0], atol=1e-9)

    def test_huber_is_a_square_near_and_a_line_far(self) -> None:
        np.testing.assert_allclose(huber_loss(np.array([0.5, -2.0, 5.0, 6.0])), [0.25, 4.0, 16.0, 20.0])

    def test_an_update_fits_the_step_and_keeps_the_pattern(self) -> None:
        jacobian = sparse.csr_matrix([[1.0, 0.0, 2.0], [0.0, 3.0, 0.0]])
        step = np.array([1.0, 2.0, -1.0])
        new = updated_jacobian(jacobian, step, np.array([4.0, 5.0]))
        np.testing.assert_allclose(new @ step, [4.0, 5.0])
        self.assertEqual(new.toarray()[0, 1], 0.0)
        self.assertEqual(new.toarray()[1, 0], 0.0)

    def test_a_step_stays_in_the_trust_region(self) -> None:
        values = evaluate(self.problem, self.start, self.pool).values
        jacobian = derivatives(self.problem, self.start, VARIABLES, self.pool, silent)
        now = residuals(self.problem, values, fit_offsets(self.problem, values))
        step = solve_step(self.problem, now, jacobian, np.zeros(2), no_penalty(2), self.bounds, 0.25)
        self.assertLessEqual(np.abs(step).max(), 0.25 + 1e-12)
        self.assertGreater(np.abs(step).max(), 0.2)


if __name__ == "__main__":
    unittest.main()
