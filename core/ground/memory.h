// SPDX-License-Identifier: MIT
// Arrays of plain records. The caller tests each allocation and says with its own message that it failed.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <type_traits>

// True if so many bytes more can be had without driving the machine, or a group of processes with a limit, out of
// memory. A stage asks for the sum of all that it needs before it touches its first array: memory that was given but
// not yet touched still counts as free.
bool MemoryCanServe(double bytes);

// Memory for count records of size bytes, not cleared; null if it can't be had. Small blocks aren't checked, they are
// malloc's to refuse. Give it back with FreeArray.
void* AllocateBytes(long long count, std::size_t size);

// The same block with room for count records, or null, and then the old block stays as it was.
void* ReallocateBytes(void* block, long long count, std::size_t size);

// Touches a new block page by page and polls, so that it counts as taken from now on. The system clears each page as it
// is first touched, and a stage would touch all of them between two polls. Blocks too small to be checked stay as they
// are. May not return.
void TouchPages(void* block, std::size_t bytes);

// An array of count plain records, not cleared; null if it can't be had.
template <class Record> Record* AllocateArray(long long count) {
    static_assert(std::is_trivially_copyable_v<Record>);
    return static_cast<Record*>(AllocateBytes(count, sizeof(Record)));
}

// The same, cleared to zeros.
void* AllocateZeroedBytes(long long count, std::size_t size);
template <class Record> Record* AllocateZeroed(long long count) {
    static_assert(std::is_trivially_copyable_v<Record>);
    return static_cast<Record*>(AllocateZeroedBytes(count, sizeof(Record)));
}

// Frees an array and nulls its pointer; null is allowed.
template <class Record> void FreeArray(Record*& array) {
    std::free(array);
    array = nullptr;
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
        FreeArray(array);
        array = Complete ? AllocateArray<Record>(count) : nullptr;
        Complete = array != nullptr;
    }
};

struct ArrayToucher {
    template <class Record> void operator()(Record*& array, long long count) {
        TouchPages(array, static_cast<std::size_t>(count) * sizeof(Record));
    }
};
