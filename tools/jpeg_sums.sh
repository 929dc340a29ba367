#!/bin/sh
# Writes tests/golden/jpeg.sums anew from the decoder as it is. Look at the difference before you commit it.
set -eu
cd "$(dirname "$0")/.."
cmake --preset release > /dev/null
cmake --build --preset release --target jpeg_tests > /dev/null
rm -f build/release/jpeg.sums # a run that breaks off must not leave an older one to be copied
# The sums differ from the stored ones, or nobody would be here: the test may fail, but it has to write them.
build/release/bin/jpeg_tests --gtest_filter='JpegGolden.*' > /dev/null || true
cp build/release/jpeg.sums tests/golden/jpeg.sums
git --no-pager diff --stat -- tests/golden/jpeg.sums
