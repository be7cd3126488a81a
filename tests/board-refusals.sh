#!/bin/sh
# Checks the one sentence that the simulated board prints when it cannot run, before it does
# anything:
#
#   board-refusals.sh BOARD
set -eu

board=$1
tools=$(mktemp -d)
trap 'rm -rf "$tools"' EXIT
failures=0

# expect NAME WANTED COMMAND...: the command must fail, and must print one line that holds WANTED.
expect() {
    name=$1
    wanted=$2
    shift 2
    status=0
    said=$("$@" 2>&1) || status=$?
    if [ "$status" -eq 0 ] || [ "$(echo "$said" | wc -l)" -ne 1 ]; then
        echo "$name: exited $status and said: $said"
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

# bubblewrap on a machine that forbids user namespaces.
cat >"$tools/bwrap" <<'TEXT'
#!/bin/sh
echo "bwrap: No permissions to create a new namespace" >&2
exit 1
TEXT
chmod +x "$tools/bwrap"
expect "forbidden user namespaces" "allow them with" env PATH="$tools:$PATH" "$board" -- true
expect "the reason is named" "No permissions" env PATH="$tools:$PATH" "$board" -- true

rm "$tools/bwrap"
for tool in sh dirname basename realpath env; do
    ln -s "$(command -v "$tool")" "$tools/$tool"
done
expect "missing bubblewrap" "apt-get install bubblewrap" env PATH="$tools" "$board" -- true

printf 'no-such-keyword 1\n' >"$tools/wrong.board"
expect "unknown keyword" "no such keyword" "$board" --description "$tools/wrong.board" -- true

expect "outside the sandbox" "works on the simulated board only" "$(dirname "$board")/inside/apply"

exit "$failures"
