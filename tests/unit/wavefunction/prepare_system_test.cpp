// SPDX-License-Identifier: MIT
// Preparation of a parameter run: the order of its checks, its warnings, d orbitals, capping atoms in the parameter
// tables, electrons and levels, the tables by orbital. Flags without a key are set by hand.
#include "tests/unit/wavefunction/prepared_system.h"

TEST_F(PrepareSystemTest, LogOfASystem) {
    LoadAtoms(Hydrogen);
    EXPECT_EQ(Outcome(), "");
    EXPECT_EQ(LogText, Options +
                           "\nSinglet state calculation.\nNumber of electrons = 2\n"
                           "\nThe Restricted Hartree-Fock is used for calculating the unperturbed wavefunction.\n"
                           "The perturbation theory is applied for calculating the shielding and coupling constants.\n"
                           "\nNumber of double occupied levels = 1\n"
                           "\nCharge on the system = 0\nTotal orbitals = 2\n"
                           "\nStarting TNDO/1 calculation with 2 orbitals\n\n");
    EXPECT_EQ(::Run.Basis.ElectronCount, 2);
    EXPECT_EQ(::Run.Basis.DoublyOccupiedLevels, 1);
    EXPECT_EQ(::Run.Basis.OccupiedLevels, 1);
    EXPECT_EQ(::Run.Field.ScfPassCounter, -1);
}

TEST_F(PrepareSystemTest, OptionsInTheLog) {
    LoadAtoms(Hydrogen);
    ::Run.Options.SCFAccelerateConvergence = ::Run.Options.ModifySlaterExponents =
        ::Run.Options.ComputeThreeCenterTerms = 1;
    ::Run.Options.IncludeDOrbitalsForSecondRow = 1;
    EXPECT_EQ(Outcome(), "");
    EXPECT_EQ(LogText.substr(0, LogText.find("\n\n")),
              Replaced(Replaced(Options.substr(0, Options.size() - 1), "No.", "Yes."), "  No\n", "  Yes\n"));
    LoadAtoms(Hydrogen);
    ::Run.Options.CalculateShielding = ::Run.Options.SCFAccelerateConvergence =
        ::Run.Options.IncludeDOrbitalsForSecondRow = 0;
    ::Run.Options.CalculateSpectra = 1;
    ::Run.Options.NMRFrequency = 300.125;
    ::Run.Options.SemiEmpiricalMethod = 2;
    EXPECT_EQ(Outcome(), "");
    EXPECT_EQ(LogText.substr(0, LogText.find("\n\n")),
              Options.substr(0, Options.find("Modifying")) + "Value of the spectrometer frequency = 300.1250 in MHz.");
    EXPECT_NE(LogText.find("\n\nStarting TNDO/2 calculation with 2 orbitals\n\n"), std::string::npos);
}

// All coordinates are scaled once, those of atoms outside too. One product of doubles: exact.
TEST_F(PrepareSystemTest, CoordinatesAreScaledToBohr) {
    LoadAtoms(CutSystem);
    for (int i = 0; i < 4; ++i) {
        for (int k = 0; k < 3; ++k) {
            ::Run.Molecule.InputCoordinates[i].Position[k] = i - 0.5 * k;
        }
    }
    EXPECT_EQ(Outcome(), "");
    for (int i = 0; i < 4; ++i) {
        for (int k = 0; k < 3; ++k) {
            EXPECT_EQ(::Run.Molecule.AtomCoordinates[i].Position[k], (i - 0.5 * k) * 1.889725985);
        }
    }
}

TEST_F(PrepareSystemTest, RequestsThatAreNotSupported) {
    static const struct {
        int RunOptions::*Field;
        int Value;
        const char* Text;
    } cases[] = {
        {&RunOptions::GeometryRun, 1, "ERRMSG: Velkoran supports a single point computation only for NMR calculation."},
        {&RunOptions::ConfigurationInteraction, 1,
         "ERRMSG: Velkoran doesn't support the configuration interaction for NMR calculation."},
        {&RunOptions::NextLowestState, 1,
         "ERRMSG: Velkoran doesn't support the next lowest state for NMR calculations."},
        {&RunOptions::SpinMultiplicity, 0, "ERRMSG: Velkoran supports a SINGLET state for NMR calculations only."},
        {&RunOptions::SpinMultiplicity, 2, "ERRMSG: Velkoran supports a SINGLET state for NMR calculations only."},
        {&RunOptions::SemiEmpiricalMethod, 0, "ERRMSG: Velkoran supports TNDO/1 and TNDO/2 for NMR calculations only."},
        {&RunOptions::SemiEmpiricalMethod, 3, "ERRMSG: Velkoran supports TNDO/1 and TNDO/2 for NMR calculations only."},
    };
    LoadAtoms({{0, H, 0, {}}});  // no real atom: tested behind all of these
    EXPECT_EQ(Outcome(), "ERRMSG: The current system has no real atom.");
    for (const auto& request : cases) {  // each is tested before those that are set already
        ::Run.Options.*request.Field = request.Value;
        EXPECT_EQ(Outcome(), request.Text);
        EXPECT_EQ(LogText, "(no file)");
    }
}

TEST_F(PrepareSystemTest, RestraintsDrawAWarning) {
    LoadAtoms(Hydrogen);
    ::Run.Options.RestraintsPresent = 1;
    EXPECT_EQ(Outcome(), "");
    EXPECT_EQ(LogText.find("Velkoran will ignore the restraint(s) for NMR calculation.\nConvergence"), 0u);
}

TEST_F(PrepareSystemTest, NoRealAtom) {
    LoadAtoms({{0, H, 0, {}}, {0, H, 0, {}}});
    EXPECT_EQ(Outcome(), "ERRMSG: The current system has no real atom.");
    LoadAtoms({{0, H, 0, {}}, {1, H, 1, {}}});
    EXPECT_EQ(Outcome(), "ERRMSG: The current system that you have selected has no real atom.");
    LoadAtoms({{0, H, 0, {1}}, {1, H, 1, {}}});  // the capping atom is one: its odd electrons are what is wrong
    EXPECT_EQ(Outcome(), "ERRMSG: Singlet state specified with odd number of electrons, please correct the fault.");
}

TEST_F(PrepareSystemTest, SecondRowDOrbitals) {
    LoadAtoms({{16, S, 0, {}}, {14, S, 0, {}}, {6, C, 0, {}}});
    EXPECT_EQ(Outcome(), "");
    EXPECT_EQ(::Run.Basis.OrbitalCount, 12);
    LoadAtoms({{16, S, 0, {}}, {14, S, 0, {}}, {6, C, 0, {}}});
    ::Run.Options.IncludeDOrbitalsForSecondRow = 1;
    EXPECT_EQ(Outcome(), "");
    EXPECT_EQ(::Run.Basis.OrbitalCount, 22);
    EXPECT_EQ(::Run.Molecule.QuantumSelection.LastOrbital, 22);
    EXPECT_EQ(::Run.Basis.OrbitalRanges[1].First, 10);
    EXPECT_EQ(::Run.Basis.OrbitalRanges[1].LastSP, 13);
    EXPECT_EQ(::Run.Basis.OrbitalRanges[1].Last, 18);
    EXPECT_EQ(::Run.Basis.OrbitalRanges[2].First, 19);
    EXPECT_EQ(::Run.Basis.OrbitalRanges[2].LastSP, 22);
    EXPECT_EQ(::Run.Basis.OrbitalRanges[2].Last, 22);
    for (int code = 1; code <= LastElementCode; ++code) {
        EXPECT_EQ(OrbitalCountTable[code - 1], code <= 2 ? 1 : code >= 11 && code <= 18 ? 9 : 4) << code;
    }
    LoadAtoms({{16, S, 0, {}}, {14, S, 0, {}}, {6, C, 0, {}}});  // and back, with TNDO/2
    ::Run.Options.SemiEmpiricalMethod = 2;
    EXPECT_EQ(Outcome(), "");
    EXPECT_EQ(LogText.find("The Current TNDO/2 calculation will ingore the d-orbitals of the second row elements which "
                           "are only available for TNDO/1.\nConvergence"),
              0u);
    EXPECT_EQ(::Run.Basis.OrbitalCount, 12);
    EXPECT_EQ(OrbitalCountTable[10], 4);
    EXPECT_EQ(OrbitalCountTable[17], 4);
}

// Codes 19 to 36 hold four orbitals, a capping hydrogen as well as a capping sulfur with d orbitals asked for.
TEST_F(PrepareSystemTest, CappingAtomsHaveFourOrbitals) {
    for (const int element : {1, 6, 16}) {
        LoadAtoms({{1, H, 0, {1}}, {element, S, 1, {}}});
        ::Run.Options.IncludeDOrbitalsForSecondRow = 1;
        EXPECT_EQ(Outcome(), "");
        EXPECT_EQ(::Run.Basis.OrbitalCount, 5) << element;
        EXPECT_EQ(::Run.Basis.ElectronCount, 8) << element;
        EXPECT_EQ(::Run.Molecule.AtomRecords[1].AtomType, TypeCount + S) << element;  // the capping half of the tables
        EXPECT_EQ(::Run.Molecule.AtomRecords[0].AtomType, H) << element;
    }
}

TEST_F(PrepareSystemTest, Electrons) {
    const auto outcome = [](int charge) {
        LoadAtoms({{8, C, 0, {}}, {1, H, 0, {}}, {1, H, 0, {}}});  // 8 electrons, 6 orbitals
        ::Run.Options.TotalCharge = charge;
        return Outcome();
    };
    const std::string odd = "ERRMSG: Singlet state specified with odd number of electrons, please correct the fault.";
    const std::string tooFew = "ERRMSG: Number of electrons in the system is negative, please reduce total charge.";
    const std::string tooMany = "ERRMSG: Number of electrons in the system is too big, please raise the total charge.";
    EXPECT_EQ(outcome(9), tooFew);
    EXPECT_EQ(outcome(2147483647), tooFew);
    EXPECT_EQ(outcome(8), "");
    EXPECT_EQ(::Run.Basis.OccupiedLevels, 0);
    EXPECT_EQ(outcome(7), odd);
    EXPECT_EQ(outcome(-3), odd);
    EXPECT_EQ(outcome(-4), "");
    EXPECT_EQ(::Run.Basis.OccupiedLevels, 6);
    EXPECT_EQ(outcome(-5), tooMany);  // before the test for odd numbers
    EXPECT_EQ(outcome(-2147483647 - 1), tooMany);
}

// What only hand-set multiplicities reach. The levels fit whenever the electrons do, and so nothing gets to the two
// refusals behind these.
TEST_F(PrepareSystemTest, Multiplicities) {
    const auto outcome = [](int multiplicity, int charge) {
        LoadAtoms(Hydrogen);
        Outcome();
        ::Run.Options.SpinMultiplicity = multiplicity;
        ::Run.Options.TotalCharge = charge;
        return Outcome(CountElectrons);
    };
    EXPECT_EQ(outcome(4, 0), "ERRMSG: Number of electrons in the system is less than the spin-multiplicity requested, "
                             "please reduce the total charge or spin multiplicity.");
    EXPECT_EQ(outcome(3, 0), "");
    EXPECT_EQ(outcome(0, 0), "ERRMSG: Illegally defined multiplicity.");
    EXPECT_EQ(outcome(0, 3), "ERRMSG: Number of electrons in the system is negative, please reduce total charge.");
    EXPECT_EQ(outcome(0, -3), "ERRMSG: Number of electrons in the system is too big, please raise the total charge.");
    EXPECT_EQ(outcome(0, 1), "ERRMSG: Illegally defined multiplicity.");  // before the test for odd numbers
    EXPECT_EQ(outcome(2, -1), "");
    EXPECT_EQ(::Run.Basis.DoublyOccupiedLevels, 1);
    EXPECT_EQ(::Run.Basis.OccupiedLevels, 2);
}

// Tables by orbital: kinds and atoms in order, exponents and energies from the row of the type, capping atoms from the
// capping half. Sums of two terms each; four units in the last place of the largest cover their rounding.
TEST_F(PrepareSystemTest, OrbitalTables) {
    LoadAtoms({{6, C, 1, {1}}, {16, S, 0, {0}}, {1, H, 0, {}}, {0, H, 0, {}}});
    ::Run.Options.IncludeDOrbitalsForSecondRow = 1;
    EXPECT_EQ(Outcome(), "");
    ::Run.Parameters.ActiveParameters = ::Run.Parameters.ParameterFileShielding;
    PrepareOrbitalTables();
    ASSERT_EQ(::Run.Basis.OrbitalCount, 14);
    for (int i = 0; i < 14; ++i) {
        const int place = i < 9 ? 0 : i < 10 ? 1 : 2;
        const int kind = i < 9 ? i + 1 : i < 10 ? 1 : i - 9;
        EXPECT_EQ(::Run.Basis.OrbitalKinds[i], kind);
        EXPECT_EQ(::Run.Basis.OrbitalAtoms[i], place == 0 ? 2 : place == 1 ? 3 : 1);
        EXPECT_EQ(::Run.Basis.OrbitalPrincipalNumbers[i], place == 0 ? 3 : place == 1 ? 1 : 2);
    }
    const double isolated = -(10 + S + 10 + H + 10 + TypeCount + C) * 23.061;
    EXPECT_NEAR(::Run.Basis.IsolatedEnergy, isolated, 4e-13);
    EXPECT_NEAR(::Run.Basis.HeatOffset, 50 + S + 50 + H + 50 + TypeCount + C - isolated, 4e-13);
    ::Run.Options.SemiEmpiricalMethod = 2;
    PrepareOrbitalTables();
    EXPECT_NEAR(::Run.Basis.IsolatedEnergy, -60 * 23.061, 8e-13);
}

// The matrices of the wavefunction would fit, and each of the others by itself, but not all together. One level is
// occupied: 9 squares of the wavefunction, 3 of the shielding and 2 of the perturbation.
TEST_F(PrepareSystemTest, RefusesWhatDoesNotFitInAll) {
    const double numbers = 0.95 * static_cast<double>(AvailableMemory()) / sizeof(double);
    const int orbitals = static_cast<int>(std::sqrt(numbers / 11.5));
    LoadAtoms(std::vector<TypedAtom>(static_cast<std::size_t>(orbitals), {1, H, 0, {}}));
    ::Run.Options.TotalCharge = orbitals - 2;
    EXPECT_EQ(Outcome(), "ERRMSG: The molecule selected for calculation is too large and has consumed all available "
                         "memory.");
}
