#!/usr/bin/env bash
# Fuzzes every file family with libFuzzer under the address and undefined-
# behaviour sanitizers. Usage: fuzz.sh [SECONDS [JOBS [FAMILY...]]]  (each
# target, default 60 seconds; JOBS targets run at once, default 1; the named
# families only, e.g. "fuzz.sh 600 2 tga pcx", default all)
#
# Builds the fuzz targets with clang in build-fuzz/, runs each for SECONDS on
# a copy of its seed corpus (the seeds in the tree stay as they are), and
# prints executions, crashes and leaks per target. Crashing inputs are kept in
# build-fuzz/findings/TARGET/. The exit status is 1 when anything was found.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
jobs="${2:-1}"
shift $(( $# < 2 ? $# : 2 ))
only=("$@")

# clang and its runtime (libFuzzer and the sanitizers) from Debian.
need=(clang libclang-rt-14-dev)
missing=()
for p in "${need[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

dir=build-fuzz
launcher=()
if command -v ccache >/dev/null; then
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  export CCACHE_BASEDIR="${CCACHE_BASEDIR:-$PWD}" CCACHE_NOHASHDIR=1
fi
cmake -S . -B "$dir" -G Ninja "${launcher[@]}" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DVELLUMARK_SANITIZE=ON -DVELLUMARK_LIBFUZZER=ON \
  -DVELLUMARK_TESTS=OFF -DVELLUMARK_BENCH=OFF -DVELLUMARK_GUI=OFF -DVELLUMARK_FUZZ=ON >/dev/null
targets=$(sed -n 's/^vellumark_fuzz_family(\(fuzz_[a-z0-9]*\) [0-9]* \([a-z0-9]*\)).*/\1:\2/p' fuzz/CMakeLists.txt)
if [ ${#only[@]} -gt 0 ]; then
  chosen=""
  for t in $targets; do
    for f in "${only[@]}"; do [ "${t%%:*}" = "fuzz_$f" ] && chosen="$chosen $t"; done
  done
  targets="$chosen"
fi
ninja -C "$dir" $(for t in $targets; do echo "${t%%:*}"; done)

export QT_QPA_PLATFORM=offscreen
# Leaks are looked for at the end of each input; the sanitizer's own abort on
# undefined behaviour makes it a crash.
export ASAN_OPTIONS="detect_leaks=1:allocator_may_return_null=0"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
status=0
# One target: its own copy of the seeds, its findings, its log.
fuzz_one() {
  local name="$1" seeds="$2"
  local work="$dir/corpus/$name" findings="$dir/findings/$name" log="$dir/$name.log"
  rm -rf "$work" "$findings"
  mkdir -p "$work" "$findings"
  cp -r "fuzz/corpus/$seeds/." "$work/"
  # A picture may ask for up to the 2 GiB block cap, which the parsers grant
  # to compressed files; the limits sit above it so that only real excess shows.
  "$dir/fuzz/$name" "$work" -max_total_time="$seconds" -rss_limit_mb=3072 -malloc_limit_mb=3072 \
    -timeout=60 -print_final_stats=1 -artifact_prefix="$findings/" -fork=0 >"$log" 2>&1 || true
}
running=0
for t in $targets; do
  fuzz_one "${t%%:*}" "${t##*:}" &
  running=$((running + 1))
  if [ "$running" -ge "$jobs" ]; then
    wait -n || true
    running=$((running - 1))
  fi
done
wait
printf '%-10s %12s %8s %6s\n' target executions crashes leaks
for t in $targets; do
  name="${t%%:*}" findings="$dir/findings/${t%%:*}" log="$dir/${t%%:*}.log"
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
  crashes=$(find "$findings" -name 'crash-*' -o -name 'timeout-*' -o -name 'oom-*' | wc -l)
  leaks=$(find "$findings" -name 'leak-*' | wc -l)
  printf '%-10s %12s %8s %6s\n' "$name" "${runs:-?}" "$crashes" "$leaks"
  [ "$crashes" -eq 0 ] && [ "$leaks" -eq 0 ] || status=1
done
exit $status
