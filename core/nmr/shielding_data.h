// SPDX-License-Identifier: MIT
// Shieldings, and the responses of the field behind them.
#pragma once

// With CalculateShielding: allocated by PrepareSystem; the densities are filled by nmr/magnetic_density.cpp, the rest
// by nmr/shielding_terms.cpp and its kin, written and freed by WriteResults. By place in SelectedAtomList; a tensor has
// nine values, row = field direction, column = moment direction.
// Terms and tensors of an atom whose shielding nobody sees stay 0.
struct ShieldingData {
    double* MagneticDensities[3] = {};             // [N][N] each, imaginary first-order densities of a field in x, y, z
    double* ShieldingExponents = nullptr;          // [SelectedAtomCount][3] s, p, d, 1/bohr
    double* ShieldingTerms[10] = {};               // [SelectedAtomCount] each, terms 1 to 10, ppm
    double* ShieldingTotal = nullptr;              // [SelectedAtomCount] ppm
    double* ShieldingTensor = nullptr;             // [SelectedAtomCount][9] one-centre diamagnetic, then the total, ppm
    double* TensorDiamagneticTwoCentre = nullptr;  // [SelectedAtomCount][9] ppm; then three eigenvalues, isotropic
                                                   // value and anisotropy in the first five
    double* TensorParamagneticOneCentre = nullptr;  // [SelectedAtomCount][9] ppm
    double* TensorParamagneticTwoCentre = nullptr;  // [SelectedAtomCount][9] ppm
};
