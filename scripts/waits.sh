# What ./run shows at a terminal while the tool waits. Sourced after common.sh.

# tell_waits LOG: tells which wait the tool is in, by the last lines of its log, from its first
# second on. Ends with ./run or when it is killed; lines of runs before $started do not count.
tell_waits() {
    local never last what waited=0 seconds=0
    exec {never}<> <(:) # a pause is a read that gets nothing
    while ! read -rt 1 -u "$never" && kill -0 $$ 2>/dev/null; do
        [[ "$(stat -c %Y "$1" 2>/dev/null || echo 0)" -ge "${started%.*}" ]] || continue
        last="$(tail -n 20 "$1" | grep -aoE ': Wait(For|Capture)[A-Za-z]* .*' | tail -n 1 ||
            true)"
        case "$last" in
        ': WaitForShutter '*' time '*) what="the shutter" ;;
        ': WaitForResult result timeout_ms '* | *' condtion trigger') what="the result" ;;
        *) what="" ;;
        esac
        [[ "$what" == "$waited" ]] && seconds=$((seconds + 1)) || seconds=1
        waited="$what"
        [[ -z "$what" ]] || progress "${0##*/}: the tool waits for $what, ${seconds} s"
    done
}

# with_waits_told LOG COMMAND...: the command's status.
with_waits_told() {
    local log="$1" teller status=0
    shift
    if ((!at_terminal)); then "$@"; return; fi
    tell_waits "$log" &
    teller=$!
    trap 'kill "$teller" 2>/dev/null || true' EXIT
    "$@" || status=$?
    kill "$teller" 2>/dev/null || true # a Ctrl-C has ended it already
    wait "$teller" 2>/dev/null || true
    trap - EXIT
    progress_ends
    return "$status"
}
