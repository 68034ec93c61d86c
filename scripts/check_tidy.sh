#!/usr/bin/env bash
# Runs clang-tidy over every source of a build made with clang, after making sure that its naming rules
# refuse what they should. The tests are held to the naming rules and clang's own warnings alone: the rest
# takes minutes on them.
#
# usage: scripts/check_tidy.sh BUILD-FOLDER [SOURCE...]
set -euo pipefail
. "$(dirname "$(readlink -f "$0")")/common.sh"
[ $# -ge 1 ] || fail "usage: $0 BUILD-FOLDER [SOURCE...]"
build=$(readlink -f "$1")
shift
[ -f "$build/compile_commands.json" ] || fail "$build has no compile_commands.json: build it first"
cd "$root"

scratch=$(mktemp -d "${TMPDIR:-/tmp}/check_tidy.XXXXXX")
trap 'rm -rf "$scratch"' EXIT

# Each wrong name by itself must be refused, and the same program with right names accepted.
check_naming_rules() {
    local right='namespace right { enum class kind { one }; struct record { int member; }; class thing { int held_ = 0; public: int method(int argument) { int local = argument; return local + held_; } }; template <typename Type> Type twice(Type value) { return value + value; } using alias = int; inline constexpr int constant = 1; }'
    local wrong replacement
    refused() {
        printf '%s\n' "$1" >"$scratch/naming.cpp"
        ! clang-tidy --quiet --config-file=.clang-tidy "$scratch/naming.cpp" -- -std=c++20 >"$scratch/naming.out" 2>&1
    }
    if refused "$right"; then
        cat "$scratch/naming.out" >&2
        fail "clang-tidy refuses names that follow the rules"
    fi
    for replacement in 'namespace right/namespace Wrong' 'enum class kind/enum class Kind' '{ one }/{ One }' \
        'struct record/struct Record' 'int member/int memberName' 'class thing/class Thing' 'held_/held' 'held_/Held_' \
        'method(/Method(' 'argument/Argument' 'local/Local' 'Type/type' 'twice/Twice' 'using alias/using Alias' \
        'constant/Constant'; do
        wrong=${right//"${replacement%%/*}"/"${replacement#*/}"}
        [ "$wrong" != "$right" ] || fail "the naming check's program does not hold '${replacement%%/*}'"
        refused "$wrong" && grep -q readability-identifier-naming "$scratch/naming.out" ||
            fail "clang-tidy accepts a wrong name: ${replacement#*/}"
    done
}

check_naming_rules
if [ $# -gt 0 ]; then
    mapfile -t sources < <(realpath -- "$@")
else
    # The build's own files count only where they gather several sources.
    mapfile -t sources < <(sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' "$build/compile_commands.json" |
        grep -E "^$root/(src|app|ctl|shared|simulator|conformance|dissector|tests|bench|fuzz)/.*\.cpp\$|^$build/.*/Unity/.*\.cxx\$" | sort -u)
fi
[ ${#sources[@]} -gt 0 ] || fail "$build/compile_commands.json names no sources"

# One line of output a source would drown what matters: only complaints are shown. That the files which gather
# sources include them is their purpose.
tidy_one() {
    local output checks=-bugprone-suspicious-include
    [[ $2 != */tests/* && $2 != "$PWD"/fuzz/* && $2 != "$1"/fuzz/* ]] || checks='-*,clang-diagnostic-*,readability-identifier-naming'
    if ! output=$(clang-tidy --quiet -p "$1" "--checks=$checks" "$2" 2>&1); then
        printf '%s\n' "$output" | grep -vE '^[0-9]+ warnings? (generated|treated)' >&2
        return 1
    fi
}
export -f tidy_one
printf '%s\0' "${sources[@]}" | xargs -0 -n 1 -P "$(nproc)" bash -c 'tidy_one "$0" "$1"' "$build"
