#!/usr/bin/env bash
# Sets up the machine, builds everything and runs every test: once in the
# normal build, once more with the address and undefined-behaviour sanitizers.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
jobs=$(nproc)

# An unformatted file fails the run before anything is built; the message names
# the command that fixes it.
bash scripts/format.sh --check

bash scripts/build.sh build-test -DCMAKE_BUILD_TYPE=RelWithDebInfo
(cd build-test && ctest --output-on-failure -j "$jobs")

# The sanitizer build covers the logic; the editor's widgets are left out.
bash scripts/build.sh build-asan -DCMAKE_BUILD_TYPE=Debug -DVELLUMARK_SANITIZE=ON \
  -DVELLUMARK_GUI=OFF -DVELLUMARK_BENCH=OFF -DVELLUMARK_FUZZ=OFF
(cd build-asan && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --output-on-failure -j "$jobs")
echo "All tests passed."
