#!/bin/sh
# SPDX-License-Identifier: MIT
# Repeats the fit of parameters/fitted from the data to the files, and measures its accuracy. It takes some hours of
# processor time and says how long it took; stopped, it goes on where it was when it is started again.
set -eu
cd "$(dirname "$0")/.."
sh scripts/install_packages.sh g++ cmake ninja-build python3 python3-numpy python3-scipy python3-rdkit
cmake --preset release -DBUILD_TESTING=OFF >/dev/null
cmake --build --preset release --target velkoran_worker
# one thread each: the workers use all processors
OMP_NUM_THREADS=1 OPENBLAS_NUM_THREADS=1 python3 fitting/fit.py --write build/fit/files "$@"
