#!/usr/bin/env python3
"""compare_traces.py HERE THERE KNOWN: compares two traces scene by scene and line by line. Exit status 1 for a difference.

A scene begins with a line "== title". KNOWN lists the known differences, one a line: `title | pattern | reason`. In that scene
the lines that the pattern matches as a whole are left out on both sides. An entry that hides nothing any more is an error.
"""
import difflib
import pathlib
import re
import sys


def scenes(path):
    result, lines = {}, None
    for line in pathlib.Path(path).read_text().splitlines():
        if line.startswith("== "):
            lines = result.setdefault(line[3:], [])
        elif lines is None:
            sys.exit(f"{path}: begins without a scene")
        else:
            lines.append(line)
    return result


def known_differences(path):
    entries = []
    for number, line in enumerate(pathlib.Path(path).read_text().splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        parts = [part.strip() for part in line.split(" | ")]
        if len(parts) != 3 or not all(parts):
            sys.exit(f"{path}:{number}: wanted 'title | pattern | reason'")
        entries.append((parts[0], re.compile(parts[1]), parts[2]))
    return entries


def without(lines, title, entries):
    return [line for line in lines if not any(t == title and p.fullmatch(line) for t, p, _ in entries)]


def main():
    here, there, known = scenes(sys.argv[1]), scenes(sys.argv[2]), known_differences(sys.argv[3])
    if not here or list(here) != list(there):
        sys.exit(f"scenes differ: {list(here)} and {list(there)}")
    failed = compared = 0
    for title in here:
        ours, theirs = without(here[title], title, known), without(there[title], title, known)
        compared += len(ours)
        for line in difflib.unified_diff(ours, theirs, f"here: {title}", f"there: {title}", lineterm="", n=4):
            print(line)
            failed = 1
    for entry in known:
        title, pattern, _ = entry
        rest = [other for other in known if other is not entry]
        if title not in here or without(here[title], title, rest) == without(there[title], title, rest):
            print(f"known difference hides nothing: {title} | {pattern.pattern}")
            failed = 1
    print(f"traces: {len(here)} scenes, {compared} lines compared, {len(known)} known differences")
    return failed


if __name__ == "__main__":
    sys.exit(main())
