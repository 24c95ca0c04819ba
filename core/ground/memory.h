// SPDX-License-Identifier: MIT
// Arrays of plain records. The caller tests each allocation and says with its own message that it failed.
//
// An array of the run is noted by the place of its pointer, a field of Run or of a stage's own static work:
// FreeArraysOf frees what hangs on one record, FreeNotedArrays all there is, and both null the pointers. So a stop can
// leave a stage at any moment.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <type_traits>

// True if so many bytes more can be had without driving the machine, or a group of processes with a limit, out of
// memory. A stage asks for the sum of all that it needs before it touches its first array: memory that was given but
// not yet touched still counts as free.
bool MemoryCanServe(double bytes);

// Blocks below this size aren't worth the look at what the machine has.
inline constexpr double UncheckedBytes = 1 << 18;

// Memory for count records of size bytes, cleared; null if it can't be had. Small blocks aren't checked, they are
// malloc's to refuse.
void* AllocateZeroedBytes(long long count, std::size_t size);

// The same block, or a new one for null, with room for count records and not cleared; or null, and then the old block
// stays as it was.
void* ReallocateBytes(void* block, long long count, std::size_t size);

// Takes and gives up notes. place is where a pointer to an array stands, of static lifetime; TakeNote does nothing for
// a place that is noted already, and is false if there are too many notes.
bool TakeNote(void* place);
void DropNote(const void* place);

// Frees the noted arrays whose pointers stand within these bytes, or all.
void FreeArraysWithin(void* start, std::size_t bytes);
void FreeNotedArrays();

// Frees the arrays of a record of the run.
template <class Record> void FreeArraysOf(Record& record) {
    FreeArraysWithin(&record, sizeof record);
}

// Frees an array and nulls its pointer; null is allowed.
template <class Record> void FreeArray(Record*& array) {
    std::free(array);
    array = nullptr;
    DropNote(&array);
}

// Makes room for count records in an array of the run; false, and the array as it was, if it can't be had.
template <class Record> bool GrowArray(Record*& array, long long count) {
    static_assert(std::is_trivially_copyable_v<Record>);
    void* grown = TakeNote(&array) ? ReallocateBytes(array, count, sizeof(Record)) : nullptr;
    if (grown != nullptr) {
        array = static_cast<Record*>(grown);
    }
    return grown != nullptr;
}

// Replaces an array of the run by a new one of count records, cleared or not; false, and the pointer null, if it can't
// be had.
template <class Record> bool AllocateArray(Record*& array, long long count) {
    FreeArray(array);
    return GrowArray(array, count);
}
template <class Record> bool AllocateZeroed(Record*& array, long long count) {
    static_assert(std::is_trivially_copyable_v<Record>);
    FreeArray(array);
    array = TakeNote(&array) ? static_cast<Record*>(AllocateZeroedBytes(count, sizeof(Record))) : nullptr;
    return array != nullptr;
}

// Moves an array of the run to another owner, in place of what hangs there.
template <class Record> void MoveArray(Record*& from, Record*& to) {
    FreeArray(to);
    DropNote(&from);
    TakeNote(&to);  // in the room of the note that was dropped
    to = from;
    from = nullptr;
}

// An array that lives as long as the process, cleared; null if it can't be had.
template <class Record> Record* AllocateForProcess(long long count) {
    static_assert(std::is_trivially_copyable_v<Record>);
    return static_cast<Record*>(AllocateZeroedBytes(count, sizeof(Record)));
}

// What a stage does to all of its arrays, each with its number of records: a function of the stage hands them over one
// by one, so that the sum and the allocation are of the same arrays.
struct ArraySum {
    double Bytes = 0.0;  // of all arrays so far

    template <class Record> void operator()(Record*&, long long count) {
        Bytes += static_cast<double>(count) * static_cast<double>(sizeof(Record));
    }
};

// Replaces each array by a new one.
struct ArrayAllocator {
    bool Complete = true;  // all arrays so far could be had; from the first that couldn't, all are null

    template <class Record> void operator()(Record*& array, long long count) {
        if (Complete) {
            Complete = AllocateArray(array, count);
        } else {
            FreeArray(array);
        }
    }
};
