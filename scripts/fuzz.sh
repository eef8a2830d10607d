#!/usr/bin/env bash
# Builds the libFuzzer harnesses of tests/fuzz with clang (build-fuzz/) and fuzzes each reader in turn.
#   scripts/fuzz.sh                 long campaign: every harness for FUZZ_TIME seconds (default 1800), or
#                                   until FUZZ_RUNS inputs have run when that is set (FUZZ_TIME still caps it)
#   scripts/fuzz.sh --replay        replays the committed corpora only (a crash fails)
#   scripts/fuzz.sh --short [secs]  replay, then each harness for a few seconds (default 15): the CI step
# Harnesses run one at a time under nice. New inputs go to build-fuzz/corpus/<harness>/ (not committed);
# a crash leaves build-fuzz/crash-* and stops the script with status 1. The system's own fatal is no crash.
set -euo pipefail
cd "$(dirname "$0")/.."
mode=${1:-long}
secs=${FUZZ_TIME:-1800}
[ "$mode" = "--short" ] && secs=${2:-15}
command -v clang++ >/dev/null || { echo "fuzz: clang++ not found (apt-get install clang)" >&2; exit 1; }
CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DVESK_FUZZ=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build-fuzz --target fuzzers -j2
# Leak checking is left to the sanitizer test run: a fatal ends an input by unwinding, which frees.
export ASAN_OPTIONS=detect_leaks=0:allocator_may_return_null=0
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
status=0
for dir in tests/fuzz/corpus/*/; do
  name=$(basename "$dir")
  bin=build-fuzz/tests/fuzz/$name
  work=build-fuzz/corpus/$name
  mkdir -p "$work"
  echo "== $name: replay of $(ls "$dir" | wc -l) committed inputs"
  "$bin" -rss_limit_mb=2048 -timeout=20 "$dir"/* >"build-fuzz/$name.replay.log" 2>&1 ||
    { echo "fuzz: $name crashed on a committed input, see build-fuzz/$name.replay.log" >&2; status=1; continue; }
  [ "$mode" = "--replay" ] && continue
  echo "== $name: fuzzing for ${secs}s"
  runs=()
  [ "$mode" = "long" ] && [ -n "${FUZZ_RUNS:-}" ] && runs=(-runs="$FUZZ_RUNS")
  (cd build-fuzz && nice -n 19 "tests/fuzz/$name" "${runs[@]}" -max_total_time="$secs" -rss_limit_mb=2048 -timeout=20 \
     -max_len=4096 -print_final_stats=1 "corpus/$name" "../$dir" >"$name.fuzz.log" 2>&1) ||
    { echo "fuzz: $name found a crash, see build-fuzz/$name.fuzz.log" >&2; status=1; continue; }
  grep -E "^#[0-9]+[[:space:]]+DONE|stat::number_of_executed_units|stat::average_exec_per_sec|stat::peak_rss_mb" \
    "build-fuzz/$name.fuzz.log"
done
exit $status
