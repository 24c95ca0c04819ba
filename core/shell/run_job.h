// SPDX-License-Identifier: MIT
// One run from start to stop: its files and the order of its steps.
#pragma once

// Runs the job of the given kind with the fields of the command line, which stand in Run. A stop
// unwinds to here and frees the run's data.
void RunOneJob(int kind);
