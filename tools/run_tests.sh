#!/usr/bin/env bash
# tools/run_tests.sh PRESET [ctest options]: runs the tests of a build and adds up their cases.
set -uo pipefail
cd "$(dirname "$0")/.."
preset=$1
shift
wrap=()
# The thread sanitizer wants a fixed address layout on newer kernels.
[ "$preset" = tsan ] && command -v setarch >/dev/null && wrap=(setarch "$(uname -m)" -R)
"${wrap[@]}" ctest --test-dir "build/$preset" --output-on-failure -j "$(nproc)" --no-tests=error "$@"
status=$?
log=build/$preset/Testing/Temporary/LastTest.log
echo
grep -h '^NOT RUN ' "$log" | sort | uniq
awk '/^ROOM SUMMARY:/ { passed += $3; failed += $5; skipped += $7; rooms++ }
     END { printf "cases: %d passed, %d failed, %d skipped\n", passed, failed, skipped }' "$log"
[ $status -eq 0 ] || echo "some tests failed (ctest exit status $status); details above" >&2
exit $status
