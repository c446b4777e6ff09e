#!/bin/bash
# What a shell of deviceshell --run-record finds as vexofflinecameratest: runs the tool and notes it
# in the descriptor STANDIN_RUN_RECORD_FD, in words that end with a zero byte each: "start", process,
# time, number of words and words of the command; "end", process, time, status. Times are seconds
# since the epoch.
set -u
record="${STANDIN_RUN_RECORD_FD:?only for a shell of deviceshell --run-record}"
unset STANDIN_RUN_RECORD_FD
PATH="${PATH#/vendor/bin/recorded:}"

note() { printf '%s\0' "$@" >&"$record"; } # one write, as runs may go on beside each other

( # which becomes the tool
    note start "$BASHPID" "$EPOCHREALTIME" "$(($# + 1))" "${0##*/}" "$@"
    exec env --default-signal=INT,QUIT vexofflinecameratest "$@" {record}>&-
) <&0 &
tool=$!
trap : INT QUIT # the terminal's reach the tool by themselves
trap 'kill -TERM "$tool"' TERM
trap 'kill -HUP "$tool"' HUP
exec 2>/dev/null # bash itself would tell of a signal
while status=0 && { wait "$tool" || status=$?; } && kill -0 "$tool"; do :; done
note end "$tool" "$EPOCHREALTIME" "$status"
trap - INT QUIT TERM HUP
((status <= 128 || status > 192)) || kill -s "$((status - 128))" $$ # as the tool ended
exit "$status"
