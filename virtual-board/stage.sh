# shellcheck shell=sh
# Sourced by the stages, build-*, which call it once they know that there is something to do.

# begin_stage NAME TEXT: says what is done and how long it takes. From here on the stage's output goes
# into a log, a dot stands for ten seconds, and the end says how long it took or what went wrong.
begin_stage() {
    stage=$1
    log=build/virtual-board/$stage.log
    began=$(date +%s)
    mkdir -p build/virtual-board
    echo "$2"
    exec 3>&1 4>&2 >"$log" 2>&1
    while sleep 10 3>&- 4>&-; do printf . >&3; done &
    dots=$!
    trap end_stage EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM
}

# shellcheck disable=SC2317 # called by the trap
end_stage() {
    status=$?
    kill "$dots"
    echo " $(($(date +%s) - began)) s" >&3
    [ "$status" -ne 0 ] || exit 0
    echo "virtual-board/build-$stage has failed. The end of $log:" >&4
    tail -n 20 "$log" >&4
    exit "$status"
}
