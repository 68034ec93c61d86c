#!/usr/bin/env bash
# Lets mandoc look for mistakes in manual pages, after making sure that it finds one.
#
# usage: check_man_pages.sh PAGE...
set -euo pipefail

[ $# -gt 0 ] || { echo "usage: $0 PAGE..." >&2; exit 2; }
command -v mandoc >/dev/null || { echo "there is no mandoc: run scripts/setup.sh test, or install it" >&2; exit 1; }
look() { mandoc -Tlint -Wwarning "$@"; }

wrong='.Dd January 1, 2024
.Dt PAGE 1
.Os
.Sh NAME
.Nm page
.Nd a page
.Sh DESCRIPTION
.Nosuchmacro'
! look <<<"$wrong" >/dev/null || { echo "mandoc accepts a macro that does not exist" >&2; exit 1; }

mistakes=0
for page in "$@"; do
    look "$page" || mistakes=1
done
exit $mistakes
