#!/bin/sh
# Installs what is missing, builds with the address and undefined-behaviour sanitizers and runs
# every test. Arguments go to ctest, such as -R BasicTester. tests/source-checks.sh checks the source.
set -eu

cd "$(dirname "$0")"
echo "All the tests take about 3 minutes on two processors, after building"
packaging/install-packages test

echo "Building with sanitizers in build/asan"
cmake --preset asan >/dev/null
cmake --build --preset asan
echo "Building the fuzzers in build/fuzz"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz

echo "Running the tests, each on a simulated board of its own"
# Two more than there are processors: many tests wait for a device or for a limit to pass.
ctest --preset asan -j "$(($(nproc) + 2))" --no-tests=ignore "$@"
echo "Fuzzing for a few seconds each"
ctest --preset fuzz -j "$(nproc)" --no-tests=ignore "$@"
