// SPDX-License-Identifier: MIT
// Allocation with a look at what the machine has left: a system that promises more memory than it owns would end the
// process when the pages are touched, with no word in the output file.
#include "shell/memory.h"

#include "shell/platform.h"

static constexpr double UncheckedBytes = 1 << 20;  // blocks below this size aren't worth the look
static constexpr double SafetyShare = 0.95;        // the rest stays for the system
static constexpr std::size_t LargeBlock = 64 << 20;  // bytes from which small pages would delay a stop

bool MemoryCanServe(double bytes) {
    return bytes < UncheckedBytes || bytes < SafetyShare * static_cast<double>(AvailableMemory());
}

void* AllocateBytes(long long count, std::size_t size) {
    return ReallocateBytes(nullptr, count, size);
}

// A stop gives all memory back: a gigabyte in small pages takes a tenth of a second and more.
static void* Prepared(void* block, std::size_t bytes) {
    if (block != nullptr && bytes >= LargeBlock) {
        PreferLargePages(block, bytes);
    }
    return block;
}

static bool CanServeRecords(long long count, std::size_t size) {
    return count >= 0 && MemoryCanServe(static_cast<double>(count) * static_cast<double>(size));
}

void* AllocateZeroedBytes(long long count, std::size_t size) {
    if (!CanServeRecords(count, size)) {
        return nullptr;
    }
    const std::size_t records = count > 0 ? static_cast<std::size_t>(count) : 1;
    return Prepared(std::calloc(records, size), records * size);
}

void* ReallocateBytes(void* block, long long count, std::size_t size) {
    if (!CanServeRecords(count, size)) {
        return nullptr;
    }
    const std::size_t bytes = count > 0 ? static_cast<std::size_t>(count) * size : 1;
    return Prepared(std::realloc(block, bytes), bytes);
}
