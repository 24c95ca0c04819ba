// SPDX-License-Identifier: MIT
// The order of the whole calculation of a run whose input has been read.
#pragma once

// Runs the calculations that the options ask for; the results stay in Run.
void CalculateNmrParameters();

// The two parts of a parameter run, after PrepareSystem: each solves the wavefunction with its own parameters, so that
// either can be called again with others.
void CalculateShieldingConstants();
void CalculateCouplingConstants();
