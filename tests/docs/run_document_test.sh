#!/usr/bin/env bash
# Holds run_document.sh against documents that are right and documents that each have one mistake.
#
# usage: run_document_test.sh
set -euo pipefail

runner=$(readlink -f "$(dirname "$0")")/run_document.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
mkdir examples
printf 'int main() {}\n' >examples/one.cpp
broken=0

follow() {
    sed -E "s/^'{3}/\`\`\`/; s/^'(.*)':/\`\1\`:/" >document.md
    "$runner" document.md examples >printed 2>&1
}

accepts() {
    follow || { echo "refuses $1:" && cat printed && broken=1; }
}

refuses() {
    ! follow || { echo "accepts $1" && broken=1; }
}

program=$'\n\'one.cpp\':\n\n\'\'\'cpp\nint main() {}\n\'\'\'\n'
accepts "what is right" <<<"'''sh
mkdir -p folder; cd folder; x=5
'''
'''sh
printf 'a\\nb\\nc\\n%d,0.25\\n' \$x
'''
'''text
a
...
5,-1e-05
'''$program"
accepts "any lines where there are none or some" <<<"'''sh
printf 'a\nb\nc\n'
'''
'''text
...
a
...
b
...
'''
'''sh
echo a
'''
'''text
...
a
...
'''$program"
refuses "more of a line where any lines may follow" <<<"'''sh
echo ab
'''
'''text
a
...
'''$program"
accepts "what is printed late" <<<"'''sh
{ sleep 0.3; echo late; sleep 60; } &
'''
'''text
late
'''$program"
refuses "another output" <<<"'''sh
echo one two
'''
'''text
one three
'''$program"
refuses "another status" <<<"'''sh
false
'''$program"
refuses "a line too few" <<<"'''sh
echo one; echo two
'''
'''text
one
'''$program"
refuses "another program" <<<"'''sh
true
'''
${program/main/Main}"
refuses "a program that is not shown" <<<"'''sh
true
'''"
refuses "no command" <<<"$program"
exit $broken
