// SPDX-License-Identifier: MIT
// Parts of a spin system that don't couple to one another, so that each can be simulated by itself.
#pragma once

#include "spectrum/sub_matrices.h"

// Groups that are simulated together. The total projection of each class of groups is conserved: only groups of one
// class can flip against each other.
struct SpinPart {
    int GroupCount;
    int Groups[LargestGroupCount];   // [GroupCount] places in the spin system, ascending
    int Nuclei[LargestGroupCount];   // [GroupCount] nuclei in each
    int Classes[LargestGroupCount];  // [GroupCount] class of each, from 0; class 0 has the most nuclei
    int ClassCount;
};

// The whole spin system of Run as one part of one class: the definition of an exact spectrum.
SpinPart WholeSystem();

// The parts of the spin system of Run that couplings connect, of whichever isotopes, in the order of their first
// groups; a class for each isotope. parts has room for LargestGroupCount; returns their number.
int FindConnectedParts(SpinPart* parts);
