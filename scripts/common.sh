# Shared by ./run and ./check: messages, packages, building. Sourced by bash with -euo pipefail.
# Everything here talks on standard error; standard output belongs to the caller.

root="$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)"
out="$root/out"
source "$root/scripts/terminal.sh"
source "$root/scripts/options.sh"

say() { tell "" "$@"; }

# One at a time: installs and builds of two calls would get in each other's way.
lock_out() {
    { mkdir -p "$out" && : >>"$out/.lock"; } 2>/dev/null ||
        refuse "cannot write in $out: clone the project to a place of your own"
    exec 9>"$out/.lock"
    if ! flock -n 9; then
        progress "${0##*/}: waits for another ./run or ./check to install and build"
        flock -w 3600 9 || refuse "another ./run or ./check has been building for an hour"
        progress_ends
    fi
}

unlock_out() { exec 9>&-; }

# One run at a time: logs, report, dumps and the frames of --source belong to it. Every process of a
# run inherits the lock, so that the next one begins when the last of them has gone.
lock_run() {
    exec 8>"$out/.running"
    flock -n 8 && return
    say "waits for another ./run to end"
    flock -w 3600 8 || refuse "another ./run has been going on for an hour"
}

unlock_run() { exec 8>&-; }

# listed_packages COMMAND: the names in the list, without those marked for other commands.
listed_packages() {
    local name only
    while read -r name only; do
        [[ -z "$name" || "$name" == \#* ]] && continue
        [[ -n "$only" && "$only" != "$1" ]] || echo "$name"
    done <"$root/scripts/packages.txt"
}

missing_packages() {
    local names name installed
    mapfile -t names < <(listed_packages "$1")
    installed="$(dpkg-query -W -f '${Package}=${db:Status-Status}\n' "${names[@]}" 2>/dev/null || true)"
    for name in "${names[@]}"; do
        grep -qxF "$name=installed" <<<"$installed" || printf '%s ' "$name"
    done
}

# install_packages COMMAND: installs what the list names for it and this machine lacks. A stamp
# named after the list's checksum lets later calls skip the question.
install_packages() {
    local sum stamp missing
    sum="$(sha256sum <"$root/scripts/packages.txt" | cut -c 1-16)"
    stamp="$out/.packages-$sum-$1"
    [[ -e "$stamp" ]] && return
    missing="$(missing_packages "$1")"
    if [[ -n "$missing" ]]; then
        local as_root=()
        if [[ "$(id -u)" != 0 ]]; then
            command -v sudo >/dev/null ||
                refuse "as root, first: apt-get install --no-install-recommends $missing"
            as_root=(sudo)
        fi
        as_root+=(env DEBIAN_FRONTEND=noninteractive apt-get)
        say "installing $missing"
        # A fresh machine has no package lists yet, another one perhaps old ones.
        compgen -G '/var/lib/apt/lists/*_Packages*' >/dev/null || "${as_root[@]}" update >&2
        # shellcheck disable=SC2086 # the list is words
        "${as_root[@]}" install -y --no-install-recommends $missing >&2 ||
            { "${as_root[@]}" update >&2 &&
                "${as_root[@]}" install -y --no-install-recommends $missing >&2; } ||
            refuse "could not install $missing"
    fi
    find "$out" -maxdepth 1 -name '.packages-*' ! -name ".packages-$sum*" -delete
    touch "$stamp"
}

# build FOLDER SANITIZE TARGET...: configures once, then builds with ninja's progress; silent when
# everything is up to date.
build() {
    local folder="$1" sanitize="$2"
    shift 2
    # CMake stops at some of them, and with the others ninja builds everything each time.
    [[ "$root" != *[\'\"\&\;\*\<\>\|^\`\?\\]* ]] ||
        refuse "the path $root has one of ' \" & ; * < > | ^ \` ? \\ in it: move the project"
    if [[ ! -e "$folder/build.ninja" ]]; then
        say "configuring $folder"
        cmake -G Ninja -S "$root" -B "$folder" -DSANITIZE="$sanitize" >&2 ||
            { complain "configuring failed"; return 1; }
    fi
    if [[ "$(ninja -C "$folder" -n "$@" 2>/dev/null | tail -n 1)" != *"no work to do"* ]]; then
        say "building $folder"
        ninja -C "$folder" "$@" >&2 || { complain "building failed"; return 1; }
    fi
}
