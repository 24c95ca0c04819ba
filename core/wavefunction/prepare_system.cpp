// SPDX-License-Identifier: MIT
// Prepares a parameter run, and validates its request, its atoms and its electron count.
#include "wavefunction/prepare_system.h"

#include "files/parameter_files.h"
#include "ground/fatal_error.h"
#include "ground/log.h"
#include "ground/memory.h"
#include "ground/message_poll.h"
#include "ground/run_state.h"
#include "molecule/element_tables.h"
#include "molecule/selected_atoms.h"
#include "nmr/first_order_orbitals.h"
#include "numerics/eigensolver.h"
#include "wavefunction/dipole.h"
#include "wavefunction/fock_extrapolation.h"

#include <algorithm>
#include <climits>

static constexpr int FirstThirdRow = 11;  // sodium; the row ends with LastElement
static constexpr int OrbitalsWithD = 9;
static constexpr int OrbitalsWithoutD = 4;
static constexpr int LastEnvironmentElement = 54;  // atoms outside the selection only carry charge
static constexpr int PollShiftOfParameterRun = 13;

static const char* YesOrNo(int option) {
    return option ? "Yes" : "No";
}

// d orbitals are a matter of TNDO/1 alone.
static void ChooseOrbitals() {
    const bool withD = Run.IncludeDOrbitalsForSecondRow && Run.SemiEmpiricalMethod == 1;
    if (Run.IncludeDOrbitalsForSecondRow && Run.SemiEmpiricalMethod == 2) {
        Warning(16384);
    }
    std::fill(OrbitalCountTable + FirstThirdRow - 1, OrbitalCountTable + LastElement,
              withD ? OrbitalsWithD : OrbitalsWithoutD);
    for (int place = 0; withD && place < Run.SelectedAtomCount; ++place) {
        const int code = SelectedAtom(place).AtomicNumber;
        if (code >= FirstThirdRow && code <= LastElement) {
            Run.QuantumSelection.LastOrbital += OrbitalsWithD - OrbitalsWithoutD;
            Run.OrbitalCount += OrbitalsWithD - OrbitalsWithoutD;
        }
    }
}

// The flags beside method and multiplicity have no key in the input; they are tested all the same.
static void CheckRequest() {
    if (Run.SemiEmpiricalMethod != 1 && Run.SemiEmpiricalMethod != 2) {
        FatalError(24640);
    }
    if (Run.SpinMultiplicity != 1) {
        FatalError(24641);
    }
    if (Run.NextLowestState) {
        FatalError(24642);
    }
    if (Run.ConfigurationInteraction) {
        FatalError(24643);
    }
    if (Run.GeometryRun) {
        FatalError(24644);
    }
    if (Run.RestraintsPresent) {
        Warning(16385);
    }
}

static void CheckRealAtoms() {
    for (int place = 0; place < Run.SelectedAtomCount; ++place) {
        if (SelectedAtom(place).AtomicNumber > 0) {
            return;
        }
    }
    if (Run.SelectedAtomCount == Run.AtomCount) {
        FatalError(24645);
    }
    FatalError(24646);
}

static void ListOptions() {
    LogMessage(8192, static_cast<double>(Run.SCFConvergenceLimit), Run.SCFIterationLimit);
    LogMessage(8193, YesOrNo(Run.SCFAccelerateConvergence));
    LogMessage(8208, YesOrNo(Run.IncludeDOrbitalsForSecondRow));
    if (Run.CalculateShielding) {
        LogMessage(8209, YesOrNo(Run.ModifySlaterExponents));
        LogMessage(8210, YesOrNo(Run.ComputeThreeCenterTerms));
    }
    if (Run.CalculateSpectra) {
        LogMessage(8212, Run.NMRFrequency);
    }
}

static void ScaleCoordinates() {
    for (int i = 0; i < Run.AtomCount; ++i) {
        for (double& coordinate : Run.AtomCoordinates[i].Position) {
            coordinate *= BohrsPerAngstrom;
        }
    }
}

// Tests an atom's element code, and its type against the table of types. The message names the element by its atomic
// number, of which offset is taken off, and the last element of a calculation whatever the limit is.
static void CheckAtom(const AtomRecord& atom, int lastCode, int offset) {
    if (atom.AtomicNumber > lastCode) {
        FatalError(24647, atom.AtomicNumber - offset, LastElement);
    }
    if (atom.AtomType >= Run.AtomTypeCount) {
        FatalError(24648, atom.AtomType, atom.AtomIndex + 1);
    }
}

static void CheckAtoms() {
    for (int i = 0; i < Run.AtomCount; ++i) {
        if (Run.AtomRecords[i].SelectionState == 1) {
            CheckAtom(Run.AtomRecords[i], LastEnvironmentElement, 0);
        }
        YieldMessages();
    }
    const int selected = Run.SelectedAtomCount - Run.CappingAtomCount;
    for (int place = 0; place < selected; ++place) {
        CheckAtom(SelectedAtom(place), LastElement, 0);
    }
    for (int place = selected; place < Run.SelectedAtomCount; ++place) {
        CheckAtom(SelectedAtom(place), LastElementCode, LastElement);
        SelectedAtom(place).AtomType += Run.AtomTypeCount;  // the capping half of the parameter tables
    }
}

static void CheckCouplingAtoms() {
    for (int i = 0; i < Run.NMRAtomCount; ++i) {
        const int number = Run.NMRAtomList[i];
        if (number < 1 || number > Run.AtomCount) {
            FatalError(24650, number);
        }
        if (Run.AtomRecords[number - 1].SelectionState == 1) {
            Warning(16435, number);
        }
    }
}

// Core charges and orbitals of the atoms of the list; a lone pair has neither.
static double CountOrbitals() {
    double coreCharge = 0.0;
    Run.OrbitalCount = 0;
    for (int place = 0; place < Run.SelectedAtomCount; ++place) {
        const int code = SelectedAtom(place).AtomicNumber;
        OrbitalRange& range = Run.OrbitalRanges[place];
        const int orbitals = code > 0 ? OrbitalCountTable[code - 1] : 0;
        range.First = Run.OrbitalCount + 1;
        range.LastSP = Run.OrbitalCount + std::min(orbitals, OrbitalsWithoutD);
        range.Last = Run.OrbitalCount + orbitals;
        Run.OrbitalCount = range.Last;
        coreCharge += code > 0 ? CoreChargeTable[code - 1] : 0.0;
    }
    return coreCharge;
}

void CountElectrons() {
    const long long electrons = static_cast<long long>(CountOrbitals()) - Run.TotalCharge;
    if (electrons < 0) {
        FatalError(24672);
    }
    if (electrons + 1 < Run.SpinMultiplicity) {
        FatalError(24673);
    }
    if ((electrons + 1) / 2 > Run.OrbitalCount) {
        FatalError(24674);
    }
    Run.ElectronCount = static_cast<int>(electrons);
    if (Run.SpinMultiplicity == 0) {
        FatalError(24675);
    }
    if (Run.SpinMultiplicity == 1 && Run.ElectronCount % 2 != 0) {
        FatalError(24676);
    }
    if (Run.LogEnabled) {
        LogMessage(8197);
        LogMessage(8196, Run.ElectronCount);
    }
    Run.DoublyOccupiedLevels = Run.ElectronCount / 2;
    const int openLevels = Run.ElectronCount % 2;
    if (Run.DoublyOccupiedLevels < 0) {
        FatalError(24677);
    }
    if (Run.DoublyOccupiedLevels + openLevels > Run.OrbitalCount) {
        FatalError(24678);
    }
    if (Run.LogEnabled) {
        LogMessage(8194);
        LogMessage(8195);
        LogMessage(8198, Run.DoublyOccupiedLevels);
        LogMessage(8201, Run.TotalCharge, Run.OrbitalCount);
    }
    Run.OccupiedLevels = Run.DoublyOccupiedLevels + openLevels;
}

void ValidateSystem() {
    CheckRequest();
    CheckRealAtoms();
    if (Run.LogEnabled) {
        ListOptions();
    }
    ScaleCoordinates();
    CheckAtoms();
    if (Run.CalculateCoupling) {
        CheckCouplingAtoms();
    }
    if (Run.CalculateShielding) {
        CheckParameters(Run.ParameterFileShielding, "nmr_shft.abp");
    }
    if (Run.CalculateCoupling) {
        CheckParameters(Run.ParameterFileCoupling, "nmr_cupl.abp");
    }
    CountElectrons();
    LogMessage(8552);  // on purpose an id without text: an empty line
    if (Run.SemiEmpiricalMethod == 1) {
        LogProgress(4096, Run.OrbitalCount);
    } else {
        LogProgress(4097, Run.OrbitalCount);
    }
    LogMessage(8552);
}

template <class Visitor> static void VisitWavefunction(Visitor& visit) {
    const long long n = Run.OrbitalCount;
    const long long square = n * n;
    const long long padded = (n + n % 2) * n;
    visit(Run.OrbitalExponents, n);
    visit(Run.OrbitalAtoms, n);
    visit(Run.OrbitalKinds, n);
    visit(Run.OrbitalPrincipalNumbers, n);
    visit(Run.CoreHamiltonian, square);
    visit(Run.GammaMatrix, square);
    visit(Run.FirstScratch, std::max(padded, static_cast<long long>(Run.NMRAtomCount) * Run.SelectedAtomCount));
    visit(Run.SecondScratch, padded);
    visit(Run.FockMatrix, padded);
    visit(Run.MolecularOrbitals, padded);
    visit(Run.HalfDensity, square);
    visit(Run.TotalDensity, square);
    visit(Run.PreviousDensity, square);
    visit(Run.DiagonalHistory, n);
    visit(Run.CoreDiagonal, n);
    visit(Run.OrbitalEnergiesRaw, n);
    visit(Run.OrbitalEnergies, n);
    if (Run.SCFAccelerateConvergence) {
        visit(Run.CommutatorHistory, HistoryLength * square);
        visit(Run.FockHistory, HistoryLength * square);
    }
}

template <class Visitor> static void VisitShielding(Visitor& visit) {
    const long long atoms = Run.SelectedAtomCount;
    const long long n = Run.OrbitalCount;
    for (double*& density : Run.MagneticDensities) {
        visit(density, n * n);
    }
    for (double*& term : Run.ShieldingTerms) {
        visit(term, atoms);
    }
    visit(Run.ShieldingExponents, 3 * atoms);
    visit(Run.ShieldingTotal, atoms);
    visit(Run.ShieldingTensor, 9 * atoms);
    visit(Run.TensorDiamagneticTwoCentre, 9 * atoms);
    visit(Run.TensorParamagneticOneCentre, 9 * atoms);
    visit(Run.TensorParamagneticTwoCentre, 9 * atoms);
}

template <class Visitor> static void VisitArrays(Visitor& visit) {
    VisitWavefunction(visit);
    if (Run.CalculateShielding) {
        VisitShielding(visit);
    }
    if (Run.CalculateCoupling) {
        visit(Run.CouplingMatrix, static_cast<long long>(Run.NMRAtomCount) * Run.SelectedAtomCount);
    }
}

// All that the run is going to need, work of later stages included, so that a system that doesn't fit is refused before
// any integral.
static void AllocateArrays() {
    ArraySum sum;
    VisitArrays(sum);
    if (!MemoryCanServe(sum.Bytes + EigensolverWorkBytes(Run.OrbitalCount) + DipoleFactorBytes() +
                        FirstOrderWorkBytes())) {
        FatalError(24576);
    }
    ArrayAllocator allocator;
    VisitArrays(allocator);
    if (!allocator.Complete || !ReserveEigensolverWork(Run.OrbitalCount)) {
        FatalError(24576);
    }
    if (Run.CalculateShielding) {
        std::fill(Run.ShieldingTotal, Run.ShieldingTotal + Run.SelectedAtomCount, 0.0);
    }
}

void PrepareSystem() {
    Run.PollCounter = 0;
    Run.PollShift = PollShiftOfParameterRun;
    ChooseOrbitals();
    ArrayAllocator ranges;
    ranges(Run.OrbitalRanges, Run.SelectedAtomCount);
    if (!ranges.Complete) {
        FatalError(24576);
    }
    ValidateSystem();
    AllocateArrays();
    Run.ScfPassCounter = -1;
}
