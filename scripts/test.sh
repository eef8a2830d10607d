#!/usr/bin/env bash
# Builds everything with warnings as errors and runs all tests.
#   scripts/test.sh             normal build in build-test/
#   scripts/test.sh --sanitize  AddressSanitizer + UBSan build in build-asan/
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
if [ "${1:-}" = "--sanitize" ]; then
  dir=build-asan
  flags=(-DVESK_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug)
  # Process-lifetime objects (option arrays, universe variables) are never freed by design.
  export ASAN_OPTIONS=detect_leaks=0:abort_on_error=0
  export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
else
  dir=build-test
  flags=(-DCMAKE_BUILD_TYPE=RelWithDebInfo)
fi
cmake -S . -B "$dir" -G Ninja -DVESK_WERROR=ON "${flags[@]}" >/dev/null
cmake --build "$dir" -j2
ctest --test-dir "$dir" --output-on-failure -j2
