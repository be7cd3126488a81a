# shellcheck shell=bash
# Sourced by the tests that are scripts. They end with: [ "$failures" -eq 0 ]
failures=0

# check NAME COMMAND...: the command must succeed.
check() {
    if "${@:2}"; then
        echo "$1: ok"
    else
        echo "$1: WRONG"
        failures=$((failures + 1))
    fi
}

# report NAME PROBLEMS: there must be none.
report() {
    check "$1" [ -z "$2" ]
    [ -z "$2" ] || echo "$2"
}
