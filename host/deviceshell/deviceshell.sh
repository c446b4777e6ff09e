#!/bin/bash
# Brings the stand-in device up, runs one command in it, takes it down. See --help.
set -euo pipefail

help="usage: deviceshell [OPTIONS] [--] [COMMAND [ARGUMENTS]]
Brings a stand-in device up, runs COMMAND in it and takes the device down. Without
COMMAND it runs a shell: at a terminal for you, else for the commands on standard
input. In a shell, 'service list', 'logcat -d' and 'trace -d' show the services, the
platform log of everything and the binder calls.

  --data DIR         folder that the command sees as /data/vendor/camera
                     (without it: an empty one that is gone afterwards)
  --no-service       leave the offline camera service out
  --no-allocator     leave the graphics allocator out
  --service PROGRAM  run this program as the offline camera service; in one word,
                     '[NAME=VALUE]... PROGRAM [ARGUMENT]...' gives it environment and
                     arguments
  --fault NAME[=ARG] let the service or the allocator misbehave; may be repeated;
                     'help' lists the names
  --planes           vexofflinecameratest is the build that knows plane layouts
  --log FILE         write the command's platform log to FILE
  --device-log FILE  write the services' platform log and output to FILE
                     (those of a shell's device go to its --log without it)
  --trace FILE       write one line per binder transaction of the command to FILE
  --run-record FILE  in a shell: write the command line, times and status of the last
                     run of vexofflinecameratest to FILE
  -v                 show the command's platform log on standard error, too
  --die-with-parent  end when the calling process ends
  --help             show this help

Its status is the command's, 128 + n when signal n ended it; 127 or 126 when the
command was not found or could not be executed; 125 when the device did not come
up; 2 for a usage error, after which nothing was started."

greeting="A shell on the stand-in device; 'exit' takes the device down.
  vexofflinecameratest -t B2Y    the tool; its files are in /data/vendor/camera (cd)
  service list                   the registered services
  logcat -d, trace -d            platform log and binder calls so far (without -d: follow)
  adb, getprop                   as on a workstation beside a device, and on one"

bin="$(readlink -f "${BASH_SOURCE[0]}")" && bin="${bin%/*}" # where this project's programs are
source "$bin/device/terminal.sh"
source "$bin/device/options.sh"
program=deviceshell

# --- The command line. ---
read_options " --no-service --no-allocator --planes -v --die-with-parent --help " \
    " --data --service --fault --log --device-log --trace --run-record " "$@"
set -- "${words[@]}"
[[ -z "${given[--help]}" ]] || { echo "$help" && exit; }
[[ -n "$ended" || "${1-}" != -?* ]] || refuse "unknown option $1; try 'deviceshell --help'"
data="${given[--data]}" service="${given[--service]}"
[[ -z "$data" || -d "$data" ]] || refuse "--data $data: no such folder"
if [[ -n "$service" ]]; then
    [[ -z "${given[--no-service]}" ]] || refuse "--no-service and --service exclude each other"
    read_service "$service"
fi
[[ -z "${given[--run-record]}" || $# == 0 ]] ||
    refuse "--run-record is for a shell and takes no COMMAND"

# --- The programs, with the faults that each is to show. ---
allocator=("$bin/graphicsallocator")
camera=("$bin/offlinecameraservice")
for path in servicemanager graphicsallocator offlinecameraservice \
    ${given[--planes]:+vexofflinecameratest-planes}; do
    [[ -x "$bin/$path" ]] || refuse "$bin/$path: no such program; build it first"
done

# ask PROGRAM WORDS...: has a program read its words and then list all faults that it knows.
ask() { timeout 10 "$@" --fault help 2>&1; }

for fault in "${faults[@]}"; do
    [[ "$fault" != help ]] || { ask "${camera[@]}" && ask "${allocator[@]}"; exit; }
    declare -n owner=camera
    left_out="${given[--no-service]}"
    # Whether a line of its list begins with the fault's name.
    if [[ $'\n'"$(ask "${allocator[@]}")" =~ $'\n'[[:blank:]]*"${fault%%=*}"[[:space:]:=\[] ]]; then
        declare -n owner=allocator
        left_out="${given[--no-allocator]}"
    fi
    owner+=(--fault "$fault")
    said="$(ask "${owner[@]}")" ||
        refuse "--fault $fault: refused by ${said%%$'\n'*}; see 'deviceshell --fault help'"
    [[ -z "$left_out" ]] || refuse "--fault $fault: its program is left out"
    [[ -z "$service" || "${!owner}" == allocator ]] ||
        refuse "--fault $fault: a fault of the reference service, not of $service"
done
[[ -z "$service" ]] || camera=("${service_words[@]}")

# deviceinit's words: each program after the name that it registers, with an empty word behind it.
programs=("" "$bin/servicemanager" "")
[[ -n "${given[--no-allocator]}" ]] ||
    programs+=(android.hardware.graphics.allocator.IAllocator/default "${allocator[@]}" "")
[[ -n "${given[--no-service]}" ]] ||
    programs+=(vendor.zel.hardware.camera.offlinecamera.IOfflineCameraService/default
        "${camera[@]}" "")

# --- The command, and its files. A shell has one log of all programs at hand, as on a device, and
# the trace. ---
terminal=""
if [[ $# -gt 0 ]]; then
    # Asked here, as execvp says "permission denied" where a folder of PATH may not be searched.
    [[ "$1" == */* ]] || PATH="$bin:$PATH" type -P -- "$1" >/dev/null ||
        { complain "$1: no such command" && exit 127; }
    : "${given[--log]:=/dev/null}" "${given[--device-log]:=/dev/null}"
else
    set -- bash --noprofile --norc
    if [[ -t 0 && -t 2 ]]; then # as bash itself decides
        terminal=--terminal
        read -r _ _ _ _ group _ _ foreground _ </proc/self/stat
        [[ "$foreground" == "$group" || "$foreground" == -1 ]] ||
            refuse "a shell in the background cannot use the terminal; give a COMMAND"
        set -- sh -c 'echo "$0" >&2; exec "$@"' "$greeting" "$@"
    fi
    export HOME=/data/vendor/camera PS1='standin:$PWD $ '
    export HISTFILE="" # the only place to keep one is the user's data folder
    private="$(mktemp -d)" || refuse "cannot keep the shell's log"
    : "${given[--log]:=$private/log}" "${given[--trace]:=$private/trace}"
fi
declare -A descriptor=()
for name in --log --device-log --trace --run-record; do
    [[ -n "${given[$name]}" ]] || continue
    { : >"${given[$name]}"; } 2>/dev/null || refuse "${given[$name]}: cannot be written"
    exec {number}>>"${given[$name]}" # whole lines from several processes
    descriptor[$name]="$number"
done
[[ -z "${private-}" ]] || rm -rf "$private" # what is open stays until the device is gone

# --- The environment of the command; the programs write to a log of their own. ---
unset ENV BASH_ENV STANDIN_HAL_PATH STANDIN_LOG_ECHO STANDIN_BINDER_TRACE_FD STANDIN_RUN_RECORD_FD
export STANDIN_BINDER_DIR=/binder STANDIN_LOG_FD="${descriptor[--device-log]:-${descriptor[--log]}}"
trace="${descriptor[--trace]-}" record="${descriptor[--run-record]-}"
environment=("PATH=${record:+/vendor/bin/recorded:}/vendor/bin:${PATH-/bin}"
    "STANDIN_LOG_FD=${descriptor[--log]}"
    ${trace:+"STANDIN_BINDER_TRACE_FD=$trace"} ${record:+"STANDIN_RUN_RECORD_FD=$record"}
    ${given[-v]:+STANDIN_LOG_ECHO=1} POSIXLY_CORRECT=1) # which a device's getopt is

# --- The file system: the host's, read-only, but for the places that the device has of its own.
# Folders above those are made anew and filled entry by entry, also where the host has a link. The
# host's /run, with the sockets of its services, is no part of the device. ---
sandbox=(--unshare-pid --as-pid-1 --die-with-parent --tmpfs /)
above=(/ /data/ /data/vendor/ /vendor/ /vendor/lib64/)
own=" / /data /data/vendor /vendor /vendor/lib64 /data/vendor/camera /vendor/bin /vendor/lib64/hw
    /proc /dev /binder /run "
while IFS= read -rd '' kind && IFS= read -rd '' path && IFS= read -rd '' target; do
    case "$kind$own" in
    *" $path "*) ;;
    l*) sandbox+=(--symlink "$target" "$path") ;;
    *) sandbox+=(--ro-bind-try "$path" "$path") ;;
    esac
done < <(find "${above[@]}" -mindepth 1 -maxdepth 1 -printf '%y\0%p\0%l\0' 2>/dev/null)
sandbox+=(--proc /proc --dev /dev --ro-bind "$bin" /vendor/bin
    --ro-bind-try "$bin/../vendor/lib64/hw" /vendor/lib64/hw --perms 0700 --tmpfs /binder)
# A build in the host's /dev/shm or /run is hidden: its folder is mounted again, whole, because
# programs need their libraries, too.
for path in "$bin/deviceshell" "${camera[@]}"; do
    [[ -f "$path" && "$path" =~ ^/(dev|run)/[^/]+ ]] && sandbox+=(--ro-bind "${BASH_REMATCH[0]}" "${BASH_REMATCH[0]}")
done
[[ -z "${given[--planes]}" ]] ||
    sandbox+=(--ro-bind "$bin/vexofflinecameratest-planes" /vendor/bin/vexofflinecameratest)
if [[ -n "$data" ]]; then sandbox+=(--bind "$data"); else sandbox+=(--tmpfs); fi
sandbox+=(/data/vendor/camera)
sandbox+=(--remount-ro / --chdir /) # last, so that the folders above can still be made

# A command that dies must not leave a core file in the user's folder. As many descriptors as a
# device's first process allows, if the workstation does, too.
ulimit -c 0
ulimit -Sn 32768 2>/dev/null || ulimit -Sn "$(ulimit -Hn)"

exec ${given[--die-with-parent]:+setpriv --pdeathsig TERM} "$bin/device/sandbox" $terminal \
    "${sandbox[@]}" "$bin/device/deviceinit" "${programs[@]}" -- "${environment[@]}" "$@"
