#!/usr/bin/env bash
# Runs a Windows program under Wine, in a prefix of its own that is made when it is missing.
#
# usage: scripts/wine.sh PREFIX-FOLDER PROGRAM [ARGUMENT...]
set -euo pipefail
[ $# -ge 2 ] || {
    printf 'usage: %s PREFIX-FOLDER PROGRAM [ARGUMENT...]\n' "$0" >&2
    exit 2
}
export WINEPREFIX=$1 WINEDEBUG=-all WINEDLLOVERRIDES='mscoree,mshtml=' DISPLAY=
shift

# Wine has data at a fixed address. Where addresses are random it finds that place taken once in some thousand
# starts, and ends with status 1 before the program begins.
fixed_addresses=()
if setarch -R true 2>/dev/null; then
    fixed_addresses=(setarch -R)
fi

if [ ! -e "$WINEPREFIX/ready" ]; then
    mkdir -p "$WINEPREFIX"
    exec 9>"$WINEPREFIX/making"
    flock 9
    if [ ! -e "$WINEPREFIX/ready" ]; then
        "${fixed_addresses[@]}" wine wineboot --init >/dev/null 2>&1 9>&-
        # A program that crashes ends at once: without a debugger that prints where.
        wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /v Debugger /d none /f >/dev/null 2>&1 9>&-
        touch "$WINEPREFIX/ready"
    fi
    exec 9>&-
fi
exec "${fixed_addresses[@]}" wine "$@"
