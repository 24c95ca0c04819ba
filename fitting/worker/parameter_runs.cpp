// SPDX-License-Identifier: MIT
// Runs of the core on a request.
#include "worker/parameter_runs.h"

#include "files/atom_selection.h"
#include "files/option_keys.h"
#include "files/text_scan.h"
#include "ground/memory.h"
#include "ground/run_state.h"
#include "nmr/calculate_nmr_parameters.h"
#include "wavefunction/prepare_system.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <sys/time.h>

static constexpr long SetSeconds = 600;  // of processor time; no molecule of a fit takes that long

// An array of the run or of the process; the parent sees to what becomes of the request if there is no memory.
template <class Record> static void Allocate(Record*& array, std::size_t count) {
    if (!AllocateZeroed(array, static_cast<long long>(count))) {
        throw std::bad_alloc();
    }
}

static void SetOptions(const RequestHead& head) {
    Run.Job.RunKind = ParameterRun;
    Run.Job.ActiveRunKind = ParameterRun;
    SetDefaultOptions();
    Run.Options.CalculateShielding = head.Quantity == ShieldingRequest;
    Run.Options.CalculateCoupling = head.Quantity == CouplingRequest;
    Run.Options.SemiEmpiricalMethod = head.SemiEmpiricalMethod;
    Run.Options.TotalCharge = head.TotalCharge;
    Run.Options.SCFConvergenceLimit = NarrowReal(head.ConvergenceLimit);
    Run.Options.SCFIterationLimit = head.IterationLimit;
    Run.Options.SCFAccelerateConvergence = 1;
    Run.Options.ResponseAcceleration = 1;
    Run.Options.ModifySlaterExponents = head.ModifySlaterExponents;
    Run.Options.ComputeThreeCenterTerms = 1;
    Run.Options.LogPrintLevel = 10;
}

static void SetMolecule(const Request& request) {
    Run.Molecule.AtomCount = request.Head.AtomCount;
    Run.Molecule.NMRAtomCount = request.Head.NMRAtomCount;
    Allocate(Run.Molecule.AtomRecords, request.Atoms.size());
    Allocate(Run.Molecule.InputCoordinates, request.Atoms.size());
    Allocate(Run.Molecule.NMRAtomList, request.NMRAtoms.size());
    for (std::size_t i = 0; i < request.Atoms.size(); ++i) {
        const RequestAtom& atom = request.Atoms[i];
        AtomRecord& record = Run.Molecule.AtomRecords[i];
        record.AtomIndex = static_cast<int>(i);
        record.AtomicNumber = atom.AtomicNumber;
        record.AtomType = atom.Type;
        record.MoleculeIndex = 1;
        std::copy(atom.Position, atom.Position + 3, Run.Molecule.InputCoordinates[i].Position);
    }
    for (std::size_t i = 0; i < request.NMRAtoms.size(); ++i) {
        Run.Molecule.NMRAtomList[i] = request.NMRAtoms[i] + 1;
    }
}

// One table serves both quantities: a run has one of them.
static void SetTable(const Request& request) {
    const std::size_t entries = 2 * request.Types.size();
    Run.Parameters.AtomTypeCount = request.Head.TypeCount;
    Allocate(Run.Parameters.AtomTypeNames, request.Types.size());
    Allocate(Run.Parameters.ParameterFileShielding, entries);
    Allocate(Run.Parameters.ParameterFileCoupling, entries);
    Allocate(Run.Parameters.CouplingConstants, entries);
}

static void FillTable(const std::vector<TypeRecord>& types) {
    for (std::size_t i = 0; i < types.size(); ++i) {
        Run.Parameters.ParameterFileShielding[i] = types[i].Parameters;
        Run.Parameters.ParameterFileCoupling[i] = types[i].Parameters;
        Run.Parameters.CouplingConstants[i] = types[i].Nucleus;
    }
}

static std::vector<TypeRecord> TableOfSet(const Request& request, int set) {
    std::vector<TypeRecord> types = request.Types;
    for (const ParameterChange& change : request.Changes) {
        if (change.Variant == set - 1) {
            char* record = reinterpret_cast<char*>(&types[static_cast<std::size_t>(change.Type)]);
            std::memcpy(record + static_cast<std::size_t>(change.Field) * sizeof(double), &change.Value,
                        sizeof change.Value);
        }
    }
    return types;
}

// The signal ends the process. A clock on the wall would make the answer depend on what else the machine does.
static void LimitProcessorTime() {
    itimerval limit = {};
    limit.it_value.tv_sec = SetSeconds;
    setitimer(ITIMER_PROF, &limit, nullptr);
}

static Answer RunSet(const Request& request) {
    Run.Report.Doubts = 0;
    Run.Field.ScfPassCounter = -1;  // each set starts as a run of its own does
    Answer answer;
    if (request.Head.Quantity == CouplingRequest) {
        CalculateCouplingConstants();
        answer.Values.assign(Run.Coupling.CouplingMatrix, Run.Coupling.CouplingMatrix + ValueCount(request));
    } else {
        CalculateShieldingConstants();
        for (const std::int32_t atom : request.NMRAtoms) {
            answer.Values.push_back(Run.Shielding.ShieldingTotal[atom]);  // all atoms are selected, in their order
        }
    }
    answer.Status = Run.Report.Doubts;
    return answer;
}

void AnswerParameterSets(const Request& request, int firstSet, int descriptor) {
    SetOptions(request.Head);
    SetMolecule(request);
    SetTable(request);
    FillTable(TableOfSet(request, firstSet));
    BuildCappingAtoms();
    BuildSelectedAtomList();
    PrepareSystem();  // which checks these parameters
    for (int set = firstSet; set <= request.Head.VariantCount; ++set) {
        LimitProcessorTime();
        if (set != firstSet) {
            FillTable(TableOfSet(request, set));
            CheckParameters(Run.Parameters.ActiveParameters, Run.Parameters.ActiveParameterFile);
        }
        WriteAnswer(descriptor, RunSet(request));
    }
}
