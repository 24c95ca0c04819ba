// SPDX-License-Identifier: MIT
// Chooses the three-centre kernels for the processor that runs the program.
#include "nmr/three_centre_kernels.h"

static const ThreeCentreKernels* KernelsInUse = nullptr;

int SupportedThreeCentreKernels(const ThreeCentreKernels* list[], int capacity) {
    int count = 0;
    const auto add = [&](const ThreeCentreKernels& kernels) {
        if (count < capacity) {
            list[count++] = &kernels;
        }
    };
    add(BaselineThreeCentreKernels);
#if defined(__x86_64__)
    if (__builtin_cpu_supports("avx2")) {
        add(Avx2ThreeCentreKernels);
    }
    if (__builtin_cpu_supports("avx512f")) {
        add(Avx512ThreeCentreKernels);
    }
#endif
    return count;
}

const ThreeCentreKernels& KernelsOfThreeCentres() {
    if (KernelsInUse == nullptr) {
        const ThreeCentreKernels* list[3];
        KernelsInUse = list[SupportedThreeCentreKernels(list, 3) - 1];
    }
    return *KernelsInUse;
}

void UseThreeCentreKernels(const ThreeCentreKernels& kernels) {
    KernelsInUse = &kernels;
}
