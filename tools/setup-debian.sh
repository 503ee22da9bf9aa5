#!/usr/bin/env bash
# Installs what hxcsv needs to build and test on Debian 12 (run as root).
# Only packages that are missing are installed.
set -euo pipefail
packages=(
  build-essential cmake ninja-build pkg-config
  qtbase5-dev qtbase5-dev-tools
  libgtest-dev googletest
  libfast-float-dev
  python3-vtk9
  xvfb xauth
  clang-14 libclang-rt-14-dev
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
