# ./check tidy: clang-tidy over our sources. Sourced.

# tidy FOLDER: with the compile commands of the build in FOLDER, which is brought up to date for its
# generated headers. Status 0 when there is nothing to say.
tidy() {
    local sources=() file
    install_packages tidy
    build "$1" "" all || return 1
    unlock_out
    while IFS= read -rd '' file; do # what is built; the generated sources are elsewhere
        ! grep -qF "\"$file\"" "$1/compile_commands.json" || sources+=("$file")
    done < <(find "$root" -path "$out" -prune -o -name '*.cpp' -print0)
    say "clang-tidy reads ${#sources[@]} files"
    if printf '%s\0' "${sources[@]}" | xargs -0 -n 4 -P "$(nproc)" clang-tidy-14 -p "$1" --quiet; then
        tell "$green" "clang-tidy has nothing to say"
    else
        complain "clang-tidy complains"
        return 1
    fi
}
