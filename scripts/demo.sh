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
build/bin/mdb -o mdb.ramdir="$rundir/ram" "$@" >"$rundir/mdb.log" 2>&1 &
pid=$!
trap 'kill "$pid" 2>/dev/null || true; wait "$pid" 2>/dev/null || true; rm -rf "$rundir"' EXIT
sleep 0.3
if ! kill -0 "$pid" 2>/dev/null; then
  echo "mdb did not start:" >&2
  cat "$rundir/mdb.log" >&2
  exit 1
fi
echo "mdb is running: pid $pid, $(ls /proc/$pid/task | wc -l) threads, $(ls "$rundir"/mdbcmd*.socket | wc -l) command sockets in $rundir"
echo
ctl() { echo "\$ mdbctl $*"; build/bin/mdbctl "$@" || true; echo; }
ctl scalar-get 5
ctl walk clock
ctl walk mirror:mirrorGroupMirrorToPort
ctl set mirror:mirrorGroupVlan 1 100
ctl set mirror:mirrorGroupVlan 1 5000
ctl --json get mirror:mirrorGroupVlan 1
ctl get no:such 0
