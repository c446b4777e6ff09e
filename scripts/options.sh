# The one way in which the project's scripts read options. Sourced after terminal.sh.

# read_options SWITCHES VALUES WORD...: reads the options, which come before all other words. SWITCHES
# and VALUES list their names, with a blank on both sides of each; a name in both takes the next word
# if that is no option. Leaves the table `given` (every name; what was given has a 1, or its last
# value), the list `faults` (every value of --fault), the remaining `words`, and in `ended` whether
# "--" came before them. Errors name the program as $call.
declare -A given=()
faults=() words=() ended=""
read_options() {
    local switches="$1" values="$2" name
    shift 2
    for name in $switches $values; do given[$name]=""; done
    while [[ $# -gt 0 && -z "$ended" ]]; do
        name="${1%%=*}"
        if [[ "$1" == -- ]]; then
            ended=1
        elif [[ "$switches" == *" $1 "* && ("$values" != *" $1 "* || "${2:--}" == -*) ]]; then
            given[$1]=1
        elif [[ "$values" == *" $name "* ]]; then
            if [[ "$1" != *=* ]]; then set -- "$name=${2-}" "${@:3}"; fi
            given[$name]="${1#*=}"
            [[ -n "${given[$name]}" ]] || refuse "option $name needs a value"
            [[ "$name" != --fault ]] || faults+=("${given[$name]}")
        elif [[ "$1" == --* ]]; then
            refuse "unknown option $1; try '${call:-$program} --help'"
        else
            break
        fi
        shift
    done
    words=("$@")
}

# read_service VALUE: of --service, a program's path, or words that blanks separate: settings of its
# environment, its path and its arguments. Leaves them in `service_words`, the path absolute.
read_service() {
    local i=0
    service_words=("$1")
    [[ -f "$1" ]] || read -ra service_words <<<"$1"
    while [[ ! -f "${service_words[i]-}" && "${service_words[i]-}" == *=* ]]; do i=$((i + 1)); done
    local path="${service_words[i]-}"
    [[ -f "$path" ]] || refuse "--service $1: no such program"
    [[ -x "$path" ]] || refuse "--service $1: no program, as it is not executable (chmod +x)"
    service_words[i]="$(readlink -f -- "$path")"
}
