#!/usr/bin/env bash
# Runs the program of the README beside a simulator on the service's own port.
#
# usage: check_readme_program.sh SIMULATOR PROGRAM [EMULATOR...]
set -euo pipefail

exec 9< <(exec "${@:3}" "$1" --orvanta3 1 --palmetron 0 </dev/null)
simulator=$!
trap 'kill -TERM $simulator 2>/dev/null || true' EXIT
read -r -t 60 -u 9 line || { echo "the simulator does not start"; exit 1; }
line=${line%$'\r'}
[ "$line" = "listening on port 54320" ] || { echo "the simulator says '$line'"; exit 1; }

output=$("${@:3}" "$2" 9<&-)
output=${output//$'\r'/}
printf '%s\n' "$output"
[[ $output =~ device\ [0-9]+\ has\ the\ short\ id\ [0-9A-F]{4}$ ]] || { echo "the program found no device"; exit 1; }
