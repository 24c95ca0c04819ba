// SPDX-License-Identifier: MIT
// Fuzz target for libFuzzer: reads arbitrary bytes as nmrspect.in, and simulates and writes what is accepted
// and small. A fatal error calls exit(0); the linker hands that call to __wrap_exit, which returns to the
// target.
//
//   CXX=clang++ cmake -B build/fuzz -DCMAKE_CXX_FLAGS="-fsanitize=fuzzer-no-link,address,undefined"
//   cmake --build build/fuzz --target velkoran_spectrum_fuzz
//   export ASAN_OPTIONS=allocator_may_return_null=1:max_allocation_size_mb=1000
//       build/fuzz/tests/velkoran_spectrum_fuzz -max_len=1500 -rss_limit_mb=0 -malloc_limit_mb=100000
//       tests/fuzz_corpus
#include "files/result_writer.h"
#include "files/spectrum_input.h"
#include "shell/run_state.h"
#include "spectrum/compute_spectrum.h"

#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

static constexpr double LargestSystem = 2000;  // states of the systems that are simulated

static std::jmp_buf Return;
static bool Inside = false;
static std::FILE* Input = nullptr;

extern "C" void __real_exit(int code) __attribute__((noreturn));
extern "C" void __wrap_exit(int code) __attribute__((noreturn));

extern "C" void __wrap_exit(int code) {
    if (Inside) {
        std::longjmp(Return, 1);
    }
    __real_exit(code);
}

// States that a system has in all combinations of its total spins.
static double StateCount() {
    double states = 1.0;
    for (int g = 0; g < Run.SpinGroupCount; ++g) {
        const double n = Run.NucleiInGroup[g];
        states *= (n + 2.0) * (n + 2.0) / 4.0;
    }
    return states * Run.SpinGroupCount;
}

static void ReadAndSimulate() {
    ReadSpectrumInput(Input);
    Input = nullptr;  // the reader has closed it
    if (StateCount() <= LargestSystem) {
        ComputeSpectrum();
        WriteResults();
    }
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static char noLog[] = "";
    if (size == 0) {
        return 0;
    }
    Run.ConsoleMode = 0;
    Run.LogFilePath = noLog;
    Run.LogEnabled = 0;
    Run.RunKind = Run.ActiveRunKind = SpectrumRun;
    std::snprintf(Run.OutputFilePath, FilePathSize, "/dev/null");
    Input = fmemopen(const_cast<std::uint8_t*>(data), size, "r");
    Inside = true;
    if (setjmp(Return) == 0) {
        ReadAndSimulate();
    }
    Inside = false;
    Run.FatalGuardFrame = nullptr;
    if (Input != nullptr) {
        std::fclose(Input);
    }
    FreeRunData();
    return 0;
}
