#!/bin/sh
# SPDX-License-Identifier: MIT
# Builds the program with g++ and clang++, each at -O0 and at -O3, and compares logs and results of the examples and of
# all whole runs of the tests byte for byte: between the four builds, and of the optimised builds on emulated processors
# that lack vector instructions. No run is left out for its length: all runs of the tests together take a processor 5 s,
# an emulated one 45 s.
set -eu
cd "$(dirname "$0")/.."
if [ "$(uname -m)" != x86_64 ]; then
    echo "run_build_matrix: there are several kernels, and so a choice to restrict, on x86_64 only" >&2
    exit 1
fi
sh scripts/install_packages.sh g++ clang cmake ninja-build qemu-user
top=build/matrix
mkdir -p "$top"

# The choice that the program makes for all its kernels, made by its own function.
cat >"$top/kernel_name.cpp" <<'END'
#include "numerics/instruction_set.h"

#include <cstdio>

int main() {
    std::puts(NameOf(InstructionSetInUse()));
}
END

programs=""
for compiler in g++ clang++; do
    for level in O0 O3; do
        build=$top/$compiler-$level
        cmake -S . -B "$build" -G Ninja -DBUILD_TESTING=OFF -DCMAKE_CXX_COMPILER=$compiler -DCMAKE_BUILD_TYPE=None \
            -DCMAKE_CXX_FLAGS=-$level >/dev/null
        cmake --build "$build" --target velkoran
        if grep '"command"' "$build/compile_commands.json" | grep -vq -e " -$level "; then
            echo "run_build_matrix: not every file of $build is compiled with -$level" >&2
            exit 1
        fi
        $compiler -std=c++20 -Icore "$top/kernel_name.cpp" "$build/libvelkoran_core.a" -o "$build/kernel_name"
        echo "run_build_matrix: $compiler -$level as it is: $("$build/kernel_name")"
        programs="$programs $build/velkoran"
    done
done

# A wrapper that runs the optimised program on an emulated processor, where the choice must fall on those kernels.
emulate() {
    for compiler in g++ clang++; do
        build=$top/$compiler-O3
        chosen=$(qemu-x86_64 -cpu "$2" "$build/kernel_name")
        echo "run_build_matrix: $compiler -O3 on $2: $chosen"
        if [ "$chosen" != "$3" ]; then
            echo "run_build_matrix: the choice isn't restricted to $3" >&2
            exit 1
        fi
        printf '#!/bin/sh\nexec qemu-x86_64 -cpu %s "%s/velkoran" "$@"\n' "$2" "$PWD/$build" >"$build/velkoran_$1"
        chmod +x "$build/velkoran_$1"
        programs="$programs $build/velkoran_$1"
    done
}
emulate baseline Nehalem baseline                # SSE4.2
emulate no_avx2 max,-avx2 baseline
emulate avx2_without_fma max,-fma avx2           # where a C library takes other functions
emulate avx2 max,-avx512f avx2

# shellcheck disable=SC2086
sh scripts/compare_builds.sh $programs
