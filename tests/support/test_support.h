// SPDX-License-Identifier: MIT
// What the tests share: spin systems as values, simulation within the process, temporary directories, text
// files, and steps that end the process and so run in a child.
#pragma once

#include "ground/run_state.h"

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

// A spin system; N groups.
struct SpinSystem {
    std::vector<int> Isotopes;      // [N] mass numbers
    std::vector<int> Nuclei;        // [N] nuclei in each group
    std::vector<double> Shifts;     // [N] ppm
    std::vector<double> Couplings;  // [N][N] Hz, row by row
    double Frequency;               // MHz
    double MinimalIntensity;        // lines below are dropped
    int Weak;                       // non-zero: perturbation theory
};

// A system of like nuclei, one in each group, at 100 MHz, exact, with the couplings above the diagonal row by
// row.
SpinSystem LikeSpins(const std::vector<double>& shifts, const std::vector<double>& upperCouplings);

// Fills the spin system of Run, as a reader would.
void LoadSpinSystem(const SpinSystem& system);

// Simulates a system as ComputeSpectrum does and returns the finished lines; leaves no arrays in Run.
std::vector<SpectrumLine> Simulate(const SpinSystem& system);

// Makes lines the list in Run that FinishLineList works on.
void LoadLines(const std::vector<SpectrumLine>& lines);

// The valid lines of Run.
std::vector<SpectrumLine> FinishedLines();

// Sums over lines, in 64 bits.
double TotalIntensity(const std::vector<SpectrumLine>& lines);
double FirstMoment(const std::vector<SpectrumLine>& lines);  // of intensity times frequency, Hz

// A new directory, removed with all that is in it at the end of its scope.
struct TemporaryDirectory {
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    std::string Path;  // absolute, without a slash at the end
};

// The whole of a file; "(no file)" when there is none.
std::string ReadText(const std::string& path);
void WriteText(const std::string& path, const std::string& text);

// The text with every occurrence of part replaced.
std::string Replaced(std::string text, const std::string& part, const std::string& by);

// A stream that gives a text and then an error instead of its end.
struct DamagedStream {
    std::FILE* Open();  // once, while this lives
    std::string Text;
    std::size_t Place = 0;  // of the next byte
};

// Runs steps in a child process, for 20 s at most; its exit code, or minus the number of the signal that
// ended it.
int ExitCodeOfChild(const std::function<void()>& steps);

// Points the paths of Run at files of a directory and switches to messages in files: a run that isn't started
// by RunOneJob.
void UseFilesIn(const std::string& directory);

// Gives the run state its values at process start; frees what hangs on it.
void ResetRun();
