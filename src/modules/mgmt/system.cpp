// system: the command line's own settings and the saving of the configuration.
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/cli.h"

#include <cstdio>

namespace {

constexpr FwEntry kScalars = fwScalars("cli", {1, 3, 6, 1, 4, 1, 47391, 1, 2, 1}, FW_SCALAR_OPS(cli)).buffer(1500);

// systemWriteConfig and systemEraseConfig: 1 acts on the start file, 2 on the
// backup file, 3 on both in that order, the first failure ending it. A read
// gives 1 whatever was written (deliberate: clients rely on it).
constexpr uint32_t kWriteConfigAttribute = 15;
constexpr uint32_t kEraseConfigAttribute = 16;

int configFile(uint32_t attribute, const char* path, uint32_t length) {
  MdbOctetValue holder{reinterpret_cast<uint8_t*>(const_cast<char*>(path)), length};
  return cliScalarSetApi(0, attribute, &holder);
}

uint32_t configAction(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  const uint32_t attribute = call->object->desc.localId == 8 ? kWriteConfigAttribute : kEraseConfigAttribute;
  switch (kind) {
    case MDB_GET_NEXT:
    case MDB_GET:
      ulongSet(mdb, 1);
      return 0;
    case MDB_SET_NVM:
    case MDB_COMMIT: {
      uint32_t which = ulongGet(mdb);
      if (kind == MDB_SET_NVM && which != 1 && which != 2) which = 3;  // no validation came before
      int rc = 0;
      if (which == 1 || which == 3) rc = configFile(attribute, "/ram/start.cfg", 14);
      if (rc == 0 && (which == 2 || which == 3)) rc = configFile(attribute, "/ram/backupstart.cfg", 20);
      return static_cast<uint32_t>(rc);
    }
    default:
      return fwServePlain(kind, mdb, call);  // the range check of 1 to 3
  }
}

constexpr FwObject kObjects[] = {
    fwObject(&kScalars, 0, 1, "system:systemCliVersion").octets(128).ro().attr(0),
    fwObject(&kScalars, 1, 2, "system:systemHostName").octets(128).attr(14).maxLength(128),
    fwObject(&kScalars, 2, 3, "system:systemCaseSensitive").integer().attr(3).range(0, 1),
    fwObject(&kScalars, 3, 4, "system:systemAuthdegenerate").integer().attr(5).range(1, 2),
    fwObject(&kScalars, 4, 5, "system:systemBootLoadConfig").integer().attr(6).range(1, 2),
    fwObject(&kScalars, 5, 6, "system:systemMotd").octets(512).attr(7).maxLength(512),
    fwObject(&kScalars, 6, 7, "system:systemConsoleAuthEnable").integer().attr(10).range(0, 1),
    fwObject(&kScalars, 7, 8, "system:systemPriArrange").integer().attr(12).range(0, 1),
    fwObject(&kScalars, 8, 9, "system:systemWriteConfig").integer().range(1, 3).hook(configAction),
    fwObject(&kScalars, 9, 10, "system:systemEraseConfig").integer().range(1, 3).hook(configAction),
    // Takes a write and does nothing with it; reads 0 (deliberate).
    fwObject(&kScalars, 10, 11, "system:systemEraseIssConfig").integer().noService(),
    fwObject(&kScalars, 11, 12, "system:systemWriteFileState").integer().ro().attr(17),
    fwObject(&kScalars, 12, 13, "system:systemCasInterval").gauge().attr(19),
    fwObject(&kScalars, 13, 14, "system:systemCasEnable").integer().attr(20),
    fwObject(&kScalars, 14, 15, "system:systemEnablePassword").octets(512).attr(1).maxLength(512),
};
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int systemMibInit(void) {
  if (fwModuleRegister("system", 0, kBindings.data()) != 0) {
    printf("mdbModuleRegister %s Error\n\r", "system");
    return -1;
  }
  return 0;
}
