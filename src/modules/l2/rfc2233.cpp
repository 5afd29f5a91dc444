// rfc2233: the interface extensions (ifXEntry) over the private interface
// list, and the stack, test and receive-address tables, which have no rows.
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/tgp.h"

#include "if_family.h"

#include <cstdio>

namespace {

#define IFX_ROOT 1, 3, 6, 1, 2, 1, 31, 1

uint32_t mdbNextIfXEntryIndex(const FwEntry*, MdbCrb* mdb) { return iffam::nextByFilter(iffam::kPrivate, mdb); }

// An interface exists for this table when the service knows its speed.
uint32_t mdbValidateIfXEntryIndex(const FwEntry*, MdbCrb* mdb) {
  uint32_t speed = 0;
  if (mdb->indexSubIdCount < 1 || tgpIfGetApi(mdb->pIndex[0], 129, &speed) != 0) return mdbErrorNoSuchInstance();
  return 0;
}

using iffam::isRead;

// The counters read 0 without a service call while suppressed.
template <bool Wide>
uint32_t counter(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  uint32_t w[2] = {0, 0};
  if (!iffam::countersSuppressed(call))
    if (int rc = iffam::read64(call, call->object->attribute, w)) return iffam::failed(call, rc);
  if (Wide) ulonglongSet(mdb, w[0], w[1]);
  else ulongSet(mdb, w[1]);
  return 0;
}

// Columns of the tables without rows: a read at a given index delivers 0 or
// empty; these refuse a write.
uint32_t notWritable(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (kind == MDB_COMMIT || kind == MDB_SET_NVM || kind == MDB_VALIDATE) return mdbErrorNotWritable();
  if (isRead(kind)) {
    if (call->object->form == FW_FORM_OCTET) octetSet(mdb, nullptr, 0);
    else ulongSet(mdb, 0);
    return 0;
  }
  return fwServePlain(kind, mdb, call);
}

constexpr FwEntry kXEntry = fwTable("tgpIf", {IFX_ROOT, 1, 1}, FW_TABLE_OPS(tgpIf))
                                .named("ifXEntry")
                                .intIndex("rfc1213:ifIndex")
                                .nextBy(mdbNextIfXEntryIndex)
                                .validateBy(mdbValidateIfXEntryIndex)
                                .fail(FW_FAIL_GENERIC_ALL);
// ifStackEntry: ifStackHigherLayer, ifStackLowerLayer.
constexpr FwEntry kStackEntry = fwTable("tgpIf", {IFX_ROOT, 2, 1}, FW_TABLE_OPS(tgpIf))
                                    .named("ifStackEntry")
                                    .key(8)
                                    .index(fwIdxInt("rfc2233:ifStackHigherLayer", 0))
                                    .index(fwIdxInt("rfc2233:ifStackLowerLayer", 4))
                                    .emptyTable()
                                    .fail(FW_FAIL_GENERIC_ALL);
constexpr FwEntry kTestEntry = fwTable("tgpIf", {IFX_ROOT, 3, 1}, FW_TABLE_OPS(tgpIf))
                                   .named("ifTestEntry")
                                   .intIndex("rfc1213:ifIndex")
                                   .emptyTable()
                                   .fail(FW_FAIL_GENERIC_ALL);
// ifRcvAddressEntry: ifIndex, ifRcvAddressAddress (PhysAddress).
constexpr FwEntry kRcvAddressEntry = fwTable("tgpIf", {IFX_ROOT, 4, 1}, FW_TABLE_OPS(tgpIf))
                                         .named("ifRcvAddressEntry")
                                         .key(4 + 64 + 4)
                                         .index(fwIdxInt("rfc1213:ifIndex", 0))
                                         .index(fwIdxString("rfc2233:ifRcvAddressAddress", 64, 4, 68))
                                         .emptyTable()
                                         .fail(FW_FAIL_GENERIC_ALL);

#define XCOL(localId, subId, name) fwObject(&kXEntry, localId, subId, "rfc2233:" name)
#define XLOW(localId, subId, name, a) \
  XCOL(localId, subId, name).counter().ro().attr(a).form_(FW_FORM_OCTET).hook(counter<false>)
#define XHC(localId, subId, name, a) XCOL(localId, subId, name).counter64().ro().attr(a).hook(counter<true>)

constexpr FwObject kObjects[] = {
    XCOL(0, 1, "ifName").octets(255).ro().display().hook(iffam::fullName<255>),
    XLOW(1, 2, "ifInMulticastPkts", 533),
    XLOW(2, 3, "ifInBroadcastPkts", 534),
    XLOW(3, 4, "ifOutMulticastPkts", 536),
    XLOW(4, 5, "ifOutBroadcastPkts", 537),
    XHC(5, 6, "ifHCInOctets", 507),
    XHC(6, 7, "ifHCInUcastPkts", 532),
    XHC(7, 8, "ifHCInMulticastPkts", 533),
    XHC(8, 9, "ifHCInBroadcastPkts", 534),
    XHC(9, 10, "ifHCOutOctets", 506),
    XHC(10, 11, "ifHCOutUcastPkts", 535),
    XHC(11, 12, "ifHCOutMulticastPkts", 536),
    XHC(12, 13, "ifHCOutBroadcastPkts", 537),
    XCOL(13, 14, "ifLinkUpDownTrapEnable").integer().attr(126).range(1, 2),
    XCOL(14, 15, "ifHighSpeed").gauge().ro().attr(129),
    XCOL(15, 16, "ifPromiscuousMode").integer().attr(127).range(1, 2),
    XCOL(16, 17, "ifConnectorPresent").integer().ro().catalogued(1, 2).attr(124),
    XCOL(17, 18, "ifAlias").octets(64).display().attr(4).maxLength(64),
    XCOL(18, 19, "ifCounterDiscontinuityTime").timeticks().ro().attr(125),

    fwObject(&kStackEntry, 19, 1, "rfc2233:ifStackHigherLayer").integer().access_(MDB_ACCESS_READ | MDB_ACCESS_INDEX_NA).indexOf(0),
    fwObject(&kStackEntry, 20, 2, "rfc2233:ifStackLowerLayer").integer().access_(MDB_ACCESS_READ | MDB_ACCESS_INDEX_NA).indexOf(1),
    fwObject(&kStackEntry, 21, 3, "rfc2233:ifStackStatus").rowStatus().rc().noService(),

    fwObject(&kTestEntry, 22, 1, "rfc2233:ifTestId").integer().catalogued(0, 2147483647).noService(),
    fwObject(&kTestEntry, 23, 2, "rfc2233:ifTestStatus").integer().range(1, 2).noService(),
    fwObject(&kTestEntry, 24, 3, "rfc2233:ifTestType").oid(128).noService(),
    fwObject(&kTestEntry, 25, 4, "rfc2233:ifTestResult").integer().ro().catalogued(1, 7).hook(notWritable),
    fwObject(&kTestEntry, 26, 5, "rfc2233:ifTestCode").oid(128).ro().hook(notWritable),
    fwObject(&kTestEntry, 27, 6, "rfc2233:ifTestOwner").octets(255).display().maxLength(255).noService(),

    fwObject(&kRcvAddressEntry, 28, 1, "rfc2233:ifRcvAddressAddress").octets(64).access_(MDB_ACCESS_READ | MDB_ACCESS_INDEX_NA).indexOf(1),
    fwObject(&kRcvAddressEntry, 29, 2, "rfc2233:ifRcvAddressStatus").rowStatus().rc().noService(),
    fwObject(&kRcvAddressEntry, 30, 3, "rfc2233:ifRcvAddressType").integer().rc().catalogued(1, 3).hook(notWritable),
};
#undef XCOL
#undef XLOW
#undef XHC
static_assert(sizeof kObjects / sizeof kObjects[0] == 31, "rfc2233: 19 + 3 + 6 + 3 columns");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int rfc2233MibInit(void) {
  if (fwModuleRegister("rfc2233", 0, kBindings.data()) != 0) {
    printf("mdbModuleRegister %s Error\n\r", "rfc2233");
    return -1;
  }
  return 0;
}
