// SPDX-License-Identifier: MIT
// The list of spectral lines that a simulator writes and FinishLineList brings into its final form.
#pragma once

#include "ground/run_state.h"

// A line of less intensity isn't kept.
inline constexpr double SmallestLineIntensity = 1e-10;

// Makes room for lineCount records in Run.Lines.SpectrumLines; what stands there is kept. Raises OutOfMemory.
void ReserveLines(long long lineCount);

inline bool IsKeptIntensity(double intensity) {
    return static_cast<double>(static_cast<float>(intensity)) >= SmallestLineIntensity;
}

// Writes a line into the slot at position if its intensity is kept, and returns the next free position. The slot must
// be there in any case.
inline long long WriteLine(long long position, double frequency, double intensity, int degeneracy) {
    SpectrumLine& line = Run.Lines.SpectrumLines[position];
    line.Frequency = static_cast<float>(frequency);
    line.Intensity = static_cast<float>(intensity);
    line.Degeneracy = degeneracy;
    return position + (IsKeptIntensity(intensity) ? 1 : 0);
}

// Sorts the first lineCount records by frequency, merges neighbours less than 0.001 Hz apart (a chain of neighbours
// collapses into one line at its lowest frequency), drops what stays below MinimalIntensity and sets
// SpectrumLineCount. Raises OutOfMemory.
void FinishLineList(long long lineCount);
