# What ./run says after the tool has ended. Sourced after common.sh.

# Every file below a folder with time and size, sorted: two lists differ where a file was written.
# Subfolders that may not be read count as empty.
list_files() {
    { find "$1" -type f -printf '%P\t%T@\t%s\n' 2>/dev/null || true; } | LC_ALL=C sort
}

# A path as the user would write it here.
here() { printf '%s' "${1#"$PWD"/}"; }

# Makes out/pictures/NAME.png from a dump and prints its path; a reason where that fails. A JPEG is
# shown as it is stored: the tool asks for an orientation of 90 degrees, which would turn the source.
picture_of() {
    local picture="$out/pictures/${1##*/}" said how=(--force)
    picture="${picture%.*}.png"
    mkdir -p "$out/pictures"
    [[ "$1" != *.jpg ]] || how+=(--as-stored)
    if said="$("$out/build/bin/offlineframes" view "${how[@]}" "$1" "$picture" 2>&1)"; then
        here "$picture"
    else
        printf 'no picture: %s' "$said"
    fi
}

# written_files FOLDER BEFORE: what is new or changed since the list BEFORE was made, as lines of
# such a list.
written_files() { LC_ALL=C comm -13 <(echo "$2") <(list_files "$1"); }

# report_files FOLDER WRITTEN: names what the list WRITTEN holds; their number is left in $wrote.
wrote=0
report_files() {
    local folder="$1" path size note
    [[ -n "$2" ]] || return 0
    while IFS=$'\t' read -r path _ size; do
        wrote=$((wrote + 1))
        case "$path" in
        *.yuv | *.raw | *.jpg)
            note=""
            [[ "$path" != *.jpg ]] || note=" (as stored: viewers turn the JPEG as its EXIF says)"
            progress "${0##*/}: makes a picture of ${path##*/}"
            tell "$green" "wrote $(here "$folder/$path") ($size bytes)," \
                "$(picture_of "$folder/$path")$note"
            ;;
        *) tell "$green" "wrote $(here "$folder/$path") ($size bytes)" ;;
        esac
    done <<<"$2"
}

# report_outcome STATUS: which signal ended the tool, and the last error that it logged.
report_outcome() {
    local number=$(($1 - 128)) errors last
    errors="$(grep -c ' E ' "$out/run.log" || true)"
    last="$(grep ' E ' "$out/run.log" | tail -n 1 || true)"
    last="the last one of $errors errors in $(here "$out/run.log"): ${last#* E }"
    if [[ ! -s "$out/run.log" ]]; then
        : # the tool did not get as far as its log; who stopped it has said so
    elif ((number >= 1 && number <= 64)); then
        complain "the tool was ended by signal $number ($(kill -l "$number"))"
    elif grep -q ': OpenOfflineSession$' "$out/run.log" && [[ "$wrote" == 0 ]]; then
        complain "no file was written"
    fi
    [[ "$errors" == 0 ]] || complain "$last"
}

# One line when the tool opened a source file, which without plane layouts has no effect.
report_unfilled_inputs() {
    if grep -q 'LoadOffineSource.*: open input file' "$out/run.log"; then
        tell "$yellow" "the input frames were left empty: nothing answers the tool's plane-layout query," \
            "so it read no row of its source files (--planes provides the answer)"
    fi
}

# start_page COMMAND...: begins the report of the run, whose facts ./run holds in its variables; it
# is made beside the pictures.
page_maker=""
start_page() {
    local path word told=()
    for word in "${options[@]}"; do
        [[ "$word" == -- || "$word" == --shell ]] || told+=("--option=$word")
    done
    while IFS=$'\t' read -r path _; do
        [[ -z "$path" ]] || told+=("--dump=$data/$path")
    done <<<"$dumps"
    # Nobody shall take an older run's report for this one's.
    rm -f "$out/report.html" "$out/report.json" || true
    "$out/build/bin/runreport" --html="$out/report.html" --json="$out/report.json" \
        --started="$started" --ended="$ended" --status="$status" "${told[@]}" \
        --log="$out/run.log" --device-log="$out/device.log" --trace="$out/trace.log" \
        --data="$data" -- "$@" >&2 &
    page_maker=$!
}

# A report that could not be made changes no status: the run is what counts.
finish_page() {
    progress "${0##*/}: writes the report"
    if wait "$page_maker"; then
        say "report: $(here "$out/report.html")"
    else
        complain "no report of this run could be written"
    fi
}
