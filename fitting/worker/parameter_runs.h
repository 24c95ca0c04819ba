// SPDX-License-Identifier: MIT
// Runs of the core on a request, one after the other in this process.
#pragma once

#include "worker/requests.h"

// Puts the molecule of a request into Run, then answers its parameter sets from the given one on: set 0 is the table
// as it stands, set k the table with the changes of variant k - 1. To be called once in a process: a fatal error of
// the core ends it.
void AnswerParameterSets(const Request& request, int firstSet, int descriptor);
