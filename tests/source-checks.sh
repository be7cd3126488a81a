#!/bin/sh
# Checks the source itself, in all sections or in those that are named:
#
#   source-checks.sh [format|shell|python|spelling|cppcheck|clazy|tidy]...
#
# Each section runs to its end, whatever the one before has found.
set -eu

cd -P "$(dirname "$0")/.."
folders="protocols texts frame instruments pages simulated-board tests benchmarks virtual-board"
sections="format shell python spelling cppcheck clazy tidy"

# Every C++ file is formatted as .clang-format says, by the version that Debian 12 and 13 both have.
check_format() {
    # shellcheck disable=SC2086 # words
    find $folders '(' -name '*.h' -o -name '*.cpp' ')' -exec clang-format-19 --dry-run -Werror {} +
}

# No script has findings of shellcheck.
check_shell() {
    # shellcheck disable=SC2086 # words
    find .ci debian docs packaging run.sh test.sh $folders -type f \
        -exec grep -lZE '^#!/bin/(ba)?sh|^# shellcheck shell=' {} + |
        xargs -0 shellcheck -x --source-path=.
}

# No Python program has a name that is not defined or an import that is not used, as pyflakes tells.
check_python() {
    # shellcheck disable=SC2086 # words
    find docs packaging $folders -type f -exec grep -IlZE '^(#!/usr/bin/.*python3|""")' {} + |
        xargs -0 pyflakes3
}

# codespell knows every word. "successed" stands in the flashing log, "HDA" in the kernel, and a "Caf"
# before the bytes of an accent.
check_spelling() {
    codespell --quiet-level=3 --skip=./.git,./build,./out --ignore-words-list=successed,hda,caf .
}

# cppcheck reports nothing about any C++ file but what tests/cppcheck.supp gives a reason for.
check_cppcheck() {
    # shellcheck disable=SC2086 # words
    cppcheck --quiet -j "$(nproc)" --error-exitcode=1 --language=c++ --std=c++17 --library=qt \
        --enable=warning,style,performance,portability --suppressions-list=tests/cppcheck.supp \
        -I . ${1:-$folders}
}

# Runs a shell's command for each C++ file, with the options that compile the file as arguments.
for_each_source() {
    for preset in asan fuzz; do
        cmake --preset "$preset" >/dev/null && cmake --build --preset "$preset" -- --quiet || return
    done
    # Files that the build has generated are left out, and a file that two programs have comes once.
    # shellcheck disable=SC2016 # for the inner shell
    sed -n 's/^ *"command": "\(.*\)",$/\1/p' build/asan/compile_commands.json \
        build/fuzz/compile_commands.json | grep -v " -c $PWD/build/" | awk '!seen[$NF]++' |
        sed 's/\\\(.\)/\1/g' | xargs -L 1 -P "$(nproc)" sh -c '
            while [ "${1#-}" = "$1" ]; do shift; done
            '"$1" sh
}

# clazy, a compiler that knows the traps of Qt, warns of nothing. An arg() of several texts would
# need a newer Qt than the board's. What a test or its board copies, or makes at its start, costs
# nobody. QtTest's macros leave out arguments.
check_clazy() {
    # shellcheck disable=SC2016 # for the inner shell
    for_each_source '
        for file; do :; done
        export CLAZY_CHECKS=level0,level1,no-qstring-arg
        case $file in "$PWD"/tests/* | "$PWD"/simulated-board/*)
            for costs in detaching-temporary non-pod-global-static qstring-ref range-loop-detach \
                range-loop-reference use-static-qregularexpression; do
                CLAZY_CHECKS=$CLAZY_CHECKS,no-$costs
            done
            ;;
        esac
        clazy -fsyntax-only "$@" -Werror -Wno-gnu-zero-variadic-macro-arguments -Wno-c++20-extensions'
}

# clang-tidy reports nothing about any C++ file. .clang-tidy leaves out what only Debian 13's finds.
check_tidy() {
    # shellcheck disable=SC2016 # for the inner shell
    for_each_source 'for file; do :; done; exec clang-tidy --quiet "$file" -- "$@" 2>/dev/null'
}

# Whether a section's tool lets a faulty file pass. Then its settings are too lax.
passes_faults() {
    mkdir -p build/faulty
    cat >build/faulty/Faulty.cpp <<'TEXT'
#include <string>
#include <vector>
struct Base { virtual ~Base() = default; virtual int Size() const; };
struct Faulty : Base { int Size() const; };
int* Pointer(int unused) { return 0; }
int Sum(const std::vector<std::string>& names) {
    std::string all;
    for (const std::string name : names) all += name;
    int* nothing = nullptr;
    if (all.empty());
    { *nothing = 1; }
    return 0;
}
TEXT
    case $1 in
    format) clang-format-19 --dry-run -Werror build/faulty/Faulty.cpp 2>/dev/null ;;
    cppcheck) check_cppcheck build/faulty >/dev/null 2>&1 ;;
    tidy)
        clang-tidy --quiet build/faulty/Faulty.cpp -- -std=c++17 >build/faulty/tidy 2>/dev/null && return
        for group in bugprone clang-analyzer misc-unused modernize performance readability; do
            grep -q "error: .*\[$group-" build/faulty/tidy || return 0
        done
        false
        ;;
    *) false ;;
    esac
}

# shellcheck disable=SC2086 # words
[ $# -gt 0 ] || set -- $sections
for section in "$@"; do
    case " $sections " in
    *" $section "*) ;;
    *)
        echo "Usage: source-checks.sh [$(echo "$sections" | tr ' ' '|')]..." >&2
        exit 2
        ;;
    esac
done
packaging/install-packages checks

failed=
for section in "$@"; do
    echo "Checking the source: $section"
    "check_$section" || failed="$failed $section"
    ! passes_faults "$section" || failed="$failed $section(passes faults)"
done
if [ -n "$failed" ]; then
    echo "The source needs mending:$failed" >&2
    exit 1
fi
echo "The source has nothing to mend"
