#!/usr/bin/env bash
# Compares the order of the view base's virtual operations, as the compiler lays them out, with docs/slots.txt.
set -euo pipefail
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
printf '#include "view/DMBView.h"\n' >"$work/slots.cpp"
g++ -std=c++20 -fsyntax-only -fdump-lang-class -dumpdir "$work/" -I. "$work/slots.cpp"
dump=$(ls "$work"/*.class | head -n 1)
slots=$(awk '/^Vtable for CVelDMBView$/ { on = 1; next } on && /^$/ { exit } on' "$dump" |
    sed -nE 's/^[0-9]+ +\(int \(\*\)\(\.\.\.\)\)(.*)$/\1/p' | grep -vE '^(0|-[0-9]+|\(& _ZTI.*|[0-9]+)$' |
    sed -E 's/^\(& (_ZTI.*)\)$/\1/' | c++filt | sed -E 's/\(.*$//')
if [ "${1:-}" = --update ]; then
    printf '%s\n' "$slots" >docs/slots.txt
    exit 0
fi
diff <(printf '%s\n' "$slots") docs/slots.txt || { echo "the slots differ from docs/slots.txt"; exit 1; }
