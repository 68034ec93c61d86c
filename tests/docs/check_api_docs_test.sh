#!/usr/bin/env bash
# Holds scripts/build_api_docs.sh against copies of the public headers that each lack one comment: a name of
# each kind is missed, and the complaint says which.
#
# usage: check_api_docs_test.sh CHECKOUT SCRATCH-FOLDER
set -euo pipefail

source=$1
scratch=$2
headers=vantu/orvanta
flat=src/runtime/include/$headers
common=src/common/include/$headers
rm -rf "$scratch"
broken=0

# misses NAME FILE EXPRESSION: without what sed's expression takes away.
misses() {
    local checkout=$scratch/checkout
    rm -rf "$checkout"
    mkdir -p "$checkout/src/"{runtime,common,client,session} "$checkout/docs"
    cp "$source/docs/Doxyfile" "$checkout/docs"
    for layer in runtime common client session; do
        cp -r "$source/src/$layer/include" "$checkout/src/$layer"
    done
    sed -i -E "$3" "$checkout/$2"
    if cmp -s "$source/$2" "$checkout/$2"; then
        echo "$2 has nothing like $3"
        broken=1
    elif "$source/scripts/build_api_docs.sh" "$scratch/out" 0.0.0 "$checkout" 2>"$scratch/complaint"; then
        echo "$2 is accepted with $1 uncommented"
        broken=1
    elif ! grep -E "$1.*(is not documented|has no comment)" "$scratch/complaint" >/dev/null; then
        echo "$2 is refused, but not for $1:"
        cat "$scratch/complaint"
        broken=1
    fi
}

uncomment='s,/\*\*,/*,'
misses vantu_orvanta_error_message "$flat/names.h" "/Tells an error code/ $uncomment"
misses vantu_orvanta_event_get_table_block_301 "$flat/event_records.h" "/Copies the record of/ $uncomment"
misses vantu_orvanta_context "$flat/connection.h" "/One connection; opaque/ $uncomment"
misses vantu_orvanta_log_level "$flat/log.h" "/Log levels/ $uncomment"
misses vantu_orvanta_log_info "$flat/log.h" "/log_info/ $uncomment"
misses vantu_orvanta_timed_out "$common/error_codes.h" "/timed_out = / $uncomment"
misses vantu_orvanta_error "$common/communication/records.h" "/A failed request\. / $uncomment"
misses vantu_orvanta_event_none "$common/communication/records.h" "/event_none = / $uncomment"
misses scaling_factor "$common/communication/records.h" "/float scaling_factor;/ $uncomment"
misses state_kind "$common/communication/records.h" "/uint8_t state_kind;/ $uncomment"
misses detail "$common/communication/records.h" "/\} detail;/ $uncomment"
misses VANTU_ORVANTA_PAYLOAD_SIZE "$common/communication/records.h" "/Bytes of vantu_orvanta_event/ $uncomment"

class=src/client/include/$headers/client.hpp
misses check_result "$class" '/Throws exception.code, label/ s,///,//,'
misses acknowledged "$class" '/ acknowledged,/ s,///<,//,'
misses on_ack "$class" '/ on_ack;/ s,///<,//,'
misses config_handedness_set "$class" '/Requests with a one-shot/,/std::int32_t/ s,///,//,'
misses has_value "src/session/include/$headers/result.hpp" '/Whether there is a value/ s,///,//,'
exit $broken
