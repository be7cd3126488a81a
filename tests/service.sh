#!/bin/bash
# The service's scripts on the simulated board:
#
#   service.sh SERVICE-FOLDER
#
# shellcheck disable=SC2016,SC2317 # what is quoted is for later; the functions are called by check
set -eu

service=$1
failures=0
"$BOARD_HOME/apply" <<<"port ttyS5 controller"
mkdir -p /etc/default
cp "$service/mosktest.default" /etc/default/mosktest

# check NAME COMMAND...: the command must succeed.
check() {
    local name=$1
    shift
    if "$@"; then
        echo "$name: ok"
    else
        echo "$name: WRONG"
        failures=$((failures + 1))
    fi
}

# within SECONDS COMMAND...: waits for the command to succeed.
within() {
    local end=$((SECONDS + $1))
    shift
    until "$@"; do
        [ "$SECONDS" -lt "$end" ] || return 1
        sleep 0.05
    done
}

# put_tool NAME: a stand-in that writes its call down and runs what is on standard input.
put_tool() {
    {
        printf '#!/bin/bash\n. "$BOARD_HOME/record.sh"\n'
        cat
    } >"/run/board/tools/$1"
    chmod +x "/run/board/tools/$1"
}

called() {
    grep -qxF "$1" /run/board/calls
}

never_called() {
    ! grep -q "^$1" /run/board/calls
}

# --- The controller's UART ---

port_is_raw() {
    local settings
    settings=$(stty -F /dev/ttyS5 -a)
    [[ $settings == *"speed 115200 baud"* && $settings == *"-opost"* && $settings == *" -echo "* &&
        $settings == *"-icanon"* && $settings == *"-icrnl"* ]]
}

# The time 2026-11-21 10:10:10. A controller takes no broken frame.
tell_the_time() {
    printf '\x5a\xa5\x08\x02\x1a\x0a\x15\x0a\x0a\x0a\x61' >/dev/ttyS5
}
time_has_arrived() {
    grep -qs "^time 2026-11-21 10:10:10" /run/board/received/controller
}
frame_was_refused() {
    grep -qs "^refused [1-9]" /run/board/received/controller
}

# Held open, so that the port keeps its settings, as a UART does by itself.
exec 9<>/dev/ttyS5
stty -F /dev/ttyS5 sane 9600
tell_the_time
check "a port as the kernel has it breaks a time with a 10 in it" within 10 frame_was_refused
check "prepare-board succeeds" "$service/prepare-board"
check "the controller's UART is raw at its speed" port_is_raw
tell_the_time
check "a time with a 10 in it arrives" within 10 time_has_arrived

# --- CAN ---

put_tool ip <<'TEXT'
[ "$*" != "link show can0" ] || exit "$([ -e /run/board/can0 ]; echo $?)"
TEXT
: >/run/board/calls
"$service/prepare-board"
check "no CAN interface, nothing brought up" never_called "ip link set"

touch /run/board/can0
sed -i 's/^CAN_BITRATE=.*/CAN_BITRATE=250000/' /etc/default/mosktest
"$service/prepare-board"
check "CAN gets the bit rate of the settings" called "ip link set can0 type can bitrate 250000"
check "CAN goes down for that and up after it" eval \
    '[ "$(grep "^ip link set" /run/board/calls | cut -d" " -f5 | paste -sd,)" = down,type,up ]'

: >/run/board/calls
INTERFACE=can0 ACTION=add "$service/prepare-board" hotplug
check "CAN that comes later is brought up" called "ip link set can0 up"
: >/run/board/calls
INTERFACE=can1 ACTION=add "$service/prepare-board" hotplug
check "another CAN interface is left alone" never_called "ip link set"

printf 'exit 1\n' | put_tool ip
sed -i 's/^CONTROLLER_PORT=.*/CONTROLLER_PORT=/' /etc/default/mosktest
stty -F /dev/ttyS5 sane 9600
"$service/prepare-board"
check "an empty setting leaves the UART alone" eval '! port_is_raw'
rm /run/board/tools/ip

# --- Sticks and cards ---

put_tool mount <<'TEXT'
[ ! -e /run/board/no-file-system ] || exit 32
TEXT
put_tool umount </dev/null
plug() {
    ACTION=add "$@" "$service/prepare-board" hotplug
}
mounted_read_only() {
    called "mount -o ro\\,nosuid\\,nodev\\,noexec $1 /mnt/${1#/dev/}"
}
unplug() {
    ACTION=remove "$@" "$service/prepare-board" hotplug
}
: >/run/board/calls
plug env DEVNAME=/dev/sda1
check "udev's stick is mounted read-only" mounted_read_only /dev/sda1
plug env MDEV=mmcblk1p1
check "mdev's card is mounted" mounted_read_only /dev/mmcblk1p1
unplug env DEVNAME=/dev/sda1
check "the stick's folder goes with it" test ! -e /mnt/sda1
: >/run/board/calls
plug env DEVNAME=/dev/mmcblk0p1
plug env DEVNAME=/dev/ttyS5
plug env "DEVNAME=/dev/loop0; touch /tmp/run"
plug env DEVNAME=
check "the board's own eMMC and what is no stick are left alone" never_called mount
touch /run/board/no-file-system
plug env DEVNAME=/dev/sdb
check "a disk without a file system leaves no folder" test ! -e /mnt/sdb

# --- The program kept running ---

cat >/tmp/program <<'TEXT'
#!/bin/bash
echo "$$ $QT_QPA_PLATFORM" >>/tmp/starts
echo "The program has a complaint" >&2
trap 'echo ended >>/tmp/ends; exit 0' TERM
while :; do sleep 0.1; done
TEXT
chmod +x /tmp/program
sed -i 's/^QT_QPA_PLATFORM=.*/QT_QPA_PLATFORM=vnc:size=800x480/' /etc/default/mosktest

starts() {
    [ -e /tmp/starts ] && [ "$(wc -l </tmp/starts)" -eq "$1" ]
}
keep() {
    : >/tmp/starts
    "$service/keep-running" /tmp/program 2>/dev/null &
    keeper=$!
    within 10 starts 1
}
is_over() {
    ! kill -0 "$keeper" 2>/dev/null
}

put_tool logger <<'TEXT'
cat >>/tmp/log
TEXT

keep
check "the program gets the settings" grep -q " vnc:size=800x480$" /tmp/starts
kill -SEGV "$(cut -d' ' -f1 /tmp/starts)"
check "a crash starts it again" within 10 starts 2
check "the system's log has what the program says" \
    within 10 grep -qsx "The program has a complaint" /tmp/log
check "and that it has crashed" within 10 grep -qs "ended with 139" /tmp/log
check "under the service's name" called "logger -t mosktest"
kill "$keeper"
check "stopping ends the program in order" within 10 test -e /tmp/ends
check "and what keeps it running" within 10 is_over
check "the log tells that too" within 10 grep -qs "asked to stop and ended with 0" /tmp/log

keep
kill "$(cut -d' ' -f1 /tmp/starts)"
check "a program that ends by itself stays so" within 10 is_over

printf 'exit 1\n' | put_tool logger
keep
kill -SEGV "$(cut -d' ' -f1 /tmp/starts)" || true
check "a crash starts it again where no system's log is" within 10 starts 2
kill "$keeper" || true

exit "$failures"
