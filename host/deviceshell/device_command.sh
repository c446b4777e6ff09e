#!/bin/bash
# Commands that scripts for a device call, in the stand-in device's shell: what each does here, by
# the name that this file has.
set -euo pipefail
name="${0##*/}"

fail() {
    echo "$name: $*" >&2
    exit 1
}

# A workstation's commands for a device, where workstation and device are one.
adb() {
    local word="${1:-}"
    shift || true
    case "$word" in
    shell) exec bash -c "$*" ;;
    logcat) exec logcat "$@" ;;
    push | pull)
        (($# > 0)) || fail "$word needs a file"
        (($# > 1)) || set -- "$1" .
        cp -r -- "$@"
        ;;
    root | remount | sync | wait-for-device | devices) ;; # there is nothing to do
    *) fail "knows shell, logcat, push and pull here, not: $word" ;;
    esac
}

# getprop [NAME [DEFAULT]]
properties="ro.build.fingerprint=standin:14/userdebug
ro.build.type=userdebug
ro.build.version.release=14
ro.build.version.sdk=34
ro.debuggable=1
ro.hardware=standin
ro.product.cpu.abi=$(uname -m)
ro.product.device=standin
ro.product.model=stand-in device
ro.serialno=standin0
sys.boot_completed=1"

case "$name" in
adb) adb "$@" ;;
getprop)
    if (($# == 0)); then
        sed 's/\([^=]*\)=\(.*\)/[\1]: [\2]/' <<<"$properties"
    else
        value="$(sed -n "s/^${1//./\\.}=//p" <<<"$properties")"
        echo "${value:-${2:-}}"
    fi
    ;;
restorecon) ;; # no labels here
*) fail "not on the stand-in device; leaving its shell takes it down" ;;
esac
