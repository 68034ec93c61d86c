#!/usr/bin/env bash
# Runs the tests in a build that counts, and prints the lines and branches of src/ that they reach. Fails below
# the bounds, and where the tests fail. Files of another platform are in no build here and count nowhere.
#
# usage: scripts/test_coverage.sh [CTEST-ARGUMENT...]     (./test coverage calls it)
set -euo pipefail
. "$(dirname "$(readlink -f "$0")")/common.sh"

# folder:least percentage of lines:of branches
folders=(
    src/common
    src/network:100:98
    src/core:100:98
    src/runtime:99:97
    src/client:99:97
    src/session:98:95
)
build=$root/build/coverage

"$root/scripts/setup.sh" test || exit 1

say "building coverage"
configure coverage || fail "configuring coverage failed: see the messages above"
# The objects hold the paths of this checkout: none is taken from another.
export CCACHE_BASEDIR='' CCACHE_HASHDIR=1
unset CCACHE_NOHASHDIR
cmake --build "$build" >&2 || fail "building coverage failed: see the messages above"

say "testing coverage"
rm -rf "$build/profiles"
(cd "$root" && ctest --preset coverage --parallel "$(nproc)" --no-tests=error "$@") ||
    fail "tests failed: repeat them with ctest --preset coverage --rerun-failed"

llvm-profdata merge -sparse -o "$build/all.profdata" "$build"/profiles/*.profraw || fail "the profiles cannot be read"
objects=()
for program in "$build"/bin/* "$build"/lib/libvantu_orvanta.so; do
    objects+=(-object "$program")
done
# A function that one program never calls and another does is a mismatch to llvm-cov, and no complaint.
export_counts() {
    llvm-cov export "$@" -instr-profile="$build/all.profdata" "${objects[@]:1}" \
        2> >(grep -v '^warning: [0-9]* functions have mismatched data$' >&2)
}
export_counts -format=lcov >"$build/lines.lcov" || fail "llvm-cov reads no lines"
export_counts -skip-expansions >"$build/branches.json" || fail "llvm-cov reads no branches"
"$root/scripts/coverage_report.py" "$root" "$build/lines.lcov" "$build/branches.json" "${folders[@]}" ||
    fail "the tests reach too little: see the lines above"
