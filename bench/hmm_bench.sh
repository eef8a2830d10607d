#!/bin/sh
# The casino over 10^6 rolls: Viterbi, forward, backward and one EM iteration of the hmm library
# beside GHMM's C library (Debian's libghmm-dev, installed here if missing) on the same rolls.
# CPU seconds; standard error of the decoders goes to /dev/null.
#
#   bench/hmm_bench.sh [build dir (build)] [symbols (1000000)]
set -e
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-build}
n=${2:-1000000}
out="$root/bench/data/out/hmm"
mkdir -p "$out"
dpkg -s libghmm-dev >/dev/null 2>&1 || apt-get install -y libghmm-dev >/dev/null
ninja -C "$root/$build" -j2 hmm_decode_bench >/dev/null
echo "load average: $(cut -d' ' -f1-3 /proc/loadavg)"
echo "tool	step	symbols	cpu_s	value"
"$root/$build/bench/hmm_decode_bench" "$n" "$out/rolls.txt" 2>/dev/null
if dpkg -s libghmm-dev >/dev/null 2>&1; then
    gcc -O2 -std=c99 "$root/bench/hmm_ghmm_driver.c" -o "$out/hmm_ghmm_driver" -lghmm
    "$out/hmm_ghmm_driver" "$out/rolls.txt" 2>/dev/null
else
    echo "libghmm-dev not available: GHMM skipped"
fi
