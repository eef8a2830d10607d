#!/usr/bin/env bash
# Fetch Debian's GO and human gene annotation data packages and build the real vesk case.
#
#   bench/data/fetch_real.sh            (as root on Debian 12; may be launched from any directory)
#
# Downloads (without installing) r-bioc-go.db and r-bioc-org.hs.eg.db with apt-get download,
# unpacks them with dpkg-deb -x into bench/data/scratch/, then writes the six vesk tables and
# real.opt into bench/data/out/real/ with bench/data/make_real_tables.py.
# Both directories are git-ignored; nothing fetched or generated is committed.
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
scratch="$here/scratch"
out="$here/out/real"
pkgs=(r-bioc-go.db r-bioc-org.hs.eg.db)

mkdir -p "$scratch/debs" "$scratch/root" "$out"

have_debs() {
    local p
    for p in "${pkgs[@]}"; do
        compgen -G "$scratch/debs/${p}_*.deb" >/dev/null || return 1
    done
}

if ! have_debs; then
    # apt-get download needs a package list; fetch one if apt knows none of the packages yet.
    if ! apt-cache show "${pkgs[@]}" >/dev/null 2>&1; then
        apt-get update
    fi
    # apt-get download drops privileges to the _apt user when it can; make the target writable.
    chmod 0777 "$scratch/debs" 2>/dev/null || true
    (cd "$scratch/debs" && apt-get download "${pkgs[@]}")
fi

for deb in "$scratch"/debs/*.deb; do
    echo "unpacking $(basename "$deb")"
    dpkg-deb -x "$deb" "$scratch/root"
done

find_db() {
    local f
    f="$(find "$scratch/root" -type f -name "$1" | head -n 1)"
    if [ -z "$f" ]; then
        echo "fetch_real.sh: $1 not found under $scratch/root" >&2
        exit 1
    fi
    printf '%s\n' "$f"
}
go_db="$(find_db GO.sqlite)"
hs_db="$(find_db org.Hs.eg.sqlite)"
echo "GO database:    $go_db"
echo "human database: $hs_db"

/usr/bin/python3 "$here/make_real_tables.py" --go "$go_db" --org "$hs_db" --out "$out"
