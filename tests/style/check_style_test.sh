#!/usr/bin/env bash
# Holds scripts/check_style.sh against small trees: each rule refuses what breaks it, names the file, and accepts
# what does not.
#
# usage: check_style_test.sh SCRIPT SCRATCH-FOLDER
set -euo pipefail

script=$1
scratch=$2
failures=0

# tree FILE TEXT ...: a tree of these files alone.
tree() {
    rm -rf "$scratch"
    mkdir -p "$scratch"
    # What holds for scratch trees is not what lies around them.
    printf 'BasedOnStyle: LLVM\n' >"$scratch/.clang-format"
    while [ $# -gt 0 ]; do
        mkdir -p "$scratch/$(dirname "$1")"
        printf '%b\n' "$2" >"$scratch/$1"
        shift 2
    done
}
wrong() {
    printf '%s\n' "$1:" "$output" >&2
    failures=$((failures + 1))
}
accepted() {
    tree "$@"
    output=$("$script" "$scratch" 2>&1) || wrong "refused: $*"
}
# refused TEXT FILE ...: with a complaint that has the text.
refused() {
    local text=$1
    shift
    tree "$@"
    if output=$("$script" "$scratch" 2>&1); then
        wrong "accepted: $*"
    elif [[ $output != *"$text"* ]]; then
        wrong "refused for another reason: $*"
    fi
}

opened='// A file.\nint x;'
bare='int x;'
missing='opens without a comment'
accepted src/a.cpp "$opened"
refused 'clang-format' src/a.cpp '// A file.\nint   x;'

# A header opens with a comment; a source does unless its header is beside it or in an include folder.
refused "src/a.hpp:1: $missing" src/a.hpp "$bare"
refused "src/a.h:1: $missing" src/a.h "$bare"
refused "src/a.cpp:1: $missing" src/a.cpp "$bare"
refused "src/a.c:1: $missing" src/a.c "$bare"
accepted src/layer/a.cpp "$bare" src/layer/a.hpp "$opened"
accepted src/layer/a.c "$bare" src/layer/a.h "$opened"
accepted src/layer/a.cpp "$bare" src/layer/include/layer/a.hpp "$opened"
accepted src/layer/part/a.cpp "$bare" src/layer/include/b/part/a.h "$opened"
refused "src/layer/a.cpp:1: $missing" src/layer/a.cpp "$bare" src/other/a.hpp "$opened"
refused "src/layer/a.cpp:1: $missing" src/layer/a.cpp "$bare" src/other/include/a.hpp "$opened"
refused "src/layer/a_posix.cpp:1: $missing" src/layer/a_posix.cpp "$bare" src/layer/a.hpp "$opened"
refused "src/layer/a.hpp:1: $missing" src/layer/a.cpp "$opened" src/layer/a.hpp "$bare"

for include in '"../b.hpp"' '<../b.hpp>' '"layer/../b.hpp"' '"../../src/b.hpp"'; do
    refused "src/a.cpp:2:#include $include" src/a.cpp "// A file.\n#include $include"
done
accepted src/a.cpp '// A file.\n#include "b..hpp"'
accepted tests/a.cpp '// A file.\n#include "../b.hpp"'

long=$(printf '%.0sint x();\\n' {1..399})
accepted src/a.cpp "// A file.\n${long%\\n}"
refused 'src/a.cpp: 401 lines' src/a.cpp "// A file.\n${long}int y();"
refused 'scripts/a.sh: 401 lines' src/a.cpp "$opened" scripts/a.sh "$long\n"

accepted src/a.cpp "$opened"
[[ $output == *'shorter than 25 lines'*'src/a.cpp'* ]] || wrong "a short file is not told"
accepted src/a.cpp "// A file.\n${long%\\n}" src/a_posix.cpp "$opened"
[[ $output != *'shorter than 25 lines'* ]] || wrong "a long file or a platform's twin is told as short"

for word in Who What Of; do
    refused "src/a.cpp:2:// $word it is" src/a.cpp "// A file.\n// $word it is."
    refused "$word it is" src/a.cpp "// A file.\nint x; // $word it is."
    refused "$word it is" src/a.cpp "// A file.\nint x; ///< $word it is."
    refused "$word it is" tests/a.cpp "/* $word it is. */\nint x;"
    refused "$word it is" src/a.h "/* A file\n * $word it is. */"
    accepted src/a.cpp "// A file.\n// A ${word}ever, and $word is it?\nint $word = 2 * x;"
done

refused 'typedef' src/a.cpp '// A file.\ntypedef int number;'
accepted src/a.h '// A file.\ntypedef int number;'
refused 'left' src/a.cpp '// A file. TODO'
refused 'name a platform' src/a.cpp '// A file.\n#ifdef _WIN32\n#endif'
refused 'no sources' README.md 'text'

[ $failures = 0 ] || exit 1
echo "each rule refuses what breaks it and nothing else"
