// SPDX-License-Identifier: MIT
// Lists square matrices and eigenvectors in blocks of six columns, and a last block with the columns that are left.
#include "wavefunction/matrix_listings.h"

#include "ground/log.h"
#include "ground/message_poll.h"
#include "ground/run_state.h"
#include "molecule/element_tables.h"

static constexpr int BlockColumns = 6;
static constexpr char UnitLabel[] = "(a.u.)";
static constexpr const char* OrbitalLabel[] = {"  S", " Px", " Py", " Pz", "Dz2", "Dxz", "Dyz", "Dx2", "Dxy"};

// The labels of an orbital in a line.
struct OrbitalName {
    const char* Kind;     // three characters
    const char* Element;  // two characters
    int Atom;             // 1-based number
};

static OrbitalName NameOf(int orbital) {
    const int atom = Run.Basis.OrbitalAtoms[orbital];
    return {OrbitalLabel[Run.Basis.OrbitalKinds[orbital] - 1],
            ElementLabel[Run.Molecule.AtomRecords[atom - 1].AtomicNumber - 1], atom};
}

static void ListLevelNumbers(int first, int count) {
    const int m = first + 1;
    switch (count) {
    case 1:
        LogMessage(Message::OrbitalNumbersOf1, m);
        break;
    case 2:
        LogMessage(Message::OrbitalNumbersOf2, m, m + 1);
        break;
    case 3:
        LogMessage(Message::OrbitalNumbersOf3, m, m + 1, m + 2);
        break;
    case 4:
        LogMessage(Message::OrbitalNumbersOf4, m, m + 1, m + 2, m + 3);
        break;
    case 5:
        LogMessage(Message::OrbitalNumbersOf5, m, m + 1, m + 2, m + 3, m + 4);
        break;
    default:
        LogMessage(Message::OrbitalNumbersOf6, m, m + 1, m + 2, m + 3, m + 4, m + 5);
        break;
    }
}

static void ListLevelEnergies(const double* e, int count) {
    switch (count) {
    case 1:
        LogMessage(Message::OrbitalEigenvaluesOf1, e[0]);
        break;
    case 2:
        LogMessage(Message::OrbitalEigenvaluesOf2, e[0], e[1]);
        break;
    case 3:
        LogMessage(Message::OrbitalEigenvaluesOf3, e[0], e[1], e[2]);
        break;
    case 4:
        LogMessage(Message::OrbitalEigenvaluesOf4, e[0], e[1], e[2], e[3]);
        break;
    case 5:
        LogMessage(Message::OrbitalEigenvaluesOf5, e[0], e[1], e[2], e[3], e[4]);
        break;
    default:
        LogMessage(Message::OrbitalEigenvaluesOf6, e[0], e[1], e[2], e[3], e[4], e[5]);
        break;
    }
}

// One row of a block: the labels of an orbital and the numbers.
static void ListRow(int orbital, const double* v, int count) {
    const OrbitalName name = NameOf(orbital);
    switch (count) {
    case 1:
        LogMessage(Message::MatrixRowOf1, name.Kind, name.Element, name.Atom, v[0]);
        break;
    case 2:
        LogMessage(Message::MatrixRowOf2, name.Kind, name.Element, name.Atom, v[0], v[1]);
        break;
    case 3:
        LogMessage(Message::MatrixRowOf3, name.Kind, name.Element, name.Atom, v[0], v[1], v[2]);
        break;
    case 4:
        LogMessage(Message::MatrixRowOf4, name.Kind, name.Element, name.Atom, v[0], v[1], v[2], v[3]);
        break;
    case 5:
        LogMessage(Message::MatrixRowOf5, name.Kind, name.Element, name.Atom, v[0], v[1], v[2], v[3], v[4]);
        break;
    default:
        LogMessage(Message::MatrixRowOf6, name.Kind, name.Element, name.Atom, v[0], v[1], v[2], v[3], v[4], v[5]);
        break;
    }
}

static void ListColumnNames(int first, int count) {
    OrbitalName n[BlockColumns] = {};
    for (int k = 0; k < count; ++k) {
        n[k] = NameOf(first + k);
    }
    switch (count) {
    case 1:
        LogMessage(Message::MatrixColumnsOf1, n[0].Kind, n[0].Element, n[0].Atom);
        break;
    case 2:
        LogMessage(Message::MatrixColumnsOf2, n[0].Kind, n[0].Element, n[0].Atom, n[1].Kind, n[1].Element, n[1].Atom);
        break;
    case 3:
        LogMessage(Message::MatrixColumnsOf3, n[0].Kind, n[0].Element, n[0].Atom, n[1].Kind, n[1].Element, n[1].Atom,
                   n[2].Kind, n[2].Element, n[2].Atom);
        break;
    case 4:
        LogMessage(Message::MatrixColumnsOf4, n[0].Kind, n[0].Element, n[0].Atom, n[1].Kind, n[1].Element, n[1].Atom,
                   n[2].Kind, n[2].Element, n[2].Atom, n[3].Kind, n[3].Element, n[3].Atom);
        break;
    case 5:
        LogMessage(Message::MatrixColumnsOf5, n[0].Kind, n[0].Element, n[0].Atom, n[1].Kind, n[1].Element, n[1].Atom,
                   n[2].Kind, n[2].Element, n[2].Atom, n[3].Kind, n[3].Element, n[3].Atom, n[4].Kind, n[4].Element,
                   n[4].Atom);
        break;
    default:
        LogMessage(Message::MatrixColumnsOf6, n[0].Kind, n[0].Element, n[0].Atom, n[1].Kind, n[1].Element, n[1].Atom,
                   n[2].Kind, n[2].Element, n[2].Atom, n[3].Kind, n[3].Element, n[3].Atom, n[4].Kind, n[4].Element,
                   n[4].Atom, n[5].Kind, n[5].Element, n[5].Atom);
        break;
    }
}

static int ColumnsFrom(int first) {
    const int rest = Run.Basis.OrbitalCount - first;
    return rest < BlockColumns ? rest : BlockColumns;
}

static void ListEigenvectors() {
    const long long n = Run.Basis.OrbitalCount;
    LogMessage(Message::EigenvectorsHeading, UnitLabel);
    for (int first = 0; first < n; first += BlockColumns) {
        const int count = ColumnsFrom(first);
        ListLevelNumbers(first, count);
        ListLevelEnergies(Run.Field.OrbitalEnergies + first, count);
        for (int orbital = 0; orbital < n; ++orbital) {
            double v[BlockColumns];
            for (int k = 0; k < count; ++k) {
                v[k] = Run.Field.MolecularOrbitals[(first + k) * n + orbital];
            }
            ListRow(orbital, v, count);
            PollMessages(Run.Basis.OrbitalCount);
        }
    }
}

// The whole square, all rows of each block of columns.
static void ListSquare(const double* matrix) {
    const long long n = Run.Basis.OrbitalCount;
    for (int first = 0; first < n; first += BlockColumns) {
        const int count = ColumnsFrom(first);
        ListColumnNames(first, count);
        for (int orbital = 0; orbital < n; ++orbital) {
            ListRow(orbital, matrix + orbital * n + first, count);
            PollMessages(Run.Basis.OrbitalCount);
        }
    }
}

static void ListDensity(const double* density) {
    LogMessage(Message::DensityHeading);
    ListSquare(density);
}

// Level 4: everything as it comes.
static void ListEveryStage(ScfStage stage) {
    switch (stage) {
    case CoreStage:
        LogMessage(Message::CoreHamiltonianHeading, UnitLabel);
        ListSquare(Run.Field.CoreHamiltonian);
        break;
    case FockStage:
        LogMessage(Message::FockHeading, UnitLabel);
        ListSquare(Run.Field.FockMatrix);
        break;
    case DensityStage:
        ListEigenvectors();
        ListDensity(Run.Field.HalfDensity);
        break;
    case FinalStage:
        break;
    }
}

void ListScfStage(ScfStage stage) {
    if (!Run.Report.LogEnabled) {
        return;
    }
    const int level = Run.Options.LogPrintLevel;
    if (level == 4) {
        ListEveryStage(stage);
    }
    if (stage == FinalStage && (level == 1 || level == 3)) {
        ListEigenvectors();
    }
    if (stage == FinalStage && (level == 2 || level == 3)) {
        ListDensity(Run.Field.TotalDensity);
    }
}
