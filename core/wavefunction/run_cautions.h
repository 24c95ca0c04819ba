// SPDX-License-Identifier: MIT
// The lines of the log by which a run says what is doubtful. Each begins with "CAUTION: " and one of the words field,
// response, value, far and near, for programs that read the log. They are no catalogue texts, and the result file
// knows nothing of them.
#pragma once

#include "wavefunction/response_operator.h"

// The bits of Doubts in Run.Report, for callers without a log: each caution of a field or a response sets its own.
inline constexpr unsigned FieldDoubt = 1;
inline constexpr unsigned ContactDoubt = 2;
inline constexpr unsigned MagneticDoubt = 4;
inline constexpr unsigned InstabilityDoubt = 8;

// A field that ended at its iteration limit, with the difference of its last progress line and the limit, kcal/mol.
void CautionAboutField(double difference, double limit);

// A response that ended at its iteration limit, with the difference of its last progress line and the limit; of the
// contact perturbation of an atom, by its 1-based number, or to the magnetic field along an axis, by its name. Nothing
// where all levels are filled or empty: such a response is 0.
void CautionAboutContactResponse(int atomNumber, double difference, double limit);
void CautionAboutMagneticResponse(const char* axis, double difference, double limit);

// A wavefunction that isn't stable against perturbations of a kind, "contact" or "magnetic", with the lowest eigenvalue
// of the operator of their response. Spoils what LowestEigenvalue does.
void CautionAboutInstability(const char* perturbation, const ResponseOperator& kind);

// The atoms of the calculation that are farthest apart, if no overlap is computed at their distance, and the two that
// are nearest, if no molecule has them so near. Coordinates are in bohr already. Polls.
void CautionAboutDistances();

// NMR atoms with a value that goes to the result file and isn't finite: among the shieldings and tensors, among the
// couplings. A few lines, and the count of the other atoms. Polls.
void CautionAboutShieldings();
void CautionAboutCouplings();
