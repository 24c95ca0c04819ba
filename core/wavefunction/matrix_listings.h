// SPDX-License-Identifier: MIT
// Listings of matrices and eigenvectors, as LogPrintLevel asks for them.
#pragma once

// Moments of the self-consistent field at which something may be listed.
enum ScfStage { CoreStage, FockStage, DensityStage, FinalStage };

// Lists what LogPrintLevel asks for at a stage: at 4 the core Hamiltonian, and in each iteration the Fock matrix, the
// orbitals and the density (in HalfDensity, not yet halved); at 1 to 3 the final orbitals, the final density, or both.
void ListScfStage(ScfStage stage);
