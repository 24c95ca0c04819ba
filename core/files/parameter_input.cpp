// SPDX-License-Identifier: MIT
// Reads nmrparam.in line by line, and resolves its two selections once the whole file has been read.
#include "files/parameter_input.h"

#include "files/name_index.h"
#include "files/option_keys.h"
#include "files/text_scan.h"
#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/message_poll.h"
#include "ground/run_state.h"
#include "molecule/element_tables.h"

#include <cctype>
#include <climits>
#include <cstring>

// An entry of a selection: the position of an atom among the atoms of a molecule, both counted from 1.
struct SelectionEntry {
    int Molecule;
    int Atom;
};

// What the reader keeps while it reads.
static struct {
    SelectionEntry* NMREntries;      // [NMRAtomCount] the selections as read, until they are resolved
    SelectionEntry* QuantumEntries;  // [SelectedAtomCount]
    NameIndex TypeNames;             // of AtomTypeNames
} Work;

static int AtomLineCount = 0;  // atoms that the last block of atoms has given, AtomCount at most

// Removes trailing characters that are neither letters nor digits nor punctuation.
static void StripLine(char* line) {
    std::size_t length = std::strlen(line);
    while (length > 0 && !std::isgraph(static_cast<unsigned char>(line[length - 1]))) {
        line[--length] = '\0';
    }
}

// Reads the entries of a selection, each a word, a molecule number, a word and an atom number; the words are dropped.
// Returns 1, 0 after a short entry, or -1 after a number that isn't positive.
static int ReadEntries(std::FILE* file, SelectionEntry* entries, int count) {
    char unused[1];
    for (int i = 0; i < count; ++i) {
        if (!ReadWord(file, 0, unused) || !ReadInteger(file, &entries[i].Molecule) || !ReadWord(file, 0, unused) ||
            !ReadInteger(file, &entries[i].Atom)) {
            return 0;
        }
        if (entries[i].Molecule <= 0 || entries[i].Atom <= 0) {
            return -1;
        }
    }
    return 1;
}

// Reads up to the line that ends a block, and clears it. At the end of the file the line keeps its last content.
static void SkipToBlockEnd(std::FILE* file, const char* marker, char* line) {
    while (ReadLine(file, line)) {
        StripLine(line);
        if (EqualIgnoringCase(line, marker)) {
            line[0] = '\0';
            return;
        }
    }
}

static SelectionEntry* AllocateEntries(SelectionEntry*& entries, int count) {
    if (!AllocateArray(entries, count)) {
        FatalError(Message::MoleculeTooLarge);
    }
    return entries;
}

static void ReadNMRSelection(std::FILE* file, char* line) {
    const char* path = Run.Job.InputFilePath;
    if (!ReadInteger(file, &Run.Molecule.NMRAtomCount)) {
        FatalError(Message::UnreadableNmrAtomCount, path);
    }
    if (Run.Molecule.NMRAtomCount <= 0) {
        FatalError(Message::NmrAtomCountNotPositive, Run.Molecule.NMRAtomCount, path);
    }
    const int count = Run.Molecule.NMRAtomCount;
    if (!MemoryCanServe((sizeof(int) + sizeof(SelectionEntry)) * static_cast<double>(count)) ||
        !AllocateArray(Run.Molecule.NMRAtomList, count)) {
        FatalError(Message::MoleculeTooLarge);
    }
    const int outcome =
        ReadEntries(file, AllocateEntries(Work.NMREntries, Run.Molecule.NMRAtomCount), Run.Molecule.NMRAtomCount);
    if (outcome == 0) {
        FatalError(Message::UnreadableNmrAtoms, path);
    }
    if (outcome < 0) {
        FatalError(Message::NmrAtomNotPositive, path);
    }
    SkipToBlockEnd(file, "NMRSelectionEnd", line);
}

static void ReadQuantumSelection(std::FILE* file, char* line) {
    const char* path = Run.Job.InputFilePath;
    if (!ReadInteger(file, &Run.Molecule.SelectedAtomCount)) {
        FatalError(Message::UnreadableSelectedAtomCount, path);
    }
    if (Run.Molecule.SelectedAtomCount <= 0) {
        FatalError(Message::SelectedAtomCountNotPositive, Run.Molecule.SelectedAtomCount, path);
    }
    const int outcome = ReadEntries(file, AllocateEntries(Work.QuantumEntries, Run.Molecule.SelectedAtomCount),
                                    Run.Molecule.SelectedAtomCount);
    if (outcome == 0) {
        FatalError(Message::UnreadableSelectedAtoms, path);
    }
    if (outcome < 0) {
        FatalError(Message::SelectedAtomNotPositive, path);
    }
    SkipToBlockEnd(file, "QuantumSelectionEnd", line);
}

// The last name that matches gives the element.
static int ElementByName(const char* name, int atom) {
    for (int i = ElementNameCount - 1; i >= 0; --i) {
        if (EqualIgnoringCase(name, ElementNames[i])) {
            return i;
        }
    }
    FatalError(Message::UndefinedElement, Run.Job.InputFilePath, name, atom);
}

// Of types with one name the last wins.
static void IndexTypes() {
    PrepareNameIndex(Work.TypeNames, Run.Parameters.AtomTypeNames->Text, sizeof(AtomTypeName),
                     Run.Parameters.AtomTypeCount);
    for (int i = Run.Parameters.AtomTypeCount - 1; i >= 0; --i) {
        AddName(Work.TypeNames, i);
    }
}

static int AtomTypeByName(const char* name, int atom) {
    const int type = FindName(Work.TypeNames, name);
    if (type < 0) {
        FatalError(Message::UndefinedAtomType, Run.Job.InputFilePath, name, atom);
    }
    return type;
}

// A number where the text begins with a digit; -1 otherwise.
static int LeadingNumber(const char* text) {
    int number = -1;
    if (std::isdigit(static_cast<unsigned char>(text[0]))) {
        ScanInteger(text, &number);
    }
    return number;
}

[[noreturn]] static void RefuseRecord(int atom) {
    FatalError(Message::BadAtomRecord, Run.Job.InputFilePath, atom + 1);
}

// The neighbours of an atom, numbered from 1 within its molecule, which begins at offset. On purpose a number may leave
// the molecule: beyond its end it means an atom of the next one, from 0 downwards one of the molecule before.
static void ReadNeighbours(const char* text, AtomRecord& record, int atom, int offset) {
    if (record.BondCount > LargestBondCount) {
        RefuseRecord(atom);
    }
    for (int k = 0; k < record.BondCount; ++k) {
        int number;
        if (!ScanInteger(text, &number)) {
            RefuseRecord(atom);
        }
        char order[2];
        if (!ScanWord(text, 1, order)) {
            RefuseRecord(atom);
        }
        if (std::strchr("hsdta", order[0]) == nullptr) {
            FatalError(Message::BadBondOrder, Run.Job.InputFilePath, order, atom + 1);
        }
        const long long neighbour = static_cast<long long>(offset) + number - 1;
        record.BondedAtoms[k] = neighbour >= 0 && neighbour < Run.Molecule.AtomCount ? static_cast<int>(neighbour) : -1;
    }
}

// "keyword number name element type flags charge x y z neighbours"; number and name are dropped, and the flags, on
// purpose, have no lasting effect: the resolution of the quantum selection sets every SelectionState.
static void ReadAtomLine(const char* text, int atom, int molecule, int offset) {
    char word[7];
    char element[4];
    char type[5];
    int number;
    double charge;
    AtomRecord& record = Run.Molecule.AtomRecords[atom];
    double* position = Run.Molecule.InputCoordinates[atom].Position;
    const bool complete = SkipWord(text) && ScanInteger(text, &number) && ScanWord(text, 4, word) &&
                          ScanWord(text, 3, element) && ScanWord(text, 4, type) && ScanWord(text, 6, word) &&
                          ScanReal(text, &charge) && ScanReal(text, &position[0]) && ScanReal(text, &position[1]) &&
                          ScanReal(text, &position[2]) && ScanInteger(text, &record.BondCount);
    if (!complete) {
        RefuseRecord(atom);
    }
    record.AtomIndex = atom;
    record.AtomicNumber = LeadingNumber(element);
    if (record.AtomicNumber < 0) {
        record.AtomicNumber = ElementByName(element, atom + 1);
    }
    record.AtomType = LeadingNumber(type);
    if (record.AtomType < 0) {
        record.AtomType = AtomTypeByName(type, atom + 1);
    }
    record.MoleculeIndex = molecule;
    record.AtomCharge = NarrowReal(charge);
    ReadNeighbours(text, record, atom, offset);
}

void CheckNeighbours() {
    for (int atom = 0; atom < Run.Molecule.AtomCount; ++atom) {
        PollReading(RecordUnits);
        const AtomRecord& record = Run.Molecule.AtomRecords[atom];
        for (int k = 0; k < record.BondCount; ++k) {
            if (record.BondedAtoms[k] < 0) {
                RefuseRecord(atom);
            }
        }
    }
}

static void AllocateAtoms() {
    const double bytesOfAtom = sizeof(AtomRecord) + sizeof(AtomPosition) + sizeof(int);  // with its place in a list
    if (!MemoryCanServe(bytesOfAtom * Run.Molecule.AtomCount) ||
        !AllocateZeroed(Run.Molecule.AtomRecords, Run.Molecule.AtomCount) ||
        !AllocateZeroed(Run.Molecule.InputCoordinates, Run.Molecule.AtomCount)) {
        FatalError(Message::MoleculeTooLarge);
    }
}

// Atom lines that are missing leave their records zeroed: atoms that neighbours can name and no selection.
static void ReadAtoms(std::FILE* file) {
    const char* path = Run.Job.InputFilePath;
    if (!ReadInteger(file, &Run.Molecule.AtomCount)) {
        FatalError(Message::UnreadableAtomCount, path);
    }
    if (Run.Molecule.AtomCount <= 0) {
        FatalError(Message::AtomCountNotPositive, Run.Molecule.AtomCount, path);
    }
    AllocateAtoms();
    AtomLineCount = 0;
    int molecule = 0;
    int offset = 0;
    char line[LineSize];
    while (ReadLine(file, line) && !BeginsIgnoringCase(line, "AtomsEnd")) {
        if (BeginsIgnoringCase(line, "atom")) {
            if (AtomLineCount == Run.Molecule.AtomCount) {
                FatalError(Message::MoreAtomsThanCounted, path);
            }
            ReadAtomLine(line, AtomLineCount++, molecule, offset);
        } else if (BeginsIgnoringCase(line, "mol")) {
            offset = AtomLineCount;
            molecule += molecule < INT_MAX ? 1 : 0;  // a file without an end may have more
        }
    }
}

// After each block the next marker meets what the block has left in the line.
static void ReadBlock(std::FILE* file, char* line) {
    if (EqualIgnoringCase(line, "NMRSelectionBegin")) {
        ReadNMRSelection(file, line);
    }
    if (EqualIgnoringCase(line, "QuantumSelectionBegin")) {
        ReadQuantumSelection(file, line);
    }
    if (EqualIgnoringCase(line, "AtomsBegin")) {
        ReadAtoms(file);
    }
}

static void ReadLines(std::FILE* file) {
    char line[LineSize];
    while (ReadLine(file, line)) {
        if (line[0] == '\0' || line[0] == ';') {
            continue;
        }
        StripLine(line);
        if (ReadOption(line)) {
            continue;
        }
        ReadBlock(file, line);
        if (std::strchr(line, '=') != nullptr) {
            Warning(Message::UnknownOption, line);
        }
    }
}

// The first atom of a molecule or of a later one: the atoms of a molecule stand together, in the order of molecules.
static int FirstAtomOf(int molecule) {
    int first = 0;
    int end = AtomLineCount;
    while (first < end) {
        const int middle = first + (end - first) / 2;
        if (Run.Molecule.AtomRecords[middle].MoleculeIndex < molecule) {
            first = middle + 1;
        } else {
            end = middle;
        }
    }
    return first;
}

// Index of the atom that an entry means: the position counts the atoms of its molecule. -1 if there is none.
static int FindAtom(const SelectionEntry& entry) {
    PollReading(RecordUnits);
    const long long atom = static_cast<long long>(FirstAtomOf(entry.Molecule)) + entry.Atom - 1;
    return atom < AtomLineCount && Run.Molecule.AtomRecords[atom].MoleculeIndex == entry.Molecule
               ? static_cast<int>(atom)
               : -1;
}

static void ResolveNMRSelection() {
    for (int i = 0; i < Run.Molecule.NMRAtomCount; ++i) {
        const int atom = FindAtom(Work.NMREntries[i]);
        if (atom < 0) {
            FatalError(Message::NoSuchNmrAtom, Work.NMREntries[i].Atom, Work.NMREntries[i].Molecule,
                       Run.Job.InputFilePath);
        }
        Run.Molecule.NMRAtomList[i] = atom + 1;
    }
}

static void ResolveQuantumSelection() {
    const bool selected = Run.Molecule.SelectedAtomCount != -1;
    for (int atom = 0; atom < Run.Molecule.AtomCount; ++atom) {
        PollReading(RecordUnits);
        Run.Molecule.AtomRecords[atom].SelectionState = selected ? 1 : 0;
    }
    if (!selected) {
        return;
    }
    for (int i = 0; i < Run.Molecule.SelectedAtomCount; ++i) {
        const int atom = FindAtom(Work.QuantumEntries[i]);
        if (atom < 0) {
            FatalError(Message::NoSuchSelectedAtom, Work.QuantumEntries[i].Atom, Work.QuantumEntries[i].Molecule,
                       Run.Job.InputFilePath);
        }
        Run.Molecule.AtomRecords[atom].SelectionState = 0;
    }
    Run.Molecule.SelectedAtomCount = 0;  // BuildCappingAtoms counts
}

void ReadParameterInput(std::FILE* file) {
    const char* path = Run.Job.InputFilePath;
    SetDefaultOptions();
    Run.Molecule.AtomCount = -1;
    Run.Molecule.SelectedAtomCount = -1;
    Run.Molecule.NMRAtomCount = -1;
    IndexTypes();
    ReadLines(file);
    const bool damaged = std::ferror(file) != 0;
    std::fclose(file);
    if (damaged) {
        FatalError(Message::UnreadableInput, path);
    }
    if (Run.Molecule.AtomCount == -1) {
        FatalError(Message::NoCoordinates, path);
    }
    if (Run.Molecule.NMRAtomCount == -1) {
        FatalError(Message::NoNmrSelection, path);
    }
    ResolveNMRSelection();
    ResolveQuantumSelection();
    FreeArraysOf(Work);
}
