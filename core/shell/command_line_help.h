// SPDX-License-Identifier: MIT
// The two questions that the Linux program answers by itself instead of running a job: --help and --version.
#pragma once

// Answers on standard output where the first argument is --help or --version; whether it was. The exit code is 0, or 1
// where the answer couldn't be written.
bool AnswerCommandLine(int argc, const char* const* argv, int* exitCode);
