// SPDX-License-Identifier: MIT
// Drives the calculation stage by stage. A spectrum run has the last stage only.
#include "nmr/calculate_nmr_parameters.h"

#include "files/parameter_files.h"
#include "ground/log.h"
#include "ground/run_state.h"
#include "nmr/contact_coupling.h"
#include "nmr/coupling_table.h"
#include "nmr/magnetic_density.h"
#include "nmr/shielding_tables.h"
#include "nmr/shielding_terms.h"
#include "spectrum/compute_spectrum.h"
#include "wavefunction/dipole.h"
#include "wavefunction/orbital_tables.h"
#include "wavefunction/prepare_system.h"
#include "wavefunction/run_cautions.h"
#include "wavefunction/solve_wavefunction.h"

// Makes a parameter table the one in force and solves the wavefunction with it.
static void SolveWithParameters(const AtomTypeParameters* parameters, const char* fileName) {
    Run.ActiveParameters = parameters;
    Run.ActiveParameterFile = fileName;
    PrepareDipoleFactors();
    PrepareOrbitalTables();
    SolveWavefunction();
}

static void CalculateShieldingTerms() {
    StartShieldingTerms();
    ComputeDiamagneticOnAtomTerms();
    for (int k = 0; k < 3; ++k) {
        for (int j = 0; j < 3; ++j) {
            if (j == k || Run.CalculateShieldTensor) {
                ComputeParamagneticOnAtomTerms(j, k);
            }
        }
    }
    if (Run.ComputeThreeCenterTerms) {
        ComputeBondTerms();
        ComputeThreeCentreTerms();
    }
    SumShieldingTerms(Run.ComputeThreeCenterTerms != 0);
}

static void CalculateShieldingConstants() {
    SolveWithParameters(Run.ParameterFileShielding, "nmr_shft.abp");
    LogProgress(4146);
    ComputeMagneticDensities();
    CalculateShieldingTerms();
    if (Run.LogEnabled) {
        ListShieldingTerms();
    }
    if (Run.CalculateShieldTensor) {
        SolveShieldingTensors();
        if (Run.LogEnabled) {
            ListShieldingTensors();
        }
    }
    CautionAboutShieldings();
}

// The first scratch buffer takes the reduced constants; it is large enough for them.
static void CalculateCouplingConstants() {
    SolveWithParameters(Run.ParameterFileCoupling, "nmr_cupl.abp");
    ComputeCouplingResponses();
    ConvertCouplingConstants(Run.FirstScratch);
    if (Run.LogEnabled) {
        ListCouplingConstants(Run.FirstScratch);
    }
    CautionAboutCouplings();
}

static void CalculateParameters() {
    PrepareSystem();
    CautionAboutDistances();
    if (Run.CalculateShielding) {
        CalculateShieldingConstants();
    }
    if (Run.CalculateCoupling) {
        CalculateCouplingConstants();
    }
}

void CalculateNmrParameters() {
    if (Run.CalculateShielding || Run.CalculateCoupling) {
        CalculateParameters();
    }
    if (Run.CalculateSpectra) {
        LogAppend("");
        LogProgress(4148);
        ComputeSpectrum();
    }
}
