#!/usr/bin/env bash
# The long mutation run: 10,000 damaged files per reader (ZYN_MUTATIONS), through
# the image test program's mutation suite, under the Wine harness.
#   tools/mutate-images.sh [COUNT]
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
count=${1:-10000}
make -C "$here" build-x86_64 >/dev/null
cd "$here/build/x86_64"
ZYN_TESTDATA=$PWD/testdata ZYN_MUTATIONS=$count bash "$here/tools/harness.sh" run \
  "$here/tools/wine-run" ./zyn_image_tests.exe --gtest_filter='ImageMutation.*'
