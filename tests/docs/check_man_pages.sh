#!/usr/bin/env bash
# Lets mandoc, or else groff, look for mistakes in manual pages. Ends with 77 where there is neither.
#
# usage: check_man_pages.sh PAGE...
set -euo pipefail

if command -v mandoc >/dev/null; then
    look() { mandoc -Tlint -Wwarning "$1"; }
elif command -v groff >/dev/null; then
    look() { groff -mdoc -ww -z -Tutf8 "$1" 2>&1; }
else
    echo "skipped: there is neither mandoc nor groff"
    exit 77
fi

mistakes=0
for page in "$@"; do
    complaints=$(look "$page" || true)
    [ -z "$complaints" ] || { printf '%s\n' "$complaints"; mistakes=1; }
done
exit $mistakes
