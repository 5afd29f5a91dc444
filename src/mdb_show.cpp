// Diagnostics: the request journal and the exports.
#include "mdb/mdb_subsys.h"

// The journal is not built yet: it writes nothing.
void mdbInfoLog(uint32_t, const MdbObjectNode*, const MdbCrb*, uint32_t) {}

// Not built yet.
int mdbMibTreeExport(const char*) { return -1; }
int mdbModuleAllShow(const char*) { return -1; }
