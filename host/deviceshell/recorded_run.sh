#!/bin/bash
# What a shell of deviceshell --run-record finds as vexofflinecameratest: runs the tool and notes it
# in the descriptor STANDIN_RUN_RECORD_FD. Bash that sources what is there has the last run's $pid,
# $started, $ended (seconds since the epoch), $status and words of the $command.
set -u
record="${STANDIN_RUN_RECORD_FD:?only for a shell of deviceshell --run-record}"
unset STANDIN_RUN_RECORD_FD
PATH="${PATH#/vendor/bin/recorded:}"
command=("${0##*/}" "$@")

( # which becomes the tool; status 137 if the device's end cuts it short
    # One write, as runs may go on beside each other.
    echo "pid=$BASHPID started=$EPOCHREALTIME status=137 command=(${command[*]@Q})" >&"$record"
    exec env --default-signal=INT,QUIT "${command[@]}" {record}>&-
) <&0 &
tool=$!
trap : INT QUIT # the terminal's reach the tool by themselves
trap 'kill -TERM "$tool"' TERM
trap 'kill -HUP "$tool"' HUP
exec 2>/dev/null # bash itself would tell of a signal
while status=0 && { wait "$tool" || status=$?; } && kill -0 "$tool"; do :; done
echo "[[ \$pid != $tool ]] || { ended=$EPOCHREALTIME && status=$status; }" >&"$record"
trap - INT QUIT TERM HUP
((status <= 128 || status > 192)) || kill -s "$((status - 128))" $$ # as the tool ended
exit "$status"
