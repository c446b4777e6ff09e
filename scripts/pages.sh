# ./check bench, faults and pages: pages that built programs write, beside the committed ones.

# compare_page FRESH COMMITTED WORD [--accept]: shows what differs or, told so, replaces the
# committed page. Status 0 when nothing differs or it was replaced.
compare_page() {
    local name="${2#"$root"/}"
    if [[ "${4:-}" == --accept ]]; then
        cp "$1" "$2"
        say "replaced $name"
    elif diff -u --label "$name" --label "now (${1#"$root"/})" "$2" "$1"; then
        tell "$green" "$name holds"
    else
        complain "$name says otherwise; if what is there now is right: ./check $3 --accept"
        return 1
    fi
}

# How busy the processors are during one second, in percent.
busy() {
    { head -n 1 /proc/stat && sleep 1 && head -n 1 /proc/stat; } | awk '
        { idle = $5 - idle; total = -total; for (i = 2; i <= NF; ++i) total += $i }
        END { print int(100 - 100 * idle / total) }'
}

# bench FOLDER [--accept]: measures beside baselines and shows the table; keeps it only when told so.
bench() {
    local percent fresh="$out/bench.md"
    percent="$(busy)"
    if ((percent > 10)); then
        tell "$yellow" "the machine is $percent % busy with something else: the times are no measure"
        [[ "${2:-}" != --accept ]] || refuse "bench/results.md stays; try again when it is quiet"
    fi
    say "measuring: some 30 s"
    "$1/bench/bench" >"$fresh" || { complain "the measurement failed"; return 1; }
    cat "$fresh"
    [[ "${2:-}" != --accept ]] || compare_page "$fresh" "$root/bench/results.md" bench --accept
}

# faults FOLDER [--accept]: what the tool does under each fault, by the build in FOLDER.
faults() {
    say "about 150 runs, most of them wait: some 20 s"
    "$1/tests/fault_matrix" "$out/faults.md" || { complain "fault_matrix failed"; return 1; }
    compare_page "$out/faults.md" "$root/docs/faults.md" faults "${@:2}"
}

# pages FOLDER [--accept]: causes and cures of messages.
pages() {
    local page status=0
    for page in lines stand_in; do
        "$1/bin/explanation_page" "$page" >"$out/$page.md" || return 1
        compare_page "$out/$page.md" "$root/docs/$page.md" pages "${@:2}" || status=1
    done
    return "$status"
}
