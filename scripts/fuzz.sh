# ./check fuzz: every fuzzer for a while. Sourced by check.

# fuzz FOLDER [SECONDS]: builds in FOLDER and runs each fuzzer for SECONDS on a copy of its
# corpus. Status 1 and the input's path if one of them finds something.
fuzz() {
    local folder="$1" seconds="${2:-20}" status=0 program name log layout=()
    if [[ ! -e "$folder/build.ninja" ]]; then
        say "configuring $folder"
        cmake -G Ninja -S "$root" -B "$folder" -DSANITIZE=address -DFUZZ=ON >&2 ||
            { complain "configuring failed"; return 1; }
    fi
    build "$folder" address fuzzers || return 1
    unlock_out
    if setarch -R true 2>/dev/null; then layout=(setarch -R); fi
    export STANDIN_HAL_PATH="$folder/vendor/lib64/hw"
    mkdir -p "$folder/fuzzed/found" # what was found earlier stays
    for program in "$folder"/fuzz/*_fuzz; do
        name="$(basename "$program" _fuzz)"
        log="$folder/fuzzed/$name.log"
        progress "$name: $seconds s"
        rm -rf "${folder:?}/fuzzed/$name"
        cp -r "$root/tests/fuzz/corpus/$name" "$folder/fuzzed/$name"
        if "${layout[@]}" "$program" -max_total_time="$seconds" -timeout=10 -max_len=8192 \
            -artifact_prefix="$folder/fuzzed/found/$name-" "$folder/fuzzed/$name" >"$log" 2>&1; then
            progress_ends
            printf '%-20s %s\n' "$name" "$(grep -a '^Done ' "$log")"
        else
            status=1
            progress_ends
            printf '%-20s FAILED, see %s\n' "$name" "$log"
            grep -aE 'runtime error|ERROR: |Test unit written' "$log" || true
        fi
    done
    return "$status"
}
