// SPDX-License-Identifier: MIT
// Reports energies, eigenvalues, populations and charges.
#include "wavefunction/report_wavefunction.h"

#include "ground/log.h"
#include "ground/message_poll.h"
#include "ground/number_row.h"
#include "molecule/element_tables.h"
#include "molecule/selected_atoms.h"
#include "molecule/units.h"
#include "numerics/single_precision.h"
#include "wavefunction/dipole.h"

static constexpr int RowLength = 5;  // numbers in a line

// Population of an orbital, 0-based: a 32-bit value, as it is listed.
static float Population(long long orbital) {
    return RoundToSingle(Run.Field.TotalDensity[orbital * (Run.Basis.OrbitalCount + 1)]);
}

void ComputeNetCharges() {
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        const AtomRecord& atom = SelectedAtom(place);
        if (atom.AtomicNumber < 1) {
            Run.Field.NetCharges[place] = atom.AtomCharge;
            continue;
        }
        double electrons = 0.0;
        for (int orbital = Run.Basis.OrbitalRanges[place].First; orbital <= Run.Basis.OrbitalRanges[place].Last;
             ++orbital) {
            electrons += static_cast<double>(Population(orbital - 1));
        }
        Run.Field.NetCharges[place] = RoundToSingle(CoreChargeTable[atom.AtomicNumber - 1] - electrons);
    }
}

static double EigenvalueInElectronVolts(int level) {
    const float energy = RoundToSingle(Run.Field.OrbitalEnergies[level]) * ListedElectronVoltsPerHartree;
    return static_cast<double>(energy);
}

static double PopulationOf(int orbital) {
    return static_cast<double>(Population(orbital));
}

// Lists one number for each orbital, five to a line.
static void ListOrbitalNumbers(double (*number)(int)) {
    int first = 0;
    double v[RowLength];
    for (; first < Run.Basis.OrbitalCount; first += RowLength) {
        const int count = Run.Basis.OrbitalCount - first < RowLength ? Run.Basis.OrbitalCount - first : RowLength;
        for (int k = 0; k < count; ++k) {
            v[k] = number(first + k);
        }
        if (count == RowLength) {
            LogMessage(Message::EigenvaluesRow, v[0], v[1], v[2], v[3], v[4]);
        } else {
            LogNumberRow(v, count);
        }
        PollMessages(1);
    }
}

static void ListEnergies(double total, double electronic, double core) {
    LogMessage(Message::OpeningRule);
    LogMessage(Message::UnperturbedResultsHeading, Run.Parameters.ActiveParameterFile);
    LogMessage(Message::ClosingRule);
    LogMessage(Message::EnergiesHeading);
    LogMessage(Message::TotalEnergyInKcal, total);
    LogMessage(Message::TotalEnergyInHartree, total * HartreesPerKcal);
    LogMessage(Message::BindingEnergy, total - Run.Basis.IsolatedEnergy);
    LogMessage(Message::IsolatedAtomicEnergy, Run.Basis.IsolatedEnergy);
    LogMessage(Message::ElectronicEnergy, electronic);
    LogMessage(Message::CoreCoreInteraction, core);
    LogMessage(Message::HeatOfFormation, Run.Basis.HeatOffset + core + electronic);
}

// The test is on 18 itself, on purpose: a capping atom shows as its negated atomic number, and argon as 0.
static int ListedAtomicNumber(int code) {
    return code < LastElement ? code : LastElement - code;
}

static void ListAtoms() {
    LogMessage(Message::ChargesHeading);
    LogMessage(Message::ChargesColumns);
    LogMessage(Message::CoordinatesColumns);
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        const AtomRecord& atom = SelectedAtom(place);
        const double* position = SelectedPosition(place);
        LogMessage(Message::ChargesRow, SelectedAtomNumber(place), ListedAtomicNumber(atom.AtomicNumber),
                   static_cast<double>(Run.Field.NetCharges[place]), position[0] * AngstromsPerBohr,
                   position[1] * AngstromsPerBohr, position[2] * AngstromsPerBohr);
    }
}

void ReportWavefunction(double electronicEnergy) {
    const double total = (electronicEnergy + Run.Field.CoreRepulsion) * KcalPerHartree;
    LogProgress(Message::CalculatedEnergy, total - Run.Basis.IsolatedEnergy);
    if (Run.Report.LogEnabled) {
        ListEnergies(total, electronicEnergy * KcalPerHartree, Run.Field.CoreRepulsion * KcalPerHartree);
        LogMessage(Message::EigenvaluesHeading);
        ListOrbitalNumbers(EigenvalueInElectronVolts);
        LogMessage(Message::PopulationsHeading);
        ListOrbitalNumbers(PopulationOf);
        ListAtoms();
    }
    if (Run.Options.LogPrintLevel != 10) {
        ComputeDipole();
        LogMessage(Message::EmptyLine);  // on purpose an id without text: an empty line
        LogMessage(Message::ClosingRule);
    }
}
