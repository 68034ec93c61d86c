#!/usr/bin/env bash
# Runs a program of examples/event_loops beside a simulator and looks at what it prints and how it ends.
#
# usage: check_loop.sh WHAT SIMULATOR PROGRAM [EMULATOR...]
set -euo pipefail

what=$1
simulator=$2
program=$3
emulator=("${@:4}")
scratch=$(mktemp -d)
pid=
trap '[ -z "$pid" ] || kill -KILL $pid 2>/dev/null || true; rm -rf "$scratch"' EXIT

fail() {
    printf '%s: %s\n' "$what" "$*" >&2
    exit 1
}

# start_service RATE: sets port. Lines to descriptor 8 are verbs.
start_service() {
    mkfifo "$scratch/verbs" "$scratch/answers"
    "${emulator[@]}" "$simulator" --port 0 --palmetron 0 --rate "$1" --interactive \
        <"$scratch/verbs" >"$scratch/answers" &
    pid=$!
    disown $pid
    exec 8>"$scratch/verbs" 9<"$scratch/answers"
    read -r -t 60 -u 9 line || fail "the simulator does not start"
    line=${line%$'\r'}
    [[ $line =~ ^listening\ on\ port\ ([0-9]+)$ ]] || fail "the simulator says '$line'"
    port=${BASH_REMATCH[1]}
}

# The program's lines go to a descriptor of the shell's, its messages to a file.
start_program() {
    exec 7< <(exec 8>&- 9<&-
        status=0
        TIMEFORMAT='%U %S'
        { time timeout 120 "${emulator[@]}" "$program" "$port" "$1" </dev/null 2>"$scratch/messages"; } \
            2>"$scratch/time" || status=$?
        echo "status $status")
}

# The next line that is none of the library's log.
read_line() {
    line=INFO
    while [[ $line == INFO* ]]; do
        read -r -t 120 -u 7 line || fail "the program says nothing more"
        line=${line%$'\r'}
    done
}

number='-?[0-9]+\.[0-9]{3}'
read_state() {
    read_line
    [[ $line =~ ^state\ $number\ $number\ $number\ $number\ $number\ $number$ ]] ||
        fail "in place of a state it says '$line': $(cat "$scratch/messages")"
}

expect_end() {
    while [[ ${line-} != status* ]]; do
        read_line
    done
    [ "$line" = "status $1" ] || fail "it ends with $line: $(cat "$scratch/messages")"
    [[ $(tr -d '\r' <"$scratch/messages") == *"$2" ]] || fail "it says '$(cat "$scratch/messages")'"
}

case $what in
stays_connected_through_silence)
    # A client is forgotten after three seconds; the service can be heard again after five.
    start_service 2
    SECONDS=0
    start_program 4
    read_state
    printf '%s\n' 'drop 1@dir=out' 'wait 5000' heal >&8
    for _ in 2 3 4; do
        read_state
    done
    line=
    expect_end 0 ""
    [ $SECONDS -ge 5 ] || fail "there was no silence"
    [ ${#emulator[@]} -gt 0 ] || awk '{ exit $1 + $2 >= 1 }' "$scratch/time" ||
        fail "it takes $(cat "$scratch/time") s of a processor to wait"
    ;;
ends_with_the_service)
    start_service 100
    start_program 1000000
    read_state
    echo quit >&8
    expect_end 1 "the connection is over: invalid connection state"
    ;;
ends_with_a_service_that_dies)
    start_service 100
    start_program 1000000
    read_state
    kill -KILL "$pid"
    expect_end 1 "the connection is over: disconnected from the service"
    ;;
*) fail "there is no such check" ;;
esac
