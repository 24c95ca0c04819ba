// SPDX-License-Identifier: MIT
// Starts the program as a child with a time limit, stops it by signals, and gathers what it leaves behind.
#pragma once

#include <string>
#include <sys/types.h>
#include <utility>
#include <vector>

// What a child is started with.
struct ChildSettings {
    std::vector<std::string> Arguments;                                 // of the program
    std::string Directory = "";                                         // current directory; "" keeps the test's own
    std::vector<std::pair<std::string, std::string>> Environment = {};  // added to the test's own
    std::vector<int> IgnoredSignals = {};                               // inherited as ignored
    std::string StandardOutput = "/dev/null";                           // file
    std::string StandardError = "";                                     // file; "" keeps the test's own
};

// Starts the program; its process id.
pid_t StartProgram(const ChildSettings& settings);

// Waits for a child until a time limit, then kills it; its exit code, minus the number of the signal that
// ended it, or -1000 when the time was up.
int WaitForProgram(pid_t child, double seconds);

// Starts the program and waits.
int RunProgram(const ChildSettings& settings, double seconds = 30.0);

// Waits until a file holds a text; false when the time is up.
bool WaitForText(const std::string& path, const std::string& text, double seconds);

// Waits until a child takes SIGTERM as a wish to stop; false when the time is up.
bool WaitUntilStoppable(pid_t child, double seconds);

// True while a child hasn't ended; keeps its status for a later wait.
bool IsRunning(pid_t child);

// Seconds since an arbitrary moment.
double Now();

// Waits, whatever happens.
void Sleep(double seconds);
