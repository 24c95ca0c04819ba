// SPDX-License-Identifier: MIT
// Doesn't compile: the path is missing.
// Compiled by a test with the syntax check of the compiler only.
#include "ground/fatal_error.h"

void Snippet([[maybe_unused]] const char* path) {
    FatalError(Message::UnreadableLine, 3);
}
