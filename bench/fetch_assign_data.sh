#!/usr/bin/env bash
# Fetches r-cran-deal (reinis, ksl) into bench/data/scratch/, derives the tables of the assignment
# evaluator tests and benchmark, and scores every parent set of up to three parents with the scipy
# model. Needs apt-get (download only: nothing is installed but python3-numpy/scipy when missing).
set -euo pipefail
cd "$(dirname "$0")/.."
scratch=bench/data/scratch
mkdir -p "$scratch/deal" "$scratch/assign"
if ! /usr/bin/python3 -c "import numpy, scipy" 2>/dev/null; then
  apt-get install -y -q python3-numpy python3-scipy
fi
(
  cd "$scratch/deal"
  ls r-cran-deal_*.deb >/dev/null 2>&1 || apt-get download r-cran-deal
  rm -rf x && dpkg-deb -x r-cran-deal_*.deb x
)
/usr/bin/python3 bench/assign_tables.py "$scratch/deal/x/usr/lib/R/site-library/deal/data" "$scratch/assign"
for t in reinis ksl; do
  /usr/bin/python3 tests/stdalg/alg/assign_eval_ref.py all "$scratch/assign/$t.tab" 3 1 \
    > "$scratch/assign/${t}_expected.tsv"
  echo "$scratch/assign/${t}_expected.tsv: $(($(wc -l < "$scratch/assign/${t}_expected.tsv") - 1)) parent sets"
done
