// SPDX-License-Identifier: MIT
// Takes the three-centre kernels of the instruction set in use.
#include "nmr/three_centre_kernels.h"

#include "numerics/instruction_set.h"

const ThreeCentreKernels& KernelsOfThreeCentres() {
    static constexpr const ThreeCentreKernels* Sets[InstructionSetCount] = {
        &BaselineThreeCentreKernels,
#if defined(__x86_64__)
        &Avx2ThreeCentreKernels,
        &Avx512ThreeCentreKernels,
#endif
    };
    return *Sets[InstructionSetInUse()];
}
