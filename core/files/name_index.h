// SPDX-License-Identifier: MIT
// Finds a name among many, regardless of case, in a time that doesn't grow with their number.
#pragma once

#include <cstddef>

// Names that stand in records of a table, by hash. Made by PrepareNameIndex; its caller frees Records. The table stays
// the caller's.
struct NameIndex {
    const char* FirstName;         // the name of record 0
    std::size_t RecordSize;        // bytes from one name to the next
    int* Records;                  // [SlotCount] record number + 1; 0 for a slot without a name
    unsigned long long SlotCount;  // a power of two, at least twice the names
};

// An empty index with room for count names. Raises MoleculeTooLarge.
void PrepareNameIndex(NameIndex& index, const char* firstName, std::size_t recordSize, int count);

// Adds the name of a record, unless that name is there already.
void AddName(NameIndex& index, int record);

// The record with a name, or -1.
int FindName(const NameIndex& index, const char* name);
