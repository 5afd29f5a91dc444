// ethsubif: the sub-interfaces of the Ethernet ports (class 1 with a
// sub-interface number). A refused call is a genError here.
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/tgpIf.h"

#include "if_family.h"

#include <cstdio>

namespace {

uint32_t mdbNextEthSubIfEntryIndex(const FwEntry*, MdbCrb* mdb) { return iffam::nextSubInterface(iffam::kEthClass, mdb); }
// Every index passes: a missing interface ends in the service's failure.
uint32_t mdbValidateEthSubIfEntryIndex(const FwEntry*, MdbCrb*) { return 0; }

constexpr FwEntry kEntry = fwTable("tgpIf", {1, 3, 6, 1, 4, 1, 47391, 2, 13, 21, 2, 1}, FW_TABLE_OPS(tgpIf))
                               .named("ethSubIfEntry")
                               .intIndex("ethsubif:ethSubIfIndex")
                               .nextBy(mdbNextEthSubIfEntryIndex)
                               .validateBy(mdbValidateEthSubIfEntryIndex)
                               .fail(FW_FAIL_GENERIC_ALL);

constexpr FwObject kObjects[] = {IF_SUBIF_COLUMNS(kEntry, "ethsubif", "ethSubIf", 0)};
static_assert(sizeof kObjects / sizeof kObjects[0] == 9, "ethsubif: 9 columns");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int ethsubifMibInit(void) {
  if (fwModuleRegister("ethsubif", 0, kBindings.data()) != 0) {
    printf("mdbModuleRegister %s Error\n\r", "ethsubif");
    return -1;
  }
  return 0;
}
