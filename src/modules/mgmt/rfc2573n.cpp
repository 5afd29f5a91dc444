// rfc2573n: which targets receive notifications, and the filters that
// select them (SNMP-NOTIFICATION-MIB).
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/snmpNotify.h"
#include "services/snmpNotifyFilter.h"
#include "services/snmpNotifyProfile.h"

#include <cstddef>

namespace {

#define NOTIFY_ROOT 1, 3, 6, 1, 6, 3, 13, 1

constexpr FwEntry notifyWalk() {
  return fwTable("snmpNotify", {NOTIFY_ROOT, 1, 1}, FW_TABLE_OPS(snmpNotify))
        .key(sizeof(SnmpNotifyKey))
        .index(fwIdxString("rfc2573n:snmpNotifyName", 32, offsetof(SnmpNotifyKey, name), offsetof(SnmpNotifyKey, nameLen)))
        .indexCounts(1, 32)
        .anyIndex()
        .fail(FW_FAIL_GENERIC_ALL);
}
constexpr FwEntry kNotifyWalk = notifyWalk();
constexpr FwEntry kNotifyEntry = notifyWalk().nextBy(fwNextBelow<kNotifyWalk, 129>);

// Keyed by the name of a target's parameters.
constexpr FwEntry profileWalk() {
  return fwTable("snmpNotifyProfile", {NOTIFY_ROOT, 2, 1}, FW_TABLE_OPS(snmpNotifyProfile))
        .key(sizeof(SnmpNotifyProfileKey))
        .index(fwIdxString("rfc2573t:snmpTargetParamsName", 32, offsetof(SnmpNotifyProfileKey, name),
                           offsetof(SnmpNotifyProfileKey, nameLen)))
        .indexCounts(1, 32)
        .anyIndex()
        .fail(FW_FAIL_GENERIC_ALL);
}
constexpr FwEntry kProfileWalk = profileWalk();
constexpr FwEntry kProfileEntry = profileWalk().nextBy(fwNextBelow<kProfileWalk, 129>);

// The profile's name, then the subtree with its length sub-id, both ways.
constexpr FwEntry filterWalk() {
  return fwTable("snmpNotifyFilter", {NOTIFY_ROOT, 3, 1}, FW_TABLE_OPS(snmpNotifyFilter))
        .key(sizeof(SnmpNotifyFilterKey))
        .index(fwIdxString("rfc2573n:snmpNotifyFilterProfileName", 32, offsetof(SnmpNotifyFilterKey, profileName),
                           offsetof(SnmpNotifyFilterKey, profileNameLen)))
        .index(fwIdxOid("rfc2573n:snmpNotifyFilterSubtree", 32, offsetof(SnmpNotifyFilterKey, subtree),
                        offsetof(SnmpNotifyFilterKey, subtreeLen)))
        .indexCounts(2, 96)
        .anyIndex()
        .fail(FW_FAIL_GENERIC_ALL);
}
constexpr FwEntry kFilterWalk = filterWalk();
constexpr FwEntry kFilterEntry = filterWalk().nextBy(fwNextBelow<kFilterWalk, 129>);

constexpr FwObject kObjects[] = {
    // snmpNotifyEntry. The name is the index and has no branch of its own.
    fwObject(&kNotifyEntry, 0, 1, "rfc2573n:snmpNotifyName").octets(32).access_(MDB_ACCESS_RO_INDEX).implied(),
    fwObject(&kNotifyEntry, 1, 2, "rfc2573n:snmpNotifyTag").octets(255).rc().attr(0),
    fwObject(&kNotifyEntry, 2, 3, "rfc2573n:snmpNotifyType").integer().rc().attr(1).range(1, 2),
    fwObject(&kNotifyEntry, 3, 4, "rfc2573n:snmpNotifyStorageType").integer().rc().attr(2).range(1, 5),
    fwObject(&kNotifyEntry, 4, 5, "rfc2573n:snmpNotifyRowStatus").rowStatus().rc().catalogued(1, 6).attr(3),

    // snmpNotifyFilterProfileEntry: the profile a target's parameters use.
    fwObject(&kProfileEntry, 5, 1, "rfc2573n:snmpNotifyFilterProfileName").octets(32).rc().attr(0).maxLength(32),
    fwObject(&kProfileEntry, 6, 2, "rfc2573n:snmpNotifyFilterProfileStorType").integer().rc().attr(1).range(1, 5),
    fwObject(&kProfileEntry, 7, 3, "rfc2573n:snmpNotifyFilterProfileRowStatus").rowStatus().rc().catalogued(1, 6).attr(2),

    // snmpNotifyFilterEntry
    fwObject(&kFilterEntry, 8, 1, "rfc2573n:snmpNotifyFilterSubtree").oid(64).access_(MDB_ACCESS_RO_INDEX).implied(),
    fwObject(&kFilterEntry, 9, 2, "rfc2573n:snmpNotifyFilterMask").octets(255).rc().attr(0).maxLength(255),
    fwObject(&kFilterEntry, 10, 3, "rfc2573n:snmpNotifyFilterType").integer().rc().attr(1).range(1, 2),
    fwObject(&kFilterEntry, 11, 4, "rfc2573n:snmpNotifyFilterStorageType").integer().rc().attr(2).range(1, 5),
    fwObject(&kFilterEntry, 12, 5, "rfc2573n:snmpNotifyFilterRowStatus").rowStatus().rc().catalogued(1, 6).attr(3),
};
static_assert(sizeof kObjects / sizeof kObjects[0] == 13, "rfc2573n has 13 objects");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int rfc2573nMibInit(void) { return fwModuleRegister("rfc2573n", 145, kBindings.data()); }
