// The object dictionary: the module table and the object table, and start-up.
#ifndef MDB_DICT_H
#define MDB_DICT_H

#include <cstdint>

#include "mdb/mdb_types.h"

// Process start-up: builds gMdbInfo and the dictionary, registers the modules,
// rewrites the enterprise OID, opens the sockets and the timer task. 0 or -1.
uint32_t mdbOptInit(void);

// The daemon's main: options from the command line, signal handlers, start-up,
// then sleep for ever. Returns only on failure (-1) or for a usage error (2).
int mdbProcessMain(int argc, char** argv);

// Modules of the embedding program (tests, tools), registered after the gated
// sequence at start-up. Call before mdbOptInit; at most 16. 0 or -1.
typedef int (*MdbMibInitFn)(void);
int mdbMibInitAdd(MdbMibInitFn init);

// Steps of start-up that tests and tools also use on their own.
void mdbInfoInit(void);      // fills gMdbInfo with its start values
int mdbDictInit(void);       // creates both tables and their locks; 0 or -1
void mdbDictDestroy(void);   // frees both tables (tests and tools only)
// Moves the private trees as the options "snmp.enterpriseoid" and
// "snmp.enterprisesuboid" ask, in the dictionary and the sysORTable.
void mdbEnterpriseOidRewrite(void);

// Bucket count for a table of `count` elements.
uint32_t mdbNumberBuckets(uint32_t count);
// Hash and compare callbacks of both tables; the records begin with the name.
uint32_t mdbHashFunction(const void* key, uint32_t bucketCount, uint32_t seed);
int mdbHashCompare(const void* a, const void* b, uintptr_t arg);

int mdbModuleRegisterEx(const char* moduleName, uint32_t registrationId, const MdbObjectBinding* bindings);
int mdbModuleRegister(const char* moduleName, const MdbObjectBinding* bindings);
int mdbModuleDeRegister(const char* moduleName);
int mdbModuleSearch(const char* moduleName);
int mdbModuleGet(const char* moduleName, MdbModuleDesc* out);
int mdbModuleOidReplace(const uint32_t* oldOid, const uint32_t* newOid, uint32_t length);

void mdbModRLock(void);
void mdbModRUnLock(void);
void mdbModWLock(void);
void mdbModWUnLock(void);
void mdbObjRLock(void);
void mdbObjRUnLock(void);
void mdbObjWLock(void);
void mdbObjWUnLock(void);

// Uptime in hundredths of a second.
uint32_t mdbCentiSecsGet(void);

// Lookups: the row of a registered object or module, or null. The rows do not
// change after start-up, so the pointer stays valid after the lock is released.
const MdbObjectNode* mdbObjectLookup(const char* name);
const MdbModuleDesc* mdbModuleLookup(const char* name);
// Visits every module row in table order; stops when fn returns non-zero and
// returns that value. Holds the module read lock.
int mdbModuleForEach(int (*fn)(const MdbModuleDesc* module, void* arg), void* arg);

// Number of registered modules and objects.
uint32_t mdbModuleCount(void);
uint32_t mdbObjectCount(void);

#endif
