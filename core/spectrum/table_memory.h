// SPDX-License-Identifier: MIT
// Memory for the tables of the simulators.
#pragma once

#include "ground/fatal_error.h"
#include "ground/memory.h"

// A new array of count records in place of what hangs there. Raises OutOfMemory.
template <class Record> void AllocateTable(Record*& table, long long count) {
    if (!AllocateArray(table, count)) {
        FatalError(Message::OutOfMemory);
    }
}
