// SPDX-License-Identifier: MIT
// Sums up the levels of the parts and looks for neighbours.
#include "spectrum/level_coincidences.h"

#include "ground/fatal_error.h"
#include "ground/memory.h"
#include "ground/message_poll.h"
#include "spectrum/sub_matrices.h"
#include "spectrum/table_memory.h"

#include <algorithm>

struct Level {
    int Steps;      // below the highest projection
    double Energy;  // Hz
};

// Grown by NoteLevels and its kin.
static struct {
    Level* Levels;       // [LevelCount] of all SubMatrices of all parts
    int* SubMatrixEnds;  // [SubMatrixCount] number of levels up to the end of each SubMatrix
    int* PartEnds;       // [PartCount] number of SubMatrices up to the end of each part
    Level* Sums;         // [states of the SubMatrix of the whole] while coincidences are looked for
    int LevelCount;
    int SubMatrixCount;
    int PartCount;
    long long LevelRoom;
    long long SubMatrixRoom;
    long long PartRoom;
} Noted;

template <class Record> static void AppendRecord(Record*& array, int& count, long long& room, const Record& record) {
    if (count == room) {
        room = std::max(64LL, 2 * room);
        if (!GrowArray(array, room)) {
            FatalError(Message::OutOfMemory);
        }
    }
    array[count++] = record;
}

void StartLevels() {
    FreeLevels();
    Noted = {};
}

void NoteLevels(const double* energies, int count, int steps) {
    for (int i = 0; i < count; ++i) {
        AppendRecord(Noted.Levels, Noted.LevelCount, Noted.LevelRoom, {steps, energies[i]});
    }
}

void EndLevelsOfSubMatrix() {
    AppendRecord(Noted.SubMatrixEnds, Noted.SubMatrixCount, Noted.SubMatrixRoom, Noted.LevelCount);
}

void EndLevelsOfPart() {
    AppendRecord(Noted.PartEnds, Noted.PartCount, Noted.PartRoom, Noted.SubMatrixCount);
}

static int FirstSubMatrix(int part) {
    return part > 0 ? Noted.PartEnds[part - 1] : 0;
}

static int FirstLevel(int subMatrix) {
    return subMatrix > 0 ? Noted.SubMatrixEnds[subMatrix - 1] : 0;
}

static int LevelsOf(int subMatrix) {
    return Noted.SubMatrixEnds[subMatrix] - FirstLevel(subMatrix);
}

// Each sum plus each level of a SubMatrix of one more part, in place from the last sum backwards; returns the new
// number of sums.
static int AddLevels(int sums, int subMatrix) {
    const Level* levels = Noted.Levels + FirstLevel(subMatrix);
    const int count = LevelsOf(subMatrix);
    for (int sum = sums - 1; sum >= 0; --sum) {
        const Level old = Noted.Sums[sum];
        for (int i = 0; i < count; ++i) {
            Noted.Sums[sum * count + i] = {old.Steps + levels[i].Steps, old.Energy + levels[i].Energy};
        }
    }
    PollMessages(sums * count);
    return sums * count;
}

static bool SumsCoincide(int sums, double distance) {
    std::sort(Noted.Sums, Noted.Sums + sums, [](const Level& a, const Level& b) {
        return a.Steps != b.Steps ? a.Steps < b.Steps : a.Energy < b.Energy;
    });
    PollMessages(sums);
    const Level* first = Noted.Sums;
    const Level* end = first + sums;
    return std::adjacent_find(first, end, [distance](const Level& a, const Level& b) {
               return a.Steps == b.Steps && b.Energy - a.Energy < distance;
           }) != end;
}

// The next choice of a SubMatrix of each part, like an odometer; false after the last one.
static bool NextChoice(int* choice) {
    for (int part = Noted.PartCount - 1; part >= 0; --part) {
        if (++choice[part] < Noted.PartEnds[part]) {
            return true;
        }
        choice[part] = FirstSubMatrix(part);
    }
    return false;
}

// The first SubMatrix of each part, with the highest spins, is the largest.
static void AllocateSums() {
    long long largest = 1;
    for (int part = 0; part < Noted.PartCount; ++part) {
        largest *= LevelsOf(FirstSubMatrix(part));
    }
    AllocateTable(Noted.Sums, largest);
}

bool LevelsCoincide(double distance) {
    AllocateSums();
    int choice[LargestGroupCount];
    for (int part = 0; part < Noted.PartCount; ++part) {
        choice[part] = FirstSubMatrix(part);
    }
    do {
        Noted.Sums[0] = {0, 0.0};
        int sums = 1;
        for (int part = 0; part < Noted.PartCount; ++part) {
            sums = AddLevels(sums, choice[part]);
        }
        if (SumsCoincide(sums, distance)) {
            return true;
        }
    } while (NextChoice(choice));
    return false;
}

void FreeLevels() {
    FreeArraysOf(Noted);
}
