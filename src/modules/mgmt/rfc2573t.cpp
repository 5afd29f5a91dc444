// rfc2573t: the targets of notifications, their addresses and parameters
// (SNMP-TARGET-MIB).
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/snmp.h"
#include "services/snmpTargetAddr.h"
#include "services/snmpTargetParams.h"

#include <cstddef>

namespace {

#define TARGET_ROOT 1, 3, 6, 1, 6, 3, 12, 1

constexpr int32_t kIntMax = 2147483647;

// A transport address is an IPv4 address with its port (6 bytes) or an IPv6
// address with its port (18 bytes).
uint32_t transportAddress(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (kind != MDB_VALIDATE) return fwServePlain(kind, mdb, call);
  if (mdb->valueLen != 6 && mdb->valueLen != 18) return mdbErrorInvalidLength();
  mdb->flags |= MDB_FLAG_VALIDATED;
  return 0;
}

// The spin lock and the two context counters; the service's result is not
// looked at.
constexpr FwEntry kScalars = fwScalars("snmp", {TARGET_ROOT}, FW_SCALAR_OPS(snmp)).fail(FW_FAIL_IGNORE);

// Names of at most 115 characters; the entry counts 128 sub-ids.
constexpr FwEntry addrWalk() {
  return fwTable("snmpTargetAddr", {TARGET_ROOT, 2, 1}, FW_TABLE_OPS(snmpTargetAddr))
        .key(sizeof(SnmpTargetAddrKey))
        .index(fwIdxString("rfc2573t:snmpTargetAddrName", SNMP_TARGET_NAME_MAX, offsetof(SnmpTargetAddrKey, name),
                           offsetof(SnmpTargetAddrKey, nameLen)))
        .indexCounts(1, 128)
        .anyIndex()
        .fail(FW_FAIL_GENERIC_ALL);
}
constexpr FwEntry kAddrWalk = addrWalk();
constexpr FwEntry kAddrEntry = addrWalk().nextBy(fwNextBelow<kAddrWalk, 129>);

constexpr FwEntry paramsWalk() {
  return fwTable("snmpTargetParams", {TARGET_ROOT, 3, 1}, FW_TABLE_OPS(snmpTargetParams))
        .key(sizeof(SnmpTargetParamsKey))
        .index(fwIdxString("rfc2573t:snmpTargetParamsName", SNMP_TARGET_NAME_MAX,
                           offsetof(SnmpTargetParamsKey, name), offsetof(SnmpTargetParamsKey, nameLen)))
        .indexCounts(1, 128)
        .anyIndex()
        .fail(FW_FAIL_GENERIC_ALL);
}
constexpr FwEntry kParamsWalk = paramsWalk();
constexpr FwEntry kParamsEntry = paramsWalk().nextBy(fwNextBelow<kParamsWalk, 129>);

constexpr FwObject kObjects[] = {
    fwObject(&kScalars, 0, 1, "rfc2573t:snmpTargetSpinLock").integer().catalogued(0, kIntMax).attr(11),

    // snmpTargetAddrEntry. The name is the index and has no branch of its own.
    fwObject(&kAddrEntry, 1, 1, "rfc2573t:snmpTargetAddrName").octets(32).access_(MDB_ACCESS_RO_INDEX).implied(),
    fwObject(&kAddrEntry, 2, 2, "rfc2573t:snmpTargetAddrTDomain").oid(64).rc().attr(0),
    fwObject(&kAddrEntry, 3, 3, "rfc2573t:snmpTargetAddrTAddress").octets(255).rc().attr(1).hook(transportAddress),
    fwObject(&kAddrEntry, 4, 4, "rfc2573t:snmpTargetAddrTimeout").integer().rc().catalogued(0, kIntMax).attr(6),
    fwObject(&kAddrEntry, 5, 5, "rfc2573t:snmpTargetAddrRetryCount").integer().rc().catalogued(0, 255).attr(7),
    fwObject(&kAddrEntry, 6, 6, "rfc2573t:snmpTargetAddrTagList").octets(255).rc().attr(4).maxLength(255),
    fwObject(&kAddrEntry, 7, 7, "rfc2573t:snmpTargetAddrParams").octets(32).rc().attr(5),
    fwObject(&kAddrEntry, 8, 8, "rfc2573t:snmpTargetAddrStorageType").integer().rc().catalogued(1, 5).attr(8),
    fwObject(&kAddrEntry, 9, 9, "rfc2573t:snmpTargetAddrRowStatus").rowStatus().rc().catalogued(1, 6).attr(10),

    // snmpTargetParamsEntry
    fwObject(&kParamsEntry, 10, 1, "rfc2573t:snmpTargetParamsName").octets(32).access_(MDB_ACCESS_RO_INDEX).implied(),
    fwObject(&kParamsEntry, 11, 2, "rfc2573t:snmpTargetParamsMPModel").integer().rc().catalogued(0, kIntMax).attr(1).below(4),
    fwObject(&kParamsEntry, 12, 3, "rfc2573t:snmpTargetParamsSecurityModel").integer().rc().catalogued(1, kIntMax).attr(2).below(4),
    fwObject(&kParamsEntry, 13, 4, "rfc2573t:snmpTargetParamsSecurityName").octets(32).rc().attr(0).maxLength(32),
    fwObject(&kParamsEntry, 14, 5, "rfc2573t:snmpTargetParamsSecurityLevel").integer().rc().attr(3).range(1, 3),
    fwObject(&kParamsEntry, 15, 6, "rfc2573t:snmpTargetParamsStorageType").integer().rc().attr(4).range(1, 5),
    fwObject(&kParamsEntry, 16, 7, "rfc2573t:snmpTargetParamsRowStatus").rowStatus().rc().catalogued(1, 6).attr(5),

    fwObject(&kScalars, 17, 4, "rfc2573t:snmpUnavailableContexts").counter().ro().attr(82),
    fwObject(&kScalars, 18, 5, "rfc2573t:snmpUnknownContexts").counter().ro().attr(81),
};
static_assert(sizeof kObjects / sizeof kObjects[0] == 19, "rfc2573t has 19 objects");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int rfc2573tMibInit(void) { return fwModuleRegister("rfc2573t", 145, kBindings.data()); }
