#!/usr/bin/env bash
# Installs the library into a scratch prefix, looks at what was installed, builds and runs the consumer projects
# against it, and uninstalls. The static kind makes a plain build of its own first; "both" is a shared
# installation with the static library beside it.
#
# usage: check_package.sh shared|both|static SOURCE-FOLDER BUILD-FOLDER SCRATCH-FOLDER
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

# Public is what lies in vantu/orvanta itself, and the records.
headers=$(cd "$prefix/include" && find . -type f | sort)
wanted=$(cd "$source" && find src/*/include/vantu/orvanta simulator/include/vantu/orvanta -maxdepth 1 -type f |
    sed 's,^.*/include/,./,' | cat - <(printf './vantu/orvanta/%s\n' communication/records.h export.h) | sort)
[ "$headers" = "$wanted" ] || fail "installed headers are $headers"
for header in $headers; do
    # By itself, and with nothing but the installation.
    languages=('c++ -std=c++17')
    [[ $header != *.h ]] || languages+=('c -std=c11')
    for language in "${languages[@]}"; do
        # shellcheck disable=SC2086  # language and standard are two words
        c++ -x $language -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I "$prefix/include" - \
            <<<"#include \"$header\"
int something;" ||
            fail "$header does not compile as $language"
    done
done

scenarios=$(cd "$source/simulator/scenarios" && ls)
installed=$(cd "$prefix/share/orvanta/scenarios" && ls)
[ "$installed" = "$scenarios" ] || fail "installed scenarios are $installed"
for page in man1/orvanta-cli.1 man1/orvantactl.1 man1/orvanta-simulator.1 man1/orvanta-conformance.1 man5/orvanta-scenario.5; do
    [ -s "$prefix/share/man/$page" ] || fail "$page is not installed"
done

for file in orvanta/orvantactl.schema.json bash-completion/completions/orvantactl zsh/vendor-completions/_orvantactl \
    fish/vendor_completions.d/orvantactl.fish; do
    [ -s "$prefix/share/$file" ] || fail "share/$file is not installed"
done

cmp "$build/dissector/orvanta.lua" "$(find "$prefix"/lib* -path '*/wireshark/plugins/orvanta.lua')" || fail "the dissector is not installed"

# Prints the names of the libraries that a program or library needs at run time.
needs() {
    ldd "$1" | sed -e 's/^[[:space:]]*//' -e 's/ .*//' -e 's,.*/,,' | sort
}
runtime='^(linux-vdso|ld-linux[-a-z0-9_]*|libc|libm|libgcc_s|libstdc\+\+|libpthread)\.so'

consumer=$scratch/consumer
cmake -S "$here/consumer" -B "$consumer" -G Ninja -DCMAKE_PREFIX_PATH="$prefix"
grep -q "^vantu_orvanta_DIR:PATH=$prefix/" "$consumer/CMakeCache.txt" || fail "another vantu_orvanta was found"
cmake --build "$consumer" --verbose
for program in flat classes readme_session readme_program simulated; do
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

# The examples that are installed, as they are installed.
cmake -S "$prefix/share/doc/vantu_orvanta/examples/session" -B "$scratch/session" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_FLAGS="-Wall -Wextra -Wpedantic -Werror"
cmake --build "$scratch/session"

cmake -S "$here/c_consumer" -B "$scratch/c_consumer" -G Ninja -DCMAKE_PREFIX_PATH="$prefix"
cmake --build "$scratch/c_consumer"
"$scratch/c_consumer/flat_with_orvanta"

# Prints what pkg-config says of the moved installation.
package_flags() {
    PKG_CONFIG_LIBDIR=$(find "$prefix" -name pkgconfig -type d) pkg-config "$@" vantu_orvanta
}
[ "$(package_flags --modversion)" = "$(sed -n 's/^project(vantu_orvanta VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")" ] ||
    fail "pkg-config tells another version"
[ "$(readlink -f "$(package_flags --variable=prefix)")" = "$prefix" ] || fail "vantu_orvanta.pc remembers where it was installed to"
IFS=' ' read -r -a flags <<<"$(package_flags --cflags --libs)"
cc -std=c11 "$here/consumer/flat.c" -o "$scratch/flat_with_pkg_config" "${flags[@]}"
LD_LIBRARY_PATH=$(package_flags --variable=libdir) "$scratch/flat_with_pkg_config"

if [ "$kind" != shared ]; then
    IFS=' ' read -r -a flags <<<"$(package_flags --cflags --libs --static)"
    cc -std=c11 -static "$here/consumer/flat.c" -o "$scratch/flat_static" "${flags[@]}"
    "$scratch/flat_static"
fi
if [ "$kind" = both ]; then
    "$scratch/c_consumer/flat_with_orvanta_static"
    ! needs "$scratch/c_consumer/flat_with_orvanta_static" | grep '^libvantu_orvanta' || fail "orvanta_static is the shared library"
    ! nm "$scratch/c_consumer/flat_with_orvanta_static" | grep -w 'vantu_orvanta_poll' | grep -v ' t ' ||
        fail "the static library's functions are visible outside of the program"
fi

cmake -S "$source/examples/event_loops" -B "$scratch/event_loops" -G Ninja -DCMAKE_PREFIX_PATH="$prefix"
cmake --build "$scratch/event_loops"
for loop in poll_loop epoll_loop asio_loop; do
    [ -x "$scratch/event_loops/$loop" ] || fail "the example $loop is not built"
done

if [ "$kind" != static ]; then
    library=$prefix/lib/libvantu_orvanta.so
    [ -e "$library" ] || library=$(find "$prefix" -name libvantu_orvanta.so)
    # All in the version of the interface.
    surplus=$(nm -D --defined-only --demangle "$library" | cut -d' ' -f3- |
        grep -vE '^(VANTU_ORVANTA_2$|vantu_orvanta_[a-z0-9_]+@@VANTU_ORVANTA_2$|(non-virtual thunk to |vtable for |typeinfo for |typeinfo name for )?vantu::orvanta::.*@@VANTU_ORVANTA_2$)' || true)
    [ -z "$surplus" ] || fail "the library shows more than its own names: $surplus"
    nm -D --defined-only "$library" | grep ' T vantu_orvanta_poll@@VANTU_ORVANTA_2$' >/dev/null || fail "vantu_orvanta_poll is not exported"
    foreign=$(needs "$library" | grep -vE "$runtime" || true)
    [ -z "$foreign" ] || fail "the library needs $foreign"
    needs "$consumer/flat" | grep '^libvantu_orvanta\.so' >/dev/null || fail "the consumer does not use the shared library"
    runtime+='|^libvantu_orvanta\.so'
else
    [ -z "$(find "$prefix" -name 'libvantu_orvanta.so*')" ] || fail "a static build installed a shared library"
fi
for program in "$prefix/bin/orvanta-cli" "$prefix/bin/orvantactl" "$prefix/bin/orvanta-simulator" "$prefix/bin/orvanta-conformance" "$consumer/flat" "$consumer/classes" \
    "$consumer/simulated" "$scratch/watch/watch_test" "$scratch/session/"{list_devices,set_scaling_factor,cursor_to_csv}; do
    [ -x "$program" ] || fail "$program is missing"
    ! ldd "$program" | grep 'not found' || fail "$program does not find its libraries"
    foreign=$(needs "$program" | grep -vE "$runtime" || true)
    [ -z "$foreign" ] || fail "$program needs $foreign"
done
"$prefix/bin/orvanta-simulator" --version >/dev/null || fail "the installed simulator does not start"
"$prefix/bin/orvanta-conformance" --version >/dev/null || fail "the installed conformance kit does not start"
"$prefix/bin/orvantactl" --version >/dev/null || fail "the installed orvantactl does not start"

# Each component by itself: nothing belongs to none of them, and nothing to two.
for component in runtime development tools simulator; do
    cmake --install "$build" --prefix "$scratch/components/$component" --component $component >/dev/null
done
parts=$(find "$scratch/components" ! -type d -printf '%P\n' | cut -d/ -f2- | sort)
whole=$(find "$prefix" ! -type d -printf '%P\n' | sort)
[ "$parts" = "$whole" ] || fail "the components and the installation differ: $(diff <(echo "$parts") <(echo "$whole"))"
shipped() { (cd "$scratch/components/$1" && find . ! -type d | grep -vE "$2" || true); }
surplus=$(
    shipped runtime '/libvantu_orvanta\.so\.[0-9.]+$|/share/doc/'
    shipped development '/include/|\.(a|so|pc|cmake)$|/share/doc/.*/examples/'
    shipped tools '/bin/(orvanta-cli|orvantactl)$|/man1/(orvanta-cli|orvantactl)\.1$|/share/orvanta/orvantactl\.schema\.json$|completions|/wireshark/plugins/orvanta\.lua$'
    shipped simulator '/bin/orvanta-(simulator|conformance)$|/man[15]/orvanta-(simulator\.1|conformance\.1|scenario\.5)$|/scenarios/'
)
[ -z "$surplus" ] || fail "components hold what others should: $surplus"

# What belongs to nobody but this project is gone after an uninstallation, and a user's own file is not.
removed=$scratch/removed
cmake --install "$build" --prefix "$removed" >/dev/null
touch "$removed/lib/own"
cmake --build "$build" --target uninstall >/dev/null
[ "$(cd "$removed" && find . -type f -o -type l)" = ./lib/own ] || fail "uninstalling leaves $(find "$removed" -type f -o -type l)"
[ -z "$(find "$removed" -name '*vantu*')" ] || fail "uninstalling leaves folders"
printf 'the %s installation serves another project\n' "$kind"
