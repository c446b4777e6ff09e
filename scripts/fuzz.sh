# ./check fuzz: every fuzzer for a while. Sourced by check, which has built them.

# fuzz FOLDER [SECONDS]: runs each fuzzer in FOLDER for SECONDS on a copy of its corpus. Status 1 and
# the input's path if one of them finds something.
fuzz() {
    local folder="$1" seconds="${2:-20}" status=0 program name log result
    export STANDIN_HAL_PATH="$folder/vendor/lib64/hw"
    mkdir -p "$folder/fuzzed/found" # what was found earlier stays
    for program in "$folder"/fuzz/*_fuzz; do
        name="$(basename "$program" _fuzz)"
        log="$folder/fuzzed/$name.log"
        progress "$name: $seconds s"
        rm -rf "${folder:?}/fuzzed/$name"
        cp -r "$root/tests/fuzz/corpus/$name" "$folder/fuzzed/$name"
        result="FAILED, see $log"
        "${fixed_layout[@]}" "$program" -max_total_time="$seconds" -timeout=10 -max_len=8192 \
            -artifact_prefix="$folder/fuzzed/found/$name-" "$folder/fuzzed/$name" >"$log" 2>&1 &&
            result="$(grep -a '^Done ' "$log")" || status=1
        progress_ends
        printf '%-20s %s\n' "$name" "$result"
        grep -aE 'runtime error|ERROR: |Test unit written' "$log" || true
    done
    return "$status"
}
