#!/usr/bin/env bash
# Builds everything with warnings as errors and runs all tests.
#   scripts/test.sh             normal build in build-test/
#   scripts/test.sh --sanitize  AddressSanitizer + UBSan + LeakSanitizer build in build-asan/
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
if [ "${1:-}" = "--sanitize" ]; then
  dir=build-asan
  flags=(-DVESK_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug)
  # Leaks are errors; tests/lsan.supp names the only objects that live as long as the process by design.
  export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0
  export LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp:print_suppressions=0"
  export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
else
  dir=build-test
  flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo)
fi
cmake -S . -B "$dir" -G Ninja -DVESK_WERROR=ON "${flags[@]}" >/dev/null
cmake --build "$dir" -j2
ctest --test-dir "$dir" --output-on-failure -j2
