#!/usr/bin/env bash
# Holds scripts/coverage_report.py against a program of known lines and branches, which ends by abort: what ran
# before that counts, each outcome of a condition counts by itself, and a bound that is not met fails.
#
# usage: coverage_report_test.sh SCRIPT SCRATCH-FOLDER
set -euo pipefail

script=$1
scratch=$2
for tool in clang++ llvm-cov llvm-profdata python3; do
    command -v "$tool" >/dev/null || { echo "there is no $tool: run scripts/setup.sh test, or install it" >&2; exit 1; }
done
rm -rf "$scratch"
mkdir -p "$scratch/src/some" "$scratch/src/none"
cat >"$scratch/src/some/program.cpp" <<'END'
#include <cstdlib>
#define CHECKED(condition) ((condition) ? 1 : 2)
template <typename T> int sign(T value) {
    if constexpr (sizeof(T) > 4) {
        return value < 0 ? -2 : 2;
    }
    return value < 0 ? -1 : 1;
}
int never() {
    return 5;
}
int main(int count, char**) {
    int sum = sign(1L) + sign(count) + sign(-count) + CHECKED(count == 1);
    if (count == 1 && sum > 100) {
        sum += never();
    }
    std::abort();
}
END
cd "$scratch"
clang++ -std=c++20 -fprofile-instr-generate -fcoverage-mapping -mllvm -runtime-counter-relocation \
    "$scratch/src/some/program.cpp" -o program
# In a shell of its own, which tells of the abort.
bash -c 'LLVM_PROFILE_FILE=%m%c.profraw ./program; exit 0' 2>/dev/null
llvm-profdata merge -sparse -o all.profdata ./*.profraw
llvm-cov export -format=lcov -instr-profile=all.profdata program >lines.lcov
llvm-cov export -instr-profile=all.profdata program >branches.json

report() { "$script" "$scratch" lines.lcov branches.json "$@" >out.txt 2>err.txt; }
complain() {
    echo "$1:" >&2
    cat out.txt err.txt >&2
    exit 1
}
report src/some || complain "fails without a bound"
grep -Eq '^src/some +12 of +17 +70\.59 % +6 of +10 +60\.00 %$' out.txt || complain "other figures"
grep -qx '    lines     9-11 15-16' out.txt || complain "other lines"
grep -qx '    branches  5:16:true 13:55:false 14:9:false 14:23:true' out.txt || complain "other branches"
report src/some:70:60 || complain "fails with bounds that are met"
! report src/some:71:60 || complain "accepts too few lines"
! report src/some:70:61 || complain "accepts too few branches"
! report src/none || complain "accepts a folder without lines"
echo "lines and branches are counted as they ran"
