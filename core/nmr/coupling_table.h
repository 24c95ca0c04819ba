// SPDX-License-Identifier: MIT
// The coupling table of the log.
#pragma once

// Lists K from reduced[NMRAtomCount][SelectedAtomCount] (1/cm3) and J from CouplingMatrix (Hz) for every ordered pair
// of an NMR atom and another atom of the calculation.
void ListCouplingConstants(const double* reduced);
