#!/usr/bin/env bash
# The checks for between two changes: style, the optimised build and its tests, and clang-tidy for what differs
# from the branch "main". Ends with CTest's summary.
#
# usage: scripts/test_quick.sh [CTEST-ARGUMENT...]     (./test quick calls it)
set -euo pipefail
. "$(dirname "$(readlink -f "$0")")/common.sh"
cd "$root"

"$root/scripts/setup.sh" test || exit 1

say "checking the style"
"$root/scripts/check_style.sh" || fail "the style check failed: see the lines above; clang-format -i mends the layout"

say "building release"
configure release -DORVANTA_BUILD_BENCH=ON || fail "configuring release failed: see the messages above"
cmake --build "$root/build/release" >&2 || fail "building release failed: see the messages above"

# The sources and headers that differ from where this branch left main, committed or not.
changed_files() {
    local name base=HEAD differing new
    for name in main origin/main; do
        base=$(git merge-base HEAD "$name" 2>/dev/null) && break
    done
    differing=$(git diff --name-only --diff-filter=d "${base:-HEAD}") || return
    new=$(git ls-files --others --exclude-standard) || return
    printf '%s\n' "$differing" "$new" | sed -nE '\,^(src|app|ctl|shared|simulator|conformance|dissector|tests|bench|fuzz)/.*\.(cpp|hpp|h)$,p' | sort -u
}

# Reads names from standard input: a source stands for itself, a header for one source that includes it: its own, or
# one that is held to all rules, or a test. What the release build read says which.
sources_to_read() {
    awk -v root="$root" '
        FILENAME == "-" { if (/\.cpp$/) print root "/" $0; else wanted[root "/" $0] = 1; next }
        /^[^ ]/ { opens = 1; next }
        NF == 0 { next }
        { sub(/^ +/, ""); sub(/^\.\.\/\.\.\//, root "/") }
        opens { source = $0; opens = 0; next }
        $0 in wanted {
            rank = 1 + 2 * (source !~ "^" root "/tests/") + (stem(source) == stem($0))
            if (rank > ranks[$0]) { ranks[$0] = rank; reader[$0] = source }
        }
        END { for (header in reader) print reader[header] }
        function stem(path) { sub(/.*\//, "", path); sub(/\.[a-z]+$/, "", path); return path }
    ' - "$root/build/release/dependencies.txt" | sort -u
}

ninja -C "$root/build/release" -t deps >"$root/build/release/dependencies.txt" || fail "ninja knows no dependencies"
configure tidy 2>/dev/null || fail "configuring tidy failed: repeat it with cmake --preset tidy"
changed=$(changed_files) || fail "git does not say what differs from main: see the messages above"
# A file of another platform is in no build here.
sources=()
while read -r source; do
    ! grep -qF "\"file\": \"$source\"" "$root/build/tidy/compile_commands.json" || sources+=("$source")
done < <(sources_to_read <<<"$changed")
say "running clang-tidy over ${#sources[@]} sources, for $(grep -c . <<<"$changed" || true) files that differ from main"
if [ ${#sources[@]} -gt 0 ]; then
    "$root/scripts/check_tidy.sh" "$root/build/tidy" "${sources[@]}" || fail "clang-tidy failed: see the lines above"
fi

say "testing release"
ctest --preset release --parallel "$(nproc)" --no-tests=error "$@" ||
    fail "tests failed: repeat them with ctest --preset release --rerun-failed"
