// Module gating: the list of all modules, each behind its gate option.
#include "mdb/mdb_modules.h"
#include "mdb/mdb_subsys.h"
#include "platform/sil.h"
#include "services/svc_device.h"

namespace {

// Open unless set to a text that does not begin with t or T.
bool gateOpenByDefault(const char* key) {
  char value[128] = {0};
  return silOptRead(0, key, 0, 0, 1, value, 127) <= 0 || value[0] == 't' || value[0] == 'T';
}

// Open only if set to a text that begins with t or T.
bool gateClosedByDefault(const char* key) {
  char value[128] = {0};
  return silOptRead(0, key, 0, 0, 1, value, 127) > 0 && (value[0] == 't' || value[0] == 'T');
}

}  // namespace

// The modules built so far, at their steps of the sequence.
int mdbUserMibInit(void) {
  if (gateOpenByDefault("clock.enable")) clockMibInit();
  if (gateOpenByDefault("mirror.enable")) mirrorMibInit();
  // Outside the sequence, behind an option of our own.
  if (gateClosedByDefault("mdb.system.enable")) systemMibInit();
  svcStart();
  return 0;
}
