# SPDX-License-Identifier: MIT
"""Stages from parent to child, checkpoints, and parameters without a fold, with a model whose answer is known."""
import tempfile
import unittest
from dataclasses import replace
from pathlib import Path

import numpy as np
from linear_model import LinearPool, problem_for, three_types, value_of
from velkoran_fit.checkpoint import Checkpoint, load_checkpoint, save_checkpoint
from velkoran_fit.cross_fit import fold_parameters
from velkoran_fit.parameter_space import scaled_values
from velkoran_fit.stages import Stage, depth, hierarchical_penalty, lineage, run_stage, variables_of

ELEMENT = Stage("element", (0,), False, 2, 8, 1, 2, 1e-6)
CHILDREN = Stage("children", (1,), False, 2, 8, 1, 2, 1e-6)
ZERO = 190.0
# molecules of two atoms, C4 and C3, in all mixtures
TYPES = [[1, 1], [1, 2], [2, 2], [2, 1], [1, 1], [2, 2]]
TRUTH = {1: 0.7, 2: -0.5}  # true exponents are e^(0.06 u) times the published ones


def silent(*_: object) -> None:
    """Says nothing."""


def measured(types):
    """Shifts of a truth in which the two child types have other p exponents."""
    parameters = three_types()
    own = {(row, "SlaterExponentP"): 1.6 * float(np.exp(0.06 * u)) for row, u in TRUTH.items()}
    table = parameters.with_own(own).table()
    return [[ZERO - value_of(table[row]) for row in rows] for rows in types]


def difference(parameters) -> float:
    """How far the two child types are apart, ppm: what shifts with a free zero can tell."""
    table = parameters.table()
    return value_of(table[1]) - value_of(table[2])


class StagesTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.problem = problem_for(TYPES, measured(TYPES))
        self.truth = 40.0 * 1.6 * (np.exp(0.06 * TRUTH[1]) - np.exp(0.06 * TRUTH[2]))

    def run_children(self, stage=CHILDREN, problem=None, folder=None):
        return run_stage(stage, problem or self.problem, three_types(), LinearPool(), folder or self.folder, silent)

    def test_depth_and_lineage(self) -> None:
        parameters = three_types()
        self.assertEqual([depth(parameters, row) for row in range(3)], [0, 1, 1])
        self.assertEqual(lineage(parameters, 2), (2, 0))

    def test_an_element_alone_can_not_tell_its_children_apart(self) -> None:
        fitted = run_stage(ELEMENT, self.problem, three_types(), LinearPool(), self.folder, silent)
        self.assertAlmostEqual(difference(fitted.parameters), 0.0, 9)

    def test_child_types_are_told_apart(self) -> None:
        self.assertAlmostEqual(difference(self.run_children().parameters), self.truth, 1)

    def test_a_type_in_few_molecules_stays_with_its_parent(self) -> None:
        rare = replace(CHILDREN, molecules=5)
        self.assertEqual(variables_of(rare, self.problem, three_types()), [])
        both = {variable.row for variable in variables_of(CHILDREN, self.problem, three_types())}
        self.assertEqual(both, {1, 2})

    def test_the_penalty_is_towards_the_nearest_ancestor(self) -> None:
        parameters = three_types().with_own({(0, "SlaterExponentP"): 1.7})
        variables = variables_of(Stage("all", (0, 1), False, 1, 1, 1, 1, 1.0), self.problem, parameters)
        exponent = [k for k, v in enumerate(variables) if v.field.name == "SlaterExponentP"]
        self.assertEqual([variables[k].row for k in exponent], [0, 1, 2])
        differences = hierarchical_penalty(parameters, variables, 1.0).differences.toarray()
        self.assertEqual(differences[np.ix_(exponent, exponent)].tolist(), [[1, 0, 0], [-1, 1, 0], [-1, 0, 1]])
        alone = [variable for variable in variables if variable.row == 1]
        penalty = hierarchical_penalty(parameters, alone, 1.0)
        place = [v.field.name for v in alone].index("SlaterExponentP")
        self.assertAlmostEqual(penalty.centre[place], np.log(1.7 / 1.6) / 0.06, 9)

    def test_a_stage_goes_on_where_it_was_stopped(self) -> None:
        straight = self.run_children(folder=self.folder / "straight")
        stopped = self.folder / "stopped"
        first = run_stage(replace(CHILDREN, jacobians=1), self.problem, three_types(), LinearPool(), stopped, silent)
        path = stopped / "shielding_children.npz"
        point = load_checkpoint(path)
        assert point is not None
        save_checkpoint(path, Checkpoint(point.jacobians, False, point.u, point.jacobian))
        resumed = self.run_children(folder=stopped)
        self.assertEqual(first.variables, straight.variables)
        np.testing.assert_array_equal(
            scaled_values(resumed.parameters, resumed.variables), scaled_values(straight.parameters, straight.variables)
        )

    def test_a_finished_stage_runs_nothing(self) -> None:
        self.run_children()
        pool = LinearPool()
        run_stage(CHILDREN, self.problem, three_types(), pool, self.folder, silent)
        self.assertEqual(pool.sets, 0)

    def test_parameters_without_a_fold_are_those_of_a_fit_that_never_saw_it(self) -> None:
        types = TYPES * 3
        shifts = measured(types)
        shifts[0] = [shift + 4.0 for shift in shifts[0]]  # something to be unlearnt
        problem = problem_for(types, shifts)
        folds = [0, 1, 2] * 6
        stage = replace(CHILDREN, penalty=0.05)
        whole = self.run_children(stage, problem, self.folder / "whole")
        without = fold_parameters(whole, folds, LinearPool(), self.folder / "folds", silent)
        rest = problem.of_molecules([i for i, fold in enumerate(folds) if fold != 0])
        fresh = self.run_children(stage, rest, self.folder / "rest").parameters
        self.assertGreater(abs(difference(whole.parameters) - difference(fresh)), 0.05)
        self.assertAlmostEqual(difference(without[0]), difference(fresh), 1)
        again = fold_parameters(whole, folds, LinearPool(), self.folder / "folds", silent)
        self.assertEqual(again[2].own, without[2].own)


if __name__ == "__main__":
    unittest.main()
