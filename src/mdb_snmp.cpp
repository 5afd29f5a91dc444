// Registration with the SNMP agent.
#include "mdb/mdb_subsys.h"

// The sysORTable is not built yet: nothing to rewrite.
int mdbOROidReplace(const uint32_t*, const uint32_t*, uint32_t) { return 0; }

// Not built yet.
int mdbSnmpInit(void) { return -1; }
