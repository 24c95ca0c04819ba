// SPDX-License-Identifier: MIT
// Preparation of a parameter run: the order of its checks, its warnings, d orbitals, capping atoms in the parameter
// tables, electrons and levels, the tables by orbital. Flags without a key are set by hand.
#include "files/atom_selection.h"
#include "ground/memory.h"
#include "ground/platform.h"
#include "molecule/element_tables.h"
#include "tests/support/test_support.h"
#include "wavefunction/orbital_tables.h"
#include "wavefunction/prepare_system.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

// The types of every system here; each has sound parameters in both tables, as an ordinary and as a capping atom.
static constexpr int H = 0;
static constexpr int C = 1;
static constexpr int S = 2;
static constexpr int TypeCount = 3;

// An atom as the reader leaves it.
struct TypedAtom {
    int Element;
    int Type;
    int State;                // 0 selected, 1 not
    std::vector<int> Bonded;  // indices of neighbours
};

static AtomTypeParameters SoundParameters(int entry) {
    AtomTypeParameters p = {-7, -5, -1, 1.25, 1.5, 0.75, 9, 0.1, 0.2, -10, -20, 50};
    p.SlaterExponentS += entry;
    p.IsolatedEnergyTndo1 -= entry;
    p.AtomHeat += entry;
    return p;
}

static void LoadTypes() {
    ::Run.Parameters.AtomTypeCount = TypeCount;
    ::Run.Parameters.AtomTypeNames = AllocateForProcess<AtomTypeName>(TypeCount);
    ::Run.Parameters.ParameterFileShielding = AllocateForProcess<AtomTypeParameters>(2 * TypeCount);
    ::Run.Parameters.ParameterFileCoupling = AllocateForProcess<AtomTypeParameters>(2 * TypeCount);
    static const char* const names[TypeCount] = {"H", "C", "S"};
    for (int i = 0; i < 2 * TypeCount; ++i) {
        std::strcpy(::Run.Parameters.AtomTypeNames[i % TypeCount].Text, names[i % TypeCount]);
        ::Run.Parameters.ParameterFileShielding[i] = ::Run.Parameters.ParameterFileCoupling[i] = SoundParameters(i);
    }
}

// A system with the default options, up to its list of atoms; the first atom is the NMR selection.
static void LoadAtoms(const std::vector<TypedAtom>& atoms) {
    ::Run.Job.ActiveRunKind = ParameterRun;
    FreeRunData();
    ::Run.Options.SemiEmpiricalMethod = ::Run.Options.SpinMultiplicity = ::Run.Options.CalculateShielding =
        ::Run.Options.CalculateCoupling = 1;
    ::Run.Options.TotalCharge = 0;
    ::Run.Options.SCFConvergenceLimit = 0.01f;
    ::Run.Options.SCFIterationLimit = 50;
    ::Run.Molecule.AtomCount = static_cast<int>(atoms.size());
    AllocateZeroed(::Run.Molecule.AtomRecords, ::Run.Molecule.AtomCount);
    AllocateZeroed(::Run.Molecule.InputCoordinates, ::Run.Molecule.AtomCount);
    for (std::size_t i = 0; i < atoms.size(); ++i) {
        AtomRecord& record = ::Run.Molecule.AtomRecords[i];
        record.AtomIndex = static_cast<int>(i);
        record.AtomicNumber = atoms[i].Element;
        record.AtomType = atoms[i].Type;
        record.SelectionState = atoms[i].State;
        record.BondCount = static_cast<int>(atoms[i].Bonded.size());
        std::copy(atoms[i].Bonded.begin(), atoms[i].Bonded.end(), record.BondedAtoms);
    }
    ::Run.Molecule.NMRAtomCount = 1;
    AllocateArray(::Run.Molecule.NMRAtomList, 1);
    ::Run.Molecule.NMRAtomList[0] = 1;
    BuildCappingAtoms();
    BuildSelectedAtomList();
}

// The outcome of the last preparation.
static std::string LogText;

// Prepares in a child and, where that is accepted, here; "" or the refusal.
static std::string Outcome(void (*step)() = PrepareSystem) {
    TemporaryDirectory work;
    UseFilesIn(work.Path);
    const int exitCode = ExitCodeOfChild(step);
    LogText = ReadText(work.Path + "/run.log");
    if (exitCode == 98) {
        ::Run.Report.LogEnabled = 0;
        step();
        return "";
    }
    EXPECT_EQ(exitCode, 0);
    const std::string text = ReadText(work.Path + "/nmrspect.out");
    return text.substr(0, text.size() - 1);
}

static const std::vector<TypedAtom> Hydrogen = {{1, H, 0, {1}}, {1, H, 0, {0}}};

// Two selected atoms, a capping atom and one outside: 4 + 7 and 3 electrons in 4 + 1 + 4 orbitals.
static const std::vector<TypedAtom> CutSystem = {{6, C, 0, {2}}, {1, H, 0, {}}, {6, C, 1, {0}}, {1, H, 1, {}}};

static const std::string Options = "Convergence limit = 0.0100000  Iteration limit = 50\n"
                                   "Applying the SCF accelerate convergence?  No\n"
                                   "Including d-orbitals on the second long row elements if any?  No.\n"
                                   "Modifying the Slater exponents for the shielding constant calculations?  No.\n"
                                   "Computing the three center integrals for the shielding constants?  No.\n";

// Warnings among the lines of the log.
static std::string Warnings() {
    EXPECT_EQ(LogText.substr(0, Options.size()), Options);
    const std::size_t end = LogText.find("\nSinglet");
    return LogText.substr(Options.size(), end - Options.size());
}

class PrepareSystemTest : public testing::Test {
protected:
    void SetUp() override {
        ResetRun();
        LoadTypes();
    }
    void TearDown() override {
        FreeArray(::Run.Parameters.AtomTypeNames);
        FreeArray(::Run.Parameters.ParameterFileShielding);
        FreeArray(::Run.Parameters.ParameterFileCoupling);
        ResetRun();
        std::fill(OrbitalCountTable + 10, OrbitalCountTable + 18, 4);
    }
};

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
