#!/bin/sh
# Fetches the profile data of Debian's hmmer-examples (globins45.fa, globins4.hmm, Pkinase.sto) into
# bench/data/scratch/hmm/ (git-ignored) and derives the reference values of the profile tests with
# tests/hmm/profile_ref.py (needs python3-numpy and python3-biopython, installed here if missing).
set -e
root=$(cd "$(dirname "$0")/.." && pwd)
sh "$root/bench/hmm_fetch_globins.sh"
scratch="$root/bench/data/scratch/hmm"
cd "$scratch"
for f in globins4.hmm Pkinase.sto; do
    [ -f "$f" ] || cp "$(find pkg -name "$f" | head -n 1)" "$f"
done
/usr/bin/python3 -c "import numpy, Bio" 2>/dev/null || apt-get install -y python3-numpy python3-biopython
/usr/bin/python3 "$root/tests/hmm/profile_ref.py" "$scratch"
echo "$scratch: $(wc -l < globins45_pair_scores.txt) pair scores, $(wc -l < globins4_ref.txt) profile decodes, $(grep -c '>' pkinase.fa) kinase domains"
