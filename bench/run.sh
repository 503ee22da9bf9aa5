#!/usr/bin/env bash
# Import benchmark in one session: installs the peer tools (not part of the
# test setup: they are large), builds, generates the files and runs
# bench/bench.py, which writes bench/RESULTS.md.
#   bash bench/run.sh [--scale S] [--runs N] [--out FILE] [--clean] [--verify] [--only RE]
# All options go to bench/bench.py (--help lists them).
set -euo pipefail
cd "$(dirname "$0")/.."

peers=(time r-cran-data.table python3-pandas python3-numpy)
missing=()
for p in "${peers[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  if [ "$(id -u)" -ne 0 ]; then
    echo "bench: not root, so not installing ${missing[*]}; their rows will say n/a" >&2
  else
    echo "bench: installing ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    for try in 1 2 3 4 5 6; do
      # Another apt run may hold the dpkg lock for a while.
      if apt-get update -qq && apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null; then
        break
      fi
      [ "$try" -lt 6 ] || { echo "bench: could not install ${missing[*]}" >&2; exit 1; }
      sleep 20
    done
  fi
fi

bash tools/setup-debian.sh
bash tools/build.sh
exec /usr/bin/python3 bench/bench.py "$@"
