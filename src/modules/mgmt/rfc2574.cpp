// rfc2574: the user-based security model's counters and users
// (SNMP-USER-BASED-SM-MIB).
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/snmp.h"
#include "services/snmpUser.h"

#include <cstddef>

namespace {

#define USM_ROOT 1, 3, 6, 1, 6, 3, 15, 1

constexpr int32_t kIntMax = 2147483647;

// usmUserSecurityName is the user name of the index, no service asked.
uint32_t securityNameFromKey(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (kind != MDB_GET && kind != MDB_GET_NEXT) return fwServePlain(kind, mdb, call);
  const auto* key = reinterpret_cast<const SnmpUserKey*>(call->key);
  octetSet(mdb, key->userName, key->userNameLen);
  return 0;
}

// The scalars deliver what the service left, whatever it answered.
constexpr FwEntry kStats = fwScalars("snmp", {USM_ROOT, 1}, FW_SCALAR_OPS(snmp)).fail(FW_FAIL_IGNORE);
constexpr FwEntry kUser = fwScalars("snmp", {USM_ROOT, 2}, FW_SCALAR_OPS(snmp)).fail(FW_FAIL_IGNORE);

// The engine id and the user name; the entry counts 64 sub-ids.
constexpr FwEntry userWalk() {
  return fwTable("snmpUser", {USM_ROOT, 2, 2, 1}, FW_TABLE_OPS(snmpUser))
        .key(sizeof(SnmpUserKey))
        .index(fwIdxString("rfc2574:usmUserEngineID", 64, offsetof(SnmpUserKey, engineId),
                           offsetof(SnmpUserKey, engineIdLen)))
        .index(fwIdxString("rfc2574:usmUserName", 32, offsetof(SnmpUserKey, userName),
                           offsetof(SnmpUserKey, userNameLen)))
        .indexCounts(2, 64)
        .anyIndex()
        .buffer(256);
}
constexpr FwEntry kUserWalk = userWalk();
constexpr FwEntry kUserEntry = userWalk().nextBy(fwNextBelow<kUserWalk, 67>);

constexpr FwObject kObjects[] = {
    // usmStats
    fwObject(&kStats, 0, 1, "rfc2574:usmStatsUnsupportedSecLevels").counter().ro().attr(86),
    fwObject(&kStats, 1, 2, "rfc2574:usmStatsNotInTimeWindows").counter().ro().attr(87),
    fwObject(&kStats, 2, 3, "rfc2574:usmStatsUnknownUserNames").counter().ro().attr(88),
    fwObject(&kStats, 3, 4, "rfc2574:usmStatsUnknownEngineIDs").counter().ro().attr(89),
    fwObject(&kStats, 4, 5, "rfc2574:usmStatsWrongDigests").counter().ro().attr(90),
    fwObject(&kStats, 5, 6, "rfc2574:usmStatsDecryptionErrors").counter().ro().attr(91),
    fwObject(&kUser, 6, 1, "rfc2574:usmUserSpinLock").integer().catalogued(0, kIntMax).attr(12).hook(fwSpinLock),

    // usmUserEntry. The two index columns have no branch of their own. The
    // key columns pass the client's bytes to the service as they are.
    fwObject(&kUserEntry, 7, 1, "rfc2574:usmUserEngineID").octets(32).access_(MDB_ACCESS_RO_INDEX).withBits(MDB_ATTR_INDEX),
    fwObject(&kUserEntry, 8, 2, "rfc2574:usmUserName").octets(32).access_(MDB_ACCESS_RO_INDEX).withBits(MDB_ATTR_INDEX),
    fwObject(&kUserEntry, 9, 3, "rfc2574:usmUserSecurityName").octets(32).ro().hook(securityNameFromKey),
    fwObject(&kUserEntry, 10, 4, "rfc2574:usmUserCloneFrom").oid(64).rc().attr(3),
    fwObject(&kUserEntry, 11, 5, "rfc2574:usmUserAuthProtocol").oid(64).rc().attr(4),
    fwObject(&kUserEntry, 12, 6, "rfc2574:usmUserAuthKeyChange").octets(255).rc().attr(5),
    fwObject(&kUserEntry, 13, 7, "rfc2574:usmUserOwnAuthKeyChange").octets(255).rc().attr(7),
    fwObject(&kUserEntry, 14, 8, "rfc2574:usmUserPrivProtocol").oid(64).rc().attr(8),
    fwObject(&kUserEntry, 15, 9, "rfc2574:usmUserPrivKeyChange").octets(255).rc().attr(9),
    fwObject(&kUserEntry, 16, 10, "rfc2574:usmUserOwnPrivKeyChange").octets(255).rc().attr(11),
    fwObject(&kUserEntry, 17, 11, "rfc2574:usmUserPublic").octets(255).rc().attr(12),
    fwObject(&kUserEntry, 18, 12, "rfc2574:usmUserStorageType").integer().rc().attr(13).range(1, 5),
    fwObject(&kUserEntry, 19, 13, "rfc2574:usmUserStatus").rowStatus().rc().catalogued(1, 6).attr(16),
};
static_assert(sizeof kObjects / sizeof kObjects[0] == 20, "rfc2574 has 20 objects");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int rfc2574MibInit(void) { return fwModuleRegister("rfc2574", 145, kBindings.data()); }
