// SPDX-License-Identifier: MIT
// The run state, and what becomes of its arrays.
#include "ground/run_state.h"

#include "files/parameter_input.h"
#include "ground/memory.h"
#include "nmr/first_order_orbitals.h"
#include "numerics/eigensolver.h"
#include "spectrum/exact_spectrum.h"
#include "spectrum/line_list.h"
#include "spectrum/sub_matrices.h"
#include "spectrum/weak_coupling_spectrum.h"
#include "wavefunction/core_hamiltonian.h"
#include "wavefunction/dipole.h"

RunState Run;

// The arrays of the wavefunction, and what its steps keep of their own.
static void FreeWavefunction() {
    FreeArray(Run.OrbitalRanges);
    FreeArray(Run.OrbitalExponents);
    FreeArray(Run.OrbitalAtoms);
    FreeArray(Run.OrbitalKinds);
    FreeArray(Run.OrbitalPrincipalNumbers);
    FreeArray(Run.CoreHamiltonian);
    FreeArray(Run.GammaMatrix);
    FreeArray(Run.FirstScratch);
    FreeArray(Run.SecondScratch);
    FreeArray(Run.FockMatrix);
    FreeArray(Run.MolecularOrbitals);
    FreeArray(Run.HalfDensity);
    FreeArray(Run.TotalDensity);
    FreeArray(Run.PreviousDensity);
    FreeArray(Run.DiagonalHistory);
    FreeArray(Run.CoreDiagonal);
    FreeArray(Run.OrbitalEnergiesRaw);
    FreeArray(Run.OrbitalEnergies);
    FreeArray(Run.CommutatorHistory);
    FreeArray(Run.FockHistory);
    FreeCoreHamiltonianWork();
    FreeFirstOrderWork();
    FreeDipoleFactors();
}

static void FreeShielding() {
    for (double*& density : Run.MagneticDensities) {
        FreeArray(density);
    }
    for (double*& term : Run.ShieldingTerms) {
        FreeArray(term);
    }
    FreeArray(Run.ShieldingExponents);
    FreeArray(Run.ShieldingTotal);
    FreeArray(Run.ShieldingTensor);
    FreeArray(Run.TensorDiamagneticTwoCentre);
    FreeArray(Run.TensorParamagneticOneCentre);
    FreeArray(Run.TensorParamagneticTwoCentre);
}

void FreeRunData() {
    if (Run.ActiveRunKind == 0) {  // the first call comes before any input is read: nothing is there to be freed
        Run.ActiveRunKind = ParameterRun;
        return;
    }
    FreeParameterInputWork();
    FreeArray(Run.AtomRecords);
    FreeArray(Run.AtomCoordinates);
    FreeArray(Run.NMRAtomList);
    FreeArray(Run.QuantumSelection.SelectedAtomList);
    FreeWavefunction();
    FreeShielding();
    FreeArray(Run.IsotopicNumbers);
    FreeArray(Run.NucleiInGroup);
    FreeArray(Run.ChemicalShifts);
    FreeArray(Run.CouplingMatrix);
    FreeArray(Run.SpectrumLines);
    Run.SpectrumLineCapacity = 0;
    FreeSortBuffer();
    FreeSubMatrices();
    FreeExactSpectrumWork();
    FreeWeakCouplingWork();
    FreeEigensolverWork();
}
