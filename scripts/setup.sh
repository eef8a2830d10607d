#!/usr/bin/env bash
# Installs the build tools and libraries vesk needs (Debian 12, as root); skips what is present.
set -euo pipefail
pkgs=(cmake ninja-build g++ make libgtest-dev googletest libboost-dev zlib1g-dev python3)
missing=()
for p in "${pkgs[@]}"; do
  dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -q
  apt-get install -y -q --no-install-recommends "${missing[@]}"
fi
