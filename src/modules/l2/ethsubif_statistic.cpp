// ethsubif_statistic: the statistics of the Ethernet ports' sub-interfaces,
// over the sub-interface table's walk. A refused read passes the service's
// code on.
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/tgpIf.h"

#include "if_family.h"

#include <cstdio>

namespace {

uint32_t mdbNextEthSubIfStatsEntryIndex(const FwEntry*, MdbCrb* mdb) {
  return iffam::nextSubInterface(iffam::kEthClass, mdb);
}
// Every index passes: a missing interface ends in the service's failure.
uint32_t mdbValidateEthSubIfStatsEntryIndex(const FwEntry*, MdbCrb*) { return 0; }

constexpr FwEntry kEntry = fwTable("tgpIf", {1, 3, 6, 1, 4, 1, 47391, 2, 13, 21, 3, 1}, FW_TABLE_OPS(tgpIf))
                               .named("ethSubIfStatsEntry")
                               .intIndex("ethsubif_statistic:ethSubIfStatsIndex")
                               .nextBy(mdbNextEthSubIfStatsEntryIndex)
                               .validateBy(mdbValidateEthSubIfStatsEntryIndex);

constexpr FwObject kObjects[] = {IF_STATS_COLUMNS(kEntry, "ethsubif_statistic", "ethSubIfStats", 0, false)};
static_assert(sizeof kObjects / sizeof kObjects[0] == 53, "ethsubif_statistic: 53 columns");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int ethSubifStatisticMibInit(void) {
  if (fwModuleRegister("ethsubif_statistic", 0, kBindings.data()) != 0) {
    printf("mdbModuleRegister %s Error\n\r", "ethsubif_statistic");
    return -1;
  }
  return 0;
}
