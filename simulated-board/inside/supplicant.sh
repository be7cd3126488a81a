# shellcheck shell=bash
# Sourced by wpa_cli and udhcpc: what the board's supplicant knows. It does nothing by itself: its
# state is what has become of its networks by the time that somebody asks.
export LC_ALL=C

wifi=/run/board/wifi
far_address=192.168.43.1

# What is in the air, in the order of the description.
air_names=()
air_signals=()
air_passphrases=()
air_flags=()
in_the_air() {
    air_names+=("$1")
    air_signals+=("$2")
    air_passphrases+=("$3")
    air_flags+=(" ${*:4} ")
}
if [ -e "$wifi/air" ]; then
    # shellcheck disable=SC1091 # written by the board description
    . "$wifi/air"
fi

# Succeeds when the moment noted in a file lies that many seconds back, or was never noted.
is_past() {
    local noted
    noted=$(cat "$wifi/$1" 2>/dev/null || echo 0)
    [ $((${EPOCHREALTIME/./} - noted)) -ge $(($2 * 1000000)) ]
}

note_the_moment() {
    echo "${EPOCHREALTIME/./}" >"$wifi/$1"
}

# The bytes of a variable of a network, in $value.
read_variable() {
    value=
    [ ! -e "$wifi/networks/$1/$2" ] || IFS= read -r -d "" value <"$wifi/networks/$1/$2" || true
}

is_interface_up() {
    [ -n "$(ip link show wlan0 up)" ]
}

# Sets $state, and when there is a network to join $network (its id) and $station (its place in the
# air).
find_state() {
    network=
    station=
    state=INTERFACE_DISABLED
    is_interface_up || return 0
    state=INACTIVE
    local id
    for id in "$wifi"/networks/*/enabled; do
        [ -e "$id" ] || return 0
        network=$(basename "$(dirname "$id")")
        break
    done

    state=SCANNING
    local i ssid psk scan_ssid
    read_variable "$network" ssid
    ssid=$value
    read_variable "$network" psk
    psk=$value
    read_variable "$network" scan_ssid
    scan_ssid=$value
    for i in "${!air_names[@]}"; do
        [ "${air_names[i]}" = "$ssid" ] || continue
        # A hidden network answers only those who ask for it by name.
        [[ ${air_flags[i]} != *" hidden "* || $scan_ssid = 1 ]] || continue
        station=$i
        break
    done
    [ -n "$station" ] || return 0
    # An open network is no match for a configuration with a passphrase.
    [ "${air_passphrases[station]}" != - ] || return 0
    if [ "${air_passphrases[station]}" != "$psk" ]; then
        is_past enabled-at 1 || state=4WAY_HANDSHAKE
    elif [[ ${air_flags[station]} == *" slow "* ]] && ! is_past enabled-at 5; then
        state=ASSOCIATING
    else
        state=COMPLETED
    fi
}

# The far end hears the board only while the board is joined.
settle() {
    find_state
    local far
    far=$(cat /run/board/far/wlan0)
    if [ "$state" = COMPLETED ]; then
        nsenter -t "$far" -n ip addr replace "$far_address/24" dev far-wlan0
    else
        nsenter -t "$far" -n ip addr flush dev far-wlan0
    fi
}

# Prints bytes as the client does: escapes for quotes, back-slashes and what is not ASCII.
escaped() {
    local text=$1 i code result=
    for ((i = 0; i < ${#text}; ++i)); do
        local character=${text:i:1}
        case $character in
        '"' | \\) result+=\\$character ;;
        $'\e') result+='\e' ;;
        $'\n') result+='\n' ;;
        $'\r') result+='\r' ;;
        $'\t') result+='\t' ;;
        [\ -~]) result+=$character ;;
        *)
            printf -v code '%d' "'$character"
            printf -v code '\\x%02x' $((code & 255))
            result+=$code
            ;;
        esac
    done
    printf '%s' "$result"
}

hexadecimal() {
    printf '%s' "$1" | od -An -v -tx1 | tr -d ' \n'
}
