# ./check bench: runs the programs in bench/ and puts their tables together. Sourced.

# The rows of every comparison in "$@", as one table.
comparison_table() {
    echo "| | ms | ratio | mark | |"
    echo "|---|---:|---:|---:|---|"
    awk -F ' *[|] *' '
        /^### /     { title = substr($0, 5); comparison = 0; next }
        /^[|]-/     { next }
        /^[|]/ && $4 == "ratio" { comparison = 1; print "| **" title "** | | | | |"; next }
        /^[|]/ && comparison {
            verdict = $6 == "MISSED" ? "**missed**" : $6
            print "| " $2 " | " $3 " | " $4 " | " $5 " | " verdict " |"
        }' "$@"
}

# Tables of another shape, with their headings.
other_tables() {
    awk '
        /^### /               { heading = $0; next }
        /^[|]/ && heading != "" {
            shown = $0 !~ /[|] *ratio *[|]/
            if (shown) print "\n" heading "\n"
            heading = ""
        }
        /^[|]/ && shown' "$@"
}

# bench FOLDER: builds and measures with the programs in FOLDER/bench, shows the results and keeps
# them in bench/results.md.
bench() {
    local program printed files=()
    build "$1" "" bench || return 1
    for program in imaging loading binder run; do
        say "measuring: $program"
        printed="$1/bench/$program.txt"
        "$1/bench/${program}_bench" >"$printed" || { complain "${program}_bench failed"; return 1; }
        files+=("$printed")
    done
    {
        echo "# Measured"
        echo
        echo "Written by \`./check bench\`. Every time is a median of rounds in which all lines of one"
        echo "group take turns; a ratio is to the group's line of ratio 1.00, and its mark the most that"
        echo "it may be."
        echo
        "$1/bench/bench_machine"
        echo
        comparison_table "${files[@]}"
        other_tables "${files[@]}"
    } >"$root/bench/results.md"
    cat "$root/bench/results.md"
}
