// SPDX-License-Identifier: MIT
// Allocation with a look at what the machine has left: a system that promises more memory than it owns would end the
// process when the pages are touched, with no word in the output file.
#include "ground/memory.h"

#include "ground/platform.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

static constexpr double SafetyShare = 0.95;          // the rest is for page tables and for what others take meanwhile
static constexpr std::size_t LargeBlock = 64 << 20;  // bytes from which small pages would delay a stop

// Kept free beside the share: the stack, the blocks that aren't checked, the buffers of files, the system's own records
// of the process, and the line of a refusal.
static constexpr double ReservedBytes = 2 << 20;

// What may be asked for without a look, which takes a twentieth of the time of a small run: at first as much as a block
// that isn't checked, then a small part of what the last look left.
static double Allowance = UncheckedBytes;
static constexpr double AllowedShare = 1.0 / 64;
static constexpr double LargestAllowance = 16 << 20;

bool MemoryCanServe(double bytes) {
    if (bytes <= Allowance) {
        Allowance -= bytes;
        return true;
    }
    const double left = SafetyShare * static_cast<double>(AvailableMemory()) - ReservedBytes - bytes;
    Allowance = std::clamp(left * AllowedShare, 0.0, LargestAllowance);
    return left > 0.0;
}

// Places of the pointers to the arrays of the run, in no order. There are fewer in the sources than room for them.
static constexpr int MostNotes = 256;
static void* Notes[MostNotes];
static int NoteCount = 0;

static int FindNote(const void* place) {
    int i = NoteCount - 1;
    while (i >= 0 && Notes[i] != place) {
        --i;
    }
    return i;
}

bool TakeNote(void* place) {
    if (FindNote(place) >= 0) {
        return true;
    }
    if (NoteCount == MostNotes) {
        return false;
    }
    Notes[NoteCount++] = place;
    return true;
}

void DropNote(const void* place) {
    const int i = FindNote(place);
    if (i >= 0) {
        Notes[i] = Notes[--NoteCount];
    }
}

// Frees the array whose pointer stands at a noted place. Pointers to records of any type are read and nulled by their
// bytes.
static void FreeNote(int i) {
    void* const none = nullptr;
    void* array;
    std::memcpy(&array, Notes[i], sizeof array);
    std::memcpy(Notes[i], &none, sizeof none);
    std::free(array);
    Notes[i] = Notes[--NoteCount];
}

void FreeArraysWithin(void* start, std::size_t bytes) {
    const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(start);
    for (int i = NoteCount - 1; i >= 0; --i) {
        if (reinterpret_cast<std::uintptr_t>(Notes[i]) - first < bytes) {
            FreeNote(i);
        }
    }
}

void FreeNotedArrays() {
    while (NoteCount > 0) {
        FreeNote(NoteCount - 1);
    }
}

static bool CanServeRecords(long long count, std::size_t size) {
    const double bytes = static_cast<double>(count) * static_cast<double>(size);
    return count >= 0 && (bytes < UncheckedBytes || MemoryCanServe(bytes));
}

static std::size_t BytesToAsk(long long count, std::size_t size) {
    return count > 0 ? static_cast<std::size_t>(count) * size : 1;
}

// A stop gives all memory back: a gigabyte in small pages takes a tenth of a second and more.
static void* Prepared(void* block, std::size_t bytes) {
    if (block != nullptr && bytes >= LargeBlock) {
        PreferLargePages(block, bytes);
    }
    return block;
}

void* AllocateZeroedBytes(long long count, std::size_t size) {
    if (!CanServeRecords(count, size)) {
        return nullptr;
    }
    const std::size_t bytes = BytesToAsk(count, size);
    return Prepared(std::calloc(bytes, 1), bytes);
}

void* ReallocateBytes(void* block, long long count, std::size_t size) {
    if (!CanServeRecords(count, size)) {
        return nullptr;
    }
    const std::size_t bytes = BytesToAsk(count, size);
    return Prepared(std::realloc(block, bytes), bytes);
}
