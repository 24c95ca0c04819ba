#!/bin/sh
# SPDX-License-Identifier: MIT
# Runs the tests under Valgrind's memory checker, optimised and with debug information: the unit tests and the seeds of
# the fuzz targets in one process each, the program in each of the tests of the program and on each example. Fails at an
# error of memory, a definite or possible loss, or a failed test. What is still reachable at the end is no error: the
# program ends by exit on purpose, with the data of its run.
set -eu
cd "$(dirname "$0")/.."
sh scripts/install_packages.sh g++ cmake ninja-build libgtest-dev python3 valgrind librdkit-dev libboost-dev
build=$PWD/build/valgrind
rm -f "$build/velkoran"  # is a wrapper after an earlier call
cmake -S . -B "$build" -G Ninja -DBUILD_TESTING=ON -DCMAKE_CXX_COMPILER=g++ -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build"
rm -rf "$build/logs" "$build/examples"
mkdir "$build/logs"

# Each process has a log of its own, which stays empty without an error.
check="valgrind --quiet --error-exitcode=99 --leak-check=full --show-leak-kinds=definite,possible \
--errors-for-leak-kinds=definite,possible --num-callers=30 --log-file=$build/logs/%p"

# The tests start a wrapper in the program's place.
mv "$build/velkoran" "$build/velkoran_checked"
printf '#!/bin/sh\nexec %s "%s" "$@"\n' "$check" "$build/velkoran_checked" >"$build/velkoran"
chmod +x "$build/velkoran"

failed=""
step() {
    name=$1
    shift
    began=$(date +%s)
    "$@" || failed="$failed $name"
    echo "run_valgrind: $name took $(($(date +%s) - began)) s"
}
# Left out: a test that takes all file descriptors from its child, which Valgrind doesn't let go, and one whose signal
# has to come before a look at the queue, where Valgrind is late.
# shellcheck disable=SC2086
step unit_tests $check "$build/tests/velkoran_unit_tests" --gtest_brief=1 \
    --gtest_filter='-RunOneJob.TerminatesItsDirectories:ProcessEntry.SignalBeforeTheStart*'
# shellcheck disable=SC2086
step instance_setup_tests $check "$build/tests/velkoran_instance_setup_tests" --gtest_brief=1
for seeds in tests/fuzz/corpus_*; do
    target=${seeds#tests/fuzz/corpus_}
    # shellcheck disable=SC2086
    step "seeds_of_$target" $check "$build/tests/fuzz/velkoran_corpus_$target" "$seeds"
done

# Left out: stops within a time that a processor of a thirtieth of the speed can't keep; failing allocations, whose
# library takes the place of the allocator that Valgrind has to see; the list of vector kernels, of which Valgrind hides
# some; and an array of gigabytes that is asked for in vain, whose marks take Valgrind longer than the test waits.
step program_tests "$build/tests/velkoran_program_tests" --gtest_brief=1 \
    --gtest_filter='-*Stop*:AllocationFailure*:CommandLineVersion.TellsHowItWasBuilt:*group_count_largest*'
step examples sh scripts/run_all_examples.sh "$build/velkoran" "$PWD/parameters/published" "$PWD/examples" \
    "$build/examples"

find "$build/logs" -type f -size +0 -exec cat {} +
errors=$(find "$build/logs" -type f -size +0 | wc -l)
echo "run_valgrind: $(find "$build/logs" -type f | wc -l) processes, $errors with errors"
if [ "$errors" -ne 0 ] || [ -n "$failed" ]; then
    echo "run_valgrind: failed:$failed" >&2
    exit 1
fi
