// ethaggsubif_statistic: the statistics of the trunks' sub-interfaces,
// over the sub-interface table's walk. A refused read passes the service's
// code on.
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/tgpIf.h"

#include "if_family.h"

#include <cstdio>

namespace {

uint32_t mdbNextEthaggSubIfStatsEntryIndex(const FwEntry*, MdbCrb* mdb) {
  return iffam::nextSubInterface(iffam::kTrunkClass, mdb);
}
// Every index passes: a missing interface ends in the service's failure.
uint32_t mdbValidateEthaggSubIfStatsEntryIndex(const FwEntry*, MdbCrb*) { return 0; }

constexpr FwEntry kEntry = fwTable("tgpIf", {1, 3, 6, 1, 4, 1, 47391, 2, 13, 23, 3, 1}, FW_TABLE_OPS(tgpIf))
                               .named("ethaggSubIfStatsEntry")
                               .intIndex("ethaggsubif_statistic:ethaggSubIfStatsIndex")
                               .nextBy(mdbNextEthaggSubIfStatsEntryIndex)
                               .validateBy(mdbValidateEthaggSubIfStatsEntryIndex);

constexpr FwObject kObjects[] = {IF_STATS_COLUMNS(kEntry, "ethaggsubif_statistic", "ethaggSubIfStats", 0, false)};
static_assert(sizeof kObjects / sizeof kObjects[0] == 53, "ethaggsubif_statistic: 53 columns");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int ethaggSubifStatisticMibInit(void) {
  if (fwModuleRegister("ethaggsubif_statistic", 0, kBindings.data()) != 0) {
    printf("mdbModuleRegister %s Error\n\r", "ethaggsubif_statistic");
    return -1;
  }
  return 0;
}
