// rfc2575: the view-based access control model: contexts, groups, access
// rights and views (SNMP-VIEW-BASED-ACM-MIB).
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/snmp.h"
#include "services/snmpVacmAccess.h"
#include "services/snmpVacmContext.h"
#include "services/snmpVacmSecGroup.h"
#include "services/snmpVacmView.h"

#include <cstddef>

namespace {

#define VACM_ROOT 1, 3, 6, 1, 6, 3, 16, 1

constexpr int32_t kIntMax = 2147483647;

// Names of at most 31 characters reach a row by Get: the entry counts 32 sub-ids.
constexpr FwEntry contextWalk() {
  return fwTable("snmpVacmContext", {VACM_ROOT, 1, 1}, FW_TABLE_OPS(snmpVacmContext))
        .key(sizeof(SnmpVacmContextKey))
        .index(fwIdxString("rfc2575:vacmContextName", 32, offsetof(SnmpVacmContextKey, name),
                           offsetof(SnmpVacmContextKey, nameLen)))
        .indexCounts(1, 32)
        .anyIndex()
        .fail(FW_FAIL_GENERIC_ALL);
}
constexpr FwEntry kContextWalk = contextWalk();
constexpr FwEntry kContextEntry = contextWalk().nextBy(fwNextBelow<kContextWalk, 33>);

constexpr FwEntry secGroupWalk() {
  return fwTable("snmpVacmSecGroup", {VACM_ROOT, 2, 1}, FW_TABLE_OPS(snmpVacmSecGroup))
        .key(sizeof(SnmpVacmSecGroupKey))
        .index(fwIdxInt("rfc2575:vacmSecurityModel", offsetof(SnmpVacmSecGroupKey, securityModel)))
        .index(fwIdxString("rfc2575:vacmSecurityName", 32, offsetof(SnmpVacmSecGroupKey, securityName),
                           offsetof(SnmpVacmSecGroupKey, securityNameLen)))
        .anyIndex()
        .fail(FW_FAIL_GENERIC_ALL);
}
constexpr FwEntry kSecGroupWalk = secGroupWalk();
constexpr FwEntry kSecGroupEntry = secGroupWalk().nextBy(fwNextBelow<kSecGroupWalk, 35>);

// The group's name (a column of the security-to-group table), the context
// prefix, the security model and level; the entry counts 72 sub-ids.
constexpr FwEntry accessWalk() {
  return fwTable("snmpVacmAccess", {VACM_ROOT, 4, 1}, FW_TABLE_OPS(snmpVacmAccess))
        .key(sizeof(SnmpVacmAccessKey))
        .index(fwIdxString("rfc2575:vacmGroupName", 32, offsetof(SnmpVacmAccessKey, groupName),
                           offsetof(SnmpVacmAccessKey, groupNameLen)))
        .index(fwIdxString("rfc2575:vacmAccessContextPrefix", 32, offsetof(SnmpVacmAccessKey, contextPrefix),
                           offsetof(SnmpVacmAccessKey, contextPrefixLen)))
        .index(fwIdxInt("rfc2575:vacmAccessSecurityModel", offsetof(SnmpVacmAccessKey, securityModel)))
        .index(fwIdxInt("rfc2575:vacmAccessSecurityLevel", offsetof(SnmpVacmAccessKey, securityLevel)))
        .indexCounts(4, 72)
        .anyIndex()
        .fail(FW_FAIL_GENERIC_ALL);
}
constexpr FwEntry kAccessWalk = accessWalk();
constexpr FwEntry kAccessEntry = accessWalk().nextBy(fwNextBelow<kAccessWalk, 65>);

constexpr FwEntry kViews = fwScalars("snmp", {VACM_ROOT, 5}, FW_SCALAR_OPS(snmp));

// The view's name, then the subtree's arcs; the entry counts 96 sub-ids.
constexpr FwEntry kViewEntry =
    fwTable("snmpVacmView", {VACM_ROOT, 5, 2, 1}, FW_TABLE_OPS(snmpVacmView))
        .key(sizeof(SnmpVacmViewKey))
        .index(fwIdxString("rfc2575:vacmViewTreeFamilyViewName", 32, offsetof(SnmpVacmViewKey, viewName),
                           offsetof(SnmpVacmViewKey, viewNameLen)))
        .index(fwIdxOid("rfc2575:vacmViewTreeFamilySubtree", 32, offsetof(SnmpVacmViewKey, subtree),
                        offsetof(SnmpVacmViewKey, subtreeLen)))
        .indexCounts(2, 96)
        .anyIndex()
        .fail(FW_FAIL_GENERIC_ALL);

constexpr FwObject kObjects[] = {
    // vacmContextEntry: the name read from the index.
    fwObject(&kContextEntry, 0, 1, "rfc2575:vacmContextName").octets(32).ro().indexOf(0),

    // vacmSecurityToGroupEntry. The index columns have no branch of their own.
    fwObject(&kSecGroupEntry, 1, 1, "rfc2575:vacmSecurityModel").integer().access_(MDB_ACCESS_RO_INDEX).catalogued(1, kIntMax).withBits(MDB_ATTR_INDEX),
    fwObject(&kSecGroupEntry, 2, 2, "rfc2575:vacmSecurityName").octets(32).access_(MDB_ACCESS_RO_INDEX).withBits(MDB_ATTR_INDEX),
    fwObject(&kSecGroupEntry, 3, 3, "rfc2575:vacmGroupName").octets(32).rc().attr(2).maxLength(32),
    fwObject(&kSecGroupEntry, 4, 4, "rfc2575:vacmSecurityToGroupStorageType").integer().rc().attr(3).range(1, 5),
    fwObject(&kSecGroupEntry, 5, 5, "rfc2575:vacmSecurityToGroupStatus").rowStatus().rc().catalogued(1, 6).attr(4),

    // vacmAccessEntry
    fwObject(&kAccessEntry, 6, 1, "rfc2575:vacmAccessContextPrefix").octets(32).access_(MDB_ACCESS_RO_INDEX).withBits(MDB_ATTR_INDEX),
    fwObject(&kAccessEntry, 7, 2, "rfc2575:vacmAccessSecurityModel").integer().access_(MDB_ACCESS_RO_INDEX).catalogued(0, kIntMax).withBits(MDB_ATTR_INDEX),
    fwObject(&kAccessEntry, 8, 3, "rfc2575:vacmAccessSecurityLevel").integer().access_(MDB_ACCESS_RO_INDEX).catalogued(1, 3).withBits(MDB_ATTR_INDEX),
    fwObject(&kAccessEntry, 9, 4, "rfc2575:vacmAccessContextMatch").integer().rc().catalogued(1, 2).attr(4),
    fwObject(&kAccessEntry, 10, 5, "rfc2575:vacmAccessReadViewName").octets(32).rc().attr(5).maxLength(32),
    fwObject(&kAccessEntry, 11, 6, "rfc2575:vacmAccessWriteViewName").octets(32).rc().attr(6).maxLength(32),
    fwObject(&kAccessEntry, 12, 7, "rfc2575:vacmAccessNotifyViewName").octets(32).rc().attr(7).maxLength(32),
    fwObject(&kAccessEntry, 13, 8, "rfc2575:vacmAccessStorageType").integer().rc().attr(8).range(1, 5),
    fwObject(&kAccessEntry, 14, 9, "rfc2575:vacmAccessStatus").rowStatus().rc().catalogued(1, 6).attr(9),

    // vacmMIBViews
    fwObject(&kViews, 15, 1, "rfc2575:vacmViewSpinLock").integer().catalogued(0, kIntMax).attr(10).hook(fwSpinLock),
    fwObject(&kViewEntry, 16, 1, "rfc2575:vacmViewTreeFamilyViewName").octets(32).access_(MDB_ACCESS_RO_INDEX).withBits(MDB_ATTR_INDEX),
    fwObject(&kViewEntry, 17, 2, "rfc2575:vacmViewTreeFamilySubtree").oid(64).access_(MDB_ACCESS_RO_INDEX).withBits(MDB_ATTR_INDEX),
    fwObject(&kViewEntry, 18, 3, "rfc2575:vacmViewTreeFamilyMask").octets(255).rc().attr(0).maxLength(16),
    fwObject(&kViewEntry, 19, 4, "rfc2575:vacmViewTreeFamilyType").integer().rc().attr(1).range(1, 2),
    fwObject(&kViewEntry, 20, 5, "rfc2575:vacmViewTreeFamilyStorageType").integer().rc().attr(2).range(1, 5),
    fwObject(&kViewEntry, 21, 6, "rfc2575:vacmViewTreeFamilyStatus").rowStatus().rc().catalogued(1, 6).attr(3),
};
static_assert(sizeof kObjects / sizeof kObjects[0] == 22, "rfc2575 has 22 objects");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int rfc2575MibInit(void) { return fwModuleRegister("rfc2575", 145, kBindings.data()); }
