#!/bin/sh
# SPDX-License-Identifier: MIT
# Measures what the fixed order of arithmetic costs. The other program is built by a compiler that may contract products
# and sums and use every instruction of this processor; its last digits are others.
set -eu
cd "$(dirname "$0")/.."
sh scripts/install_packages.sh g++ cmake ninja-build python3
build=build/fixed_order
mkdir -p "$build"
printf '#!/bin/sh\nexec g++ "$@" -march=native -ffp-contract=fast\n' >"$build/contracting_compiler"
chmod +x "$build/contracting_compiler"
sh scripts/build_program.sh release
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF \
    -DCMAKE_CXX_COMPILER="$PWD/$build/contracting_compiler" >/dev/null
cmake --build "$build" --target velkoran
python3 benchmarks/fixed_order_cost.py build/release/velkoran "$build/velkoran"
