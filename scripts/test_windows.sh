#!/usr/bin/env bash
# Builds everything for Windows with MinGW-w64 and runs its tests under Wine. Ends with CTest's summary.
#
# usage: scripts/test_windows.sh [CTEST-ARGUMENT...]     (./test windows calls it)
set -euo pipefail
. "$(dirname "$(readlink -f "$0")")/common.sh"

"$root/scripts/setup.sh" windows || exit 1

say "building for Windows"
configure windows || fail "configuring windows failed: see the messages above"
cmake --build "$root/build/windows" >&2 || fail "building windows failed: see the messages above"

# One server for all tests: each would wait for a new one to start, and for the old one to end.
export WINEPREFIX=$root/build/windows/wine WINEDEBUG=-all
mkdir -p "$WINEPREFIX"
# Its last words, about programs that still ran, would stand after the summary.
wineserver -p 2>"$root/build/windows/wineserver.log" || fail "Wine's server does not start in $WINEPREFIX: end the programs that use it, then try again"
# Waits for its end: the next run starts one of its own.
trap 'wineserver -k && wineserver -w || true' EXIT

say "testing under $(wine --version 2>/dev/null || echo Wine)"
"$root/scripts/wine.sh" "$WINEPREFIX" cmd /c exit 0 || fail "Wine runs no program: remove $WINEPREFIX, then try again"
setarch -R true 2>/dev/null ||
    say "addresses stay random here: once in some thousand starts Wine runs nothing, and a test fails"
(cd "$root" && ctest --preset windows --parallel "$(nproc)" --no-tests=error "$@") ||
    fail "tests failed: repeat them with ctest --preset windows --rerun-failed"
