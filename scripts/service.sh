# ./check service: offlineservicecheck against the reference service, against another program, or
# against each fault of the reference service. Sourced.

# fault_row BIN FAULT: the fault's row of the table. It has no check as name where nothing came back.
fault_row() {
    local said fault=()
    [[ "$2" == "(none)" ]] || fault=(--fault "$2")
    said="$("$1/deviceshell" "${fault[@]}" offlineservicecheck --physics 2>&1)" || true
    [[ "$said" == *$'\n'Total:* ]] || { echo "$said" >&2 && return 255; }
    awk -v fault="$2" '
        function add(list, name) { sub(/:$/, "", name); return list (list ? ", " : "") "`" name "`" }
        $1 == "FAIL" { failed = add(failed, $2) }
        $1 == "warn" { warned = add(warned, $2) }
        END { printf "| %s | %s | %s |\n", fault, failed, warned }' <<<"$said"
}

# fault_table BIN: the page docs/service_faults.md.
fault_table() {
    cat <<'END'
# Which checks notice which fault

Written by `./check service --faults --accept` from a run of `offlineservicecheck` under each fault of
the reference service (`./run --fault help`). After a check in which the service dies, the rest is
skipped. A fault without failures is allowed: the test client works with it.

| fault | failed checks | warnings |
|---|---|---|
END
    export -f fault_row
    { echo "(none)" && "$1/offlinecameraservice" --fault help | awk '{ sub(/\[.*/, "", $1); print $1 }'; } |
        xargs -P 4 -I{} bash -c 'row="$(fault_row "$@")" && echo "$row"' - "$1" {} | LC_ALL=C sort
}

# service FOLDER [PROGRAM | --faults [--accept]]
service() {
    if [[ "${2-}" == --faults ]]; then
        source "$root/scripts/pages.sh"
        say "some 60 runs: several minutes"
        fault_table "$1/bin" >"$out/service_faults.md" || { complain "a run failed" && return 1; }
        compare_page "$out/service_faults.md" "$root/docs/service_faults.md" "service --faults" "${@:3}"
    else
        "$1/bin/deviceshell" --device-log "$out/device.log" ${2:+--service "$2"} offlineservicecheck
    fi
}
