#!/usr/bin/env python3
"""Has every row of the message map, every timer, key and graph event a story? Compares the sources with tests/stories/coverage.txt.
Exit status 1 when a row has no line, a line has no row, or a test named there does not exist or never mentions what it is for."""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
TEST = re.compile(r"^TEST(?:_[FP])?\(\w+, *(\w+)\)", re.MULTILINE)


def rows():
    view = ROOT / "view"
    table = (view / "DMBViewMap.cpp").read_text()
    for handler, names in re.findall(r"GMap::\w+<&View::(\w+)>\(([^)]*)\)", table):
        yield " ".join(["map", handler, *re.findall(r"\w+", names)])
    numbers = (view / "DMBViewIds.h").read_text()
    for name in re.findall(r"UINT_PTR (e\w+_TIMER)\b", numbers):
        yield "timer " + name
    for name in re.findall(r"UINT (kKey\w+)\b", numbers):
        yield "key " + name
    for name in re.findall(r"case ((?:EC|IDMB_EVENT)_\w+):", (view / "DMBViewEvents.cpp").read_text()):
        yield "event " + name


def tests():
    bodies = {}
    for path in sorted((ROOT / "tests").glob("*/*_test.cpp")):
        text = path.read_text()
        starts = list(TEST.finditer(text)) + [None]
        for match, following in zip(starts, starts[1:]):
            bodies[match.group(1)] = text[match.start():following.start() if following else len(text)]
    return bodies


def main():
    wanted = set(rows())
    known = tests()
    faults = []
    covered = set()
    for number, line in enumerate((ROOT / "tests/stories/coverage.txt").read_text().splitlines(), 1):
        words = line.split()
        if not words or words[0].startswith("#"):
            continue
        size = 2
        while size < len(words) and re.match(r"(k|WM_)", words[size]):
            size += 1
        row, stories = " ".join(words[:size]), words[size:]
        covered.add(row)
        if row not in wanted:
            faults.append(f"line {number}: there is no {row}")
        if not stories:
            faults.append(f"line {number}: no story for {row}")
        faults += [f"line {number}: there is no test {story}" for story in stories if story not in known]
        # An event can only be exercised by its code, a key by its number or name.
        if words[0] in ("event", "key") and not any(words[1] in known.get(story, "") for story in stories):
            faults.append(f"line {number}: no story of {row} mentions it")
    faults += [f"no story for {row}" for row in sorted(wanted - covered)]
    if len(wanted) < 40:
        faults.append(f"only {len(wanted)} rows were found in the sources")
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
