// SPDX-License-Identifier: MIT
// The keyed options of nmrparam.in.
#pragma once

// Sets every option of Run that has a default to it.
void SetDefaultOptions();

// Offers a line to all keys, in their order. A key that matches takes the line, whatever the value: the line is
// cleared, and an unreadable value leaves its option as it is. True if the line was taken.
bool ReadOption(char* line);

// The place of the value in "key = value", the key in its exact case; null if the line is no such thing.
const char* MatchOptionKey(const char* line, const char* key);
