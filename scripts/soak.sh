#!/bin/bash
# Runs many sessions against a stand-in device and shows what its processes hold before and after:
# three fifths without faults, a fifth with faults of the camera service, one with the allocator's.
# usage: soak.sh FOLDER [SESSIONS], FOLDER being the programs'. Growth is status 1.
set -euo pipefail

self="$(readlink -f "$0")"
source "${self%/*}/terminal.sh"
readonly resident_bound=4096 # KiB per process: heap that an allocator keeps back for later
readonly warm_up=(10 16) # rounds at most, and sessions at a time, which is every kind twice

# --- Outside: the source files and the devices. ---
# on_device SESSIONS FAULT...
on_device() {
    local sessions="$1" fault options=(--die-with-parent --data "$data" --log "$data/tool.log")
    shift
    for fault; do options+=(--fault "$fault"); done
    [[ $# == 0 ]] || echo "faults: $*"
    # One heap per process: a further one for a thread is a mapping too, and no leak.
    MALLOC_ARENA_MAX=1 "$shell" "${options[@]}" --device-log "$data/device.log" -- \
        bash "$self" --inside "$sessions" ||
        { status=$? && tail -n 20 "$data/device.log" >&2 && exit $status; }
}

if [[ "${1:-}" != --inside ]]; then
    [[ $# -le 2 && -x "${1:-}/deviceshell" && "${2:-200}" =~ ^[1-9][0-9]{0,5}$ ]] ||
        refuse "usage: soak.sh FOLDER [SESSIONS], 1 to 999999 sessions"
    shell="$1/deviceshell"
    sessions="${2:-200}"
    data="$(mktemp -d)"
    trap 'rm -rf "$data"' EXIT
    "$1/offlineframes" sources "$data" >"$data/made" 2>&1 || { cat "$data/made" >&2 && exit 1; }
    share=$((sessions / 5))
    on_device $((sessions - 2 * share))
    if ((share > 0)); then # faults that do not make the tool wait
        on_device "$share" lend return-twice return-unknown empty-callbacks split-result \
            duplicate-result corrupt-metadata
        on_device "$share" bad-handle
    fi
    exit
fi

# --- Inside the device. ---
# A line for each service: its name, descriptors, threads, mappings and resident KiB.
measure() {
    local name process files threads
    for name in servicemanager graphicsallocator offlinecameraservice; do
        process="/proc/$(pidof -s "$name")"
        files=("$process/fd/"*) threads=("$process/task/"*)
        echo "$name ${#files[@]} ${#threads[@]} $(wc -l <"$process/maps")" \
            "$(awk '/^VmRSS/ { print $2 }' "$process/status")"
    done
}

# settle OLD BOUND...: leaves in `table` what OLD, a result of measure(), says beside what is held now.
# Services learn of a client's end after it has gone, so it waits, at most 10 s, until each count is
# more by its bound at most; status 1 if that does not come. A count without bound may grow.
settle() {
    local deadline=$((SECONDS + 10))
    until table="$(paste -d ' ' <(echo "$1") <(measure) | awk -v list="${*:2}" '
        BEGIN { kinds = split(list, bounds) }
        {
            printf "%-22s", $1
            for (i = 1; i <= 4; ++i) printf " %9s -> %5s", $(i + 1), $(i + 6)
            print ""
            for (i = 1; i <= kinds; ++i) if ($(i + 6) > $(i + 1) + bounds[i]) grown = 1
        }
        END { exit grown }')"; do
        ((SECONDS < deadline)) || return 1
    done
}

# The kinds take turns. Some clients are killed at a moment that moves through a whole session.
session() {
    local tool=vexofflinecameratest words=(B2Y Y2J MMF callback Y2Y) n=$(($1 % 8))
    (($1 % 3)) || tool=vexofflinecameratest-planes
    if ((n < 5)); then
        "$tool" -t "${words[n]}"
    else
        timeout -s KILL "0.$(printf %03d $((5 + $1 * 7 % 90)))" "$tool" -t "${words[$1 % 3]}" ||
            [[ $? == 137 ]]
    fi >/dev/null 2>&1 || { complain "session $1 ended with status $?" && return 1; }
}

idle="$(measure)"
progress "warming up"
threads="" same=0 # until two rounds have started no thread: then each pool is at its full size
for ((round = 0; round < warm_up[0] && same < 2; ++round)); do
    sessions=()
    for ((n = round; n < round + warm_up[1]; ++n)); do session "$n" & sessions+=($!); done
    for session in "${sessions[@]}"; do wait "$session"; done
    now="$(measure | cut -d ' ' -f 3)"
    [[ "$now" == "$threads" ]] || same=-1
    threads="$now" same=$((same + 1))
done
settle "$idle" 0 || true # what stays is part of "before"
before="$(measure)"
for ((n = 0; n < $2; ++n)); do
    progress "session $((n + 1)) of $2"
    session "$n"
done
progress_ends
status=0
settle "$before" 0 0 0 "$resident_bound" || status=1
printf '%-22s %18s %18s %18s %18s\n' "after $2 sessions" descriptors threads mappings "resident KiB"
echo "$table"
((status == 0)) || complain "growth (resident memory may grow by $resident_bound KiB)"
exit $status
