#!/usr/bin/env bash
# Fetch the fly promoters and JASPAR matrices that the seqpack tests and benchmark use.
#
#   bench/data/fetch_seqpack.sh         (as root on Debian 12; may be launched from any directory)
#
# Downloads (without installing) r-bioc-biostrings (26,454 fly 2-kb upstream regions, dm3) and
# r-bioc-pwmenrich (205 JASPAR vertebrate PFMs) with apt-get download, unpacks them with dpkg-deb -x
# into bench/data/scratch/seqpack/, and writes with bench/data/make_seqpack_tables.py into
# bench/data/out/seqpack/: fly_genes.tab, fly_promoters.fa (upper case), jaspar.pssmk, jaspar.pssmd.
# With jellyfish installed it also writes Jellyfish's 8-mer counts (jf8.tsv) for the tests.
# Both directories are git-ignored; nothing fetched or generated is committed.
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
scratch="$here/scratch/seqpack"
out="$here/out/seqpack"
pkgs=(r-bioc-biostrings r-bioc-pwmenrich)

mkdir -p "$scratch/debs" "$scratch/root" "$out"

have_debs() {
    local p
    for p in "${pkgs[@]}"; do
        compgen -G "$scratch/debs/${p}_*.deb" >/dev/null || return 1
    done
}

if ! have_debs; then
    if ! apt-cache show "${pkgs[@]}" >/dev/null 2>&1; then
        apt-get update
    fi
    chmod 0777 "$scratch/debs" 2>/dev/null || true
    (cd "$scratch/debs" && apt-get download "${pkgs[@]}")
fi

for deb in "$scratch"/debs/*.deb; do
    echo "unpacking $(basename "$deb")"
    dpkg-deb -x "$deb" "$scratch/root"
done

lib="$scratch/root/usr/lib/R/site-library"
/usr/bin/python3 "$here/make_seqpack_tables.py" --fasta "$lib/Biostrings/extdata/dm3_upstream2000.fa.gz" \
    --pfm "$lib/PWMEnrich/extdata/pfm_vertebrates.txt" --out "$out"

if command -v jellyfish >/dev/null; then
    echo "jellyfish 8-mer counts"
    jellyfish count -m 8 -s 1M -t 2 -o "$out/jf8.jf" "$out/fly_promoters.fa"
    jellyfish dump -c -t "$out/jf8.jf" > "$out/jf8.tsv"
    rm -f "$out/jf8.jf"
fi
echo "done: $out"
