// SPDX-License-Identifier: MIT
// Arrays of plain records. The caller tests each allocation and says with its own message that it failed.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <type_traits>

// True if a block of that many bytes can be had without driving the machine out of memory; blocks under a megabyte
// aren't checked, they are malloc's to refuse.
bool MemoryCanServe(double bytes);

// Memory for count records of size bytes, not cleared; null if it can't be had. Give it back with FreeArray.
void* AllocateBytes(long long count, std::size_t size);

// The same block with room for count records, or null, and then the old block stays as it was.
void* ReallocateBytes(void* block, long long count, std::size_t size);

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
