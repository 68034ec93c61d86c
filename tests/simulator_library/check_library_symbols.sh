#!/usr/bin/env bash
# Holds the simulator's library to its own names: what belongs to the program alone is in the program's objects
# and in none of the library's, however many sources a build compiles as one.
#
# usage: NM=nm check_library_symbols.sh LIBRARY PROGRAM-OBJECT...
set -euo pipefail

library=$1
shift

# Prints the functions and data that the files define, one a line.
defined() {
    "${NM:-nm}" --defined-only --demangle "$@" | sed -nE 's/^[0-9a-f]+ [A-Za-z] //p'
}
of_the_library=$(defined "$library")
of_the_program=$(defined "$@")
grep -q '^vantu::orvanta::service_simulator::start()' <<<"$of_the_library" || {
    echo "the library lacks the simulator: its names cannot be read" >&2
    exit 1
}

broken=0
for name in \
    CLI::App:: \
    vantu::orvanta::simulator::console:: \
    vantu::orvanta::simulator::console_input:: \
    vantu::orvanta::simulator::help_on \
    'vantu::orvanta::simulator::parse_options(' \
    'vantu::orvanta::simulator::shutdown_was_requested(' \
    'vantu::orvanta::simulator::standard_input_is_terminal(' \
    'vantu::orvanta::simulator::watch_for_shutdown('; do
    if ! grep -qF "$name" <<<"$of_the_program"; then
        printf 'the program has no %s any more: correct the list of names\n' "$name" >&2
        broken=1
    fi
    if found=$(grep -F "$name" <<<"$of_the_library"); then
        printf 'the library holds what belongs to the program: %s\n' "$(head -n 1 <<<"$found")" >&2
        broken=1
    fi
done
exit $broken
