#!/usr/bin/env python3
"""Calls that module rooms may not make, each with what to use instead. Exit status 1 when one is found."""
import fnmatch
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
MODULE = ("view/*", "tuner/*", "graph/*", "dialogs/*", "dataservice/*")
FORBIDDEN = [
    (r"\bf(open|read|write|close|seek|tell|printf)\s*\(", "CreateFileW and its family"),
    (r"\b(ifstream|ofstream|fstream|filesystem)\b", "CreateFileW and its family"),
    (r"\b(printf|puts|cout|cerr|clog)\b", "OutputDebugStringW"),
    (r"\b(sn?printf|swprintf|wsprintf\w*|std::format|to_string|to_wstring)\b", "FormatW"),
    (r"\b(sleep_for|sleep_until|usleep|nanosleep)\b", "Sleep"),
    (r"\bstd::(thread|jthread|async|future|mutex|recursive_mutex|condition_variable)\b", "the window thread; CriticalSection"),
    (r"\b(system_clock|steady_clock|high_resolution_clock)\b|\btime\s*\(\s*(nullptr|NULL|0)", "CurrentTime"),
    (r"\b(localtime|gmtime)(_r|_s)?\b", "LocalTimeOf"),
    (r"\b(getenv|setenv|system|popen|fork|exec[lv]p?)\s*\(", "nothing: a module has no environment"),
    (r"\b(dynamic_cast|typeid)\b", "IsKindOf (no run-time type crosses a library)"),
    (r"\bthrow\b", "a result (no exception leaves the module)"),
    (r"\bL\"|\bwchar_t\b|\bstd::wstring\b", "WTEXT, WCHAR, WString"),
    (r"(?<![\w:])(unsigned\s+)?long\b(?!\s*double)", "LONG, LONGLONG or a type of fixed width"),
    (r"\b__uuidof\b", "the IID constant"),
    (r"#\s*include\s*<(windows|dshow|unistd|pthread|sys/)", "platform/*.h"),
]


def code_only(text):
    """Blanks comments and string contents, keeps line numbers."""
    def blank(match):
        token = match.group(0)
        if token.startswith(('"', 'L"', 'u"')):
            return token[0:token.index('"')] + '""'
        return re.sub(r"[^\n]", " ", token)
    return re.sub(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', blank, text, flags=re.S)


def main():
    listed = subprocess.run(["git", "ls-files", "-co", "--exclude-standard", "*.h", "*.cpp"], cwd=ROOT, check=True,
                            capture_output=True, text=True).stdout.split()
    found = checked = 0
    for path in sorted(listed):
        if not any(fnmatch.fnmatch(path, glob) for glob in MODULE) or path.endswith("_test.cpp"):
            continue
        if not (ROOT / path).is_file():
            continue
        checked += 1
        raw = (ROOT / path).read_text()
        for number, line in enumerate(code_only(raw).splitlines(), 1):
            for pattern, instead in FORBIDDEN:
                if re.search(pattern, line):
                    print(f"{path}:{number}: {line.strip()[:80]}  -> use {instead}")
                    found += 1
    if checked == 0:
        sys.exit("check_forbidden: no module source was checked")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
