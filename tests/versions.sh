#!/bin/sh
# The version stands in CMakeLists.txt; the two changelogs must begin with the same.
set -eu

cd "$(dirname "$0")/.."
version=$(sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
failures=0

# expect FILE FOUND
expect() {
    if [ -n "$version" ] && [ "$2" = "$version" ]; then
        echo "$1: ok"
    else
        echo "$1 begins with version \"$2\", CMakeLists.txt has \"$version\""
        failures=1
    fi
}

expect debian/changelog "$(sed -n '1s/^mosktest (\([^)]*\)).*/\1/p' debian/changelog)"
expect CHANGELOG.md "$(sed -n 's/^## //p' CHANGELOG.md | head -n 1)"
exit "$failures"
