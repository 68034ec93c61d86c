# The part that the scripts share: the checkout's root, and how they speak. To be sourced.
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

# Lets every build that starts from here go through ccache where that is installed, so that another checkout
# profits as well: paths below the root count by their end alone. Precompiled headers are made again whenever
# their headers' content changes, so macros and times need not be looked at.
use_compiler_cache() {
    command -v ccache >/dev/null || return 0
    export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
    export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1
    export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
}

# Configures a preset unless that is done; the rest of the arguments go to CMake. A build folder that
# was copied from another place would go on building there, so it is made anew.
configure() {
    local preset=$1 folder=$root/build/$1
    shift
    use_compiler_cache
    if [ -e "$folder/CMakeCache.txt" ] &&
        ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$folder/CMakeCache.txt"; then
        rm -rf "$folder"
    fi
    if [ $# -gt 0 ] || [ ! -e "$folder/build.ninja" ]; then
        (cd "$root" && cmake --preset "$preset" "$@" >&2)
    fi
}
