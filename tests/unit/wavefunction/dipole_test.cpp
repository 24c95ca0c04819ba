// SPDX-License-Identifier: MIT
// The dipole moment: origin, factors, terms from one triangle of the density, rotation.
#include "molecule/selected_atoms.h"
#include "tests/support/molecule_support.h"
#include "wavefunction/dipole.h"
#include "wavefunction/solve_wavefunction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

static constexpr double BohrsPerAngstrom = 1.889725985;
static constexpr double Printed = 5.1e-4;  // half a unit of the third place

// Rows of the table: 4 numbers each of point charges, sp, pd, sum.
static std::vector<double> DipoleTable(const std::string& log) {
    std::vector<double> table;
    for (const char* label : {"Point-Chg. ", "sp Hybrid  ", "pd Hybrid  ", "Sum        "}) {
        const std::vector<double> row = NumbersAfter(log, label, 4);
        table.insert(table.end(), row.begin(), row.end());
    }
    return table;
}

// Dipole of a molecule with a density and charges that the test sets.
static std::vector<double> DipoleOf(const LoadedMolecule& loaded, const std::vector<double>& density,
                                    const std::vector<double>& charges) {
    SetSquare(::Run.Field.TotalDensity, density);
    for (int place = 0; place < ::Run.Molecule.SelectedAtomCount; ++place) {
        ::Run.Field.NetCharges[place] = static_cast<float>(charges[static_cast<std::size_t>(place)]);
    }
    loaded.ClearLog();
    ComputeReferencePoint();
    ComputeDipole();
    return DipoleTable(loaded.Log());
}

// Only the lower triangle counts, once, on purpose: the factor of the text holds the rest. Hand values.
TEST(Dipole, OneTriangleOfTheDensity) {
    const LoadedMolecule loaded({{{"F", 0, 0, 0}, {"H", 0, 0, 0.92}}});
    std::vector<double> density(25, 0.0);
    density[5] = 0.25;                            // row px, column s
    density[10] = -0.5;                           // py
    density[15] = 0.125;                          // pz
    density[1] = density[2] = density[3] = 77.0;  // the upper triangle
    const std::vector<double> table = DipoleOf(loaded, density, {0, 0});
    ASSERT_EQ(table.size(), 16u);
    const double f = 7.33697 / 2.6;
    EXPECT_NEAR(table[4], -0.25 * f, Printed);
    EXPECT_NEAR(table[5], 0.5 * f, Printed);
    EXPECT_NEAR(table[6], -0.125 * f, Printed);
    EXPECT_NEAR(table[7], std::hypot(0.25, 0.5, 0.125) * f, Printed);
    EXPECT_NEAR(table[12], table[4], Printed);
}

TEST(Dipole, PointCharges) {
    const LoadedMolecule loaded({{{"H", 0.5, 0, 0}, {"H", 0, -0.25, 1.0}}});
    const std::vector<double> table = DipoleOf(loaded, std::vector<double>(4, 1.0), {0.5, -0.25});
    EXPECT_NEAR(table[0], 0.25 * BohrsPerAngstrom * 2.5416, Printed);
    EXPECT_NEAR(table[1], 0.0625 * BohrsPerAngstrom * 2.5416, Printed);
    EXPECT_NEAR(table[2], -0.25 * BohrsPerAngstrom * 2.5416, Printed);
    EXPECT_NEAR(table[7], 0.0, Printed);
}

// The second row: factor 10.27175 / zs, and the pd terms with their signs, each from its own element.
TEST(Dipole, SecondRowWithD) {
    const LoadedMolecule loaded({{{"Cl", 0, 0, 0}, {"H", 0, 0, 1.27}}, {"IncludeDOrbitalsForSecondRow = yes"}});
    const double zs = ParametersAt(0).SlaterExponentS, zp = ParametersAt(0).SlaterExponentP;
    const double zd = ParametersAt(0).SlaterExponentD;
    const double pd = std::sqrt(std::pow(zd * zp, 7)) * 2036.8554 / std::pow(zp + zd, 8);
    const struct {
        int Row, Column, Axis;  // 1 px, 2 py, 3 pz; 4 dz2, 5 dxz, 6 dyz, 7 dx2, 8 dxy
        double Factor;
    } elements[] = {{5, 3, 0, -1},         {7, 1, 0, -1}, {8, 2, 0, -1}, {4, 1, 0, 0.5773503},
                    {8, 1, 1, -1},         {7, 2, 1, 1},  {6, 3, 1, -1}, {4, 2, 1, 0.5773503},
                    {4, 3, 2, -1.1547005}, {6, 2, 2, -1}, {5, 1, 2, -1}};
    for (const auto& [row, column, axis, factor] : elements) {
        std::vector<double> density(100, 0.0);
        density[static_cast<std::size_t>(row * 10 + column)] = 1.0;
        density[static_cast<std::size_t>(column * 10 + row)] = 55.0;
        const std::vector<double> table = DipoleOf(loaded, density, {0, 0});
        for (int k = 0; k < 3; ++k) {
            EXPECT_NEAR(table[static_cast<std::size_t>(8 + k)], k == axis ? factor * pd : 0.0, Printed)
                << row << column;
        }
    }
    std::vector<double> density(100, 0.0);
    density[10] = 1.0;
    EXPECT_NEAR(DipoleOf(loaded, density, {0, 0})[4], -10.27175 / zs, Printed);
}

// A neutral molecule's origin is that of the coordinates, however far off; an ion's is its centre of mass.
TEST(Dipole, Origin) {
    for (const int charge : {0, 1, -1}) {
        Molecule molecule{{{"H", 10, 20, 30}, {"H", 10, 20, 31}, {"He", 10, 21, 30}},
                          {charge == 0 ? "TotalCharge = 0" : "TotalCharge = 2"}};
        if (charge < 0) {
            molecule.Options = {"TotalCharge = -2"};
        }
        const LoadedMolecule loaded(molecule);
        const std::vector<double> table = DipoleOf(loaded, std::vector<double>(9, 0.0), {1, 0, 0});
        const double mass = 2 * 1.0079 + 4.0026;
        const double unit = BohrsPerAngstrom * 2.5416;
        EXPECT_NEAR(table[0], charge ? 0.0 : 10 * unit, Printed);
        EXPECT_NEAR(table[1], charge ? -4.0026 / mass * unit : 20 * unit, Printed);
        EXPECT_NEAR(table[2], charge ? -1.0079 / mass * unit : 30 * unit, Printed);
    }
}

// A single atom has no dipole and no dipole lines.
TEST(Dipole, SingleAtom) {
    const LoadedMolecule loaded({{{"Ne", 0, 0, 3}}});
    EXPECT_EQ(DipoleOf(loaded, std::vector<double>(16, 1.0), {1}), std::vector<double>());
    EXPECT_EQ(loaded.Log(), "(no file)");
}

// Property: the dipole turns with the molecule. Set-up: both runs to 1.6e-9 Hartree, charged and neutral, with and
// without d orbitals, where the pd terms are a vector only with both triangles' constants right. Tolerance: printing of
// both.
TEST(Dipole, RotatesWithTheMolecule) {
    const Molecule molecules[] = {
        FormaldehydeMolecule(),
        With(FormaldehydeMolecule(), {"SemiEmpiricalMethod = TNDO2"}),
        With(WaterMolecule(), {"TotalCharge = 2"}),
        {{{"S", 0, 0, 0}, {"H", 0, 0.96, 0.93}, {"H", 0, -0.96, 0.93}}, {"IncludeDOrbitalsForSecondRow = yes"}}};
    for (const Molecule& molecule : molecules) {
        std::vector<double> tables[2];
        for (int turned = 0; turned < 2; ++turned) {
            const LoadedMolecule loaded(
                With(turned ? Rotated(molecule) : molecule, {"SCFConvergenceLimit = 1e-6", "SCFIterationLimit = 200"}));
            loaded.ClearLog();
            SolveWavefunction();
            tables[turned] = DipoleTable(loaded.Log());
        }
        for (std::size_t row = 0; row < 16; row += 4) {
            double rotated[3];
            Rotate(tables[0].data() + row, rotated);
            for (std::size_t k = 0; k < 3; ++k) {
                EXPECT_NEAR(tables[1][row + k], rotated[k], 3 * Printed) << row;
            }
            EXPECT_NEAR(tables[1][row + 3], tables[0][row + 3], 2.1 * Printed);
        }
    }
}
