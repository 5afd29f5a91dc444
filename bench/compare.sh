#!/usr/bin/env bash
# The same load shape against mdb and against a Redis server on a Unix socket:
# GET operations per second and latency with 1 and with 16 clients, and their
# ratio. Installs redis-server and redis-tools if they are missing.
#   bench/compare.sh [SECONDS]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-5}"

if ! command -v redis-server >/dev/null || ! command -v redis-benchmark >/dev/null; then
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -q redis-server redis-tools >/dev/null
fi

cmake -S . -B build-bench -DCMAKE_BUILD_TYPE=Release -DMDB_BUILD_TESTS=OFF >/dev/null
cmake --build build-bench -j"$(nproc)" --target mdb mdbbench >/dev/null

dir=$(mktemp -d /tmp/mdbcompare.XXXXXX)
export MDB_RUNDIR="$dir"
build-bench/bin/mdb >"$dir/mdb.log" 2>&1 &
mdbpid=$!
redis-server --port 0 --unixsocket "$dir/redis.sock" --save "" --appendonly no --daemonize no \
  >"$dir/redis.log" 2>&1 &
redispid=$!
trap 'kill $mdbpid $redispid 2>/dev/null || true; wait 2>/dev/null || true; rm -rf "$dir"' EXIT
for _ in $(seq 100); do [ -S "$dir/mdbcmd.socket" ] && [ -S "$dir/redis.sock" ] && break; sleep 0.05; done

printf '%-8s %-6s %12s %10s %10s\n' system clients ops/s p50_us p99_us
for clients in 1 16; do
  m=$(build-bench/bin/mdbbench --threads "$clients" --seconds "$seconds" --mode get --json)
  mops=$(echo "$m" | sed 's/.*"opsPerSecond":\([0-9.]*\).*/\1/')
  mp50=$(echo "$m" | sed 's/.*"p50us":\([0-9.]*\).*/\1/')
  mp99=$(echo "$m" | sed 's/.*"p99us":\([0-9.]*\).*/\1/')
  # Enough requests for about the same duration as mdb's run.
  requests=$(awk -v r="$mops" -v s="$seconds" 'BEGIN { n = int(r * s); if (n < 10000) n = 10000; print n }')
  r=$(redis-benchmark -s "$dir/redis.sock" -t get -c "$clients" -n "$requests" -q --csv 2>/dev/null | tail -1)
  # "test","rps","avg_latency_ms","min_latency_ms","p50_latency_ms","p95_latency_ms","p99_latency_ms","max_latency_ms"
  rops=$(echo "$r" | awk -F'"' '{print $4}')
  rp50=$(echo "$r" | awk -F'"' '{printf "%.1f", $10 * 1000}')
  rp99=$(echo "$r" | awk -F'"' '{printf "%.1f", $14 * 1000}')
  printf '%-8s %-6s %12.0f %10s %10s\n' mdb "$clients" "$mops" "$mp50" "$mp99"
  printf '%-8s %-6s %12.0f %10s %10s\n' redis "$clients" "$rops" "$rp50" "$rp99"
  awk -v a="$mops" -v b="$rops" -v c="$clients" 'BEGIN { printf "ratio mdb/redis with %s clients: %.2f\n", c, a / b }'
done
