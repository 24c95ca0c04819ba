// SPDX-License-Identifier: MIT
// The listings of matrices and eigenvectors: what is listed when, blocks of six columns, labels.
#include "ground/number_row.h"
#include "tests/support/molecule_support.h"
#include "wavefunction/matrix_listings.h"
#include "wavefunction/solve_wavefunction.h"

#include <gtest/gtest.h>

static constexpr char Core[] = "\n                         Core Hamiltonian Matrix(a.u.)\n";
static constexpr char Fock[] = "\n                               Fock Matrix(a.u.)\n";
static constexpr char Eigenvectors[] = "\n                       Eigenvalues(a.u.) and Eigenvectors\n";
static constexpr char DensityTitle[] = "\n                                Density Matrix\n";

// A number in its field.
static std::string Field(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%11.5f", value);
    return text;
}

// What one stage lists at one level.
static std::string Listed(const LoadedMolecule& loaded, int level, ScfStage stage) {
    loaded.ClearLog();
    ::Run.Options.LogPrintLevel = level;
    ListScfStage(stage);
    const std::string log = loaded.Log();
    return log == "(no file)" ? "" : log;
}

// Sets the matrices apart from each other: element (i, j) of matrix m is m + i / 100 + j / 10000.
static void NumberMatrices() {
    const long long n = ::Run.Basis.OrbitalCount;
    double* matrices[] = {::Run.Field.CoreHamiltonian, ::Run.Field.FockMatrix, ::Run.Field.MolecularOrbitals,
                          ::Run.Field.HalfDensity, ::Run.Field.TotalDensity};
    for (int m = 0; m < 5; ++m) {
        for (long long k = 0; k < n * n; ++k) {
            matrices[m][k] = m + 1 + static_cast<double>(k / n) / 100.0 + static_cast<double>(k % n) / 10000.0;
        }
    }
    for (long long k = 0; k < n; ++k) {
        ::Run.Field.OrbitalEnergies[k] = -10.0 - static_cast<double>(k);
    }
}

// The table of stages and levels; the two matrices of the density differ, so that the listing shows which one it is.
TEST(MatrixListings, StagesAndLevels) {
    const LoadedMolecule loaded(HydrogenMolecule(0.74));
    NumberMatrices();
    for (int level = 0; level <= 9; ++level) {
        const std::string core = Listed(loaded, level, CoreStage), fock = Listed(loaded, level, FockStage);
        const std::string loop = Listed(loaded, level, DensityStage), final = Listed(loaded, level, FinalStage);
        const bool every = level == 4;
        EXPECT_EQ(core.find(Core), every ? 0u : std::string::npos) << level;
        EXPECT_EQ(fock.find(Fock), every ? 0u : std::string::npos) << level;
        EXPECT_EQ(loop.find(Eigenvectors), every ? 0u : std::string::npos) << level;
        EXPECT_EQ(CountOf(loop, DensityTitle), every ? 1 : 0) << level;
        EXPECT_EQ(CountOf(loop, Field(4.0)), every ? 1 : 0) << level;
        EXPECT_EQ(CountOf(final, Eigenvectors), level == 1 || level == 3 ? 1 : 0) << level;
        EXPECT_EQ(CountOf(final, DensityTitle), level == 2 || level == 3 ? 1 : 0) << level;
        EXPECT_EQ(CountOf(final, Field(5.0)), level == 2 || level == 3 ? 1 : 0) << level;
        if (!every) {
            EXPECT_EQ(core + fock + loop, "") << level;
        }
        if (level == 0 || level >= 4) {
            EXPECT_EQ(final, "") << level;
        }
    }
}

// Fewer than six orbitals: only a block of the rest, the whole square of it, energies in Hartree.
TEST(MatrixListings, TwoOrbitals) {
    const LoadedMolecule loaded(HeliumHydride(0.8));
    NumberMatrices();
    EXPECT_EQ(Listed(loaded, 2, FinalStage), std::string(DensityTitle) +
                                                 "\n               S He   1   S  H   2\n\n  S He   1  " + Field(5.0) +
                                                 Field(5.0001) + "\n  S  H   2  " + Field(5.01) + Field(5.0101) + "\n");
    EXPECT_EQ(Listed(loaded, 1, FinalStage), std::string(Eigenvectors) +
                                                 "\nMol. Orbital       1          2\nEigenvalue  " + Field(-10) +
                                                 Field(-11) + "\n\n  S He   1  " + Field(3.0) + Field(3.01) +
                                                 "\n  S  H   2  " + Field(3.0001) + Field(3.0101) + "\n");
}

// Molecules with 1 to 13 orbitals: blocks of six, then one of the rest, none of the rest for 6 and 12.
TEST(MatrixListings, BlocksOfSix) {
    for (int hydrogens = 1; hydrogens <= 13; ++hydrogens) {
        Molecule molecule;
        for (int k = 0; k < hydrogens; ++k) {
            molecule.Atoms.push_back({"H", 0.0, 0.0, 1.0 * k});
        }
        molecule.Options = {hydrogens % 2 ? "TotalCharge = 1" : "TotalCharge = 0"};
        const LoadedMolecule loaded(molecule);
        NumberMatrices();
        const std::string vectors = Listed(loaded, 1, FinalStage), density = Listed(loaded, 2, FinalStage);
        const int blocks = (hydrogens + 5) / 6;
        EXPECT_EQ(CountOf(vectors, "Mol. Orbital"), blocks);
        EXPECT_EQ(CountOf(vectors, "Eigenvalue  "), blocks);
        EXPECT_EQ(CountOf(vectors, "\n  S  H "), blocks * hydrogens);
        EXPECT_EQ(CountOf(density, "\n  S  H "), blocks * hydrogens);  // all rows in each block
        for (int i = 0; i < hydrogens; ++i) {
            for (int j = 0; j < hydrogens; ++j) {
                EXPECT_EQ(CountOf(density, Field(5.0 + i / 100.0 + j / 10000.0)), 1) << hydrogens;
            }
            EXPECT_EQ(CountOf(vectors, Field(-10.0 - i)), 1);
        }
        EXPECT_EQ(CountOf(vectors, "Mol. Orbital       7"), hydrogens > 6 ? 1 : 0);
    }
}

// Labels of all kinds of orbitals, and of a capping atom, which has its element's.
TEST(MatrixListings, Labels) {
    const LoadedMolecule loaded({{{"S", 0, 0, 0}, {"H", 0, 0, 1.3}, {"C", 0, 1.8, 0}},
                                 {"IncludeDOrbitalsForSecondRow = yes"},
                                 {1},
                                 {1, 2},
                                 {{1, 2}, {1, 3}}});
    ASSERT_EQ(::Run.Basis.OrbitalCount, 14);
    NumberMatrices();
    const std::string density = Listed(loaded, 2, FinalStage);
    EXPECT_NE(density.find(
                  "\n               S  S   1  Px  S   1  Py  S   1  Pz  S   1 Dz2  S   1 Dxz  S   1\n\n  S  S   1  "),
              std::string::npos);
    EXPECT_NE(density.find("\n             Dyz  S   1 Dx2  S   1 Dxy  S   1   S  H   2   S  C   3  Px  C   3\n\n"),
              std::string::npos);
    EXPECT_NE(density.find("\n              Py  C   3  Pz  C   3\n\n"), std::string::npos);
}

TEST(MatrixListings, LastRows) {
    const LoadedMolecule loaded(HydrogenMolecule(0.74));
    const double v[4] = {1, 2, 3, 4};
    std::string expected;
    loaded.ClearLog();
    for (int count = 1; count <= 4; ++count) {
        LogNumberRow(v, count);
        for (int k = 0; k < count; ++k) {
            expected.append("     ").append(std::to_string(k + 1)).append(".000000");
        }
        expected += "\n";
    }
    EXPECT_EQ(loaded.Log(), expected);
}

// Level 4 lists the matrices in each iteration and nothing more at the end; at 10 the listing isn't even asked for.
TEST(MatrixListings, LevelFourInARun) {
    const RunTexts four = RunMolecule(With(WaterMolecule(), {"LogPrintLevel = 4", "CalculateShielding = no"}));
    EXPECT_EQ(CountOf(four.Log, Core), 1);
    EXPECT_EQ(CountOf(four.Log, Fock), CountOf(four.Log, Eigenvectors));
    EXPECT_EQ(CountOf(four.Log, Fock), CountOf(four.Log, DensityTitle));
    EXPECT_GE(CountOf(four.Log, Fock), 4);
    EXPECT_LT(four.Log.rfind(DensityTitle), four.Log.find("Energy="));
    const RunTexts ten = RunMolecule(With(WaterMolecule(), {"LogPrintLevel = 10", "CalculateShielding = no"}));
    EXPECT_EQ(ten.Log, "(no file)");
}
