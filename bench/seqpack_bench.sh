#!/usr/bin/env bash
# Benchmark of the seqpack k-mer counts and PSSM scan beside Jellyfish and Biopython, in one run.
#
#   bench/seqpack_bench.sh [build dir]      (as root on Debian 12; default build dir: build)
#
# Installs jellyfish and python3-biopython if missing, fetches the fly promoters and JASPAR matrices
# (bench/data/fetch_seqpack.sh) if absent, builds seqpack_bench, then:
#   - vesk: 8-mer and 12-mer counts (array path; table writing timed apart), the best site of all 205
#     PSSMs in the first PSSM_GENES promoters (default: all), both strands;
#   - jellyfish count -m 8 -s 1M -t 2 and -m 12 -s 32M -t 2 (dump timed apart), and the dumped
#     counts compared with vesk's tables;
#   - Biopython's calculate on both strands over the first BIO_GENES promoters (default 500).
# Outputs go to bench/data/out/seqpack/run/. The load average is printed before each part.
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
root="$(dirname "$here")"
build="${1:-$root/build}"
data="$here/data/out/seqpack"
run="$data/run"
PSSM_GENES="${PSSM_GENES:--1}"
BIO_GENES="${BIO_GENES:-500}"

missing=()
command -v jellyfish >/dev/null || missing+=(jellyfish)
/usr/bin/python3 -c 'import Bio.motifs' 2>/dev/null || missing+=(python3-biopython)
if [ ${#missing[@]} -gt 0 ]; then
    export DEBIAN_FRONTEND=noninteractive
    apt-get install -y -q "${missing[@]}" || { apt-get update -q && apt-get install -y -q "${missing[@]}"; }
fi
[ -s "$data/fly_promoters.fa" ] && [ -s "$data/jaspar.pssmd" ] || "$here/data/fetch_seqpack.sh"
ninja -C "$build" seqpack_bench
mkdir -p "$run"

TIMEFORMAT='wall %R s, user %U s, sys %S s'
echo "== vesk (load: $(cut -d' ' -f1-3 /proc/loadavg))"
"$build/bench/seqpack_bench" "$data/fly_genes.tab" "$data/fly_promoters.fa" 2000 "$data/jaspar.pssmk" \
    "$data/jaspar.pssmd" "$run" --pssm-genes "$PSSM_GENES"

for k in 8 12; do
    size=1M
    [ "$k" = 12 ] && size=32M
    echo "== jellyfish count -m $k -s $size -t 2 (load: $(cut -d' ' -f1-3 /proc/loadavg))"
    time jellyfish count -m "$k" -s "$size" -t 2 -o "$run/jf$k.jf" "$data/fly_promoters.fa"
    echo "== jellyfish dump -c (timed apart)"
    time jellyfish dump -c -t "$run/jf$k.jf" > "$run/jf$k.tsv"
    LC_ALL=C sort "$run/jf$k.tsv" > "$run/jf$k.sorted.tsv"
    if cmp -s "$run/jf$k.sorted.tsv" "$run/vesk_k$k.tsv"; then
        echo "k=$k: vesk's counts equal Jellyfish's ($(wc -l < "$run/vesk_k$k.tsv") k-mers)"
    else
        echo "k=$k: vesk's counts DIFFER from Jellyfish's"
    fi
    rm -f "$run/jf$k.jf"
done

echo "== Biopython (load: $(cut -d' ' -f1-3 /proc/loadavg))"
/usr/bin/python3 "$here/seqpack_biopython.py" "$data/fly_promoters.fa" "$data/jaspar.pssmd" "$BIO_GENES" \
    "$run/vesk_sites.tsv"
