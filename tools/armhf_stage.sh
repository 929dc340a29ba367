#!/usr/bin/env bash
# The JPEG decoder on 32-bit ARM, the device's own kind of processor: built with the cross compiler, all of its tests run
# under qemu-user. There the portable paths stand alone, so their sums are compared with those of the vector paths too.
# Exit status 0 only when every test ran and passed.
set -euo pipefail
cd "$(dirname "$0")/.."
fail() { echo "armhf stage: $*" >&2; exit 1; }
tools/setup.sh armhf
for tool in arm-linux-gnueabihf-g++ qemu-arm; do
    command -v "$tool" >/dev/null || fail "$tool is missing"
done

begin=$SECONDS
tools/build.sh armhf jpeg_tests
echo "armhf stage: built after $((SECONDS - begin)) s"

tests=build/armhf/bin/jpeg_tests
# What was built is what is meant: 32 bits, ARM.
header=$(od -An -tx1 -N20 "$tests" | tr -d ' \n')
[ "${header:8:2}" = 01 ] && [ "${header:36:4}" = 2800 ] || fail "$tests is not a 32-bit ARM program"
log=build/armhf/jpeg_tests.log
qemu-arm "$tests" >"$log" 2>&1 || { tail -n 60 "$log"; fail "tests failed"; }
summary=$(grep '^ROOM SUMMARY:' "$log") || fail "no summary of the tests"
echo "$summary"
[[ $summary =~ ^'ROOM SUMMARY: '([1-9][0-9]*)' passed, 0 failed' ]] || fail "not every test passed"
echo "cases: ${BASH_REMATCH[1]} passed, 0 failed on armhf"
echo "armhf stage: ended after $((SECONDS - begin)) s"
