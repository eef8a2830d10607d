#!/bin/sh
# Fetches globins45.fa (45 globin proteins) from Debian's hmmer-examples package into
# bench/data/scratch/hmm/ (git-ignored). The package is downloaded, not installed.
set -e
root=$(cd "$(dirname "$0")/.." && pwd)
scratch="$root/bench/data/scratch/hmm"
mkdir -p "$scratch"
cd "$scratch"
if [ ! -f globins45.fa ]; then
    apt-cache show hmmer-examples >/dev/null 2>&1 || apt-get update
    rm -f hmmer-examples_*.deb
    apt-get download hmmer-examples
    dpkg-deb -x hmmer-examples_*.deb pkg
    src=$(find pkg -name 'globins45.fa*' | head -n 1)
    case "$src" in
        *.gz) gzip -dc "$src" > globins45.fa ;;
        "") echo "globins45.fa not found in hmmer-examples" >&2; exit 1 ;;
        *) cp "$src" globins45.fa ;;
    esac
fi
echo "$scratch/globins45.fa: $(grep -c '>' globins45.fa) sequences"
