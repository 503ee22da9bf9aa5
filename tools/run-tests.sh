#!/usr/bin/env bash
# Sets up, builds and runs every test, headless. With --sanitize the build
# goes to build-asan with AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
bash tools/setup-debian.sh
if [ "${1:-}" = "--sanitize" ]; then
  export BUILD_DIR=build-asan
  bash tools/build.sh -DHX_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug
  export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:strict_string_checks=1
  export LSAN_OPTIONS=suppressions=$PWD/tools/lsan.supp:print_suppressions=0
  export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
else
  export BUILD_DIR=build
  bash tools/build.sh
fi
export QT_QPA_PLATFORM=offscreen
ctest --test-dir "$BUILD_DIR" --output-on-failure
