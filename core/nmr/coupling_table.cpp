// SPDX-License-Identifier: MIT
// Lists the coupling constants.
#include "nmr/coupling_table.h"

#include "ground/log.h"
#include "ground/message_poll.h"
#include "molecule/element_tables.h"
#include "molecule/selected_atoms.h"

static const char* LabelOf(const AtomRecord& atom) {
    return atom.AtomicNumber <= LastElementCode ? ElementLabel[atom.AtomicNumber - 1] : ElementNames[atom.AtomicNumber];
}

static void ListPair(const AtomRecord& atomA, const AtomRecord& atomB, double k, double j) {
    const NuclearConstants& a = Run.Parameters.CouplingConstants[atomA.AtomType];
    const NuclearConstants& b = Run.Parameters.CouplingConstants[atomB.AtomType];
    LogMessage(Message::CouplingRow, atomA.AtomIndex + 1, LabelOf(atomA), atomB.AtomIndex + 1, LabelOf(atomB),
               a.GFactor, b.GFactor, a.SDensity, b.SDensity, k, j);
}

void ListCouplingConstants(const double* reduced) {
    LogMessage(Message::CouplingOpeningRule);
    LogMessage(Message::ReducedCouplingHeading);
    LogMessage(Message::CouplingHeading);
    LogMessage(Message::CouplingClosingRule);
    LogMessage(Message::CouplingColumns);
    for (long long g = 0; g < Run.Molecule.NMRAtomCount; ++g) {
        const AtomRecord& atomA = Run.Molecule.AtomRecords[Run.Molecule.NMRAtomList[g] - 1];
        int lines = 0;
        KeepLogOpen();
        for (int place = 0; atomA.AtomicNumber >= 1 && place < Run.Molecule.SelectedAtomCount; ++place) {
            const AtomRecord& atomB = SelectedAtom(place);
            if (atomB.AtomicNumber >= 1 && atomB.AtomIndex != atomA.AtomIndex) {
                const long long entry = g * Run.Molecule.SelectedAtomCount + place;
                ListPair(atomA, atomB, reduced[entry], Run.Coupling.CouplingMatrix[entry]);
                ++lines;
            }
        }
        CloseLog();
        PollMessages(lines * ListedLineUnits);
    }
    LogMessage(Message::EmptyLine);  // on purpose an id without text: an empty line
    LogMessage(Message::CouplingClosingRule);
}
