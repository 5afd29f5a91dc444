// rfc1907: the agent's system group, its snmp group of counters, the trap
// objects and snmpSetSerialNo (SNMPv2-MIB), and the capabilities table
// sysORTable.
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "platform/sil.h"
#include "platform/tgp.h"
#include "services/cli.h"
#include "services/snmp.h"
#include "services/snmpSysOR.h"
#include "services/tgp.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr uint32_t kEnterpriseNumber = 47391;
constexpr uint32_t kSysDescrAttribute = 45;
constexpr uint32_t kUpTimeAttribute = 149;  // of tgp: seconds since the system started
constexpr uint32_t kUpTimeBaseHwil = 512;   // of the hardware layer: seconds before this process

// The hardware's seconds before this process, read once by rfc1907MibInit and
// only read afterwards: the modules' one word of state.
uint32_t gUpTimeBase = 0;

// The scalars answer a read or a write for any index the dispatcher lets
// through (none, or one sub-id of any value) as the instance .0; only a walk
// step is held to .0 (deliberate: existing clients rely on it).
uint32_t anyInstanceHandler(uint32_t kind, MdbCrb* mdb) {
  if (kind == MDB_GET_NEXT) return fwHandler(kind, mdb);
  uint32_t zero = 0;
  MdbCrb asZero = *mdb;
  asZero.pIndex = &zero;
  asZero.indexSubIdCount = 1;
  uint32_t rc = fwHandler(kind, &asZero);
  mdb->valueLen = asZero.valueLen;
  mdb->flags = asZero.flags;
  return rc;
}

constexpr FwObject anyInstance(FwObject o) {
  o.desc.handler = anyInstanceHandler;
  return o;
}

inline bool isRead(uint32_t kind) { return kind == MDB_GET || kind == MDB_GET_NEXT; }

int serviceRead(const FwCall* call, uint32_t attribute, void* value) {
  const FwEntry* e = call->entry;
  return e->isTable() ? e->table.getApi(call->key, attribute, value) : e->scalar.getApi(0, attribute, value);
}

uint32_t serviceFailed(const FwCall* call, int rc) {
  return call->entry->failure == FW_FAIL_GENERIC_ALL ? mdbErrorGenError() : static_cast<uint32_t>(rc);
}

// The service keeps an OID as its arcs of 32 bits, `length` counting bytes.
uint32_t oidRead(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  int rc = serviceRead(call, call->object->attribute, &call->holder);
  if (rc != 0) return serviceFailed(call, rc);
  oidSet(mdb, reinterpret_cast<const uint32_t*>(call->buffer), call->holder.length / sizeof(uint32_t));
  return 0;
}

// The description carries the vendor's name in front, unless it has it
// already or the device runs under another enterprise number.
uint32_t sysDescrRead(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  char text[513];
  MdbOctetValue holder{reinterpret_cast<uint8_t*>(text), 512};
  int rc = snmpScalarGetApi(0, kSysDescrAttribute, &holder);
  if (rc != 0) return static_cast<uint32_t>(rc);
  uint32_t n = holder.length < 512 ? holder.length : 512;
  text[n] = '\0';

  char option[128] = {0};
  uint32_t enterprise = kEnterpriseNumber;
  if (silOptRead(0, "snmp.enterpriseoid", 0, 0, 1, option, 127) > 0)
    enterprise = static_cast<uint32_t>(strtoul(option, nullptr, 10));
  if (enterprise == kEnterpriseNumber && strstr(text, "ZERIDA ") == nullptr && strstr(text, "zerida ") == nullptr) {
    char named[512];
    int m = snprintf(named, sizeof named, "ZERIDA %s", text);
    octetSet(mdb, named, m < 0 ? 0u : m > 511 ? 511u : static_cast<uint32_t>(m));
    return 0;
  }
  octetSet(mdb, text, n);
  return 0;
}

// Hundredths of a second since the system started: the platform's seconds
// plus the hardware's base.
uint32_t sysUpTimeRead(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  uint32_t seconds = 0;
  tgpScalarGetApi(0, kUpTimeAttribute, &seconds);  // its result is not examined (deliberate)
  ulongSet(mdb, (seconds + gUpTimeBase) * 100u);
  return 0;
}

constexpr FwEntry kSystem = fwScalars("snmp", {1, 3, 6, 1, 2, 1, 1}, FW_SCALAR_OPS(snmp)).buffer(512);
// sysName is the command line's host name: the one member of the system group
// that another service keeps.
constexpr FwEntry kSystemHost = fwScalars("cli", {1, 3, 6, 1, 2, 1, 1}, FW_SCALAR_OPS(cli)).buffer(512);
constexpr FwEntry kSnmpGroup = fwScalars("snmp", {1, 3, 6, 1, 2, 1, 11}, FW_SCALAR_OPS(snmp)).buffer(512);
constexpr FwEntry kTrap = fwScalars("snmp", {1, 3, 6, 1, 6, 3, 1, 1, 4}, FW_SCALAR_OPS(snmp)).buffer(512);
constexpr FwEntry kSet = fwScalars("snmp", {1, 3, 6, 1, 6, 3, 1, 1, 6}, FW_SCALAR_OPS(snmp)).buffer(512);

// No Next or Validate of its own: an empty index asks for the first row, any
// other for the row after its first sub-id.
constexpr FwEntry kSysOREntry = fwTable("snmpSysOR", {1, 3, 6, 1, 2, 1, 1, 9, 1}, FW_TABLE_OPS(snmpSysOR))
                                    .intIndex("rfc1907:sysORIndex")
                                    .anyIndex()
                                    .fail(FW_FAIL_GENERIC_ALL)
                                    .buffer(512);

constexpr int32_t kIntMax = 2147483647;

#define COUNTER(localId, subId, name, attribute) \
  anyInstance(fwObject(&kSnmpGroup, localId, subId, "rfc1907:" name).counter().ro().attr(attribute))

constexpr FwObject kObjects[] = {
    // system
    anyInstance(fwObject(&kSystem, 0, 1, "rfc1907:sysDescr").octets(255).ro().attr(kSysDescrAttribute).hook(sysDescrRead)),
    anyInstance(fwObject(&kSystem, 1, 2, "rfc1907:sysObjectID").oid(64).ro().attr(46).hook(oidRead)),
    anyInstance(fwObject(&kSystem, 2, 3, "rfc1907:sysUpTime").timeticks().ro().hook(sysUpTimeRead)),
    anyInstance(fwObject(&kSystem, 3, 4, "rfc1907:sysContact").octets(255).attr(30).maxLength(127)),
    anyInstance(fwObject(&kSystemHost, 4, 5, "rfc1907:sysName").octets(255).attr(14).maxLength(128)),
    anyInstance(fwObject(&kSystem, 5, 6, "rfc1907:sysLocation").octets(255).attr(31).maxLength(127)),
    anyInstance(fwObject(&kSystem, 6, 7, "rfc1907:sysServices").integer().ro().catalogued(0, 127).attr(47)),
    anyInstance(fwObject(&kSystem, 7, 8, "rfc1907:sysORLastChange").timeticks().ro().attr(48)),

    // sysOREntry
    fwObject(&kSysOREntry, 8, 1, "rfc1907:sysORIndex").integer().catalogued(1, kIntMax).indexOf(0).access_(MDB_ACCESS_RO_INDEX),
    fwObject(&kSysOREntry, 9, 2, "rfc1907:sysORID").oid(64).ro().attr(0).hook(oidRead),
    fwObject(&kSysOREntry, 10, 3, "rfc1907:sysORDescr").octets(255).ro().attr(1),
    fwObject(&kSysOREntry, 11, 4, "rfc1907:sysORUpTime").timeticks().ro().attr(2),

    // snmp
    COUNTER(12, 1, "snmpInPkts", 80),
    COUNTER(13, 2, "snmpOutPkts", 79),
    COUNTER(14, 3, "snmpInBadVersions", 78),
    COUNTER(15, 4, "snmpInBadCommunityNames", 77),
    COUNTER(16, 5, "snmpInBadCommunityUses", 76),
    COUNTER(17, 6, "snmpInASNParseErrs", 75),
    COUNTER(18, 8, "snmpInTooBigs", 74),
    COUNTER(19, 9, "snmpInNoSuchNames", 73),
    COUNTER(20, 10, "snmpInBadValues", 72),
    COUNTER(21, 11, "snmpInReadOnlys", 71),
    COUNTER(22, 12, "snmpInGenErrs", 70),
    COUNTER(23, 13, "snmpInTotalReqVars", 69),
    COUNTER(24, 14, "snmpInTotalSetVars", 68),
    COUNTER(25, 15, "snmpInGetRequests", 67),
    COUNTER(26, 16, "snmpInGetNexts", 66),
    COUNTER(27, 17, "snmpInSetRequests", 65),
    COUNTER(28, 18, "snmpInGetResponses", 64),
    COUNTER(29, 19, "snmpInTraps", 62),
    COUNTER(30, 20, "snmpOutTooBigs", 61),
    COUNTER(31, 21, "snmpOutNoSuchNames", 60),
    COUNTER(32, 22, "snmpOutBadValues", 59),
    COUNTER(33, 24, "snmpOutGenErrs", 58),
    COUNTER(34, 25, "snmpOutGetRequests", 57),
    COUNTER(35, 26, "snmpOutGetNexts", 56),
    COUNTER(36, 27, "snmpOutSetRequests", 55),
    COUNTER(37, 28, "snmpOutGetResponses", 54),
    COUNTER(38, 29, "snmpOutTraps", 53),
    anyInstance(fwObject(&kSnmpGroup, 39, 30, "rfc1907:snmpEnableAuthenTraps").integer().catalogued(1, 2).attr(29)),
    COUNTER(40, 31, "snmpSilentDrops", 51),
    COUNTER(41, 32, "snmpProxyDrops", 50),

    // snmpTrap: both read the device's object identifier.
    anyInstance(fwObject(&kTrap, 42, 1, "rfc1907:snmpTrapOID").oid(64).na().attr(46).hook(oidRead)),
    anyInstance(fwObject(&kTrap, 43, 3, "rfc1907:snmpTrapEnterprise").oid(64).na().attr(46).hook(oidRead)),

    // snmpSet
    anyInstance(fwObject(&kSet, 44, 1, "rfc1907:snmpSetSerialNo").integer().catalogued(0, kIntMax).attr(49)),
};
#undef COUNTER
static_assert(sizeof kObjects / sizeof kObjects[0] == 45, "rfc1907 has 45 objects");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int rfc1907MibInit(void) {
  tgpHwilScalarGet(0, kUpTimeBaseHwil, &gUpTimeBase);
  return fwModuleRegister("rfc1907", 0, kBindings.data());
}
