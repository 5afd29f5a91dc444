// libmdbclient: the verbs and queries of mdb, over its command sockets.
// One MdbClient is one connection; use one per thread.
#ifndef MDB_CLIENT_H
#define MDB_CLIENT_H

#include <cstdint>

#include "mdb/mdb_snmp.h"
#include "mdb/mdb_verbs.h"

struct MdbClient;

// Results of the calls: what mdb answered (0, an mdb error code, or the
// function's -1 as 0xFFFFFFFF), or one of these when no answer came.
enum : uint32_t {
  MDB_CLIENT_ERR_IO = 81929001,        // the connection failed or timed out
  MDB_CLIENT_ERR_PROTOCOL = 81929002,  // mdb refused the frame (see mdbClientLastStatus) or the reply was malformed
  MDB_CLIENT_ERR_ARGS = 81929003,      // an argument too large to send (name, tag, index or value)
};

// Connects to a socket path; null (with errno set) if it cannot.
MdbClient* mdbClientOpen(const char* socketPath);
// Connects to command socket `socket` (0-24) in $MDB_RUNDIR (or /tmp).
MdbClient* mdbClientOpenSocket(uint32_t socket);
void mdbClientClose(MdbClient* client);
// How long a call waits for its reply (default 10 s). 0 or -1.
int mdbClientSetTimeout(MdbClient* client, uint32_t milliseconds);
// The protocol status of the last reply (0 unless a call returned MDB_CLIENT_ERR_PROTOCOL).
uint32_t mdbClientLastStatus(const MdbClient* client);

uint32_t mdbClientGetApi(MdbClient* client, const char* name, const uint32_t* pIndex, uint32_t indexCount,
                         void* pValueBuf, uint32_t* pValueLen, const char* callerTag);
uint32_t mdbClientGetNext(MdbClient* client, const char* name, uint32_t* pIndex, uint32_t indexCapacity,
                          uint32_t* pIndexCount, void* pValueBuf, uint32_t* pValueLen, const char* callerTag);
uint32_t mdbClientSetApi(MdbClient* client, const char* name, const uint32_t* pIndex, uint32_t indexCount,
                         const void* pValue, uint32_t valueLen, const char* callerTag, uint32_t options);
uint32_t mdbClientValidate(MdbClient* client, const char* name, const uint32_t* pIndex, uint32_t indexCount,
                           const void* pValue, uint32_t valueLen, uint32_t options);
uint32_t mdbClientCommit(MdbClient* client, const char* name, const uint32_t* pIndex, uint32_t indexCount,
                         const void* pValue, uint32_t valueLen, uint32_t options, const char* callerTag);
uint32_t mdbClientNvmSet(MdbClient* client, const char* name, const uint32_t* pIndex, uint32_t indexCount,
                         const void* pValue, uint32_t valueLen);
uint32_t mdbClientObjInfoGet(MdbClient* client, const char* name, uint32_t mask, MdbObjInfo* out);
uint32_t mdbClientObjectNameNextGet(MdbClient* client, const char* name, char* out, uint32_t outLength);
uint32_t mdbClientObjNameGet(MdbClient* client, const uint32_t* oid, uint32_t oidLength, uint32_t* pOidLen,
                             uint32_t* pIndexCountMax, uint32_t* pType, char* nameOut, uint32_t nameCapacity);

// The module record: the list of bindings is given by the name of the
// module's first accessible object (empty if it has none).
struct MdbClientModule {
  char name[256];
  uint32_t lastChange;
  uint32_t registrationId;
  char firstObject[256];
};
uint32_t mdbClientModuleGet(MdbClient* client, const char* name, MdbClientModule* out);
// Registration with the SNMP agent: runs mdbSnmpInit in the daemon (which
// answers 0 in any case).
uint32_t mdbClientSnmpInit(MdbClient* client);

// The same, with what the run did and how much the agent now holds.
struct MdbClientSnmpSummary {
  uint32_t visible;          // objects handed to the agent
  uint32_t hidden;           // objects skipped as hidden from it
  uint32_t failed;           // objects the agent refused
  uint32_t orRows;           // sysORTable rows handed to it
  uint32_t recordedObjects;  // objects the agent holds: the length of list MDB_SNMP_LIST_OBJECTS
  uint32_t recordedORRows;   // sysORTable rows it holds: the length of list MDB_SNMP_LIST_SYSOR
};
uint32_t mdbClientSnmpInitSummary(MdbClient* client, MdbClientSnmpSummary* out);

// One record of what the agent was given. For a sysORTable row `name` is its
// description and type, access and indexCountMax are 0.
struct MdbClientSnmpRow {
  char name[256];
  uint32_t oid[128];
  uint32_t oidLength;
  uint32_t type;
  uint32_t access;
  uint32_t indexCountMax;
};
// Called for each row in order; non-zero ignores the rest.
typedef int (*MdbClientSnmpRowFn)(void* arg, const MdbClientSnmpRow* row);
// One page of list MDB_SNMP_LIST_OBJECTS or MDB_SNMP_LIST_SYSOR from row
// `offset`: as many rows as one reply holds, at most maxRows (0: no limit).
// *pTotal receives the list's length, *pCount the rows of this page (either
// may be null). Does not run the registration.
uint32_t mdbClientSnmpListPage(MdbClient* client, uint32_t list, uint32_t offset, uint32_t maxRows,
                               MdbClientSnmpRowFn fn, void* arg, uint32_t* pTotal, uint32_t* pCount);
// The whole list, page by page of at most pageRows rows (0: as many as fit);
// *pCount receives the number of rows passed to fn.
uint32_t mdbClientSnmpList(MdbClient* client, uint32_t list, uint32_t pageRows, MdbClientSnmpRowFn fn, void* arg,
                           uint32_t* pCount);
uint32_t mdbClientSysStateSet(MdbClient* client, uint32_t state);

// The system scalars: `in` and `inLength` are the value sent (null for
// none); `out` receives what the function left, *pOutLength being its
// capacity on the way in and the length on the way out (may be null).
uint32_t mdbClientScalarGetApi(MdbClient* client, uint32_t instance, uint32_t attribute, const void* in,
                               uint32_t inLength, void* out, uint32_t* pOutLength);
uint32_t mdbClientScalarSetApi(MdbClient* client, uint32_t instance, uint32_t attribute, const void* in,
                               uint32_t inLength, void* out, uint32_t* pOutLength);
uint32_t mdbClientScalarSyncApi(MdbClient* client, uint32_t instance, uint32_t attribute, const void* in,
                                uint32_t inLength, void* out, uint32_t* pOutLength);

// The chained GetNext: up to `steps` consecutive mdbGetNext results from
// `name` and the index in pIndex/pIndexCount, in one round trip. `step` is
// called for each result in order (rc 0 with the instance's index and value;
// the last may carry the error that ended the chain) and may return non-zero
// to ignore the rest. On return pIndex/pIndexCount hold the last instance
// read, ready for the next chain, and *pSteps the number of results. Returns
// the rc of the last result (0 if the chain stopped only for room or steps),
// or a client error.
typedef int (*MdbClientStepFn)(void* arg, uint32_t rc, const uint32_t* index, uint32_t indexCount,
                               const uint8_t* value, uint32_t valueLength);
uint32_t mdbClientGetNextChain(MdbClient* client, const char* name, uint32_t* pIndex, uint32_t indexCapacity,
                               uint32_t* pIndexCount, uint32_t steps, uint32_t valueCapacity,
                               const char* callerTag, MdbClientStepFn step, void* arg, uint32_t* pSteps);

// Events of the platform's bus (the configuration-change event is group 90):
// a listener in the run directory, for as long as it is open.
struct MdbClientEvents;
MdbClientEvents* mdbClientEventsOpen(uint32_t group);
// Waits up to timeoutMs (-1: for ever) for one message; its length, 0 on
// timeout, -1 on error. A message longer than capacity is cut.
int mdbClientEventsRead(MdbClientEvents* events, void* buffer, uint32_t capacity, int timeoutMs);
void mdbClientEventsClose(MdbClientEvents* events);

#endif
