// SPDX-License-Identifier: MIT
// Rounding to single precision that no optimiser takes out.
#pragma once

// The value passes through memory on purpose. Where a compiler has put two such roundings and the widenings after them
// side by side into vector registers, it may take narrowing and widening for nothing (g++ 12 does from -O2 on), and
// all digits stay.
inline float RoundToSingle(double value) {
    volatile float rounded = static_cast<float>(value);
    return rounded;
}
