#!/bin/sh
# Times the hit readers and both doc generators on 10^6 synthetic hits over eight yeast species
# (bench/ortho_bench.cpp) and proteinortho's clustering step on the same hit graph beside them.
# Run from the repository root after `ninja -C build ortho_bench`; installs proteinortho if missing.
set -e
out=bench/data/out/ortho_1m
mkdir -p "$out"
command -v proteinortho_clustering >/dev/null || apt-get install -y --no-install-recommends proteinortho
uptime
./build/bench/ortho_bench gen "$out" 1000000 5000
/usr/bin/time -v ./build/bench/ortho_bench run "$out" 2> "$out/vesk.time"
grep -E "User time|System time|Maximum resident" "$out/vesk.time"
/usr/bin/time -v proteinortho_clustering -cpus 1 -seed 1 -rmgraph "$out/remove.graph" "$out/po.graph" \
    > "$out/po.out" 2> "$out/po.err"
grep -E "User time|System time|Maximum resident" "$out/po.err"
/usr/bin/python3 bench/ortho_po_check.py "$out"
uptime
