#!/usr/bin/env bash
# Compares what a shared library shows with the list of public functions, kept by hand: one line for each
# overload, without its parameters. In a *.so each of them carries the version of the interface.
#
# usage: check_exports.sh LIBRARY LIST       (LIBRARY: *.so or *.dll; $OBJDUMP reads the latter)
set -euo pipefail

library=$1
list=$2
[ -s "$library" ] && [ -s "$list" ] || { echo "check_exports: $library or $list is missing" >&2; exit 1; }

version=VANTU_ORVANTA_2

shown() {
    case $library in
    *.dll)
        "${OBJDUMP:-x86_64-w64-mingw32-objdump}" -p "$library" |
            sed -n '/Ordinal\/Name Pointer\] Table/,/^$/ s/^[[:space:]]*\[ *[0-9]*\] //p' | c++filt
        ;;
    *) nm -D --defined-only --demangle "$library" | cut -d' ' -f3- | grep -v "^$version\$" | sed "s/@@$version\$//" ;;
    esac
}

# Constructors are shown once for complete objects and once for bases. Catching the exception outside
# needs its type and its table.
functions=$(shown | sort -u | grep -vE '^(typeinfo|typeinfo name|vtable) for vantu::orvanta::exception$' |
    sed -E 's/\(.*//' | sort)
if ! difference=$(diff <(sort "$list") <(printf '%s\n' "$functions")); then
    printf 'check_exports: %s shows other functions than %s lists ("<" is missing, ">" is surplus):\n%s\n' \
        "$library" "$list" "$difference" >&2
    exit 1
fi
if [[ $library != *.dll ]]; then
    others=$(nm -D --defined-only "$library" | cut -d' ' -f3- | grep -vE "(^|@@)$version\$" || true)
    [ -z "$others" ] || { printf 'check_exports: without the version %s: %s\n' "$version" "$others" >&2; exit 1; }
    soname=$(objdump -p "$library" | sed -n 's/^ *SONAME *//p')
    [ "$soname" = "libvantu_orvanta.so.${version##*_}" ] || { echo "check_exports: the SONAME is $soname" >&2; exit 1; }
fi
printf '%s shows the %s public functions and nothing else\n' "${library##*/}" "$(wc -l <"$list")"
