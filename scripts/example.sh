#!/usr/bin/env bash
# Builds vesk and runs it on the bundled example; the report is written to ./vesk_report.tsv.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake -S . -B build-example -G Ninja -DCMAKE_BUILD_TYPE=Release -DVESK_TESTS=OFF >/dev/null
cmake --build build-example -j2 --target vesk
build-example/tools/vesk data/vesk/run.opt
echo "report written to $(pwd)/vesk_report.tsv"
