# What ./run says after the tool has ended. Sourced after common.sh.

# Every file below a folder with time and size, sorted: two lists differ where a file was written.
list_files() { (cd "$1" && find . -type f -printf '%P\t%T@\t%s\n' | LC_ALL=C sort); }

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

# report_files FOLDER BEFORE: names what is new or changed since the list BEFORE was made; their
# number is left in $wrote.
wrote=0
report_files() {
    local folder="$1" path size note
    while IFS=$'\t' read -r path _ size; do
        wrote=$((wrote + 1))
        case "$path" in
        *.yuv | *.raw | *.jpg)
            note=""
            [[ "$path" != *.jpg ]] || note=" (as stored: viewers turn the JPEG as its EXIF says)"
            say "wrote $(here "$folder/$path") ($size bytes), $(picture_of "$folder/$path")$note"
            ;;
        *) say "wrote $(here "$folder/$path") ($size bytes)" ;;
        esac
    done < <(LC_ALL=C comm -13 <(echo "$2") <(list_files "$folder"))
}

# report_outcome STATUS: which signal ended the tool, and the last error that it logged.
report_outcome() {
    local number=$(($1 - 128)) errors last
    errors="$(grep -c ' E ' "$out/run.log" || true)"
    last="$(grep ' E ' "$out/run.log" | tail -n 1 || true)"
    last="the last one of $errors errors in $(here "$out/run.log"): ${last#* E }"
    if ((number >= 1 && number <= 64)); then
        say "the tool was ended by signal $number ($(kill -l "$number"))"
    elif grep -q ': OpenOfflineSession$' "$out/run.log" && [[ "$wrote" == 0 ]]; then
        say "no file was written"
    fi
    [[ "$errors" == 0 ]] || say "$last"
}

# One line when the tool opened a source file, which without plane layouts has no effect.
report_unfilled_inputs() {
    if grep -q 'LoadOffineSource.*: open input file' "$out/run.log"; then
        say "the input frames were left empty: nothing answers the tool's plane-layout query," \
            "so it read no row of its source files (--planes provides the answer)"
    fi
}
