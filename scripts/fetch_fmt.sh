#!/usr/bin/env bash
# Puts the headers of fmt 10 into a folder, for systems whose own fmt is older.
# They come from the libfmt-dev package of Debian 13, fetched and verified by Debian's own package
# tools through the mirror this system already uses; nothing is installed.
#
# usage: scripts/fetch_fmt.sh FOLDER      (leaves FOLDER/usr/include/fmt)
set -euo pipefail

suite=trixie
package=libfmt-dev
version=10.1.1

fail() {
    printf 'fetch_fmt: %s\n' "$*" >&2
    exit 1
}

[ $# -eq 1 ] || fail "usage: $0 FOLDER"
folder=$1
if [ -f "$folder/usr/include/fmt/format.h" ]; then
    exit 0
fi
command -v apt-get >/dev/null && command -v dpkg-deb >/dev/null ||
    fail "fmt 10 is missing and this is no Debian system: install fmt 10 (its CMake package) and configure again"

mirror=$(apt-get indextargets --format '$(REPO_URI)' 'Origin: Debian' 'Created-By: Packages' |
    grep -v -- '-security' | head -n 1 || true)
[ -n "$mirror" ] || fail "no Debian mirror is known to apt: run 'apt-get update' as root, then try again"
keyring=/usr/share/keyrings/debian-archive-keyring.gpg
[ -f "$keyring" ] || fail "$keyring is missing: install debian-archive-keyring, then try again"

work=$(mktemp -d "${TMPDIR:-/tmp}/fetch_fmt.XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/lists/partial" "$work/archives/partial" "$work/empty"
printf 'deb [signed-by=%s] %s %s main\n' "$keyring" "$mirror" "$suite" >"$work/sources.list"
options=(
    -qq
    -o "Dir::Etc::sourcelist=$work/sources.list"
    -o "Dir::Etc::sourceparts=$work/empty"
    -o "Dir::State::lists=$work/lists"
    -o "Dir::Cache=$work"
    -o "Dir::Cache::archives=$work/archives"
    -o "APT::Sandbox::User="
    -o "Acquire::Languages=none"
)
apt-get "${options[@]}" update >&2 || fail "cannot read the package list of $suite from $mirror: check the network, then try again"
(cd "$work" && apt-get "${options[@]}" download "$package" >&2) || fail "cannot download $package of $suite: check the network, then try again"
found=("$work/${package}_${version}"*.deb)
[ -f "${found[0]}" ] || fail "$suite no longer offers $package $version: change the version at the head of this script"

mkdir -p "$folder.part"
dpkg-deb --extract "${found[0]}" "$folder.part" || fail "cannot unpack $package"
mkdir -p "$folder/usr"
rm -rf "$folder/usr/include"
mv "$folder.part/usr/include" "$folder/usr/include"
rm -rf "$folder.part"
