// SPDX-License-Identifier: MIT
// The shielding terms of molecules within the process, for their tests.
#pragma once

#include "molecule/selected_atoms.h"
#include "nmr/magnetic_density.h"
#include "nmr/shielding_terms.h"
#include "tests/support/molecule_support.h"
#include "wavefunction/solve_wavefunction.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

inline constexpr char Tndo1[] = "SemiEmpiricalMethod = TNDO1";
inline constexpr char NoCoupling[] = "CalculateCoupling = no";
inline constexpr char ThreeCentre[] = "ComputeThreeCenterTerms = yes";
inline constexpr char Tensor[] = "CalculateShieldTensor = yes";
inline constexpr char Modified[] = "ModifySlaterExponents = yes";
inline constexpr char DOrbitals[] = "IncludeDOrbitalsForSecondRow = yes";

// The stored values have ten decimals and come from quadratures good to 1e-11 in units of 4213 ppm times densities.
inline constexpr double TermTolerance = 1e-6;  // ppm
// The 14 x 32 rule of the three-centre integrals against exact ones: 3e-7 at bond distances (measured), times 17.75 ppm
// and the four elements of a pair with densities up to 1.
inline constexpr double RuleTolerance = 2e-5;  // ppm
inline constexpr double IsotropicFactor = 17.7504539779;

// The stages of a run after the densities.
inline void FormTerms() {
    StartShieldingTerms();
    ComputeDiamagneticOnAtomTerms();
    for (int k = 0; k < 3; ++k) {
        for (int j = 0; j < 3; ++j) {
            if (j == k || ::Run.Options.CalculateShieldTensor) {
                ComputeParamagneticOnAtomTerms(j, k);
            }
        }
    }
    if (::Run.Options.ComputeThreeCenterTerms) {
        ComputeBondTerms();
        ComputeThreeCentreTerms();
    }
    SumShieldingTerms(::Run.Options.ComputeThreeCenterTerms != 0);
}

inline void Calculate() {
    UseShieldingTable();
    SolveWavefunction();
    ComputeMagneticDensities();
    FormTerms();
}

inline double Term(int number, int place) {
    return ::Run.Shielding.ShieldingTerms[number - 1][place];
}
