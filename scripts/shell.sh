# What ./run --shell leaves behind. Sourced after common.sh.

# Where the shell keeps log, trace and record of the tool's last run; goes with ./run.
keep_shell_files() {
    kept="$(mktemp -d)"
    trap 'rm -rf "$kept"' EXIT
    device+=(--log "$kept/log" --trace "$kept/trace" --run-record "$kept/run")
}

# tool_was_run: whether there is a record.
tool_was_run() { [[ -s "$kept/run" ]]; }

# take_last_run: puts the last run's part of log and trace where a plain run leaves them, and sets
# $command, $started, $ended and $status to what they would be then. What the record holds is told
# in host/deviceshell/recorded_run.cpp.
take_last_run() {
    local words pid count i
    mapfile -t -d '' words <"$kept/run"
    pid="${words[0]}" started="${words[1]}" count="${words[2]}"
    command=("${words[@]:3:count}")
    status=137 # a run that the device's end cut short
    for ((i = 3 + count; i < ${#words[@]}; i += 3)); do
        [[ "${words[i]}" != "$pid" ]] || { ended="${words[i + 1]}" && status="${words[i + 2]}"; }
    done
    awk -v pid="$pid" '$3 == pid' <"$kept/log" >"$out/run.log"
    awk -v pid="$pid" '$3 == pid { begun = 1; next } begun' <"$kept/log" >"$out/device.log"
    awk -v pid="$pid" '$2 == pid' <"$kept/trace" >"$out/trace.log"
}

# written_since SECONDS LIST: the lines of such a list as list_files makes of files written since.
written_since() { LC_ALL=C awk -F '\t' -v since="$1" '$2 >= since + 0' <<<"$2"; }
