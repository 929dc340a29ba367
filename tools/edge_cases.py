#!/usr/bin/env python3
"""The index of edge cases: every test whose comment begins with "Edge case", with its room. Compares with docs/edge-cases.txt;
--update writes it. A comment "Edge case" anywhere else, in a body for one, would be lost: it is named. Exit status 1 when one is,
or when the two differ."""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
TEST = re.compile(r"^TEST(?:_[FP])?\((\w+), *(\w+)\)")
MARK = re.compile(r"\bEdge cases?\b")


def cases(path):
    """The index lines of one source, and where in it a mark stands above no test."""
    found, lost, comment = [], [], []
    lines = (ROOT / path).read_text().splitlines()
    for number, line in enumerate(lines + [""], 1):
        text = line.strip()
        if text.startswith("//"):
            comment.append((number, text.lstrip("/ ")))
            continue
        match = TEST.match(text)
        joined = " ".join(words for _, words in comment)
        if match and MARK.match(joined):
            meaning = re.sub(r"^Edge cases?[:.]?\s*", "", joined)
            found.append(f"{path}: {match.group(1)}.{match.group(2)}" + (f"  {meaning}" if meaning else ""))
        else:
            lost += [f"{path}:{at}" for at, words in comment if MARK.search(words)]
        if MARK.search(text.partition("//")[2]):
            lost.append(f"{path}:{number}")
        comment = []
    return found, lost


def main():
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "*.cpp", "*.h"], cwd=ROOT, check=True,
                            capture_output=True, text=True).stdout.split()
    found, lost = [], []
    for path in sorted(set(listed)):
        if (ROOT / path).is_file():
            lines, strays = cases(path)
            found += lines
            lost += strays
    for place in lost:
        print(f"{place}: \"Edge case\" is not the beginning of the comment directly above a test")
    index = ROOT / "docs/edge-cases.txt"
    text = "\n".join(found) + "\n"
    if "--update" in sys.argv:
        index.write_text(text)
    elif not index.exists() or index.read_text() != text:
        print("docs/edge-cases.txt is not what the tests say; run tools/edge_cases.py --update")
        return 1
    return 1 if lost else 0


if __name__ == "__main__":
    sys.exit(main())
