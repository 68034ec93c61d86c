#!/usr/bin/env bash
# Makes the Debian packages, lets lintian look at them, installs them into a bare Debian, builds and runs programs
# against them there, removes them and looks for what they leave. The bare system is made by debootstrap once and kept
# in .deps; each check takes a copy. Only root can install: others get the status 77 after lintian.
#
# usage: scripts/check_packages.sh
# shellcheck disable=SC2016  # the lines for the bare system are expanded there
set -euo pipefail
. "$(dirname "$(readlink -f "$0")")/common.sh"

build=$root/build/package
# What the users of the packages build with.
tools=g++,cmake,make,pkg-config
release=$(. /etc/os-release && echo "${VERSION_CODENAME-}")
base=$root/.deps/debian-$release

# Prints the paths of a system, without what package management and builds write.
paths() {
    (cd "$1" && find . -xdev \( -path ./proc -o -path ./dev -o -path ./tmp -o -path ./root -o -path ./var/lib/dpkg -o \
        -path ./var/log -o -path ./var/cache \) -prune -o -print | sort)
}

# In the bare system, as a user of the packages.
inside() {
    chroot "$folder" env -i HOME=/root TERM=dumb PATH=/usr/sbin:/usr/bin:/sbin:/bin sh -euc "$1"
}

use_packages() {
    paths "$folder" >"$folder/tmp/before"
    inside 'dpkg --install /tmp/packages/*.deb' >/dev/null || fail "the packages cannot be installed"
    inside 'for p in libvantu-orvanta2 libvantu-orvanta-dev orvanta-tools orvanta-simulator; do
            dpkg --verify $p && test -s /usr/share/doc/$p/copyright && test -s /usr/share/doc/$p/changelog.Debian.gz; done
        test -s /usr/lib/*/wireshark/plugins/orvanta.lua
        ldconfig -p | grep libvantu_orvanta.so.2 >/dev/null
        orvanta-simulator --help | grep interactive >/dev/null' || fail "what is installed is not complete"
    inside 'cd /tmp/c
        cc -std=c11 flat.c $(pkg-config --cflags --libs vantu_orvanta) -o flat && ./flat
        cc -std=c11 -static flat.c $(pkg-config --static --cflags --libs vantu_orvanta) -o flat_static 2>/dev/null && ./flat_static
        c++ -std=c++17 classes.cpp $(pkg-config --cflags --libs vantu_orvanta) -o classes && ./classes' >/dev/null ||
        fail "pkg-config does not serve programs"
    inside 'cmake -S /tmp/c_consumer -B /tmp/c_build && cmake --build /tmp/c_build
        /tmp/c_build/flat_with_orvanta && /tmp/c_build/flat_with_orvanta_static
        cmake -S /tmp/watch -B /tmp/watch_build && cmake --build /tmp/watch_build && /tmp/watch_build/watch_test' >"$build/inside.log" 2>&1 ||
        fail "the CMake package does not serve programs: see $build/inside.log"
    inside 'orvanta-simulator >/tmp/simulator.log &
        until grep -q "listening on port" /tmp/simulator.log; do sleep 0.1; done
        printf "0\n1\n4\n" | orvanta-cli >/tmp/session.log; status=$?
        orvantactl list --json >/tmp/list.json || status=$?
        orvanta-conformance >/tmp/conformance.log || status=$?
        kill $!
        exit $status' || fail "orvanta-cli, orvantactl or orvanta-conformance fails beside the simulator"
    grep -q 'Device Type:.*Orvanta3' "$folder/tmp/session.log" || fail "orvanta-cli finds no device"
    grep -q '"type":"orvanta3"' "$folder/tmp/list.json" || fail "orvantactl finds no device"
    inside 'dpkg --purge orvanta-simulator orvanta-tools libvantu-orvanta-dev libvantu-orvanta2' >/dev/null ||
        fail "the packages cannot be removed"
    paths "$folder" >"$folder/tmp/after"
    diff "$folder/tmp/before" "$folder/tmp/after" || fail "the packages leave the files above"
}

# In namespaces of its own: mounts and processes end with this script, and the fixed ports are free.
if [ "${1-}" = --inside ]; then
    folder=$2
    mount -t proc proc "$folder/proc"
    mount --bind /dev "$folder/dev"
    ip link set lo up
    use_packages
    exit
fi

for tool in lintian dpkg-shlibdeps file gzip; do
    command -v "$tool" >/dev/null || fail "there is no $tool: run scripts/setup.sh test, or install it"
done
use_compiler_cache
mkdir -p "$build"
rm -f "$build"/*.deb
(cd "$root" && cmake --workflow --preset package) >"$root/build/package.log" 2>&1 ||
    fail "the packages cannot be made: see $root/build/package.log"
packages=("$build"/*.deb)
[ ${#packages[@]} = 4 ] || fail "there are other packages than four: ${packages[*]}"
lintian --allow-root --tag-display-limit 0 --fail-on error,warning "${packages[@]}" || fail "lintian complains: see above"
say "four packages, and lintian has no complaint"

if [ "$(id -u)" != 0 ] || ! command -v debootstrap >/dev/null || ! command -v ip >/dev/null; then
    say "not installed: that needs root, debootstrap and iproute2"
    exit 77
fi
if [ ! -e "$base/complete" ]; then
    rm -rf "$base"
    mkdir -p "$base"
    mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Origin: Debian' 'Created-By: Packages' | grep -v -- '-security' | head -n 1 || true)
    [ -n "$mirror" ] || fail "no Debian mirror is known to apt: run 'apt-get update', then try again"
    eval "$(apt-config shell proxy Acquire::http::Proxy)"
    say "making a bare Debian in $base"
    http_proxy=${http_proxy-${proxy-}} debootstrap --variant=minbase "--include=$tools" "$release" "$base/system" "$mirror" \
        >"$root/build/debootstrap.log" 2>&1 || fail "debootstrap failed: see $root/build/debootstrap.log"
    touch "$base/complete"
fi
folder=$(mktemp -d "$root/build/packages.XXXXXX")
trap 'rm -rf --one-file-system "$folder"' EXIT
cp -a --reflink=auto "$base/system/." "$folder"
printf '127.0.0.1 localhost\n::1 localhost ip6-localhost\n' >"$folder/etc/hosts"
mkdir "$folder/tmp/packages"
cp "${packages[@]}" "$folder/tmp/packages"
cp -R "$root/tests/package/consumer" "$folder/tmp/c"
cp -R "$root/tests/package/consumer" "$root/tests/package/c_consumer" "$root/examples/watch" "$folder/tmp"
# A root that is no mount point, as within another bare system, is private already.
propagation=()
unshare --mount true 2>/dev/null || propagation=(--propagation unchanged)
unshare --mount "${propagation[@]}" --pid --net --fork --kill-child "$0" --inside "$folder"
say "the packages install, serve programs, and leave nothing behind"
