// SPDX-License-Identifier: MIT
// Doesn't compile: a number where the name of a message belongs.
// Compiled by a test with the syntax check of the compiler only.
#include "ground/fatal_error.h"

void Snippet([[maybe_unused]] const char* path) {
    FatalError(24626, 3, path);
}
