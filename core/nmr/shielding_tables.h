// SPDX-License-Identifier: MIT
// The shielding tables of the log.
#pragma once

// Lists the ten terms and their sums, ppm, for every atom of the calculation.
void ListShieldingTerms();

// Lists the tensors with their isotropic values, anisotropies and eigenvalues, ppm.
void ListShieldingTensors();
