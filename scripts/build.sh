#!/usr/bin/env bash
# Configures and builds one build tree. Usage: build.sh DIR [cmake options...]
set -euo pipefail
cd "$(dirname "$0")/.."
dir="$1"; shift
launcher=()
# A compiler cache makes the second tree (the sanitizer build) and later runs cheap.
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  # Relative paths let every checkout of the tree share one cache.
  export CCACHE_BASEDIR="${CCACHE_BASEDIR:-$PWD}" CCACHE_NOHASHDIR=1
fi
cmake -S . -B "$dir" -G Ninja "${launcher[@]}" "$@" >/dev/null
ninja -C "$dir"
