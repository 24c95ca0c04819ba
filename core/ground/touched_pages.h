// SPDX-License-Identifier: MIT
// Pages of new arrays, taken before a stage begins.
#pragma once

#include <cstddef>

// Touches a new block page by page and polls, so that it counts as taken from now on. The system clears each page as it
// is first touched, and a stage would touch all of them between two polls. Blocks too small to be checked stay as they
// are. May not return.
void TouchPages(void* block, std::size_t bytes);

// What a stage does to all of its arrays, as ArraySum and ArrayAllocator do (ground/memory.h).
struct ArrayToucher {
    template <class Record> void operator()(Record*& array, long long count) {
        TouchPages(array, static_cast<std::size_t>(count) * sizeof(Record));
    }
};
