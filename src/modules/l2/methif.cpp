// methif: the management Ethernet ports (class 44): a count, the port's
// configuration and its statistics. A failed service call is a genError
// here, except in methIfMauType.
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/tgp.h"

#include "if_family.h"

#include <cstdio>

namespace {

#define METHIF_ROOT 1, 3, 6, 1, 4, 1, 47391, 2, 13, 13

uint32_t mdbNextMethIfEntryIndex(const FwEntry*, MdbCrb* mdb) { return iffam::nextByFilter(iffam::kManagement, mdb); }
uint32_t mdbNextMethIfStatsEntryIndex(const FwEntry* e, MdbCrb* mdb) { return mdbNextMethIfEntryIndex(e, mdb); }
// Every index passes: a missing interface ends in the service's failure.
uint32_t mdbValidateMethIfEntryIndex(const FwEntry*, MdbCrb*) { return 0; }

using iffam::isRead;

uint32_t number(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  ulongSet(mdb, iffam::countByFilter(iffam::kManagement));
  return 0;
}

// The one column of the table that passes the service's own code on.
uint32_t mauType(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  MdbOctetValue holder{call->buffer, call->bufferSize};
  if (int rc = iffam::get(call, call->object->attribute, &holder)) return static_cast<uint32_t>(rc);
  octetSet(mdb, call->buffer, holder.length < call->bufferSize ? holder.length : call->bufferSize);
  return 0;
}

constexpr FwEntry kScalars = fwScalars("tgp", {METHIF_ROOT, 1}, FW_SCALAR_OPS(tgp)).fail(FW_FAIL_GENERIC_ALL);
constexpr FwEntry kMethIfEntry = fwTable("tgpIf", {METHIF_ROOT, 2, 1}, FW_TABLE_OPS(tgpIf))
                                     .named("methIfEntry")
                                     .intIndex("methif:methIfIndex")
                                     .nextBy(mdbNextMethIfEntryIndex)
                                     .validateBy(mdbValidateMethIfEntryIndex)
                                     .fail(FW_FAIL_GENERIC_ALL);
constexpr FwEntry kStatsEntry = fwTable("tgpIf", {METHIF_ROOT, 3, 1}, FW_TABLE_OPS(tgpIf))
                                    .named("methIfStatsEntry")
                                    .intIndex("methif:methIfStatsIndex")
                                    .nextBy(mdbNextMethIfStatsEntryIndex)
                                    .validateBy(mdbValidateMethIfEntryIndex)
                                    .fail(FW_FAIL_GENERIC_ALL);

#define COL(localId, subId, name) fwObject(&kMethIfEntry, localId, subId, "methif:" name)

constexpr FwObject kObjects[] = {
    fwObject(&kScalars, 0, 1, "methif:methIfNumber").integer().ro().hook(number),

    COL(1, 1, "methIfIndex").gauge().ro().indexOf(0),
    COL(2, 2, "methIfName").octets(128).ro().hook(iffam::fullName<511>),
    COL(3, 3, "methIfDescription").octets(128).attr(4).maxLength(128),
    COL(4, 4, "methIfAdminStatus").integer().catalogued(1, 2).attr(20),
    COL(5, 5, "methIfOperStatus").integer().ro().catalogued(1, 2).attr(19),
    COL(6, 6, "methIfWorkMode").integer().attr(17).range(0, 1),
    COL(7, 7, "methIfPhyType").integer().ro().catalogued(1, 20).attr(7),
    COL(8, 8, "methIfMacAddr").macAddress().attr(33).maxLength(6),
    COL(9, 9, "methIfType").integer().ro().catalogued(1, 32).attr(5),
    COL(10, 10, "methIfMtu").integer().attr(78),
    COL(11, 11, "methIfSpeed").integer().catalogued(2, 10000).attr(129).maxLength(4),
    COL(12, 12, "methIfDuplex").integer().catalogued(0, 1).attr(130).maxLength(4),
    COL(13, 13, "methIfAutoNegoSupport").integer().ro().catalogued(1, 2).attr(133),
    COL(14, 14, "methIfAutoNego").integer().attr(131).range(1, 2),
    COL(15, 15, "methIfPriority").integer().attr(157),
    COL(16, 16, "methIfBWLimitSupport").integer().ro().catalogued(1, 2).attr(168).hook(iffam::supported),
    COL(17, 17, "methIfBWInLimitEnable").integer().catalogued(1, 2).attr(170),
    COL(18, 18, "methIfBWInLevel").integer().attr(171),
    COL(19, 19, "methIfBWInLimit").gauge().attr(169),
    COL(20, 20, "methIfBWOutLimitEnable").integer().catalogued(1, 2).attr(173),
    COL(21, 21, "methIfBWOutLevel").integer().attr(174),
    COL(22, 22, "methIfBWOutLimit").gauge().attr(172),
    COL(23, 23, "methIfLastChange").timeticks().ro().attr(573),
    COL(24, 24, "methIfStatisInterframeState").integer().attr(153).range(1, 2),
    COL(25, 25, "methIfMauType").octets(512).ro().attr(135).hook(mauType),
    COL(26, 26, "methIfMauDfltType").integer().attr(137),
    COL(27, 27, "methIfMauDfltDfltType").integer().ro().attr(147).hook(iffam::notOnTrunk),
    COL(28, 28, "methIfBorrowedIpIfUnit").integer().attr(30),
    COL(29, 29, "methIfIfgBytes").integer().attr(234).range(8, 16),
    COL(30, 30, "methIfErrStatus").integer().ro().attr(68).hook(iffam::errStatus),
    COL(31, 31, "methIfIpAddress").ipAddress().ro().attr(99).hook(iffam::ipAddress),
    COL(32, 32, "methIfFlowStatsInterval").gauge().attr(70).range(30, 300).lengthErrors(),
    COL(33, 33, "methIfLinkTrapEnable").integer().attr(126).range(1, 2).lengthErrors(),
    COL(34, 34, "methIfRestConfiguration").integer().catalogued(1, 1).attr(50).hook(iffam::actionValue),

    IF_STATS_COLUMNS(kStatsEntry, "methif", "methIfStats", 35, true),
};
#undef COL
static_assert(sizeof kObjects / sizeof kObjects[0] == 88, "methif: 1 scalar, 34 + 53 columns");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int methIfMibInit(void) {
  if (fwModuleRegister("methif", 238, kBindings.data()) != 0) {
    printf("mdbModuleRegister %s Error\n\r", "methif");
    return -1;
  }
  return 0;
}
