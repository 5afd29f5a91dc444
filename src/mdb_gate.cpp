// Module gating: the list of all modules, each behind its gate option.
#include "mdb/mdb_subsys.h"

// No module is built yet: the sequence registers nothing.
int mdbUserMibInit(void) { return 0; }
