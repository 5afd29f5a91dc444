#!/usr/bin/env bash
# Builds mdb, starts the daemon with its built-in defaults in a private run
# directory, and shows the database answering; stops the daemon at the end.
set -euo pipefail
cd "$(dirname "$0")/.."

jobs=$(nproc 2>/dev/null || echo 2)
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$jobs" >/dev/null

rundir=$(mktemp -d /tmp/mdb-demo.XXXXXX)
export MDB_RUNDIR="$rundir"
build/bin/mdb "$@" >"$rundir/mdb.log" 2>&1 &
pid=$!
trap 'kill "$pid" 2>/dev/null || true; wait "$pid" 2>/dev/null || true; rm -rf "$rundir"' EXIT
sleep 0.3
if ! kill -0 "$pid" 2>/dev/null; then
  echo "mdb did not start:" >&2
  cat "$rundir/mdb.log" >&2
  exit 1
fi
echo "mdb is running: pid $pid, $(ls /proc/$pid/task | wc -l) threads, run directory $rundir"
echo
# The command sockets come next; until then the tour runs the same core in-process.
build/bin/mdbtour "$@"
