// SPDX-License-Identifier: MIT
// The chief header: the process-wide state of the one run that a process does. Plain data with static lifetime, as
// records by owner. A record's header stands in its owner's folder, includes nothing, and says who fills it.
#pragma once

#include "files/run_options.h"
#include "ground/process_data.h"
#include "molecule/molecule_data.h"
#include "molecule/parameter_data.h"
#include "nmr/coupling_data.h"
#include "nmr/shielding_data.h"
#include "spectrum/line_data.h"
#include "spectrum/spin_data.h"
#include "wavefunction/basis_data.h"
#include "wavefunction/field_data.h"

// Arrays of the run are noted where they are allocated (ground/memory.h), and FreeRunData frees them; a pointer is null
// whenever nothing hangs on it.
struct RunState {
    ProcessData Process;       // the process and its window
    JobData Job;               // the command line and its paths
    ReportData Report;         // messages and unwinding
    RunOptions Options;        // options of the input
    ParameterData Parameters;  // parameter files
    MoleculeData Molecule;     // atoms, selections
    BasisData Basis;           // orbitals, electrons, levels
    FieldData Field;           // the wavefunction
    ShieldingData Shielding;   // shieldings and tensors
    CouplingData Coupling;     // couplings of a parameter run
    SpinData Spins;            // spin system of a spectrum run
    LineData Lines;            // lines of its spectrum
};

extern RunState Run;

// Frees every array of the run that is there and nulls its pointer; safe at any stage. The first call of a process
// does nothing but set ActiveRunKind to 1.
void FreeRunData();
