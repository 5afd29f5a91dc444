#!/usr/bin/env bash
# Builds the fuzzers with clang and runs each for a while from the committed
# seeds (default 20 seconds each). A crash fails the run; its input is left in
# build-fuzz/crashes/ to be kept as a seed once fixed.
#   scripts/fuzz.sh [SECONDS]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-20}"
jobs=$(nproc 2>/dev/null || echo 2)
cmake -S . -B build-fuzz -DCMAKE_CXX_COMPILER=clang++ -DMDB_FUZZ=ON -DMDB_BUILD_TESTS=OFF \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build-fuzz -j"$jobs" --target fuzz_frames fuzz_dispatch fuzz_codec >/dev/null
mkdir -p build-fuzz/crashes
status=0
for fuzzer in frames dispatch codec; do
  corpus=$(mktemp -d /tmp/mdbfuzz-corpus.XXXXXX)
  cp tests/fuzz/seeds/$fuzzer/* "$corpus"/ 2>/dev/null || true
  if build-fuzz/bin/fuzz_$fuzzer -max_total_time="$seconds" -rss_limit_mb=2048 -print_final_stats=1 \
       -artifact_prefix=build-fuzz/crashes/$fuzzer- "$corpus" >build-fuzz/fuzz_$fuzzer.log 2>&1; then
    runs=$(grep -o 'stat::number_of_executed_units: *[0-9]*' build-fuzz/fuzz_$fuzzer.log | grep -o '[0-9]*$')
    echo "fuzz_$fuzzer: ${runs:-?} inputs, no failure"
  else
    echo "fuzz_$fuzzer: FAILED, see build-fuzz/fuzz_$fuzzer.log and build-fuzz/crashes/"
    tail -n 30 build-fuzz/fuzz_$fuzzer.log
    status=1
  fi
  rm -rf "$corpus"
done
exit $status
