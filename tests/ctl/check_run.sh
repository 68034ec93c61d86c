#!/usr/bin/env bash
# Runs ./run ctl without a service, beside one, and with mistakes. The checkout's release build is there already.
#
# usage: check_run.sh CHECKOUT
set -euo pipefail

run=$1/run
simulator=$1/build/release/bin/orvanta-simulator
work=$(mktemp -d)
service=
trap '[ -z "$service" ] || kill -TERM "$service" 2>/dev/null || true; rm -rf "$work"' EXIT

fail() {
    echo "check_run: $*; standard error was:"
    cat "$work/errors"
    exit 1
}

# prints STATUS OUTPUT ARGUMENT...: what ./run gives.
prints() {
    local status=0
    "$run" "${@:3}" >"$work/output" 2>"$work/errors" </dev/null || status=$?
    [ "$status" = "$1" ] || fail "'./run ${*:3}' ends with status $status"
    [ "$(cat "$work/output")" = "$2" ] || fail "'./run ${*:3}' prints '$(cat "$work/output")'"
}
port_is_held() { grep -Eq "^ *[0-9]+: [0-9A-F]+:D430 " /proc/net/udp /proc/net/udp6; }

one='1     orvanta3  3001 6e2b8410-5f3c-4d71-9a03-c53800000001'
two='1001  palmetron 5001 b1470d29-e862-4a15-8c90-7ed400000001'
! port_is_held || fail "there is a service already"
prints 0 "$one"$'\n'"$two" ctl list
! grep -q building "$work/errors" || fail "what is built is built again"
! port_is_held || fail "the simulator goes on after its tool"
prints 4 '' ctl info --device none
prints 2 '' ctl lst
grep -q "there is no command 'lst'; list would be right" "$work/errors" || fail "the mistake is not told"
prints 1 '' ctx
grep -q 'takes no arguments, or ctl' "$work/errors" || fail "the mistake is not told"

exec 9< <(exec "$simulator" --palmetron 0 </dev/null)
service=$!
read -r -t 60 -u 9 line || fail "the simulator does not start"
prints 0 "$one" ctl list
grep -q 'a service holds UDP port 54320 on this machine: using it' "$work/errors" || fail "the service is not told of"
port_is_held || fail "the service that was there is ended"
