# ./check faults: what the tool does under each fault, beside the committed tables. Sourced.

# report_faults FOLDER [--accept]: makes the tables with the build in FOLDER, shows what differs
# from docs/faults.md or, told so, replaces it. Status 0 when nothing differs or it was replaced.
report_faults() {
    local fresh="$out/faults.md" committed="$root/docs/faults.md"
    build "$1" "" host/all driver/all fault_matrix || return 1
    unlock_out
    say "about 150 runs, most of them wait: some 20 s"
    "$1/tests/fault_matrix" "$fresh" || { complain "fault_matrix failed"; return 1; }
    if [[ "${2:-}" == --accept ]]; then
        cp "$fresh" "$committed"
        say "replaced docs/faults.md"
    elif diff -u --label docs/faults.md --label "now (out/faults.md)" "$committed" "$fresh"; then
        tell "$green" "docs/faults.md holds"
    else
        complain "the tool does otherwise than docs/faults.md says; if that is right: ./check faults --accept"
        return 1
    fi
}
