# ./check arm64: tool, stand-in and tests for the processor of devices, run in the emulator. Sourced.

sysroot="$out/arm64/sysroot"

# Tests that start a program of their own build: a process in the emulator cannot, because the kernel
# does not know what to do with the file.
not_emulated='aidl_frozen_version|ProgramTest|binder_remote_test|servicemanager_test|DeathOfAClient'

# Builds what the runs are held against, and unpacks the packages marked "sysroot" in the list, and
# those they need, below out/. The machine's own package state stays as it is: libc++ cannot be
# installed for two processors at once.
prepare_arm64() {
    native="$out/build/bin"
    build "$out/build" "" host/all vexofflinecameratest vexofflinecameratest-planes || exit 1
    local names apt="$out/arm64/apt" filled="$out/arm64/filled" package link
    mapfile -t names < <(awk '$2 == "sysroot" { print $1 }' "$root/scripts/packages.txt")
    [[ ! -e "$filled" || "$(<"$filled")" != "$root ${names[*]}" ]] || return 0
    rm -rf "$out/arm64" "$out/check-arm64" # which was built with the old headers
    mkdir -p "$sysroot" "$apt"/{lists,archives}/partial
    : >"$apt/status"
    local options=(-o APT::Architecture=arm64 -o APT::Architectures=arm64 -o APT::Sandbox::User=
        -o Debug::NoLocking=1 -o Dir::State="$apt" -o Dir::State::status="$apt/status"
        -o Dir::Cache="$apt")
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
    echo "$root ${names[*]}" >"$filled"
}

# run_in_device NAME WORD OPTION... -- COMMAND...: the tool with -t WORD; its log in $kept/NAME.log,
# its dumps in $kept/NAME. The tool waits 5 s for a picture, which the emulator may miss on a busy
# machine; such a run is repeated twice.
run_in_device() {
    local name="$1" word="$2"
    shift 2
    cp -rs "$kept/sources" "$kept/$name"
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

# Each mode three times: everything native, the tool in the emulator, the service in the emulator.
# Logs and dumps must be the same; shows what differs.
compare_runs() {
    local tool=vexofflinecameratest service=offlinecameraservice word planes name run failed=0
    "$native/offlineframes" sources "$kept/sources" >/dev/null 2>&1
    # What has a program's name here runs it in the emulator.
    printf '#!/bin/bash\nexport STANDIN_HAL_PATH=%q\nexec qemu-aarch64 -L %q %q/"${0##*/}" "$@"\n' \
        "$foreign/vendor/lib64/hw" "$sysroot" "$foreign/bin" |
        tee "$kept"/{"$service","$tool","$tool-planes"} >/dev/null
    chmod +x "$kept"/{"$service","$tool","$tool-planes"}
    for word in B2Y Y2J MMF; do
        for planes in "" --planes; do
            name="$word$planes"
            run_in_device "$name" "$word" $planes -- "$tool"
            run_in_device "$name-tool" "$word" -- "$kept/$tool${planes/--/-}"
            run_in_device "$name-service" "$word" $planes --service "$kept/$service" -- "$tool"
            for run in "$name-tool" "$name-service"; do
                diff -u <(comparable "$kept/$name.log") <(comparable "$kept/$run.log") >&2 &&
                    diff -r "$kept/$name" "$kept/$run" >&2 ||
                    { failed=1 && complain "$run differs from $name"; }
            done
            rm -rf "$kept/$name"*
        done
    done
    return $failed
}

# arm64 FOLDER: with the build there.
arm64() {
    foreign="$1"
    say "not in the emulator, as they start programs: tests that match $not_emulated"
    ctest --test-dir "$foreign" --output-on-failure --no-tests=error -j "$(nproc)" \
        --timeout 300 -E "$not_emulated" || return 1
    kept="$(mktemp -d)"
    trap 'rm -rf "$kept"' EXIT
    compare_runs || return 1
    tell "$green" "arm64: tool and service do what they do on this machine"
}
