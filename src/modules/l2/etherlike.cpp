// etherlike: the Ethernet-like statistics (dot3StatsEntry) of the Ethernet
// ports, and the collision histogram (dot3CollEntry), which has no rows.
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/tgp.h"

#include "if_family.h"

#include <cstdio>

namespace {

#define DOT3_ROOT 1, 3, 6, 1, 2, 1, 10, 7

uint32_t mdbNextEtherlikeStatsEntryIndex(const FwEntry*, MdbCrb* mdb) {
  return iffam::nextByFilter(iffam::kEthernet, mdb);
}
// Every index passes: a missing interface ends in the service's failure.
uint32_t mdbValidateEtherlikeStatsEntryIndex(const FwEntry*, MdbCrb*) { return 0; }

// The service's duplex (1 full, 0 half) as DOT3 duplex status: 3 full, 2 half, 1 unknown.
uint32_t duplexStatus(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!iffam::isRead(kind)) return fwServePlain(kind, mdb, call);
  uint32_t duplex = 0;
  if (int rc = iffam::get(call, 130, &duplex)) return iffam::failed(call, rc);
  ulongSet(mdb, duplex == 1 ? 3 : duplex == 0 ? 2 : 1);
  return 0;
}

constexpr FwEntry kStatsEntry = fwTable("tgpIf", {DOT3_ROOT, 2, 1}, FW_TABLE_OPS(tgpIf))
                                    .named("dot3StatsEntry")
                                    .intIndex("etherlike:dot3StatsIndex")
                                    .nextBy(mdbNextEtherlikeStatsEntryIndex)
                                    .validateBy(mdbValidateEtherlikeStatsEntryIndex)
                                    .fail(FW_FAIL_GENERIC_ALL);
// dot3CollEntry: ifIndex, dot3CollCount.
constexpr FwEntry kCollEntry = fwTable("tgpIf", {DOT3_ROOT, 5, 1}, FW_TABLE_OPS(tgpIf))
                                   .named("dot3CollEntry")
                                   .key(8)
                                   .index(fwIdxInt("rfc1213:ifIndex", 0))
                                   .index(fwIdxInt("etherlike:dot3CollCount", 4))
                                   .emptyTable()
                                   .fail(FW_FAIL_GENERIC_ALL);

#define COL(localId, subId, name) fwObject(&kStatsEntry, localId, subId, "etherlike:" name)
#define CNT(localId, subId, name, a) \
  COL(localId, subId, name).counter().ro().attr(a).form_(FW_FORM_OCTET).hook(iffam::counterLow)

constexpr FwObject kObjects[] = {
    COL(0, 1, "dot3StatsIndex").integer().ro().indexOf(0),
    CNT(1, 2, "dot3StatsAlignmentErrors", 540),
    CNT(2, 3, "dot3StatsFCSErrors", 510),
    CNT(3, 4, "dot3StatsSingleCollisionFrames", 541),
    CNT(4, 5, "dot3StatsMultipleCollisionFrames", 542),
    CNT(5, 6, "dot3StatsSQETestErrors", 543),
    CNT(6, 7, "dot3StatsDeferredTransmissions", 544),
    CNT(7, 8, "dot3StatsLateCollisions", 545),
    CNT(8, 9, "dot3StatsExcessiveCollisions", 546),
    CNT(9, 10, "dot3StatsInternalMacTransmitErrors", 547),
    CNT(10, 11, "dot3StatsCarrierSenseErrors", 548),
    CNT(11, 13, "dot3StatsFrameTooLongs", 549),
    CNT(12, 16, "dot3StatsInternalMacReceiveErrors", 550),
    COL(13, 17, "dot3StatsEtherChipSet").oid(128).ro().noService(),
    COL(14, 18, "dot3StatsSymbolErrors").counter().ro().constant_(0),
    COL(15, 19, "dot3StatsDuplexStatus").integer().ro().catalogued(1, 3).attr(130).hook(duplexStatus),
    COL(16, 20, "dot3StatsRateControlAbility").integer().ro().constant_(0),
    COL(17, 21, "dot3StatsRateControlStatus").integer().ro().catalogued(1, 3).constant_(0),

    fwObject(&kCollEntry, 18, 3, "etherlike:dot3CollFrequencies").counter().ro().noService(),
};
#undef COL
#undef CNT
static_assert(sizeof kObjects / sizeof kObjects[0] == 19, "etherlike: 18 + 1 columns");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int etherlikeMibinit(void) {
  if (fwModuleRegister("etherlike", 0, kBindings.data()) != 0) {
    printf("mdbModuleRegister %s Error\n\r", "etherlike");
    return -1;
  }
  return 0;
}
