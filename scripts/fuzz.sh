#!/usr/bin/env bash
# Runs the fuzzers with AddressSanitizer and UndefinedBehaviorSanitizer, each for so long, from its corpus in
# fuzz/corpus and with the dictionary that the build prints. New inputs go to build/fuzz/corpus. Fails on any report.
#
# usage: scripts/fuzz.sh SECONDS [HARNESS]     (core, handshake, dispatch, ...; all of them by default)
#
# ORVANTA_FUZZ_FAST=1 leaves the sanitizers out, which runs several times as much in the same time.
set -euo pipefail
. "$(dirname "$(readlink -f "$0")")/common.sh"

seconds=${1-}
[[ $seconds =~ ^[1-9][0-9]*$ ]] && [ $# -le 2 ] || fail "usage: $0 SECONDS [HARNESS]"
command -v clang++ >/dev/null || fail "there is no clang++: scripts/setup.sh test installs it"

folder=$root/build/fuzz
options=()
if [ -n "${ORVANTA_FUZZ_FAST-}" ]; then
    folder=$root/build/fuzz-fast
    options=(-DORVANTA_SANITIZE=)
fi

harnesses=()
for corpus in "$root"/fuzz/corpus/*/; do
    harnesses+=("$(basename "$corpus")")
done
if [ $# -eq 2 ]; then
    printf '%s\n' "${harnesses[@]}" | grep -qxF -- "$2" || fail "there is no harness $2: ${harnesses[*]} would be right"
    harnesses=("$2")
fi

# The sanitizers of these compilers need more order in the address space than some kernels leave.
runner=()
if [ "$(cat /proc/sys/vm/mmap_rnd_bits 2>/dev/null || echo 28)" -gt 28 ]; then
    runner=(setarch -R)
fi

say "building the fuzzers"
(cd "$root" && cmake --preset fuzz -B "$folder" "${options[@]}" >&2) || fail "configuring failed: see the messages above"
"${runner[@]}" cmake --build "$folder" --target "${harnesses[@]/#/fuzz_}" >&2 || fail "building failed: see the messages above"

# One line a harness: "#N DONE cov: EDGES ft: ..." and "Loaded 1 modules (ALL inline 8-bit counters)".
summary() {
    local log=$1 runs edges all
    runs=$(sed -n 's/^Done \([0-9]*\) runs.*/\1/p' "$log")
    edges=$(sed -n 's/^#.*DONE *cov: \([0-9]*\).*/\1/p' "$log")
    all=$(sed -n 's/.*(\([0-9]*\) inline 8-bit counters).*/\1/p' "$log" | head -n 1)
    printf '%s: %s runs, %s of %s branches' "$2" "${runs:-?}" "${edges:-?}" "${all:-?}"
    sed -n 's/^\(datagrams: [0-9]*\)$/, \1/p' "$log" | tr -d '\n'
    printf ', 0 reports\n'
}

for harness in "${harnesses[@]}"; do
    found=$folder/corpus/$harness
    reports=$folder/reports/$harness
    mkdir -p "$found" "$reports"
    rm -f "$reports"/*
    say "running $harness for $seconds s"
    if ! "${runner[@]}" "$folder/bin/fuzz_$harness" -max_total_time="$seconds" -timeout=60 -print_final_stats=1 \
        -dict="$folder/bin/fuzz_$harness.dict" -artifact_prefix="$reports/" \
        "$found" "$root/fuzz/corpus/$harness" >"$folder/$harness.log" 2>&1; then
        tail -n 40 "$folder/$harness.log" >&2
        fail "$harness reported something: see the lines above; the input is in $reports"
    fi
    summary "$folder/$harness.log" "$harness"
done
