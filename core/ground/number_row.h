// SPDX-License-Identifier: MIT
// The plain line of numbers that all listings share.
#pragma once

// Lists 1 to 6 numbers in one line of the log.
void LogNumberRow(const double* values, int count);
