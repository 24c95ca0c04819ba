// SPDX-License-Identifier: MIT
// Forms the lines of the log that say what is doubtful.
#include "wavefunction/run_cautions.h"

#include "ground/log.h"
#include "ground/message_poll.h"
#include "molecule/selected_atoms.h"
#include "molecule/units.h"
#include "wavefunction/overlap_matrix.h"
#include "wavefunction/prepare_system.h"
#include "wavefunction/response_solver.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

static constexpr int LineRoom = 200;           // characters; the numbers have six digits
static constexpr int FieldDifferences = 1;     // least iteration limit at which a field has a difference
static constexpr int ResponseDifferences = 2;  // the same of a response
static constexpr double NearAtoms = 0.3;       // Angstrom
static constexpr int LargestValueLines = 10;   // of one quantity

// What ended at the limit.
static void AppendLimitLine(const char* what, int leastLimit, double difference, double limit, const char* unit) {
    char last[LineRoom / 3] = "no difference was formed";
    if (Run.Options.SCFIterationLimit >= leastLimit && std::isfinite(difference)) {
        std::snprintf(last, sizeof last, "last difference %.6g%s", difference, unit);
    } else if (Run.Options.SCFIterationLimit >= leastLimit) {
        std::snprintf(last, sizeof last, "last difference not finite");
    }
    char line[LineRoom];
    std::snprintf(line, sizeof line, "CAUTION: %s ended at the limit of %d iterations: %s, limit %.6g%s.", what,
                  Run.Options.SCFIterationLimit, last, limit, unit);
    LogAppend(line);
}

void CautionAboutField(double difference, double limit) {
    Run.Report.Doubts |= FieldDoubt;
    char what[LineRoom / 3];
    std::snprintf(what, sizeof what, "field with %s", Run.Parameters.ActiveParameterFile);
    AppendLimitLine(what, FieldDifferences, difference, limit, " kcal/mol");
}

static bool LevelsCanRespond() {
    return Run.Basis.DoublyOccupiedLevels > 0 && Run.Basis.DoublyOccupiedLevels < Run.Basis.OrbitalCount;
}

void CautionAboutContactResponse(int atomNumber, double difference, double limit) {
    if (LevelsCanRespond()) {
        Run.Report.Doubts |= ContactDoubt;
        char what[LineRoom / 3];
        std::snprintf(what, sizeof what, "response to the contact perturbation of atom %d", atomNumber);
        AppendLimitLine(what, ResponseDifferences, difference, limit, "");
    }
}

void CautionAboutMagneticResponse(const char* axis, double difference, double limit) {
    if (LevelsCanRespond()) {
        Run.Report.Doubts |= MagneticDoubt;
        char what[LineRoom / 3];
        std::snprintf(what, sizeof what, "response to the magnetic field along %s", axis);
        AppendLimitLine(what, ResponseDifferences, difference, limit, "");
    }
}

void CautionAboutInstability(const char* perturbation, const ResponseOperator& kind) {
    Run.Report.Doubts |= InstabilityDoubt;
    if (!Run.Report.LogEnabled) {
        return;
    }
    char line[LineRoom];
    std::snprintf(line, sizeof line,
                  "CAUTION: response unstable: the lowest eigenvalue of the %s operator is %.4g Hartree.", perturbation,
                  LowestEigenvalue(kind));
    LogAppend(line);
}

// Pairs of atoms, the worst of them and their count.
struct DoubtfulPairs {
    int Places[2];    // of the worst pair
    double Distance;  // of the worst pair, bohr
    long long Count;  // of all such pairs
};

// Counts a pair, and keeps it if it is the first or a worse one than those before.
static void AddPair(DoubtfulPairs& pairs, int i, int j, double distance, bool worse) {
    if (pairs.Count++ == 0 || worse) {
        pairs.Places[0] = j;
        pairs.Places[1] = i;
        pairs.Distance = distance;
    }
}

// The condition is a text of the distance from which on a pair is doubtful.
static void AppendPairLine(const char* word, const DoubtfulPairs& pairs, const char* condition) {
    if (pairs.Count > 0) {
        char line[LineRoom];
        std::snprintf(line, sizeof line, "CAUTION: %s: atoms %d and %d, %.6g Angstrom; pairs %s: %lld.", word,
                      SelectedAtomNumber(pairs.Places[0]), SelectedAtomNumber(pairs.Places[1]),
                      pairs.Distance / BohrsPerAngstrom, condition, pairs.Count);
        LogAppend(line);
    }
}

// Lone pairs are left out: they belong near their atom, and have no overlaps.
void CautionAboutDistances() {
    if (!Run.Report.LogEnabled) {
        return;
    }
    DoubtfulPairs farPairs = {};
    DoubtfulPairs nearPairs = {};
    for (int i = 0; i < Run.Molecule.SelectedAtomCount; ++i) {
        for (int j = 0; j < i; ++j) {
            if (!HasOrbitals(i) || !HasOrbitals(j)) {
                continue;
            }
            const double distance = Distance(SelectedPosition(i), SelectedPosition(j));
            if (distance >= FarOverlap) {
                AddPair(farPairs, i, j, distance, distance > farPairs.Distance);
            }
            if (distance < NearAtoms * BohrsPerAngstrom) {
                AddPair(nearPairs, i, j, distance, distance < nearPairs.Distance);
            }
        }
        PollMessages(i);
    }
    AppendPairLine("far apart", farPairs, "at 100 bohr or more, whose overlaps are wrong");
    AppendPairLine("near each other", nearPairs, "nearer than 0.3");
}

static bool AllFinite(const double* values, int count) {
    return std::all_of(values, values + count, [](double value) { return std::isfinite(value); });
}

static bool ShieldingIsFinite(int, int place) {
    return std::isfinite(Run.Shielding.ShieldingTotal[place]);
}

static bool TensorIsFinite(int, int place) {
    return AllFinite(Run.Shielding.ShieldingTensor + 9LL * place, 9) &&
           AllFinite(Run.Shielding.TensorDiamagneticTwoCentre + 9LL * place, 5);
}

static bool CouplingsAreFinite(int row, int) {
    const double* values = Run.Coupling.CouplingMatrix + static_cast<long long>(row) * Run.Molecule.SelectedAtomCount;
    for (int partner = 0; partner < Run.Molecule.SelectedAtomCount; ++partner) {
        if (!std::isfinite(values[partner]) && NMRRowOf(partner) >= 0) {
            return false;
        }
    }
    return true;
}

static void CautionAboutValues(const char* quantity, bool (*isFinite)(int row, int place)) {
    int count = 0;
    char line[LineRoom];
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        const int row = NMRRowOf(place);
        if (row >= 0 && !isFinite(row, place) && ++count <= LargestValueLines) {
            std::snprintf(line, sizeof line, "CAUTION: value not finite: %s of atom %d.", quantity,
                          SelectedAtomNumber(place));
            LogAppend(line);
        }
        PollMessages(Run.Molecule.NMRAtomCount);
    }
    if (count > LargestValueLines) {
        std::snprintf(line, sizeof line, "CAUTION: value not finite: %s of %d more atoms.", quantity,
                      count - LargestValueLines);
        LogAppend(line);
    }
}

void CautionAboutShieldings() {
    if (Run.Report.LogEnabled) {
        CautionAboutValues("shielding", ShieldingIsFinite);
    }
    if (Run.Report.LogEnabled && Run.Options.CalculateShieldTensor) {
        CautionAboutValues("shielding tensor", TensorIsFinite);
    }
}

void CautionAboutCouplings() {
    if (Run.Report.LogEnabled) {
        CautionAboutValues("couplings", CouplingsAreFinite);
    }
}
