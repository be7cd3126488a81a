#!/bin/sh
# Installs what is missing, builds the program and shows it on a simulated board.
set -eu

usage() {
    cat <<'TEXT'
Usage: run.sh [tour | vnc [PORT]] [--size WIDTHxHEIGHT]
  (nothing)   the program in a window; where there is no display, the tour
  tour        presses every check, prints what each showed, saves pictures in out/tour
  vnc [PORT]  shows the program to a VNC viewer at localhost:PORT (5900)
TEXT
    exit 2
}

cd "$(dirname "$0")"
what=
port=5900
size=1024x600
while [ $# -gt 0 ]; do
    case $1 in
    tour) what=tour ;;
    vnc)
        what=vnc
        case ${2:-} in [0-9]*) port=$2; shift ;; esac
        ;;
    --size) size=${2:?}; shift ;;
    *) usage ;;
    esac
    shift
done
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
