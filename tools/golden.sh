#!/usr/bin/env bash
# Paints the stored pictures of the screen anew. Look at every one that changed, and say in the commit why it did.
# tools/golden.sh [preset]   default: release; the preset's golden_tests must be built
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
painted=$(mktemp -d)
trap 'rm -rf "$painted"' EXIT
DMB_GOLDEN_FOLDER=$painted "$here/build/${1:-release}/bin/golden_tests" --gtest_brief=1
rm -f "$here"/tests/data/golden/*.png
python3 "$here/tools/golden.py" "$painted" "$here/tests/data/golden"
git -C "$here" status --short tests/data/golden
