#!/bin/bash
# The service's scripts on the simulated board:
#
#   service.sh SERVICE-FOLDER PROGRAM
#
# shellcheck disable=SC2016,SC2317 # what is quoted is for later; the functions are called by check
set -eu

service=$1
program=$2
# shellcheck source=tests/verdicts.bash
. "$(dirname "$0")/verdicts.bash"
make-board <<<"port ttyS5 controller"
mkdir -p /etc/default
cp "$service/mosktest.default" /etc/default/mosktest

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

# fails TEXT: prepare-board says that, and exits with 1.
fails() {
    local status=0 said
    said=$("$service/prepare-board" 2>&1) || status=$?
    [ "$status" -eq 1 ] && [[ $said == *"prepare-board: $1" ]]
}
printf '[ "$4" != type ]\n' | put_tool ip
check "a bit rate that CAN does not take is told" fails "can0: cannot be brought up at 250000 bit/s"
put_tool ip </dev/null
sed -i 's/^CONTROLLER_SPEED=.*/CONTROLLER_SPEED=7/' /etc/default/mosktest
check "a speed that the UART does not take is told" fails "/dev/ttyS5: cannot be set to 7 baud"
sed -i 's/^CONTROLLER_SPEED=.*/CONTROLLER_SPEED=115200/' /etc/default/mosktest

printf 'exit 1\n' | put_tool ip
sed -i 's/^CONTROLLER_PORT=.*/CONTROLLER_PORT=/' /etc/default/mosktest
stty -F /dev/ttyS5 sane 9600
"$service/prepare-board"
check "an empty setting leaves the UART alone" eval '! port_is_raw'
rm /run/board/tools/ip

# --- Sticks and cards ---

put_tool mount <<'TEXT'
[ ! -e /run/board/no-file-system ] || exit 32
[ ! -e /run/board/no-journal ] || [[ $* != *noload* ]] || exit 32
TEXT
put_tool umount </dev/null
put_tool blockdev </dev/null
plug() {
    ACTION=add "$@" "$service/prepare-board" hotplug
}
# The commas are quoted.
called_with_options() {
    called "${1//,/\\,}"
}
unplug() {
    ACTION=remove "$@" "$service/prepare-board" hotplug
}
: >/run/board/calls
plug env DEVNAME=/dev/sda1
check "udev's stick is mounted read-only, its journal left alone" called_with_options \
    "mount -o ro,nosuid,nodev,noexec,noload /dev/sda1 /mnt/sda1"
# refuses_writing DEVICE: before it is mounted.
refuses_writing() {
    [ "$(grep -E '^(blockdev|mount|systemd-mount) ' /run/board/calls | head -n 1)" = "blockdev --setro $1" ]
}
check "the stick itself refuses what a driver would write" refuses_writing /dev/sda1
check "it is mounted once" eval '[ "$(grep -c ^mount /run/board/calls)" -eq 1 ]'
touch /run/board/no-journal
plug env MDEV=mmcblk1p1
check "mdev's card, of a file system without a journal, is mounted" called_with_options \
    "mount -o ro,nosuid,nodev,noexec /dev/mmcblk1p1 /mnt/mmcblk1p1"
unplug env DEVNAME=/dev/sda1
check "a stick that is pulled is unmounted" called "umount -l /mnt/sda1"
check "its folder goes with it" test ! -e /mnt/sda1
: >/run/board/calls
plug env DEVNAME=/dev/mmcblk0p1
plug env DEVNAME=/dev/ttyS5
plug env "DEVNAME=/dev/loop0; touch /tmp/run"
plug env DEVNAME=
check "the board's own eMMC and what is no stick are left alone" never_called mount
touch /run/board/no-file-system
plug env DEVNAME=/dev/sdb
check "a disk without a file system leaves no folder" test ! -e /mnt/sdb
rm /run/board/no-file-system

mkdir /tmp/sdd1
/usr/bin/mount -t tmpfs /dev/sdd1 /tmp/sdd1
: >/run/board/calls
plug env DEVNAME=/dev/sdd1
check "what is mounted already is left alone" never_called mount
plug env DEVNAME=/dev/sdd
check "but not what has a part of its name" called_with_options \
    "mount -o ro,nosuid,nodev,noexec /dev/sdd /mnt/sdd"

# What the kernel tells about a disk of one partition. The board's /sys is this machine's.
/usr/bin/mount -t tmpfs tmpfs /sys/class/block
mkdir -p /sys/class/block/sdc/sdc1
touch /sys/class/block/sdc/sdc1/partition
: >/run/board/calls
plug env DEVNAME=/dev/sdc
check "a disk with partitions is left alone" never_called mount
plug env DEVNAME=/dev/sdc1
check "its partition is mounted" called_with_options \
    "mount -o ro,nosuid,nodev,noexec /dev/sdc1 /mnt/sdc1"

# The system's own disks: the root under the kernel's name for it, and what fstab names.
mkdir /sys/class/block/sde1 /sys/class/block/sdf1 /dev/disk
awk '$5 == "/" { print $3; exit }' /proc/self/mountinfo >/sys/class/block/sde1/dev
echo 8:81 >/sys/class/block/sdf1/dev
ln -s ../sdh1 /dev/disk/home
touch /dev/sdh1
cat >/etc/fstab <<'TEXT'
# /boot was on /dev/sdf1
#UUID=12-34 /old vfat ro 0 0
/dev/sdg1 /boot vfat defaults 0 2
/dev/disk/home /home ext4 defaults 0 2
UUID=56-78 /srv ext4 defaults 0 2
LABEL="*" /opt ext4 defaults 0 2
LABEL=$(touch\040/tmp/run) /var ext4 defaults 0 2
TEXT
put_tool blkid <<'TEXT'
case $1 in
/dev/sdf1) echo "$1: LABEL=\"-n \$(touch /tmp/run)\" UUID=\"12-34\" TYPE=\"vfat\"" ;;
/dev/sdi1) echo "$1: LABEL=\"data\" UUID=\"56-78\" TYPE=\"ext4\"" ;;
/dev/sdj1) echo "$1: LABEL=\"*\" UUID=\"90-12\" TYPE=\"ext4\"" ;;
*) exit 2 ;;
esac
TEXT
for each in "sde1 mounted as the root" "sdg1 named in fstab" "sdh1 named there by a link" \
    "sdi1 named there by its UUID" "sdj1 named there by its label"; do
    : >/run/board/calls
    plug env DEVNAME="/dev/${each%% *}"
    check "a disk that is ${each#* } is left alone" eval 'never_called mount && never_called blockdev'
done
: >/run/board/calls
plug env DEVNAME=/dev/sdf1
check "a stick that a comment names is mounted, whatever its label" called_with_options \
    "mount -o ro,nosuid,nodev,noexec /dev/sdf1 /mnt/sdf1"
check "nothing of the label is run" test ! -e /tmp/run

# The same where systemd runs.
mkdir -p /run/systemd/system
: >/run/board/calls
plug env DEVNAME=/dev/sdi1 ID_FS_USAGE=filesystem ID_FS_TYPE=ext4
check "systemd does not mount a disk that fstab names" never_called blockdev
rm /etc/fstab /dev/sdh1
put_tool systemd-mount </dev/null
put_tool udevadm <<'TEXT'
cat /run/board/udev
TEXT
under_systemd() {
    called_with_options "systemd-mount --quiet --no-block --collect --fsck=no\
 --property=LazyUnmount=yes --options=$1"
}
: >/run/board/calls
plug env DEVNAME=/dev/sda1 ID_FS_USAGE=filesystem ID_FS_TYPE=ext4
check "systemd mounts a stick without a check, its journal left alone" under_systemd \
    "ro,nosuid,nodev,noexec,noload /dev/sda1 /mnt/sda1"
check "the stick itself refuses to be written there too" refuses_writing /dev/sda1
printf 'ID_FS_TYPE=vfat\nID_FS_USAGE=filesystem\n' >/run/board/udev
plug env DEVNAME=/dev/sdb1
check "what was there before is asked of udev" under_systemd \
    "ro,nosuid,nodev,noexec /dev/sdb1 /mnt/sdb1"
: >/run/board/calls
: >/run/board/udev
plug env DEVNAME=/dev/sdb
plug env DEVNAME=/dev/sdc ID_FS_USAGE=filesystem ID_FS_TYPE=iso9660
check "a disk without a file system, or with partitions, is left alone" never_called systemd-mount
mkdir /mnt/sda1
unplug env DEVNAME=/dev/sda1
check "systemd is asked to unmount what is pulled" called \
    "systemd-mount --quiet --umount /mnt/sda1"
check "the folder goes with it" test ! -e /mnt/sda1
: >/run/board/calls
unplug env DEVNAME=/dev/sdc
check "what was not mounted is not unmounted" never_called systemd-mount
rmdir /run/systemd/system

# No block device can be made here: files take their place.
sed 's/-b "$device"/-e "$device"/' "$service/prepare-board" >/tmp/prepare-board
touch /dev/sdb1 /dev/mmcblk0 /dev/mmcblk1 /dev/mmcblk1boot0
: >/run/board/calls
sh /tmp/prepare-board
check "what is plugged in at the start is mounted, and what is no stick or card is not" eval \
    '[ "$(grep ^mount /run/board/calls | cut -d" " -f4 | sort -u | paste -sd,)" = /dev/mmcblk1,/dev/sdb1 ]'

# The package's removal. The board's mounts are its own.
mkdir -p /mnt/sdb1 /mnt/sdc1 /mnt/sdd1 /mnt/sdg1 /mnt/sdd2
for device in sdb1 sdg1; do
    /usr/bin/mount -t tmpfs -o ro "/dev/$device" "/mnt/$device"
done
/usr/bin/mount -t tmpfs -o ro /dev/sdz1 /mnt/sdc1
/usr/bin/mount -t tmpfs /dev/sdd1 /mnt/sdd1
echo "/dev/sdg1 /mnt/sdg1 vfat ro 0 0" >/etc/fstab
put_tool umount <<'TEXT'
/usr/bin/umount "$@"
TEXT
: >/run/board/calls
prerm() {
    sed "s|/usr/lib/mosktest|$service|" "$service/../../debian/mosktest.prerm" | sh -s "$@"
}
check "an upgrade of the package leaves the sticks mounted" eval 'prerm upgrade 2.0 && never_called umount'
check "its removal unmounts what it has mounted" eval 'prerm remove && called "umount -l /mnt/sdb1"'
check "and the folder goes" test ! -e /mnt/sdb1
check "nothing else is unmounted" eval '[ "$(grep -c ^umount /run/board/calls)" -eq 1 ]'
check "nor any other folder removed" test -d /mnt/sdc1 -a -d /mnt/sdd1 -a -d /mnt/sdd2 -a -d /mnt/sdg1
mkdir /mnt/sdb1
/usr/bin/mount -t tmpfs -o ro /dev/sdb1 /mnt/sdb1
mkdir /run/systemd/system
: >/run/board/calls
prerm remove 2>/dev/null
check "systemd is asked for that where it runs" called "systemd-mount --quiet --umount /mnt/sdb1"
rmdir /run/systemd/system
rm /etc/fstab

# --- The terminal given back to getty ---

# With a unit named systemctl lists that unit's job alone; otherwise the columns are as wide as the
# longest name.
put_tool systemctl <<'TEXT'
[ "$1" = list-jobs ] || exit 0
if [ -n "${3:-}" ]; then
    grep -F " $3 " /run/board/jobs || true
else
    awk '{ printf "%s %-25s %-5s %s\n", $1, $2, $3, $4 }' /run/board/jobs
fi
TEXT
put_tool sleep <<'TEXT'
cat /run/board/jobs-later >>/run/board/jobs
TEXT
# given_back RESULT JOBS [LATER]: what systemd says of the program's end, what it has been asked to
# do then, and what in the pause after a crash.
given_back() {
    echo "$2" >/run/board/jobs
    echo "${3:-}" >/run/board/jobs-later
    : >/run/board/calls
    SERVICE_RESULT=$1 "$service/return-terminal"
    called "systemctl --no-block --job-mode=fail start getty.target"
}
check "getty comes back when the service is stopped" \
    given_back success "7 mosktest.service stop running"
check "whatever else systemd is doing" given_back success "7 mosktest.service stop running
8 apt-daily-upgrade.service start running"
check "even when the program had to be killed" \
    given_back timeout "7 mosktest.service stop running"
check "and when the program has ended by itself" given_back success ""
check "whatever else then, too" given_back success "8 apt-daily-upgrade.service stop running"
check "not when it is started again after a crash" eval '! given_back core-dump ""'
check "after a pause" called "sleep 1"
check "but when it is stopped in that pause" \
    given_back exit-code "" "7 mosktest.service stop running"
check "not when it is started again by hand" eval \
    '! given_back success "7 mosktest.service restart running"'
check "nor by hand in that pause" eval \
    '! given_back exit-code "" "7 mosktest.service restart running"'
rm /run/board/tools/sleep

# --- The program kept running ---

cat >/tmp/program <<'TEXT'
#!/bin/bash
echo "$$ $QT_QPA_PLATFORM" >>/tmp/starts
echo "The program has a complaint" >&2
trap 'echo ended >>/tmp/ends; exit 0' TERM
while :; do sleep 0.1; done
TEXT
chmod +x /tmp/program
sed -i 's/^QT_QPA_PLATFORM=.*/QT_QPA_PLATFORM=vnc:size=800x480/; s|^CONSOLE=.*|CONSOLE=/dev/ttyS5|' \
    /etc/default/mosktest

starts() {
    [ -e /tmp/starts ] && [ "$(wc -l </tmp/starts)" -eq "$1" ]
}
keep_running() {
    "$service/keep-running" "$@" 2>/dev/null &
    keeper=$!
}
keep() {
    : >/tmp/starts
    keep_running /tmp/program
    within 10 starts 1
}
is_over() {
    ! kill -0 "$keeper" 2>/dev/null
}

# Without a pause a program that cannot start would take all of the processor.
printf '#!/bin/sh\necho >>/tmp/starts; exit 1\n' >/tmp/failing
chmod +x /tmp/failing
: >/tmp/starts
begun=${EPOCHREALTIME/./}
keep_running /tmp/failing
check "a program that fails at once is started again" within 10 starts 3
check "after a pause" test "$((${EPOCHREALTIME/./} - begun))" -gt 1900000
kill "$keeper"

put_tool logger <<'TEXT'
cat >>/tmp/log
TEXT

keep
check "the program gets the settings" grep -q " vnc:size=800x480$" /tmp/starts
check "and the screen's terminal" test "/proc/$(cut -d' ' -f1 /tmp/starts)/fd/0" -ef /dev/ttyS5
check "its sockets are for root alone" eval '[ "$(stat -c %a /run/mosktest)" = 700 ]'
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

rm -f /tmp/ends
keep
kill -HUP "$keeper"
check "a terminal that goes ends the program in order too" within 10 test -e /tmp/ends

# --- The page that is opened at the start, and what runs beside the program ---

# settings LINE...: what the settings have beside the shipped ones.
settings() {
    cp "$service/mosktest.default" /etc/default/mosktest
    printf '%s\n' QT_QPA_PLATFORM=vnc:size=800x480 "$@" >>/etc/default/mosktest
}
shows() {
    local list
    list=$(OPERATOR_SOCKET=/run/mosktest/operator operate list "$1" 2>/dev/null) && [ -n "$list" ]
}
start_program() {
    settings "$@"
    : >/tmp/log
    keep_running "$service/run-program" "$program"
}
stop_program() {
    kill "$keeper"
    within 20 is_over
}
put_tool gst-inspect-1.0 <<'TEXT'
echo "$XDG_CACHE_HOME $(nice)" >/tmp/gst
TEXT

start_program PAGE=production
check "the page of the settings is opened" within 30 shows ToolProductionTest
check "GStreamer lists its plug-ins where the program looks for the list, and has time" \
    grep -qx "/var/cache/mosktest $(nice -n 19 nice)" /tmp/gst
/usr/bin/killall -SEGV "${program##*/}"
check "a crash" within 20 grep -q "starting it again" /tmp/log
check "the page is opened again after it" within 30 shows ToolProductionTest
stop_program
start_program PAGE=nonsense
check "a page that is none is told in the log" within 30 grep -qx \
    "PAGE=nonsense in /etc/default/mosktest opens no page" /tmp/log
check "and the home page is on show" shows StartPage
stop_program

# no_page VALUE: run-program tells that there is no such page, and opens nothing.
no_page() {
    : >/run/board/calls
    : >/tmp/said
    PAGE=$1 XDG_RUNTIME_DIR=/run/mosktest "$service/run-program" sleep 30 2>/tmp/said &
    local started=$! status=0
    within 5 grep -qxF "PAGE=$1 in /etc/default/mosktest opens no page" /tmp/said || status=1
    kill "$started"
    [ "$status" -eq 0 ] && never_called "operate page "
}
put_tool operate <<'TEXT'
case $* in
pages) printf '0\thome\t0\n3\tdatabase\t-\n' ;;
"page home" | "page database") ;;
page*) [[ $2 =~ ^\ *-?[0-9]+$ ]] ;;
esac
TEXT
for value in 3 0 11 -1 '-e home' --help '*' 'h.me' 'home database' ' 3' "\$(touch /tmp/run)"; do
    check "PAGE=$value is no page" no_page "$value"
done
check "nothing of it is run" test ! -e /tmp/run
rm /run/board/tools/operate
rm /run/board/tools/gst-inspect-1.0

# run NAME=VALUE...: what a program is told.
run() {
    env XDG_RUNTIME_DIR=/run/mosktest "$@" "$service/run-program" env 2>&1
}
check "without a page nothing is added" eval '! run PAGE= | grep PLUGINS'
check "the operator joins the other plug-ins" eval \
    'run PAGE=can QT_QPA_GENERIC_PLUGINS=evdevtouch:/dev/input/event0 |
        grep -qx "QT_QPA_GENERIC_PLUGINS=evdevtouch:/dev/input/event0,operator:/run/mosktest/operator"'
check "an operator that is there already is no other" eval \
    'run PAGE=can QT_QPA_GENERIC_PLUGINS=operator:/tmp/operator,tuio |
        grep -qx QT_QPA_GENERIC_PLUGINS=operator:/tmp/operator,tuio'
check "a page without the operator's package is told" eval \
    'run PAGE=can PATH=/usr/bin | grep -q "^PAGE=can .* needs mosktest-operator"'

settings
printf 'exit 1\n' | put_tool logger
keep
kill -SEGV "$(cut -d' ' -f1 /tmp/starts)" || true
check "a crash starts it again where no system's log is" within 10 starts 2
kill "$keeper" || true

# --- The init script ---

sed "s|^program=.*|program=/tmp/MoskTest|; s|^libexec=.*|libexec=$service|" \
    "$service/mosktest.init" >/tmp/init
cp /tmp/program /tmp/MoskTest
# init ARGUMENT STATUS TEXT: what the init script exits with, and a part of what it says.
init() {
    local status=0
    sh /tmp/init "$1" >/tmp/said 2>&1 || status=$?
    [ "$status" -eq "$2" ] && [[ $(</tmp/said) == *"$3"* ]]
}
runs() {
    pgrep -x MoskTest >/dev/null
}
: >/tmp/starts
rm -f /tmp/ends
stty -F /dev/ttyS5 sane 9600
check "status before the start" init status 3 "MoskTest is not running"
check "start" init start 0 "Starting MoskTest"
check "the program is started" within 10 starts 1
check "on a board that is prepared" port_is_raw
check "status" init status 0 "MoskTest is running"
check "a second start" init start 0 ""
check "restart" init restart 0 ""
check "the program is ended, and started once more" within 10 eval 'starts 2 && [ -e /tmp/ends ]'
check "stop" init stop 0 "Stopping MoskTest"
check "nothing runs" eval '! runs && ! pgrep -f keep-running'
check "status after the stop" init status 3 "MoskTest is not running"
check "stop once more" init stop 0 ""
check "an unknown word" init picnic 2 "Usage: "
sed -i "s/^trap .*/trap '' TERM/" /tmp/MoskTest
put_tool sleep <<'TEXT'
exec /usr/bin/sleep 0.1
TEXT
: >/tmp/starts
init start 0 ""
within 10 starts 1
check "a program that does not end is killed" init stop 0 "it is killed"
check "and nothing starts it again" within 10 eval '! runs && ! pgrep -f keep-running'

[ "$failures" -eq 0 ]
