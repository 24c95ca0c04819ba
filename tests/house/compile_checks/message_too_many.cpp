// SPDX-License-Identifier: MIT
// Doesn't compile: the text has no place for the last argument.
// Compiled by a test with the syntax check of the compiler only.
#include "ground/fatal_error.h"

void Snippet([[maybe_unused]] const char* path) {
    FatalError(Message::UnreadableLine, 3, path, 1);
}
