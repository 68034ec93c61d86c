#!/usr/bin/env bash
# Holds the compiler to its warning where a program ignores a result that something is lost with, and to its
# silence about the others. Needs no build.
#
# usage: check_ignored_results.sh C-COMPILER C++-COMPILER INCLUDE-FOLDER...
set -euo pipefail

c=("$1" -std=c11 -x c)
cpp=("$2" -std=c++20 -x c++)
folders=("${@:3}")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
broken=0

# compiles HEADER CALL COMPILER...
compiles() {
    printf '#include "vantu/orvanta/%s"\n%s\nvoid ignore(void) { %s; }\n' "$1" "$declarations" "$2" >"$scratch/program"
    "${@:3}" -Wall -Wextra -Werror "${folders[@]/#/-I}" -c "$scratch/program" -o "$scratch/program.o" >"$scratch/complaint" 2>&1
}

# warned HEADER CALL COMPILER...
warned() {
    if compiles "$@"; then
        echo "$3 lets a program ignore the result of $2"
        broken=1
    elif ! grep -qE 'unused-result' "$scratch/complaint" || grep -q 'error: ' <(grep -v 'unused-result' "$scratch/complaint"); then
        echo "$3 refuses $2 for another reason:"
        cat "$scratch/complaint"
        broken=1
    fi
}

# silent HEADER CALL COMPILER...
silent() {
    compiles "$@" && return
    echo "$3 does not let a program ignore the result of $2:"
    cat "$scratch/complaint"
    broken=1
}

declarations='extern vantu_orvanta_context* context; extern vantu_orvanta_event event; extern vantu_orvanta_device device;
void handle(void* user, const vantu_orvanta_event* event); extern uint32_t ids[1]; extern size_t count;'
lost=(
    'context_create()'
    'connect(context, "", 0, 0, 1, 1)'
    'connect_ports(context, "0", "0", "", 0, 0, 1, 1)'
    'poll(context, &event)'
    'wait(context, 1)'
    'poll_thread_start(context, handle, 0)'
    'device_ids(context, ids, &count)'
    'device_info(context, 1, &device)'
)
for call in "${lost[@]}"; do
    warned orvanta.h "vantu_orvanta_$call" "${c[@]}"
    warned orvanta.h "vantu_orvanta_$call" "${cpp[@]}"
done
# A request may be sent without caring, and a getter cannot fail after a look at the event's type.
for call in 'init()' 'sleep(1)' 'device_open(context, 1, 0, 0)' 'event_get_device_added(&event, &device)'; do
    silent orvanta.h "vantu_orvanta_$call" "${c[@]}"
    silent orvanta.h "vantu_orvanta_$call" "${cpp[@]}"
done
# A request that is not sent never calls its handler.
declarations='extern vantu::orvanta::client client;
extern vantu_orvanta_config_gravity_compensation gravity; extern vantu_orvanta_config_torque_scaling torque;'
for call in 'device_open(1, 0, {})' 'device_close(1, {})' 'orientation_get(1, {})' 'config_save(1, {})' \
    'config_gravity_compensation_get(1, {})' 'config_gravity_compensation_set(1, gravity, {})' \
    'config_torque_scaling_get(1, {})' 'config_torque_scaling_set(1, torque, {})' 'config_handedness_set(1, 1, {})'; do
    warned client.hpp "client.$call" "${cpp[@]}"
done

exit $broken
