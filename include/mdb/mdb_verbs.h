// The verbs over objects and the object queries: the public operations that
// clients reach through the command sockets, and that in-process callers use.
#ifndef MDB_VERBS_H
#define MDB_VERBS_H

#include <cstdint>

#include "mdb/mdb_types.h"

// Caller tag of the SNMP agent: a tag whose first four bytes are "snmp" marks
// the request with MDB_FLAG_SNMP.
#define MDB_TAG_SNMP "snmp"

// Options of mdbSetApi.
enum : uint32_t {
  MDB_SETOPT_COMMIT = 0x01,     // do the set pass after a successful validation
  MDB_SETOPT_TSC = 0x02,        // validate pass with MDB_FLAG_TSC
  MDB_SETOPT_RESERVED = 0x04,   // no effect
  MDB_SETOPT_LOG_A = 0x08,      // logged write
  MDB_SETOPT_LOG_B = 0x10,      // logged write
  MDB_SETOPT_LOG_C = 0x20,      // logged write
  MDB_SETOPT_CALLER_A = 0x40,   // both passes with MDB_FLAG_CALLER_A
  MDB_SETOPT_CALLER_B = 0x80,   // both passes with MDB_FLAG_CALLER_B
};

uint32_t mdbGetApi(const char* name, uint32_t* pIndex, uint32_t indexCount, void* pValueBuf, uint32_t* pValueLen,
                   const void* callerTag);
uint32_t mdbNvmGet(const char* name, uint32_t* pIndex, uint32_t indexCount, void* pValueBuf, uint32_t* pValueLen);
uint32_t mdbGetNext(const char* name, uint32_t* pIndex, uint32_t indexCapacity, uint32_t* pIndexCount,
                    void* pValueBuf, uint32_t* pValueLen, const void* callerTag);
uint32_t mdbSetApi(const char* name, uint32_t* pIndex, uint32_t indexCount, const void* pValue, uint32_t valueLen,
                   const void* callerTag, uint32_t options);
uint32_t mdbForceSet(const char* name, uint32_t* pIndex, uint32_t indexCount, const void* pValue, uint32_t valueLen);
uint32_t mdbValidate(const char* name, uint32_t* pIndex, uint32_t indexCount, const void* pValue, uint32_t valueLen,
                     uint32_t options);
uint32_t mdbCommit(const char* name, uint32_t* pIndex, uint32_t indexCount, const void* pValue, uint32_t valueLen,
                   uint32_t options, const void* callerTag);
uint32_t mdbNvmSet(const char* name, uint32_t* pIndex, uint32_t indexCount, const void* pValue, uint32_t valueLen);
uint32_t mdbRemove(const char* name, uint32_t* pIndex, uint32_t indexCount);

// The record of mdbObjInfoGet: fixed layout, 1,640 bytes, as it crosses
// process boundaries. Each field is written only if its bit is in the mask.
enum : uint32_t {
  MDB_INFO_LOCALID = 0x001,
  MDB_INFO_SUBID = 0x002,
  MDB_INFO_SIZE = 0x004,
  MDB_INFO_RANGE = 0x008,
  MDB_INFO_TYPE = 0x010,
  MDB_INFO_OID = 0x020,
  MDB_INFO_OIDLEN = 0x040,
  MDB_INFO_INDEXMIN = 0x080,
  MDB_INFO_INDEXMAX = 0x100,
  MDB_INFO_INDEXNAMES = 0x200,
  MDB_INFO_SHOW = 0x372,  // the mask of the show functions
};
struct MdbObjInfo {
  uint32_t localId;
  uint32_t subId;
  uint32_t size;
  int32_t min;
  int32_t max;
  uint32_t type;
  uint32_t oid[16];
  uint32_t oidLen;
  uint32_t indexCountMin;
  uint32_t reserved;
  uint32_t indexCountMax;
  char indexNames[12][128];
};
static_assert(sizeof(MdbObjInfo) == 1640, "the object information record is 1,640 bytes");

uint32_t mdbObjInfoGet(const char* name, uint32_t mask, MdbObjInfo* out);
uint32_t mdbObjectNameNextGet(const char* name, char* out, uint32_t outLength);
// Finds an object by OID. nameOut must hold the longest object name
// (MDB_NAME_MAX bytes). 0 or -1.
enum : uint32_t { MDB_NAME_MAX = 128 };
int mdbObjNameGet(const uint32_t* oid, uint32_t oidLength, uint32_t* pOidLen, uint32_t* pIndexCountMax,
                  uint32_t* pType, char* nameOut);

// System scalars of the database itself.
int mdbScalarGetApi(uint32_t instance, uint32_t attribute, void* value);
int mdbScalarSetApi(uint32_t instance, uint32_t attribute, void* value);
int mdbScalarSyncApi(uint32_t instance, uint32_t attribute, void* value);
int mdbSysStateSet(uint32_t state);
uint32_t mdbSysStateGet(void);
// The commit guard: 1 refuses a direct commit to an "ospfv2:" object in state 2.
uint32_t mdbIoBlock(uint32_t request, const char* name, uint32_t* pIndex, uint32_t* pIndexCount, void* pValueBuf,
                    uint32_t* pValueLen);

#endif
