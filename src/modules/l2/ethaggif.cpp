// ethaggif: the Ethernet trunks (class 2, port-kind 1024): a count, the
// trunk interface's configuration, the trunk's membership by trunk number,
// and its statistics. A refused call passes the service's code on.
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/lacpAgg.h"
#include "services/tgp.h"
#include "services/tgpEthAgg.h"
#include "services/tgpEthAggIf.h"
#include "services/tgpIf.h"

#include "if_family.h"

#include <cstdio>

namespace {

#define ETHAGGIF_ROOT 1, 3, 6, 1, 4, 1, 47391, 2, 13, 3

uint32_t mdbNextEthaggIfEntryIndex(const FwEntry*, MdbCrb* mdb) { return iffam::nextByFilter(iffam::kTrunk, mdb); }
uint32_t mdbNextEthaggIfStatsEntryIndex(const FwEntry* e, MdbCrb* mdb) { return mdbNextEthaggIfEntryIndex(e, mdb); }
// Every index passes: a missing trunk ends in the service's own failure.
uint32_t acceptAll(const FwEntry*, MdbCrb*) { return 0; }

using iffam::isRead;
bool isWrite(uint32_t kind) { return kind == MDB_COMMIT || kind == MDB_SET_NVM; }

uint32_t number(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  ulongSet(mdb, iffam::countByFilter(iffam::kTrunk));
  return 0;
}

// The one column of the trunk table whose failed read is a genError.
uint32_t inLimit(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  uint32_t rc = fwServePlain(kind, mdb, call);
  return rc != 0 && isRead(kind) ? mdbErrorGenError() : rc;
}

// ---------------------------------------------------------------- the trunk base table
// Requests of the base table name the trunk by number; each first finds the
// trunk's ifIndex, and a trunk without one has no instance.
typedef uint32_t (*TrunkHook)(uint32_t kind, MdbCrb* mdb, FwCall* call, uint32_t trunkIfIndex);

template <TrunkHook Fn>
uint32_t onTrunk(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  uint32_t trunkIfIndex = 0;
  if (nmGetVirIfUnit(static_cast<uint32_t>(call->key), 2, &trunkIfIndex) != 0) return mdbErrorNoNextInstance();
  return Fn(kind, mdb, call, trunkIfIndex);
}

uint32_t plain(uint32_t kind, MdbCrb* mdb, FwCall* call, uint32_t) { return fwServePlain(kind, mdb, call); }

uint32_t basePort(uint32_t kind, MdbCrb* mdb, FwCall* call, uint32_t) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  ulongSet(mdb, static_cast<uint32_t>(call->key));
  return 0;
}

uint32_t baseName(uint32_t kind, MdbCrb* mdb, FwCall* call, uint32_t trunkIfIndex) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  char name[512];
  name[0] = '\0';
  nmGetIfFullDescr(trunkIfIndex, name, 511);
  octetSet(mdb, name, static_cast<uint32_t>(strlen(name)));
  return 0;
}

uint32_t baseIndex(uint32_t kind, MdbCrb* mdb, FwCall* call, uint32_t trunkIfIndex) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  ulongSet(mdb, trunkIfIndex);
  return 0;
}

uint32_t beWord(const uint8_t* p) {
  return static_cast<uint32_t>(p[0]) << 24 | static_cast<uint32_t>(p[1]) << 16 | static_cast<uint32_t>(p[2]) << 8 | p[3];
}

// A port's membership: its flag (1 a member) and the trunk it belongs to.
bool membership(uint32_t port, uint32_t* flag, uint32_t* trunk) {
  *flag = *trunk = 0;
  return tgpIfGetApi(port, 235, flag) == 0 && tgpIfGetApi(port, 236, trunk) == 0;
}

// The member list: read as the service keeps it; a write puts every listed
// port into the trunk, in order, moving it from another trunk, and stops at
// the first port the service refuses (those before stay changed).
uint32_t portsList(uint32_t kind, MdbCrb* mdb, FwCall* call, uint32_t) {
  const uint32_t trunkNumber = static_cast<uint32_t>(call->key);
  if (isRead(kind)) {
    uint8_t list[512];
    MdbOctetValue holder{list, sizeof list};
    if (int rc = tgpEthAggGetApi(trunkNumber, call->object->attribute, &holder)) return iffam::failed(call, rc);
    octetSet(mdb, list, holder.length < sizeof list ? holder.length : sizeof list);
    return 0;
  }
  if (!isWrite(kind)) return fwServePlain(kind, mdb, call);
  char text[16];
  snprintf(text, sizeof text, "%u", trunkNumber);
  uint32_t trunkIfIndex = 0;
  if (ifName2Index("eth-trunk", text, 1, &trunkIfIndex) != 0) return mdbErrorGenError();
  const uint8_t* value = octetGet(mdb);
  for (uint32_t at = 0; value != nullptr && at + 4 <= mdb->valueLen; at += 4) {
    const uint32_t port = beWord(value + at);
    uint32_t flag, trunk;
    if (membership(port, &flag, &trunk) && flag == 1) {
      if (trunk == trunkIfIndex) continue;
      uint32_t detach = 2;
      tgpIfSetApi(port, 235, &detach);  // its old trunk lets it go; the outcome shows in the writes below
    }
    uint32_t member = 1;
    if (tgpIfSetApi(port, 236, &trunkIfIndex) != 0 || tgpIfSetApi(port, 235, &member) != 0) return mdbErrorGenError();
  }
  return 0;
}

// Reads empty; a write detaches each listed port that is a member of this
// trunk and skips the others. A trunk without members refuses it.
uint32_t removePorts(uint32_t kind, MdbCrb* mdb, FwCall* call, uint32_t trunkIfIndex) {
  if (isRead(kind)) {
    octetSet(mdb, call->buffer, 0);
    return 0;
  }
  if (!isWrite(kind)) return fwServePlain(kind, mdb, call);
  uint8_t list[512];
  MdbOctetValue holder{list, sizeof list};
  if (tgpEthAggGetApi(static_cast<uint32_t>(call->key), 1005, &holder) != 0 || holder.length < 4)
    return mdbErrorGenError();
  const uint8_t* value = octetGet(mdb);
  for (uint32_t at = 0; value != nullptr && at + 4 <= mdb->valueLen; at += 4) {
    const uint32_t port = beWord(value + at);
    uint32_t flag, trunk;
    if (!membership(port, &flag, &trunk) || flag != 1 || trunk != trunkIfIndex) continue;
    uint32_t detach = 2;
    if (int rc = tgpIfSetApi(port, 235, &detach)) return static_cast<uint32_t>(rc);
  }
  return 0;
}

// Reads 0; a write hands one port to the trunk's add or remove action.
uint32_t memberAction(uint32_t kind, MdbCrb* mdb, FwCall* call, uint32_t trunkIfIndex) {
  if (isRead(kind)) {
    ulongSet(mdb, 0);
    return 0;
  }
  if (!isWrite(kind)) return fwServePlain(kind, mdb, call);
  uint32_t port = ulongGet(mdb);
  int rc = tgpEthAggIfSetApi(trunkIfIndex, call->object->attribute, &port);
  return rc == 0 ? 0 : iffam::failed(call, rc);
}

// The aggregator's maximum of active links, if it can be read.
bool lacpMaximum(uint32_t trunkIfIndex, uint32_t* maximum) {
  *maximum = 0;
  return lacpAggGetApi(trunkIfIndex, 11, maximum) == 0;
}

uint32_t minActiveLinks(uint32_t kind, MdbCrb* mdb, FwCall* call, uint32_t trunkIfIndex) {
  if (kind == MDB_VALIDATE) {
    if (uint32_t rc = fwServePlain(kind, mdb, call)) return rc;
    uint32_t maximum;
    if (lacpMaximum(trunkIfIndex, &maximum) && ulongGet(mdb) > maximum) return mdbErrorInvalidRange();
    return 0;
  }
  return fwServePlain(kind, mdb, call);
}

// Follows the aggregator in LACP mode (1); in any other mode it reads 0 and
// takes a write without effect.
uint32_t maxActiveLinks(uint32_t kind, MdbCrb* mdb, FwCall* call, uint32_t trunkIfIndex) {
  if (!isRead(kind) && !isWrite(kind)) return fwServePlain(kind, mdb, call);
  uint32_t mode = 0;
  const bool lacp = tgpEthAggGetApi(static_cast<uint32_t>(call->key), 1002, &mode) == 0 && mode == 1;
  if (isRead(kind)) {
    uint32_t maximum = 0;
    if (lacp && !lacpMaximum(trunkIfIndex, &maximum)) return mdbErrorGenError();
    ulongSet(mdb, maximum);
    return 0;
  }
  if (!lacp) return 0;
  uint32_t value = ulongGet(mdb);
  int rc = lacpAggSetApi(trunkIfIndex, 11, &value);
  return rc == 0 ? 0 : iffam::failed(call, rc);
}

uint32_t scheduleProfile(uint32_t kind, MdbCrb* mdb, FwCall*, uint32_t) {
  if (!isRead(kind)) return mdbErrorNotWritable();
  ulongSet(mdb, 0);
  return 0;
}

// The trunk interface's entry status, kept by the trunk's ifIndex.
uint32_t entryStatus(uint32_t kind, MdbCrb* mdb, FwCall* call, uint32_t trunkIfIndex) {
  uint32_t value = 0;
  if (isRead(kind)) {
    if (int rc = tgpEthAggIfGetApi(trunkIfIndex, 36, &value)) return iffam::failed(call, rc);
    ulongSet(mdb, value);
    return 0;
  }
  if (kind == MDB_VALIDATE && mdb->valueLen > 4) return mdbErrorInvalidLength();
  if (!isWrite(kind)) return fwServePlain(kind, mdb, call);
  value = ulongGet(mdb);
  int rc = tgpEthAggIfSetApi(trunkIfIndex, 36, &value);
  return rc == 0 ? 0 : iffam::failed(call, rc);
}

constexpr FwEntry kScalars = fwScalars("tgp", {ETHAGGIF_ROOT, 1}, FW_SCALAR_OPS(tgp));
constexpr FwEntry kEntry = fwTable("tgpIf", {ETHAGGIF_ROOT, 2, 1}, FW_TABLE_OPS(tgpIf))
                               .named("ethaggIfEntry")
                               .intIndex("ethaggif:ethaggIfIndex")
                               .nextBy(mdbNextEthaggIfEntryIndex)
                               .validateBy(acceptAll);
constexpr FwEntry kBasePortEntry = fwTable("tgpEthAgg", {ETHAGGIF_ROOT, 3, 1}, FW_TABLE_OPS(tgpEthAgg))
                                       .named("ethaggIfBasePortEntry")
                                       .intIndex("ethaggif:ethaggIfBasePort")
                                       .validateBy(acceptAll);
constexpr FwEntry kStatsEntry = fwTable("tgpIf", {ETHAGGIF_ROOT, 4, 1}, FW_TABLE_OPS(tgpIf))
                                    .named("ethaggIfStatsEntry")
                                    .intIndex("ethaggif:ethaggIfStatsIndex")
                                    .nextBy(mdbNextEthaggIfStatsEntryIndex)
                                    .validateBy(acceptAll);

#define COL(localId, subId, name) fwObject(&kEntry, localId, subId, "ethaggif:" name)
#define BASE(localId, subId, name) fwObject(&kBasePortEntry, localId, subId, "ethaggif:" name)

constexpr FwObject kObjects[] = {
    fwObject(&kScalars, 0, 1, "ethaggif:ethaggIfNumber").gauge().ro().hook(number),

    COL(1, 1, "ethaggIfIndex").gauge().ro().indexOf(0),
    COL(2, 2, "ethaggIfName").octets(128).ro().hook(iffam::fullName<511>),
    COL(3, 3, "ethaggIfDescription").octets(128).ro().attr(4).maxLength(128),
    COL(4, 4, "ethaggIfAdminStatus").integer().catalogued(1, 2).attr(20),
    COL(5, 5, "ethaggIfOperStatus").integer().ro().catalogued(1, 2).attr(19),
    COL(6, 6, "ethaggIfWorkMode").integer().attr(17).range(0, 1),
    COL(7, 7, "ethaggIfPhyType").integer().ro().catalogued(1, 20).attr(7),
    COL(8, 8, "ethaggIfMacAddr").macAddress().attr(33).maxLength(6),
    COL(9, 9, "ethaggIfType").integer().ro().catalogued(1, 32).attr(5),
    COL(10, 10, "ethaggIfMtu").integer().attr(78),
    COL(11, 11, "ethaggIfSpeed").integer().catalogued(2, 10000).attr(129).maxLength(4),
    COL(12, 12, "ethaggIfPriority").integer().attr(157),
    COL(13, 13, "ethaggIfBWLimitSupport").integer().ro().catalogued(1, 2).attr(168).hook(iffam::supported),
    COL(14, 14, "ethaggIfBWInLimitEnable").integer().catalogued(1, 2).attr(170),
    COL(15, 15, "ethaggIfBWInLevel").integer().attr(171),
    COL(16, 16, "ethaggIfBWInLimit").gauge().attr(169).hook(inLimit),
    COL(17, 17, "ethaggIfBWOutLimitEnable").integer().catalogued(1, 2).attr(173),
    COL(18, 18, "ethaggIfBWOutLevel").integer().attr(174),
    COL(19, 19, "ethaggIfBWOutLimit").gauge().attr(172),
    COL(20, 20, "ethaggIfLastChange").timeticks().ro().attr(573),
    COL(21, 21, "ethaggIfErrStatus").integer().ro().attr(68).hook(iffam::errStatus),
    COL(22, 22, "ethaggIfIpAddress").ipAddress().ro().attr(99).hook(iffam::ipAddress),
    COL(23, 23, "ethaggIfFlowStatsInterval").gauge().attr(70).range(30, 300).lengthErrors(),
    COL(24, 24, "ethaggIfPvid").gauge().ro().attr(159),
    COL(25, 25, "ethaggIfLinkTrapEnable").integer().attr(126).range(1, 2).lengthErrors(),
    COL(26, 26, "ethaggIfRestConfiguration").integer().catalogued(1, 1).attr(50).hook(iffam::actionValue),

    BASE(27, 1, "ethaggIfBasePort").gauge().ro().indexOf(0).hook(onTrunk<basePort>),
    BASE(28, 2, "ethaggIfBasePortName").octets(128).ro().hook(onTrunk<baseName>),
    BASE(29, 3, "ethaggIfBaseIndex").gauge().ro().hook(onTrunk<baseIndex>),
    BASE(30, 4, "ethaggIfMLMode").integer().attr(1002).hook(onTrunk<plain>),
    BASE(31, 5, "ethaggIfPortsList").octets(255).attr(1005).maxLength(255).hook(onTrunk<portsList>),
    BASE(32, 6, "ethaggIfActivePortsList").octets(255).ro().attr(1012).hook(onTrunk<portsList>),
    BASE(33, 7, "ethaggIfRemovePorts").octets(255).maxLength(255).hook(onTrunk<removePorts>),
    BASE(34, 8, "ethaggIfPortsNum").gauge().ro().attr(1013).hook(onTrunk<plain>),
    BASE(35, 9, "ethaggIfMaxMemberPortNum").gauge().ro().catalogued(1, 8).attr(1008).hook(onTrunk<plain>),
    BASE(36, 10, "ethaggIfActiveMemberPortNum").gauge().ro().catalogued(1, 8).attr(1009).hook(onTrunk<plain>),
    BASE(37, 11, "ethaggIfMinActiveLinkNum").gauge().catalogued(1, 8).attr(1010).range(1, 16)
        .hook(onTrunk<minActiveLinks>),
    BASE(38, 12, "ethaggIfMaxActiveLinkNum").gauge().catalogued(0, 8).range(1, 8).hook(onTrunk<maxActiveLinks>),
    BASE(39, 13, "ethaggIfAddMemberPort").gauge().attr(1003).hook(onTrunk<memberAction>),
    BASE(40, 14, "ethaggIfDelMemberPort").gauge().attr(1004).hook(onTrunk<memberAction>),
    BASE(41, 15, "ethaggIfSchduleProfileMode").integer().hook(onTrunk<scheduleProfile>),
    BASE(42, 16, "ethaggIfLoadBalanceMode").integer().attr(1006).hook(onTrunk<plain>),
    BASE(43, 17, "ethaggIfEntryStatus").integer().catalogued(1, 4).range(1, 6).hook(onTrunk<entryStatus>),

    IF_STATS_COLUMNS(kStatsEntry, "ethaggif", "ethaggIfStats", 44, true),
};
#undef COL
#undef BASE
static_assert(sizeof kObjects / sizeof kObjects[0] == 97, "ethaggif: 1 scalar, 26 + 17 + 53 columns");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int ethaggIfMibInit(void) {
  if (fwModuleRegister("ethaggif", 169, kBindings.data()) != 0) {
    printf("mdbModuleRegister %s Error\n\r", "ethaggif");
    return -1;
  }
  return 0;
}
