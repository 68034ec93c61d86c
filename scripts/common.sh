# What the scripts share: the checkout's root, and how they speak. To be sourced.
# shellcheck shell=bash
root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
script=$(basename "$0")

say() {
    printf '%s: %s\n' "$script" "$*" >&2
}

fail() {
    say "$*"
    exit 1
}

# Configures a preset unless that is done; the rest of the arguments go to CMake. A build folder that
# was copied from another place would go on building there, so it is made anew.
configure() {
    local preset=$1 folder=$root/build/$1
    shift
    if [ -e "$folder/CMakeCache.txt" ] &&
        ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$folder/CMakeCache.txt"; then
        rm -rf "$folder"
    fi
    if [ $# -gt 0 ] || [ ! -e "$folder/build.ninja" ]; then
        (cd "$root" && cmake --preset "$preset" "$@" >&2)
    fi
}
