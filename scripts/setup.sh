#!/usr/bin/env bash
# Installs what is missing to build and to test, as Debian packages; does nothing where nothing is.
#
# usage: scripts/setup.sh run|test|windows
set -euo pipefail
. "$(dirname "$(readlink -f "$0")")/common.sh"

# package:what it brings, a command or a file
needed=(
    g++:g++
    cmake:cmake
    ninja-build:ninja
    libgtest-dev:/usr/include/gtest/gtest.h
    libgmock-dev:/usr/include/gmock/gmock.h
    libasio-dev:/usr/include/asio.hpp
    libcli11-dev:/usr/include/CLI/CLI.hpp
    nlohmann-json3-dev:/usr/include/nlohmann/json.hpp
)
case ${1-} in
run) ;;
test)
    needed+=(
        clang:clang++
        clang-format:clang-format
        clang-tidy:clang-tidy
        libbenchmark-dev:/usr/include/benchmark/benchmark.h
        llvm:llvm-symbolizer
        abigail-tools:abidw
        debootstrap:debootstrap
        dpkg-dev:dpkg-shlibdeps
        file:file
        iproute2:ip
        lintian:lintian
        mandoc:mandoc
        doxygen:doxygen
        pkg-config:pkg-config
        python3:python3
        python3-jsonschema:/usr/lib/python3/dist-packages/jsonschema/__init__.py
        bash-completion:/usr/share/bash-completion/bash_completion
        fish:fish
        zsh:zsh
        tshark:tshark
        ccache:ccache
    )
    ;;
windows)
    needed+=(
        g++-mingw-w64-x86-64-posix:x86_64-w64-mingw32-g++-posix
        wine:wineserver
        wine64:/usr/lib/wine/wine64
        googletest:/usr/src/googletest/CMakeLists.txt
        ccache:ccache
    )
    ;;
*) fail "usage: $0 run|test|windows" ;;
esac

# clang's runtime for the thread sanitizer has a package of each version's own.
if [ "${1-}" = test ] && ! compgen -G '/usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.tsan-x86_64.a' >/dev/null; then
    clang_version=$(apt-cache depends clang 2>/dev/null | sed -n 's/.*Depends: clang-\([0-9]*\)$/\1/p')
    needed+=("libclang-rt-${clang_version:-14}-dev:/usr/lib/llvm-${clang_version:-14}/no-such-file")
fi

missing=()
for entry in "${needed[@]}"; do
    probe=${entry#*:}
    case $probe in
    /*) [ -e "$probe" ] || missing+=("${entry%%:*}") ;;
    *) command -v "$probe" >/dev/null || missing+=("${entry%%:*}") ;;
    esac
done

# Where fmt is older than 10, its headers are fetched from the mirror that apt knows by its lists.
lists_wanted=0
if [ ! -e "$root/.deps/fmt" ] && ! grep -Eqs '^#define FMT_VERSION [1-9][0-9]{5}' /usr/include/fmt/{base,core}.h &&
    command -v apt-get >/dev/null &&
    [ -z "$(apt-get indextargets 'Origin: Debian' 'Created-By: Packages' 2>/dev/null)" ]; then
    lists_wanted=1
fi
[ ${#missing[@]} -gt 0 ] || [ $lists_wanted = 1 ] || exit 0

command -v apt-get >/dev/null ||
    fail "these Debian packages are missing: ${missing[*]}; this is no Debian system: install what stands for them, then try again"

as_root=()
if [ "$(id -u)" != 0 ]; then
    command -v sudo >/dev/null ||
        fail "not root and no sudo: have root run 'apt-get update && apt-get install ${missing[*]}', then try again"
    as_root=(sudo)
    if sudo -n true 2>/dev/null; then
        as_root=(sudo -n)
    elif [ ! -t 0 ]; then
        fail "sudo wants a password and there is no terminal: have root run 'apt-get update && apt-get install ${missing[*]}', then try again"
    fi
fi

apt() {
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq -y -o DPkg::Lock::Timeout=300 \
        -o Dpkg::Use-Pty=0 "$@" </dev/null >&2
}
update() {
    say "updating the package lists"
    apt update || fail "apt-get update failed: check the network and /etc/apt, then try again"
}
install() { apt install --no-install-recommends "${missing[@]}"; }

updated=0
if [ $lists_wanted = 1 ] || ! apt-cache show "${missing[@]}" >/dev/null 2>&1; then
    update
    updated=1
fi
[ ${#missing[@]} -gt 0 ] || exit 0

say "installing ${missing[*]}"
if ! install; then
    # The lists may name versions that the mirror no longer has.
    [ $updated = 0 ] || fail "apt-get could not install ${missing[*]}: see its messages above"
    update
    install || fail "apt-get could not install ${missing[*]}: see its messages above"
fi
