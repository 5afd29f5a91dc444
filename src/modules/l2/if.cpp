// if: the interface service's scalars and the private interface table, one
// row per interface of the private list (all but the VLAN interfaces and the
// class-8 interfaces that the service flags as hidden). Each column is served
// only for the interface classes that have the attribute; the others read a
// default and refuse a write.
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/tgp.h"

#include "if_family.h"

#include <cstdio>

namespace {

#define IF_ROOT 1, 3, 6, 1, 4, 1, 47391, 2, 13, 1

// ---------------------------------------------------------------- index functions
uint32_t mdbNextPrivIfEntryIndex(const FwEntry*, MdbCrb* mdb) { return iffam::nextByFilter(iffam::kPrivate, mdb); }
// Every index passes: a missing interface ends in the service's own failure.
uint32_t mdbValidatePrivIfEntryIndex(const FwEntry*, MdbCrb*) { return 0; }

// ---------------------------------------------------------------- class rules
constexpr uint64_t C(uint32_t ifClass) { return uint64_t{1} << ifClass; }
constexpr uint64_t kAll = ~uint64_t{0};
constexpr uint64_t kPhysical = C(1) | C(44);
constexpr uint64_t kRateLimited = C(1) | C(2) | C(10) | C(11) | C(44);
constexpr uint64_t kPrioritised = C(1) | C(2) | C(9) | C(10) | C(11) | C(44);

struct ClassRule {
  uint16_t subId;
  uint64_t readClasses;
  uint32_t fallback;      // what the other classes read
  bool subFallback;       // a sub-interface reads the fallback too
  uint64_t writeClasses;  // 0: read-only
};

constexpr ClassRule kRules[] = {
    {10, kAll & ~(C(3) | C(6)), 0, false, kAll & ~(C(3) | C(6))},  // ifMtu
    {12, kPrioritised, 0, true, kPrioritised},                     // ifPriority
    {13, kPhysical, 0, true, 0},                                   // ifMauType (empty)
    {14, kPhysical, 0, true, kPhysical},                           // ifMauDfltType
    {15, kPhysical, 0, true, 0},                                   // ifMauDfltDfltType
    {16, C(1) | C(2) | C(44), 0, false, kAll},                     // ifSpeed
    {17, C(1) | C(2) | C(44), 0, false, C(1) | C(2) | C(44)},      // ifDuplex
    {18, kPhysical, 2, true, 0},                                   // ifAutoNegoSupport
    {19, kPhysical, 2, true, kPhysical},                           // ifAutoNego
    {20, kRateLimited, 2, false, 0},                               // ifRateLimitSupport
    {21, kRateLimited, 2, false, kRateLimited},                    // ifRateLimitInEnable
    {22, kRateLimited, 2, false, kRateLimited},                    // ifRateLimitInLevel
    {23, kRateLimited, 0, false, kRateLimited},                    // ifRateLimitInLimit
    {24, kRateLimited, 2, false, kRateLimited},                    // ifRateLimitOutEnable
    {25, kRateLimited, 2, false, kRateLimited},                    // ifRateLimitOutLevel
    {26, kRateLimited, 0, false, kRateLimited},                    // ifRateLimitOutLimit
    {27, kPhysical, 0, true, kAll},                                // ifPortDownHoldTime
    {28, kPhysical, 0, true, kAll},                                // ifPortUpHoldTTime
    {30, kRateLimited, 2, true, kRateLimited},                     // ifStatisticIncludeInterframe
    {31, kPhysical, 0, true, kPhysical},                           // ifFrameGap
    {35, kRateLimited, 2, true, kRateLimited},                     // ifBpdu
    {36, C(1) | C(10) | C(11) | C(44), 1, true, kRateLimited},     // ifAcceptFrameType
};

const ClassRule* ruleOf(uint32_t subId) {
  for (const ClassRule& r : kRules)
    if (r.subId == subId) return &r;
  return nullptr;
}

bool inSet(uint64_t set, uint32_t ifClass) { return ifClass < 64 && (set & C(ifClass)) != 0; }

// Every column of the table: the commit guard, the class rules, then the
// column's own behaviour.
uint32_t privColumn(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  const uint32_t ifIndex = static_cast<uint32_t>(call->key);
  const uint32_t subId = call->object->desc.subId;
  uint32_t ifClass = 0;
  tgpIfGetApi(ifIndex, 8, &ifClass);
  uint32_t position[TGP_POS_WORDS] = {0};
  const bool translated = tgpIndexTrans(ifIndex, 5, position) == 0;
  const bool write = kind == MDB_COMMIT || kind == MDB_SET_NVM;

  // A class-5 interface without its unit number cannot be configured yet.
  if (kind == MDB_COMMIT && ifClass == 5 && (!translated || position[TGP_POS_UNIT] == 0)) return mdbErrorGenError();

  if (const ClassRule* rule = ruleOf(subId)) {
    if (iffam::isRead(kind)) {
      const bool sub = translated && position[TGP_POS_SUB] != 0;
      if (!inSet(rule->readClasses, ifClass) || (rule->subFallback && sub)) {
        if (call->object->form == FW_FORM_OCTET) octetSet(mdb, nullptr, 0);
        else ulongSet(mdb, rule->fallback);
        return 0;
      }
      if (subId == 20) return iffam::supported(kind, mdb, call);
    } else if (write && !inSet(rule->writeClasses, ifClass)) {
      return mdbErrorGenError();
    }
  }

  switch (subId) {
    case 2:
      return iffam::fullName<127>(kind, mdb, call);
    case 4:  // ifWorkMode: these classes cannot leave work mode 1
      if (write && ulongGet(mdb) == 0 && (ifClass == 5 || ifClass == 6 || ifClass == 44)) return mdbErrorGenError();
      break;
    case 33:
      return iffam::actionValue(kind, mdb, call);
    case 34:  // ifRestConfiguration: the service takes 0 whatever the client sent (deliberate)
      if (iffam::isRead(kind)) {
        ulongSet(mdb, 0);
        return 0;
      }
      if (write) {
        uint32_t zero = 0;
        int rc = tgpIfSetApi(ifIndex, 50, &zero);
        return rc == 0 ? 0 : static_cast<uint32_t>(rc);
      }
      break;
    default:
      break;
  }
  return fwServePlain(kind, mdb, call);
}

uint32_t totalNumber(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!iffam::isRead(kind)) return fwServePlain(kind, mdb, call);
  ulongSet(mdb, iffam::countByFilter(iffam::kPrivate));
  return 0;
}

constexpr FwEntry kScalars = fwScalars("tgp", {IF_ROOT, 1}, FW_SCALAR_OPS(tgp)).fail(FW_FAIL_GENERIC_ALL);
constexpr FwEntry kPrivEntry = fwTable("tgpIf", {IF_ROOT, 2, 1}, FW_TABLE_OPS(tgpIf))
                                   .intIndex("if:ifIndex")
                                   .nextBy(mdbNextPrivIfEntryIndex)
                                   .validateBy(mdbValidatePrivIfEntryIndex)
                                   .buffer(512);

#define COL(localId, subId, name) fwObject(&kPrivEntry, localId, subId, "if:" name)

constexpr FwObject kObjects[] = {
    fwObject(&kScalars, 0, 1, "if:ifTotalNumber").gauge().ro().hook(totalNumber),
    fwObject(&kScalars, 1, 2, "if:ifRestStatistic").integer().attr(92).range(1, 1).lengthErrors().hook(iffam::actionValue),
    fwObject(&kScalars, 2, 3, "if:ifStatisticInterval").gauge().attr(72).range(30, 300).lengthErrors(),

    COL(3, 1, "ifIndex").gauge().ro().indexOf(0),
    COL(4, 2, "ifPrivName").octets(128).ro().hook(privColumn),
    COL(5, 3, "ifDescription").octets(128).attr(4).maxLength(128).hook(privColumn),
    COL(6, 4, "ifWorkMode").integer().attr(17).range(0, 1).lengthErrors().hook(privColumn),
    COL(7, 5, "ifOndType").integer().ro().catalogued(1, 45).attr(8).hook(privColumn),
    COL(8, 6, "ifAdminStatus").integer().attr(20).range(1, 2).lengthErrors().hook(privColumn),
    COL(9, 7, "ifOperStatus").integer().ro().catalogued(1, 2).attr(19).hook(privColumn),
    COL(10, 8, "ifErrStatus").integer().ro().attr(68).hook(privColumn),
    COL(11, 9, "ifLastChange").timeticks().ro().attr(573).hook(privColumn),
    COL(12, 10, "ifMtu").integer().attr(78).hook(privColumn),
    COL(13, 11, "ifMacAddr").macAddress().attr(33).maxLength(6).hook(privColumn),
    COL(14, 12, "ifPriority").integer().attr(157).range(0, 7).lengthErrors().hook(privColumn),
    COL(15, 13, "ifMauType").octets(512).ro().attr(135).hook(privColumn),
    COL(16, 14, "ifMauDfltType").integer().attr(137).hook(privColumn),
    COL(17, 15, "ifMauDfltDfltType").integer().ro().attr(147).hook(privColumn),
    COL(18, 16, "ifSpeed").integer().attr(129).range(100, 1000000).lengthErrors().hook(privColumn),
    COL(19, 17, "ifDuplex").integer().attr(130).range(0, 1).lengthErrors().hook(privColumn),
    COL(20, 18, "ifAutoNegoSupport").integer().ro().catalogued(1, 2).attr(133).hook(privColumn),
    COL(21, 19, "ifAutoNego").integer().attr(131).range(1, 2).lengthErrors().hook(privColumn),
    COL(22, 20, "ifRateLimitSupport").integer().ro().catalogued(1, 2).attr(168).hook(privColumn),
    COL(23, 21, "ifRateLimitInEnable").integer().attr(170).range(1, 2).lengthErrors().hook(privColumn),
    COL(24, 22, "ifRateLimitInLevel").integer().attr(171).range(1, 3).lengthErrors().hook(privColumn),
    COL(25, 23, "ifRateLimitInLimit").gauge().attr(169).hook(privColumn),
    COL(26, 24, "ifRateLimitOutEnable").integer().attr(173).range(1, 2).lengthErrors().hook(privColumn),
    COL(27, 25, "ifRateLimitOutLevel").integer().attr(174).range(1, 3).lengthErrors().hook(privColumn),
    COL(28, 26, "ifRateLimitOutLimit").gauge().attr(172).hook(privColumn),
    COL(29, 27, "ifPortDownHoldTime").gauge().attr(67).hook(privColumn),
    COL(30, 28, "ifPortUpHoldTTime").gauge().attr(66).hook(privColumn),
    COL(31, 29, "ifStatisticPortInterval").gauge().attr(70).hook(privColumn),
    COL(32, 30, "ifStatisticIncludeInterframe").gauge().attr(153).range(1, 2).lengthErrors().hook(privColumn),
    COL(33, 31, "ifFrameGap").integer().attr(234).hook(privColumn),
    COL(34, 32, "ifLinkTrapEnable").integer().attr(126).range(1, 2).lengthErrors().hook(privColumn),
    COL(35, 33, "ifResetStatistic").integer().attr(71).range(1, 1).lengthErrors().hook(privColumn),
    COL(36, 34, "ifRestConfiguration").integer().catalogued(1, 1).attr(50).hook(privColumn),
    COL(37, 35, "ifBpdu").integer().attr(176).hook(privColumn),
    COL(38, 36, "ifAcceptFrameType").integer().attr(151).range(1, 2).hook(privColumn),
};
#undef COL
static_assert(sizeof kObjects / sizeof kObjects[0] == 39, "if has 3 scalars and 36 columns");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int ifMibInit(void) {
  if (fwModuleRegister("if", 0, kBindings.data()) != 0) {
    printf("mdbModuleRegister %s Error\n\r", "if");
    return -1;
  }
  return 0;
}
