#!/usr/bin/env bash
# Builds mdb and runs every test.
#   scripts/test.sh                      normal build in build/
#   scripts/test.sh --sanitize address   AddressSanitizer + UndefinedBehaviorSanitizer in build-asan/
#   scripts/test.sh --sanitize thread    ThreadSanitizer in build-tsan/
set -euo pipefail
cd "$(dirname "$0")/.."

sanitize=""
if [ "${1:-}" = "--sanitize" ]; then
  sanitize="${2:?--sanitize needs address or thread}"
fi
case "$sanitize" in
  "") dir=build ;;
  address) dir=build-asan ;;
  thread) dir=build-tsan ;;
  *) echo "unknown sanitizer: $sanitize" >&2; exit 2 ;;
esac

jobs=$(nproc 2>/dev/null || echo 2)
cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DMDB_SANITIZE="$sanitize" >/dev/null
cmake --build "$dir" -j"$jobs"
export ASAN_OPTIONS="${ASAN_OPTIONS:-abort_on_error=1:detect_leaks=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
export TSAN_OPTIONS="${TSAN_OPTIONS:-halt_on_error=1}"
ctest --test-dir "$dir" --output-on-failure -j"$jobs" --timeout 300
