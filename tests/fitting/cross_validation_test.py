# SPDX-License-Identifier: MIT
"""Cross-validation and the page that is made from it, on made-up data."""
import csv
import json
import math
import pathlib
import tempfile
import unittest
import xml.etree.ElementTree

import numpy as np
from small_molecules import alkyl_series
from velkoran_fit import accuracy_page, accuracy_results, cross_validation, plots
from velkoran_fit.cross_validation import Column, cross_validate, fold_of

CARBON = Column("13C", "13C")


class Folds(unittest.TestCase):
    def test_depend_on_the_key_alone(self):
        folds = [fold_of(f"KEY{number}") for number in range(1000)]
        self.assertEqual(folds, [fold_of(f"KEY{number}") for number in range(1000)])
        for fold in range(5):
            self.assertAlmostEqual(folds.count(fold), 200, delta=50)

    def test_fractions_are_nested(self):
        keys = [f"KEY{number}" for number in range(1000)]
        half, quarter = ({key for key in keys if cross_validation.is_in_fraction(key, one)} for one in (0.5, 0.25))
        self.assertLess(quarter, half)
        self.assertAlmostEqual(len(half), 500, delta=60)


class Outcomes(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.sites = alkyl_series(60, 7, noise=0.5)
        cls.outcome, cls.results = accuracy_results.column_results(CARBON, [cls.sites] * 5, curves=False)

    def test_physics_wins_where_it_is_the_law(self):
        means = {method: one["mean"] for method, one in self.results["methods"].items()}
        self.assertLess(means["corrected"], 1.0)
        self.assertLess(means["corrected"], means["physics"])
        self.assertGreater(min(means["additive"], means["type mean"]), 10.0)

    def test_own_values_are_not_used(self):
        sites = list(self.sites)
        changed = [
            cross_validation.Site(**{**vars(one), "ppm": one.ppm + 1e3}) if n == 3 else one
            for n, one in enumerate(sites)
        ]
        other = cross_validate(CARBON, [changed] * 5)
        fold = fold_of(sites[3].key)
        rows = np.flatnonzero(other.folds == fold)
        for method in cross_validation.METHODS:
            np.testing.assert_array_equal(other.predictions[method][rows], self.outcome.predictions[method][rows])

    def test_folds_with_different_sites(self):
        with self.assertRaises(ValueError):
            cross_validate(CARBON, [self.sites, self.sites[1:]])

    def test_summary_by_hand(self):
        found = accuracy_results.summary(np.array([3.0, -4.0, 0.0, math.nan]))
        self.assertEqual((found["values"], found["mean"], found["median"]), (3, 2.333, 3.0))
        self.assertAlmostEqual(found["root mean square"], math.sqrt(25 / 3), places=3)

    def test_page(self):
        texts = {"about": "Made up.", "command": "true", "limits": ["Nothing."]}
        measured = accuracy_results.measure_accuracy([self.sites] * 5, [[]] * 5, texts, curves=False)
        self.assertEqual(list(measured.uncertainties), ["13C"])
        results = measured.results
        with tempfile.TemporaryDirectory() as folder:
            docs = pathlib.Path(folder)
            (docs / "measured").mkdir()
            (docs / "pictures").mkdir()
            accuracy_results.write_results(docs / "measured" / "accuracy.json", results)
            with open(docs / "measured" / "worst_molecules.csv", "w", encoding="utf-8", newline="") as stream:
                csv.writer(stream).writerows([["key", "reason"], ["M1", "never"]])
            accuracy_page.write_page(docs)
            text = (docs / "accuracy.md").read_text(encoding="utf-8")
            xml.etree.ElementTree.parse(docs / "pictures" / "accuracy_13C.svg")
            stored = json.loads((docs / "measured" / "accuracy.json").read_text(encoding="utf-8"))
        row = next(line for line in text.splitlines() if line.startswith("| 13C / ppm | 60"))
        corrected = stored["columns"]["13C"]["methods"]["corrected"]["mean"]
        self.assertIn(f"| 2.8 (3.8) | **{accuracy_page.figure(corrected)}** |", row)


class Figures(unittest.TestCase):
    def test_digits(self):
        shown = [accuracy_page.figure(value) for value in (0.2234, 3.04, 9.96, 14.3, 121.0, None)]
        self.assertEqual(shown, ["0.22", "3.0", "10", "14", "120", "-"])

    def test_what_a_curve_says(self):
        flat = [{"molecules": 50, "corrected": 2.0}, {"molecules": 100, "corrected": 1.98}]
        steep = [{"molecules": 50, "corrected": 2.0}, {"molecules": 100, "corrected": 1.5}]
        self.assertIn("better model", accuracy_page.learning_sentence("13C", flat))
        self.assertIn("more data", accuracy_page.learning_sentence("13C", steep).partition(";")[2])

    def test_axis_holds_the_values(self):
        axis = plots.linear_axis([3.0, 17.0])
        self.assertTrue(axis.low < 3.0 and axis.high > 17.0)
        self.assertTrue(all(axis.low <= tick <= axis.high for tick in axis.ticks))

    def test_steps(self):
        self.assertEqual([plots.round_step(span, 5) for span in (10.0, 4.0, 220.0, 0.9)], [2.0, 1.0, 50.0, 0.2])

    def test_nothing_to_draw(self):
        with self.assertRaises(ValueError):
            plots.scatter_plot([], "13C", "ppm", "")
        with self.assertRaises(ValueError):
            plots.curve_plot({}, "13C", "molecules", "ppm")


if __name__ == "__main__":
    unittest.main()
