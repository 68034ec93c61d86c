#!/usr/bin/env bash
# The rules that need no compiler: layout, file length, a first comment, includes, no platform conditions, no
# test that is left out. Files that are very short are told and not refused.
#
# usage: scripts/check_style.sh [FOLDER]     (a checkout; this one by default)
set -euo pipefail
. "$(dirname "$(readlink -f "$0")")/common.sh"
cd "${1:-$root}"

folders=()
for folder in src app ctl shared simulator conformance dissector tests bench examples fuzz; do
    [ ! -d "$folder" ] || folders+=("$folder")
done
[ ${#folders[@]} -gt 0 ] || fail "no sources in $PWD"
mapfile -d '' sources < <(find "${folders[@]}" \
    \( -name '*.cpp' -o -name '*.hpp' -o -name '*.h' -o -name '*.c' \) -print0 | sort -z)
mapfile -d '' others < <(find . -path './build*' -prune -o -path './.*' -prune -o -type f \( -name CMakeLists.txt -o \
    -name '*.cmake' -o -name '*.cmake.in' -o -name '*.lua' -o -name '*.sh' -o -name '*.py' -o -name run -o -name test \) -printf '%P\0')
[ ${#sources[@]} -gt 0 ] || fail "no sources in $PWD"
broken=0
refuse() {
    printf '%s\n' "$*" >&2
    broken=1
}

# The first line of each complaint says all.
command -v clang-format >/dev/null || fail "there is no clang-format"
complaints=$(clang-format --dry-run --Werror --style=file "${sources[@]}" 2>&1 | grep -E '(error|warning):' || true)
[ -z "$complaints" ] || refuse "$complaints"

for file in "${sources[@]}" "${others[@]}"; do
    lines=$(wc -l <"$file")
    [ "$lines" -le 400 ] || refuse "$file: $lines lines, at most 400 are allowed"
done

# Headers by their name without its end: beside their source, or in the include folder of a folder around it.
declare -A headers
for file in "${sources[@]}"; do
    case $file in
    *.h | *.hpp)
        name=${file%.*}
        headers[$name]=1
        [[ $name != */include/* ]] || headers[${name%%/include/*}/${name##*/}]=1
        ;;
    esac
done
has_header() {
    local folder=${1%/*} name=${1##*/}
    while [ -z "${headers[$folder/${name%.*}]-}" ]; do
        [[ $folder == */* ]] || return 1
        folder=${folder%/*}
    done
}

short=()
for file in "${sources[@]}"; do
    # docs/tutorial.md shows the smallest programs whole and says what each is for.
    [[ $file != examples/session/* ]] || continue
    read -r first <"$file" || true
    case $first in
    //* | /\**) ;;
    *) [[ $file == *.@(c|cpp) ]] && has_header "$file" || refuse "$file:1: opens without a comment that says what the file is for" ;;
    esac
    case $file in
    *_posix.* | *_linux.* | *_windows.* | *_winsock.*) ;;
    *) [ "$(wc -l <"$file")" -ge 25 ] || short+=("$file") ;;
    esac
done
[ ${#short[@]} = 0 ] || say "shorter than 25 lines, and perhaps part of a neighbour: ${short[*]}"

if [ -d src ] && grep -rnE '^[[:space:]]*#[[:space:]]*include[[:space:]]*[<"]([^<>"]*/)?\.\./' src >&2; then
    refuse "an include names its file from the layer's folder, not by way of the folder above"
fi

"$root/scripts/check_platform_conditions.sh" "$PWD" || broken=1

# C needs typedef; clang-tidy's own check does not know that orvanta.h and records.h are C as well.
for file in "${sources[@]}"; do
    case $file in
    *.h | *.c) ;;
    *)
        if grep -nHE '^[[:space:]]*typedef ' "$file" >&2; then
            refuse "$file: says typedef where it should say using"
        fi
        ;;
    esac
done

# A comment's line begins with its subject.
if grep -nHE '(//+|/\*+|^[[:space:]]*\*)<?[[:space:]]+(Who|What|Of)([^[:alnum:]_]|$)' "${sources[@]}" >&2; then
    refuse "the comments above open with Who, What or Of: begin with the subject"
fi

left_out='TODO|FIXME|GTEST_SKIP|[(,][[:space:]]*DISABLED_'
if grep -nHE "$left_out" "${sources[@]}" >&2; then
    refuse "nothing may be left for later or left out"
fi
exit $broken
