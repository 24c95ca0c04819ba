// SPDX-License-Identifier: MIT
// Reads the three parameter files. A type has two entries in each table: i as an ordinary atom, AtomTypeCount + i as a
// capping atom, whose record has the type's name with a "-" before it.
#include "files/parameter_files.h"

#include "files/name_index.h"
#include "files/text_scan.h"
#include "ground/fatal_error.h"
#include "ground/file_path.h"
#include "ground/memory.h"
#include "ground/message_poll.h"
#include "ground/platform.h"
#include "ground/run_state.h"

#include <cctype>
#include <climits>
#include <cstring>

static constexpr int CountedLineSize = 128;  // buffer of the pass that counts the types
static constexpr int NameLineSize = 256;     // buffer of the pass that reads them
static constexpr int TypeNameWidth = 3;
static constexpr int RecordNameSize = 6;  // "-", 3 characters, one more that tells a longer name, terminator
static constexpr int RecordNumbers = 14;
static constexpr int MostTypes = INT_MAX / 2;  // so that a number of records fits

// One record of a parameter file as it stands there.
struct ParameterRecord {
    char Name[RecordNameSize];      // cut where nothing can match any more
    double Numbers[RecordNumbers];  // columns 1 to 14
};

// What the reader keeps while it reads.
static struct {
    ParameterRecord* Records;  // [2 AtomTypeCount] records of the file in hand
    NameIndex RecordNames;     // of those that count
} Work;

static std::FILE* OpenParameterFile(const char* name, char* path) {
    ComposePath(name, Run.Job.ParameterDirectory, path);
    std::FILE* file = OpenFile(path, "r");
    if (file == nullptr) {
        FatalError(Message::ParameterFileNotOpened, path);
    }
    return file;
}

static void ToUpperCase(char* text) {
    for (; *text != '\0'; ++text) {
        *text = static_cast<char>(std::toupper(static_cast<unsigned char>(*text)));
    }
}

// Every line counts that isn't a comment, blank ones too, less the heading. Memory ends before the count does.
static int CountTypes(const char* path, std::FILE* file) {
    char line[CountedLineSize];
    int count = -1;
    while (count < MostTypes && ReadLine(file, line, sizeof line)) {
        if (line[0] != '\0' && line[0] != ';') {
            ++count;
        }
    }
    if (count < 1) {
        FatalError(Message::NoAtomTypes, path);
    }
    return count;
}

// A table that the run keeps to the end of the process.
template <class Record> static void AllocateTable(Record*& table, long long count) {
    FreeArray(table);
    table = AllocateForProcess<Record>(count);
    if (table == nullptr) {
        FatalError(Message::MoleculeTooLarge);
    }
}

// On purpose comment lines aren't skipped here as they were in counting: one ends the list early, and the names that
// are left stay empty.
static void ReadTypeNames(std::FILE* file) {
    char line[NameLineSize];
    ReadLine(file, line, sizeof line);
    for (int i = 0; i < Run.Parameters.AtomTypeCount && ReadLine(file, line, sizeof line); ++i) {
        const char* text = line;
        char name[TypeNameWidth + 1];
        double unused;
        if (!ScanWord(text, TypeNameWidth, name) || !ScanReal(text, &unused)) {
            return;
        }
        ToUpperCase(name);
        std::strcpy(Run.Parameters.AtomTypeNames[i].Text, name);
    }
}

static void ReadTypes() {
    char path[FilePathSize];
    std::FILE* file = OpenParameterFile("nmrtype.txt", path);
    Run.Parameters.AtomTypeCount = CountTypes(path, file);
    std::fclose(file);
    const long long entries = 2LL * Run.Parameters.AtomTypeCount;
    AllocateTable(Run.Parameters.ParameterFileShielding, entries);
    AllocateTable(Run.Parameters.ParameterFileCoupling, entries);
    AllocateTable(Run.Parameters.CouplingConstants, entries);
    AllocateTable(Run.Parameters.AtomTypeNames, Run.Parameters.AtomTypeCount);
    if (!AllocateZeroed(Work.Records, entries)) {
        FatalError(Message::MoleculeTooLarge);
    }
    file = OpenParameterFile("nmrtype.txt", path);
    ReadTypeNames(file);
    std::fclose(file);
}

static bool ReadRecord(std::FILE* file, ParameterRecord& record) {
    record = {};
    if (!ReadWord(file, RecordNameSize - 1, record.Name)) {  // what is beyond the room for a name can't match
        return false;
    }
    for (double& number : record.Numbers) {
        if (!ReadReal(file, &number)) {
            return false;
        }
    }
    return true;
}

// Reading stops at the first short record; that one and the rest count as zeros, except, on purpose, where it was the
// last: then it counts as far as it goes. Of records with one name the first wins.
static void ReadRecords(std::FILE* file) {
    const int count = 2 * Run.Parameters.AtomTypeCount;
    PrepareNameIndex(Work.RecordNames, Work.Records[0].Name, sizeof(ParameterRecord), count);
    for (int i = 0; i < count; ++i) {
        if (!ReadRecord(file, Work.Records[i]) && i + 1 < count) {
            return;
        }
        AddName(Work.RecordNames, i);
    }
}

// The columns of the file stand in another order than the fields; 8 and 9 cross.
static AtomTypeParameters ParametersOf(const ParameterRecord& record) {
    const auto column = [&](int number) { return record.Numbers[number - 1]; };
    return {.OrbitalEnergyS = column(4),
            .OrbitalEnergyP = column(5),
            .OrbitalEnergyD = column(6),
            .SlaterExponentS = column(1),
            .SlaterExponentP = column(2),
            .SlaterExponentD = column(3),
            .BondingParameter = column(7),
            .SlaterCondonG1 = column(9),
            .SlaterCondonF2 = column(8),
            .IsolatedEnergyTndo1 = column(12),
            .IsolatedEnergyTndo2 = column(13),
            .AtomHeat = column(14)};
}

// Copies the records of all types, as ordinary and as capping atoms, into the tables; constants may be null.
static void DistributeRecords(AtomTypeParameters* parameters, NuclearConstants* constants) {
    for (int entry = 0; entry < 2 * Run.Parameters.AtomTypeCount; ++entry) {
        const bool capping = entry >= Run.Parameters.AtomTypeCount;
        char name[RecordNameSize] = "-";
        std::strcpy(name + (capping ? 1 : 0), Run.Parameters.AtomTypeNames[entry % Run.Parameters.AtomTypeCount].Text);
        PollReading(RecordUnits);
        const int found = FindName(Work.RecordNames, name);
        if (found >= 0) {
            const ParameterRecord& record = Work.Records[found];
            parameters[entry] = ParametersOf(record);
            if (constants != nullptr) {
                constants[entry] = {.GFactor = record.Numbers[10], .SDensity = record.Numbers[9]};
            }
        }
    }
}

static void ReadParameterFile(const char* name, AtomTypeParameters* parameters, NuclearConstants* constants) {
    char path[FilePathSize];
    std::FILE* file = OpenParameterFile(name, path);
    ReadRecords(file);
    std::fclose(file);
    DistributeRecords(parameters, constants);
}

void ReadParameterFiles() {
    ReadTypes();
    ReadParameterFile("nmr_shft.abp", Run.Parameters.ParameterFileShielding, nullptr);
    ReadParameterFile("nmr_cupl.abp", Run.Parameters.ParameterFileCoupling, Run.Parameters.CouplingConstants);
    FreeArraysOf(Work);
}
