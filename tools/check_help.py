#!/usr/bin/env python3
"""Compares what the programs' --help tells with the manuals (docs/man, in both languages) and the shell completions (host/desktop): every option and
sub-command is in all of them, and nothing is there that a program does not know.

    tools/check_help.py --bin build/release/bin"""
import argparse
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
OPTION = re.compile(r"(?<![\w-])--[a-z][a-z-]*[a-z]")
SUBCOMMANDS = {
    "dmbtv": ["demo", "scan", "list", "record", "play"],
    "dmbhead": ["demo", "make", "parts"],
    "dmbprobe": ["info", "fic", "ts", "pad", "audio", "bsac", "play"],
}

# The manuals' folders and what two of their sections are called.
MANUALS = {
    "docs/man": ("OPTIONS", "EXIT STATUS"),
    "docs/man/ko": ("옵션", "종료 상태"),
}

problems = []
checks = 0


def check(good, what):
    global checks
    checks += 1
    if not good:
        problems.append(what)


def help_of(program, *words):
    done = subprocess.run([str(program), *words, "--help"], capture_output=True, text=True)
    check(done.returncode == 0 and done.stdout and not done.stderr, f"{program.name} {' '.join(words)} --help: {done}")
    return done.stdout


def options_of_help(text):
    """Options where a line declares them; a mention in a sentence is none."""
    declared = set()
    for line in text.splitlines():
        match = re.match(r"\s+(?:-\w, ?)?(--[a-z-]+)", line)
        if match:
            declared.add(match.group(1))
        elif re.match(r"\s+dmbhead ", line):
            declared |= set(OPTION.findall(line))
    return declared


def listed_subcommands(text):
    part = re.search(r"\nSubcommands:\n((?:  .*\n)+)", text)
    return set(re.findall(r"^  (\w+)  ", part.group(1), re.MULTILINE)) if part else None


def plain(troff):
    text = troff.replace("\\-", "-").replace("\\(dq", '"')
    return re.sub(r"\\f[BIR]", "", text)


def sections(text):
    return dict(re.findall(r"^\.SH \"?(.+?)\"?\n((?:(?!\.SH ).*\n)*)", text, re.MULTILINE))


def check_manual(name, folder, number, options, commands, statuses):
    """One program's manual in one language."""
    titles = MANUALS[folder]
    page = f"{folder}/{name}.1"
    manual = plain((ROOT / page).read_text())
    check(f'"DMB View {number}"' in manual.splitlines()[0], f"{page} is not of version {number}")
    mentioned = set(OPTION.findall(manual))
    check(mentioned == options, f"{page} differs from --help: missing {sorted(options - mentioned)}, "
                                f"unknown {sorted(mentioned - options)}")
    explained = set(OPTION.findall(sections(manual).get(titles[0], "")))
    check(explained == options, f"{page} does not explain {sorted(options - explained)}")
    for command in commands:
        check(re.search(rf"^\.SS {name} {command}\b", manual, re.MULTILINE), f"{page} has no part on {command}")
    if statuses:
        told = re.findall(r"^\.B (\d+)$", sections(manual).get(titles[1], ""), re.MULTILINE)
        check(told == statuses, f"exit statuses in {page} are {told}, in --help {statuses}")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("--bin", required=True, type=pathlib.Path)
    folder = parser.parse_args().bin.resolve()
    completions = {name: (ROOT / "host/desktop" / name).read_text() for name in ("completion.bash", "_dmbtv")}
    every_option = set()
    for name, commands in SUBCOMMANDS.items():
        program = folder / name
        top = help_of(program)
        said = listed_subcommands(top)
        check(said is None or said == set(commands), f"{name} --help lists {said}, expected {commands}")
        options = options_of_help(top)
        if name != "dmbhead":
            for command in commands:
                options |= options_of_help(help_of(program, command))
        every_option |= options
        version = subprocess.run([str(program), "--version"], capture_output=True, text=True)
        number = version.stdout.split()[-1] if version.stdout else "?"
        statuses = re.search(r"^Exit status: (.*)$", top, re.MULTILINE)
        numbers = re.findall(r"(?:^|; )(\d+) ", statuses.group(1)) if statuses and name == "dmbtv" else []
        for manual in MANUALS:
            check_manual(name, manual, number, options, commands, numbers)
        for command in commands:
            for file, text in completions.items():
                check(re.search(rf"\b{command}\b", text), f"{file} does not know {name} {command}")
        for file, text in completions.items():
            known = set(OPTION.findall(text))
            check(options <= known, f"{file} lacks {sorted(options - known)} of {name}")
    for file, text in completions.items():
        unknown = set(OPTION.findall(text)) - every_option
        check(not unknown, f"{file} knows {sorted(unknown)}, which no program has")
    for problem in problems:
        print("FAULT", problem)
    print(f"ROOM SUMMARY: {checks - len(problems)} passed, {len(problems)} failed, 0 not run")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
