# ./check faults and ./check pages: pages that programs write, beside the committed ones. Sourced.

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

# faults FOLDER [--accept]: what the tool does under each fault, by the build in FOLDER.
faults() {
    build "$1" "" host/all driver/all fault_matrix || return 1
    unlock_out
    say "about 150 runs, most of them wait: some 20 s"
    "$1/tests/fault_matrix" "$out/faults.md" || { complain "fault_matrix failed"; return 1; }
    compare_page "$out/faults.md" "$root/docs/faults.md" faults "${@:2}"
}

# pages FOLDER [--accept]: causes and cures of messages.
pages() {
    local page status=0
    build "$1" "" explanation_page || return 1
    unlock_out
    for page in lines stand_in; do
        "$1/bin/explanation_page" "$page" >"$out/$page.md" || return 1
        compare_page "$out/$page.md" "$root/docs/$page.md" pages "${@:2}" || status=1
    done
    return "$status"
}
