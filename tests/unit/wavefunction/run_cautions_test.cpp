// SPDX-License-Identifier: MIT
// The lines by which a run says what is doubtful: against the progress lines of the same log, against distances and
// values put in by hand, and that ordinary runs have none.
#include "nmr/contact_coupling.h"
#include "nmr/magnetic_density.h"
#include "tests/support/molecule_support.h"
#include "wavefunction/run_cautions.h"
#include "wavefunction/solve_wavefunction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <sstream>

static constexpr char Tndo1[] = "SemiEmpiricalMethod = TNDO1";
static constexpr char Tndo2[] = "SemiEmpiricalMethod = TNDO2";
static constexpr char NoShielding[] = "CalculateShielding = no";
static constexpr char NoCoupling[] = "CalculateCoupling = no";
static constexpr char Tight[] = "SCFConvergenceLimit = 1e-6";
static constexpr double NotANumber = std::numeric_limits<double>::quiet_NaN();
static constexpr double Infinity = std::numeric_limits<double>::infinity();

static std::string IterationLimit(int limit) {
    return std::string("SCFIterationLimit = ").append(std::to_string(limit));
}

static std::vector<std::string> LinesWith(const std::string& text, const std::string& start) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (line.rfind(start, 0) == 0) {
            lines.push_back(line);
        }
    }
    return lines;
}

static double LastNumber(const std::string& line) {
    return std::stod(line.substr(line.rfind('=') + 1));
}

// What the log says of one iteration: its progress lines, and its caution.
struct CautionedRun {
    int Differences;   // progress lines
    double Last;       // difference of the last one; 0 without any
    bool Caution;      // there is one, and it follows the last progress line
    std::string Text;  // the caution
};

static CautionedRun OutcomeOf(const std::string& log, const std::string& progress, const std::string& caution) {
    const std::vector<std::string> lines = LinesWith(log, progress), cautions = LinesWith(log, caution);
    EXPECT_LE(cautions.size(), 1u) << log;
    CautionedRun outcome = {static_cast<int>(lines.size()), lines.empty() ? 0.0 : LastNumber(lines.back()),
                            !cautions.empty(), cautions.empty() ? "" : cautions[0]};
    if (outcome.Caution && !lines.empty()) {
        EXPECT_NE(log.find(lines.back() + "\n" + outcome.Text + "\n"), std::string::npos) << log;
        EXPECT_NEAR(NumbersAfter(outcome.Text, "last difference", 1)[0], outcome.Last, 1e-5 * outcome.Last + 6e-6);
    }
    return outcome;
}

// Silicon monoxide in TNDO/1 at 1.43 Angstrom: the field swings for good; with the Fock matrix extrapolated it doesn't.
static Molecule SiliconMonoxide() {
    return {{{"Si", 0, 0, 0}, {"O", 0, 0, 1.43}}, {Tndo1, NoCoupling, Tight, IterationLimit(200)}};
}

TEST(RunCautions, FieldOfSiliconMonoxide) {
    const std::string log = RunMolecule(SiliconMonoxide()).Log;
    const CautionedRun outcome = OutcomeOf(log, "Iteration = ",
                                           "CAUTION: field with nmr_shft.abp ended at the limit of 200 "
                                           "iterations: last difference ");
    EXPECT_TRUE(outcome.Caution) << log;
    EXPECT_EQ(outcome.Differences, 200);
    EXPECT_GT(outcome.Last, 0.01);
    EXPECT_NE(outcome.Text.find(" kcal/mol, limit 1e-06 kcal/mol."), std::string::npos) << outcome.Text;
    const std::string accelerated = RunMolecule(With(SiliconMonoxide(), {"SCFAccelerateConvergence = yes"})).Log;
    EXPECT_EQ(CountOf(accelerated, "CAUTION: field"), 0) << accelerated;
}

// Property: a field has its caution exactly if its last printed difference isn't below the limit, the limit at exactly
// the needed number of iterations included. Set-up: all iteration limits up to more than water needs.
TEST(RunCautions, FieldAtEveryIterationLimit) {
    int exact = 0, converged = 0;
    for (int limit = -2; limit <= 25; ++limit) {
        const LoadedMolecule loaded(With(WaterMolecule(), {IterationLimit(limit)}));
        loaded.ClearLog();
        SolveWavefunction();
        const CautionedRun outcome = OutcomeOf(loaded.Log(), "Iteration = ", "CAUTION: field ");
        EXPECT_EQ(outcome.Caution, outcome.Differences == 0 || outcome.Last >= 0.01) << limit << loaded.Log();
        EXPECT_EQ(CountOf(outcome.Text, "no difference was formed"), limit < 1 ? 1 : 0) << outcome.Text;
        converged += outcome.Caution ? 0 : 1;
        exact += !outcome.Caution && outcome.Differences == limit ? 1 : 0;
    }
    EXPECT_GT(exact, 0);
    EXPECT_GT(converged, exact);
}

// Iterates responses at all iteration limits up to largestLimit; how many ended by their difference at exactly the
// limit. A response has its caution exactly if its last printed difference is more than the limit of the iteration, or
// if there are too few passes for a test, which is made from the third one on. Names of the responses stand behind the
// beginnings of their lines.
static int ResponsesAtTheLimit(const Molecule& molecule, void (*compute)(), int largestLimit, double largest,
                               const std::string& progress, const std::string& caution,
                               const std::vector<std::string>& names) {
    int exact = 0;
    const LoadedMolecule loaded(With(molecule, {IterationLimit(200)}));
    for (int limit = -1; limit <= largestLimit; ++limit) {
        ::Run.Options.SCFIterationLimit = 200;
        SolveWavefunction();
        ::Run.Options.SCFIterationLimit = limit;
        loaded.ClearLog();
        compute();
        for (const std::string& name : names) {
            const std::string start = std::string(caution).append(name).append(" ended at the limit of ");
            const CautionedRun outcome = OutcomeOf(loaded.Log(), std::string(progress).append(name).append(":"), start);
            EXPECT_EQ(outcome.Caution, outcome.Differences < 2 || outcome.Last > largest) << limit << loaded.Log();
            EXPECT_EQ(CountOf(outcome.Text, "no difference was formed"), limit < 2 ? 1 : 0) << outcome.Text;
            EXPECT_EQ(CountOf(outcome.Text, std::to_string(limit) + " iterations: "), outcome.Caution ? 1 : 0);
            exact += !outcome.Caution && outcome.Differences == limit - 1 ? 1 : 0;
        }
    }
    return exact;
}

TEST(RunCautions, ContactResponseAtEveryIterationLimit) {
    EXPECT_EQ(ResponsesAtTheLimit(With(WaterMolecule(), {Tndo2, NoShielding}), ComputeCouplingResponses, 40, 1e-7,
                                  "Perturbed atom ", "CAUTION: response to the contact perturbation of atom ",
                                  {"1", "2", "3"}),
              3);
}

TEST(RunCautions, MagneticResponseAtEveryIterationLimit) {
    EXPECT_EQ(ResponsesAtTheLimit(With(WaterMolecule(), {NoCoupling}), ComputeMagneticDensities, 60, 1e-9, "Perturbed ",
                                  "CAUTION: response to the magnetic field along ", {"x", "y", "z"}),
              3);
}

// A difference that isn't finite has the same text on every platform.
TEST(RunCautions, DifferenceThatIsNotFinite) {
    const LoadedMolecule loaded(WaterMolecule());
    for (const double difference : {NotANumber, -NotANumber, Infinity}) {
        loaded.ClearLog();
        CautionAboutField(difference, 0.01);
        EXPECT_EQ(loaded.Log(), "CAUTION: field with nmr_cupl.abp ended at the limit of 50 iterations: last difference "
                                "not finite, limit 0.01 kcal/mol.\n");
    }
}

// Responses that are 0 whatever the number of iterations: an NMR atom outside the selection, a lone pair, only filled
// levels, only empty ones, and hydrogen on a line through the origin, which the field finds no way to turn.
TEST(RunCautions, NothingToConverge) {
    Molecule part = With(WaterMolecule(), {NoShielding});
    part.Atoms.push_back({"Ne", 0, 0, 5});
    part.NMRAtoms = {4};
    part.QuantumAtoms = {1, 2, 3};
    Molecule pair = With(WaterMolecule(), {NoShielding});
    pair.Atoms.push_back({"Lp", 0, 0, 0.5});
    pair.NMRAtoms = {4};
    const Molecule hydrogen = HydrogenMolecule(0.74);
    for (const int limit : {0, 1, 2, 50}) {
        for (const Molecule& molecule : {part, pair, Molecule{{{"Ne", 0, 0, 0}}}, With(hydrogen, {"TotalCharge = 2"}),
                                         With(hydrogen, {NoCoupling})}) {
            const std::string log = RunMolecule(With(molecule, {IterationLimit(limit)})).Log;
            EXPECT_EQ(CountOf(log, "CAUTION: response"), 0) << log;
        }
        const std::string log = RunMolecule(With(hydrogen, {NoShielding, IterationLimit(limit)})).Log;
        EXPECT_EQ(CountOf(log, "CAUTION: response"), limit < 3 ? 2 : 0) << log;
    }
}

// An ordinary run has no such line.
TEST(RunCautions, OrdinaryRunsHaveNone) {
    for (const char* method : {Tndo1, Tndo2}) {
        for (const Molecule& molecule :
             {HydrogenMolecule(0.74), HeliumHydride(0.8), WaterMolecule(), MethaneMolecule(), FormaldehydeMolecule()}) {
            const std::string log =
                RunMolecule(With(molecule, {method, Tight, IterationLimit(200), "CalculateShieldTensor = yes",
                                            "ComputeThreeCenterTerms = yes"}))
                    .Log;
            EXPECT_NE(log.find("Energies"), std::string::npos);
            EXPECT_EQ(CountOf(log, "CAUTION"), 0) << log;
        }
    }
}

// With the log off there is no line of any kind; the run has four kinds at level 9.
TEST(RunCautions, NoneAtLogPrintLevel10) {
    const Molecule molecule = {{{"O", 0, 0, 0}, {"H", 0, 0.2, 0}, {"H", 0, 0, 60}}, {Tndo2, "SCFIterationLimit = 2"}};
    const RunTexts listed = RunMolecule(With(molecule, {"LogPrintLevel = 9"}));
    for (const auto& [kind, count] : std::vector<std::pair<const char*, int>>{
             {"CAUTION: field ", 2}, {"CAUTION: response ", 6}, {"CAUTION: far ", 1}, {"CAUTION: near ", 1}}) {
        EXPECT_EQ(CountOf(listed.Log, kind), count) << listed.Log;
    }
    const RunTexts silent = RunMolecule(With(molecule, {"LogPrintLevel = 10"}));
    EXPECT_EQ(silent.Log, "(no file)");
    EXPECT_EQ(silent.Output, listed.Output);
}

static std::string CautionsOfDistances(const Molecule& molecule) {
    const LoadedMolecule loaded(molecule);
    loaded.ClearLog();
    CautionAboutDistances();
    return loaded.Log();
}

// From 100 bohr on, 52.9177 Angstrom, no overlap is computed; the pair that is farthest apart, and the count.
TEST(RunCautions, AtomsFarApart) {
    EXPECT_EQ(CautionsOfDistances(HydrogenMolecule(52.917)), "(no file)");
    EXPECT_EQ(CautionsOfDistances(HydrogenMolecule(52.918)),
              "CAUTION: far apart: atoms 1 and 2, 52.918 Angstrom; pairs at 100 bohr or more, whose overlaps are "
              "wrong: 1.\n");
    const Molecule chain = {{{"H", 0, 0, 30}, {"H", 0, 0, 60}, {"H", 0, 0, 110}, {"H", 0, 0, 0}}};
    EXPECT_EQ(CautionsOfDistances(chain),
              "CAUTION: far apart: atoms 3 and 4, 110 Angstrom; pairs at 100 bohr or more, whose overlaps are "
              "wrong: 3.\n");
}

// Nearer than 0.3 Angstrom; lone pairs aren't meant, and neither are atoms outside the selection.
TEST(RunCautions, AtomsNearEachOther) {
    EXPECT_EQ(CautionsOfDistances(HydrogenMolecule(0.301)), "(no file)");
    EXPECT_EQ(CautionsOfDistances(HydrogenMolecule(0.299)),
              "CAUTION: near each other: atoms 1 and 2, 0.299 Angstrom; pairs nearer than 0.3: 1.\n");
    EXPECT_EQ(CautionsOfDistances({{{"H", 0, 0, 0}, {"H", 0, 0, 5}, {"H", 0, 0, 0.2}, {"H", 0, 0, 5}}}),
              "CAUTION: near each other: atoms 2 and 4, 0 Angstrom; pairs nearer than 0.3: 2.\n");
    EXPECT_EQ(CautionsOfDistances({{{"Lp", 0, 0, 0.1}, {"O", 0, 0, 0}, {"Lp", 0, 0, 90}, {"Lp", 0, 0, -0.1}}}),
              "(no file)");
    Molecule part = {{{"H", 0, 0, 0}, {"H", 0, 0, 0.1}, {"H", 0, 0, 0.7}, {"O", 0, 0, 90}}, {}, {}, {1, 3}};
    EXPECT_EQ(CautionsOfDistances(part), "(no file)");
    part.Bonds = {{3, 4}, {1, 2}};  // now both are capping atoms
    const std::string log = CautionsOfDistances({part.Atoms, {"TotalCharge = 2"}, {}, {1, 3}, part.Bonds});
    EXPECT_EQ(CountOf(log, "CAUTION: far apart: atoms 1 and 4, 90 Angstrom"), 1) << log;
    EXPECT_EQ(CountOf(log, "CAUTION: near each other: atoms 1 and 2, 0.1 Angstrom"), 1) << log;
}

// They stand behind the preparation, and once, though there are two fields.
TEST(RunCautions, DistancesFollowThePreparation) {
    const std::string log = RunMolecule(HydrogenMolecule(60.0)).Log;
    const std::size_t caution = log.find("CAUTION: far");
    EXPECT_EQ(CountOf(log, "CAUTION: far"), 1);
    EXPECT_GT(caution, log.find("Starting TNDO/1"));
    EXPECT_LT(caution, log.find("Iteration = 1 "));
}

// Values put in by hand: what goes to the result file counts, and nothing else; each quantity has one line for an atom.
TEST(RunCautions, ValuesThatAreNotFinite) {
    Molecule molecule = With(WaterMolecule(), {"CalculateShieldTensor = yes"});
    molecule.NMRAtoms = {3, 1, 3};
    const LoadedMolecule loaded(molecule);
    std::fill(::Run.Shielding.ShieldingTotal, ::Run.Shielding.ShieldingTotal + 3, 1.0);
    std::fill(::Run.Shielding.ShieldingTensor, ::Run.Shielding.ShieldingTensor + 27, 1.0);
    std::fill(::Run.Shielding.TensorDiamagneticTwoCentre, ::Run.Shielding.TensorDiamagneticTwoCentre + 27, 1.0);
    std::fill(::Run.Coupling.CouplingMatrix, ::Run.Coupling.CouplingMatrix + 9, 1.0);
    ::Run.Shielding.ShieldingTotal[1] = ::Run.Shielding.ShieldingTensor[9] = NotANumber;  // no NMR atom
    ::Run.Shielding.TensorDiamagneticTwoCentre[5] = NotANumber;                           // no outcome of a tensor
    ::Run.Coupling.CouplingMatrix[1] = ::Run.Coupling.CouplingMatrix[7] = Infinity;       // no NMR atom
    loaded.ClearLog();
    CautionAboutShieldings();
    CautionAboutCouplings();
    EXPECT_EQ(loaded.Log(), "(no file)");
    ::Run.Shielding.ShieldingTotal[2] = -Infinity;
    ::Run.Shielding.ShieldingTensor[8] = ::Run.Shielding.ShieldingTensor[7] = NotANumber;
    ::Run.Shielding.TensorDiamagneticTwoCentre[22] = Infinity;
    ::Run.Coupling.CouplingMatrix[3] = ::Run.Coupling.CouplingMatrix[5] = NotANumber;  // the row of atom 1
    CautionAboutShieldings();
    CautionAboutCouplings();
    EXPECT_EQ(loaded.Log(), "CAUTION: value not finite: shielding of atom 3.\n"
                            "CAUTION: value not finite: shielding tensor of atom 1.\n"
                            "CAUTION: value not finite: shielding tensor of atom 3.\n"
                            "CAUTION: value not finite: couplings of atom 1.\n");
}

// Ten lines of a quantity, and the count of what is left.
TEST(RunCautions, ManyValuesThatAreNotFinite) {
    Molecule chain;
    for (int i = 0; i < 24; ++i) {
        chain.Atoms.push_back({"H", 0, 0, 0.9 * i});
    }
    const LoadedMolecule loaded(chain);
    std::fill(::Run.Shielding.ShieldingTotal, ::Run.Shielding.ShieldingTotal + 24, NotANumber);
    loaded.ClearLog();
    CautionAboutShieldings();
    EXPECT_EQ(CountOf(loaded.Log(), "CAUTION: value not finite: shielding of atom "), 10);
    EXPECT_EQ(CountOf(loaded.Log(), "CAUTION: value not finite: shielding of 14 more atoms.\n"), 1);
    EXPECT_EQ(CountOf(loaded.Log(), "\n"), 11);
}
