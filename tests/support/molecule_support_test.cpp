// SPDX-License-Identifier: MIT
// What the molecules of the tests rest on: the readers get them whole, and the plain loops know their mathematics.
// The definitions of the helper come with this file, so that no list of sources has to name them.
#include "tests/support/molecule_support.h"

#include <gtest/gtest.h>

#include <cmath>

TEST(MoleculeSupport, TheReadersGetTheMolecule) {
    const LoadedMolecule loaded(With(HeliumHydride(0.8), {"SemiEmpiricalMethod = TNDO2"}));
    EXPECT_EQ(::Run.Molecule.AtomCount, 2);
    EXPECT_EQ(::Run.Basis.OrbitalCount, 2);
    EXPECT_EQ(::Run.Basis.ElectronCount, 2);
    EXPECT_EQ(::Run.Options.SemiEmpiricalMethod, 2);
    EXPECT_EQ(::Run.Molecule.NMRAtomCount, 2);
    EXPECT_DOUBLE_EQ(::Run.Molecule.AtomCoordinates[1].Position[2], 0.8 * 1.889725985);
    EXPECT_EQ(loaded.Output(), "(no file)");
}

TEST(MoleculeSupport, RotationKeepsLengths) {
    const double v[3] = {0.3, -1.2, 2.5};
    double r[3];
    Rotate(v, r);
    EXPECT_NEAR(std::hypot(r[0], r[1], r[2]), std::hypot(v[0], v[1], v[2]), 1e-14);
}

TEST(MoleculeSupport, JacobiRotationsSolveATwoByTwoMatrix) {
    std::vector<double> values, vectors;
    JacobiEigen({1.0, 2.0, 2.0, -2.0}, 2, &values, &vectors);
    EXPECT_NEAR(values[0], -3.0, 1e-14);
    EXPECT_NEAR(values[1], 2.0, 1e-14);
    EXPECT_NEAR(vectors[0] * vectors[2] + vectors[1] * vectors[3], 0.0, 1e-15);
    EXPECT_NEAR(vectors[2] / vectors[3], 2.0, 1e-14);
}
