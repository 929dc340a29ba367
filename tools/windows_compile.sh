#!/usr/bin/env bash
# The module for Windows: compiled for x86_64, checked for i686 (where a forgotten calling convention shows).
set -euo pipefail
cd "$(dirname "$0")/.."
tools/build.sh win64
sources=$(git ls-files -co --exclude-standard 'view/*.cpp' 'tuner/*.cpp' 'graph/*.cpp' 'dialogs/*.cpp' 'dataservice/*.cpp' \
    'jpeg/*.cpp' | grep -v '_test\.cpp$')
[ -n "$sources" ] || { echo "no module source found"; exit 1; }
printf '%s\n' "$sources" | xargs -P "$(nproc)" -I{} i686-w64-mingw32-g++-posix -std=c++20 -fsyntax-only -Wall -Wextra -Werror \
    -I. -DDMB_BUILDING_MODULE {}
echo "i686: $(printf '%s\n' "$sources" | wc -l) sources"
