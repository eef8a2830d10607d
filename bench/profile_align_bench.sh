#!/bin/sh
# DynProgAlign with traceback on all pairs of the 45 globins of hmmer-examples (fetched by
# bench/hmm_fetch_profiles.sh) beside Biopython's PairwiseAligner (global, linear gap -4, BLOSUM62,
# score and first traceback), in the same run; cells per CPU second. Then one EM iteration of a
# star-initialised profile on the 45 globins. Standard error of the hmm library goes to /dev/null.
#
#   bench/profile_align_bench.sh [build dir (build)] [repeats (5)]
set -e
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-build}
repeats=${2:-5}
scratch="$root/bench/data/scratch/hmm"
[ -f "$scratch/globins45.fa" ] && [ -f "$scratch/globins4.hmm" ] || sh "$root/bench/hmm_fetch_profiles.sh"
/usr/bin/python3 -c "import Bio" 2>/dev/null || apt-get install -y python3-biopython >/dev/null
ninja -C "$root/$build" -j2 profile_align_bench >/dev/null
echo "load average: $(cut -d' ' -f1-3 /proc/loadavg)"
echo "tool	step	cells	cpu_s	cells_per_s	check"
"$root/$build/bench/profile_align_bench" "$scratch/globins45.fa" "$root/data/hmm/blosum62_codes.opt" -4 "$repeats" 2>/dev/null
/usr/bin/python3 - "$scratch/globins45.fa" "$repeats" <<'PY'
import sys, time
from Bio.Align import PairwiseAligner, substitution_matrices
seqs, cur = [], None
for line in open(sys.argv[1]):
    line = line.strip()
    if line.startswith(">"):
        seqs.append("")
    elif line:
        seqs[-1] += line
al = PairwiseAligner(mode="global", substitution_matrix=substitution_matrices.load("BLOSUM62"),
                     open_gap_score=-4, extend_gap_score=-4)
cells, check, t0 = 0, 0, time.process_time()
for _ in range(int(sys.argv[2])):
    for i in range(len(seqs)):
        for j in range(i + 1, len(seqs)):
            a = al.align(seqs[i], seqs[j])
            first = a[0]
            check += int(a.score)
            cells += len(seqs[i]) * len(seqs[j])
t = time.process_time() - t0
print("biopython\tdp_all_pairs\t%d\t%.3f\t%.4g\t%d" % (cells, t, cells / t, check))
PY
