#!/bin/sh
# Checks the source itself:
#
#   source-checks.sh format|shell|tidy BUILD
#
# format: every C++ file is formatted as .clang-format says.
# shell: shellcheck reports nothing about any script.
# tidy: clang-tidy reports nothing about any C++ file that BUILD compiles.
# format: every C++ file as .clang-format says; shell: every script free of shellcheck's findings;
# tidy: every C++ file that BUILD compiles free of clang-tidy's.
set -eu

cd "$(dirname "$0")/.."
rooms="protocols frame instruments pages simulated-board tests benchmarks virtual-board"

case $1 in
format)
    # shellcheck disable=SC2086 # words
    find $rooms '(' -name '*.h' -o -name '*.cpp' ')' -exec clang-format --dry-run -Werror {} +
    ;;
shell)
    # shellcheck disable=SC2086
    find .ci debian packaging run.sh test.sh $rooms -type f \
        -exec grep -lZE '^#!/bin/(ba)?sh|^# shellcheck shell=' {} + |
        xargs -0 shellcheck -x --source-path=.
    ;;
tidy)
    # Skip generated files, which are in the build. A file that is not compiled has no compile
    # command.
    sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' "$2/compile_commands.json" | sort -u |
        grep -v "^$(realpath "$2")" |
        xargs -P "$(nproc)" -n 4 clang-tidy -p "$2" --quiet 2>/dev/null
    ;;
esac
