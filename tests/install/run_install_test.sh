#!/bin/sh
# Installs the build into a temporary prefix and builds and runs a small project against the package.
#   run_install_test.sh BUILD_DIR SOURCE_DIR "EXTRA CXX FLAGS"
set -eu
build=$1
src=$2
flags=${3:-}
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
cmake --install "$build" --prefix "$tmp/prefix" >/dev/null
for f in bin/vesk bin/vesk_import share/man/man1/vesk.1 share/man/man1/vesk_import.1 \
         include/vesk/base/options.h include/vesk/stdalg/ds/BitVec.h lib/cmake/vesk/veskConfig.cmake; do
  [ -e "$tmp/prefix/$f" ] || { echo "not installed: $f" >&2; exit 1; }
done
"$tmp/prefix/bin/vesk_import" --version
cmake -S "$src/tests/install/consumer" -B "$tmp/consumer" -DCMAKE_PREFIX_PATH="$tmp/prefix" \
      -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_EXE_LINKER_FLAGS="$flags" >/dev/null
cmake --build "$tmp/consumer" >/dev/null
"$tmp/consumer/consumer"
