// SPDX-License-Identifier: MIT
// Registers of LaneCount numbers, for the files of kernels: included once by the file of each instruction set, which
// defines LaneCount before it. Such a file has compile options of its own, so nothing here may be shared between files:
// all is local to the one that includes it, and no header with inline functions is included.
#pragma once

#define AlwaysInline static inline __attribute__((always_inline))

namespace {

using Lanes __attribute__((vector_size(LaneCount * 8))) = double;
using LaneMask __attribute__((vector_size(LaneCount * 8))) = long long;           // what a comparison of Lanes gives
using LaneBits __attribute__((vector_size(LaneCount * 8))) = unsigned long long;  // the digits of Lanes
using LooseLanes __attribute__((vector_size(LaneCount * 8), aligned(8), may_alias)) = double;

}  // namespace

AlwaysInline Lanes Load(const double* source) {
    return *reinterpret_cast<const LooseLanes*>(source);
}

AlwaysInline void Store(double* target, Lanes value) {
    *reinterpret_cast<LooseLanes*>(target) = value;
}

AlwaysInline Lanes Absolute(Lanes value) {
    return value < 0.0 ? -value : value;
}

// The sum of the eight lanes of a row, in the one order.
AlwaysInline double SumOfEight(const double* lanes) {
    return ((lanes[0] + lanes[4]) + (lanes[2] + lanes[6])) + ((lanes[1] + lanes[5]) + (lanes[3] + lanes[7]));
}
