// SPDX-License-Identifier: MIT
// Entry point of the Windows build. The command line keeps its quotes: a path in quotes with a blank isn't one field.
#include "ground/platform_windows.h"
#include "shell/process_entry.h"

#include <windows.h>

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR commandLine, int) {
    KeepInstance(instance);
    return ProcessEntry(commandLine);
}
