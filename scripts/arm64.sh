# ./check arm64: tool, stand-in and tests for the processor of devices, run in the emulator. Sourced.

sysroot="$out/arm64/sysroot"

# Tests that start a program of their own build: a process in the emulator cannot, because the kernel
# does not know what to do with the file.
not_emulated='aidl_frozen_version|ProgramTest|binder_remote_test|servicemanager_test|DeathOfAClient'

# Unpacks the packages marked "sysroot" in the list, and those they need, below out/. The machine's
# own package state stays as it is: libc++ cannot be installed for two processors at once.
fill_sysroot() {
    local names stamp apt="$out/arm64/apt" package link
    mapfile -t names < <(awk '$2 == "sysroot" { print $1 }' "$root/scripts/packages.txt")
    stamp="$out/arm64/.filled-$(printf '%s\n' "$root" "${names[@]}" | sha256sum | cut -c 1-16)"
    [[ -e "$stamp" ]] && return
    rm -rf "$out/arm64" "$out/check-arm64" # which was built with the old headers
    mkdir -p "$sysroot" "$apt"/{lists,archives}/partial
    : >"$apt/status"
    local options=(-o APT::Architecture=arm64 -o APT::Architectures=arm64 -o APT::Sandbox::User=
        -o Debug::NoLocking=1 -o Dir::State="$apt" -o Dir::State::status="$apt/status"
        -o Dir::State::lists="$apt/lists" -o Dir::Cache="$apt" -o Dir::Cache::archives="$apt/archives")
    say "downloading packages for arm64 into $out/arm64"
    { apt-get "${options[@]}" update &&
        apt-get "${options[@]}" install -y --no-install-recommends --download-only "${names[@]}"; } \
        >&2 || refuse "could not download packages for arm64"
    for package in "$apt"/archives/*.deb; do dpkg-deb -x "$package" "$sysroot"; done
    # Absolute links would lead out of the folder.
    find "$sysroot" -type l -lname '/*' -print0 | while read -rd '' link; do
        ln -sfn "$sysroot$(readlink "$link")" "$link"
    done
    rm -rf "$apt"
    touch "$stamp"
}

# run_in_device NAME WORD OPTION... -- COMMAND...: the tool with -t WORD; its log in $kept/NAME.log,
# its dumps in $kept/NAME. The tool waits 5 s for a picture, which the emulator may miss on a busy
# machine; such a run is repeated twice.
run_in_device() {
    local name="$1" word="$2"
    shift 2
    mkdir -p "$kept/$name/offlinecameratest"
    ln -s "$kept/sources/metadata" "$kept/$name/metadata"
    ln -s "$kept/sources/offlinecameratest/"* "$kept/$name/offlinecameratest/"
    for _ in 1 2 3; do
        "$native/deviceshell" --data "$kept/$name" --log "$kept/$name.log" "$@" -t "$word" \
            >"$kept/$name.out" 2>&1 || { complain "$name: status $?" && cat "$kept/$name.out" >&2; }
        grep -q 'WaitCaptureResultCompleted status is -110' "$kept/$name.log" || return 0
        say "$name: the picture took longer than the tool waits"
    done
}

# The lines of a log without times, process numbers and addresses; first those of the main thread,
# because threads may log in any order. The callbacks' destructor is left out: it runs on a thread of
# its own when the service lets go of them, or no longer when the process has ended by then.
comparable() {
    { awk '$3 == $4' "$1" && awk '$3 != $4' "$1"; } | grep -v 'OfflineCameraCallBacks destructor' |
        sed -E 's/^[^ ]+ +[^ ]+ +[0-9]+ +[0-9]+ //; s/0x[0-9a-f]{6,}/ADDRESS/g'
}

# same NAME FROM: whether two runs left the same log and dumps; shows what differs.
same() {
    diff -u <(comparable "$kept/$2.log") <(comparable "$kept/$1.log") >&2 &&
        diff -r -x '*.raw' -x metadata "$kept/$2" "$kept/$1" >&2 # without links to the sources
}

# Each mode three times: everything native, the tool in the emulator, the service in the emulator.
compare_runs() {
    local emulator=(qemu-aarch64 -L "$sysroot") word planes name run failed=0
    "$native/offlineframes" sources "$kept/sources" >/dev/null 2>&1
    printf '#!/bin/sh\nexport STANDIN_HAL_PATH="%s"\nexec %s "%s"\n' "$foreign/vendor/lib64/hw" \
        "${emulator[*]@Q}" "$foreign/bin/offlinecameraservice" >"$kept/service"
    chmod +x "$kept/service"
    for word in B2Y Y2J MMF; do
        for planes in "" --planes; do
            name="$word$planes"
            run_in_device "$name" "$word" $planes -- vexofflinecameratest
            run_in_device "$name-tool" "$word" -- env STANDIN_HAL_PATH="$foreign/vendor/lib64/hw" \
                "${emulator[@]}" "$foreign/bin/vexofflinecameratest${planes/--/-}"
            run_in_device "$name-service" "$word" $planes --service "$kept/service" -- \
                vexofflinecameratest
            for run in "$name-tool" "$name-service"; do
                same "$run" "$name" || { failed=1 && complain "$run differs from $name"; }
            done
            rm -rf "$kept/$name"*
        done
    done
    return $failed
}

# arm64 FOLDER: builds there.
arm64() {
    local foreign="$1" native="$out/build/bin" kept
    install_packages arm64
    fill_sysroot
    build "$out/build" "" host/all vexofflinecameratest vexofflinecameratest-planes || return 1
    build "$foreign" -DCMAKE_TOOLCHAIN_FILE=cmake/arm64.cmake all || return 1
    unlock_out
    say "not in the emulator, as they start programs: tests that match $not_emulated"
    ctest --test-dir "$foreign" --output-on-failure --no-tests=error -j "$(nproc)" \
        --timeout 300 -E "$not_emulated" || return 1
    kept="$(mktemp -d)"
    # shellcheck disable=SC2064 # expanded now: the name is local
    trap "rm -rf '$kept'" EXIT
    compare_runs || return 1
    tell "$green" "arm64: tool and service do what they do on this machine"
}
