// SPDX-License-Identifier: MIT
// Drives the calculation stage by stage. A spectrum run has the last stage only.
#include "nmr/calculate_nmr_parameters.h"

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
    Run.Parameters.ActiveParameters = parameters;
    Run.Parameters.ActiveParameterFile = fileName;
    PrepareDipoleFactors();
    PrepareOrbitalTables();
    SolveWavefunction();
}

static void CalculateShieldingTerms() {
    StartShieldingTerms();
    ComputeDiamagneticOnAtomTerms();
    for (int k = 0; k < 3; ++k) {
        for (int j = 0; j < 3; ++j) {
            if (j == k || Run.Options.CalculateShieldTensor) {
                ComputeParamagneticOnAtomTerms(j, k);
            }
        }
    }
    if (Run.Options.ComputeThreeCenterTerms) {
        ComputeBondTerms();
        ComputeThreeCentreTerms();
    }
    SumShieldingTerms(Run.Options.ComputeThreeCenterTerms != 0);
}

void CalculateShieldingConstants() {
    SolveWithParameters(Run.Parameters.ParameterFileShielding, "nmr_shft.abp");
    LogProgress(Message::ComputingShieldings);
    ComputeMagneticDensities();
    CalculateShieldingTerms();
    if (Run.Report.LogEnabled) {
        ListShieldingTerms();
    }
    if (Run.Options.CalculateShieldTensor) {
        SolveShieldingTensors();
        if (Run.Report.LogEnabled) {
            ListShieldingTensors();
        }
    }
    CautionAboutShieldings();
}

// The first scratch buffer takes the reduced constants; it is large enough for them.
void CalculateCouplingConstants() {
    SolveWithParameters(Run.Parameters.ParameterFileCoupling, "nmr_cupl.abp");
    ComputeCouplingResponses();
    ConvertCouplingConstants(Run.Field.FirstScratch);
    if (Run.Report.LogEnabled) {
        ListCouplingConstants(Run.Field.FirstScratch);
    }
    CautionAboutCouplings();
}

static void CalculateParameters() {
    PrepareSystem();
    CautionAboutDistances();
    if (Run.Options.CalculateShielding) {
        CalculateShieldingConstants();
    }
    if (Run.Options.CalculateCoupling) {
        CalculateCouplingConstants();
    }
}

void CalculateNmrParameters() {
    if (Run.Options.CalculateShielding || Run.Options.CalculateCoupling) {
        CalculateParameters();
    }
    if (Run.Options.CalculateSpectra) {
        LogAppend("");
        LogProgress(Message::ComputingSpectrum);
        ComputeSpectrum();
    }
}
