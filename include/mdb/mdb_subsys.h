// Entry points of the subsystems that start-up and the dispatcher call:
// module gating, SNMP registration, command sockets, timers and change
// events, diagnostics.
#ifndef MDB_SUBSYS_H
#define MDB_SUBSYS_H

#include <cstdint>

#include "mdb/mdb_timer.h"
#include "mdb/mdb_types.h"

// Module gating: registers every module behind its gate option. 0 or -1.
int mdbUserMibInit(void);

// SNMP registration.
int mdbOROidReplace(const uint32_t* oldOid, const uint32_t* newOid, uint32_t length);
int mdbSnmpInit(void);

// Command sockets: opens the 25 sockets. 0.
int mdbCmdTaskInit(void);

// Timer service and the coalesced configuration-change event: mdb_timer.h.

// Diagnostics: the request journal and the two exports a client can ask for.
void mdbInfoLog(uint32_t request, const MdbObjectNode* objectRow, const MdbCrb* record, uint32_t result);
int mdbMibTreeExport(const char* path);
int mdbModuleAllShow(const char* path);

#endif
