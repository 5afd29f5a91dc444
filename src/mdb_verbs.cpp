// The verbs over objects: each turns a client's call into one or two dispatches.
#include "mdb/mdb_verbs.h"
#include "mdb/mdb_dispatch.h"
#include "mdb/mdb_errors.h"

#include <cstring>

namespace {

// Only the first four bytes are compared, so "snmpd" is the agent too.
inline uint32_t originFlag(const void* callerTag) {
  return callerTag != nullptr && strncmp(static_cast<const char*>(callerTag), MDB_TAG_SNMP, 4) == 0
             ? static_cast<uint32_t>(MDB_FLAG_SNMP)
             : 0u;
}

// A write hands the caller's value on as the handler's buffer; handlers only
// read it on the write kinds.
inline void* writable(const void* value) { return const_cast<void*>(value); }

}  // namespace

uint32_t mdbGetApi(const char* name, uint32_t* pIndex, uint32_t indexCount, void* pValueBuf, uint32_t* pValueLen,
                   const void* callerTag) {
  MDB_COUNT(mdbGetCalled);
  uint32_t flags = MDB_FLAG_CALLER_A | MDB_FLAG_CALLER_B | originFlag(callerTag);
  return mdbDispatch(MDB_GET, name, pIndex, &indexCount, pValueBuf, pValueLen, &flags, callerTag);
}

uint32_t mdbNvmGet(const char* name, uint32_t* pIndex, uint32_t indexCount, void* pValueBuf, uint32_t* pValueLen) {
  MDB_COUNT(mdbNvmGetCalled);
  uint32_t flags = MDB_FLAG_CALLER_A | MDB_FLAG_CALLER_B | MDB_FLAG_NVM_GET;
  return mdbDispatch(MDB_GET, name, pIndex, &indexCount, pValueBuf, pValueLen, &flags, nullptr);
}

uint32_t mdbGetNext(const char* name, uint32_t* pIndex, uint32_t indexCapacity, uint32_t* pIndexCount,
                    void* pValueBuf, uint32_t* pValueLen, const void* callerTag) {
  MDB_COUNT(mdbGetNextCalled);
  uint32_t flags = MDB_FLAG_CALLER_A | MDB_FLAG_CALLER_B | originFlag(callerTag);
  return mdbDispatch(MDB_GET_NEXT, name, pIndex, pIndexCount, pValueBuf, pValueLen, &flags, callerTag);
}

uint32_t mdbSetApi(const char* name, uint32_t* pIndex, uint32_t indexCount, const void* pValue, uint32_t valueLen,
                   const void* callerTag, uint32_t options) {
  MDB_COUNT(mdbSetCalled);
  uint32_t flags = originFlag(callerTag);
  if (options & MDB_SETOPT_CALLER_A) flags |= MDB_FLAG_CALLER_A;
  if (options & MDB_SETOPT_CALLER_B) flags |= MDB_FLAG_CALLER_B;
  if (options & MDB_SETOPT_TSC) flags |= MDB_FLAG_TSC;
  uint32_t count = indexCount;
  uint32_t length = valueLen;
  uint32_t rc = mdbDispatch(MDB_VALIDATE, name, pIndex, &count, writable(pValue), &length, &flags, callerTag);
  if (rc != 0) return rc;
  if ((options & MDB_SETOPT_COMMIT) == 0) return 0;

  flags &= ~MDB_FLAG_TSC;
  flags |= MDB_FLAG_IMMEDIATE;
  if (options & MDB_SETOPT_LOG_A) flags |= MDB_FLAG_LOG_A;
  if (options & MDB_SETOPT_LOG_B) flags |= MDB_FLAG_LOG_B;
  if (options & MDB_SETOPT_LOG_C) flags |= MDB_FLAG_LOG_C;
  count = indexCount;
  length = valueLen;
  return mdbDispatch(MDB_SET, name, pIndex, &count, writable(pValue), &length, &flags, callerTag);
}

uint32_t mdbForceSet(const char* name, uint32_t* pIndex, uint32_t indexCount, const void* pValue, uint32_t valueLen) {
  MDB_COUNT(mdbSetCalled);
  uint32_t flags = MDB_FLAG_CALLER_A | MDB_FLAG_CALLER_B | MDB_FLAG_FORCE_SET;
  return mdbDispatch(MDB_FORCE_SET, name, pIndex, &indexCount, writable(pValue), &valueLen, &flags, nullptr);
}

uint32_t mdbValidate(const char* name, uint32_t* pIndex, uint32_t indexCount, const void* pValue, uint32_t valueLen,
                     uint32_t options) {
  MDB_COUNT(mdbValidateCalled);
  uint32_t flags = options & (MDB_FLAG_CALLER_A | MDB_FLAG_CALLER_B);
  return mdbDispatch(MDB_VALIDATE, name, pIndex, &indexCount, writable(pValue), &valueLen, &flags, nullptr);
}

uint32_t mdbCommit(const char* name, uint32_t* pIndex, uint32_t indexCount, const void* pValue, uint32_t valueLen,
                   uint32_t options, const void* callerTag) {
  MDB_COUNT(mdbCommitCalled);
  uint32_t flags = (options & (MDB_FLAG_CALLER_A | MDB_FLAG_CALLER_B)) | originFlag(callerTag);
  return mdbDispatch(MDB_COMMIT, name, pIndex, &indexCount, writable(pValue), &valueLen, &flags, callerTag);
}

uint32_t mdbNvmSet(const char* name, uint32_t* pIndex, uint32_t indexCount, const void* pValue, uint32_t valueLen) {
  MDB_COUNT(mdbSetNvmCalled);
  uint32_t flags = MDB_FLAG_CALLER_A | MDB_FLAG_CALLER_B;
  return mdbDispatch(MDB_SET_NVM, name, pIndex, &indexCount, writable(pValue), &valueLen, &flags, nullptr);
}

uint32_t mdbRemove(const char* name, uint32_t* pIndex, uint32_t indexCount) {
  MDB_COUNT(mdbRemoveCalled);
  uint32_t flags = MDB_FLAG_CALLER_A | MDB_FLAG_CALLER_B | MDB_FLAG_NULL_BUF_OK;
  return mdbDispatch(MDB_FORCE_SET, name, pIndex, &indexCount, nullptr, nullptr, &flags, nullptr);
}
