// SPDX-License-Identifier: MIT
// The stored factors of the shielding terms, with alpha the fine-structure constant. The two numbers have twelve and
// eight digits, on purpose: results depend on them, and they don't belong to the same alpha.
#pragma once

#include "ground/run_state.h"

inline constexpr double IsotropicFactor = 17.7504539779;              // ppm bohr: 1e6 alpha^2 / 3
inline constexpr double HalfIsotropicFactor = 0.5 * IsotropicFactor;  // of shell 2, and of a trace
inline constexpr double ThirdIsotropicFactor = IsotropicFactor / 3.0;
inline constexpr double OneCentreTensorFactor = 0.75 * IsotropicFactor;
inline constexpr double TwoCentreTensorFactor = 1.5 * IsotropicFactor;
inline constexpr double LondonFactor = 0.5 * IsotropicFactor;  // ppm bohr; times a phase in bohr^2 and 1/bohr^3

// ppm bohr^3: 1e6 alpha / sqrt(3), over the scale of the field.
inline double ParamagneticFactor() {
    return 4213.0981 / Run.Options.FinitePerturbation;
}
