#!/bin/bash
# Follows the operator's guide on the simulated board, in the language of most operators. The walk
# takes the guide's pictures, and stops where the program shows something else than the guide says.
set -eu

guide=$(cd "$(dirname "$0")/../docs/guide" && pwd)
mkdir /tmp/pictures
"$guide/walk" /tmp/pictures chinese || { cat /run/board/program.log; exit 1; }
diff <(ls /tmp/pictures) <(cd "$guide/pictures" && ls -- *-chinese.png)
