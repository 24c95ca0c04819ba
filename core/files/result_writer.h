// SPDX-License-Identifier: MIT
// The result file, which the front end reads: a short text of labelled numbers, written once at the end of a run.
#pragma once

// Writes OutputFilePath from the results in Run, and frees those that it has written. Raises OutputFileNotCreated if
// the file can't be created or written whole.
void WriteResults();
