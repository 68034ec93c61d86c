#!/usr/bin/env bash
# Writes the documentation of the public headers with doxygen, and refuses a public name without a comment.
#
# usage: scripts/build_api_docs.sh FOLDER VERSION [CHECKOUT]     (FOLDER is written; this checkout by default)
set -euo pipefail
. "$(dirname "$(readlink -f "$0")")/common.sh"

[ $# -ge 2 ] || fail "usage: $0 FOLDER VERSION [CHECKOUT]"
for tool in doxygen python3; do
    command -v "$tool" >/dev/null || fail "there is no $tool: run scripts/setup.sh test, or install it"
done
mkdir -p "$1"
folder=$(readlink -f "$1")
cd "${3:-$root}"

rm -rf "$folder/html" "$folder/xml"
{
    cat docs/Doxyfile
    printf 'OUTPUT_DIRECTORY = "%s"\nPROJECT_NUMBER = %s\n' "$folder" "$2"
} | doxygen - || fail "doxygen refuses the public headers: see the lines above"
# It says nothing of enumerators, nor of members without a name of their own.
"$root/scripts/check_documented_names.py" "$folder/xml" || fail "the names above have no comment"
say "wrote $folder/html/index.html"
