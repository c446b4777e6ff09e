# Shared by ./run and ./check: messages, packages, building. Sourced by bash with -euo pipefail.
# Everything here talks on standard error; standard output belongs to the caller.

out="$root/out" # root: the project's folder, which the command has found
source "$root/scripts/terminal.sh"
source "$root/scripts/options.sh"

say() { tell "" "$@"; }

# lock FD FILE OTHER TO_DO: takes a lock; says that it waits for OTHER TO_DO, and refuses after an
# hour.
lock() {
    { mkdir -p "$out" && : >>"$out/$2"; } 2>/dev/null ||
        refuse "cannot write in $out: clone the project to a place of your own"
    eval "exec $1>>\"\$out/$2\""
    flock -n "$1" && return
    say "waits for $3 $4"
    flock -w 3600 "$1" || refuse "$3 has been going on for an hour"
}

# One at a time: installs and builds of two calls would get in each other's way.
lock_out() { lock 9 .lock "another ./run or ./check" "to install and build"; }
unlock_out() { exec 9>&-; }

# One run at a time: logs, report, dumps and the frames of --source belong to it. Every process of a
# run inherits the lock, so that the next one begins when the last of them has gone.
lock_run() { lock 8 .running "another ./run" "to end"; }
unlock_run() { exec 8>&-; }

packages_known=/var/lib/dpkg/status # dpkg's list, a new file after each change

# install_packages COMMAND: installs what the list names, for it or for all, and this machine lacks.
# Not asked again until the list or the machine's packages change.
install_packages() {
    local stamp="$out/.packages-$1" name missing=() as_root=()
    [[ "$stamp" -nt "$root/scripts/packages.txt" && "$stamp" -nt "$packages_known" ]] && return
    while read -r name; do
        [[ "$(dpkg-query -W -f '${Status}' "$name" 2>/dev/null)" == *"ok installed"* ]] || missing+=("$name")
    done < <(awk -v command="$1" 'NF && !/^#/ && (NF == 1 || $2 == command) { print $1 }' \
        "$root/scripts/packages.txt")
    if ((${#missing[@]})); then
        if [[ "$(id -u)" != 0 ]]; then
            command -v sudo >/dev/null ||
                refuse "as root, first: apt-get install --no-install-recommends ${missing[*]}"
            as_root=(sudo)
        fi
        as_root+=(env DEBIAN_FRONTEND=noninteractive apt-get)
        say "installing ${missing[*]}"
        # The lists may be missing or old. Without a network, apt may have what is needed already.
        "${as_root[@]}" update >&2 || true
        "${as_root[@]}" install -y --no-install-recommends "${missing[@]}" >&2 ||
            refuse "could not install ${missing[*]}"
    fi
    touch "$stamp"
}

# up_to_date FOLDER TARGET...: whether the last build() in FOLDER was of these targets and would find
# nothing to do now, by a look at sources, packages and programs that takes a fifth of ninja's time.
# Nothing can set a file's status time, so a file that gets an old date back is seen, too; an added,
# renamed or removed one changes its folder.
up_to_date() {
    local changed stamp="$1/.built"
    [[ -e "$stamp" && "$(<"$stamp")" == "${*:2}" ]] &&
        changed="$(find "$root" "$1"/{bin,lib,vendor,build.ninja} "$packages_known" \
            \( -samefile "$out" -o -name .git \) -prune -o -cnewer "$stamp" -print -quit 2>&1)" &&
        [[ -z "$changed" ]]
}

# build FOLDER SETTINGS TARGET...: configures once, then builds with ninja's progress; silent when
# everything is up to date.
build() {
    local folder="$1" settings="$2" round
    shift 2
    # CMake stops at some of them, and with the others ninja builds everything each time.
    [[ "$root" != *[\'\"\&\;\*\<\>\|^\`\?\\]* ]] ||
        refuse "the path $root has one of ' \" & ; * < > | ^ \` ? \\ in it: move the project"
    if [[ ! -e "$folder/build.ninja" ]]; then
        say "configuring $folder"
        # shellcheck disable=SC2086 # settings are words
        cmake -G Ninja -S "$root" -B "$folder" $settings >&2 ||
            { complain "configuring failed"; return 1; }
    fi
    for round in "building $folder" ""; do # the second one finds nothing to do
        echo "$*" >"$folder/.begun"
        if [[ "$(ninja -C "$folder" -n "$@" 2>/dev/null)" == *"no work to do"* ]]; then
            mv "$folder/.begun" "$folder/.built"
            return
        fi
        [[ -z "$round" ]] || { say "$round" && ninja -C "$folder" "$@" >&2; } ||
            { complain "building failed"; return 1; }
    done
}
