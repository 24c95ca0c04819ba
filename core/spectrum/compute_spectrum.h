// SPDX-License-Identifier: MIT
// The spectrum stage of a run: simulation and listing.
#pragma once

// Simulates the spin system of Run exactly or, if UseWeakCoupling says so, by perturbation theory, and lists the system
// and its lines in the log.
void ComputeSpectrum();

// Lists values[rows][columns] in the log, six columns at a time: a block of six prints all rows and an empty line, the
// remaining columns print all rows.
void ListTable(const double* values, int rows, int columns);
