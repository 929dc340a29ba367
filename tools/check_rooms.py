#!/usr/bin/env python3
"""Checks every #include against rooms.txt, and the line budgets. Prints each breach; exit status 1 when there is one."""
import fnmatch
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
FREE = ("tests/*", "bench/*", "fuzz/*", "*_test.cpp", "*_bench.cpp", "*_fuzz.cpp")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


class Room:
    def __init__(self, name, globs):
        self.name, self.globs = name, globs
        self.allowed, self.forbidden, self.budget = {name}, {}, None


def read_table(path):
    groups, rooms = {}, []
    for number, line in enumerate(path.read_text().splitlines(), 1):
        text = line.split("#")[0].strip()
        if not text:
            continue
        key, _, rest = text.partition(" ")
        if key in ("group", "room"):
            name, equals, globs = rest.partition("=")
            if not equals:
                sys.exit(f"rooms.txt:{number}: expected 'NAME = glob ...'")
            if key == "group":
                groups[name.strip()] = globs.split()
            else:
                rooms.append(Room(name.strip(), globs.split()))
        elif key == "+":
            rooms[-1].allowed.update(rest.split())
        elif key == "-":
            names, _, reason = rest.partition(":")
            rooms[-1].forbidden.update({name: reason.strip() for name in names.split()})
        elif key == "!":
            names, colon, reason = rest.partition(":")
            if not re.match(r"\s*\d{4}-\d\d-\d\d \S", reason):
                sys.exit(f"rooms.txt:{number}: '!' needs ': date reason'")
            rooms[-1].allowed.update(names.split())
        elif key == "lines":
            rooms[-1].budget = int(rest)
        else:
            sys.exit(f"rooms.txt:{number}: cannot read '{text}'")
    return groups, rooms


def room_of(path, rooms):
    for room in rooms:
        if any(fnmatch.fnmatch(path, glob) for glob in room.globs):
            return room
    return None


def is_standard(header):
    """A C++ standard header has neither dot nor slash; the C library's are named here."""
    return "." not in header and "/" not in header or header in ("stdlib.h", "string.h", "stdint.h", "math.h", "stdio.h")


def main():
    groups, rooms = read_table(ROOT / "rooms.txt")
    names = {room.name for room in rooms} | set(groups)
    for room in rooms:
        for name in room.allowed | set(room.forbidden):
            if name not in names and not (ROOT / name).is_file() and "/" not in name:
                sys.exit(f"rooms.txt: room {room.name} names '{name}', which is no room, group or file")
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "*.h", "*.cpp"], cwd=ROOT, check=True,
                            capture_output=True, text=True).stdout.split()
    breaches, lines, checked = [], {}, 0
    for path in sorted(listed):
        if not (ROOT / path).is_file():
            continue
        free = any(fnmatch.fnmatch(path, glob) for glob in FREE)
        room = room_of(path, rooms)
        if room is None:
            if not free:
                breaches.append(f"{path}: belongs to no room")
            continue
        if free:
            continue
        source = (ROOT / path).read_text().splitlines()
        lines[room.name] = lines.get(room.name, 0) + len(source)
        for number, line in enumerate(source, 1):
            match = INCLUDE.match(line)
            if not match:
                continue
            checked += 1
            quoted, header = match.group(1) == '"', match.group(2)
            if not quoted:
                if is_standard(header):
                    continue
                targets = [group for group, globs in groups.items() if any(fnmatch.fnmatch(header, g) for g in globs)]
                what = f"<{header}>"
            else:
                target = room_of(header, rooms)
                targets = ([target.name] if target else []) + [header]
                what = f'"{header}"'
                if not (ROOT / header).is_file() and not target:
                    breaches.append(f"{path}:{number}: {what} is not written from the repository root")
                    continue
            reasons = [room.forbidden[t] for t in targets if t in room.forbidden]
            if reasons or not any(t in room.allowed for t in targets):
                why = f" ({reasons[0]})" if reasons and reasons[0] else ""
                breaches.append(f"{path}:{number}: room {room.name} may not include {what}{why}")
    for room in rooms:
        if room.budget is not None and lines.get(room.name, 0) > room.budget:
            breaches.append(f"room {room.name}: {lines[room.name]} lines, budget {room.budget}")
    for breach in breaches:
        print(breach)
    if checked == 0:
        sys.exit("check_rooms: no include was checked")
    if "--lines" in sys.argv:
        for name, count in sorted(lines.items()):
            print(f"{count:7} {name}")
    return 1 if breaches else 0


if __name__ == "__main__":
    sys.exit(main())
