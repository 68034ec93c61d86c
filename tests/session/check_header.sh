#!/usr/bin/env bash
# Holds the header of class session to what programs do with it: C++17 with the options filled by name, C++20
# with designated initializers, no warning from it, and a warning for each result that a program ignores.
# Needs no build.
#
# usage: check_header.sh C++-COMPILER INCLUDE-FOLDER...
set -euo pipefail

folders=("${@:2}")
compilers=("$1")
for other in clang++; do
    [ -z "$(command -v $other)" ] || [ "$other" = "$1" ] || compilers+=("$other")
done
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
broken=0

# compiles COMPILER STANDARD STATEMENTS
compiles() {
    printf '#include "vantu/orvanta/session.hpp"\nusing vantu::orvanta::session;\nvoid use(session& one);\nvoid use([[maybe_unused]] session& one) { %s; }\n' \
        "$3" >"$scratch/program.cpp"
    "$1" -std="$2" -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror "${folders[@]/#/-I}" \
        -fsyntax-only "$scratch/program.cpp" >"$scratch/complaint" 2>&1
}

by_name='session::options wanted; wanted.name = "demo"; wanted.request_timeout = std::chrono::milliseconds(5);
    wanted.callbacks.on_arrival = [](session& here, const vantu::orvanta::device& found) {
        here.open(found.id, [](session&, const vantu::orvanta::result<void>& opened) { (void)opened.message(); });
    }; session made(wanted)'
lost=('open(1)' 'close(1)' 'get_orientation(1)' 'get_gravity_compensation(1)' 'set_gravity_compensation(1, {true, 1.0F})'
    'set_gravity_compensation_enabled(1, true)' 'set_scaling_factor(1, 1.0F)' 'get_torque_scaling(1)'
    'set_torque_scaling(1, true)' 'set_handedness(1, vantu::orvanta::handedness::left)' 'save(1)' 'devices()'
    'is_connected()' 'count()' 'wait_for_device(std::chrono::seconds(1))')
for compiler in "${compilers[@]}"; do
    for case in "c++17 $by_name; one.open(1).value(); one.open(1, nullptr); (void)one.count()" \
        "c++20 $by_name; session brief({.name = \"demo\"})"; do
        if ! compiles "$compiler" "${case%% *}" "${case#* }"; then
            echo "$compiler refuses $case:"
            cat "$scratch/complaint"
            broken=1
        fi
    done
    # All at once, a line each.
    if compiles "$compiler" c++17 "$(printf '\none.%s;' "${lost[@]}")"; then
        echo "$compiler lets a program ignore all results"
        broken=1
    fi
    for i in "${!lost[@]}"; do
        if ! grep -qE "program\.cpp:$((i + 5)):.*error: .*unused-(result|value)" "$scratch/complaint"; then
            echo "$compiler lets a program ignore the result of ${lost[$i]}"
            broken=1
        fi
    done
done
exit $broken
