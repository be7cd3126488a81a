# shellcheck shell=bash
# Sourced by the stand-in tools: writes down the call, one line each, quoted as the shell would.
{
    printf '%s' "$(basename "$0")"
    [ $# -eq 0 ] || printf ' %q' "$@"
    echo
} >>/run/board/calls
