#!/bin/sh
# Fails when the program, or a library of its own, needs a Qt newer than the board's 5.12:
#
#   qt-symbols.sh FILE...
#
# Debian's packages record the version that introduced each symbol of a library.
set -eu

newest=5.12
recorded=$(mktemp)
trap 'rm -f "$recorded"' EXIT

# Lines of a symbols file: " SYMBOL@VERSION-NODE FIRST-VERSION [...]". qt_version_tag only names the
# version that the program was linked with here.
cat /var/lib/dpkg/info/libqt5*.symbols |
    sed -n 's/^ \(([^)]*)\)\{0,1\}"\{0,1\}\([^@"]*\)@[^ "]*"\{0,1\} \([0-9.]*\).*/\2\t\3/p' |
    grep -v '^qt_version_tag' | sort -u >"$recorded"
[ -s "$recorded" ] || { echo "No symbols files of Qt's packages here" >&2; exit 1; }

nm -D --undefined-only "$@" | awk '{ print $NF }' | sed 's/@.*//' | sort -u |
    awk -F '\t' -v newest="$newest" '
        function number(version, parts) {
            split(version, parts, ".")
            return parts[1] * 10000 + parts[2] * 100 + parts[3]
        }
        FNR == NR { first[$1] = $2; next }
        $1 in first { ++known }
        $1 in first && number(first[$1]) >= number(newest) + 100 {
            print $1 " came with Qt " first[$1]
            newer = 1
        }
        END {
            print known + 0 " symbols of Qt, none newer than " newest ": " (newer ? "no" : "yes")
            exit newer || known < 100
        }' "$recorded" -
