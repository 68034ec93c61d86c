#!/usr/bin/env bash
# Builds the library from two copies of the sources, each in a folder of its own, and compares all that they
# install, byte for byte. No compiler cache: it would give the second what the first made.
#
# usage: check_reproducible.sh SOURCE-FOLDER SCRATCH-FOLDER
set -euo pipefail

source=$1
scratch=$2
export CCACHE_DISABLE=1

fail() {
    printf 'check_reproducible: %s\n' "$*" >&2
    exit 1
}

rm -rf "$scratch"
# A build folder within the sources, and one beside them.
sources=("$scratch/one" "$scratch/another folder/of the sources")
builds=("$scratch/one/build/first" "$scratch/second")
for i in 0 1; do
    mkdir -p "${sources[i]}"
    cp -R "$source/CMakeLists.txt" "$source/LICENSE" "$source/THIRD_PARTY.md" "$source/CHANGELOG.md" "$source/cmake" "$source/scripts" "$source/src" "$source/examples" "${sources[i]}"
    [ ! -e "$source/.deps" ] || ln -s "$(readlink -f "$source/.deps")" "${sources[i]}/.deps"
    cmake -S "${sources[i]}" -B "${builds[i]}" -G Ninja -DCMAKE_UNITY_BUILD=ON -DORVANTA_BOTH_KINDS=ON \
        -DORVANTA_BUILD_PROGRAMS=OFF -DORVANTA_BUILD_TESTS=OFF >/dev/null
    cmake --build "${builds[i]}" --parallel 2
    cmake --install "${builds[i]}" --prefix "$scratch/prefix$i" >/dev/null
done

for file in lib/libvantu_orvanta.so lib/libvantu_orvanta.a lib/pkgconfig/vantu_orvanta.pc; do
    [ -s "$scratch/prefix0/$file" ] || fail "$file is not installed"
done
diff -r "$scratch/prefix0" "$scratch/prefix1" || fail "two build folders install different files"
! grep -rlF "$scratch" "$scratch/prefix0" "$scratch/prefix1" || fail "the files above hold paths of this machine"
printf 'two build folders give the same %s files\n' "$(find "$scratch/prefix0" -type f | wc -l)"
