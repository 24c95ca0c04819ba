// SPDX-License-Identifier: MIT
// The process from its entry to its exit: instance set-up, the message loop, the window procedure.
#pragma once

#include <cstdint>

struct PlatformWindow;

// Runs the process for a command line "parameterDirectory workDirectory kind logFile" (fields are split at white
// space, missing ones are empty, a kind other than 2 is 1); the exit code, which is 0 on every regular way out.
int ProcessEntry(const char* commandLine);

// Handles one message of the main window.
std::intptr_t MainWindowProc(PlatformWindow* window, unsigned id, std::uintptr_t wParameter, std::intptr_t lParameter);
