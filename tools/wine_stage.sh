#!/usr/bin/env bash
# The graph controller's tests on a graph that nobody here wrote: built for Windows, run under Wine in a fresh prefix, without a
# display and without a sound card. Then the calls that the scripted filters saw there and here are compared line by line.
# Exit status 0 only when everything ran and agreed.
set -euo pipefail
cd "$(dirname "$0")/.."
begin=$SECONDS
fail() { echo "wine stage: $*" >&2; exit 1; }
for tool in wine wineboot wineserver python3 x86_64-w64-mingw32-g++-posix i686-w64-mingw32-g++-posix; do
    command -v "$tool" >/dev/null || fail "$tool is missing"
done

tools/build.sh wine graph_tests graph_trace
tools/build.sh release graph_trace

# What runs in both worlds must also know its calling conventions, which only i686 can tell.
i686-w64-mingw32-g++-posix -std=c++20 -fsyntax-only -Wall -Wextra -Werror -I. -DDMB_BUILDING_MODULE -DDMB_BUILDING_HOST \
    graph/DMBFilterControl.cpp graph/FilterOps.cpp host/dshow/ComObject.cpp host/dshow/FilterBase.cpp \
    host/dshow/MediaType.cpp tests/graph/ScriptedFilters.cpp

# A prefix of our own. The programs run on its drive C:, because on Wine's Z: a path that begins with "\" is the host's root.
world=$PWD/build/wine/world
rm -rf "$world"
mkdir -p "$world"
echo 'pcm.!default { type null }' >"$world/asound.conf"
in_prefix() {
    env -i PATH="$PATH" HOME="$world" LANG=C.UTF-8 WINEPREFIX="$world/prefix" WINEDEBUG=-all \
        WINEDLLOVERRIDES='mscoree=;mshtml=' ALSA_CONFIG_PATH="$world/asound.conf" timeout 100 "$@"
}
finish() { in_prefix wineserver -k >/dev/null 2>&1 || true; }
trap finish EXIT
in_prefix wineboot -i >"$world/boot.log" 2>&1 || { cat "$world/boot.log"; fail "no prefix"; }
# Windows without a display.
in_prefix wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >>"$world/boot.log" 2>&1 || fail "no registry"
home=$world/prefix/drive_c/graph
mkdir "$home"
cp build/wine/bin/graph_tests.exe build/wine/bin/graph_trace.exe "$home"
echo "wine stage: prefix ready after $((SECONDS - begin)) s ($(wine --version 2>/dev/null))"

status=0
(cd "$home" && in_prefix wine graph_tests.exe --gtest_brief=1) 2>"$world/tests.err" | tr -d '\r' >"$world/tests.log" || status=$?
cat "$world/tests.log"
[ $status -eq 0 ] || fail "the tests ended with status $status"
grep -qE '^ROOM SUMMARY: [1-9][0-9]* passed, 0 failed, 0 not run$' "$world/tests.log" || fail "the tests did not end"

(cd "$home" && in_prefix wine graph_trace.exe) 2>"$world/trace.err" | tr -d '\r' >"$world/there.txt" || fail "the trace did not end"
build/release/bin/graph_trace >"$world/here.txt"
python3 tools/compare_traces.py "$world/here.txt" "$world/there.txt" tests/graph/known_differences.txt

echo "wine stage: $((SECONDS - begin)) s"
