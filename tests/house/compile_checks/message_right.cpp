// SPDX-License-Identifier: MIT
// Fits: a step and a path.
// Compiled by a test with the syntax check of the compiler only.
#include "ground/fatal_error.h"

void Snippet([[maybe_unused]] const char* path) {
    FatalError(Message::UnreadableLine, 3, path);
}
