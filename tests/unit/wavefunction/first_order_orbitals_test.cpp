// SPDX-License-Identifier: MIT
// The first-order perturbation sum where something in it isn't a number.
#include "tests/support/molecule_support.h"
#include "wavefunction/first_order_orbitals.h"

#include <gtest/gtest.h>

#include <limits>

// A coefficient that isn't above 1e-20 takes no part; one that isn't a number isn't above it, on purpose.
TEST(FirstOrderOrbitals, NotANumberTakesNoPart) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        double Element;   // of the first-order Fock matrix, between the two levels
        double Expected;  // change of the occupied level, in the empty one
    } cases[] = {{nan, 0.0}, {-nan, 0.0}, {1e-20, 0.0}, {3e-20, -3e-20}, {0.5, -0.5}};
    for (const auto& [element, expected] : cases) {
        const LoadedMolecule loaded(HydrogenMolecule(0.74));
        SetSquare(::Run.Field.MolecularOrbitals, {1, 0, 0, 1});
        SetSquare(::Run.Field.OrbitalEnergiesRaw, {-0.5, 0.5});
        const double fock[4] = {0.0, element, element, 0.0};
        double u[2] = {9.0, 9.0};
        PrepareFirstOrderOrbitals();
        SolveFirstOrderOrbitals(fock, 1.0, u);
        EXPECT_EQ(u[0], 0.0) << element;
        EXPECT_EQ(u[1], expected) << element;
    }
}

// A response that grows beyond all numbers so starts anew from nothing, and the result is a number again. Set-up: a
// crowded molecule with d orbitals whose wavefunction is all but unconverged.
TEST(FirstOrderOrbitals, ResponseStartsAnew) {
    const RunTexts texts =
        RunMolecule({{{"Si", -0.801, -1.363, 1.118},
                      {"Si", 0.717, -0.921, 1.126},
                      {"S", -1.478, 1.572, -1.320},
                      {"F", -1.323, 0.389, -0.634},
                      {"Cl", 1.106, -1.595, -0.682}},
                     {"IncludeDOrbitalsForSecondRow = yes", "SCFConvergenceLimit = 1", "SCFAccelerateConvergence = yes",
                      "SCFIterationLimit = 1000", "CalculateCoupling = no"}});
    EXPECT_NE(texts.Log.find("Diff = nan\n"), std::string::npos);
    EXPECT_EQ(texts.Output.find("nan"), std::string::npos) << texts.Output;
    EXPECT_EQ(texts.Output.substr(0, 8), "Results ");
}
