// SPDX-License-Identifier: MIT
// The paths of a job's files.
#pragma once

// Joins a directory (with its backslash) and a name into result[FilePathSize]; a name that begins with a backslash
// stands alone. More than 128 characters together are refused through WriteFatalFile.
void ComposePath(const char* name, const char* directory, char* result);
