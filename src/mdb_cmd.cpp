// The command sockets.
#include "mdb/mdb_subsys.h"

// The sockets are not built yet: in-process callers use the verbs directly.
int mdbCmdTaskInit(void) { return 0; }
