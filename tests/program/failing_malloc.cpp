// SPDX-License-Identifier: MIT
// Loaded ahead of the C library: lets one allocation fail, or all from one on. FAILING_ALLOCATION is its
// number from 1, FAILING_ALL makes all later ones fail too. Tells each failure on standard error. Allocations
// before the constructors aren't counted.
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <unistd.h>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
}

static std::atomic<long> Count = 0;  // allocations counted
static long Failing = 0;             // number of the one that fails; 0 before the constructors
static bool All = false;             // and all after it

__attribute__((constructor)) static void ReadEnvironment() {
    const char* number = std::getenv("FAILING_ALLOCATION");
    All = std::getenv("FAILING_ALL") != nullptr;
    Failing = number != nullptr ? std::atol(number) : 0;
}

static bool Fails() {
    if (Failing == 0) {
        return false;
    }
    const long number = ++Count;
    const bool fails = number == Failing || (All && number > Failing);
    if (fails) {
        static constexpr char Text[] = "allocation failed\n";
        (void)!write(2, Text, sizeof Text - 1);
        errno = ENOMEM;
    }
    return fails;
}

extern "C" void* malloc(std::size_t size) {
    return Fails() ? nullptr : __libc_malloc(size);
}

extern "C" void* calloc(std::size_t count, std::size_t size) {
    return Fails() ? nullptr : __libc_calloc(count, size);
}

extern "C" void* realloc(void* block, std::size_t size) {
    return Fails() ? nullptr : __libc_realloc(block, size);
}
