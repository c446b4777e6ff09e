#!/bin/bash
# Runs many sessions against a stand-in device and shows what its processes hold before and after:
# three fifths without faults, a fifth with faults of the camera service, one with the allocator's.
# usage: soak.sh FOLDER [SESSIONS], FOLDER being the programs'. Growth is status 1.
set -euo pipefail

self="$(readlink -f "$0")"
source "${self%/*}/terminal.sh"
readonly resident_bound=4096 # KiB per process: heap that an allocator keeps back for later
readonly warm_up=(2 16) # rounds, and sessions at a time: every kind twice, every pool at its full size

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
services=(servicemanager graphicsallocator offlinecameraservice)

# Descriptors, threads, mappings and resident KiB of a process, on one line.
counts() {
    local files=("/proc/$1/fd/"*) threads=("/proc/$1/task/"*) maps
    mapfile -t maps <"/proc/$1/maps"
    echo "${#files[@]} ${#threads[@]} ${#maps[@]} $(awk '/^VmRSS/ { print $2 }' "/proc/$1/status")"
}

# The kinds take turns. Some clients are killed at a moment that moves through a whole session.
session() {
    local tool=vexofflinecameratest modes=(B2Y Y2J MMF)
    (($1 % 3)) || tool=vexofflinecameratest-planes
    case $(($1 % 8)) in
    0) "$tool" -t B2Y ;;
    1) "$tool" -t Y2J ;;
    2) "$tool" -t MMF ;;
    3) "$tool" -t callback ;;
    4) "$tool" -t Y2Y ;;
    *) timeout -s KILL "0.$(printf %03d $((5 + $1 * 7 % 90)))" "$tool" -t "${modes[$1 % 3]}" ||
        [[ $? == 137 ]] ;;
    esac >/dev/null 2>&1 || { complain "session $1 ended with status $?" && return 1; }
}

count_all() {
    local pid
    for pid in "${pids[@]}"; do counts "$pid"; done
}

# Services learn of a client's end after it has gone: waits, at most 10 s, until the first N counts
# of each are no more than in the lines that follow.
settle() {
    local kinds="$1" deadline=$((SECONDS + 10)) now limits i k more
    shift
    until [[ "${more-1}" == 0 ]] || ((SECONDS >= deadline)); do
        more=0
        for i in "${!pids[@]}"; do
            read -ra now < <(counts "${pids[i]}")
            read -ra limits <<<"${@:i+1:1}"
            for ((k = 0; k < kinds; ++k)); do ((now[k] <= limits[k])) || more=1; done
        done
    done
}

pids=()
for service in "${services[@]}"; do pids+=("$(pidof -s "$service")"); done
mapfile -t idle < <(count_all)
progress "warming up"
for ((round = 0; round < warm_up[0]; ++round)); do
    sessions=()
    for ((n = round; n < round + warm_up[1]; ++n)); do session "$n" & sessions+=($!); done
    for session in "${sessions[@]}"; do wait "$session"; done
done
settle 1 "${idle[@]}"
mapfile -t before < <(count_all)
for ((n = 0; n < $2; ++n)); do
    progress "session $((n + 1)) of $2"
    session "$n"
done
progress_ends
settle 3 "${before[@]}"

status=0
printf '%-22s %18s %18s %18s %18s\n' "after $2 sessions" descriptors threads mappings "resident KiB"
for i in "${!services[@]}"; do
    read -ra old <<<"${before[i]}"
    read -ra now < <(counts "${pids[i]}")
    printf '%-22s %9s -> %5s %9s -> %5s %9s -> %5s %9s -> %5s\n' "${services[i]}" "${old[0]}" \
        "${now[0]}" "${old[1]}" "${now[1]}" "${old[2]}" "${now[2]}" "${old[3]}" "${now[3]}"
    ((now[0] <= old[0] && now[1] <= old[1] && now[2] <= old[2] &&
        now[3] <= old[3] + resident_bound)) || status=1
done
((status == 0)) || complain "growth (resident memory may grow by $resident_bound KiB)"
exit $status
