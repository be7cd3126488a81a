#!/bin/sh
# Checks what run.sh and the simulated board print when they cannot do what they are told. They must
# print one line on stderr, and neither install, build nor start anything:
#
#   refusals.sh PROJECT BUILD
set -eu

project=$1
build=$2
board=$project/simulated-board/board
tools=$(mktemp -d)
neighbour=
trap 'kill $neighbour 2>/dev/null || true; rm -rf "$tools"' EXIT
failures=0

# stand_in NAME: replaces a tool with the script on standard input.
stand_in() {
    { echo '#!/bin/sh' && cat; } >"$tools/$1"
    chmod +x "$tools/$1"
}

# refuses NAME STATUS WANTED COMMAND...: the command must exit with STATUS and print WANTED.
refuses() {
    name=$1 wanted_status=$2 wanted=$3
    shift 3
    status=0
    rm -f "$tools/begun"
    said=$("$@" 2>&1 >"$tools/stdout") || status=$?
    if [ "$status" -ne "$wanted_status" ] || [ "$(echo "$said" | wc -l)" -ne 1 ] ||
        [ -s "$tools/stdout" ] || [ -e "$tools/begun" ]; then
        echo "$name: exited $status and said: $said $(cat "$tools/stdout")"
        failures=$((failures + 1))
        return
    fi
    case $said in
    *"$wanted"*) echo "$name: ok" ;;
    *)
        echo "$name: said: $said"
        failures=$((failures + 1))
        ;;
    esac
}

# A test's verdict passes through the board.
status=0
"$board" --build "$build" --description "$project/simulated-board/boards/bare.board" -- \
    sh -c 'exit 3' || status=$?
if [ "$status" -eq 3 ]; then
    echo "the command's exit code: ok"
else
    echo "the command's exit code: it exited with 3, and the board with $status"
    failures=$((failures + 1))
fi

# All packages are installed. Nothing is built, and no sandbox is made.
echo 'echo installed' | stand_in dpkg-query
for tool in cmake bwrap apt-get; do
    echo "touch '$tools/begun'; exit 1" | stand_in "$tool"
done
run() {
    name=$1 wanted=$2
    shift 2
    refuses "$name" 2 "$wanted" env PATH="$tools:$PATH" "$project/run.sh" "$@"
}

run "unknown word" "'picnic'" picnic
run "unknown option" "'--picnic'" --picnic
run "two modes" "'vnc'" tour vnc
run "a board beside the tour" "'board'" tour board
run "the acceptance beside the tour" "'accept'" tour accept
run "a board with a rest" "'5901'" board 5901
run "size without a value" "--size" --size
run "size before another option" "'tour'" --size tour
run "size of one number" "'1024'" tour --size 1024
run "size of three numbers" "'1x2x3'" tour --size 1x2x3
run "size that is none" "'bigxbig'" tour --size bigxbig
run "size of nothing" "'0x600'" tour --size 0x600
run "size of minus one" "'-1x600'" tour --size -1x600
run "size beyond all screens" "'100000x600'" tour --size 100000x600
run "port that is no number" "'five'" vnc five
run "port with a rest" "'5900x'" vnc 5900x
run "port 0" "'0'" vnc 0
run "port above all" "'65536'" vnc 65536
run "port of many digits" "'99999999999999999999'" vnc 99999999999999999999

# A port on which another program listens.
: >"$tools/socat.log"
socat -d -d TCP-LISTEN:0,bind=127.0.0.1,fork /dev/null 2>>"$tools/socat.log" &
neighbour=$!
port=
while [ -z "$port" ]; do
    kill -0 "$neighbour"
    port=$(sed -n 's/.*listening on .*127\.0\.0\.1:\([0-9]*\)$/\1/p' "$tools/socat.log")
done
refuses "port that is taken" 1 "port $port" env PATH="$tools:$PATH" "$project/run.sh" vnc "$port"

# The program is shown even without HOME.
echo 'exit 0' | stand_in bwrap
if said=$(env -u HOME -u XAUTHORITY PATH="$tools:$PATH" \
    "$board" --display -- true 2>&1) && [ -z "$said" ]; then
    echo "no HOME: ok"
else
    echo "no HOME: said: $said"
    failures=$((failures + 1))
fi

printf 'no-such-keyword 1\n' >"$tools/wrong.board"
refuses "unknown keyword" 1 "no such keyword" "$board" --build "$build" \
    --description "$tools/wrong.board" -- true
refuses "outside the sandbox" 1 "works on the simulated board only" "$build/simulated-board/make-board"

# bubblewrap on a machine that forbids user namespaces.
echo 'echo "bwrap: No permissions to create a new namespace" >&2; exit 1' | stand_in bwrap
refuses "forbidden user namespaces" 1 "allow them with" env PATH="$tools:$PATH" "$board" -- true
refuses "the reason is named" 1 "No permissions" env PATH="$tools:$PATH" "$board" -- true

rm "$tools/bwrap"
for tool in sh dirname basename realpath env printf cat grep; do
    ln -s "$(command -v "$tool")" "$tools/$tool"
done
refuses "missing bubblewrap" 1 "apt-get install bubblewrap" env PATH="$tools" "$board" -- true

# A package is missing, and the user may not install it.
: | stand_in dpkg-query
echo 'echo 1000' | stand_in id
refuses "no sudo" 1 "sudo" env PATH="$tools" "$project/run.sh" tour

[ "$failures" -eq 0 ]
