// SPDX-License-Identifier: MIT
// Finished texts on their way to the log, the output file or a terminal. What an input or a path brings along can't
// steer the terminal that shows them.
#pragma once

#include <cstdio>

// Writes a text. A control character other than a newline or a tab, and a byte that isn't part of a character, goes as
// "\x" with two hexadecimal digits: "\x1b". Backslashes stay single, as front ends know them from paths, so that the
// bytes can't be told from such a text again.
void PutPrintable(std::FILE* file, const char* text);
