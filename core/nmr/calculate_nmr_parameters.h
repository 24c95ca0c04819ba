// SPDX-License-Identifier: MIT
// The order of the whole calculation of a run whose input has been read.
#pragma once

// Runs the calculations that the options ask for; the results stay in Run.
void CalculateNmrParameters();
