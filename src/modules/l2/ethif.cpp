// ethif: the Ethernet ports (class 1, port-kind 1152) in four tables: the
// port's configuration, its statistics, the ifXEntry columns under private
// names, and the bridge port map; two scalars.
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/tgp.h"
#include "services/tgpDot1dIf.h"

#include "if_family.h"

#include <cstdio>

namespace {

#define ETHIF_ROOT 1, 3, 6, 1, 4, 1, 47391, 2, 13, 2

uint32_t mdbNextEthIfEntryIndex(const FwEntry*, MdbCrb* mdb) { return iffam::nextByFilter(iffam::kEthernet, mdb); }
uint32_t mdbNextEthIfStatsEntryIndex(const FwEntry* e, MdbCrb* mdb) { return mdbNextEthIfEntryIndex(e, mdb); }
uint32_t mdbNextEthifBasePortEntryIndex(const FwEntry*, MdbCrb* mdb) {
  return iffam::nextByFilter(iffam::kEthernet, mdb);
}
// Every index passes: a missing interface ends in the service's own failure.
uint32_t acceptAll(const FwEntry*, MdbCrb*) { return 0; }

using iffam::isRead;

uint32_t number(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  ulongSet(mdb, iffam::countByFilter(iffam::kEthClass));
  return 0;
}

// The trunk's ifIndex when the port is a member; 0 with *member false if not.
int trunkOf(const FwCall* call, bool* member, uint32_t* trunk) {
  uint32_t flag = 0;
  *member = false;
  *trunk = 0;
  if (int rc = iffam::get(call, 235, &flag)) return rc;
  if (flag != 1) return 0;
  *member = true;
  return iffam::get(call, 236, trunk);
}

uint32_t trunkIndex(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  bool member;
  uint32_t trunk;
  if (isRead(kind)) {
    if (int rc = trunkOf(call, &member, &trunk)) return iffam::failed(call, rc);
    ulongSet(mdb, member ? trunk : 0);
    return 0;
  }
  if (kind != MDB_COMMIT && kind != MDB_SET_NVM) return fwServePlain(kind, mdb, call);
  if (trunkOf(call, &member, &trunk) != 0 || !member) return mdbErrorGenError();
  uint32_t value = ulongGet(mdb);
  int rc = iffam::set(call, 236, &value);
  return rc == 0 ? 0 : iffam::failed(call, rc);
}

uint32_t trunkId(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  bool member;
  uint32_t trunk;
  if (isRead(kind)) {
    if (int rc = trunkOf(call, &member, &trunk)) return iffam::failed(call, rc);
    uint32_t position[TGP_POS_WORDS] = {0};
    if (member && tgpIndexTrans(trunk, 5, position) != 0) return mdbErrorGenError();
    ulongSet(mdb, member ? position[TGP_POS_UNIT] : 0);
    return 0;
  }
  if (kind != MDB_COMMIT && kind != MDB_SET_NVM) return fwServePlain(kind, mdb, call);
  if (trunkOf(call, &member, &trunk) != 0 || !member) return mdbErrorGenError();
  uint32_t ifIndex = 0;
  if (nmGetVirIfUnit(ulongGet(mdb), 2, &ifIndex) != 0) return mdbErrorGenError();
  int rc = iffam::set(call, 236, &ifIndex);
  return rc == 0 ? 0 : iffam::failed(call, rc);
}

// A word of the position record.
template <uint32_t Word>
uint32_t positionWord(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  uint32_t position[TGP_POS_WORDS] = {0};
  if (tgpIndexTrans(static_cast<uint32_t>(call->key), 5, position) != 0) return mdbErrorGenError();
  ulongSet(mdb, position[Word]);
  return 0;
}

// No service behind it: a read delivers nothing, a write changes nothing.
uint32_t unbacked(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (isRead(kind) || kind == MDB_COMMIT || kind == MDB_SET_NVM) return 0;
  return fwServePlain(kind, mdb, call);
}

// Reads 2; a write passes its check and is refused.
uint32_t eee(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (isRead(kind)) {
    ulongSet(mdb, 2);
    return 0;
  }
  if (kind == MDB_COMMIT || kind == MDB_SET_NVM) return mdbErrorNotWritable();
  return fwServePlain(kind, mdb, call);
}

uint32_t genericWrite(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  uint32_t rc = fwServePlain(kind, mdb, call);
  return rc != 0 && (kind == MDB_COMMIT || kind == MDB_SET_NVM) ? mdbErrorGenError() : rc;
}

uint32_t basePortIfIndex(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  uint32_t value = 0;
  if (int rc = tgpDot1dIfGetApi(static_cast<uint32_t>(call->key), 87, &value)) return static_cast<uint32_t>(rc);
  ulongSet(mdb, value);
  return 0;
}

constexpr FwEntry kScalars = fwScalars("tgp", {ETHIF_ROOT, 1}, FW_SCALAR_OPS(tgp));
constexpr FwEntry kEthIfEntry = fwTable("tgpIf", {ETHIF_ROOT, 2, 1}, FW_TABLE_OPS(tgpIf))
                                    .named("ethIfEntry")
                                    .intIndex("ethif:ethIfIndex")
                                    .nextBy(mdbNextEthIfEntryIndex)
                                    .validateBy(acceptAll);
constexpr FwEntry kStatsEntry = fwTable("tgpIf", {ETHIF_ROOT, 3, 1}, FW_TABLE_OPS(tgpIf))
                                    .named("ethIfStatsEntry")
                                    .intIndex("ethif:ethIfStatsIndex")
                                    .nextBy(mdbNextEthIfStatsEntryIndex)
                                    .validateBy(acceptAll);
constexpr FwEntry kXEntry = fwTable("tgpIf", {ETHIF_ROOT, 4, 1}, FW_TABLE_OPS(tgpIf))
                                .named("ethIfXEntry")
                                .intIndex("ethif:ethIfXIndex")
                                .nextBy(mdbNextEthIfEntryIndex)
                                .validateBy(acceptAll);
constexpr FwEntry kBasePortEntry = fwTable("tgpIf", {ETHIF_ROOT, 5, 1}, FW_TABLE_OPS(tgpIf))
                                       .named("ethIfBasePortEntry")
                                       .intIndex("ethif:ethIfBasePort")
                                       .nextBy(mdbNextEthifBasePortEntryIndex)
                                       .validateBy(acceptAll);

#define COL(localId, subId, name) fwObject(&kEthIfEntry, localId, subId, "ethif:" name)
#define XCOL(localId, subId, name) fwObject(&kXEntry, localId, subId, "ethif:" name)
#define XLOW(localId, subId, name, a) \
  XCOL(localId, subId, name).counter().ro().attr(a).form_(FW_FORM_OCTET).hook(iffam::counterLow)
#define XHC(localId, subId, name, a) XCOL(localId, subId, name).counter64().ro().attr(a).hook(iffam::counter64)

constexpr FwObject kObjects[] = {
    fwObject(&kScalars, 0, 1, "ethif:ethIfNumber").integer().ro().hook(number),
    fwObject(&kScalars, 1, 2, "ethif:ethStatsReset").integer().attr(92).hook(iffam::actionValue),

    COL(2, 1, "ethIfIndex").gauge().ro().indexOf(0),
    COL(3, 2, "ethIfName").octets(128).ro().hook(iffam::fullName<511>),
    COL(4, 3, "ethIfDescription").octets(128).ro().attr(2).hook(iffam::shortText<64>),
    COL(5, 4, "ethIfAdminStatus").integer().catalogued(1, 2).attr(20),
    COL(6, 5, "ethIfOperStatus").integer().ro().catalogued(1, 2).attr(19),
    COL(7, 6, "ethIfWorkMode").integer().attr(17).range(0, 1),
    COL(8, 7, "ethIfPhyType").integer().ro().catalogued(1, 20).attr(7),
    COL(9, 8, "ethIfMacAddr").macAddress().attr(33).maxLength(6),
    COL(10, 9, "ethIfType").integer().ro().catalogued(1, 32).attr(5),
    COL(11, 10, "ethIfTrunkEnable").integer().ro().catalogued(1, 32).attr(235),
    COL(12, 11, "ethIfTrunkIndex").integer().ro().attr(236).hook(trunkIndex),
    COL(13, 12, "ethIfTrunkId").integer().ro().attr(236).hook(trunkId),
    COL(14, 13, "ethIfMtu").integer().attr(78),
    COL(15, 14, "ethIfSpeed").integer().catalogued(2, 10000).attr(129).maxLength(4),
    COL(16, 15, "ethIfConnector").integer().ro().catalogued(0, 3).attr(123),
    COL(17, 16, "ethIfFlowCtrl").integer().catalogued(1, 2).attr(164),
    COL(18, 17, "ethIfDuplex").integer().catalogued(0, 1).attr(130).maxLength(4),
    COL(19, 18, "ethIfAutoNegoSupport").integer().ro().catalogued(1, 2).attr(133),
    COL(20, 19, "ethIfAutoNego").integer().attr(131).range(1, 2),
    COL(21, 20, "ethIfPriority").integer().attr(157),
    COL(22, 21, "ethIfBWLimitSupport").integer().ro().catalogued(1, 2).attr(168).hook(iffam::supported),
    COL(23, 22, "ethIfBWInLimitEnable").integer().catalogued(1, 2).attr(170),
    COL(24, 23, "ethIfBWInLevel").integer().attr(171),
    COL(25, 24, "ethIfBWInLimit").gauge().attr(169),
    COL(26, 25, "ethIfBWOutLimitEnable").integer().catalogued(1, 2).attr(173),
    COL(27, 26, "ethIfBWOutLevel").integer().attr(174),
    COL(28, 27, "ethIfBWOutLimit").gauge().attr(172),
    COL(29, 28, "ethIfLastChange").timeticks().ro().attr(573),
    COL(30, 29, "ethIfInbandEnable").integer().catalogued(1, 2).noService().maxLength(4),
    COL(31, 30, "ethIfUnregMulticast").integer().catalogued(0, 1).attr(224),
    COL(32, 31, "ethIfCrossLink").integer().attr(178),
    COL(33, 32, "ethIfCrossLinkSupport").integer().ro().attr(177).hook(iffam::orZero),
    COL(34, 33, "ethIfComboPortSupport").integer().ro().constant_(0),
    COL(35, 34, "ethIfComboPortType").integer().catalogued(1, 3).noService(),
    COL(36, 35, "ethIfLinkDuplexSpeedCapabilities").octets(512).ro().attr(135),
    COL(37, 36, "ethIfLinkDuplexSpeed").integer().catalogued(0, 7).range(0, 9).hook(unbacked),
    COL(38, 37, "ethIfAutoCapabilities").octets(512).ro().attr(139),
    COL(39, 38, "ethIfAutoLocalAdver").octets(512).attr(141),
    COL(40, 39, "ethIfStatisInterframeState").integer().attr(153).range(1, 2),
    COL(41, 40, "ethIfStaticVlan").octets(512).ro().attr(197).maxLength(512),
    COL(42, 41, "ethIfMauType").octets(512).ro().attr(135),
    COL(43, 42, "ethIfMauDfltType").integer().attr(137),
    COL(44, 43, "ethIfMauDfltDfltType").integer().ro().attr(147).hook(iffam::notOnTrunk),
    COL(45, 44, "ethIfComboAutoNegoSupport").integer().ro().catalogued(1, 2).attr(134).hook(iffam::notOnTrunk),
    COL(46, 45, "ethIfComboAutoNego").integer().attr(132).range(1, 2).hook(iffam::notOnTrunk),
    COL(47, 46, "ethIfComboMauType").octets(512).ro().attr(136).hook(iffam::notOnTrunk),
    COL(48, 47, "ethIfComboMauDfltType").integer().attr(138).hook(iffam::notOnTrunk),
    COL(49, 48, "ethIfComboMauDfltDfltType").integer().ro().attr(148).hook(iffam::notOnTrunk),
    COL(50, 49, "ethIfComboAutoCapabilities").octets(512).ro().attr(140).hook(iffam::notOnTrunk),
    COL(51, 50, "ethIfComboAutoLocalAdver").octets(512).attr(142).hook(iffam::notOnTrunk),
    COL(52, 51, "ethIfComboFlowCtrl").integer().attr(165).range(1, 2).hook(iffam::notOnTrunk),
    COL(53, 52, "ethIfBorrowedIpIfUnit").integer().attr(30),
    COL(54, 53, "ethIfIfgBytes").integer().attr(234).range(8, 16),
    COL(55, 54, "ethIfErrStatus").integer().ro().attr(68).hook(iffam::errStatus),
    COL(56, 55, "ethIfIpAddress").ipAddress().ro().attr(99).hook(iffam::ipAddress),
    COL(57, 56, "ethIfPortDownHoldOffTime").gauge().attr(67).maxLength(4),
    COL(58, 57, "ethIfPortUpDelayTime").gauge().attr(66).maxLength(4),
    COL(59, 58, "ethIfFlowStatsInterval").gauge().attr(70).range(30, 600).lengthErrors(),
    COL(60, 59, "ethIfPvid").gauge().ro().attr(159),
    COL(61, 60, "ethIfLinkTrapEnable").integer().attr(126).range(1, 2).lengthErrors(),
    COL(62, 61, "ethIfRestConfiguration").integer().catalogued(1, 1).attr(50).hook(iffam::actionValue),
    COL(63, 62, "ethIfEeeEnable").integer().range(1, 2).hook(eee),
    COL(64, 63, "ethifStatisticIncludeInterframe").gauge().attr(153).range(1, 2).lengthErrors(),
    COL(65, 64, "ethIfResetStatistic").integer().attr(71).range(1, 1).lengthErrors().hook(iffam::actionValue),
    COL(66, 65, "ethIfBpdu").integer().attr(176).range(1, 4),
    COL(67, 66, "ethIfAcceptFrameType").integer().attr(151).range(1, 2),
    COL(68, 67, "ethIfSysId").integer().ro().hook(positionWord<TGP_POS_SYSTEM>),
    COL(69, 68, "ethIfSlotId").integer().ro().hook(positionWord<TGP_POS_SLOT>),
    COL(70, 69, "ethIfCardId").integer().ro().hook(positionWord<TGP_POS_CARD>),
    COL(71, 70, "ethIfPortId").integer().ro().hook(positionWord<TGP_POS_PORT>),

    IF_STATS_COLUMNS(kStatsEntry, "ethif", "ethIfStats", 72, false),

    XCOL(125, 1, "ethIfXIndex").gauge().ro().indexOf(0),
    XCOL(126, 2, "ethIfXName").octets(255).ro().hook(iffam::fullName<255>),
    XLOW(127, 3, "ethIfXInMulticastPkts", 533),
    XLOW(128, 4, "ethIfXInBroadcastPkts", 534),
    XLOW(129, 5, "ethIfXOutMulticastPkts", 536),
    XLOW(130, 6, "ethIfXOutBroadcastPkts", 537),
    XHC(131, 7, "ethIfXHCInOctets", 507),
    XHC(132, 8, "ethIfXHCInUcastPkts", 532),
    XHC(133, 9, "ethIfXHCInMulticastPkts", 533),
    XHC(134, 10, "ethIfXHCInBroadcastPkts", 534),
    XHC(135, 11, "ethIfXHCOutOctets", 506),
    XHC(136, 12, "ethIfXHCOutUcastPkts", 535),
    XHC(137, 13, "ethIfXHCOutMulticastPkts", 536),
    XHC(138, 14, "ethIfXHCOutBroadcastPkts", 537),
    XCOL(139, 15, "ethIfXLinkUpDownTrapEnable").integer().attr(126).range(1, 2).hook(genericWrite),
    XCOL(140, 16, "ethIfXHighSpeed").gauge().ro().attr(129),
    XCOL(141, 17, "ethIfXPromiscuousMode").integer().attr(127).range(1, 2),
    XCOL(142, 18, "ethIfXConnectorPresent").integer().ro().catalogued(1, 2).attr(124),
    XCOL(143, 19, "ethIfXAlias").octets(64).attr(4).maxLength(64),
    XCOL(144, 20, "ethIfXCounterDiscontinuityTime").timeticks().ro().attr(125),

    fwObject(&kBasePortEntry, 145, 1, "ethif:ethIfBasePort").gauge().ro().indexOf(0),
    fwObject(&kBasePortEntry, 146, 2, "ethif:ethIfBasePortIfIndex").integer().ro().hook(basePortIfIndex),
    fwObject(&kBasePortEntry, 147, 3, "ethif:ethIfBasePortCircuit").oid(128).ro().constant_(0),
    fwObject(&kBasePortEntry, 148, 4, "ethif:ethIfBasePortDelayExceededDiscards").counter().ro().constant_(0),
    fwObject(&kBasePortEntry, 149, 5, "ethif:ethIfBasePortMtuExceededDiscards").counter().ro().constant_(0),
};
#undef COL
#undef XCOL
#undef XLOW
#undef XHC
static_assert(sizeof kObjects / sizeof kObjects[0] == 150, "ethif: 2 scalars, 70 + 53 + 20 + 5 columns");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int ethIfMibInit(void) {
  if (fwModuleRegister("ethif", 238, kBindings.data()) != 0) {
    printf("mdbModuleRegister %s Error\n\r", "ethif");
    return -1;
  }
  return 0;
}
