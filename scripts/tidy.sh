# ./check tidy: clang-tidy over our sources. Sourced.

# tidy FOLDER: with the compile commands of the build in FOLDER. Status 0 when there is nothing to say.
tidy() {
    local sources
    # A target's sources are compiled together; what is generated is not ours to name.
    mapfile -t sources < <(sed -n 's/^ *"file": "\(.*\)",\?$/\1/p' "$1/compile_commands.json" |
        grep -v -e '/gen/' -e '/googletest/' -e precompiled -e cmake_pch | sort -u)
    say "clang-tidy reads the sources of ${#sources[@]} targets"
    printf '%s\0' "${sources[@]}" | xargs -0 -n 2 -P "$(nproc)" clang-tidy-14 -p "$1" --quiet ||
        { complain "clang-tidy complains"; return 1; }
    tell "$green" "clang-tidy has nothing to say"
}
