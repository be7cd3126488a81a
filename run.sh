#!/bin/sh
# Installs what is missing, builds the program and shows it on a simulated board.
set -eu

usage() {
    cat <<'TEXT'
Usage: run.sh [tour | vnc [PORT] | board] [--size WIDTHxHEIGHT]
       run.sh accept [ARGUMENT]...
  (nothing)   the program in a window; where there is no display, the tour
  tour        presses every check, prints what each showed, leaves a report in out/tour
  vnc [PORT]  shows the program to a VNC viewer at localhost:PORT (5900)
  board       the program on an ARMv7 board in QEMU (docs/virtual-board.md), for a VNC viewer at
              localhost:5900
  accept      walks the acceptance of the program on that board; accept --help shows its arguments
TEXT
}

refuse() {
    echo "run.sh: $1 (run.sh --help shows what there is)" >&2
    exit 2
}

# Whether the text is a number from 1 to the largest. A number with leading zeros does not count.
is_number() {
    case $1 in
    '' | 0* | *[!0-9]* | ??????*) return 1 ;;
    esac
    [ "$1" -le "$2" ]
}

is_size() {
    case $1 in *x*) is_number "${1%x*}" 9999 && is_number "${1#*x}" 9999 ;; *) false ;; esac
}

# The files of the virtual board belong to root, on the board too.
need_root() {
    [ "$(id -u)" -eq 0 ] || refuse "'$1' takes root: sudo ./run.sh $1"
}

# Whether a program on this machine listens on the TCP port.
is_taken() {
    cat /proc/net/tcp /proc/net/tcp6 2>/dev/null |
        grep -q ": [0-9A-F]*:$(printf %04X "$1") [0-9A-F:]* 0A "
}

cd "$(dirname "$0")"
what=
port=5900
size=
while [ $# -gt 0 ]; do
    case $1 in
    --help | -h)
        usage
        exit
        ;;
    accept)
        [ -z "$what" ] || refuse "'accept' after '$what': only one of them can be shown"
        need_root accept
        shift
        packaging/install-packages board
        exec virtual-board/accept ${size:+--size "$size"} "$@"
        ;;
    tour | vnc | board)
        [ -z "$what" ] || refuse "'$1' after '$what': only one of them can be shown"
        what=$1
        case $1:${2:-} in
        tour:* | board:* | vnc: | vnc:--*) ;;
        *)
            is_number "$2" 65535 || refuse "'$2' is no port: it takes a number from 1 to 65535"
            port=$2
            shift
            ;;
        esac
        ;;
    --size)
        [ $# -gt 1 ] || refuse "--size takes a value, such as 800x480"
        size=$2
        is_size "$size" || refuse "'$size' is no size: it takes two numbers, such as 800x480"
        shift
        ;;
    *) refuse "'$1' is unknown" ;;
    esac
    shift
done
case $what in vnc | board)
    if is_taken "$port"; then
        [ "$what" = board ] && other="virtual-board/start --vnc 5901" || other="./run.sh vnc 5901"
        echo "run.sh: port $port is taken: try another one, such as $other" >&2
        exit 1
    fi
    ;;
esac
size=${size:-1024x600}
if [ "$what" = board ]; then
    need_root board
    exec virtual-board/start --vnc "$port" --size "$size"
fi
if [ -z "$what" ]; then
    what=window
    if [ -z "${DISPLAY:-}" ]; then
        what=tour
        echo "No display here: this is the tour. To watch live: ./run.sh vnc"
    fi
fi

packaging/install-packages run
echo "Building in build/release"
cmake --preset release -DBUILD_TESTING=OFF >/dev/null
cmake --build --preset release
exec simulated-board/show "$what" --size "$size" --port "$port"
