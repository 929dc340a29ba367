#!/usr/bin/env python3
"""The index of edge cases: every test whose comment says "Edge case", with its room. Compares with docs/edge-cases.txt; --update
writes it. Exit status 1 when they differ."""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
TEST = re.compile(r"^TEST(?:_[FP])?\((\w+), *(\w+)\)")


def cases(path):
    comment = []
    for line in (ROOT / path).read_text().splitlines():
        text = line.strip()
        if text.startswith("//"):
            comment.append(text.lstrip("/ "))
            continue
        match = TEST.match(text)
        joined = " ".join(comment)
        if match and re.match(r"Edge cases?\b", joined):
            meaning = re.sub(r"^Edge cases?[:.]?\s*", "", joined)
            yield f"{path}: {match.group(1)}.{match.group(2)}" + (f"  {meaning}" if meaning else "")
        comment = []


def main():
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "*_test.cpp"], cwd=ROOT, check=True,
                            capture_output=True, text=True).stdout.split()
    lines = [line for path in sorted(set(listed)) if (ROOT / path).is_file() for line in cases(path)]
    text = "\n".join(lines) + "\n"
    index = ROOT / "docs/edge-cases.txt"
    if "--update" in sys.argv:
        index.write_text(text)
        return 0
    if not index.exists() or index.read_text() != text:
        print("docs/edge-cases.txt is not what the tests say; run tools/edge_cases.py --update")
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
