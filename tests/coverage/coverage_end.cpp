// SPDX-License-Identifier: MIT
// Linked into every program and library of the coverage build: writes the counters where a process ends without the end
// of the C library, and gives the writing its memory where a test lets allocations fail.
#include <cstddef>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __real_malloc(std::size_t size);
void __real__exit(int code);
void __gcov_dump();
}

static bool Ending = false;  // the counters are about to be written

// The counters are written in destructors of priority 100, which come later.
__attribute__((destructor(101))) static void NoteEnd() {
    Ending = true;
}

extern "C" void* __wrap_malloc(std::size_t size) {
    return Ending ? __libc_malloc(size) : __real_malloc(size);
}

extern "C" void __wrap__exit(int code) {
    Ending = true;
    __gcov_dump();
    __real__exit(code);
}

// Weak: the fuzz targets have one of their own.
extern "C" __attribute__((weak)) void __wrap__Exit(int code) {
    __wrap__exit(code);
}
