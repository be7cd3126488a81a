#!/bin/bash
# The scripts that install, build, start and check do what they are told, and fail when something that they
# run fails. They are copied, and what they run are stand-ins.
#
#   judges.sh PROJECT
#
# shellcheck disable=SC2016,SC2317 # what is quoted is for the stand-ins; called by verdict
set -eu

project=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
# shellcheck source=tests/verdicts.bash
. "$project/tests/verdicts.bash"
export CALLS=$scratch/calls FAILS=none

# A stand-in writes its call down, and fails when that begins with $FAILS. It sees what is wrong with
# the faulty file unless $BLIND is its name.
stand_in() {
    local path
    for path; do
        mkdir -p "$(dirname "$scratch/$path")"
        printf '%s\n' '#!/bin/sh' 'echo "${0##*/} $*" | paste -sd " " >>"$CALLS"' \
            'case "${0##*/} $*" in $FAILS*) exit 3 ;; ${BLIND:-none}\ *) exit 0 ;; *build/faulty*)' \
            '    printf "error: [%s-x]\n" bugprone clang-analyzer misc-unused modernize performance' \
            '    echo "error: [readability-x]"; exit 1 ;; esac' >"$scratch/$path"
        chmod +x "$scratch/$path"
    done
}

# copy SCRIPT...
copy() {
    local script
    for script; do
        mkdir -p "$(dirname "$scratch/project/$script")"
        cp "$project/$script" "$scratch/project/$script"
    done
}

# verdict NAME COMMAND...: as check, and tells what the last run called and said.
verdict() {
    local before=$failures
    check "$@"
    [ "$failures" -eq "$before" ] || cat "$CALLS" "$scratch/said"
}

# run STATUS COMMAND...: in the copy; it must exit with that.
run() {
    local status=0
    : >"$CALLS"
    (cd "$scratch/project" && PATH=$scratch/tools:$PATH "${@:2}") >"$scratch/said" 2>&1 || status=$?
    verdict "${*:2} where $FAILS fails" [ "$status" -eq "$1" ]
}

# called PATTERN...: the last run's calls must be these.
called() {
    verdict "its calls" are_called "$@"
}
are_called() {
    local line
    while read -r line; do
        # shellcheck disable=SC2053 # a pattern
        [[ $# -gt 0 && $line == $1 ]] || return
        shift
    done <"$CALLS"
    [ $# -eq 0 ]
}

# --- ./run.sh ---

copy run.sh
mkdir "$scratch/tools"
printf '%s\n' '#!/bin/sh' 'echo "${USER_ID:-0}"' >"$scratch/tools/id"
chmod +x "$scratch/tools/id"
stand_in tools/{cmake,ctest} project/packaging/install-packages project/simulated-board/show \
    project/virtual-board/{start,accept}
# shows ARGUMENTS-OF-SHOW COMMAND...
shows() {
    run 0 "${@:2}"
    called "install-packages run" "cmake --preset release*" "cmake --build --preset release" "show $1"
}
shows "tour --size 1024x600 --port 5900" ./run.sh tour
shows "tour --size 800x480 --port 5900" ./run.sh --size 800x480 tour
shows "vnc --size 800x480 --port 5999" ./run.sh vnc 5999 --size 800x480
shows "tour --size 1024x600 --port 5900" env DISPLAY= ./run.sh
shows "window --size 1024x600 --port 5900" env DISPLAY=:9 ./run.sh
run 0 ./run.sh board --size 800x480
called "start --vnc 5900 --size 800x480"
run 0 ./run.sh accept wifi --soak 3
called "install-packages board" "accept wifi --soak 3"
run 0 ./run.sh --size 800x480 accept
called "install-packages board" "accept --size 800x480"
for what in board accept; do
    USER_ID=1000 run 2 ./run.sh "$what"
    verdict "root is asked for" grep -q "sudo ./run.sh $what" "$scratch/said"
done
for FAILS in install-packages "cmake --preset" "cmake --build" show; do
    run 3 ./run.sh tour
done
FAILS=accept run 3 ./run.sh accept
FAILS=start run 3 ./run.sh board

copy simulated-board/show
stand_in tools/{socat,Xephyr} project/simulated-board/board
echo "echo \$\$ >>$scratch/neighbours; echo 7 >&3; exec sleep 9" >>"$scratch/tools/Xephyr"
echo "echo \$\$ >>$scratch/neighbours; exec sleep 9" >>"$scratch/tools/socat"
echo 'echo "on $QT_QPA_PLATFORM" >>"$CALLS"' >>"$scratch/project/simulated-board/board"
# Not before its neighbour is there.
sed -i "2i case \$* in *with-socket*) until [ -s $scratch/neighbours ]; do sleep 0.01; done ;; esac" \
    "$scratch/project/simulated-board/board"
neighbours_have_ended() {
    local process end=$((SECONDS + 5))
    while read -r process; do
        while kill -0 "$process" 2>/dev/null; do
            [ "$SECONDS" -lt "$end" ] || return
            sleep 0.05
        done
    done <"$scratch/neighbours"
}
for shown in "tour on vnc:size=800x480:" "vnc on vnc:size=800x480:" "window Xephyr .*-screen 800x480 " \
    "vnc socat TCP-LISTEN:5999,bind=127.0.0.1,"; do
    what=${shown%% *}
    : >"$scratch/neighbours"
    FAILS=none run 0 simulated-board/show "$what" --size 800x480 --port 5999
    verdict "what runs there" grep -q '^board .*/build/release/MoskTest$' "$CALLS"
    verdict "how it is shown" grep -q "^${shown#* }" "$CALLS"
    verdict "what ran beside it has ended" neighbours_have_ended
    FAILS=board run 3 simulated-board/show "$what" --size 800x480 --port 5999
    verdict "what ran beside it has ended" neighbours_have_ended
done

# A viewer's way into the sandbox.
copy simulated-board/inside/with-socket
for status in 0 3; do
    run "$status" simulated-board/inside/with-socket /there/vnc 5900 \
        sh -c 'until grep -q ^socat "$CALLS"; do sleep 0.01; done; exit "$0"' "$status"
    called "socat UNIX-LISTEN:/there/vnc,fork TCP:127.0.0.1:5900"
done

# --- Where Debian's packages come from ---

copy packaging/mirror
stand_in tools/apt-get
echo 'printf "%b" "$MIRRORS"' >>"$scratch/tools/apt-get"
while read -r wanted mirrors; do
    MIRRORS=$mirrors FAILS=none run 0 env -u DEBIAN_MIRROR packaging/mirror
    verdict "the mirror is $wanted" [ "$(cat "$scratch/said")" = "$wanted" ]
done <<'TEXT'
https://one.example/debian https://one.example/debian\nhttp://two.example/debian\n
http://two.example/debian mirror+file:/etc/apt/mirrors/debian.list/\nhttp://two.example/debian\n
http://deb.debian.org/debian mirror+file:/etc/apt/mirrors/debian.list/\n
http://deb.debian.org/debian
TEXT
rm "$scratch/tools/apt-get"

# --- What has to pass before a change lands ---

copy tests/fresh
# The machine is a stand-in, and sees the stand-ins' variables.
sed -i 's/^env -i /env /; s|^    PATH=/usr/local[^ ]* |    |' "$scratch/project/tests/fresh"
stand_in tools/{tar,git,mmdebstrap,unshare} project/packaging/mirror
echo 'mkdir -p "$4/etc" "$4/usr/sbin"' >>"$scratch/tools/tar"
echo 'for file; do case $file in *.new) touch "$file" ;; esac; done' >>"$scratch/tools/mmdebstrap"
for part in mmdebstrap tar "git clone" unshare; do
    FAILS=$part run 3 tests/fresh bookworm ./run.sh tour
    verdict "its machine is deleted" [ -z "$(find "$scratch/project/out/fresh" -mindepth 1 -type d)" ]
done
rm "$scratch/project/out/fresh/bookworm.tar"
FAILS=none run 0 tests/fresh bookworm ./run.sh tour
called "install-packages roots" mirror "mmdebstrap * bookworm *" "tar -xf */bookworm.tar *" "git clone *" \
    "unshare * ./run.sh tour"
FAILS=none run 0 tests/fresh bookworm ./run.sh tour
called "install-packages roots" "tar *" "git *" "unshare *"
rm "$scratch"/tools/{tar,git}

copy test.sh tests/coverage.sh tests/source-checks.sh .ci/run
stand_in tools/{gcovr,clang-format-19,shellcheck,pyflakes3,codespell,cppcheck,clazy,clang-tidy} \
    project/tests/fresh
FAILS=none
run 0 ./test.sh -R Name
called "install-packages test" "cmake --preset asan" "cmake --build --preset asan" "cmake --preset fuzz" \
    "cmake --build --preset fuzz" "ctest --preset asan* -R Name" "ctest --preset fuzz* -R Name"
for FAILS in install-packages "cmake --preset fuzz" "cmake --build --preset asan" "ctest --preset asan" \
    "ctest --preset fuzz"; do
    run 3 ./test.sh
done

copy tests/fuzz/run
stand_in tools/Fuzzer
FAILS=none
run 0 tests/fuzz/run Fuzzer seeds 5
called "Fuzzer -max_total_time=5 * /tmp/* */tests/fuzz/seeds"
FAILS=Fuzzer run 3 tests/fuzz/run Fuzzer seeds 5

FAILS=none
mkdir -p "$scratch/project/build/coverage"
run 0 tests/coverage.sh
folders=
for folder in protocols texts frame instruments pages; do
    folders="$folders --filter $folder/"
done
called "install-packages checks" "cmake --preset coverage" "cmake --build --preset coverage" \
    "ctest --preset coverage*" "gcovr --root .$folders --fail-under-line 97 --print-summary build/coverage"
for FAILS in "cmake --build" ctest gcovr; do
    run 3 tests/coverage.sh
done

for folder in protocols texts frame instruments pages simulated-board tests benchmarks virtual-board \
    debian docs packaging; do
    mkdir -p "$scratch/project/$folder"
    touch "$scratch/project/$folder"/{a.h,a.cpp}
    printf '#!/bin/sh\n' >"$scratch/project/$folder/script"
    printf '#!/usr/bin/python3\n' >"$scratch/project/$folder/program"
done
for preset in asan fuzz; do
    mkdir -p "$scratch/project/build/$preset"
    echo "  \"command\": \"clang++ -c $preset.cpp\"," >"$scratch/project/build/$preset/compile_commands.json"
done
FAILS=none
run 0 tests/source-checks.sh
for folder in protocols texts frame instruments pages simulated-board tests benchmarks virtual-board; do
    verdict "the format of $folder" grep -q "^clang-format-19 .*-Werror .*$folder/a\.cpp" "$CALLS"
    verdict "the scripts of $folder" grep -q "^shellcheck .*$folder/script" "$CALLS"
    verdict "the names of $folder" grep -q "^pyflakes3 .*$folder/program" "$CALLS"
    verdict "the traps of $folder" grep -q "^cppcheck .*--error-exitcode=1 .* $folder" "$CALLS"
done
verdict "the fuzzers are built for that" grep -qx 'cmake --preset fuzz' "$CALLS"
verdict "the traps of Qt" grep -q '^clazy .*asan\.cpp.*-Werror' "$CALLS"
verdict "the fuzzers' source" grep -q '^clang-tidy .*fuzz\.cpp' "$CALLS"
for section in format:clang-format-19 shell:shellcheck python:pyflakes3 spelling:codespell \
    cppcheck:cppcheck clazy:clazy tidy:clang-tidy; do
    FAILS=${section#*:} run 1 tests/source-checks.sh
    FAILS=${section#*:} run 1 tests/source-checks.sh "${section%:*}"
done
FAILS=none
for tool in clang-format-19 cppcheck clang-tidy; do
    BLIND=$tool run 1 tests/source-checks.sh
done

rm "$scratch"/project/{test.sh,tests/coverage.sh,tests/source-checks.sh}
stand_in project/{test.sh,tests/coverage.sh,tests/source-checks.sh}
steps=("fresh bookworm ./run.sh" "fresh trixie ./run.sh" test.sh source-checks.sh coverage.sh)
FAILS=none
run 0 .ci/run
called "${steps[@]}"
for FAILS in "${steps[@]}"; do
    run 3 .ci/run
done

# No test is left out.
for test in "$project"/tests/{,protocols/,fuzz/}*{Test,Fuzzer}.cpp "$project"/tests/*.{sh,py}; do
    [ -e "$test" ] || continue
    name=$(basename "$test" .cpp)
    verdict "$name is run" grep -qE "^[^#]*[(/]$name([ )]|\$)" "${test%/*}/CMakeLists.txt" "$project/.ci/run"
done

# --- The virtual board's start ---

copy virtual-board/start
stand_in project/virtual-board/{control,build-{media,packages,root,kernel,image,systemd-image}}
stand_in tools/qemu-system-arm
printf '%s\n' 'printf "virtual board is up after 6 s\nboard# " >console.log; exec sleep 9' >>"$scratch/tools/qemu-system-arm"
mkdir -p "$scratch/project/out/board/shared" "$scratch/project/out/deb/bookworm"
touch "$scratch"/project/out/deb/bookworm/mosktest{,-operator}_1_armhf.deb
FAILS="control up"
stages=(build-media build-packages build-root build-kernel build-image)
run 0 virtual-board/start --detach --size 800x480 --vnc 5901
called "control up" "install-packages board" "${stages[@]}" \
    "qemu-system-arm *-display vnc=127.0.0.1:1 *root.ext4*snapshot=on*xres=800,yres=480*"
run 0 virtual-board/start --systemd --detach
called "control up" "install-packages board" build-media build-packages "build-root systemd" build-kernel \
    build-systemd-image "qemu-system-arm *-display none *root-systemd.ext4*xres=1024,yres=600*"
FAILS=none run 1 virtual-board/start --detach
run 2 virtual-board/start --picnic
stand_in tools/{qemu-system-arm,sleep}
echo 'echo panic >console.log; exec /bin/sleep 9' >>"$scratch/tools/qemu-system-arm"
FAILS="control up" run 1 virtual-board/start --detach
verdict "a board that does not come up" grep -q panic "$scratch/said"
rm "$scratch/tools/sleep"

copy virtual-board/stage.sh
echo '. virtual-board/stage.sh; begin_stage trial "Trying"; echo said; control up' \
    >"$scratch/project/trial"
cp "$scratch"/{project/virtual-board,tools}/control
FAILS=none run 0 sh -eu trial
FAILS=control run 3 sh -eu trial
verdict "the end of its log" grep -qx said "$scratch/said"

# The packages are built anew when something that goes into them has changed.
copy virtual-board/build-packages
stand_in project/packaging/build-deb
deb=$scratch/project/out/deb/bookworm/mosktest_1_armhf.deb
echo "touch -d '1 minute' $deb" >>"$scratch/project/packaging/build-deb"
# builds CALL...: what the stage calls.
builds() {
    FAILS=none run 0 virtual-board/build-packages
    called "$@"
}
rm "$deb"
builds "build-deb armhf bookworm"
builds
touch -d '2 minutes' "$scratch/project/tests/a.cpp"
builds
touch -d '2 minutes' "$scratch/project/pages/a.cpp"
builds "build-deb armhf bookworm"
FAILS=build-deb run 3 virtual-board/build-packages

# The kernel is built anew when its configuration has changed, and has all of it.
copy virtual-board/{build-kernel,kernel.config}
stand_in tools/{dpkg-query,tar,make}
echo 'echo "linux-source-${KERNEL:-6.1}"' >>"$scratch/tools/dpkg-query"
objects=$scratch/project/build/virtual-board/kernel/objects
echo "mkdir -p $objects/arch/arm/boot; touch $objects/arch/arm/boot/zImage
grep -v \"\${DROPPED:-none}\" $scratch/project/virtual-board/kernel.config >$objects/.config" >>"$scratch/tools/make"
# Each of the two kernels need not know what only the other one asks for.
for part in "1 6.1 CAN" "1 6.1 BASE_FULL" "0 6.1 FB_DEVICE" "0 6.1 DRM_VIRTIO_GPU_KMS" \
    "0 6.12 BASE_FULL" "1 6.12 FB_DEVICE" "1 6.12 DRM_VIRTIO_GPU_KMS"; do
    read -r status version option <<<"$part"
    rm -rf "$scratch/project/build/virtual-board/kernel"
    FAILS=none KERNEL=$version DROPPED=CONFIG_$option= run "$status" virtual-board/build-kernel
    [ "$status" -eq 0 ] ||
        verdict "$option is told" grep -q "does not take: CONFIG_$option=" "$scratch/said"
done
rm -rf "$scratch/project/build/virtual-board/kernel"
for changed in yes no yes; do
    FAILS=none run 0 virtual-board/build-kernel
    verdict "changed: $changed" [ "$changed" = "$(grep -q '^make .* zImage modules$' "$CALLS" && echo yes || echo no)" ]
    [ "$changed" = yes ] || echo CONFIG_TRIAL=y >>"$scratch/project/virtual-board/kernel.config"
done
echo CONFIG_TRIAL2=y >>"$scratch/project/virtual-board/kernel.config"
FAILS="make * zImage" run 3 virtual-board/build-kernel
rm "$scratch"/tools/{dpkg-query,tar,make}

# --- Before a release ---

copy packaging/{build-deb,release-check} debian/control
stand_in tools/{dpkg,id,mmdebstrap,bwrap} project/packaging/mirror
echo 'echo amd64' >>"$scratch/tools/dpkg"
echo 'echo 0' >>"$scratch/tools/id"
sed -i "2i touch $scratch/project/out/build-trixie-amd64/mosktest_1_amd64.deb" "$scratch/tools/bwrap"
for part in 0:none 3:mmdebstrap 1:"bwrap * dpkg-buildpackage" 3:"bwrap * lintian" 3:"bwrap * blhc"; do
    rm -rf "$scratch/project/out"
    FAILS=${part#*:} run "${part%%:*}" packaging/build-deb amd64 trixie
done
stand_in project/packaging/build-deb
FAILS=none
run 0 packaging/release-check 'run-*' 'test-*' 'packages-*'
FAILS="fresh trixie"
run 1 packaging/release-check 'run-*'
FAILS='fresh bookworm sh'
run 1 packaging/release-check 'accept-*'
stand_in tools/piuparts project/packaging/try-{buildroot,yocto}
mkdir -p "$scratch"/project/out/deb/{bookworm,trixie} "$scratch/project/out/fresh"
touch "$scratch"/project/out/fresh/{bookworm,trixie}.tar
for part in "0 none" "1 fresh" "1 piuparts"; do
    FAILS=${part#* } run "${part% *}" packaging/release-check 'piuparts-*'
done
FAILS=none run 0 packaging/release-check 'autopkgtest-*'
FAILS="fresh trixie" run 1 packaging/release-check 'autopkgtest-*'
FAILS=none run 0 packaging/release-check --buildroot /a --buildroot /b --bitbake /c buildroot bitbake
called "install-packages release" "dpkg --print-architecture" "try-buildroot /a /b" "try-yocto /c"
for part in try-buildroot try-yocto; do
    FAILS=$part run 1 packaging/release-check --buildroot /a --bitbake /c buildroot bitbake
done
run 2 packaging/release-check picnic
[ "$failures" -eq 0 ]
