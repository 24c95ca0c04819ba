// SPDX-License-Identifier: MIT
// Lists shielding constants and tensors.
#include "nmr/shielding_tables.h"

#include "ground/log.h"
#include "molecule/element_tables.h"
#include "molecule/selected_atoms.h"

// The symbol of an atom; blanks for one without orbitals.
static const char* LabelOf(const AtomRecord& atom) {
    return atom.AtomicNumber >= 1 ? ElementLabel[atom.AtomicNumber - 1] : "  ";
}

static double Term(int number, int place) {
    return Run.Shielding.ShieldingTerms[number - 1][place];
}

static void ListDiamagneticLine(int place) {
    const double sum =
        Term(1, place) + Term(2, place) + Term(5, place) + Term(6, place) + Term(8, place) + Term(9, place);
    LogMessage(Message::DiamagneticRow, SelectedAtomNumber(place), LabelOf(SelectedAtom(place)), Term(1, place),
               Term(2, place), Term(5, place), Term(6, place), Term(8, place), Term(9, place), sum);
}

static void ListParamagneticLine(int place) {
    const double sum = Term(3, place) + Term(4, place) + Term(7, place) + Term(10, place);
    LogMessage(Message::ParamagneticRow, SelectedAtomNumber(place), LabelOf(SelectedAtom(place)), Term(3, place),
               Term(4, place), Term(7, place), Term(10, place), sum, Run.Shielding.ShieldingTotal[place]);
}

void ListShieldingTerms() {
    LogMessage(Message::OpeningRule);
    LogMessage(Message::ShieldingHeading);
    LogMessage(Message::ClosingRule);
    LogMessage(Message::DiamagneticHeading);
    LogMessage(Message::DiamagneticUnderline);
    LogMessage(Message::DiamagneticCenters);
    LogMessage(Message::DiamagneticColumns);
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        ListDiamagneticLine(place);
    }
    LogMessage(Message::ParamagneticHeading);
    LogMessage(Message::ParamagneticUnderline);
    LogMessage(Message::ParamagneticCenters);
    LogMessage(Message::ParamagneticColumns);
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        ListParamagneticLine(place);
    }
    LogMessage(Message::EmptyLine);  // on purpose an id without text: an empty line
    LogMessage(Message::ClosingRule);
}

static void ListTensor(int place) {
    const double* tensor = Run.Shielding.ShieldingTensor + 9LL * place;
    const double* values = Run.Shielding.TensorDiamagneticTwoCentre + 9LL * place;
    char line[160];
    FormatText(line, "  %3d(%.2s):     Isotropic = %15.4f      Anisotropy = %15.4f", SelectedAtomNumber(place),
               LabelOf(SelectedAtom(place)), values[3], values[4]);
    LogAppend(line);
    LogMessage(Message::EmptyLine);
    for (int row = 0; row < 3; ++row) {
        FormatText(line, "                           %15.4f  %15.4f  %15.4f", tensor[3 * row], tensor[3 * row + 1],
                   tensor[3 * row + 2]);
        LogAppend(line);
    }
    LogMessage(Message::EmptyLine);
    FormatText(line, "            Eigenvalues:   %15.4f  %15.4f  %15.4f", values[0], values[1], values[2]);
    LogAppend(line);
    LogMessage(Message::EmptyLine);
}

void ListShieldingTensors() {
    LogMessage(Message::EmptyLine);
    LogMessage(Message::ClosingRule);
    LogAppend("=============================    Electronic Shielding Tensor (PPM)   ===============================");
    LogMessage(Message::ClosingRule);
    LogMessage(Message::EmptyLine);
    for (int place = 0; place < Run.Molecule.SelectedAtomCount; ++place) {
        ListTensor(place);
    }
    LogMessage(Message::EmptyLine);
    LogMessage(Message::ClosingRule);
}
