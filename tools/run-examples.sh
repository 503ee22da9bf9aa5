#!/usr/bin/env bash
# Sets up, builds and imports the bundled examples; results go to out/:
# out/examples.json (objects and console) and out/vtk/*.vtp|*.vti.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup-debian.sh
bash tools/build.sh
mkdir -p out/vtk
build/bin/hxhost examples/examples.hx --json out/examples.json --export out/vtk
echo "wrote out/examples.json and out/vtk/"
