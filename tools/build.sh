#!/usr/bin/env bash
# tools/build.sh PRESET [TARGET ...]: configures and builds quietly. Progress on a terminal, the log's end on a failure.
set -euo pipefail
cd "$(dirname "$0")/.."
preset=$1
shift
command -v ccache >/dev/null && export CMAKE_CXX_COMPILER_LAUNCHER=ccache
mkdir -p "build/$preset"
log=build/$preset/build.log
fail() {
    echo "build of '$preset' failed; the end of $log:" >&2
    tail -n 40 "$log" >&2
    exit 1
}
if [ ! -f "build/$preset/build.ninja" ]; then
    echo "configuring ($preset)"
    cmake --preset "$preset" >"$log" 2>&1 || fail
fi
targets=()
[ $# -gt 0 ] && targets=(--target "$@")
if [ -t 1 ]; then
    cmake --build --preset "$preset" "${targets[@]}" 2>&1 | tee "$log" |
        awk '/^\[[0-9]+\/[0-9]+\]/ { printf "\r\033[Kbuilding (%s) %s", preset, $1; fflush(); seen = 1 }
             /warning:|error:/ { printf "\r\033[K%s\n", $0; fflush() }
             END { if (seen) printf "\r\033[K" }' preset="$preset" || fail
else
    echo "building ($preset)"
    cmake --build --preset "$preset" "${targets[@]}" >"$log" 2>&1 || fail
    grep -E 'warning:' "$log" || true
fi
