// SPDX-License-Identifier: MIT
// Spin-spin couplings of a parameter run.
#pragma once

// With CalculateCoupling: allocated by PrepareSystem, filled by nmr/contact_coupling.cpp, written and freed by
// WriteResults. The couplings that a spectrum run reads are a record of their own, in spectrum/spin_data.h.
struct CouplingData {
    double* CouplingMatrix = nullptr;  // [NMRAtomCount][SelectedAtomCount] the contact response, then J in Hz
};
