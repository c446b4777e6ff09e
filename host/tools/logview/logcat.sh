#!/bin/bash
# logcat: shows what the device's programs write to $STANDIN_LOG_FD, as a device's command of this
# name does.

help="usage: logcat [OPTIONS] [TAG[:PRIORITY]]...
Shows the platform log so far, then what is logged, until interrupted. A filter shows a tag's lines
from a priority on (V D I W E F; S: none), '*' meaning every other tag.
  -d           show the log so far and end
  -t N         of it only the last N lines, or those since a time MM-DD HH:MM:SS.mmm
  -T N         the same, and what is logged then
  -c           forget the log so far
  -s           show only tags that are named, as '*:S'
  -e REGEX     only messages that match
  -m N         end after N lines
  -v FORMAT    brief, tag, process, raw, time or threadtime; usec: with microseconds (as without -v)
  -b BUFFER    main, system, all or default, which are one here"

fail() {
    echo "logcat: $2" >&2
    exit "$1"
}

declare -A least=() # the priority of a tag
levels=VDIWEFS all=V format=stored cut="???" since="" regex="" follow=1 last="" most="" clear=""
while (($# > 0)); do
    word="$1"
    case "$word" in # options with a value, also as one word
    -[tTvbem])
        (($# > 1)) || fail 2 "option $word needs a value"
        value="$2"
        shift
        ;;
    -[tTvbem]*) value="${word:2}" word="${word:0:2}" ;;
    esac
    case "$word" in
    --help) echo "$help" && exit ;;
    -d) follow="" ;;
    -c) clear=1 ;;
    -s) all=S ;;
    -e) regex="$value" ;;
    -t | -T | -m)
        [[ "$word" != -t ]] || follow=""
        if [[ "$word" != -m && "$value" =~ ^[0-9]{2}-[0-9]{2}\ [0-9:.]+$ ]]; then
            since="$value"
        elif [[ ! "$value" =~ ^[0-9]+$ ]]; then
            fail 2 "$word takes a number of lines, not $value"
        elif [[ "$word" == -m ]]; then
            most="$value"
        else
            last="$value"
        fi
        ;;
    -v)
        case "$value" in
        brief | tag | process | raw | time | threadtime) format="$value" ;;
        usec) cut="" ;;
        *) fail 2 "unknown format $value; try 'logcat --help'" ;;
        esac
        ;;
    -b)
        case "$value" in
        main | system | all | default) ;;
        crash) fail 1 "no buffer of crashes: 'was ended by signal' is in the log, at deviceshell" ;;
        *) fail 1 "no buffer $value: there is one log" ;;
        esac
        ;;
    -*) fail 2 "unknown word $word; try 'logcat --help'" ;;
    *)
        tag="${word%%:*}" level=V
        [[ "$word" != *:* ]] || level="${word##*:}"
        [[ "$level" == [VDIWEFSvdiwefs] ]] || fail 2 "no priority $level in $word"
        [[ "$tag" == "*" ]] && all="${level^}" || least[$tag]="${level^}"
        ;;
    esac
    shift
done

# The descriptor is for writing; opened again by its name it can be read from the beginning.
file="/proc/self/fd/$STANDIN_LOG_FD"
[[ -n "$STANDIN_LOG_FD" && -f "$file" ]] ||
    fail 1 "nothing is kept here: deviceshell's shell keeps it, and option --log"
[[ -z "$clear" ]] || { : >"$file" && exit; }

# Lines of the log's form that the filters let through, in the format. What a program printed is
# shown where no filter asks for less.
show() {
    local line day time pid tid level tag message
    while IFS= read -r line; do
        if [[ "$line" =~ ^([0-9-]+)\ ([0-9:.]+)\ +([0-9]+)\ +([0-9]+)\ ([VDIWEF])\ ([^:]*):\ ?(.*)$ ]]; then
            day="${BASH_REMATCH[1]}" time="${BASH_REMATCH[2]%$cut}" pid="${BASH_REMATCH[3]}"
            tid="${BASH_REMATCH[4]}" level="${BASH_REMATCH[5]}" message="${BASH_REMATCH[7]}"
            tag="${BASH_REMATCH[6]%"${BASH_REMATCH[6]##*[! ]}"}"
            local wanted="${least[$tag]-$all}"
            [[ "${levels#*"$wanted"}" == *"$level"* || "$wanted" == "$level" ]] || continue
            [[ -z "$regex" || "$message" =~ $regex ]] || continue
            [[ ! "$day $time" < "$since" ]] || continue
            case "$format" in
            brief) printf -v line '%s/%-8s(%5d): %s' "$level" "$tag" "$pid" "$message" ;;
            tag) line="$level/$tag: $message" ;;
            process) printf -v line '%s(%5d) %s  (%s)' "$level" "$pid" "$message" "$tag" ;;
            raw) line="$message" ;;
            time) printf -v line '%s %s %s/%-8s(%5d): %s' \
                "$day" "$time" "$level" "$tag" "$pid" "$message" ;;
            threadtime) printf -v line '%s %s %5d %5d %s %-8s: %s' \
                "$day" "$time" "$pid" "$tid" "$level" "$tag" "$message" ;;
            esac
        else
            [[ "$all" == V && -z "$regex$since" ]] || continue
        fi
        printf '%s\n' "$line" || return
        [[ -z "$most" ]] || ((--most)) || return 0
    done
}

if [[ -z "$follow" ]]; then
    show <"$file" | if [[ -n "$last" ]]; then tail -n "$last"; else cat; fi
elif [[ "$format$all$since$regex$most${!least[*]}" == storedV ]]; then # ends with its reader
    exec tail -n "${last:-+1}" -s 0.1 -f "$file" 2>/dev/null
else
    # On standard error tail says when -c has emptied the file.
    show < <(exec tail -n "${last:-+1}" -s 0.1 -f "$file" 2>/dev/null)
fi
