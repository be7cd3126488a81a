# shellcheck shell=bash
# Sourced by the stand-in tools. Records the call on one line, quoted as for the shell.
{
    printf '%s' "${0##*/}"
    [ $# -eq 0 ] || printf ' %q' "$@"
    echo
} >>/run/board/calls
