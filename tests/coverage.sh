#!/bin/sh
# Counts which lines of the product the tests run, and fails when they are too few. docs/testing.md
# lists the others with the reasons.
set -eu

cd "$(dirname "$0")/.."
least=97

packaging/install-packages checks
echo "Building with counters in build/coverage"
cmake --preset coverage >/dev/null
cmake --build --preset coverage
# Programs add to the counts that are there.
find build/coverage -name '*.gcda' -delete
echo "Running the tests; this takes about 3 minutes"
ctest --preset coverage -j "$(($(nproc) + 1))"
echo "Of the product's lines at least $least % must have been run"
gcovr --root . --filter protocols/ --filter texts/ --filter frame/ --filter instruments/ --filter pages/ \
    --fail-under-line "$least" --print-summary build/coverage
