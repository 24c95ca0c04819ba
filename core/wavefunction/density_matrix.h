// SPDX-License-Identifier: MIT
// The closed-shell density of a set of orbitals.
#pragma once

// Copies OrbitalEnergiesRaw to OrbitalEnergies and builds density[N][N] from the rows of MolecularOrbitals. Levels are
// taken by interval of energy, not by number: an empty level that lies exactly at the highest occupied one is filled
// too. Spoils FirstScratch and SecondScratch.
void BuildDensity(double* density);
