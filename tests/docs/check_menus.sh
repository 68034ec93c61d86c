#!/usr/bin/env bash
# Compares the entries of the console tool's menus with the items of its manual page, in their order.
#
# usage: check_menus.sh MENUS-HEADER PAGE
set -euo pipefail

menus=$(grep -vE '^ *//|^#' "$1" | grep -o '"[^"]*"' | tr -d '"')
items=$(sed -n '/^\.Sh MENU$/,/^\.Sh EXIT STATUS$/ s/^\.It //p' "$2")
[ "$(wc -l <<<"$menus")" -ge 10 ] || { echo "check_menus: $1 shows no menus" >&2; exit 1; }
diff <(printf '%s\n' "$menus") <(printf '%s\n' "$items") || { echo "check_menus: the page has other entries (\">\")" >&2; exit 1; }
