// SPDX-License-Identifier: MIT
// The states of the groups that a line doesn't touch. They neither shift it nor change its intensity, so the line is
// written once, with the sum over all of them.
#pragma once

#include "spectrum/line_list.h"

#include <algorithm>
#include <climits>

// Combinations of total spins of one statistical weight.
struct SpectatorClass {
    double Weight;  // how often each combination occurs
    double States;  // product states of all combinations of this weight
};

// A class beside the total spins of the groups that make the lines.
struct LineClass {
    double Weight;      // statistical weight of each line
    double States;      // coincident lines
    double Degeneracy;  // of all of them
};

// Filled by the functions below.
struct SpectatorTables {
    SpectatorClass* Classes;  // [ClassCount] by ascending weight
    SpectatorClass* Folded;   // [values of 2J * ClassCount] the next classes, while a group is added
    LineClass* LineClasses;   // [ClassCount]
    int ClassCount;
};

extern SpectatorTables Spectators;

// Starts without a spectator: one state of weight 1. Raises OutOfMemory.
void StartSpectators();

// Adds a group of so many nuclei. Raises OutOfMemory.
void AddSpectatorGroup(int nuclei);

// Weighs the lines to come, which belong to a combination of total spins of their own of this weight.
void WeighLines(double ownWeight);

// Writes a line of this intensity for every state of the spectators into the slot at position, as one record. Each is
// kept or not by its own weighted intensity. Returns the next free position.
inline long long WriteWeightedLine(long long position, double frequency, double intensity) {
    double sum = 0.0;
    double degeneracy = 0.0;
    for (int k = 0; k < Spectators.ClassCount; ++k) {
        const LineClass& line = Spectators.LineClasses[k];
        const double weighted = intensity * line.Weight;
        if (IsKeptIntensity(weighted)) {
            sum += weighted * line.States;
            degeneracy += line.Degeneracy;
        }
    }
    return WriteLine(position, frequency, sum, static_cast<int>(std::min<double>(degeneracy, INT_MAX)));
}
