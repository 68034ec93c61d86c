#!/usr/bin/env bash
# Compares docs/platforms.md's list of tests that run on one platform alone with what is built on this one:
# a test source that is not built must be listed for the other, and one that is built must not.
#
# usage: check_tests_of_one_platform.sh LINUX|WINDOWS SOURCE-FOLDER BUILT-SOURCES      (one path a line)
set -euo pipefail
export LC_ALL=C

here=$1
source=$2
built_list=$3
document=$source/docs/platforms.md

# The rows of the list: "path platform", without the table's head.
rows=$(sed -n '/^## Tests that run on one system alone/,/^## [^T]/p' "$document" |
    sed -nE 's/^\| `([^`]+)` \| (Linux|Windows) \| [^|]+ \|$/\1 \2/p')
malformed=$(sed -n '/^## Tests that run on one system alone/,/^## [^T]/p' "$document" | grep '^| `' |
    grep -vE '^\| `[^`]+` \| (Linux|Windows) \| [^|]+ \|$' || true)
[ -z "$malformed" ] || { printf 'rows that lack a platform or a reason:\n%s\n' "$malformed" >&2; exit 1; }

# A row may name a folder, which stands for all that is in it.
listed_for() {
    local row
    sed -nE "s/^(tests\/.*) $1\$/\1/p" <<<"$rows" | while read -r row; do
        case $row in
        */) grep "^$row" <<<"$all" || printf '%s\n' "$row" ;;
        *) printf '%s\n' "$row" ;;
        esac
    done | sort -u
}
if [ "$here" = WINDOWS ]; then own=Windows other=Linux; else own=Linux other=Windows; fi

all=$(cd "$source" && find tests -name '*_test.c' -o -name '*_test.cpp' | sort)
built=$(grep -E '_test\.(c|cpp)$' "$built_list" | sed "s,^$source/,," | sort -u)
[ -n "$all" ] && [ -n "$built" ] || { echo "no test sources found" >&2; exit 1; }

broken=0
if ! difference=$(diff <(listed_for $other) <(comm -23 <(printf '%s\n' "$all") <(printf '%s\n' "$built"))); then
    printf 'tests of %s: "<" is listed and runs here as well, ">" does not run here and is not listed:\n%s\n' \
        "$other" "$difference" >&2
    broken=1
fi
missing=$(comm -23 <(listed_for $own) <(printf '%s\n' "$built"))
[ -z "$missing" ] || { printf 'listed for %s and not built there:\n%s\n' "$own" "$missing" >&2; broken=1; }
[ $broken = 0 ] || exit 1
printf '%d of %d test sources run here; the rest is listed for %s\n' \
    "$(wc -l <<<"$built")" "$(wc -l <<<"$all")" "$other"
