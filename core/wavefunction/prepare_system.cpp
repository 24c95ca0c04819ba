// SPDX-License-Identifier: MIT
// Prepares a parameter run, and validates its request, its atoms and its electron count.
#include "wavefunction/prepare_system.h"

#include "ground/fatal_error.h"
#include "ground/log.h"
#include "ground/memory.h"
#include "ground/message_poll.h"
#include "ground/run_state.h"
#include "molecule/element_tables.h"
#include "molecule/selected_atoms.h"
#include "molecule/units.h"
#include "numerics/eigensolver.h"
#include "wavefunction/dipole.h"
#include "wavefunction/first_order_orbitals.h"
#include "wavefunction/fock_extrapolation.h"
#include "wavefunction/response_solver.h"

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
    const bool withD = Run.Options.IncludeDOrbitalsForSecondRow && Run.Options.SemiEmpiricalMethod == 1;
    if (Run.Options.IncludeDOrbitalsForSecondRow && Run.Options.SemiEmpiricalMethod == 2) {
        Warning(Message::SecondRowDOrbitalsIgnored);
    }
    std::fill(OrbitalCountTable + FirstThirdRow - 1, OrbitalCountTable + LastElement,
              withD ? OrbitalsWithD : OrbitalsWithoutD);
    for (int place = 0; withD && place < Run.Molecule.SelectedAtomCount; ++place) {
        const int code = SelectedAtom(place).AtomicNumber;
        if (code >= FirstThirdRow && code <= LastElement) {
            Run.Molecule.QuantumSelection.LastOrbital += OrbitalsWithD - OrbitalsWithoutD;
            Run.Basis.OrbitalCount += OrbitalsWithD - OrbitalsWithoutD;
        }
    }
}

// The flags beside method and multiplicity have no key in the input; they are tested all the same.
static void CheckRequest() {
    if (Run.Options.SemiEmpiricalMethod != 1 && Run.Options.SemiEmpiricalMethod != 2) {
        FatalError(Message::TndoOnly);
    }
    if (Run.Options.SpinMultiplicity != 1) {
        FatalError(Message::SingletOnly);
    }
    if (Run.Options.NextLowestState) {
        FatalError(Message::NextLowestStateRefused);
    }
    if (Run.Options.ConfigurationInteraction) {
        FatalError(Message::ConfigurationInteractionRefused);
    }
    if (Run.Options.GeometryRun) {
        FatalError(Message::SinglePointOnly);
    }
    if (Run.Options.RestraintsPresent) {
        Warning(Message::RestraintsIgnored);
    }
}

static void CheckRealAtoms() {
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        if (SelectedAtom(place).AtomicNumber > 0) {
            return;
        }
    }
    if (Run.Molecule.SelectedAtomCount == Run.Molecule.AtomCount) {
        FatalError(Message::NoRealAtom);
    }
    FatalError(Message::NoRealAtomSelected);
}

static void ListOptions() {
    LogMessage(Message::ConvergenceAndIterationLimits, static_cast<double>(Run.Options.SCFConvergenceLimit),
               Run.Options.SCFIterationLimit);
    LogMessage(Message::AccelerateConvergenceOption, YesOrNo(Run.Options.SCFAccelerateConvergence));
    if (Run.Options.ResponseAcceleration) {  // no text of the catalogue, and no line without the option
        LogAppend("Accelerating the responses?  Yes");
    }
    LogMessage(Message::DOrbitalsOption, YesOrNo(Run.Options.IncludeDOrbitalsForSecondRow));
    if (Run.Options.CalculateShielding) {
        LogMessage(Message::ModifiedExponentsOption, YesOrNo(Run.Options.ModifySlaterExponents));
        LogMessage(Message::ThreeCenterOption, YesOrNo(Run.Options.ComputeThreeCenterTerms));
    }
    if (Run.Options.CalculateSpectra) {
        LogMessage(Message::SpectrometerFrequencyOption, Run.Options.NMRFrequency);
    }
}

// One array, which moves to the name of its new unit.
static void ScaleCoordinates() {
    MoveArray(Run.Molecule.InputCoordinates, Run.Molecule.AtomCoordinates);
    for (int i = 0; i < Run.Molecule.AtomCount; ++i) {
        for (double& coordinate : Run.Molecule.AtomCoordinates[i].Position) {
            coordinate *= BohrsPerAngstrom;
        }
    }
}

// Tests an atom's element code, and its type against the table of types. The message names the element by its atomic
// number, of which offset is taken off, and the last element of a calculation whatever the limit is.
static void CheckAtom(const AtomRecord& atom, int lastCode, int offset) {
    if (atom.AtomicNumber > lastCode) {
        FatalError(Message::AtomicNumberTooHigh, atom.AtomicNumber - offset, LastElement);
    }
    if (atom.AtomType >= Run.Parameters.AtomTypeCount) {
        FatalError(Message::UndefinedTypeOfAtom, atom.AtomType, atom.AtomIndex + 1);
    }
}

static void CheckAtoms() {
    for (int i = 0; i < Run.Molecule.AtomCount; ++i) {
        if (Run.Molecule.AtomRecords[i].SelectionState == 1) {
            CheckAtom(Run.Molecule.AtomRecords[i], LastEnvironmentElement, 0);
        }
        YieldMessages();
    }
    const int selected = Run.Molecule.SelectedAtomCount - Run.Molecule.CappingAtomCount;
    for (int place = 0; place < selected; ++place) {
        CheckAtom(SelectedAtom(place), LastElement, 0);
    }
    for (int place = selected; place < Run.Molecule.SelectedAtomCount; ++place) {
        CheckAtom(SelectedAtom(place), LastElementCode, LastElement);
        SelectedAtom(place).AtomType += Run.Parameters.AtomTypeCount;  // the capping half of the parameter tables
    }
}

static void CheckCouplingAtoms() {
    for (int i = 0; i < Run.Molecule.NMRAtomCount; ++i) {
        const int number = Run.Molecule.NMRAtomList[i];
        if (number < 1 || number > Run.Molecule.AtomCount) {
            FatalError(Message::NoSuchCouplingAtom, number);
        }
        if (Run.Molecule.AtomRecords[number - 1].SelectionState == 1) {
            Warning(Message::CouplingAtomNotSelected, number);
        }
    }
}

// Core charges and orbitals of the atoms of the list; a lone pair has neither.
static double CountOrbitals() {
    double coreCharge = 0.0;
    Run.Basis.OrbitalCount = 0;
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        const int code = SelectedAtom(place).AtomicNumber;
        OrbitalRange& range = Run.Basis.OrbitalRanges[place];
        const int orbitals = code > 0 ? OrbitalCountTable[code - 1] : 0;
        range.First = Run.Basis.OrbitalCount + 1;
        range.LastSP = Run.Basis.OrbitalCount + std::min(orbitals, OrbitalsWithoutD);
        range.Last = Run.Basis.OrbitalCount + orbitals;
        Run.Basis.OrbitalCount = range.Last;
        coreCharge += code > 0 ? CoreChargeTable[code - 1] : 0.0;
    }
    return coreCharge;
}

void CountElectrons() {
    const long long electrons = static_cast<long long>(CountOrbitals()) - Run.Options.TotalCharge;
    if (electrons < 0) {
        FatalError(Message::NegativeElectronCount);
    }
    if (electrons + 1 < Run.Options.SpinMultiplicity) {
        FatalError(Message::TooFewElectronsForMultiplicity);
    }
    if ((electrons + 1) / 2 > Run.Basis.OrbitalCount) {
        FatalError(Message::TooManyElectrons);
    }
    Run.Basis.ElectronCount = static_cast<int>(electrons);
    if (Run.Options.SpinMultiplicity == 0) {
        FatalError(Message::IllegalMultiplicity);
    }
    if (Run.Options.SpinMultiplicity == 1 && Run.Basis.ElectronCount % 2 != 0) {
        FatalError(Message::SingletWithOddElectronCount);
    }
    if (Run.Report.LogEnabled) {
        LogMessage(Message::SingletCalculation);
        LogMessage(Message::ElectronCount, Run.Basis.ElectronCount);
    }
    Run.Basis.DoublyOccupiedLevels = Run.Basis.ElectronCount / 2;
    const int openLevels = Run.Basis.ElectronCount % 2;
    if (Run.Basis.DoublyOccupiedLevels < 0) {
        FatalError(Message::ImpossibleMultiplicity);
    }
    if (Run.Basis.DoublyOccupiedLevels + openLevels > Run.Basis.OrbitalCount) {
        FatalError(Message::TooManyOccupiedLevels);
    }
    if (Run.Report.LogEnabled) {
        LogMessage(Message::RestrictedHartreeFockUsed);
        LogMessage(Message::PerturbationTheoryApplied);
        LogMessage(Message::DoublyOccupiedLevels, Run.Basis.DoublyOccupiedLevels);
        LogMessage(Message::ChargeAndOrbitalCount, Run.Options.TotalCharge, Run.Basis.OrbitalCount);
    }
    Run.Basis.OccupiedLevels = Run.Basis.DoublyOccupiedLevels + openLevels;
}

void ValidateSystem() {
    CheckRequest();
    CheckRealAtoms();
    if (Run.Report.LogEnabled) {
        ListOptions();
    }
    ScaleCoordinates();
    CheckAtoms();
    if (Run.Options.CalculateCoupling) {
        CheckCouplingAtoms();
    }
    if (Run.Options.CalculateShielding) {
        CheckParameters(Run.Parameters.ParameterFileShielding, "nmr_shft.abp");
    }
    if (Run.Options.CalculateCoupling) {
        CheckParameters(Run.Parameters.ParameterFileCoupling, "nmr_cupl.abp");
    }
    CountElectrons();
    LogMessage(Message::EmptyLine);  // on purpose an id without text: an empty line
    if (Run.Options.SemiEmpiricalMethod == 1) {
        LogProgress(Message::StartingTndo1, Run.Basis.OrbitalCount);
    } else {
        LogProgress(Message::StartingTndo2, Run.Basis.OrbitalCount);
    }
    LogMessage(Message::EmptyLine);
}

template <class Visitor> static void VisitWavefunction(Visitor& visit) {
    const long long n = Run.Basis.OrbitalCount;
    const long long square = n * n;
    const long long padded = (n + n % 2) * n;
    visit(Run.Basis.OrbitalAtoms, n);
    visit(Run.Basis.OrbitalKinds, n);
    visit(Run.Basis.OrbitalPrincipalNumbers, n);
    visit(Run.Field.CoreHamiltonian, square);
    visit(Run.Field.GammaMatrix, square);
    visit(Run.Field.FirstScratch,
          std::max(padded, static_cast<long long>(Run.Molecule.NMRAtomCount) * Run.Molecule.SelectedAtomCount));
    visit(Run.Field.SecondScratch, padded);
    visit(Run.Field.FockMatrix, padded);
    visit(Run.Field.MolecularOrbitals, padded);
    visit(Run.Field.HalfDensity, square);
    visit(Run.Field.TotalDensity, square);
    visit(Run.Field.PreviousDensity, square);
    visit(Run.Field.DiagonalHistory, n);
    visit(Run.Field.CoreDiagonal, n);
    visit(Run.Field.OrbitalEnergiesRaw, n);
    visit(Run.Field.OrbitalEnergies, n);
    visit(Run.Field.NetCharges, Run.Molecule.SelectedAtomCount);
    if (Run.Options.SCFAccelerateConvergence) {
        visit(Run.Field.CommutatorHistory, HistoryLength * square);
        visit(Run.Field.FockHistory, HistoryLength * square);
    }
}

template <class Visitor> static void VisitShielding(Visitor& visit) {
    const long long atoms = Run.Molecule.SelectedAtomCount;
    const long long n = Run.Basis.OrbitalCount;
    for (double*& density : Run.Shielding.MagneticDensities) {
        visit(density, n * n);
    }
    for (double*& term : Run.Shielding.ShieldingTerms) {
        visit(term, atoms);
    }
    visit(Run.Shielding.ShieldingExponents, 3 * atoms);
    visit(Run.Shielding.ShieldingTotal, atoms);
    visit(Run.Shielding.ShieldingTensor, 9 * atoms);
    visit(Run.Shielding.TensorDiamagneticTwoCentre, 9 * atoms);
    visit(Run.Shielding.TensorParamagneticOneCentre, 9 * atoms);
    visit(Run.Shielding.TensorParamagneticTwoCentre, 9 * atoms);
}

template <class Visitor> static void VisitArrays(Visitor& visit) {
    VisitWavefunction(visit);
    if (Run.Options.CalculateShielding) {
        VisitShielding(visit);
    }
    if (Run.Options.CalculateCoupling) {
        visit(Run.Coupling.CouplingMatrix,
              static_cast<long long>(Run.Molecule.NMRAtomCount) * Run.Molecule.SelectedAtomCount);
    }
}

// All that the run is going to need, work of later stages included, so that a system that doesn't fit is refused before
// any integral.
static void AllocateArrays() {
    ArraySum sum;
    VisitArrays(sum);
    if (!MemoryCanServe(sum.Bytes + EigensolverWorkBytes(Run.Basis.OrbitalCount) + DipoleFactorBytes() +
                        FirstOrderWorkBytes() + ResponseWorkBytes())) {
        FatalError(Message::MoleculeTooLarge);
    }
    ArrayAllocator allocator;
    VisitArrays(allocator);
    if (!allocator.Complete || !ReserveEigensolverWork(Run.Basis.OrbitalCount)) {
        FatalError(Message::MoleculeTooLarge);
    }
    if (Run.Options.CalculateShielding) {
        std::fill(Run.Shielding.ShieldingTotal, Run.Shielding.ShieldingTotal + Run.Molecule.SelectedAtomCount, 0.0);
    }
}

void PrepareSystem() {
    Run.Report.PollCounter = 0;
    Run.Report.PollShift = PollShiftOfParameterRun;
    ChooseOrbitals();
    if (!AllocateArray(Run.Basis.OrbitalRanges, Run.Molecule.SelectedAtomCount)) {
        FatalError(Message::MoleculeTooLarge);
    }
    ValidateSystem();
    AllocateArrays();
    Run.Field.ScfPassCounter = -1;
}
