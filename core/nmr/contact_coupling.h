// SPDX-License-Identifier: MIT
// Spin-spin coupling by the Fermi contact mechanism: the first-order response of the wavefunction to a unit
// perturbation on the valence s orbital of each NMR atom (Pople, McIver, Ostlund 1968, without finite steps).
#pragma once

#include "wavefunction/response_operator.h"

// Fills ContactResponse, the buffer of CouplingMatrix, [NMRAtomCount][SelectedAtomCount], from the wavefunction in Run.
// Spoils FirstScratch, SecondScratch, FockMatrix, HalfDensity, PreviousDensity and DiagonalHistory. Raises OutOfMemory.
void ComputeCouplingResponses();

// The operator of the contact responses: the densities of the two spins are opposite, so that there is exchange only.
ResponseOperator ContactOperator();

// Turns the response into reduced constants K in reduced[NMRAtomCount][SelectedAtomCount] (1/cm3) and, in place, into
// J in CouplingMatrix (Hz), with the nuclear constants of the atoms' types.
void ConvertCouplingConstants(double* reduced);
