#!/usr/bin/env python3
"""A declaration in platform/ needs a caller: a module line or a conformance rule. Exit status 1 for each that has none.

platform/unused.txt names the exceptions, one a line with a reason: slots that only keep a table's order, and calls that the
shell answers for views other than ours.
"""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
DECLARATION = re.compile(r"^\s*(?:\[\[nodiscard\]\]\s*)?(?:DMB_\w+\s+|static\s+|virtual\s+|inline\s+|constexpr\s+)*"
                         r"[\w:<>,*& ]+?[ *&](\w+)\s*\([^;{}]*\)\s*(?:const)?\s*(?:override)?\s*[;{]")


def main():
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "*.h", "*.cpp"], cwd=ROOT, check=True,
                            capture_output=True, text=True).stdout.split()
    users = ""
    for path in listed:
        if path.startswith(("view/", "tuner/", "graph/", "dialogs/", "dataservice/", "tests/")) and (ROOT / path).is_file():
            users += (ROOT / path).read_text()
    excused = {}
    for line in (ROOT / "platform/unused.txt").read_text().splitlines():
        if line.strip() and not line.startswith("#"):
            name, colon, reason = line.partition(":")
            if not colon or not reason.strip():
                sys.exit(f"platform/unused.txt: '{line}' has no reason")
            excused[name.strip()] = reason
    # Interfaces keep whole tables: their slots are the contract, not their use.
    headers = [p for p in listed if p.startswith("platform/") and not p.endswith(("com.h", "dshow_api.h"))]
    missing, declared = [], set()
    for path in sorted(headers):
        for line in (ROOT / path).read_text().splitlines():
            match = DECLARATION.match(line.split("//")[0])
            if not match or match.group(1) in ("defined", "sizeof", "static_assert"):
                continue
            name = match.group(1)
            declared.add(name)
            if not re.search(rf"\b{name}\b", users) and name not in excused:
                missing.append(f"{path}: {name} has no caller")
    for name in excused:
        if name not in declared:
            missing.append(f"platform/unused.txt: {name} is not declared any more")
    for line in missing:
        print(line)
    if not declared:
        sys.exit("check_platform_use: no declaration was found")
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
