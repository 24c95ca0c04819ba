// SPDX-License-Identifier: MIT
// The numbers of a wavefunction: energies, eigenvalues, populations, charges, and their listing.
#include "molecule/selected_atoms.h"
#include "tests/support/molecule_support.h"
#include "wavefunction/report_wavefunction.h"

#include <gtest/gtest.h>

#include <cmath>

// Levels -k / 10 Hartree, populations 1 + k / 100.
static std::string Reported(const LoadedMolecule& loaded, double electronic) {
    const long long n = ::Run.Basis.OrbitalCount;
    SetSquare(::Run.Field.TotalDensity, std::vector<double>(static_cast<std::size_t>(n * n), 9.0));
    for (long long k = 0; k < n; ++k) {
        ::Run.Field.OrbitalEnergies[k] = -0.1 * static_cast<double>(k);
        ::Run.Field.TotalDensity[k * (n + 1)] = 1.0 + 0.01 * static_cast<double>(k);
    }
    loaded.ClearLog();
    ComputeNetCharges();
    ReportWavefunction(electronic);
    return loaded.Log();
}

// Property: the sums of the energy block. Set-up: given energies, hydrogen's isolated energies and heats. Hand values,
// as far as they are printed.
TEST(ReportWavefunction, Energies) {
    const LoadedMolecule loaded(HydrogenMolecule(0.74));
    ::Run.Field.CoreRepulsion = 0.75;
    const std::string log = Reported(loaded, -1.5);
    const double isolated = 2 * ParametersAt(0).IsolatedEnergyTndo1 * 23.061;
    const double total = -0.75 * 627.5220032;
    EXPECT_EQ(log.find("Energy="), 0u);
    EXPECT_NEAR(NumbersAfter(log, "Energy=", 1)[0], total - isolated, 1e-6);
    EXPECT_NEAR(NumbersAfter(log, "Total Energy           =", 1)[0], total, 1e-7);
    EXPECT_NEAR(NumbersAfter(log, "(kcal/mol)\n                     Total Energy           =", 1)[0], -0.75, 1e-8);
    EXPECT_NEAR(NumbersAfter(log, "Binding Energy         =", 1)[0], total - isolated, 1e-7);
    EXPECT_NEAR(NumbersAfter(log, "Isolated Atomic Energy =", 1)[0], isolated, 1e-7);
    EXPECT_NEAR(NumbersAfter(log, "Electronic Energy      =", 1)[0], -1.5 * 627.5220032, 1e-7);
    EXPECT_NEAR(NumbersAfter(log, "Core-Core Interaction  =", 1)[0], 0.75 * 627.5220032, 1e-7);
    EXPECT_NEAR(NumbersAfter(log, "Heat of Formation      =", 1)[0], total - isolated + 2 * ParametersAt(0).AtomHeat,
                1e-7);
    EXPECT_EQ(CountOf(log, "with Parameter File nmr_cupl.abp"), 1);
}

// Eigenvalues are 32-bit products, five to a line, and so are the populations; no last line for a multiple of five.
TEST(ReportWavefunction, FiveToALine) {
    for (int hydrogens = 1; hydrogens <= 10; ++hydrogens) {
        Molecule molecule;
        for (int k = 0; k < hydrogens; ++k) {
            molecule.Atoms.push_back({"H", 0.0, 0.0, 1.0 * k});
        }
        molecule.Options = {hydrogens % 2 ? "TotalCharge = 1" : "TotalCharge = 0"};
        const LoadedMolecule loaded(molecule);
        ::Run.Field.CoreRepulsion = 0.0;
        const std::string log = Reported(loaded, -1.0);
        std::string energies, populations;
        for (int k = 0; k < hydrogens; ++k) {
            const bool full = k / 5 < hydrogens / 5;
            char text[64];
            const char* end = k % 5 == 4 || k == hydrogens - 1 ? "\n" : "";
            const char* begin = full && k % 5 == 0 ? "                " : "  ";
            std::snprintf(text, sizeof text, "%s%11.6f%s", begin,
                          static_cast<double>(static_cast<float>(-0.1 * k) * 27.211395f), end);
            energies += text;
            std::snprintf(text, sizeof text, "%s%11.6f%s", begin, static_cast<double>(static_cast<float>(1 + 0.01 * k)),
                          end);
            populations += text;
        }
        EXPECT_NE(log.find("Eigenvalues(eV)\n                                          ---------------\n\n" + energies +
                           "\n                                 Atomic Orbital"),
                  std::string::npos)
            << log;
        EXPECT_NE(log.find("Populations\n                                 -----------------------------------\n\n" +
                           populations + "\n                                Net Charges"),
                  std::string::npos)
            << log;
    }
}

// Charges are core charges less populations; a capping atom counts from 7. The number listed is the code, but 18 less
// the code from 18 on, on purpose: a capping atom shows as its negated atomic number, and argon as 0.
TEST(ReportWavefunction, ChargesAndListedNumbers) {
    const LoadedMolecule loaded({{{"H", 0, 0, 0}, {"C", 0, 0, 1.1}, {"Ar", 0, 3, 0}, {"Cl", 0, 5.5, -1.25}},
                                 {"TotalCharge = -1"},
                                 {1},
                                 {1, 3, 4},
                                 {{1, 2}}});
    ::Run.Field.CoreRepulsion = 0.0;
    const std::string log = Reported(loaded, -1.0);
    const double first[] = {1.0, 4 + 0.10, 4 + 0.26, 4 + 0.42};  // populations of the places: H, Ar, Cl, capping C
    EXPECT_NEAR(static_cast<double>(::Run.Field.NetCharges[0]), 1.0 - first[0], 1e-6);
    EXPECT_NEAR(static_cast<double>(::Run.Field.NetCharges[1]), 8.0 - first[1], 1e-6);
    EXPECT_NEAR(static_cast<double>(::Run.Field.NetCharges[2]), 7.0 - first[2], 1e-6);
    EXPECT_NEAR(static_cast<double>(::Run.Field.NetCharges[3]), 7.0 - first[3], 1e-6);
    EXPECT_NE(log.find("\n                       1   1     0.000000       0.00000     0.00000     0.00000\n"
                       "                       3   0     3.900000       0.00000     3.00000     0.00000\n"
                       "                       4  17     2.740000       0.00000     5.50000    -1.25000\n"
                       "                       2  -6     2.580000       0.00000     0.00000     1.10000\n"),
              std::string::npos)
        << log;
}

// A lone pair keeps the charge that it has and is listed with 0.
TEST(ReportWavefunction, LonePair) {
    const LoadedMolecule loaded({{{"He", 0, 0, 0}, {"Lp", 0, 0, 0.5}}});
    SelectedAtom(1).AtomCharge = 0.25f;
    ::Run.Field.CoreRepulsion = 0.0;
    const std::string log = Reported(loaded, -1.0);
    EXPECT_EQ(::Run.Field.NetCharges[1], 0.25f);
    EXPECT_NE(log.find("\n                       2   0     0.250000 "), std::string::npos);
}

// LogPrintLevel 10 skips the dipole and the lines after it; the charges are there all the same.
TEST(ReportWavefunction, LevelTenSkipsTheDipole) {
    const LoadedMolecule loaded(HydrogenMolecule(0.74));
    EXPECT_EQ(CountOf(Reported(loaded, -1.0), "Dipole Moments"), 1);
    ::Run.Options.LogPrintLevel = 10;
    EXPECT_EQ(CountOf(Reported(loaded, -1.0), "Dipole Moments"), 0);
    ::Run.Report.LogEnabled = 0;
    ::Run.Field.NetCharges[1] = 5.0f;
    EXPECT_EQ(Reported(loaded, -1.0), "(no file)");
    EXPECT_NEAR(static_cast<double>(::Run.Field.NetCharges[1]), 1.0 - 1.01, 1e-6);
}

// A single atom: no dipole lines, but the two that close the block.
TEST(ReportWavefunction, SingleAtom) {
    const LoadedMolecule loaded({{{"He", 0, 0, 0}}});
    ::Run.Field.CoreRepulsion = 0.0;
    const std::string log = Reported(loaded, -1.0);
    EXPECT_EQ(CountOf(log, "Dipole Moments"), 0);
    const std::string rule(100, '=');
    EXPECT_EQ(log.substr(log.size() - 105), std::string("\n\n ") + rule + "\n\n");
}
