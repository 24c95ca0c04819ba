// SPDX-License-Identifier: MIT
// Whether levels of the whole system, each a sum of levels of its parts, coincide. Where they do, the eigenvectors of
// the whole are mixtures that the parts don't show, and a line may count for more or fewer transitions.
#pragma once

// Forgets all levels.
void StartLevels();

// Adds the energies (Hz) of count states, so many steps below the highest projection, to the SubMatrix in hand of the
// part in hand. Raises OutOfMemory.
void NoteLevels(const double* energies, int count, int steps);

// Ends the SubMatrix in hand, the part in hand. Raise OutOfMemory.
void EndLevelsOfSubMatrix();
void EndLevelsOfPart();

// True if two levels of one SubMatrix and one projection of the whole system of these parts are less than distance (Hz)
// apart. Raises OutOfMemory.
bool LevelsCoincide(double distance);

// Frees the levels.
void FreeLevels();
