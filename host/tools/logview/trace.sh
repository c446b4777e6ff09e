#!/bin/bash
# trace: shows the binder calls that the device's programs write to $STANDIN_BINDER_TRACE_FD.

fail() {
    echo "trace: $2" >&2
    exit "$1"
}

[[ $# -le 1 ]] || fail 2 "unknown word $2; try 'trace --help'"
case "${1-}" in
--help)
    echo "usage: trace [-d | -c]
Shows the binder calls so far, then those to come, until interrupted.
  -d  show those so far and end
  -c  forget those so far"
    exit
    ;;
"" | -d | -c) ;;
*) fail 2 "unknown word $1; try 'trace --help'" ;;
esac
# The descriptor is for writing; opened again by its name it can be read from the beginning.
file="/proc/self/fd/$STANDIN_BINDER_TRACE_FD"
[[ -n "$STANDIN_BINDER_TRACE_FD" && -f "$file" ]] ||
    fail 1 "nothing is kept here: deviceshell's shell keeps it, and option --trace"
case "${1-}" in
-c) : >"$file" ;;
-d) exec cat "$file" ;;
*) exec tail -n +1 -s 0.1 -f "$file" 2>/dev/null ;; # there it says when -c has emptied the file
esac
