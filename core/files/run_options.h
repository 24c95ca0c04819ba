// SPDX-License-Identifier: MIT
// The options of a run.
#pragma once

// Filled by SetDefaultOptions and the reader of the input: files/option_keys.cpp in a parameter run,
// files/spectrum_input.cpp in a spectrum run, which sets only the first seven.
struct RunOptions {
    int CalculateSpectra = 0;     // 1: simulate a spectrum
    int CalculateShielding = 0;   // 1: compute shielding constants
    int CalculateCoupling = 0;    // 1: compute spin-spin coupling constants
    int LogPrintLevel = 0;        // 0 to 9 how much is listed; 10 or more switches the log off
    double NMRFrequency = 0;      // spectrometer frequency, MHz
    double MinimalIntensity = 0;  // lines below it are dropped from the result
    int UseWeakCoupling = 0;      // non-zero: perturbation theory; 0: exact

    int SemiEmpiricalMethod = 0;           // 1 TNDO/1, 2 TNDO/2
    int TotalCharge = 0;                   // of the system, elementary charges
    int SpinMultiplicity = 0;              // must be 1
    float SCFConvergenceLimit = 0;         // of the wavefunction and of the responses
    int SCFIterationLimit = 0;             // of the wavefunction
    int SCFAccelerateConvergence = 0;      // 1: extrapolate the Fock matrix
    int ResponseAcceleration = 0;          // 1: the responses by a block Lanczos method
    int ModifySlaterExponents = 0;         // 1: other exponents for shielding
    int ComputeThreeCenterTerms = 0;       // 1: with the three-centre terms of the shielding
    int IncludeDOrbitalsForSecondRow = 0;  // 1: d orbitals on sodium to argon, TNDO/1 only
    double FinitePerturbation = 0;         // atomic units; read, and without effect on a result
    int CalculateShieldTensor = 0;         // 1: tensors beside the shielding constants
    int UnrestrictedWavefunction = 0;      // this and the next four have no key and stay 0
    int NextLowestState = 0;
    int ConfigurationInteraction = 0;
    int GeometryRun = 0;
    int RestraintsPresent = 0;
};
