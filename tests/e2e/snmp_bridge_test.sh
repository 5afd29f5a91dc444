#!/usr/bin/env bash
# End-to-end test of the SNMP agent: mdb, a Net-SNMP master (snmpd) with
# AgentX on loopback ports in a private directory, and mdb-snmpd; then
# Net-SNMP's command-line tools against the master.
# Usage: tests/e2e/snmp_bridge_test.sh [BUILD_DIR]   (default: build)
set -uo pipefail
cd "$(dirname "$0")/../.."
build="${1:-build}"

if ! command -v snmpd >/dev/null || ! command -v snmpwalk >/dev/null; then
  echo "snmp bridge test: skipped (Net-SNMP is not installed)"
  exit 0
fi
for b in mdb mdb-snmpd; do
  if [ ! -x "$build/bin/$b" ]; then
    echo "snmp bridge test: FAIL: $build/bin/$b is missing (was libsnmp-dev there when cmake ran?)"
    exit 1
  fi
done

work="$(mktemp -d /tmp/mdb-snmp-e2e-XXXXXX)"
pids=()
stop_all() {
  for p in "${pids[@]}"; do kill "$p" 2>/dev/null; done
  for p in "${pids[@]}"; do wait "$p" 2>/dev/null; done
  pids=()
}
cleanup() { stop_all; rm -rf "$work"; }
trap cleanup EXIT

failures=0
pass() { echo "  ok   $*"; }
fail() { echo "  FAIL $*"; failures=$((failures + 1)); }

# A free loopback port, chosen by the kernel.
free_port() { python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1])'; }

export MIBS="" MIBDIRS="$work" SNMP_PERSISTENT_DIR="$work/persist"
mkdir -p "$work/persist" "$work/run"
export MDB_RUNDIR="$work/run"

# Starts mdb with the options given, the master and the subagent.
start_all() {
  rm -f "$MDB_RUNDIR"/*.socket
  "$build/bin/mdb" -o mdb.system.enable=true "$@" >"$work/mdb.log" 2>&1 &
  pids+=($!)
  for _ in $(seq 100); do [ -S "$MDB_RUNDIR/mdbcmd.socket" ] && break; sleep 0.1; done
  udp=$(free_port)
  ax=$(free_port)
  cat >"$work/snmpd.conf" <<EOF
agentAddress udp:127.0.0.1:$udp
master agentx
agentXSocket tcp:127.0.0.1:$ax
rocommunity public 127.0.0.1
rwcommunity private 127.0.0.1
EOF
  # The master leaves to mdb the groups that mdb serves (its sysORTable stays
  # and receives mdb's MIB list).
  snmpd -f -Lo -C -c "$work/snmpd.conf" -p "$work/snmpd.pid" \
    -I -system_mib,snmp_mib,snmpMPDStats,target_counters,usmStats,interfaces,ifTable,ifXTable,ifstack >"$work/snmpd.log" 2>&1 &
  pids+=($!)
  for _ in $(seq 100); do grep -q "NET-SNMP version" "$work/snmpd.log" && break; sleep 0.1; done
  "$build/bin/mdb-snmpd" --agentx "tcp:127.0.0.1:$ax" >"$work/subagent.log" 2>&1 &
  pids+=($!)
  for _ in $(seq 100); do grep -q "sysORTable rows" "$work/subagent.log" && break; sleep 0.1; done
  sleep 0.5
  RO="-v2c -c public -On -t 5 -r 1 127.0.0.1:$udp"
  RW="-v2c -c private -On -t 5 -r 1 127.0.0.1:$udp"
}

# The OIDs of a walk's output, one a line (the end-of-view line repeats the
# last OID and is left out).
oids() { grep -v 'No more variables left' | sed -n 's/^\(\.[0-9.]*\) = .*/\1/p'; }

# True if the OIDs on stdin are strictly increasing.
increasing() {
  python3 -c '
import sys
prev = None
for line in sys.stdin:
    o = tuple(int(a) for a in line.strip().strip(".").split("."))
    if prev is not None and o <= prev:
        print("not increasing:", ".".join(map(str, prev)), "then", ".".join(map(str, o)))
        sys.exit(1)
    prev = o
'
}

echo "snmp bridge test (build: $build, work: $work)"
start_all

# --- the system group: mdb's values, and the master's sysORTable with mdb's rows
sys=$(snmpwalk $RO 1.3.6.1.2.1.1 2>&1)
descr=$("$build/bin/mdbctl" get rfc1907:sysDescr 0 2>/dev/null | sed 's/.*OCTET_STRING: //')
if echo "$sys" | grep -q "^.1.3.6.1.2.1.1.1.0 = STRING: $descr"; then pass "system group: sysDescr is mdb's ($descr)"
else fail "system group: sysDescr: $(echo "$sys" | head -1)"; fi
if echo "$sys" | grep -q '^.1.3.6.1.2.1.1.9.1.3.[0-9]* = STRING: "MIRROR-MIB"' &&
   echo "$sys" | grep -q '^.1.3.6.1.2.1.1.9.1.2.[0-9]* = OID: .1.3.6.1.4.1.47391.2.2611$'; then
  pass "sysORTable holds mdb's MIB list (MIRROR-MIB at 1.3.6.1.4.1.47391.2.2611)"
else fail "sysORTable lacks MIRROR-MIB"; fi
echo "$sys" | oids | increasing && pass "system group walk increasing ($(echo "$sys" | wc -l) varbinds)" ||
  fail "system group walk order"

# --- the private mirror tree, by GETNEXT and by GETBULK
mw=$(snmpwalk $RO 1.3.6.1.4.1.47391.2.2611 2>&1)
mb=$(snmpbulkwalk -Cr25 $RO 1.3.6.1.4.1.47391.2.2611 2>&1)
ctl=$("$build/bin/mdbctl" walk mirror 2>/dev/null | wc -l)
n=$(echo "$mw" | grep -c '^\.1\.3\.6\.1\.4\.1\.47391\.2\.2611\.')
if [ "$n" -gt 0 ] && [ "$n" -eq "$ctl" ]; then pass "mirror walk: $n instances, as mdbctl walk mirror"
else fail "mirror walk: $n instances, mdbctl has $ctl"; fi
if echo "$mw" | grep -q '^.1.3.6.1.4.1.47391.2.2611.1.1.0 = Gauge32: ' &&
   echo "$mw" | grep -q '^.1.3.6.1.4.1.47391.2.2611.2.1.2.1 = STRING: "1/0/24"'; then
  pass "mirror values typed (Gauge32, STRING)"
else fail "mirror values"; fi
[ "$mw" = "$mb" ] && pass "snmpbulkwalk equals snmpwalk on mirror" || fail "snmpbulkwalk differs from snmpwalk"

# --- the interface tables come from mdb (the master leaves them): the same
# rows and descriptions as mdbctl shows, ifXTable beside it
it=$(snmpwalk $RO 1.3.6.1.2.1.2.2 2>&1)
echo "$it" | oids | increasing && pass "ifTable walk increasing ($(echo "$it" | wc -l) varbinds)" || fail "ifTable walk order"
snmp_rows=$(echo "$it" | sed -n 's/^\.1\.3\.6\.1\.2\.1\.2\.2\.1\.1\.\([0-9]*\) = INTEGER: .*/\1/p' | tr '\n' ' ')
ctl_rows=$("$build/bin/mdbctl" walk rfc1213:ifIndex 2>/dev/null | awk '{print $2}' | tr '\n' ' ')
if [ -n "$ctl_rows" ] && [ "$snmp_rows" = "$ctl_rows" ]; then pass "ifTable rows are mdb's: $(echo $ctl_rows | wc -w) interfaces"
else fail "ifTable rows: snmp [$snmp_rows], mdbctl [$ctl_rows]"; fi
if echo "$it" | grep -q '^.1.3.6.1.2.1.2.2.1.2.201 = STRING: "eth-trunk1"' &&
   echo "$it" | grep -q '^.1.3.6.1.2.1.2.2.1.5.25 = Gauge32: 4294967295$'; then
  pass "ifDescr of the trunk, ifSpeed of a 10G uplink (4294967295)"
else fail "ifTable values: $(echo "$it" | grep -e '2.2.1.2.201 ' -e '2.2.1.5.25 ')"; fi
hc=$(snmpget $RO .1.3.6.1.2.1.31.1.1.1.6.1 .1.3.6.1.2.1.31.1.1.1.1.201 2>&1)
if echo "$hc" | grep -q '^.1.3.6.1.2.1.31.1.1.1.6.1 = Counter64: [0-9]' &&
   echo "$hc" | grep -q '^.1.3.6.1.2.1.31.1.1.1.1.201 = STRING: "eth-trunk1"'; then
  pass "ifXTable: ifHCInOctets is a Counter64, ifName from mdb"
else fail "ifXTable: $hc"; fi

# --- SET: write, read back; errors
vlan=.1.3.6.1.4.1.47391.2.2611.2.1.3.1
out=$(snmpset $RW $vlan u 123 2>&1)
back=$(snmpget $RO $vlan 2>&1)
if [ "$back" = "$vlan = Gauge32: 123" ] &&
   "$build/bin/mdbctl" get mirror:mirrorGroupVlan 1 | grep -q 'Guage: 123'; then
  pass "set mirrorGroupVlan.1 = 123, read back by SNMP and by mdbctl"
else fail "set/read back: $out / $back"; fi
out=$(snmpset $RW .1.3.6.1.2.1.1.4.0 s "noc@example.net" 2>&1)
snmpget $RO .1.3.6.1.2.1.1.4.0 | grep -q '"noc@example.net"' && pass "set sysContact, read back" || fail "sysContact: $out"
out=$(snmpset $RW $vlan u 5000 2>&1)
echo "$out" | grep -q 'wrongValue' && pass "out-of-range set (5000 > 4094): wrongValue" || fail "out of range: $out"
snmpget $RO $vlan | grep -q 'Gauge32: 123$' && pass "refused set left the value" || fail "refused set changed the value"
out=$(snmpset $RW $vlan i 5 2>&1)
echo "$out" | grep -q 'wrongType' && pass "wrong type: wrongType" || fail "wrong type: $out"
out=$(snmpset $RW .1.3.6.1.2.1.1.1.0 s x 2>&1)
echo "$out" | grep -q 'notWritable' && pass "read-only sysDescr: notWritable" || fail "read-only: $out"
out=$(snmpget $RO $vlan.99 .1.3.6.1.4.1.47391.2.2611.99.0 2>&1)
if echo "$out" | grep -q "$vlan.99 = No Such Instance" && echo "$out" | grep -q "2611.99.0 = No Such Object"; then
  pass "get: noSuchInstance, noSuchObject"
else fail "get exceptions: $out"; fi

# --- the whole tree ends and increases
all=$(timeout 120 snmpwalk $RO .1 2>&1)
rc=$?
if [ $rc -eq 0 ] && ! echo "$all" | grep -q 'OID not increasing'; then
  if echo "$all" | oids | increasing; then pass "walk of the whole tree ends, strictly increasing ($(echo "$all" | wc -l) varbinds)"
  else fail "whole walk order"; fi
else fail "whole walk (rc $rc): $(echo "$all" | tail -2)"; fi
allb=$(timeout 120 snmpbulkwalk -Cr50 $RO .1 2>&1)
echo "$allb" | oids | increasing && pass "bulk walk of the whole tree ($(echo "$allb" | wc -l) varbinds)" ||
  fail "whole bulk walk order"

# --- the enterprise OID option moves the private trees
stop_all
mv "$work/mdb.log" "$work/mdb-1.log"; mv "$work/subagent.log" "$work/subagent-1.log"
start_all -o snmp.enterpriseoid=64000
mw2=$(snmpwalk $RO 1.3.6.1.4.1.64000.2.2611 2>&1)
n2=$(echo "$mw2" | grep -c '^\.1\.3\.6\.1\.4\.1\.64000\.2\.2611\.')
old=$(snmpget $RO .1.3.6.1.4.1.47391.2.2611.1.1.0 2>&1)
sysor=$(snmpwalk $RO 1.3.6.1.2.1.1.9.1.2 2>&1)
if [ "$n2" -eq "$n" ] && echo "$old" | grep -q 'No Such Object' &&
   echo "$sysor" | grep -q 'OID: .1.3.6.1.4.1.64000.2.2611$' && echo "$sysor" | grep -q 'OID: .1.0.8802.1.1.2$'; then
  pass "snmp.enterpriseoid=64000: mirror at 1.3.6.1.4.1.64000.2.2611 ($n2 instances), sysORTable moved, LLDP row kept"
else fail "enterprise OID: $n2 instances; old: $old"; fi
stop_all

# A sanitizer build reports into the processes' logs.
for log in mdb.log subagent.log mdb-1.log subagent-1.log; do
  [ -f "$work/$log" ] || continue
  if grep -q -e 'ERROR: AddressSanitizer' -e 'ERROR: LeakSanitizer' -e 'runtime error:' -e 'WARNING: ThreadSanitizer' "$work/$log"; then
    fail "sanitizer report in $log:"; grep -m5 -A5 -e 'Sanitizer' -e 'runtime error:' "$work/$log"
  fi
done

if [ $failures -ne 0 ]; then
  echo "snmp bridge test: $failures FAILED"
  echo "--- subagent log"; tail -20 "$work/subagent.log"
  echo "--- snmpd log"; tail -20 "$work/snmpd.log"
  exit 1
fi
echo "snmp bridge test: all passed"
