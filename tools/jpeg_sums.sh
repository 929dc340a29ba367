#!/bin/sh
# Writes tests/golden/jpeg.sums anew from the decoder as it is. Look at the difference before you commit it.
set -eu
cd "$(dirname "$0")/.."
cmake --preset release > /dev/null
cmake --build --preset release --target jpeg_tests > /dev/null
build/release/bin/jpeg_tests --gtest_filter='JpegGolden.*' > /dev/null || true
cp build/release/jpeg.sums tests/golden/jpeg.sums
git --no-pager diff --stat -- tests/golden/jpeg.sums
