// rfc1213: the interface group of MIB-II (ifNumber and ifEntry) over the
// private interface list. The other MIB-II groups of this module are not
// registered yet.
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/tgp.h"

#include "../l2/if_family.h"

#include <cstdio>

namespace {

#define MIB2_IF_ROOT 1, 3, 6, 1, 2, 1, 2

uint32_t mdbNextIfEntryIndex(const FwEntry*, MdbCrb* mdb) { return iffam::nextByFilter(iffam::kPrivate, mdb); }

// An interface exists for this table when the service knows its type.
uint32_t mdbValidateIfEntryIndex(const FwEntry*, MdbCrb* mdb) {
  uint32_t ifType = 0;
  if (mdb->indexSubIdCount < 1 || tgpIfGetApi(mdb->pIndex[0], 121, &ifType) != 0) return mdbErrorNoSuchInstance();
  return 0;
}

using iffam::isRead;

// 4000 Mb/s and above do not fit in 32 bits of b/s: the maximum, as ifHighSpeed takes over.
uint32_t speed(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  uint32_t mbps = 0;
  if (int rc = iffam::get(call, 129, &mbps)) return iffam::failed(call, rc);
  ulongSet(mdb, static_cast<int32_t>(mbps) < 4000 ? mbps * 1000000u : 4294967295u);
  return 0;
}

// A write passes 1 as 1 and anything else as 2 (the check lets only 1 and 2 through).
uint32_t adminStatus(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (kind != MDB_COMMIT && kind != MDB_SET_NVM) return fwServePlain(kind, mdb, call);
  uint32_t value = ulongGet(mdb) == 1 ? 1 : 2;
  int rc = iffam::set(call, 20, &value);
  return rc == 0 ? 0 : iffam::failed(call, rc);
}

uint32_t operStatus(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  uint32_t value = 0;
  if (int rc = iffam::get(call, 19, &value)) return iffam::failed(call, rc);
  ulongSet(mdb, value == 1 ? 1 : 2);
  return 0;
}

// The queue length, 0 when the service cannot tell (deliberate: never a failure).
uint32_t outQLen(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  uint32_t value = 0;
  if (iffam::get(call, 575, &value) != 0) value = 0;
  ulongSet(mdb, value);
  return 0;
}

uint32_t specific(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  static const uint32_t kNull[2] = {0, 0};
  oidSet(mdb, kNull, 2);
  return 0;
}

// A 32-bit counter of ifEntry: 0 without asking the service when the
// interface's counters are suppressed; a failed read gives the result 1.
uint32_t counter(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  if (iffam::countersSuppressed(call)) {
    ulongSet(mdb, 0);
    return 0;
  }
  uint32_t w[2];
  if (iffam::read64(call, call->object->attribute, w) != 0) return 1;
  ulongSet(mdb, w[1]);
  return 0;
}

constexpr FwEntry kInterfaces = fwScalars("tgp", {MIB2_IF_ROOT}, FW_SCALAR_OPS(tgp)).fail(FW_FAIL_GENERIC_ALL);
constexpr FwEntry kIfEntry = fwTable("tgpIf", {MIB2_IF_ROOT, 2, 1}, FW_TABLE_OPS(tgpIf))
                                 .named("ifEntry")
                                 .intIndex("rfc1213:ifIndex")
                                 .nextBy(mdbNextIfEntryIndex)
                                 .validateBy(mdbValidateIfEntryIndex)
                                 .fail(FW_FAIL_GENERIC_ALL);

#define COL(localId, subId, name) fwObject(&kIfEntry, localId, subId, "rfc1213:" name)
#define CNT(localId, subId, name, a) COL(localId, subId, name).counter().ro().attr(a).form_(FW_FORM_OCTET).hook(counter)

constexpr FwObject kObjects[] = {
    // Answered by the private module's count through the alternate object.
    fwObject(&kInterfaces, 0, 1, "rfc1213:ifNumber").integer().ro().noService().alternate("if:ifTotalNumber"),

    COL(1, 1, "ifIndex").integer().ro().indexOf(0),
    COL(2, 2, "ifDescr").octets(255).ro().display().hook(iffam::fullName<255>),
    COL(3, 3, "ifType").integer().ro().catalogued(1, 32).attr(121),
    COL(4, 4, "ifMtu").integer().ro().attr(78),
    COL(5, 5, "ifSpeed").gauge().ro().attr(129).hook(speed),
    COL(6, 6, "ifPhysAddress").octets(6).ro().attr(33),
    COL(7, 7, "ifAdminStatus").integer().catalogued(1, 3).attr(20).range(1, 2).hook(adminStatus),
    COL(8, 8, "ifOperStatus").integer().ro().catalogued(1, 3).attr(19).hook(operStatus),
    COL(9, 9, "ifLastChange").timeticks().ro().attr(573),
    CNT(10, 10, "ifInOctets", 507),
    CNT(11, 11, "ifInUcastPkts", 532),
    CNT(12, 12, "ifInNUcastPkts", 572),
    CNT(13, 13, "ifInDiscards", 571),
    CNT(14, 14, "ifInErrors", 570),
    CNT(15, 15, "ifInUnknownProtos", 569),
    CNT(16, 16, "ifOutOctets", 506),
    CNT(17, 17, "ifOutUcastPkts", 535),
    CNT(18, 18, "ifOutNUcastPkts", 568),
    CNT(19, 19, "ifOutDiscards", 567),
    CNT(20, 20, "ifOutErrors", 574),
    COL(21, 21, "ifOutQLen").gauge().ro().attr(575).hook(outQLen),
    COL(22, 22, "ifSpecific").oid(64).ro().hook(specific),
};
#undef COL
#undef CNT
static_assert(sizeof kObjects / sizeof kObjects[0] == 23, "rfc1213 interface group: ifNumber and 22 columns");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int rfc1213MibInit(void) {
  if (fwModuleRegister("rfc1213", 0, kBindings.data()) != 0) {
    printf("mdbModuleRegister %s Error\n\r", "rfc1213");
    return -1;
  }
  return 0;
}
