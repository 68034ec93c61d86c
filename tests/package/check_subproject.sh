#!/usr/bin/env bash
# Makes the project a part of another by add_subdirectory: the parent's cache and installation stay its own, it
# needs nothing but the library's own dependencies, and no network unasked.
#
# usage: check_subproject.sh SOURCE-FOLDER SCRATCH-FOLDER
set -euo pipefail

source=$1
scratch=$2
here=$source/tests/package

fail() {
    printf 'check_subproject: %s\n' "$*" >&2
    exit 1
}

rm -rf "$scratch"
mkdir -p "$scratch"
# What the programs and the tests need is not there.
absent=()
for package in CLI11 nlohmann_json GTest benchmark; do
    absent+=("-DCMAKE_DISABLE_FIND_PACKAGE_$package=ON")
done
configure() {
    cmake --no-warn-unused-cli -S "$here/parent" -B "$scratch/$1" -G Ninja "${absent[@]}" "${@:2}"
}

configure parent -DORVANTA_SOURCES="$source" -DCMAKE_UNITY_BUILD=ON
cache=$scratch/parent/CMakeCache.txt
! grep '^BUILD_SHARED_LIBS' "$cache" || fail "the parent's kind of libraries was chosen for it"
grep -q '^CMAKE_BUILD_TYPE:STRING=$' "$cache" || fail "the parent's kind of build was chosen for it"
for option in BUILD_PROGRAMS BUILD_TESTS INSTALL FETCH WERROR; do
    grep -q "^ORVANTA_$option:BOOL=OFF$" "$cache" || fail "ORVANTA_$option is on in another project"
done
commands=$scratch/parent/compile_commands.json
grep -q '"command": .* -Wshadow .*/orvanta_runtime\.dir/' "$commands" || fail "the part's commands cannot be read"
! grep '"command": .* -Werror .*/orvanta_[a-z]*\.dir/' "$commands" || fail "warnings of newer compilers end the parent's build"
grep -q -- '"command": .*-std=c++17 .*classes\.cpp' "$commands" || fail "the parent's standard is not its own"
cmake --build "$scratch/parent" --parallel 2
"$scratch/parent/flat" && "$scratch/parent/classes" || fail "the parent's programs fail"
cmake --install "$scratch/parent" --prefix "$scratch/installed"
installed=$(cd "$scratch/installed" && find . -type f | sort | tr '\n' ' ')
[ "$installed" = './bin/flat ' ] || fail "the parent installs $installed"

configure strict -DORVANTA_SOURCES="$source" -DORVANTA_WERROR=ON -DBUILD_SHARED_LIBS=ON >/dev/null
grep -q '"command": .* -Werror .*/orvanta_runtime\.dir/' "$scratch/strict/compile_commands.json" || fail "ORVANTA_WERROR does nothing"
grep -q 'libvantu_orvanta\.so' "$scratch/strict/build.ninja" || fail "the parent does not get the shared library it asks for"

# Without fmt, and with a script that tells when it is called in the place of the one that fetches it.
bare=$scratch/bare
mkdir -p "$bare/scripts"
cp -R "$source/CMakeLists.txt" "$source/cmake" "$source/src" "$bare"
printf '#!/bin/sh\ntouch "%s"\nexit 1\n' "$scratch/fetched" >"$bare/scripts/fetch_fmt.sh"
chmod +x "$bare/scripts/fetch_fmt.sh"
absent+=(-DCMAKE_DISABLE_FIND_PACKAGE_fmt=ON)
! configure offline -DORVANTA_SOURCES="$bare" >"$scratch/offline.log" 2>&1 || fail "fmt is found where there is none"
grep -q ORVANTA_FETCH "$scratch/offline.log" || fail "the message does not name the option: see $scratch/offline.log"
[ ! -e "$scratch/fetched" ] || fail "the configure step fetches unasked"
! configure online -DORVANTA_SOURCES="$bare" -DORVANTA_FETCH=ON >"$scratch/online.log" 2>&1 || fail "a failed fetch is passed over"
[ -e "$scratch/fetched" ] || fail "ORVANTA_FETCH does nothing: see $scratch/online.log"
printf 'the project is a quiet part of another\n'
