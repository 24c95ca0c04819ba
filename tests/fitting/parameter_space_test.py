# SPDX-License-Identifier: MIT
"""What types inherit, and the scaled variables of a fit."""
import unittest

import numpy as np
from linear_model import PUBLISHED, three_types
from velkoran_fit.parameter_space import (
    BONDING,
    ENERGIES,
    EXPONENTS,
    Variable,
    changes_of,
    scaled,
    scaled_bounds,
    scaled_values,
    unscaled,
    with_scaled_values,
)
from velkoran_fit.worker import FIELDS, Change

EXPONENT = EXPONENTS[1]


class ParameterSpaceTest(unittest.TestCase):
    def test_a_type_takes_the_nearest_number_above_it(self) -> None:
        parameters = three_types().with_own({(0, "BondingParameter"): 20.0, (1, "BondingParameter"): 18.0})
        values = [parameters.value(row, "BondingParameter") for row in range(3)]
        self.assertEqual(values, [20.0, 18.0, 20.0])
        self.assertEqual(parameters.value(2, "OrbitalEnergyS"), PUBLISHED["OrbitalEnergyS"])

    def test_the_table_holds_what_the_types_have(self) -> None:
        parameters = three_types().with_own({(2, "SlaterExponentP"): 1.7})
        table = parameters.table()
        self.assertEqual(table[:, FIELDS.index("SlaterExponentP")].tolist(), [1.6, 1.6, 1.7])
        np.testing.assert_array_equal(np.delete(table, FIELDS.index("SlaterExponentP"), 1)[0], np.delete(table[2], 4))

    def test_scaling_is_undone_by_unscaling(self) -> None:
        parameters = three_types()
        for field, value in ((EXPONENT, 1.75), (ENERGIES[1], -4.0), (BONDING, 30.0)):
            variable = Variable(1, field)
            self.assertAlmostEqual(unscaled(parameters, variable, scaled(parameters, variable, value)), value, 12)

    def test_units_are_six_percent_of_an_exponent_and_two_electron_volts(self) -> None:
        parameters = three_types()
        self.assertAlmostEqual(unscaled(parameters, Variable(0, EXPONENT), 1.0) / 1.6, np.exp(0.06), 12)
        self.assertAlmostEqual(unscaled(parameters, Variable(0, ENERGIES[1]), 1.0), -3.5, 12)

    def test_no_energy_within_the_bounds_is_positive(self) -> None:
        parameters = three_types()
        variables = [Variable(0, field) for field in ENERGIES]
        for variable, highest in zip(variables, scaled_bounds(parameters, variables)[1]):
            self.assertLess(unscaled(parameters, variable, highest), 0.0)

    def test_values_set_are_values_read(self) -> None:
        parameters = three_types()
        variables = [Variable(1, EXPONENT), Variable(2, BONDING)]
        new = with_scaled_values(parameters, variables, [0.5, -1.0])
        np.testing.assert_allclose(scaled_values(new, variables), [0.5, -1.0], atol=1e-12)
        self.assertEqual(new.value(0, BONDING.name), PUBLISHED["BondingParameter"])

    def test_a_change_reaches_the_types_that_inherit_and_no_others(self) -> None:
        variable = Variable(0, BONDING)
        parameters = three_types().with_own({(0, BONDING.name): 20.0, (2, BONDING.name): 25.0})
        changes = changes_of(parameters, variable, 0.0, [0, 1, 2])
        self.assertEqual(changes, (Change(0, BONDING.name, 21.0), Change(1, BONDING.name, 21.0)))
        self.assertEqual(changes_of(parameters, variable, 0.0, [2]), ())


if __name__ == "__main__":
    unittest.main()
