// The request dispatcher: the single door of every read and write.
#ifndef MDB_DISPATCH_H
#define MDB_DISPATCH_H

#include <cstdint>

#include "mdb/mdb_types.h"

uint32_t mdbDispatch(uint32_t request, const char* objectName, uint32_t* pIndex, uint32_t* pIndexCount,
                     void* pValueBuf, uint32_t* pValueLen, uint32_t* pFlags, const void* callerTag);

// The family that selects an object by numeric id. No map from an id to a
// name exists, so each call ends with mdbErrorGenError().
uint32_t mdbXDispatch(uint32_t request, uint32_t objectId, uint32_t* pIndex, uint32_t* pIndexCount,
                      void* pValueBuf, uint32_t* pValueLen, uint32_t* pFlags, const void* callerTag);
uint32_t mdbXGet(uint32_t objectId, uint32_t* pIndex, uint32_t indexCount, void* pValueBuf, uint32_t* pValueLen,
                 const void* callerTag);
uint32_t mdbXNvmGet(uint32_t objectId, uint32_t* pIndex, uint32_t indexCount, void* pValueBuf, uint32_t* pValueLen);
uint32_t mdbXSet(uint32_t objectId, uint32_t* pIndex, uint32_t indexCount, const void* pValue, uint32_t valueLen,
                 const void* callerTag);
uint32_t mdbXSetX(uint32_t objectId, uint32_t* pIndex, uint32_t indexCount, const void* pValue, uint32_t valueLen,
                  const void* callerTag, uint32_t options);
uint32_t mdbXForceSet(uint32_t objectId, uint32_t* pIndex, uint32_t indexCount, const void* pValue,
                      uint32_t valueLen);
uint32_t mdbXValidate(uint32_t objectId, uint32_t* pIndex, uint32_t indexCount, const void* pValue,
                      uint32_t valueLen, uint32_t options);
uint32_t mdbXCommit(uint32_t objectId, uint32_t* pIndex, uint32_t indexCount, const void* pValue, uint32_t valueLen,
                    uint32_t options, const void* callerTag);
uint32_t mdbXGetNext(uint32_t objectId, uint32_t* pIndex, uint32_t indexCapacity, uint32_t* pIndexCount,
                     void* pValueBuf, uint32_t* pValueLen, const void* callerTag);
uint32_t mdbXNvmSet(uint32_t objectId, uint32_t* pIndex, uint32_t indexCount, const void* pValue, uint32_t valueLen);
uint32_t mdbXRemove(uint32_t objectId, uint32_t* pIndex, uint32_t indexCount);

#endif
