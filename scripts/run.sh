#!/usr/bin/env bash
# Sets up the machine, builds the editor and starts it with the files given.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
bash scripts/build.sh build -DCMAKE_BUILD_TYPE=Release -DVELLUMARK_TESTS=OFF -DVELLUMARK_BENCH=OFF
exec ./build/src/app/vellumark "$@"
