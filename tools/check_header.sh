#!/usr/bin/env bash
# tools/check_header.sh HEADER: compiles a source that includes only this header, twice.
set -euo pipefail
header=$1
flags=$(cat build/header-flags.txt 2>/dev/null || true)
if [ -z "$flags" ]; then
    flags=$(pkg-config --cflags libavcodec libavformat libavutil libswscale libswresample sdl2 cairo pangocairo)
    mkdir -p build && printf '%s' "$flags" >build/header-flags.txt.$$ && mv build/header-flags.txt.$$ build/header-flags.txt
fi
# shellcheck disable=SC2086
printf '#include "%s"\n#include "%s"\n' "$header" "$header" |
    g++ -std=c++20 -fsyntax-only -Wall -Wextra -I. -DDMB_BINARY_DIR='""' -DDMB_SOURCE_DIR='""' $flags -x c++ - || { echo "$header does not stand alone"; exit 1; }
