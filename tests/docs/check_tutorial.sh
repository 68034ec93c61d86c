#!/usr/bin/env bash
# Follows docs/tutorial.md in a copy of the checkout, with a home of its own.
#
# usage: check_tutorial.sh CHECKOUT SCRATCH-FOLDER [COMPILER-LAUNCHER]
set -euo pipefail

source=$1
scratch=$2
rm -rf "$scratch"
mkdir -p "$scratch/home" "$scratch/clone"
tar -C "$source" --exclude='./build*' --exclude='./.*' -cf - . | tar -C "$scratch/clone" -xf -
# There is no network to fetch it from.
[ ! -e "$source/.deps" ] || ln -s "$source/.deps" "$scratch/clone/.deps"
if [ "${3##*/}" = ccache ]; then
    CCACHE_DIR=$(ccache --get-config cache_dir)
    CCACHE_BASEDIR=$(ccache --get-config base_dir)
    export CCACHE_DIR CCACHE_BASEDIR CMAKE_CXX_COMPILER_LAUNCHER=$3 CMAKE_C_COMPILER_LAUNCHER=$3
fi
export HOME=$scratch/home
export CMAKE_GENERATOR=Ninja
unset PKG_CONFIG_PATH CMAKE_PREFIX_PATH CMAKE_BUILD_TYPE

cd "$scratch/clone"
"$source/tests/docs/run_document.sh" docs/tutorial.md "$source/examples/session"
