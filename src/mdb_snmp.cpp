// Registration with the SNMP agent: the sysORTable list, the walk that hands
// every visible object to the agent, the hidden switch, and the enterprise
// OID rewrite of the list.
#include "mdb/mdb_snmp.h"
#include "mdb/mdb_dict.h"
#include "mdb/mdb_errors.h"
#include "platform/logging.h"
#include "platform/sil.h"
#include "platform/snmp_agent.h"

#include <atomic>
#include <cstdio>
#include <cstring>

// The MIBs of the sysORTable, in the order the agent lists them. Two rows
// share the text "FLUSH-MIB" under different OIDs.
MdbSysORRow gSystemORList[MDB_SYSOR_ROWS + 1] = {
    {7, {1, 3, 6, 1, 2, 1, 1}, "RFC 1213-SYSTEM-MIB"},
    {7, {1, 3, 6, 1, 2, 1, 2}, "RFC 1213-INTERFACE-MIB"},
    {7, {1, 3, 6, 1, 2, 1, 3}, "RFC 1213-AT-MIB"},
    {7, {1, 3, 6, 1, 2, 1, 4}, "RFC 1213-IP-MIB"},
    {7, {1, 3, 6, 1, 2, 1, 5}, "RFC 1213-ICMP-MIB"},
    {7, {1, 3, 6, 1, 2, 1, 6}, "RFC 1213-TCP-MIB"},
    {7, {1, 3, 6, 1, 2, 1, 7}, "RFC 1213-UDP-MIB"},
    {7, {1, 3, 6, 1, 2, 1, 11}, "RFC 1213-SNMP-MIB"},
    {7, {1, 3, 6, 1, 2, 1, 31}, "RFC 2233-IF-MIB"},
    {7, {1, 3, 6, 1, 6, 3, 1}, "RFC 1907-SNMPv2-MIB"},
    {7, {1, 3, 6, 1, 6, 3, 10}, "RFC 2571-SNMP-FRAMEWORK-MIB"},
    {7, {1, 3, 6, 1, 6, 3, 11}, "RFC 2572-SNMP-MPD-MIB"},
    {7, {1, 3, 6, 1, 6, 3, 12}, "RFC 2573-SNMP-TARGET-MIB"},
    {7, {1, 3, 6, 1, 6, 3, 13}, "RFC 2573-SNMP-NOTIFICATION-MIB"},
    {7, {1, 3, 6, 1, 6, 3, 15}, "RFC 2574-SNMP-USER-BASED-SM-MIB"},
    {7, {1, 3, 6, 1, 6, 3, 16}, "RFC 2575-SNMP-VIEW-BASED-ACM-MIB"},
    {10, {1, 3, 6, 1, 2, 1, 16, 1, 1, 1}, "RMON-ETHERSTATS-MIB"},
    {10, {1, 3, 6, 1, 2, 1, 16, 2, 1, 1}, "RMON-HISTORYCONTROL-MIB"},
    {10, {1, 3, 6, 1, 2, 1, 16, 2, 2, 1}, "RMON-ETHERHISTORY-MIB"},
    {10, {1, 3, 6, 1, 2, 1, 16, 3, 1, 1}, "RMON-ALARM-MIB"},
    {10, {1, 3, 6, 1, 2, 1, 16, 9, 1, 1}, "RMON-EVENT-MIB"},
    {10, {1, 3, 6, 1, 2, 1, 16, 9, 2, 1}, "RMON-LOG-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 1, 1}, "DEVICE-MIB"},
    {10, {1, 3, 6, 1, 4, 1, 47391, 2, 11, 1}, "CARD-MIB"},
    {11, {1, 3, 6, 1, 4, 1, 47391, 2, 11, 3, 0}, "CPU-MIB"},
    {11, {1, 3, 6, 1, 4, 1, 47391, 2, 11, 5, 0}, "FAN-MIB"},
    {11, {1, 3, 6, 1, 4, 1, 47391, 2, 11, 7, 0}, "IMAGE-MIB"},
    {11, {1, 3, 6, 1, 4, 1, 47391, 2, 11, 9, 0}, "MEMORY-MIB"},
    {11, {1, 3, 6, 1, 4, 1, 47391, 2, 11, 11, 0}, "POWER-MIB"},
    {11, {1, 3, 6, 1, 4, 1, 47391, 2, 11, 13, 0}, "SLOT-MIB"},
    {11, {1, 3, 6, 1, 4, 1, 47391, 2, 11, 15, 0}, "TEMPERATURE-MIB"},
    {11, {1, 3, 6, 1, 4, 1, 47391, 2, 11, 17, 0}, "VOLTAGE-MIB"},
    {10, {1, 3, 6, 1, 4, 1, 47391, 2, 15, 1}, "VLAN-MIB"},
    {10, {1, 3, 6, 1, 4, 1, 47391, 2, 15, 3}, "SUPERVLAN-MIB"},
    {10, {1, 3, 6, 1, 4, 1, 47391, 2, 15, 5}, "IPVLAN-MIB"},
    {10, {1, 3, 6, 1, 4, 1, 47391, 2, 15, 7}, "MACVLAN-MIB"},
    {10, {1, 3, 6, 1, 4, 1, 47391, 2, 15, 9}, "PROTOCOLVLAN-MIB"},
    {10, {1, 3, 6, 1, 4, 1, 47391, 2, 15, 11}, "VOICEVLAN-MIB"},
    {7, {1, 3, 6, 1, 2, 1, 67}, "RFC2620-RADIUS-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 201}, "AAA-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 205}, "ALB-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 209}, "ARP-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 211}, "ARPANTIATTACK-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 215}, "ARPPROBE-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 217}, "ASPATH-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 401}, "BFD-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 605}, "COUNTER-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 607}, "CPUDEFEND-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 609}, "CRB-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 803}, "DDM-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 805}, "DHCP-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 807}, "DHCP6-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 809}, "DHCPCLIENT-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 811}, "DHCPSNOOP-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 813}, "DIFFSERV-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 815}, "DNS-PRIV-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 817}, "DOSANTIATTACK-MIB"},
    {7, {1, 3, 6, 1, 2, 1, 158}, "RFC4878-Dot3OAM-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 821}, "DOT3AH-PRIV-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 1201}, "FILTER-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 1203}, "FLUSH-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 1205}, "FLUSH-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 1401}, "G8031-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 1403}, "G8032-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 1413}, "GRATUITOUSARP-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 1607}, "HWMC-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 1801}, "ISS-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 1803}, "ISIS-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 1809}, "IPSG-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 1811}, "IPPREFIX-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 1815}, "IGMPSNOOP-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2401}, "L2CP-MIB"},
    {6, {1, 0, 8802, 1, 1, 2}, "LLDP-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2403}, "LLDP-PRIV-MIB"},
    {9, {1, 0, 8802, 1, 1, 2, 1, 5, 32962}, "LLDP-DOT1-MIB"},
    {9, {1, 0, 8802, 1, 1, 2, 1, 5, 4623}, "LLDP-DOT3-MIB"},
    {9, {1, 0, 8802, 1, 1, 2, 1, 5, 4795}, "LLDP-MED-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2405}, "L3VPN-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2409}, "LOCALPREFERENCE-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2411}, "LOG-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2413}, "LINKFLAP-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2419}, "LACP-PRIV-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2603}, "MAD-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2605}, "MAM-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2607}, "METER-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2611}, "MIRROR-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2613}, "MLAG-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2615}, "MLDSNOOP-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2617}, "MLINK-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2635}, "MVRP-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2803}, "NDSNOOP-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2807}, "NQA-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 2809}, "NTP-MIB"},
    {7, {1, 3, 6, 1, 2, 1, 14}, "RFC1850-OSPF-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3003}, "OSPF-PRIV-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3005}, "OSPFV3-PRIV-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3205}, "PIM-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3207}, "PIM6-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3211}, "PETHPSE-PRIV-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3213}, "POLICYROUTE-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3215}, "PORTISOLATE-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3221}, "PPPOEPLUS-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3229}, "PTP-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3401}, "QINQ-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3405}, "QUEUE-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3601}, "RA-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3609}, "RIPNG-MIB"},
    {7, {1, 3, 6, 1, 2, 1, 23}, "RFC1724-RIPV2-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3611}, "RIP-PRIV-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3613}, "RLINK-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3615}, "ROUTEPOLICY-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3801}, "SCHEDULEPROFILE-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3807}, "SNMP-PRIV-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3811}, "SOA-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3813}, "STORMCONTROL-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3815}, "STORMSUPPRESSION-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3817}, "STP-PRIV-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 3819}, "SYSLOG-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 4003}, "TFTP-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 4005}, "TIMERANGE-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 4007}, "TIMERTRAP-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 4201}, "UDLD-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 4203}, "URPF-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 4205}, "USER-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 4401}, "VCT-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 4403}, "VLANMAPPING-MIB"},
    {8, {1, 3, 6, 1, 2, 1, 68, 1}, "RFC VRRP-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 4407}, "VRRP-PRIV-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 4601}, "WATCHDOG-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 4605}, "WRED-MIB"},
    {9, {1, 3, 6, 1, 4, 1, 47391, 2, 5201}, "ZTP-MIB"},
    {10, {1, 3, 6, 1, 4, 1, 47391, 2, 13, 21}, "ETHSUBIF-MIB"},
    {10, {1, 3, 6, 1, 4, 1, 47391, 2, 13, 23}, "ETHSUBAGGIF-MIB"},
    {11, {1, 3, 6, 1, 4, 1, 47391, 2, 13, 21, 3}, "ETHSUBIFSTAT-MIB"},
    {11, {1, 3, 6, 1, 4, 1, 47391, 2, 13, 23, 3}, "ETHSUBAGGIFSTAT-MIB"},
    {0, {0}, nullptr},
};

namespace {

// The tally of the calling thread's last walks.
thread_local MdbSnmpTally tTally;

// Hands one module's bindings to the agent. 0, or the agent's result for the
// object it refused: the module's remaining objects are then not offered.
int snmpModuleRegister(const MdbModuleDesc* module) {
  MDB_COUNT(mdbSnmpRegisterCalled);
  uint32_t oid[17];
  for (const MdbObjectBinding* b = module->list; b != nullptr && b->object != nullptr; b++) {
    const MdbObjectDesc* object = b->object;
    if ((std::atomic_ref<uint32_t>(object->attributes).load(std::memory_order_relaxed) & MDB_ATTR_HIDDEN) != 0) {
      MDB_COUNT(snmpObjInvisible);
      tTally.hidden++;
      continue;
    }
    MDB_COUNT(snmpObjVisible);
    tTally.visible++;
    // The entry's arcs, then the object's own.
    const MdbEntryDesc* entry = b->entry;
    uint32_t arcs = entry != nullptr && entry->oidLen != 0 ? entry->oidLen - 1u : 0;
    if (arcs > 16) arcs = 16;
    if (arcs != 0) memcpy(oid, entry->oid, arcs * sizeof(uint32_t));
    oid[arcs] = object->subId;
    int rc = snmpMibObjRegister(object->name, oid, arcs + 1, static_cast<uint8_t>(object->type),
                                static_cast<uint8_t>(object->access), entry != nullptr ? entry->indexCountMax : 0);
    if (rc != 0) {
      loggingLogOutput(MDB_MODULE_ID, gMdbInfo.debugLevel[5], 0, "MDB snmp register %s error.\r\n",
                       object->name != nullptr ? object->name : "");
      MDB_COUNT(snmpObjRegFailed);
      tTally.failed++;
      return rc;
    }
  }
  return 0;
}

// A refusal of -1 ends the walk; any other stops only its module.
int snmpModuleVisit(const MdbModuleDesc* module, void*) {
  if (snmpModuleRegister(module) != -1) return 0;
  puts("Snmp register mib error\r");
  return -1;
}

}  // namespace

int mdbSnmpORInit(void) {
  tTally.orRows = 0;
  for (const MdbSysORRow* row = gSystemORList; row->oidLength != 0; row++) {
    snmpORObjRegister(row->description, row->oid, row->oidLength);
    tTally.orRows++;
  }
  return 0;
}

int mdbSnmpMibInit(void) {
  MDB_COUNT(mdbSnmpOidInitCalled);
  tTally.visible = tTally.hidden = tTally.failed = 0;
  // The module read lock is held for the whole walk, the message written
  // before it is released.
  return mdbModuleForEach(snmpModuleVisit, nullptr) == -1 ? -1 : 0;
}

int mdbSnmpInit(void) {
  mdbSnmpORInit();
  mdbSnmpMibInit();
  return 0;
}

void mdbSnmpTallyGet(MdbSnmpTally* out) {
  if (out != nullptr) *out = tTally;
}

int mdbOROidReplace(const uint32_t* oldOid, const uint32_t* newOid, uint32_t length) {
  if (oldOid == nullptr || newOid == nullptr || length == 0 || length > 16) return 0;
  for (MdbSysORRow* row = gSystemORList; row->oidLength != 0; row++) {
    if (row->oidLength >= length && memcmp(row->oid, oldOid, length * sizeof(uint32_t)) == 0)
      memcpy(row->oid, newOid, length * sizeof(uint32_t));
  }
  return 0;
}

uint32_t mdbObjectSnmpAccess(const char* name, uint32_t visible) {
  const MdbObjectNode* node = mdbObjectLookup(name);
  if (node == nullptr || node->list == nullptr || node->list->object == nullptr) {
    MDB_DEBUG(2, ~0u, "%s:%d: MDB dispatchx, object %s not found (%08x).\r\n", name != nullptr ? name : "",
              errnoGet());
    return mdbErrorNoSuchObject();
  }
  std::atomic_ref<uint32_t> attributes(node->list->object->attributes);
  if (visible == 0) attributes.fetch_or(MDB_ATTR_HIDDEN, std::memory_order_relaxed);
  else attributes.fetch_and(~static_cast<uint32_t>(MDB_ATTR_HIDDEN), std::memory_order_relaxed);
  return 0;
}
