#!/usr/bin/env bash
# Builds the libFuzzer targets (clang, AddressSanitizer and
# UndefinedBehaviorSanitizer) into build-fuzz/ and runs each for SECONDS
# (default 60): first every input of fuzz/corpus/<target> and the large
# regression inputs once, then new inputs. Exits 1 on any finding; the input
# that caused it is kept in build-fuzz/findings/. Add such an input to
# fuzz/corpus/<target>/ once it is fixed, so every later run replays it.
#
#   bash fuzz/run.sh [SECONDS]        CI runs it with 60
#   FUZZ_JOBS=2 bash fuzz/run.sh 3600 two targets at a time
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
bash tools/setup-debian.sh
CC=clang-14 CXX=clang++-14 cmake -S . -B build-fuzz -G Ninja -DHX_FUZZ=ON -DHX_BUILD_TESTS=OFF \
  -DHX_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build-fuzz
mkdir -p build-fuzz/findings build-fuzz/regressions

# The record that once ended exactly at the end of the first 1 MiB block
# (too large to keep in the corpus): as the parser's, the point cloud's and
# the line set's input.
python3 - <<'EOF'
record = b"123456789012345\n"
text = bytearray(record * 65538)
text[16 * 65535:16 * 65536] = b"-12345678.12345\n"
# parser: "," "" "" flags 2, start 1, 1 MiB blocks, x y z as floats
open("build-fuzz/regressions/parser-block-end", "wb").write(bytes([1, 0, 0, 2, 2, 0, 3, 7, 1, 7, 1, 7, 1]) + text)
for reader, args in ((0, [b"CSVParams", b"@", b"3 0 0 0", b",", b"", b"1", b"0", b"0", b""]),
                     (1, [b"CSVParams", b"@", b"3 0 1 2", b",", b"", b"1", b"0", b"0", b"-lineSetParams",
                          b"0", b"none", b"0", b"1"])):
    open("build-fuzz/regressions/readers-block-end-%d" % reader, "wb").write(
        bytes([reader, len(args)]) + b"".join(a + b"\0" for a in args) + bytes(text))
EOF

run_target() {
  local target=$1 bin=build-fuzz/bin/$1_fuzzer
  local log=build-fuzz/findings/$target.log
  mkdir -p "build-fuzz/corpus/$target"
  local regressions=(build-fuzz/regressions/"$target"-*)
  [ -e "${regressions[0]}" ] || regressions=()
  {
    "$bin" -close_fd_mask=3 "${regressions[@]}" fuzz/corpus/"$target"/* &&
    "$bin" -close_fd_mask=3 -timeout=20 -max_len=8192 -max_total_time="$seconds" -print_final_stats=1 \
      -artifact_prefix="build-fuzz/findings/$target-" "build-fuzz/corpus/$target" "fuzz/corpus/$target"
  } >"$log" 2>&1
  local status=$?
  grep -E "^stat::|DONE|cov:" "$log" | tail -8 | sed "s/^/$target: /"
  if [ $status -ne 0 ]; then
    echo "$target: FINDING (exit $status), see $log"
    grep -E "ERROR|SUMMARY|Test unit written" "$log" | head -5 | sed "s/^/$target: /"
    return 1
  fi
}

failed=0
jobs=${FUZZ_JOBS:-1}
pids=()
for target in parser readers commands; do
  run_target "$target" &
  pids+=($!)
  if [ ${#pids[@]} -ge "$jobs" ]; then
    wait "${pids[0]}" || failed=1
    pids=("${pids[@]:1}")
  fi
done
for pid in "${pids[@]}"; do
  wait "$pid" || failed=1
done
exit $failed
