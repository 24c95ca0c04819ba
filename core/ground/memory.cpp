// SPDX-License-Identifier: MIT
// Allocation with a look at what the machine has left: a system that promises more memory than it owns would end the
// process when the pages are touched, with no word in the output file.
#include "ground/memory.h"

#include "ground/message_poll.h"
#include "ground/platform.h"

#include <algorithm>

static constexpr double UncheckedBytes = 1 << 18;    // blocks below this size aren't worth the look
static constexpr double SafetyShare = 0.95;          // the rest is for page tables and for what others take meanwhile
static constexpr std::size_t LargeBlock = 64 << 20;  // bytes from which small pages would delay a stop
static constexpr std::size_t PageBytes = 4096;       // of the smallest page of memory
static constexpr int TouchedPageUnits = 512;         // work of a page for PollMessages

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

void* AllocateBytes(long long count, std::size_t size) {
    return ReallocateBytes(nullptr, count, size);
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

void TouchPages(void* block, std::size_t bytes) {
    if (static_cast<double>(bytes) < UncheckedBytes) {
        return;
    }
    for (std::size_t i = 0; i < bytes; i += PageBytes) {
        static_cast<volatile char*>(block)[i] = 0;
        PollMessages(TouchedPageUnits);
    }
}
