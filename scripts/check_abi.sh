#!/usr/bin/env bash
# Compares the library's binary interface with the recorded one: no public function may have gone or changed, nor
# the layout of a public type. New functions are welcome. Builds a copy of the library with debug information.
#
# usage: scripts/check_abi.sh [--record] [BUILD-FOLDER]     (build/abi by default)
#
# --record writes the description anew. The exit status is 77 where there is no description for the machine.
set -euo pipefail
. "$(dirname "$(readlink -f "$0")")/common.sh"

record=0
if [ "${1-}" = --record ]; then
    record=1
    shift
fi
build=$(realpath -m "${1-$root/build/abi}")
system=$(uname -m)-$(uname -s | tr '[:upper:]' '[:lower:]')
description=$root/cmake/abi/$system.abi
if [ $record = 0 ] && [ ! -e "$description" ]; then
    say "nothing to compare with: there is no $description"
    exit 77
fi
command -v abidw >/dev/null || fail "there is no abidw: run scripts/setup.sh test, or install abigail-tools"

# The description tells of g++'s types.
mkdir -p "$build"
use_compiler_cache
CC=gcc CXX=g++ cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=None \
    -DCMAKE_CXX_FLAGS='-g -O0' -DCMAKE_UNITY_BUILD=ON -DORVANTA_BUILD_PROGRAMS=OFF -DORVANTA_BUILD_TESTS=OFF \
    >"$build.log" || fail "configuring failed: see $build.log"
cmake --build "$build" --parallel 2 >>"$build.log" || fail "building failed: see $build.log"
rm -rf "$build/prefix"
cmake --install "$build" --prefix "$build/prefix" >>"$build.log"

# Types that the functions reach by way of a template or of bytes alone: a function for each brings them in.
headers=$(cd "$build/prefix/include" && find . -name '*.h' -o -name '*.hpp' | sort)
types=$(cd "$build/prefix/include" && {
    # shellcheck disable=SC2086  # one header a word
    sed -nE 's/^(typedef )?(struct|union|enum) (vantu_orvanta_[a-z0-9_]+) \{$/\3/p' $headers
    # shellcheck disable=SC2086
    sed -nE 's/^enum class ([a-z0-9_]+) .*\{$/vantu::orvanta::\1/p' $headers
})
[ "$(wc -l <<<"$types")" -ge 24 ] || fail "the public headers have more types than these: $types"
{
    # shellcheck disable=SC2086
    printf '#include "%s"\n' $headers
    while read -r type; do
        printf 'extern "C" VANTU_ORVANTA_API void vantu_orvanta_abi_of_%s(const %s*) {}\n' "${type//:/_}" "$type"
    done <<<"$types"
} >"$build/types.cpp"
g++ -std=c++17 -g -fPIC -I "$build/prefix/include" -ffile-prefix-map="$build"=. -c "$build/types.cpp" -o "$build/types.o"
mapfile -t objects < <(find "$build/src" -name '*.o')
g++ -shared -o "$build/described.so" -Wl,--version-script="$root/cmake/exported_symbols.map" "${objects[@]}" "$build/types.o"

# The types of the public headers alone, and nothing of this machine. Other libraries come from other systems.
current=$build/current.abi
abidw --exported-interfaces-only --headers-dir "$build/prefix/include" --drop-private-types --drop-undefined-syms \
    --no-corpus-path --no-comp-dir-path --no-show-locs --no-parameter-names --no-elf-needed --out-file "$current" \
    "$build/described.so"
for name in vantu_orvanta_poll vantu_orvanta_table_block_301 on_config_handedness; do
    grep -qE "name='$name'" "$current" || fail "the description lacks $name: it tells nothing"
done

if [ $record = 1 ]; then
    cp "$current" "$description"
    say "wrote $description"
    exit 0
fi
abidiff --no-added-syms "$description" "$current" ||
    fail "the interface is not the recorded one: see above. Programs built against it would break; docs/packaging.md says what then"
