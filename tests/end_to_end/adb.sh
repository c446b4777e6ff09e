#!/bin/bash
# Stands in for adb: its command forms, statuses and messages. Its devices are the lines "SERIAL
# STATE" of $ADB_FOLDER/devices; what they do, the stand-in device does that listens at the pipe
# $ADB_FOLDER/shell ("adb.sh listen FOLDER" in it). When $ADB_FOLDER/unplug has a pattern and a
# command matches, all devices are gone in the middle of it. $ADB_FOLDER/crash is their log of
# crashes.

if [[ "$1" == listen ]]; then
    echo ready
    while IFS= read -r call; do
        (
            env --default-signal=INT,QUIT bash -c "$(<"$call/command")" \
                <"$call/in" >"$call/out" 2>"$call/err"
            echo $? >"$call/status"
        ) &
    done <>"$2/shell"
fi

fail() {
    printf '%s\n' "$*" >&2
    exit 1
}

# in_device COMMAND: with this standard input, output and error; its status.
in_device() {
    local call status
    call="$(mktemp -d "$ADB_FOLDER/call-XXXXXX")"
    mkfifo "$call"/{in,out,err,status}
    printf '%s' "$1" >"$call/command"
    echo "$call" >"$ADB_FOLDER/shell"
    cat >"$call/in" <&0 2>/dev/null &
    cat "$call/err" >&2 &
    cat "$call/out"
    read -r status <"$call/status"
    wait "$!"
    rm -rf "$call"
    return "$status"
}

serial="" # of push and pull the errors go to standard output, and have a beginning of their own
[[ "$1" != -s ]] || { serial="$2" && shift 2; }
word="$1"
shift
error="error: "
[[ "$word" != pu* ]] || { exec 2>&1 && error="adb: error: failed to get feature set: "; }
case "$word" in
devices)
    printf 'List of devices attached\n'
    sed 's/ /\t/' "$ADB_FOLDER/devices"
    echo
    exit
    ;;
esac
count="$(wc -l <"$ADB_FOLDER/devices")"
state="$(sed -n "s/^${serial:-.*} //p" "$ADB_FOLDER/devices")"
[[ -n "$serial" || $count != 0 ]] || fail "${error}no devices/emulators found"
[[ -n "$serial" || $count == 1 ]] || fail "${error}more than one device/emulator"
[[ -n "$state" ]] || fail "${error}device '$serial' not found"
[[ "$state" == device ]] || fail "${error}device $state"
pattern="$(cat "$ADB_FOLDER/unplug" 2>/dev/null)"
if [[ -n "$pattern" && "$word $*" =~ $pattern ]]; then
    : >"$ADB_FOLDER/devices"
    fail "adb: error: failed to read copy response: EOF"
fi

case "$word" in
get-state) echo device ;;
shell) in_device "$*" ;;
logcat)
    [[ "$*" != *"-b crash"* ]] || { cat "$ADB_FOLDER/crash" 2>/dev/null && exit || exit 0; }
    in_device "logcat ${*@Q}"
    ;;
push)
    said="$(in_device "cat >${2@Q}" <"$1" 2>&1)" ||
        fail "adb: error: failed to copy '$1' to '$2': remote ${said##*: }"
    echo "$1: 1 file pushed, 0 skipped. 100.0 MB/s ($(stat -c %s "$1") bytes in 0.001s)"
    ;;
pull)
    in_device "test -e ${1@Q}" </dev/null ||
        fail "adb: error: failed to stat remote object '$1': No such file or directory"
    in_device "cat ${1@Q}" </dev/null >"$2" || fail "adb: error: failed to copy '$1' to '$2'"
    echo "$1: 1 file pulled, 0 skipped. 100.0 MB/s ($(stat -c %s "$2") bytes in 0.001s)"
    ;;
*) fail "adb: unknown command $word" ;;
esac
