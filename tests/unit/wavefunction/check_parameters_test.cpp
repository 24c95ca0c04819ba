// SPDX-License-Identifier: MIT
// What the preparation of a parameter run tests of elements, types and parameters, in which order.
#include "tests/unit/wavefunction/prepared_system.h"

TEST_F(PrepareSystemTest, LimitsOfElements) {
    const auto tooHigh = [](int number) {
        return "ERRMSG: Atomic number " + std::to_string(number) +
               " is too high when running a semi-empirical NMR calculation, the allowed maximum atomic number is 18.";
    };
    LoadAtoms({{18, S, 0, {}}});
    EXPECT_EQ(Outcome(), "");
    LoadAtoms({{19, S, 0, {}}});
    EXPECT_EQ(Outcome(), tooHigh(19));
    LoadAtoms({{2, H, 0, {}}, {54, S, 1, {}}});  // atoms outside only carry charge
    EXPECT_EQ(Outcome(), "");
    LoadAtoms({{19, H, 0, {}}, {55, S, 1, {}}});  // and are tested first
    EXPECT_EQ(Outcome(), tooHigh(55));
    LoadAtoms({{1, H, 0, {1}}, {18, S, 1, {}}});
    EXPECT_EQ(Outcome(), "");
    LoadAtoms({{1, H, 0, {1}}, {19, S, 1, {}}});
    EXPECT_EQ(Outcome(), tooHigh(19));
    LoadAtoms({{1, H, 0, {1}}, {35, S, 1, {}}});
    EXPECT_EQ(Outcome(), tooHigh(35));
}

// The message has the 0-based type and the 1-based atom; all atoms outside come first, capping atoms last.
TEST_F(PrepareSystemTest, LimitsOfTypes) {
    const auto undefined = [](int type, int atom) {
        return "ERRMSG: Atom type " + std::to_string(type) + " for atom " + std::to_string(atom) + " isn't defined.";
    };
    LoadAtoms({{1, TypeCount, 0, {}}, {6, 9999, 1, {0}}, {6, TypeCount, 1, {}}, {1, H, 0, {1}}});
    EXPECT_EQ(Outcome(), undefined(TypeCount, 3));
    ::Run.Molecule.AtomRecords[2].AtomType = H;
    EXPECT_EQ(Outcome(), undefined(TypeCount, 1));
    ::Run.Molecule.AtomRecords[0].AtomType = TypeCount - 1;
    EXPECT_EQ(Outcome(), undefined(9999, 2));
}

TEST_F(PrepareSystemTest, AtomsOfTheCouplings) {
    const auto range = [](int number) {
        return "ERRMSG: The atom index " + std::to_string(number) +
               " whose nuclear spin-coupling constants are requested is not in the range of the current system.";
    };
    for (const int number : {0, -1, 5}) {
        LoadAtoms(CutSystem);
        ::Run.Molecule.NMRAtomList[0] = number;
        EXPECT_EQ(Outcome(), range(number));
        ::Run.Options.CalculateCoupling = 0;
        ::Run.Molecule.AtomRecords[2].AtomType = C;
        EXPECT_EQ(Outcome(), "");
    }
    LoadAtoms(CutSystem);
    ::Run.Molecule.NMRAtomList[0] = 4;
    EXPECT_EQ(Outcome(), "");
    EXPECT_EQ(Warnings(), "The atom index 4 whose nuclear spin-coupling constants are requested is not in the selected "
                          "part of the system.\n");
    LoadAtoms(CutSystem);
    ::Run.Molecule.NMRAtomList[0] = 2;
    EXPECT_EQ(Outcome(), "");
    EXPECT_EQ(Warnings(), "");
}

// Which values of the cut system are tested, in this order, and what each says: one value of one entry is spoilt in
// the table of the couplings.
TEST_F(PrepareSystemTest, ChecksOfParameters) {
    static constexpr int CapC = TypeCount + C;
    static const struct {
        int Entry;
        double AtomTypeParameters::*Field;
        double Value;
        int Method;
        bool Fatal;
        const char* Text;
    } cases[] = {
        {H, &AtomTypeParameters::SlaterExponentS, 0, 1, true, "Atom 4 with atom type H: the Slater exponent of s"},
        {C, &AtomTypeParameters::SlaterExponentS, -1, 1, true, "Atom 1 with atom type C: the Slater exponent of s"},
        {C, &AtomTypeParameters::OrbitalEnergyS, 0, 1, false, "Atom 1 with atom type C: the negative"},
        {C, &AtomTypeParameters::BondingParameter, 0, 1, false, "Atom 1 with atom type C: the value of bonding"},
        {C, &AtomTypeParameters::SlaterExponentP, 0, 1, true, "Atom 1 with atom type C: the Slater exponent of p"},
        {C, &AtomTypeParameters::OrbitalEnergyP, 1, 1, false, "Atom 1 with atom type C: the negative"},
        {C, &AtomTypeParameters::SlaterCondonG1, 0, 2, false,
         "Atom 1 with atom type C: the value of the Slater-Condon "
         "constant G1(s,p)"},
        {C, &AtomTypeParameters::SlaterCondonF2, 0, 2, false,
         "Atom 1 with atom type C: the value of the Slater-Condon "
         "constant F2(p,p)"},
        {C, &AtomTypeParameters::SlaterCondonG1, 0, 1, false, ""},
        {C, &AtomTypeParameters::SlaterExponentD, 0, 1, false, ""},
        {C, &AtomTypeParameters::OrbitalEnergyD, 1, 1, false, ""},
        {H, &AtomTypeParameters::SlaterExponentP, 0, 1, false, ""},
        {H, &AtomTypeParameters::OrbitalEnergyP, 1, 1, false, ""},
        {H, &AtomTypeParameters::SlaterCondonF2, 0, 2, false, ""},
        {H, &AtomTypeParameters::OrbitalEnergyS, 0, 1, false, "Atom 2 with atom type H: the negative"},
        {CapC, &AtomTypeParameters::SlaterExponentS, 0, 1, true,
         "Capping atom 3 with atom type -C: the Slater exponent "
         "of s"},
        {CapC, &AtomTypeParameters::OrbitalEnergyS, 0, 1, false, "Capping atom 3 with atom number -C: the negative"},
        {CapC, &AtomTypeParameters::BondingParameter, 0, 1, false, "Capping atom 3 with atom number -C: the bonding"},
        {CapC, &AtomTypeParameters::SlaterExponentP, 0, 1, true,
         "Capping atom 3 with atom type -C: the Slater exponent "
         "of p"},
        {CapC, &AtomTypeParameters::OrbitalEnergyP, 0, 1, false, "Capping atom 3 with atom number -C: the negative"},
        {CapC, &AtomTypeParameters::SlaterCondonG1, 0, 2, false, ""},
        {TypeCount + H, &AtomTypeParameters::SlaterExponentS, 0, 1, false, ""},
        {S, &AtomTypeParameters::SlaterExponentS, 0, 1, false, ""},
    };
    for (const auto& check : cases) {
        LoadAtoms(CutSystem);
        ::Run.Options.SemiEmpiricalMethod = check.Method;
        double& value = ::Run.Parameters.ParameterFileCoupling[check.Entry].*check.Field;
        const double sound = value;
        value = check.Value;
        const std::string outcome = Outcome();
        value = sound;
        const std::string text = check.Fatal ? Replaced(outcome, "ERRMSG: ", "") : Warnings();
        EXPECT_EQ(outcome.empty(), !check.Fatal) << check.Text;
        EXPECT_EQ(text.substr(0, std::strlen(check.Text)), check.Text);
        EXPECT_EQ(text.empty(), check.Text[0] == '\0') << text;
        EXPECT_EQ(text.find("nmr_cupl.abp.") != std::string::npos, !text.empty()) << text;  // a bare name
    }
}

// A table is tested only if its constants are asked for, that of the shielding first.
TEST_F(PrepareSystemTest, TablesThatAreTested) {
    ::Run.Parameters.ParameterFileShielding[H].SlaterExponentS =
        ::Run.Parameters.ParameterFileCoupling[H].SlaterExponentS = 0;
    const std::string text =
        "ERRMSG: Atom 1 with atom type H: the Slater exponent of s orbital is less than or equal to "
        "zero, please check your parameter file ";
    LoadAtoms(Hydrogen);
    EXPECT_EQ(Outcome(), text + "nmr_shft.abp.");
    ::Run.Options.CalculateShielding = 0;
    EXPECT_EQ(Outcome(), text + "nmr_cupl.abp.");
    ::Run.Options.CalculateCoupling = 0;
    EXPECT_EQ(Outcome(), "");
}

TEST_F(PrepareSystemTest, ChecksOfDParameters) {
    LoadAtoms({{16, S, 0, {}}});
    ::Run.Options.CalculateShielding = 0;
    ::Run.Options.IncludeDOrbitalsForSecondRow = 1;
    ::Run.Parameters.ParameterFileCoupling[S].OrbitalEnergyD = 0;
    EXPECT_EQ(Outcome(), "");
    EXPECT_NE(
        LogText.find("Atom 1 with atom type S: the negative of average ionization potential and electron affinity "
                     "of d orbital is bigger than or equal to zero, please check your parameter file "
                     "nmr_cupl.abp.\n"),
        std::string::npos);
    LoadAtoms({{16, S, 0, {}}});
    ::Run.Parameters.ParameterFileCoupling[S].SlaterExponentD = 0;
    EXPECT_EQ(Outcome(), "ERRMSG: Atom 1 with atom type S: the Slater exponent of d orbital is less than or equal to "
                         "zero, please check your parameter file nmr_cupl.abp.");
    LoadAtoms({{16, S, 0, {}}});
    ::Run.Options.IncludeDOrbitalsForSecondRow = 0;
    EXPECT_EQ(Outcome(), "");
}

// Lone pairs carry no parameters, in the selection or outside.
TEST_F(PrepareSystemTest, LonePairsAreNotChecked) {
    ::Run.Parameters.ParameterFileCoupling[S] = ::Run.Parameters.ParameterFileShielding[S] = {};
    LoadAtoms({{1, H, 0, {}}, {0, S, 0, {}}, {0, S, 1, {}}, {1, H, 0, {}}});
    EXPECT_EQ(Outcome(), "");
    EXPECT_EQ(Warnings(), "");
    EXPECT_EQ(::Run.Basis.OrbitalCount, 2);
    EXPECT_EQ(::Run.Basis.OrbitalRanges[1].First, 2);
    EXPECT_EQ(::Run.Basis.OrbitalRanges[1].Last, 1);
    EXPECT_EQ(::Run.Basis.OrbitalRanges[2].Last, 2);
}
