#!/usr/bin/env bash
# Configures and builds into BUILD_DIR (default build). Extra arguments go to cmake.
set -euo pipefail
cd "$(dirname "$0")/.."
dir=${BUILD_DIR:-build}
cmake -S . -B "$dir" -G Ninja "$@" >/dev/null
cmake --build "$dir"
