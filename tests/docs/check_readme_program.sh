#!/usr/bin/env bash
# Runs the programs of the README beside a simulator on the service's own port.
#
# usage: check_readme_program.sh SIMULATOR SESSION-PROGRAM FLAT-PROGRAM [EMULATOR...]
set -euo pipefail

exec 9< <(exec "${@:4}" "$1" --orvanta3 1 --palmetron 0 </dev/null)
simulator=$!
trap 'kill -TERM $simulator 2>/dev/null || true' EXIT
read -r -t 60 -u 9 line || { echo "the simulator does not start"; exit 1; }
line=${line%$'\r'}
[ "$line" = "listening on port 54320" ] || { echo "the simulator says '$line'"; exit 1; }

# finds_a_device PATTERN PROGRAM...
finds_a_device() {
    local output
    output=$("${@:2}" 9<&-)
    output=${output//$'\r'/}
    printf '%s\n' "$output"
    [[ $output =~ $1 ]] || { echo "the program found no device"; exit 1; }
}
finds_a_device '^orvanta3 +1  6e2b8410-5f3c-4d71-9a03-c53800000001$' "${@:4}" "$2"
finds_a_device 'device [0-9]+ has the short id [0-9A-F]{4}$' "${@:4}" "$3"
