// SPDX-License-Identifier: MIT
// Tables by orbital for the parameter table in force.
#pragma once

// Fills OrbitalAtoms, OrbitalKinds, OrbitalPrincipalNumbers, IsolatedEnergy and HeatOffset from
// ActiveParameters, for the atoms of the selection.
void PrepareOrbitalTables();
