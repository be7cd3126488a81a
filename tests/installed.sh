#!/bin/bash
# What is installed, and what the packages say about it:
#
#   installed.sh PROJECT BUILD
set -eu

project=$1
build=$2
cd "$project"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
tree=$scratch/tree
# shellcheck source=tests/verdicts.bash
. tests/verdicts.bash
DESTDIR=$tree cmake --install "$build" >"$scratch/log"

# missing_from LINES: those of the lines on standard input that are not among these.
missing_from() {
    grep -vxF -f <(printf '%s\n' "$1") || true
}

# --- The files ---

installed=$(cd "$tree" && find . -type f | sed 's|^\./||')
# A line of the packages' lists as an expression for files. Only Debian has a folder for each processor.
as_expression() {
    sed 's|\.|\\.|g; s|/\*/|/(.*/)?|; s|$|(/.*)?|'
}
report "every installed file is in a package" "$(
    grep -vxE "$(cat debian/*.install debian/not-installed debian/mosktest.docs | as_expression)" \
        <<<"$installed" || true)"
report "debhelper installs the unit and the rule" "$(
    [ debian/mosktest.service -ef packaging/service/mosktest.service ] || echo unit
    [ debian/mosktest.udev -ef packaging/service/99-mosktest.rules ] || echo rule)"
report "debhelper builds and installs all of it" "$(missing_from "$(sed 's/^\t//' debian/rules)" <<'TEXT'
dh_auto_configure -- -DBUILD_TESTING=OFF -DMOSK_GUIDE=$(if $(NODOC),OFF,ON)
dh_auto_build -- MoskTest operator-plugin operate tour $(if $(NODOC),,guide)
dh_installinit --only-scripts --package=mosktest --name=mosktest
dh_installudev --priority=99
TEXT
)"
report "the operator has a package of its own" "$(grep -E 'operate|tour|generic' debian/mosktest.install || true)"
report "the init script's name where BusyBox looks, and settings and rules where they belong" "$(
    missing_from "$(cat packaging/buildroot/package/mosktest/mosktest.mk)" <<'TEXT'
	mv $(TARGET_DIR)/etc/init.d/mosktest $(TARGET_DIR)/etc/init.d/S80mosktest
	-DCMAKE_INSTALL_SYSCONFDIR=/etc -DMOSK_UDEV_DIR=/lib/udev/rules.d
MOSKTEST_POST_INSTALL_TARGET_HOOKS += $(if $(BR2_INIT_SYSTEMD),MOSKTEST_REMOVE_INIT_SCRIPT)
TEXT
)"
report "every file of a package is there" "$(cat debian/*.install debian/*.docs | while read -r name; do
    grep -qxE "$(as_expression <<<"$name")" <<<"$installed" || [ -e "$name" ] || echo "$name"
done)"
report "the service and the manual are installed" "$(
    for file in packaging/man/* packaging/service/*; do
        [ -n "$(find "$tree" -type f -exec cmp -s {} "$file" \; -print)" ] ||
            grep -qxF "$file" debian/mosktest.docs || echo "$file"
    done)"
report "what is run may be run, and nothing else" "$(cd "$tree" && find . -type f -perm /111 |
    grep -vE '^\./(usr/bin/|etc/init\.d/|usr/lib/mosktest/|usr/lib/.*\.so$)'
find usr/bin etc/init.d usr/lib/mosktest -type f ! -perm -111 ! -name '*.so' -printf '%p\n')"
report "every man page is that of a program" "$(cd "$tree/usr/share/man/man1" && for page in *.1; do
    [ -x "$tree/usr/bin/${page%.1}" ] || echo "$page"
done)"

# debhelper's part: the documents.
for list in debian/*.docs; do
    package=$(basename "$list" .docs)
    mkdir -p "$tree/usr/share/doc/$package"
    while read -r document; do
        touch "$tree/usr/share/doc/$package/${document##*/}"
    done <"$list"
done
# A path that these name is installed, or one of the board's own.
own='/(boot|dev|etc|mnt|opt|proc|root|run|sys|tmp|usr)/?
/bin/sh
/dev/(fb1|input/(event0|touchscreen)|mmcblk|null|root|sd|sda1|tty1|ttyS[0259]|ttyUSB1)
/etc/(frpc.ini|fstab|inittab|mdev.conf|mosk.ini|mosk.ini.lock|mosktest.(board|wifi)|network/interfaces)
/etc/(qttestend|sw2hmi|udhcpc|vnclinuxfb.conf|wpa_supplicant.conf|rc5.d/S01mosktest)
/etc/systemd/system/multi-user.target.wants/mosktest.service
/lib/lsb/init-functions
/mnt/(mmcblk|sd)
/opt/sdk/.*
/proc/(mounts|scsi|self/mountinfo|swaps|version)
/run/(board/.*|systemd/system|mosktest|mosktest.pid|mosktest/operator)
/usr/share/udhcpc/default.script
/var/cache/mosktest(/qmlcache)?
/var/log/(messages|sqlite.db|syslog)
/var/run(/wpa_supplicant)?
/var/setting/system/pointercal
/root/board-0042|/tmp/page.png'
named=$(grep -hoE "(^|[^]A-Za-z0-9_.}\$\"*~)/-])/(bin|boot|dev|etc|lib|media|mnt|opt|proc|root|run|sys|tmp|usr|var)(/[A-Za-z0-9._/+-]*)?" \
    packaging/service/* packaging/man/* debian/mosktest.* debian/tests/* \
    packaging/piuparts/* docs/installing.md docs/service.md docs/tour.md | sed 's|^[^/]||; s|\.$||' | sort -u)
report "every path that is named is there" "$(while read -r path; do
    [ -e "$tree$path" ] || grep -qxE "$own" <<<"$path" || echo "$path"
done <<<"$named")"
library=$(sed -n 's/.*dlopen("\([^"]*\)".*/\1/p' instruments/Cameras.cpp)
place=$(readelf -d "$tree/usr/bin/MoskTest" | sed -n "s|.*R.*PATH.*\[\$ORIGIN/\(.*\)\]|\1|p")
report "the cameras' library is where the program looks" "$(
    [ -e "$tree/usr/bin/$place/$library" ] || echo "no $library in $place")"

# --- The service ---

unit=$tree/usr/lib/systemd/system/mosktest.service
report "the unit" "$(missing_from "$(cat "$unit")" <<'TEXT'
Conflicts=getty@tty1.service
After=getty@tty1.service plymouth-quit-wait.service
StartLimitIntervalSec=0
EnvironmentFile=-/etc/default/mosktest
CacheDirectory=mosktest
RuntimeDirectory=mosktest
RuntimeDirectoryMode=0700
ExecStartPre=-/usr/lib/mosktest/prepare-board
ExecStart=/usr/lib/mosktest/run-program /usr/bin/MoskTest
ExecStopPost=-/usr/lib/mosktest/return-terminal
Restart=on-failure
RestartSec=0
TimeoutStopSec=10
StandardInput=tty
StandardOutput=journal
StandardError=journal
TTYPath=/dev/tty1
TTYReset=yes
TTYVHangup=yes
WantedBy=multi-user.target
TEXT
)"
families="AF_UNIX AF_INET AF_INET6 AF_NETLINK AF_PACKET AF_CAN"
hardening=$(sed -n '/^# What the checks can do without/,/^$/s/^[A-Z].*=.*/&/p' "$unit" | sort)
# A directive is "yes" where nothing else is told.
told=$(sed -n 's/^| \(`.*\) | \(yes\|six families\) | .*/\1/p' docs/service.md |
    grep -oE '`[A-Z][A-Za-z]*(=[a-z]+)?' | tr -d '`' | sed "s/^RestrictA.*/&=$families/; /=/!s/\$/=yes/" | sort)
report "docs/service.md tells how the unit is hardened" "$(diff <(echo "$hardening") <(echo "$told"))"
report "the program's surroundings are the same without systemd" "$(
    sed -n 's/^Environment=//p' "$unit" | tr ' ' '\n' | missing_from "$(cat packaging/service/keep-running)")"
default=$tree/etc/default/mosktest
report "the settings are those without a file" "$(
    grep -hE '^(CONTROLLER|CAN)_' packaging/service/prepare-board | missing_from "$(cat "$default")"
    sed -n 's/^\(QT_QPA_PLATFORM\|CONSOLE\)=/&/p' packaging/service/keep-running | head -n 2 |
        missing_from "$(cat "$default")")"
pages=$(sed -n 's/.*{BodyWidget::[A-Za-z]*, "\([^"]*\)".*/\1/p' frame/Pages.cpp)
report "the settings name every page" "$(for page in $pages; do
    sed -n '/^# The page/,/^PAGE=/p' "$default" | grep -qw -e "$page" || echo "$page"
done)"
report "Qt knows the settings that are for it" "$(
    sed 's/^#//' "$default" | grep -oE '^QT_\w+' | sort -u | while read -r name; do
        # Debian's is built without tslib.
        [ "$name" = QT_QPA_FB_TSLIB ] ||
            grep -rqF "$name" /usr/lib/*/qt5/plugins/platforms /usr/lib/*/libQt5Gui.so.5 \
                /usr/lib/*/libQt5Quick.so.5 || echo "$name"
    done)"
header=$(tr -s ' ' <"$tree/etc/init.d/mosktest")
report "the init script's place among others" "$(missing_from "$header" <<'TEXT'
# Provides: mosktest
# Required-Start: $local_fs $remote_fs
# Required-Stop: $local_fs $remote_fs
# Should-Start: udev
# Default-Start: 2 3 4 5
# Default-Stop: 0 1 6
TEXT
)"

# The command of docs/installing.md, from a folder of somebody else's to a board's.
board=$scratch/board
mkdir -p "$scratch/out/board/usr/bin" "$board/usr"
touch "$scratch/out/board/usr/bin/MoskTest"
chmod -R 700 "$scratch/out"
chmod 751 "$board/usr"
copy=$(sed -n '/^    .*out\/board.*tar/,/ssh/p' docs/installing.md | sed "s|ssh root@board tar -C /|tar -C $board|")
report "the files are copied, and the board's folders stay as they are" "$(
    (cd "$scratch" && umask 022 && sh -c "$copy")
    diff <(cd "$board" && find . -mindepth 1 -printf '%m %p\n' | sort) - <<'TEXT'
700 ./usr/bin/MoskTest
751 ./usr
755 ./usr/bin
TEXT
)"

# devices MATCHES: those of the devices for which this function succeeds.
devices() {
    local device
    for device in sda sda1 sdb2 mmcblk1 mmcblk1p1 mmcblk0 mmcblk0p1 loop0 ttyS5 can0; do
        ! "$1" "$device" || printf '%s ' "$device"
    done
}
for action in add remove; do
    kernel=$(sed -n "s/^ACTION==\"$action\", SUBSYSTEM==\"block\", KERNEL==\"\([^\"]*\)\".*hotplug\"$/\1/p" \
        "$tree"/usr/lib/udev/rules.d/99-*.rules)
    # shellcheck disable=SC2053,SC2317 # patterns; called by devices
    by_udev() {
        local pattern
        while read -r pattern; do [[ $1 != $pattern ]] || return 0; done <<<"${kernel//|/$'\n'}"
        return 1
    }
    report "udev, $action" "$(diff <(devices by_udev) <(printf 'sda sda1 sdb2 mmcblk1 mmcblk1p1 '))"
done
# shellcheck disable=SC2317 # called by devices
by_mdev() {
    local name owner mode command
    # The star: when it comes and when it goes.
    while read -r name owner mode command; do
        [[ ! $1 =~ ^$name$ || "$owner $mode" != "0:0 660" ||
            $command != '*/usr/lib/mosktest/prepare-board hotplug' ]] || return 0
    done < <(grep -v '^#' packaging/service/mdev.conf)
    return 1
}
report "mdev" "$(diff <(devices by_mdev) <(printf 'sda sda1 sdb2 mmcblk1 mmcblk1p1 '))"
report "udev asks for a file system, and knows CAN" "$(missing_from "$(grep -oE 'ENV.*==.*"|.*"net".*' \
    packaging/service/99-mosktest.rules | sed 's/, RUN.*//')" <<'TEXT'
ENV{ID_FS_USAGE}=="filesystem"
ACTION=="add", SUBSYSTEM=="net", KERNEL=="can[0-9]*"
TEXT
)"

# --- What goes with the packages ---

# shellcheck disable=SC2016 # for the shell on the board
report "a purge leaves the markers and other software's files" "$(
    simulated-board/board --build "$build" --description simulated-board/boards/bare.board -- sh -ec '
        mkdir -p /var/cache/mosktest /var/log
        cd /etc
        touch mosk.ini mosk.ini.lock /var/log/sqlite.db sw2hmi qttestend frpc.ini vnclinuxfb.conf
        all() { ls -d mosk.ini* /var/log/sqlite.db /var/cache/mosktest 2>/dev/null || true; }
        sh "$0/debian/mosktest.postrm" remove
        [ "$(all | wc -l)" -eq 4 ] || echo "an upgrade takes something along"
        sh "$0/debian/mosktest.postrm" purge
        all
        ls sw2hmi qttestend frpc.ini vnclinuxfb.conf 2>&1 >/dev/null || true' "$project")"

# field NAME: the packages of a field of the program's package or its source, first alternatives.
field() {
    sed -n "/^Package: mosktest-operator/q; /^$1:/,/^[A-Z]/{ /^ /p }" debian/control |
        sed 's/^ //; s/[ ,].*//' | grep -v '^\$'
}
# packages KIND: what install-packages installs, as it tells somebody who may not.
mkdir "$scratch/tools"
ln -s "$(command -v sh)" "$scratch/tools/"
printf '#!/bin/sh\n' | tee "$scratch/tools/dpkg-query" >"$scratch/tools/id"
echo 'echo 1000' >>"$scratch/tools/id"
chmod +x "$scratch"/tools/*
packages() {
    { PATH=$scratch/tools packaging/install-packages "$1" 2>&1 || true; } | sed 's/.*Missing: //' |
        tr ' ' '\n'
}
here=$(packages test)
there=$(field Build-Depends && field Depends && field Recommends)
# A build has a compiler. The simulated board's own, and its letters.
report "what is installed here to build and run it, a package asks for" "$(packages run |
    grep -vxE 'g\+\+|bubblewrap|fonts-dejavu-core|procps|socat|util-linux|xserver-xephyr' |
    missing_from "$there")"
# The simulated board has cameras and a DHCP client of its own.
report "what a package asks for is installed here" "$(echo "$there" |
    grep -vxE 'debhelper-compat|gstreamer1\.0-.*|udhcpc' | missing_from "$here")"
report "only some checks can do without what is recommended" "$(diff <(field Recommends) - <<'TEXT'
gstreamer1.0-plugins-bad
gstreamer1.0-plugins-base
gstreamer1.0-plugins-good
gstreamer1.0-tools
iproute2
libqt5multimedia5-plugins
udhcpc
TEXT
)"
report "docs/virtual-board.md names what its board needs" "$(
    diff <(packages board | missing_from "$(packages run)" | sort) \
        <(sed -n '/^| package | for/,$s/^| \([a-z].*\) | .*/\1/p' docs/virtual-board.md | tail -n +2 |
            tr -d ' ' | tr ',' '\n' | sort))"
report "a release needs what makes roots" "$(packages roots | missing_from "$(packages release)")"
report "the packages' own tests are there" "$(diff <(sed -n 's/^Tests: //p' debian/tests/control) \
    <(cd debian/tests && find . -type f -perm -111 -printf '%P\n' | sort))"
cmake=$(sed -n 's/^cmake_minimum_required(VERSION \(.*\))/\1/p' CMakeLists.txt)
report "Debian, Buildroot and the presets know which CMake" "$(
    grep -qF "cmake (>= $cmake)" debian/control || echo Debian
    grep -qF "HOST_CMAKE_AT_LEAST_${cmake/./_}" packaging/buildroot/package/mosktest/Config.in || echo Buildroot
    grep -qF "\"minor\": ${cmake#*.}" CMakePresets.json || echo presets)"

# unnamed FILE PREFIX WORD...: those that the file does not name.
unnamed() {
    local file=$1 prefix=$2 word
    shift 2
    for word; do
        grep -qE "(^|[^A-Za-z0-9_-])$prefix$word([^A-Za-z0-9_-]|$)" "$file" || echo "$file: $prefix$word"
    done
}
recipe=packaging/buildroot/package/mosktest
report "Buildroot and Yocto bring the same" "$(
    unnamed $recipe/mosktest.mk qt5 base declarative multimedia quickcontrols2 serialport virtualkeyboard
    unnamed $recipe/Config.in "select BR2_PACKAGE_QT5" DECLARATIVE DECLARATIVE_QUICK MULTIMEDIA \
        QUICKCONTROLS2 SERIALPORT VIRTUALKEYBOARD BASE_WIDGETS BASE_LINUXFB BASE_FONTCONFIG BASE_TSLIB
    unnamed $recipe/Config.in "select BR2_PACKAGE_" IPROUTE2 TINYALSA_TOOLS TSLIB UTIL_LINUX_BINARIES \
        WPA_SUPPLICANT_CLI WQY_ZENHEI GST1_PLUGINS_BAD_PLUGIN_CAMERABIN2 GST1_PLUGINS_GOOD_PLUGIN_V4L2
    unnamed packaging/buildroot/configs/mosktest_defconfig BR2_PACKAGE_ QT5=y QT5BASE_SQLITE_QT=y MOSKTEST=y
    recipe=packaging/yocto/recipes-mosktest/mosktest/mosktest.bb
    unnamed $recipe qt base declarative multimedia serialport base-plugins declarative-qmlplugins \
        multimedia-plugins quickcontrols2-qmlplugins virtualkeyboard virtualkeyboard-plugins \
        virtualkeyboard-qmlplugins
    unnamed $recipe "" iproute2 iputils-ping net-tools psmisc tinyalsa tslib-calibrate ttf-wqy-zenhei \
        util-linux-blockdev wpa-supplicant wpa-supplicant-cli gstreamer1.0-plugins-bad-camerabin
    unnamed packaging/yocto/recipes-qt/qt5/*.bbappend "" linuxfb sql-sqlite fontconfig tslib)"
known=$(grep -rhoE --include=CMakeLists.txt '(option|set)\(MOSK_[A-Z_]*' CMakeLists.txt packaging docs \
    simulated-board | sed 's/.*(//')
report "the packages set what CMake knows" "$(grep -rhoE -e '-DMOSK_[A-Z_]*' debian packaging docs |
    sed 's/^-D//' | sort -u | missing_from "$known")"
[ "$failures" -eq 0 ]
