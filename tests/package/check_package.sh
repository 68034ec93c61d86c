#!/usr/bin/env bash
# Installs the library into a scratch prefix, looks at what was installed, and builds and runs the
# consumer project against it. The static kind makes a plain build of its own first.
#
# usage: check_package.sh shared|static SOURCE-FOLDER BUILD-FOLDER SCRATCH-FOLDER
set -euo pipefail

kind=$1
source=$2
build=$3
scratch=$4
here=$source/tests/package

fail() {
    printf 'check_package: %s\n' "$*" >&2
    exit 1
}

rm -rf "$scratch"
mkdir -p "$scratch"
if [ "$kind" = static ]; then
    build=$scratch/plain
    cmake -S "$source" -B "$build" -G Ninja -DBUILD_SHARED_LIBS=OFF -DORVANTA_BUILD_TESTS=OFF -DCMAKE_UNITY_BUILD=ON
    grep -q '^CMAKE_BUILD_TYPE:STRING=Release$' "$build/CMakeCache.txt" || fail "a plain build is not a Release build"
    grep -Eq '"command": .* -O[23] ' "$build/compile_commands.json" || fail "a plain build is not optimised"
    cmake --build "$build" --parallel 2
fi
cmake --install "$build" --prefix "$scratch/first"
# Moved, so that nothing that remembers where it was installed to can work.
prefix=$scratch/moved
mv "$scratch/first" "$prefix"

headers=$(cd "$prefix/include" && find . -type f | sort | tr '\n' ' ')
wanted='./vantu/orvanta/client.hpp ./vantu/orvanta/communication/records.h ./vantu/orvanta/error_codes.h ./vantu/orvanta/export.h ./vantu/orvanta/orvanta.h ./vantu/orvanta/simulator.hpp ./vantu/orvanta/wait.h '
[ "$headers" = "$wanted" ] || fail "installed headers are $headers"

scenarios=$(cd "$source/simulator/scenarios" && ls)
installed=$(cd "$prefix/share/orvanta/scenarios" && ls)
[ "$installed" = "$scenarios" ] || fail "installed scenarios are $installed"
for page in man1/orvanta-simulator.1 man5/orvanta-scenario.5; do
    [ -s "$prefix/share/man/$page" ] || fail "$page is not installed"
done

# Prints the names of the libraries that a program or library needs at run time.
needs() {
    ldd "$1" | sed -e 's/^[[:space:]]*//' -e 's/ .*//' -e 's,.*/,,' | sort
}
runtime='^(linux-vdso|ld-linux[-a-z0-9_]*|libc|libm|libgcc_s|libstdc\+\+|libpthread)\.so'

consumer=$scratch/consumer
cmake -S "$here/consumer" -B "$consumer" -G Ninja -DCMAKE_PREFIX_PATH="$prefix"
grep -q "^vantu_orvanta_DIR:PATH=$prefix/" "$consumer/CMakeCache.txt" || fail "another vantu_orvanta was found"
cmake --build "$consumer" --verbose
for program in flat classes readme_program simulated; do
    included=$(ninja -C "$consumer" -t deps | sed -n "\\,^CMakeFiles/$program\\.dir/,,/^\$/p")
    grep -q '/vantu/orvanta/' <<<"$included" || fail "$program shows no header of the installation"
    foreign=$(grep -E 'fmt/|nlohmann/|CLI/' <<<"$included" || true)
    [ -z "$foreign" ] || fail "$program includes what only this project needs: $foreign"
done
"$consumer/flat"
"$consumer/classes"
"$consumer/simulated"

cmake -S "$source/examples/watch" -B "$scratch/watch" -G Ninja -DCMAKE_PREFIX_PATH="$prefix"
cmake --build "$scratch/watch"
"$scratch/watch/watch_test" | tee "$scratch/watch.txt"
[ "$(grep -c '^ok: ' "$scratch/watch.txt")" -ge 9 ] || fail "the example's test says less than it should"

cmake -S "$source/examples/event_loops" -B "$scratch/event_loops" -G Ninja -DCMAKE_PREFIX_PATH="$prefix"
cmake --build "$scratch/event_loops"
for loop in poll_loop epoll_loop asio_loop; do
    [ -x "$scratch/event_loops/$loop" ] || fail "the example $loop is not built"
done

if [ "$kind" = shared ]; then
    library=$prefix/lib/libvantu_orvanta.so
    [ -e "$library" ] || library=$(find "$prefix" -name libvantu_orvanta.so)
    surplus=$(nm -D --defined-only --demangle "$library" | cut -d' ' -f3- |
        grep -vE '^(vantu_orvanta_[a-z0-9_]+$|(non-virtual thunk to |vtable for |typeinfo for |typeinfo name for )?vantu::orvanta::)' || true)
    [ -z "$surplus" ] || fail "the library shows more than its own names: $surplus"
    nm -D --defined-only "$library" | grep ' T vantu_orvanta_poll$' >/dev/null || fail "vantu_orvanta_poll is not exported"
    foreign=$(needs "$library" | grep -vE "$runtime" || true)
    [ -z "$foreign" ] || fail "the library needs $foreign"
    needs "$consumer/flat" | grep '^libvantu_orvanta\.so' >/dev/null || fail "the consumer does not use the shared library"
    runtime+='|^libvantu_orvanta\.so'
else
    [ -z "$(find "$prefix" -name 'libvantu_orvanta.so*')" ] || fail "a static build installed a shared library"
fi
for program in "$prefix/bin/orvanta-cli" "$prefix/bin/orvanta-simulator" "$consumer/flat" "$consumer/classes" \
    "$consumer/simulated" "$scratch/watch/watch_test"; do
    [ -x "$program" ] || fail "$program is missing"
    ! ldd "$program" | grep 'not found' || fail "$program does not find its libraries"
    foreign=$(needs "$program" | grep -vE "$runtime" || true)
    [ -z "$foreign" ] || fail "$program needs $foreign"
done
"$prefix/bin/orvanta-simulator" --version >/dev/null || fail "the installed simulator does not start"
printf 'the %s installation serves another project\n' "$kind"
