#!/usr/bin/env bash
# Holds scripts/check_platform_conditions.sh against small trees: each name of a platform is refused
# wherever it stands, and accepted in the platform's own files.
#
# usage: check_platform_conditions_test.sh SCRIPT SCRATCH-FOLDER
set -euo pipefail

script=$1
scratch=$2
failures=0

# The verdict on a tree in which FILE has the line LINE: accepted or refused.
verdict() {
    rm -rf "$scratch"
    mkdir -p "$scratch/src" "$scratch/$(dirname "$1")"
    printf '// Another source.\n' >"$scratch/src/another.cpp"
    printf '// A source.\n%s\n' "$2" >"$scratch/$1"
    if "$script" "$scratch" >/dev/null 2>&1; then echo accepted; else echo refused; fi
}

expect() {
    local got
    got=$(verdict "$2" "$3")
    [ "$got" = "$1" ] || { printf '%s with "%s" is %s\n' "$2" "$3" "$got" >&2; failures=$((failures + 1)); }
}

for name in _WIN32 _WIN64 WIN32 __WIN32__ __MINGW32__ __MINGW64__ __CYGWIN__ _MSC_VER __linux__ __linux \
    __gnu_linux__ __unix__ __unix __APPLE__ __MACH__ __ANDROID__ __FreeBSD__ __GLIBC__ _POSIX_VERSION; do
    expect refused src/network/socket.cpp "#ifdef $name"
done
for folder in src app ctl shared simulator conformance dissector bench tests examples; do
    expect refused "$folder/any.cpp" '#if defined(_WIN32)'
    expect accepted "$folder/any.cpp" '#if defined(FEATURE)'
done
for file in src/any.hpp src/any.h tests/any.c src/windows.cpp; do
    expect refused "$file" '#if defined(FEATURE) && !defined(_MSC_VER)'
done
expect refused src/any.cpp '    defined(_WIN32)'
for file in src/any_windows.cpp src/any_posix.cpp src/any_winsock.hpp tests/any_linux.cpp; do
    expect accepted "$file" '#ifdef _WIN32'
done
expect accepted src/any.cpp 'int MY_WIN32_LOOKALIKE = 0;'

# Nothing to look at is no success.
rm -rf "$scratch"
mkdir -p "$scratch"
if "$script" "$scratch" >/dev/null 2>&1; then
    echo "an empty tree is accepted" >&2
    failures=$((failures + 1))
fi
[ $failures = 0 ] || exit 1
echo "every name of a platform is refused outside the platform's files"
