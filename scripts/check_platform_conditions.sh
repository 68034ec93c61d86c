#!/usr/bin/env bash
# Refuses code that asks for the platform or its compiler outside the files that belong to a platform, which
# are whole files named for it and chosen by CMake.
#
# usage: scripts/check_platform_conditions.sh [FOLDER]     (a checkout; this one by default)
set -euo pipefail
. "$(dirname "$(readlink -f "$0")")/common.sh"
cd "${1:-$root}"

folders=()
for folder in src app ctl shared simulator conformance dissector bench tests examples fuzz; do
    [ ! -d "$folder" ] || folders+=("$folder")
done
[ ${#folders[@]} -gt 0 ] || fail "no sources in $PWD"

windows='_?WIN(32|64)|__WIN(32|64)__|__MINGW(32|64)__|__CYGWIN__|_MSC_VER'
others='__linux(__)?|__gnu_linux__|__unix(__)?|__APPLE__|__MACH__|__ANDROID__|__[A-Za-z]+BSD__|__GLIBC__|_POSIX(_[A-Z_]+)?'
mapfile -d '' files < <(find "${folders[@]}" \( -name '*.cpp' -o -name '*.hpp' -o -name '*.h' -o -name '*.c' \) \
    ! -name '*_posix.*' ! -name '*_linux.*' ! -name '*_windows.*' ! -name '*_winsock.*' -print0)
[ ${#files[@]} -gt 0 ] || fail "no sources in $PWD"
if grep -nHwE "($windows|$others)" "${files[@]}" >&2; then
    fail "the lines above name a platform: move what differs into a file of the platform's own"
fi
