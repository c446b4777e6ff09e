# What a person at a terminal sees on standard error: colours, and a line of progress that is gone
# afterwards. Where standard error is something else, plain text. Sourced by scripts/common.sh and
# by the scripts of host/deviceshell.

program="${0##*/}" # begins every line
at_terminal=0 red="" yellow="" green="" plain=""
if [[ -t 2 && "${TERM:-dumb}" != dumb ]]; then
    at_terminal=1
    if [[ -z "${NO_COLOR:-}" ]]; then
        red=$'\e[31m' yellow=$'\e[33m' green=$'\e[32m' plain=$'\e[0m'
    else
        export CLICOLOR=0 # for ctest
    fi
fi

# progress TEXT...: at a terminal, this line instead of the last one.
progress() {
    ((!at_terminal)) || printf '\r%-78.78s\r%.78s' "" "$*" >&2
}

progress_ends() {
    ((!at_terminal)) || printf '\r%-78s\r' "" >&2
}

# tell COLOUR TEXT...: one line; the colour, which may be empty, is one of the above.
tell() {
    progress_ends
    printf '%s: %s%s%s\n' "$program" "$1" "${*:2}" "${1:+$plain}" >&2 || true # standard error may be closed
}
complain() { tell "$red" "$@"; }

# Usage errors and missing things: one sentence, status 2.
refuse() {
    complain "$@"
    exit 2
}
