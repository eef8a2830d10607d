#!/usr/bin/env bash
# Fetch the plant GO slim that GSEABase ships, for the OBO reader test of vesk_import.
#
#   bench/data/fetch_goslim.sh          (as root on Debian 12; may be launched from any directory)
#
# Downloads (without installing) r-bioc-gseabase with apt-get download, unpacks it with dpkg-deb -x
# into bench/data/scratch/goslim/ and copies its extdata/goslim_plant.obo to
# bench/data/scratch/goslim/goslim_plant.obo, where test_vesk_core looks for it (the test skips when
# the file is absent). The directory is git-ignored; nothing fetched is committed.
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
scratch="$here/scratch/goslim"
mkdir -p "$scratch/debs" "$scratch/root"

if ! compgen -G "$scratch/debs/r-bioc-gseabase_*.deb" >/dev/null; then
    if ! apt-cache show r-bioc-gseabase >/dev/null 2>&1; then
        apt-get update
    fi
    chmod 0777 "$scratch/debs" 2>/dev/null || true
    (cd "$scratch/debs" && apt-get download r-bioc-gseabase)
fi
dpkg-deb -x "$scratch"/debs/r-bioc-gseabase_*.deb "$scratch/root"
obo="$(find "$scratch/root" -type f -name goslim_plant.obo | head -n 1)"
if [ -z "$obo" ]; then
    echo "fetch_goslim.sh: goslim_plant.obo not found in the package" >&2
    exit 1
fi
cp "$obo" "$scratch/goslim_plant.obo"
echo "wrote $scratch/goslim_plant.obo ($(grep -c '^\[Term\]' "$scratch/goslim_plant.obo") [Term] stanzas)"
