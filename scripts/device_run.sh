# ./run --adb: runs the installed tool on a device, with source files that fit its buffers, and
# fetches log and dumps. Sourced by run.

camera=/data/vendor/camera
service_name=vendor.zel.hardware.camera.offlinecamera.IOfflineCameraService/default
serial="" device_name="" # of the device: its number, what it says that it is
stopped="" lost=""       # set when a signal ended the run, when a dump could not be fetched

# no_run TEXT...: ends with 125. The text names what is wrong and what to do.
no_run() {
    complain "$@"
    exit 125
}

# call_adb SECONDS WORD...: without the locks of this run, as adb leaves a server behind.
call_adb() {
    local end=0
    timeout --foreground -k 5 "$1" adb "${@:2}" </dev/null 8>&- 9>&- || end=$?
    [[ $end != 124 ]] || complain "adb did not end within $1 s: adb ${*:2}"
    return $end
}

# on_device COMMAND: prints what the device's shell prints. Not every adb hands on its status.
on_device() { call_adb 60 -s "$serial" shell "$1" | tr -d '\r'; }

# ask COMMAND: the same, where there must be an answer.
ask() { on_device "$1" || no_run "$serial does not answer: adb -s $serial shell"; }

# fetch PATH FILE: pulls a file of the device.
fetch() {
    call_adb 900 -s "$serial" pull "$1" "$2" >&2 && return
    complain "$serial: could not pull $1"
    return 1
}

# push FILE PATH: whole or not at all.
push() {
    call_adb 900 -s "$serial" push "$1" "$2.part" >&2 &&
        [[ "$(on_device "mv -f ${2@Q}.part ${2@Q} && echo moved")" == moved ]] && return
    on_device "rm -f ${2@Q}.part" || true
    no_run "$serial: could not push ${1##*/}"
}

# --- What has to be true before a run. ---

# Of several devices, --adb must name one.
choose_device() {
    local list name state states=""
    local -A state_of=()
    list="$(call_adb 30 devices 2>&1)" || no_run "adb devices: ${list##*"$program: "}"
    while IFS=$'\t' read -r name state; do
        [[ -z "$state" ]] || state_of[$name]="$state"
    done <<<"$list"
    [[ ${#state_of[@]} -gt 0 ]] ||
        no_run "adb finds no device: connect one and allow USB debugging on it, or 'adb connect HOST'"
    for name in "${!state_of[@]}"; do states+=", $name (${state_of[$name]})"; done
    serial="${given[--adb]}"
    [[ "$serial" != 1 ]] || serial="${ANDROID_SERIAL-}" # the option alone
    [[ -n "$serial" || ${#state_of[@]} != 1 ]] || serial="${!state_of[*]}"
    [[ -n "$serial" ]] || no_run "--adb needs a serial number, as there are several devices: ${states:2}"
    case "${state_of[$serial]-}" in
    device) ;;
    "") no_run "no device $serial; adb finds ${states:2}" ;;
    unauthorized) no_run "$serial does not allow USB debugging yet: confirm it on its screen" ;;
    offline) no_run "$serial is offline: connect it again, or 'adb reconnect'" ;;
    no\ permissions*) no_run "$serial: ${state_of[$serial]}" ;;
    *) no_run "$serial is in the state ${state_of[$serial]}: start its system ('adb reboot')" ;;
    esac
}

check_device() {
    local said tool=vexofflinecameratest
    device_name="$serial, $(ask 'echo "$(getprop ro.product.model), $(getprop ro.build.fingerprint)"')"
    said="$(ask "command -v $tool || ls /vendor/bin/$tool 2>/dev/null || echo")"
    [[ "$said" == /* ]] || no_run "$serial has no $tool: build it and push it (docs/device.md)"
    [[ "$(ask "test -x ${said@Q} && echo yes || echo no")" == yes ]] ||
        no_run "$serial: $said is not executable: adb -s $serial shell chmod 755 $said"
    [[ "$(ask "service check $service_name; echo")" == *": found"* ]] ||
        no_run "$serial: no service $service_name; start it (docs/device.md)"
    said="$(ask "for folder in $camera/offlinecameratest $camera/metadata; do
        test -d \$folder || echo has no folder \$folder
        test -w \$folder || echo does not let its shell write in \$folder; done; echo")"
    [[ -z "$said" ]] || no_run "$serial ${said%%$'\n'*}: 'adb root', then adb -s $serial shell" \
        "'mkdir -p $camera/offlinecameratest $camera/metadata; restorecon -R $camera'"
    require_space 0
    [[ "$(ask "echo 1 | sha256sum; stat -c %z /")" == 4355a46b*$'\n'*:* ]] ||
        no_run "$serial: its shell has no sha256sum or no stat"
}

# require_space BYTES: for source files of this size and dumps of 64 MB.
require_space() {
    local free needed=$(($1 / 1024 + 65536))
    free="$(ask "df -k $camera" | awk 'END { print $(NF - 2) }')"
    [[ ! "$free" =~ ^[0-9]+$ ]] || ((free >= needed)) ||
        no_run "$serial has $free kB free in $camera, a run needs $needed: delete what is not needed"
}

# --- Source files. What is known of the device's buffers is in the file $geometry, as runreport
# --sources writes it: path, bytes per row, rows (0: the tool reads none). ---

# pack_frame PATH STRIDE ROWS: makes the file in the data folder anew, from the photo or the chart.
pack_frame() {
    local name="${1##*/}" said how=(--force --stride "$2" --scanlines "$3")
    case "$name" in
    mmf_fd.yuv) how+=(--format nv12 --size 640x480) ;;
    *.yuv) how+=(--format nv12) ;;
    esac
    progress "run: makes $name with rows of $2 bytes"
    said="$("$bin/offlineframes" pack "${how[@]}" "${photo:-chart}" "$data/offlinecameratest/$name" 2>&1)" ||
        refuse "$name with $3 rows of $2 bytes: ${said#offlineframes: }"
    progress_ends
}

# make_fit PATH [STRIDE ROWS]: brings a source file of the data folder and the device's together.
# What is on the device and did not come from here is not lost.
make_fit() {
    local path="$1" file="$data/${1#"$camera/"}" name="${1##*/}" needed=$((${2:-0} * ${3:-0}))
    local digest theirs size foreign="" aside
    [[ "$name" == *.raw ]] || needed=$((needed * 3 / 2))
    theirs="$(ask "! test -e ${path@Q} || echo \$(sha256sum <${path@Q}) \$(stat -c %s ${path@Q})")"
    size="${theirs##* }" theirs="${theirs%% *}"
    [[ -z "$theirs" ]] || grep -qsx "$theirs" "$out/.pushed" || foreign=1
    if [[ -n "$foreign" && -z "$photo${given[--data]}" ]]; then
        if ((size >= needed)); then
            say "$serial has a $name of its own, which the tool reads"
            [[ -e "$file" && "$(sha256sum <"$file")" == "$theirs "* ]] || fetch "$path" "$file" ||
                exit 125
            return
        fi
        say "$serial: its own $name has $size bytes, a frame for its buffers has $needed"
    fi
    if [[ -z "${given[--data]}" ]]; then
        ((needed == 0)) || pack_frame "$@"
    elif size="$(stat -c %s "$file")" && ((size < needed)); then
        tell "$yellow" "$(here "$file") has $size bytes, a frame for $serial's buffers has $needed" \
            "($3 rows of $2 bytes): pushed all the same"
    fi
    digest="$(sha256sum <"$file")" && digest="${digest%% *}"
    [[ "$digest" != "$theirs" ]] || return 0
    if [[ -n "$foreign" ]]; then
        aside="$path.kept-${theirs::8}"
        [[ "$(ask "mv -f ${path@Q} ${aside@Q} && echo moved")" == moved ]] ||
            no_run "$serial: could not rename $path"
        say "$serial: its own $name is now ${aside##*/}"
    fi
    require_space "$(stat -c %s "$file")"
    push "$file" "$path"
    echo "$digest" >>"$out/.pushed"
}

# Brings those whose buffers are known, and what a request needs in any case.
bring_sources() {
    local path stride rows
    make_fit "$camera/metadata/original_dump.bin"
    while IFS=$'\t' read -r path stride rows; do
        [[ "$path" != "$camera"/* ]] || make_fit "$path" "$stride" "$rows"
    done <"$geometry"
}

# What the last run tells of the device's buffers, but with the numbers of the options, which may
# differ from it.
learn_geometry() {
    "$bin/runreport" --device "$device_name" ${pid:+--pid "$pid"} --log "$out/run.log" --sources |
        awk -F '\t' -v OFS='\t' -v stride="${given[--stride]}" -v rows="${given[--scanlines]}" '
            NR == 1 && (stride != "" && stride != $2 || rows != "" && rows != $3) {
                printf "run: the log tells of %d rows of %d bytes, not what the options say\n",
                    $3, $2 >"/dev/stderr"
            }
            NR == 1 && stride != "" { $2 = stride }
            NR == 1 && rows != "" { $3 = rows }
            { print }' || true
}

# --- The run. ---

# Every file of the device's folder with the time of its last change.
list_files() { ask "find $camera -type f -exec stat -c '%z|%s|%n' {} + 2>/dev/null; true" | sort; }

# stop_tool SIGNAL: sends it to the tool on the device, which may have just been started.
stop_tool() {
    stopped=1
    trap 'stop_tool KILL' INT TERM HUP
    for _ in {1..50}; do
        ! read -r pid <"$kept/pid" || [[ -z "$pid" ]] || break
        sleep 0.1
    done
    [[ -z "$pid" ]] || on_device "kill -$1 $pid" || true
}

# take_output: of the tool from the device, which first tells the number of its process.
take_output() {
    local line
    trap '' INT # the terminal's is for the tool
    while IFS= read -r line && [[ ! "$line" =~ ^pid\ ([0-9]+) ]]; do echo "$line" >&2; done
    echo "${BASH_REMATCH[1]-}" >"$kept/pid"
    tr -d '\r'
}

# Runs the tool: sets $status and, as on the device, $pid. Keeps its output, after which the device
# prints the status, and fetches the log and the list of what was written.
run_tool() {
    local since before client reader line
    since="$(ask "date '+%m-%d %H:%M:%S.000'")"
    before="$(list_files)"
    pid=""
    rm -f "$kept/pipe" && mkfifo "$kept/pipe" && : >"$kept/pid"
    take_output <"$kept/pipe" >"$kept/out" &
    reader=$!
    line="trap : INT; sh -c 'echo pid \$\$; exec \"\$0\" \"\$@\"' ${command[*]@Q}; end=\$?; echo; echo status \$end"
    adb -s "$serial" shell "$line" </dev/null >"$kept/pipe" 8>&- 9>&- &
    client=$!
    progress "run: the tool runs on $serial"
    trap 'stop_tool INT' INT
    trap 'stop_tool TERM' TERM HUP
    while ! wait "$client" && kill -0 "$client" 2>/dev/null; do
        for _ in {1..100}; do # 10 s until it has ended, with all that adb has to bring
            ! kill -0 "$client" 2>/dev/null || sleep 0.1
        done
        ! kill -0 "$client" 2>/dev/null || { stop_tool KILL && kill "$client"; }
    done
    wait "$reader" || true
    trap - INT TERM HUP
    progress_ends
    read -r pid <"$kept/pid" || true
    line="$(tail -n 1 "$kept/out")"
    [[ "$line" =~ ^status\ ([0-9]+)$ ]] || no_run "$serial went away during the run: connect it again"
    status="${BASH_REMATCH[1]}"
    truncate -s "-$((${#line} + 2))" "$kept/out"
    take_log "$since" "$pid" >"$out/run.log"
    written="$(comm -13 <(echo "$before") <(list_files))"
}

# take_log SINCE PID: the tool's lines, and those of every crash.
take_log() {
    local buffer since="$1"
    [[ "$since" =~ ^[0-9]{2}-[0-9]{2}\ [0-9:.]+$ ]] || since=""
    for buffer in main crash; do
        if call_adb 60 -s "$serial" logcat -d -b "$buffer" -v threadtime -v usec \
            ${since:+-T "$since"} >"$kept/log" 2>&1; then
            cat "$kept/log"
        else
            say "$serial: no $buffer log: $(tail -n 1 "$kept/log")"
        fi
    done | tr -d '\r' |
        awk -v pid="$2" '$3 == pid || $6 ~ /^DEBUG:?$/ || /: Fatal signal /' | sort -s -k 1,2
}

# Turns the device's list of files in $written into path, time and size of files in the data folder.
fetch_dumps() {
    local list="$written" path size file
    written=""
    while IFS='|' read -r _ size path; do
        [[ "$path" == "$camera"/* && "$path" != *.part && "$path" != */../* ]] || continue
        file="$data/${path#"$camera/"}"
        mkdir -p "${file%/*}"
        fetch "$path" "$file" || { lost=1 && continue; }
        [[ "$(stat -c %s "$file")" == "$size" ]] || {
            complain "$(here "$file"): has not the $size bytes that $serial has"
            lost=1 size="$(stat -c %s "$file")"
        }
        written+="${path#"$camera/"}"$'\t'0$'\t'"$size"$'\n'
    done <<<"$list"
}

# run_on_device: the whole of it, until the source files fit, which takes a second run where
# nothing is known of the device's buffers. Leaves $status, $pid and, in $written, the dumps.
run_on_device() {
    local known learnt round name="${command[*]:1} ${given[--stride]} ${given[--scanlines]}"
    choose_device
    check_device
    say "runs on $device_name"
    fill_data
    mkdir -p "$out/.buffers"
    geometry="$out/.buffers/${serial//[^A-Za-z0-9._-]/_}${name//[^A-Za-z0-9._-]/_}"
    if [[ -n "${given[--stride]}" && -n "${given[--scanlines]}" ]]; then
        [[ " ${command[*]} " == *" Y2J "* ]] && name=4000_3000_NV12.yuv || name=4096_3072_RAW10.raw
        name="$camera/offlinecameratest/$name"$'\t'"${given[--stride]}"$'\t'"${given[--scanlines]}"
        [[ -s "$geometry" ]] || echo "$name" >"$geometry"
    fi
    [[ -e "$geometry" ]] || : >"$geometry"
    for round in 1 2 3; do
        known="$(<"$geometry")"
        bring_sources
        run_tool
        learnt="$(learn_geometry)"
        [[ -n "$learnt" && "$learnt" != "$known" && -z "$stopped" && $round -lt 3 ]] || break
        printf '%s\n' "$learnt" >"$geometry"
        say "the tool's log tells the rows of $serial's buffers; runs again with frames for them"
    done
    cat "$kept/out"
    fetch_dumps
}
