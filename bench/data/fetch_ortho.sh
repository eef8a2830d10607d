#!/bin/sh
# Real inputs of the species tree and orthology tests and benchmark, fetched from Debian packages
# into bench/data/scratch/ortho (git-ignored): the bird.orders tree of r-cran-ape with its leaf sets
# and leaf-pair ancestors computed by R ape itself, and the four example proteomes of proteinortho
# with all-vs-all local alignment hits (Biopython PairwiseAligner, BLOSUM62) as .fixed files.
# Run as root from any directory; a second run redoes only what is missing.
set -e
here=$(cd "$(dirname "$0")" && pwd)
out="$here/scratch/ortho"
mkdir -p "$out/debs"
if ! command -v Rscript >/dev/null || ! Rscript -e 'library(ape)' >/dev/null 2>&1 ||
   ! /usr/bin/python3 -c 'import Bio.Align' 2>/dev/null; then
    apt-get install -y --no-install-recommends r-base-core r-cran-ape python3-biopython ||
        { apt-get update && apt-get install -y --no-install-recommends r-base-core r-cran-ape python3-biopython; }
fi
cd "$out/debs"
for p in r-cran-ape proteinortho; do
    ls ${p}_*.deb >/dev/null 2>&1 || apt-get download "$p"
    [ -d "root-$p" ] || dpkg-deb -x ${p}_*.deb "root-$p"
done
rda="$out/debs/root-r-cran-ape/usr/lib/R/site-library/ape/data/bird.orders.rda"
mkdir -p "$out/bird"
Rscript "$here/ortho_bird.R" "$rda" "$out/bird"
/usr/bin/python3 "$here/make_ortho_real.py" \
    --proteomes "$out/debs/root-proteinortho/usr/share/doc/proteinortho/examples" --out "$out/prot"
echo "ortho data in $out"
