# The source files that ./run gives the tool. Sourced after common.sh.

# The folder that stands for /data/vendor/camera with --source. Its frames belong to one run.
photo_data="$out/camera-from-photo"

# Makes what is missing in a data folder; what is there stays.
fill_data() {
    local made
    mkdir -p "$1"
    progress "${0##*/}: makes missing source files"
    made="$("$bin/offlineframes" sources "$1" 2>&1)" || refuse "no source files in $1: $made"
    progress_ends
    grep -v -e ': exists, kept$' -e '^$' <<<"$made" >&2 || true
}

# Makes the frames in $photo_data anew from a picture. Nothing changes there unless all were made.
fill_data_from() {
    local fresh="$photo_data.new" made file
    rm -rf "$fresh"
    progress "${0##*/}: makes source files from ${1##*/}"
    made="$("$bin/offlineframes" sources "$fresh" --from "$1" 2>&1)" ||
        { rm -rf "$fresh" && refuse "--source: ${made#offlineframes: }"; }
    mkdir -p "$photo_data"/{offlinecameratest,metadata}
    for file in "$fresh"/*/*; do mv -f "$file" "$photo_data/${file#"$fresh/"}"; done
    rm -rf "$fresh"
    say "${made%%$'\n'*}" # how the picture was fitted
}
