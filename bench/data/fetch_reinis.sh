#!/usr/bin/env bash
# Fetch r-cran-deal's reinis data set and write the tables of the ebn real-data test.
#
#   bench/data/fetch_reinis.sh          (as root on Debian 12; may be launched from any directory)
#
# Downloads (without installing) r-cran-deal with apt-get download into bench/data/scratch/debs,
# unpacks it with dpkg-deb -x into bench/data/scratch/root, and runs bench/data/make_reinis.py,
# which writes bench/data/out/reinis/reinis.tsv and reinis_nets.txt. Both directories are
# git-ignored; nothing fetched or generated is committed. test_ebn skips its reinis test until the
# files exist.
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
scratch="$here/scratch"
out="$here/out/reinis"
mkdir -p "$scratch/debs" "$scratch/root" "$out"

if ! compgen -G "$scratch/debs/r-cran-deal_*.deb" >/dev/null; then
    if ! apt-cache show r-cran-deal >/dev/null 2>&1; then
        apt-get update
    fi
    chmod 0777 "$scratch/debs" 2>/dev/null || true
    (cd "$scratch/debs" && apt-get download r-cran-deal)
fi
for deb in "$scratch"/debs/r-cran-deal_*.deb; do
    dpkg-deb -x "$deb" "$scratch/root"
done
/usr/bin/python3 "$here/make_reinis.py" "$scratch/root/usr/lib/R/site-library/deal/data/reinis.rda" "$out"
