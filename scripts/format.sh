#!/usr/bin/env bash
# Formats every C++ source of the tree with the root's .clang-format.
# Usage: format.sh          rewrites the files in place
#        format.sh --check  lists the files that are not formatted, exits 1 if any
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t files < <(git ls-files -co --exclude-standard -- '*.cpp' '*.h' | grep -v '^build')
if [ "${1:-}" = "--check" ]; then
  # clang-format names each file it would change in its warnings.
  mapfile -t bad < <(clang-format --dry-run "${files[@]}" 2>&1 | grep -oE '^[^:]+:[0-9]+:[0-9]+: warning' |
    cut -d: -f1 | sort -u)
  if [ ${#bad[@]} -gt 0 ]; then
    printf 'Not formatted: %s\n' "${bad[@]}" >&2
    echo "Run: bash scripts/format.sh" >&2
    exit 1
  fi
  exit 0
fi
clang-format -i "${files[@]}"
