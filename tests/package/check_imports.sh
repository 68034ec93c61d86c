#!/usr/bin/env bash
# Refuses Windows programs and libraries that need more than Windows itself and this project's library: no
# DLL of the compiler has to lie beside them.
#
# usage: check_imports.sh FILE...       ($OBJDUMP reads them)
set -euo pipefail

[ $# -gt 0 ] || { echo "usage: $0 FILE..." >&2; exit 2; }
of_windows='^(kernel32|msvcrt|ucrtbase|api-ms-win-crt-[-a-z0-9]+|ws2_32|winmm|iphlpapi|advapi32|bcrypt)\.dll$'
broken=0
for file in "$@"; do
    needed=$("${OBJDUMP:-x86_64-w64-mingw32-objdump}" -p "$file" | sed -n 's/^[[:space:]]*DLL Name: //p' | tr '[:upper:]' '[:lower:]')
    # Every program needs the kernel: no line at all means that nothing was read.
    grep -qx 'kernel32\.dll' <<<"$needed" || { echo "check_imports: $file shows no imports" >&2; broken=1; }
    foreign=$(grep -vE "$of_windows|^libvantu_orvanta\.dll$" <<<"$needed" | tr '\n' ' ' || true)
    [ -z "$foreign" ] || { echo "check_imports: $file needs $foreign" >&2; broken=1; }
done
[ $broken = 0 ] || exit 1
printf '%d files need Windows alone\n' $#
