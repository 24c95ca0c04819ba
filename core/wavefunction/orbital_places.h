// SPDX-License-Identifier: MIT
// The order of the orbitals of an atom.
#pragma once

enum OrbitalPlace { S, X, Y, Z, DZ2, DXZ, DYZ, DX2, DXY };
