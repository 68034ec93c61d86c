#!/usr/bin/env python3
"""Prints which lines and branches of the sources ran, by folder and by file, and fails below the bounds.

usage: coverage_report.py ROOT LINES BRANCHES FOLDER[:LINES:BRANCHES]...

ROOT is the checkout, LINES what "llvm-cov export -format=lcov" says and BRANCHES what "llvm-cov export" says.
A FOLDER has the least percentages of its lines and branches after it, or none. A branch is one outcome of one
condition of the source, a macro's included. It counts as reached when one instance of a template reaches it.
"""
import collections
import json
import os
import sys

EXPANSION, CODE = 1, 0  # kinds of regions


def read_lines(path, root):
    """The count of each line: {file: {line: count}}."""
    lines = collections.defaultdict(dict)
    with open(path, encoding="utf-8") as report:
        for row in report:
            key, _, value = row.rstrip("\n").partition(":")
            if key == "SF":
                file = os.path.relpath(os.path.realpath(value), root)
            elif key == "DA":
                line, count = (int(part) for part in value.split(",")[:2])
                lines[file][line] = max(count, lines[file].get(line, 0))
    return lines


def position_in_file(branch, regions):
    """Where a branch is: its own place, and outwards the places at which macros brought it into the file."""
    places, file = [tuple(branch[:4])], branch[6]
    while file != 0:
        outer = next((r for r in regions if r[7] == EXPANSION and r[6] == file), None)
        if outer is None:
            return None
        places.append(tuple(outer[:4]))
        file = outer[5]
    return tuple(reversed(places))


def runs_at(branch, regions):
    """How often the condition itself was reached: the count of the smallest piece of code around it."""
    start, end = tuple(branch[:2]), tuple(branch[2:4])
    around = [r for r in regions
              if r[7] == CODE and r[5] == branch[6] and tuple(r[:2]) <= start and end <= tuple(r[2:4])]
    return max(around, key=lambda r: (r[0], r[1], -r[2], -r[3]))[4] if around else 0


def read_branches(path, root):
    """The count of each outcome: {file: {(place, outcome): count}}."""
    with open(path, encoding="utf-8") as report:
        functions = json.load(report)["data"][0]["functions"]
    branches = collections.defaultdict(lambda: collections.defaultdict(int))
    constant = set()
    for function in functions:
        file = os.path.relpath(os.path.realpath(function["filenames"][0]), root)
        for branch in function["branches"]:
            place = position_in_file(branch, function["regions"])
            if place is None:
                continue
            # Neither outcome although the condition was reached: the compiler knew it.
            if branch[4] == branch[5] == 0 and runs_at(branch, function["regions"]) > 0:
                constant.add((file, place))
                continue
            branches[file][place, "true"] += branch[4]
            branches[file][place, "false"] += branch[5]
    for file, place in constant:
        if branches[file].get((place, "true"), 0) == branches[file].get((place, "false"), 0) == 0:
            branches[file].pop((place, "true"), None)
            branches[file].pop((place, "false"), None)
    return branches


def percent(reached, all_of_them):
    return 100.0 * reached / all_of_them if all_of_them else 100.0


def ranges(numbers):
    """[3, 4, 5, 9] as "3-5 9"."""
    text, numbers = [], sorted(numbers)
    while numbers:
        length = next((i for i in range(1, len(numbers)) if numbers[i] != numbers[0] + i), len(numbers))
        text.append(f"{numbers[0]}" if length == 1 else f"{numbers[0]}-{numbers[length - 1]}")
        numbers = numbers[length:]
    return " ".join(text)


def print_what_is_not_reached(files, lines, branches):
    for file in files:
        missed_lines = [line for line, count in lines[file].items() if count == 0]
        missed_branches = sorted(key for key, count in branches[file].items() if count == 0)
        if not missed_lines and not missed_branches:
            continue
        print(f"{file}")
        if missed_lines:
            print(f"    lines     {ranges(missed_lines)}")
        if missed_branches:
            print("    branches  " + " ".join(f"{p[0][0]}:{p[0][1]}:{outcome}" for p, outcome in missed_branches))


def main():
    root = os.path.realpath(sys.argv[1])
    lines, branches = read_lines(sys.argv[2], root), read_branches(sys.argv[3], root)
    table, complaints, wanted = [], [], []
    for folder in sys.argv[4:]:
        name, *bounds = folder.split(":")
        files = sorted(file for file in lines if file.startswith(name + "/"))
        wanted += files
        line_counts = [count for file in files for count in lines[file].values()]
        branch_counts = [count for file in files for count in branches[file].values()]
        if not line_counts:
            complaints.append(f"{name} has no lines: is it built?")
        figures = [(sum(count > 0 for count in counts), len(counts)) for counts in (line_counts, branch_counts)]
        table.append(f"{name:<16}" + "".join(f"{r:>7} of {a:>5} {percent(r, a):7.2f} %" for r, a in figures))
        for bound, (reached, all_of_them), what in zip(bounds, figures, ("lines", "branches")):
            if percent(reached, all_of_them) < float(bound):
                complaints.append(f"{name}: {percent(reached, all_of_them):.2f} % of {what}, "
                                  f"{float(bound):g} % are asked for")
    print("not reached, as LINE and as LINE:COLUMN:OUTCOME of a condition:")
    print_what_is_not_reached(wanted, lines, branches)
    print(f"\n{'folder':<16}{'lines':>26}{'branches':>26}")
    print("\n".join(table))
    for complaint in complaints:
        print(complaint, file=sys.stderr)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
