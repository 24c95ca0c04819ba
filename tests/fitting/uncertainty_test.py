# SPDX-License-Identifier: MIT
"""Uncertainties, on deviations of known width."""
import unittest

import numpy as np
import small_molecules  # finds the package
from velkoran_fit.uncertainty import Uncertainty, calibrate, share_within, standard_uncertainty

assert small_molecules


def normal(count, seed):
    """Deviations of width novelty, twice as wide for the type C3; novelties and chains."""
    random = np.random.default_rng(seed)
    novelties = random.uniform(1.0, 5.0, count)
    chains = [("C", "C3") if number % 2 else ("C", "C4") for number in range(count)]
    wide = np.array([2.0 if chain[-1] == "C3" else 1.0 for chain in chains])
    return novelties * wide * random.standard_normal(count), novelties, chains


class Calibration(unittest.TestCase):
    def test_share_of_others(self):
        table = calibrate(*normal(4000, 1))
        errors, novelties, chains = normal(4000, 2)
        widths = np.array([standard_uncertainty(table, *both) for both in zip(novelties, chains)])
        for rows in (novelties < 2, novelties > 4, np.arange(4000) % 2 == 1, np.arange(4000) % 2 == 0):
            self.assertAlmostEqual(share_within(errors[rows], widths[rows]), 0.683, delta=0.05)

    def test_width_of_a_type(self):
        table = calibrate(*normal(4000, 3))
        self.assertAlmostEqual(standard_uncertainty(table, 3.0, ("C", "C3")), 6.0, delta=0.6)
        self.assertAlmostEqual(standard_uncertainty(table, 3.0, ("C", "C4")), 3.0, delta=0.3)

    def test_widths_never_fall(self):
        random = np.random.default_rng(4)
        table = calibrate(random.standard_normal(400), random.uniform(0, 1, 400), [("C",)] * 400)
        self.assertEqual(list(table.widths), sorted(table.widths))

    def test_failed_run_is_less_certain(self):
        errors, novelties, chains = normal(400, 5)
        table = calibrate(errors, novelties, chains, 3.0 * errors)
        self.assertAlmostEqual(table.without_physics, 3.0, places=6)

    def test_few_values_keep_to_the_parent(self):
        errors = np.r_[np.tile([1.0, -1.0], 100), np.full(25, 50.0)]
        table = calibrate(errors, np.zeros(225), [("C", "C4")] * 200 + [("C", "CX")] * 25)
        self.assertLess(standard_uncertainty(table, 0.0, ("C", "CX")), 30.0)
        self.assertGreater(standard_uncertainty(table, 0.0, ("C", "CX")), 1.5)

    def test_types_with_few_values(self):
        random = np.random.default_rng(6)
        errors = np.r_[random.standard_normal(900), 4.0 * random.standard_normal(300)]
        chains = [("C", "C4")] * 900 + [("C", f"C{number}") for number in range(10, 310)]
        table = calibrate(errors, np.zeros(1200), chains)
        self.assertAlmostEqual(standard_uncertainty(table, 0.0, ("C", "C4")), 1.0, delta=0.15)
        self.assertAlmostEqual(standard_uncertainty(table, 0.0, ("C", "C999")), 4.0, delta=0.6)

    def test_no_deviations(self):
        with self.assertRaises(ValueError):
            calibrate(np.zeros(0), np.zeros(0), [])


class Table(unittest.TestCase):
    def test_between_and_beyond(self):
        table = Uncertainty((1.0, 3.0), (2.0, 4.0), {"C": 2.0})
        widths = [standard_uncertainty(table, novelty, ("N",)) for novelty in (0.0, 2.0, 9.0)]
        self.assertEqual(widths, [2.0, 3.0, 4.0])
        self.assertEqual(standard_uncertainty(table, 1.0, ("C", "C4")), 4.0)


if __name__ == "__main__":
    unittest.main()
