// snmp: the agent's private face: its settings, the community-to-view
// mapping, and the target, VACM and user tables with the private columns.
// The tables share their services and attribute ids with the standard
// modules, so a row shows up in both.
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/snmp.h"
#include "services/snmpCommunity.h"
#include "services/snmpTargetAddr.h"
#include "services/snmpTargetParams.h"
#include "services/snmpUser.h"
#include "services/snmpVacmAccess.h"
#include "services/snmpVacmSecGroup.h"
#include "services/snmpVacmView.h"

#include <cstddef>

namespace {

#define SNMP_ROOT 1, 3, 6, 1, 4, 1, 47391, 2, 3807

constexpr int32_t kIntMax = 2147483647;

inline bool isRead(uint32_t kind) { return kind == MDB_GET || kind == MDB_GET_NEXT; }

// ---------------------------------------------------------------- scalars

// snmpdProcessStatus: the agent runs. A write passes its check and is then
// refused (deliberate: the agent is not stopped from here).
uint32_t processStatus(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (isRead(kind)) {
    ulongSet(mdb, 1);
    return 0;
  }
  if (kind == MDB_SET_NVM || kind == MDB_COMMIT) return mdbErrorNotWritable();
  return fwServePlain(kind, mdb, call);
}

// snmpVersionSupportCfg is a set of version bits: a write adds the bits it
// gives to those the service holds and never takes one away.
uint32_t versionBits(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (kind != MDB_SET_NVM && kind != MDB_COMMIT) return fwServePlain(kind, mdb, call);
  const uint32_t attribute = call->object->attribute;
  int rc = call->entry->scalar.getApi(0, attribute, &call->slot);
  if (rc != 0) return static_cast<uint32_t>(rc);
  call->slot |= ulongGet(mdb);
  return static_cast<uint32_t>(call->entry->scalar.setApi(0, attribute, &call->slot));
}

// The agent's ports: the standard port 161, or any port from 1024 on.
uint32_t agentPort(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (kind != MDB_VALIDATE) return fwServePlain(kind, mdb, call);
  const uint32_t port = ulongGet(mdb);
  if (port != 161 && (port < 1024 || port > 65535)) return mdbErrorInvalidRange();
  mdb->flags |= MDB_FLAG_VALIDATED;
  return 0;
}

// snmpResetStatstic: a write is the command; a read gives 0.
uint32_t resetCommand(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  ulongSet(mdb, 0);
  return 0;
}

// ---------------------------------------------------------------- target tables

// Transport columns answer a failure of the service with a generic error;
// the other columns of the table pass its code on.
uint32_t transportColumn(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  uint32_t rc = fwServePlain(kind, mdb, call);
  return rc != 0 && kind != MDB_VALIDATE ? mdbErrorGenError() : rc;
}

// An IPv4 address with its port (6 bytes) or an IPv6 address with its port (18).
uint32_t transportAddress(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (kind != MDB_VALIDATE) return transportColumn(kind, mdb, call);
  if (mdb->valueLen != 6 && mdb->valueLen != 18) return mdbErrorInvalidLength();
  mdb->flags |= MDB_FLAG_VALIDATED;
  return 0;
}

// snmpTargetAddrVpnName: Validate passes without setting the mark and an NVM
// write does nothing; only a commit writes (deliberate).
uint32_t vpnName(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (kind == MDB_VALIDATE || kind == MDB_SET_NVM) return 0;
  return transportColumn(kind, mdb, call);
}

// A parameters row with an empty name is a generic error, whatever the column.
uint32_t paramsColumn(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (reinterpret_cast<const SnmpTargetParamsKey*>(call->key)->nameLen == 0) return mdbErrorGenError();
  if (call->object->attribute == FW_NO_ATTRIBUTE) return mdbErrorNoSuchInstance();  // the name: no branch
  return fwServePlain(kind, mdb, call);
}

// ---------------------------------------------------------------- VACM and user tables

// These two tables answer an over-long name in the index with -1, which is
// no error code of the database (deliberate: clients rely on it). Only a
// walk step goes to the generic handler as it is.
uint32_t secGroupHandler(uint32_t kind, MdbCrb* mdb) {
  if (kind != MDB_GET_NEXT && mdb->indexSubIdCount > 1 && mdb->pIndex[1] > 32) return static_cast<uint32_t>(-1);
  return fwHandler(kind, mdb);
}

uint32_t userHandler(uint32_t kind, MdbCrb* mdb) {
  if (kind != MDB_GET_NEXT && mdb->indexSubIdCount > 0) {
    const uint32_t engineIdLength = mdb->pIndex[0];
    if (engineIdLength > 64) return static_cast<uint32_t>(-1);
    if (engineIdLength + 1 < mdb->indexSubIdCount && mdb->pIndex[engineIdLength + 1] > 32)
      return static_cast<uint32_t>(-1);
  }
  return fwHandler(kind, mdb);
}

constexpr FwObject handledBy(FwObject o, MdbObjectHandler handler) {
  o.desc.handler = handler;
  return o;
}

// ---------------------------------------------------------------- entries

constexpr FwEntry kScalars = fwScalars("snmp", {SNMP_ROOT, 1}, FW_SCALAR_OPS(snmp)).buffer(128);

// Community names of at most 32 characters.
constexpr FwEntry kCommunityEntry =
    fwTable("snmpCommunity", {SNMP_ROOT, 2, 1}, FW_TABLE_OPS(snmpCommunity))
        .key(sizeof(SnmpCommunityKey))
        .index(fwIdxString("snmp:snmpComm2ViewCommName", 32, offsetof(SnmpCommunityKey, name),
                           offsetof(SnmpCommunityKey, nameLen)))
        .anyIndex()
        .validateFirstBelow(33);

// Names of at most 115 characters; the entries count 128 sub-ids.
constexpr FwEntry kAddrEntry =
    fwTable("snmpTargetAddr", {SNMP_ROOT, 3, 1}, FW_TABLE_OPS(snmpTargetAddr))
        .key(sizeof(SnmpTargetAddrKey))
        .index(fwIdxString("snmp:snmpTargetAddrName", SNMP_TARGET_NAME_MAX, offsetof(SnmpTargetAddrKey, name),
                           offsetof(SnmpTargetAddrKey, nameLen)))
        .indexCounts(1, 128)
        .anyIndex();

constexpr FwEntry paramsWalk() {
  return fwTable("snmpTargetParams", {SNMP_ROOT, 4, 1}, FW_TABLE_OPS(snmpTargetParams))
        .key(sizeof(SnmpTargetParamsKey))
        .index(fwIdxString("snmp:snmpTargetParamsName", SNMP_TARGET_NAME_MAX, offsetof(SnmpTargetParamsKey, name),
                           offsetof(SnmpTargetParamsKey, nameLen)))
        .indexCounts(1, 128)
        .anyIndex();
}
constexpr FwEntry kParamsWalk = paramsWalk();
constexpr FwEntry kParamsEntry = paramsWalk().nextBy(fwNextBelow<kParamsWalk, 129>);

constexpr FwEntry accessWalk() {
  return fwTable("snmpVacmAccess", {SNMP_ROOT, 5, 1}, FW_TABLE_OPS(snmpVacmAccess))
        .key(sizeof(SnmpVacmAccessKey))
        .index(fwIdxString("snmp:snmpVacmGroupName", 32, offsetof(SnmpVacmAccessKey, groupName),
                           offsetof(SnmpVacmAccessKey, groupNameLen)))
        .index(fwIdxString("snmp:snmpVacmAccessContextPrefix", 32, offsetof(SnmpVacmAccessKey, contextPrefix),
                           offsetof(SnmpVacmAccessKey, contextPrefixLen)))
        .index(fwIdxInt("snmp:snmpVacmAccessSecurityModel", offsetof(SnmpVacmAccessKey, securityModel)))
        .index(fwIdxInt("snmp:snmpVacmAccessSecurityLevel", offsetof(SnmpVacmAccessKey, securityLevel)))
        .anyIndex();
}
constexpr FwEntry kAccessWalk = accessWalk();
constexpr FwEntry kAccessEntry = accessWalk().nextBy(fwNextBelow<kAccessWalk, 65>);

constexpr FwEntry secGroupWalk() {
  return fwTable("snmpVacmSecGroup", {SNMP_ROOT, 6, 1}, FW_TABLE_OPS(snmpVacmSecGroup))
        .key(sizeof(SnmpVacmSecGroupKey))
        .index(fwIdxInt("snmp:snmpVacmSecurityModel", offsetof(SnmpVacmSecGroupKey, securityModel)))
        .index(fwIdxString("snmp:snmpVacmSecurityName", 32, offsetof(SnmpVacmSecGroupKey, securityName),
                           offsetof(SnmpVacmSecGroupKey, securityNameLen)))
        .anyIndex();
}
constexpr FwEntry kSecGroupWalk = secGroupWalk();
constexpr FwEntry kSecGroupEntry = secGroupWalk().nextBy(fwNextBelow<kSecGroupWalk, 35>);

constexpr FwEntry kViewEntry =
    fwTable("snmpVacmView", {SNMP_ROOT, 7, 1}, FW_TABLE_OPS(snmpVacmView))
        .key(sizeof(SnmpVacmViewKey))
        .index(fwIdxString("snmp:snmpVacmViewTreeFamilyViewName", 32, offsetof(SnmpVacmViewKey, viewName),
                           offsetof(SnmpVacmViewKey, viewNameLen)))
        .index(fwIdxOid("snmp:snmpVacmViewTreeFamilySubtree", 32, offsetof(SnmpVacmViewKey, subtree),
                        offsetof(SnmpVacmViewKey, subtreeLen)))
        .anyIndex();

// Engine ids of at most 64 bytes and user names of at most 32 characters; a
// walk step refuses longer ones. The key columns read back through 128 bytes.
constexpr FwEntry kUserEntry =
    fwTable("snmpUser", {SNMP_ROOT, 8, 1}, FW_TABLE_OPS(snmpUser))
        .key(sizeof(SnmpUserKey))
        .index(fwIdxString("snmp:snmpUsmUserEngineID", 64, offsetof(SnmpUserKey, engineId),
                           offsetof(SnmpUserKey, engineIdLen)))
        .index(fwIdxString("snmp:snmpUsmUserName", 32, offsetof(SnmpUserKey, userName),
                           offsetof(SnmpUserKey, userNameLen)))
        .indexCounts(2, 64)
        .anyIndex()
        .buffer(128);

// ---------------------------------------------------------------- objects

// A status column of the RowStatus codes, catalogued as a plain integer.
constexpr FwObject rowStatusInteger(FwObject o) { return o.integer().catalogued(1, 6).check_(FW_CHECK_ROW_STATUS); }
// Any value but 0; catalogued without a range.
constexpr FwObject notZero(FwObject o) { return o.range(1, 0xFFFFFFFFu).catalogued(0, 0); }

#define SEC_GROUP(object) handledBy(object, secGroupHandler)
#define USER(object) handledBy(object, userHandler)

constexpr FwObject kObjects[] = {
    // The agent's settings.
    fwObject(&kScalars, 0, 1, "snmp:snmpdProcessStatus").integer().range(1, 2).hook(processStatus),
    fwObject(&kScalars, 1, 2, "snmp:snmpVersionSupport").integer().ro().catalogued(1, 5).constant_(5),
    fwObject(&kScalars, 2, 3, "snmp:snmpTrapEnable").integer().attr(34).range(1, 2),
    fwObject(&kScalars, 3, 4, "snmp:snmpVersionSupportCfg").integer().catalogued(1, 4).attr(13).hook(versionBits),
    fwObject(&kScalars, 4, 5, "snmp:snmpRwCommunityEnable").integer().attr(14).range(1, 2),
    fwObject(&kScalars, 5, 6, "snmp:snmpLoginFailCount").integer().attr(15).range(0, 30),
    fwObject(&kScalars, 6, 7, "snmp:snmpCurrentFailCount").integer().ro().attr(16),
    fwObject(&kScalars, 7, 8, "snmp:snmpReauthInterval").integer().attr(17).range(0, 1440),
    fwObject(&kScalars, 8, 9, "snmp:snmpIpv4Port").integer().catalogued(1024, 65535).attr(18).hook(agentPort),
    fwObject(&kScalars, 9, 10, "snmp:snmpIpv6Port").integer().catalogued(1024, 65535).attr(19).hook(agentPort),
    fwObject(&kScalars, 10, 11, "snmp:snmpSetFilter").integer().attr(20).range(1, 2),
    fwObject(&kScalars, 11, 12, "snmp:snmpGetFilter").integer().attr(21).range(1, 2),
    fwObject(&kScalars, 12, 13, "snmp:snmpMaxPacketSize").integer().attr(23).range(100, 4000),
    // The default community strings pass to the service as the client sent them.
    fwObject(&kScalars, 13, 14, "snmp:snmpDefualtRoCommunity").octets(33).attr(4).maxLength(33),
    fwObject(&kScalars, 14, 15, "snmp:snmpDefualtRwCommunity").octets(33).attr(5).maxLength(33),
    // Reads 2 and takes a write without effect (deliberate).
    fwObject(&kScalars, 15, 16, "snmp:snmpTrapL2Enable").integer().range(1, 2).constant_(2),
    fwObject(&kScalars, 16, 17, "snmp:snmpAuthFailReply").integer().attr(8).range(1, 2),
    fwObject(&kScalars, 17, 18, "snmp:snmpReplySourceIp").integer().attr(25).range(1, 2),
    fwObject(&kScalars, 18, 19, "snmp:snmpTrapSourceIf").integer().attr(28),
    fwObject(&kScalars, 19, 20, "snmp:snmpResetStatstic").integer().attr(44).hook(resetCommand),

    // The community table: the view each community string gives.
    fwObject(&kCommunityEntry, 21, 1, "snmp:snmpComm2ViewCommName").octets(33).ro().indexOf(0),
    fwObject(&kCommunityEntry, 22, 2, "snmp:snmpComm2ViewViewName").octets(255).attr(1).maxLength(255),
    fwObject(&kCommunityEntry, 23, 3, "snmp:snmpComm2ViewPermission").integer().attr(2).range(1, 2),
    fwObject(&kCommunityEntry, 24, 4, "snmp:snmpComm2ViewFilter").integer().attr(4),
    fwObject(&kCommunityEntry, 25, 5, "snmp:snmpComm2ViewType").integer().attr(6).range(0, 1),
    rowStatusInteger(fwObject(&kCommunityEntry, 26, 6, "snmp:snmpComm2ViewRowStatus")).attr(3),
    fwObject(&kCommunityEntry, 27, 7, "snmp:snmpComm2ViewIpv6Filter").integer().attr(5),

    // The target addresses. The name is the index and has no branch of its own.
    fwObject(&kAddrEntry, 28, 1, "snmp:snmpTargetAddrName").octets(32).access_(MDB_ACCESS_RO_INDEX).implied(),
    fwObject(&kAddrEntry, 29, 2, "snmp:snmpTargetAddrTDomain").oid(64).rc().attr(0).hook(transportColumn),
    fwObject(&kAddrEntry, 30, 3, "snmp:snmpTargetAddrTAddress").octets(255).rc().attr(1).hook(transportAddress),
    fwObject(&kAddrEntry, 31, 4, "snmp:snmpTargetAddrTimeout").integer().attr(6),
    fwObject(&kAddrEntry, 32, 5, "snmp:snmpTargetAddrRetryCount").integer().attr(7),
    fwObject(&kAddrEntry, 33, 6, "snmp:snmpTargetAddrTagList").octets(255).attr(4).maxLength(255),
    fwObject(&kAddrEntry, 34, 7, "snmp:snmpTargetAddrParams").octets(255).attr(5).maxLength(255),
    fwObject(&kAddrEntry, 35, 8, "snmp:snmpTargetAddrStorageType").integer().attr(8),
    rowStatusInteger(fwObject(&kAddrEntry, 36, 9, "snmp:snmpTargetAddrRowStatus")).attr(10),
    fwObject(&kAddrEntry, 37, 10, "snmp:snmpTargetAddrFamily").integer().attr(3).range(1, 2),
    fwObject(&kAddrEntry, 38, 11, "snmp:snmpTargetAddrVpnName").octets(33).attr(2).hook(vpnName),
    // An integer attribute, catalogued as a string.
    fwObject(&kAddrEntry, 39, 12, "snmp:TargetAddrTimerTrap").octets(4).form_(FW_FORM_INT).attr(9),

    // The target parameters.
    fwObject(&kParamsEntry, 40, 1, "snmp:snmpTargetParamsName").octets(32).access_(MDB_ACCESS_RO_INDEX).implied().hook(paramsColumn),
    fwObject(&kParamsEntry, 41, 2, "snmp:snmpTargetParamsMPModel").integer().attr(1).hook(paramsColumn),
    fwObject(&kParamsEntry, 42, 3, "snmp:snmpTargetParamsSecurityModel").integer().attr(2).signedRange(1, kIntMax).hook(paramsColumn),
    fwObject(&kParamsEntry, 43, 4, "snmp:snmpTargetParamsSecurityName").octets(255).attr(0).maxLength(255).hook(paramsColumn),
    fwObject(&kParamsEntry, 44, 5, "snmp:snmpTargetParamsSecurityLevel").integer().attr(3).hook(paramsColumn),
    fwObject(&kParamsEntry, 45, 6, "snmp:snmpTargetParamsStorageType").integer().attr(4).hook(paramsColumn),
    rowStatusInteger(fwObject(&kParamsEntry, 46, 7, "snmp:snmpTargetParamsRowStatus")).attr(5).hook(paramsColumn),

    // VACM access: the index columns read from the index.
    fwObject(&kAccessEntry, 47, 1, "snmp:snmpVacmGroupName").octets(33).ro().indexOf(0),
    fwObject(&kAccessEntry, 48, 2, "snmp:snmpVacmAccessContextPrefix").octets(33).ro().indexOf(1),
    fwObject(&kAccessEntry, 49, 3, "snmp:snmpVacmAccessSecurityModel").integer().ro().catalogued(0, kIntMax).indexOf(2),
    fwObject(&kAccessEntry, 50, 4, "snmp:snmpVacmAccessSecurityLevel").integer().ro().catalogued(1, 3).indexOf(3),
    fwObject(&kAccessEntry, 51, 5, "snmp:snmpVacmAccessContextMatch").integer().attr(4).range(1, 2),
    fwObject(&kAccessEntry, 52, 6, "snmp:snmpVacmAccessReadViewName").octets(255).attr(5).maxLength(255),
    fwObject(&kAccessEntry, 53, 7, "snmp:snmpVacmAccessWriteViewName").octets(255).attr(6).maxLength(255),
    fwObject(&kAccessEntry, 54, 8, "snmp:snmpVacmAccessNotifyViewName").octets(255).attr(7).maxLength(255),
    fwObject(&kAccessEntry, 55, 9, "snmp:snmpVacmAccessStorageType").integer().attr(8).range(1, 5),
    rowStatusInteger(fwObject(&kAccessEntry, 56, 10, "snmp:snmpVacmAccessStatus")).attr(9),

    // VACM security to group.
    SEC_GROUP(fwObject(&kSecGroupEntry, 57, 1, "snmp:snmpVacmSecurityModel").integer().ro().catalogued(1, kIntMax).indexOf(0)),
    SEC_GROUP(fwObject(&kSecGroupEntry, 58, 2, "snmp:snmpVacmSecurityName").octets(33).ro().indexOf(1)),
    SEC_GROUP(fwObject(&kSecGroupEntry, 59, 3, "snmp:snmpVacmSecurityGroupName").octets(255).attr(2).maxLength(255)),
    SEC_GROUP(fwObject(&kSecGroupEntry, 60, 4, "snmp:snmpVacmSecurityStorage").integer().attr(3).range(1, 5)),
    SEC_GROUP(rowStatusInteger(fwObject(&kSecGroupEntry, 61, 5, "snmp:snmpVacmSecurityStatus")).attr(4)),

    // VACM view tree families.
    fwObject(&kViewEntry, 62, 1, "snmp:snmpVacmViewTreeFamilyViewName").octets(33).ro().indexOf(0),
    fwObject(&kViewEntry, 63, 2, "snmp:snmpVacmViewTreeFamilySubtree").oid(33).ro().indexOf(1),
    fwObject(&kViewEntry, 64, 3, "snmp:snmpVacmViewTreeFamilyMask").octets(255).attr(0).maxLength(255),
    fwObject(&kViewEntry, 65, 4, "snmp:snmpVacmViewTreeFamilyType").integer().attr(1).range(1, 2),
    fwObject(&kViewEntry, 66, 5, "snmp:snmpVacmViewTreeFamilyStorageType").integer().attr(2).range(1, 5),
    rowStatusInteger(fwObject(&kViewEntry, 67, 6, "snmp:snmpVacmViewTreeFamilyStatus")).attr(3),

    // Users. The key columns carry secret material: the client's bytes go to
    // the service by pointer, neither copied nor logged.
    USER(fwObject(&kUserEntry, 68, 1, "snmp:snmpUsmUserEngineID").octets(32).ro().indexOf(0)),
    USER(fwObject(&kUserEntry, 69, 2, "snmp:snmpUsmUserName").octets(33).ro().indexOf(1)),
    USER(fwObject(&kUserEntry, 70, 3, "snmp:snmpUsmUserSecurityName").octets(255).ro().attr(2)),
    USER(fwObject(&kUserEntry, 71, 4, "snmp:snmpUsmUserCloneFrom").oid(128).attr(3)),
    USER(fwObject(&kUserEntry, 72, 5, "snmp:snmpUsmUserAuthProtocol").oid(128).attr(4)),
    USER(fwObject(&kUserEntry, 73, 6, "snmp:snmpUsmUserAuthKeyChange").octets(512).attr(5).maxLength(512)),
    USER(fwObject(&kUserEntry, 74, 7, "snmp:snmpUsmUserPlainAuthKeyChange").octets(512).attr(6).maxLength(512)),
    USER(fwObject(&kUserEntry, 75, 8, "snmp:snmpUsmUserOwnAuthKeyChange").octets(512).attr(7).maxLength(512)),
    USER(fwObject(&kUserEntry, 76, 9, "snmp:snmpUsmUserPrivProtocol").oid(128).attr(8)),
    USER(fwObject(&kUserEntry, 77, 10, "snmp:snmpUsmUserPrivKeyChange").octets(512).attr(9).maxLength(512)),
    USER(fwObject(&kUserEntry, 78, 11, "snmp:snmpUsmUserPlainPrivKeyChange").octets(512).attr(10).maxLength(512)),
    USER(fwObject(&kUserEntry, 79, 12, "snmp:snmpUsmUserOwnPrivKeyChange").octets(512).attr(11).maxLength(512)),
    USER(fwObject(&kUserEntry, 80, 13, "snmp:snmpUsmUserPublic").octets(255).attr(12).maxLength(255)),
    USER(fwObject(&kUserEntry, 81, 14, "snmp:snmpUsmUserStorageType").integer().attr(13).range(1, 5)),
    USER(notZero(fwObject(&kUserEntry, 82, 15, "snmp:snmpUsmUserFilter").integer()).attr(14)),
    USER(rowStatusInteger(fwObject(&kUserEntry, 83, 16, "snmp:snmpUsmUserStatus")).attr(16)),
    USER(notZero(fwObject(&kUserEntry, 84, 17, "snmp:snmpUsmUserIpv6Filter").integer()).attr(15)),
};
#undef SEC_GROUP
#undef USER
static_assert(sizeof kObjects / sizeof kObjects[0] == 84, "snmp has 84 objects");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int snmpMibInit(void) { return fwModuleRegister("snmp", 145, kBindings.data()); }
