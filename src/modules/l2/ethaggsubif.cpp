// ethaggsubif: the sub-interfaces of the trunks (class 2 with a
// sub-interface number). A refused call is a genError here.
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/tgpIf.h"

#include "if_family.h"

#include <cstdio>

namespace {

uint32_t mdbNextEthAggSubIfEntryIndex(const FwEntry*, MdbCrb* mdb) { return iffam::nextSubInterface(iffam::kTrunkClass, mdb); }
// Every index passes: a missing interface ends in the service's failure.
uint32_t mdbValidateEthAggSubIfEntryIndex(const FwEntry*, MdbCrb*) { return 0; }

constexpr FwEntry kEntry = fwTable("tgpIf", {1, 3, 6, 1, 4, 1, 47391, 2, 13, 23, 2, 1}, FW_TABLE_OPS(tgpIf))
                               .named("ethAggSubIfEntry")
                               .intIndex("ethaggsubif:ethAggSubIfIndex")
                               .nextBy(mdbNextEthAggSubIfEntryIndex)
                               .validateBy(mdbValidateEthAggSubIfEntryIndex)
                               .fail(FW_FAIL_GENERIC_ALL);

constexpr FwObject kObjects[] = {IF_SUBIF_COLUMNS(kEntry, "ethaggsubif", "ethAggSubIf", 0)};
static_assert(sizeof kObjects / sizeof kObjects[0] == 9, "ethaggsubif: 9 columns");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int ethaggsubifMibInit(void) {
  if (fwModuleRegister("ethaggsubif", 0, kBindings.data()) != 0) {
    printf("mdbModuleRegister %s Error\n\r", "ethaggsubif");
    return -1;
  }
  return 0;
}
