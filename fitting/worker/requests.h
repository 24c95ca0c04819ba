// SPDX-License-Identifier: MIT
// What the worker is asked and what it answers, as bytes of this machine: no text, so that nothing is rounded.
#pragma once

#include "molecule/parameter_data.h"

#include <cstdint>
#include <vector>

// The two quantities of a run.
inline constexpr std::int32_t ShieldingRequest = 1;
inline constexpr std::int32_t CouplingRequest = 2;

// The bit of a status beside those of wavefunction/run_cautions.h.
inline constexpr std::uint32_t RefusedStatus = 16;  // the run ended with a fatal error or a signal

inline constexpr std::int32_t LargestAtomCount = 4096;  // what a fit never comes near: couplings go with its square

// The fixed part, first in the stream.
struct RequestHead {
    std::int32_t Quantity;               // ShieldingRequest or CouplingRequest
    std::int32_t AtomCount;              // atoms of the molecule, 1 to LargestAtomCount
    std::int32_t NMRAtomCount;           // atoms whose values are wanted, 0 to LargestAtomCount
    std::int32_t TypeCount;              // rows of the parameter table
    std::int32_t VariantCount;           // further parameter sets, each the table with some changes
    std::int32_t ChangeCount;            // changes of all variants
    std::int32_t TotalCharge;            // elementary charges
    std::int32_t SemiEmpiricalMethod;    // 1 TNDO/1, 2 TNDO/2
    std::int32_t ModifySlaterExponents;  // 0 or 1
    std::int32_t IterationLimit;         // of the field and of the responses
    double ConvergenceLimit;             // of the field and of the responses
};

struct RequestAtom {
    std::int32_t AtomicNumber;  // from 1; the core refuses those beyond argon
    std::int32_t Type;          // 0-based row of the parameter table
    double Position[3];         // Angstrom
};

struct TypeRecord {
    AtomTypeParameters Parameters;
    NuclearConstants Nucleus;
};

// One number of the parameter table that a variant changes.
struct ParameterChange {
    std::int32_t Variant;  // 0-based; of two changes of one number the later counts
    std::int32_t Type;     // 0-based row
    std::int32_t Field;    // 0-based place of a double in TypeRecord
    std::int32_t Unused;
    double Value;
};

struct Request {
    RequestHead Head;
    std::vector<RequestAtom> Atoms;
    std::vector<std::int32_t> NMRAtoms;  // 0-based
    std::vector<TypeRecord> Types;
    std::vector<ParameterChange> Changes;
};

// The answer to one parameter set: the bits of the status, then the values. Shieldings: one of each NMR atom, ppm;
// couplings: of each NMR atom with every atom of the molecule, Hz. Undefined numbers where the run was refused.
struct Answer {
    std::uint64_t Status;
    std::vector<double> Values;
};

// The next request of a descriptor; false at its end. Raises std::runtime_error with a sentence where the bytes don't
// make a request.
bool ReadRequest(int descriptor, Request& request);

// Values of one parameter set of a request.
std::size_t ValueCount(const Request& request);

// Writes and reads the answer to one parameter set; reading is false where the stream ends before the answer does.
// Writing raises std::runtime_error where it can't.
void WriteAnswer(int descriptor, const Answer& answer);
bool ReadAnswer(int descriptor, std::size_t valueCount, Answer& answer);
