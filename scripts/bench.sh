# ./check bench: measures beside baselines. Sourced.

# bench FOLDER: builds and runs FOLDER/bench/bench, shows its table and keeps it in bench/results.md.
bench() {
    build "$1" "" bench || return 1
    local results="$root/bench/results.md"
    say "measuring: some 30 s"
    "$1/bench/bench" >"$out/results.md" || { complain "the measurement failed"; return 1; }
    mv "$out/results.md" "$results"
    cat "$results"
}
