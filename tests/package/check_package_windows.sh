#!/usr/bin/env bash
# Installs the cross-built library into a scratch prefix, builds the consumer project against it with the
# cross compiler, and runs that under the emulator. The static kind makes a build of the library alone first.
#
# usage: check_package_windows.sh shared|static SOURCE-FOLDER BUILD-FOLDER SCRATCH-FOLDER EMULATOR...
set -euo pipefail

kind=$1
source=$2
build=$3
scratch=$4
emulator=("${@:5}")
here=$source/tests/package
toolchain=$source/cmake/windows_toolchain.cmake

fail() {
    printf 'check_package_windows: %s\n' "$*" >&2
    exit 1
}

rm -rf "$scratch"
mkdir -p "$scratch"
if [ "$kind" = static ]; then
    build=$scratch/plain
    cmake -S "$source" -B "$build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DBUILD_SHARED_LIBS=OFF \
        -DCMAKE_UNITY_BUILD=ON -DORVANTA_BUILD_TESTS=OFF -DORVANTA_BUILD_PROGRAMS=OFF
    cmake --build "$build" --parallel 2
fi
cmake --install "$build" --prefix "$scratch/first"
# Moved, so that nothing that remembers where it was installed to can work.
prefix=$scratch/moved
mv "$scratch/first" "$prefix"

consumer=$scratch/consumer
simulator=OFF
[ "$kind" = static ] || simulator=ON
cmake -S "$here/consumer" -B "$consumer" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
    -Dvantu_orvanta_DIR="$prefix/lib/cmake/vantu_orvanta" -DUSE_SIMULATOR=$simulator
cmake --build "$consumer" --parallel 2
cmake -S "$source/examples/event_loops" -B "$scratch/event_loops" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$toolchain" \
    -Dvantu_orvanta_DIR="$prefix/lib/cmake/vantu_orvanta"
cmake --build "$scratch/event_loops"
[ -s "$scratch/event_loops/windows_loop.exe" ] || fail "the example windows_loop is not built"
programs=("$consumer/flat.exe" "$consumer/classes.exe" "$consumer/readme_session.exe" "$consumer/readme_program.exe")
[ $simulator = OFF ] || programs+=("$consumer/simulated.exe")
"$here/check_imports.sh" "${programs[@]}" || fail "the consumer's programs need more than Windows"

library=libvantu_orvanta.dll
needs_library() {
    "${OBJDUMP:-x86_64-w64-mingw32-objdump}" -p "$1" | grep "DLL Name: $library" >/dev/null
}
if [ "$kind" = shared ]; then
    "$here/check_imports.sh" "$prefix"/bin/*.exe "$prefix/bin/$library" || fail "what is installed needs more than Windows"
    "$here/check_exports.sh" "$prefix/bin/$library" "$here/public_functions.txt" || fail "the installed library is not the one"
    needs_library "$consumer/flat.exe" || fail "the consumer does not use the shared library"
    # Windows looks for a library beside the program.
    cp "$prefix/bin/$library" "$consumer"
else
    [ -z "$(find "$prefix" -iname '*.dll' -o -iname '*.dll.a')" ] || fail "a static build installed a shared library"
    ! needs_library "$consumer/flat.exe" || fail "the consumer uses a shared library"
fi
"${emulator[@]}" "$consumer/flat.exe" || fail "flat fails"
"${emulator[@]}" "$consumer/classes.exe" || fail "classes fails"
if [ "$kind" = shared ]; then
    "${emulator[@]}" "$consumer/simulated.exe" || fail "simulated fails"
    for program in orvanta-simulator orvanta-conformance orvanta-cli orvantactl; do
        [ -s "$prefix/bin/$program.exe" ] || fail "$program is not installed"
    done
    version=$("${emulator[@]}" "$prefix/bin/orvanta-simulator.exe" --version | tr -d '\r')
    [[ $version =~ ^orvanta-simulator\ [0-9]+\.[0-9]+\.[0-9]+$ ]] || fail "the installed simulator says '$version'"
fi
printf 'the %s installation for Windows serves another project\n' "$kind"
