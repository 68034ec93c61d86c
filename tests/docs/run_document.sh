#!/usr/bin/env bash
# Does what a markdown document tells its reader to do, in one shell, and compares what the commands print.
#
#   ```sh          is run and must succeed; where it starts a service, that goes on running
#   ```text        is what the block before it prints; a line "..." stands for any lines or none, a number after a
#                  comma for any number
#   anything else  is a file, named last in backquotes on the line above: it is saved; with EXAMPLES, that file there
#                  must be the same, and each program there must be in the document
#
# usage: run_document.sh DOCUMENT [EXAMPLES]
set -euo pipefail

document=$(readlink -f "$1")
examples=${2:+$(readlink -f "$2")}
work=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; wait; rm -rf "$work"' EXIT

fail() {
    printf '%s:%s: %s\n' "$document" "$line_number" "$*" >&2
    exit 1
}

# What a block prints, as a pattern of the shell, each line after a line feed.
pattern_of() {
    local line
    sed -E 's/,-?[0-9.]+(e[-+]?[0-9]+)?/,N/g; s/[][\\*?+@!|(){}]/\\&/g' <<<"$1" | while IFS= read -r line; do
        if [ "$line" = ... ]; then
            printf '?(\n*)'
        else
            printf '\n%s' "$line"
        fi
    done
}

is_printed() {
    local printed
    printed=$(sed -E 's/,-?[0-9.]+(e[-+]?[0-9]+)?/,N/g' "$1")
    # shellcheck disable=SC2053 # a pattern
    [[ $'\n'$printed == $(pattern_of "$2") ]]
}

compare() {
    local tries
    [ -n "$output" ] || fail "nothing was run that could print this"
    # What goes on running prints in its own time.
    for ((tries = 0; tries < 300; ++tries)); do
        ! is_printed "$output" "$block" || return 0
        [ "$in_background" = 1 ] || break
        sleep 0.1
    done
    fail "expected
$block
but it printed
$(cat "$output")"
}

runs=0
output=
in_background=0
# Not in a function: the document's variables, folders and jobs are those of this shell.
line_number=0
block=
kind=
file=
shown=()
while IFS= read -r line <&8 || [ -n "$line" ]; do
    line_number=$((line_number + 1))
    if [ -z "$kind" ]; then
        if [[ $line == '```'* ]]; then
            kind=${line#'```'}
            [ -n "$kind" ] || fail "a block does not say what it is"
            block=
        elif [[ $line =~ \`([^\`]+)\`[^\`]*$ ]]; then
            file=${BASH_REMATCH[1]}
        fi
        continue
    fi
    if [ "$line" != '```' ]; then
        block+=${block:+$'\n'}$line
        continue
    fi
    case $kind in
    sh)
        printf '%s\n' "$block"
        runs=$((runs + 1))
        output=$work/$runs
        in_background=0
        [[ $block != *'&' ]] || in_background=1
        eval "$block" >"$output" 2>&1 </dev/null 8<&- || fail "status $?, and it printed
$(cat "$output")"
        ;;
    text)
        compare
        output=
        ;;
    *)
        printf '%s\n' "$block" >"$file"
        if [ "$kind" = cpp ] && [ -n "$examples" ]; then
            cmp "$file" "$examples/$file" >&2 || fail "$file is not the example"
            shown+=("$file")
        fi
        ;;
    esac
    kind=
done 8<"$document"
[ -z "$kind" ] || fail "the last block has no end"
[ "$runs" -gt 0 ] || fail "there is no command"
for program in ${examples:+"$examples"/*.cpp}; do
    [[ " ${shown[*]} " == *" ${program##*/} "* ]] || fail "${program##*/} is not shown"
done
printf '%d blocks were run\n' "$runs"
