#!/usr/bin/env bash
# Degenerate pattern matching on the fly promoters beside grep -c -E, and incremental edits, in one run.
#
#   bench/motif_match_bench.sh [build dir]      (Debian 12; default build dir: build)
#
# Fetches the fly promoters (bench/data/fetch_seqpack.sh) if absent and builds motif_match_bench. Then:
#   - all 26,454 promoters (2,000 bases), index k 6 without '*' (MAXDEG_ALL, default 0; the index walk
#     is slow with '*'): 20 random 8-position degenerate patterns matched in the packed form, and the
#     same patterns as extended regular expressions counted by grep -c -E over the letter promoters one
#     per line (each grep timed by the shell; counts compared). The expressions read as the packed match
#     does: N in a promoter fits every position, and two letters must follow a match. A promoter
#     shorter than 2,000 bases is packed behind whole words of padding and may count differently;
#   - the first EDIT_GENES promoters (default 2000), index k 6 with one '*': 10,000 random single edits
#     beside a fresh match of all genes.
# Outputs go to bench/data/out/motif/. The load average is printed before each part.
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
root="$(dirname "$here")"
build="${1:-$root/build}"
data="$here/data/out/seqpack"
out="$here/data/out/motif"
MAXDEG_ALL="${MAXDEG_ALL:-0}"
EDIT_GENES="${EDIT_GENES:-2000}"

[ -s "$data/fly_promoters.fa" ] || "$here/data/fetch_seqpack.sh"
ninja -C "$build" motif_match_bench >/dev/null
mkdir -p "$out/all" "$out/edits"
bench="$build/bench/motif_match_bench"

echo "== full match, all promoters; $(uptime)"
"$bench" "$data/fly_genes.tab" "$data/fly_promoters.fa" 2000 "$out/all" --patterns 20 --edits 0 \
    --max-deg "$MAXDEG_ALL" 2>/dev/null

echo "== grep -c -E on the same patterns; $(uptime)"
grep_total=0
same=0
n=0
while IFS=$'\t' read -r pat ere count secs; do
    start=$(date +%s.%N)
    g=$(grep -c -E "$ere" "$out/all/seqs.txt" || true)
    end=$(date +%s.%N)
    t=$(echo "$end - $start" | bc -l)
    grep_total=$(echo "$grep_total + $t" | bc -l)
    n=$((n + 1))
    [ "$g" = "$count" ] && same=$((same + 1))
    printf '%s\t%s\tvesk %s genes %.4f s\tgrep %s lines %.4f s\n' "$pat" "$ere" "$count" "$secs" "$g" "$t"
done < "$out/all/patterns.tsv"
printf 'grep total %.3f s over %d patterns; %d of %d counts equal\n' "$grep_total" "$n" "$same" "$n"

echo "== incremental edits, first $EDIT_GENES promoters; $(uptime)"
"$bench" "$data/fly_genes.tab" "$data/fly_promoters.fa" 2000 "$out/edits" --patterns 0 --edits 10000 \
    --genes "$EDIT_GENES" --max-deg 1 2>/dev/null
