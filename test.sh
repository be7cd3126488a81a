#!/bin/sh
# Installs what is missing, builds with the address and undefined-behaviour sanitizers and runs
# every test. Arguments go to ctest, such as -R BasicTester.
set -eu

cd "$(dirname "$0")"
packaging/install-packages test

echo "Building with sanitizers in build/asan"
cmake --preset asan >/dev/null
cmake --build --preset asan

echo "Running the tests, each on a simulated board of its own"
exec ctest --test-dir build/asan --output-on-failure -j "$(nproc)" "$@"
