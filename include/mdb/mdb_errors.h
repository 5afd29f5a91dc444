// Error codes and functions, and the statistics record mdbStats.
#ifndef MDB_ERRORS_H
#define MDB_ERRORS_H

#include <atomic>
#include <cstdint>

// ---------------------------------------------------------------- error codes
enum : uint32_t {
  MDB_OK = 0,
  MDB_MODULE_ERROR_BASE = 81920000,
  MDB_ERR_TOO_BIG = 81920001,
  MDB_ERR_GEN_ERROR = 81920002,
  MDB_ERR_NULL_BUFFER = 81920003,
  MDB_ERR_INDEX_RANGE = 81920004,
  MDB_ERR_ALT_OBJECT = 81920006,
  MDB_ERR_OBJECT_HIDDEN = 81920007,
  MDB_ERR_INVALID_RANGE = 81920008,
  MDB_ERR_INVALID_LENGTH = 81920009,
  MDB_ERR_NO_SUCH_INSTANCE = 81920010,
  MDB_ERR_NO_SUCH_OBJECT = 81920011,
  MDB_ERR_NO_NEXT_INSTANCE = 81920012,
  MDB_ERR_NO_CREATION = 81920013,
  MDB_ERR_INCONSIST_VALUE = 81920014,
  MDB_ERR_INCONSIST_NAME = 81920015,
  MDB_ERR_RESOURCE_UNAVAIL = 81920016,
  MDB_ERR_COMMIT_FAILED = 81920017,
  MDB_ERR_UNDO_FAILED = 81920018,
  MDB_ERR_AUTHORIZATION = 81920019,
  MDB_ERR_NOT_WRITABLE = 81920020,
  MDB_ERR_NO_ACCESS = 81920021,
  MDB_ERR_WRONG_TYPE = 81920022,
  MDB_ERR_WRONG_VALUE = 81920023,
  MDB_ERR_WRONG_LENGTH = 81920024,
  MDB_ERR_END_OF_MIB_VIEW = 81920025,
  MDB_ERR_WRONG_ENCODING = 81920026,
};

// ---------------------------------------------------------------- statistics
// X(name, group): the 84 counters in their order; group 11 is not printed.
#define MDB_STATS_LIST(X)                                                                                \
  X(mdbInitCalled, 1)                                                                                    \
  X(objAllocEntry, 2) X(objAddFailed, 2) X(objTotalCount, 2) X(objTableFull, 2) X(objAlreadyExists, 2)  \
  X(objNeedsAdding, 2)                                                                                   \
  X(modAllocEntry, 3) X(modAddFailed, 3) X(modTotalCount, 3) X(modTableFull, 3) X(modAlreadyExists, 3)  \
  X(modRegisterCalled, 3)                                                                                \
  X(modDeRegisterCalled, 4) X(modDeRegisterFound, 4)                                                     \
  X(mdbSnmpOidInitCalled, 5) X(mdbSnmpRegisterCalled, 5)                                                 \
  X(snmpObjVisible, 6) X(snmpObjInvisible, 6) X(snmpObjRegFailed, 6)                                     \
  X(mdbDispatchCalled, 7) X(mdbDispatchBufNull, 7) X(mdbDispatchRangeErr, 7) X(mdbDispatchUnknown, 7)    \
  X(mdbDispatchSet, 7) X(mdbForceSet, 7) X(mdbDispatchReadOnly, 7) X(mdbDispatchGet, 7)                  \
  X(mdbDispatchGetNext, 7) X(mdbDispatchSetNvm, 7) X(mdbDispatchValidate, 7) X(mdbDispatchCommit, 7)     \
  X(mdbDispatchUnknownRequest, 7) X(mdbDispatchAltObject, 7) X(mdbDispatchEntryHook, 7)                  \
  X(mdbDispatchExitHook, 7) X(mdbDispatchObjHandler, 7) X(mdbDispatchNullHandler, 7)                     \
  X(mdbGetCalled, 8) X(mdbNvmGetCalled, 8) X(mdbSetCalled, 8) X(mdbValidateCalled, 8)                    \
  X(mdbCommitCalled, 8) X(mdbGetNextCalled, 8) X(mdbSetNvmCalled, 8) X(mdbRemoveCalled, 8)               \
  X(mdbGetInfoCalled, 8) X(mdbObjectShowCalled, 8) X(mdbAltObjectSetCalled, 8)                           \
  X(mdbAltObjectListCalled, 8) X(mdbAltObjectHideCalled, 8) X(mdbAltObjectHideListCalled, 8)             \
  X(mdbObjectNameNextGetCalled, 8)                                                                       \
  X(mdbIndexesAreEqual, 9) X(mdbNextSimpleIndex, 9) X(mdbNextAddressIndex, 9) X(mdbScalarValidate, 9)    \
  X(mdbNextScalarIndex, 9)                                                                               \
  X(mdbIndexRange, 10) X(mdbInvalidRange, 10) X(mdbInvalidLength, 10) X(mdbTooBig, 10)                  \
  X(mdbNullBuffer, 10) X(mdbAltObjectError, 10) X(mdbGenError, 10) X(mdbObjectHidden, 10)                \
  X(mdbNoError, 10) X(mdbNoNextInstance, 10) X(mdbNoSuchInstance, 10) X(mdbNoSuchObject, 10)             \
  X(mdbNoCreation, 10) X(mdbInconsistValue, 10) X(mdbInconsistName, 10) X(mdbResourceUnavail, 10)        \
  X(mdbCommitFailed, 10) X(mdbUndoFailed, 10) X(mdbAuthorizationError, 10) X(mdbNotWritable, 10)         \
  X(mdbNoAccess, 10) X(mdbWrongType, 10) X(mdbWrongValue, 10) X(mdbWrongLength, 10)                      \
  X(mdbEndOfMibView, 10)                                                                                 \
  X(mdbWrongEncoding, 11)

enum MdbStatId : uint32_t {
#define MDB_STAT_ENUM(name, group) MDB_STAT_##name,
  MDB_STATS_LIST(MDB_STAT_ENUM)
#undef MDB_STAT_ENUM
  MDB_STAT_COUNT
};
static_assert(MDB_STAT_COUNT == 84, "mdbStats holds 84 counters");

// The counters: relaxed atomics, incremented from every command task.
extern std::atomic<uint32_t> mdbStats[MDB_STAT_COUNT];

inline void mdbStatInc(MdbStatId id) { mdbStats[id].fetch_add(1, std::memory_order_relaxed); }
inline uint32_t mdbStatGet(MdbStatId id) { return mdbStats[id].load(std::memory_order_relaxed); }
#define MDB_COUNT(name) mdbStatInc(MDB_STAT_##name)

// The counter's name as mdbStatsShow prints it.
const char* mdbStatName(uint32_t id);
// Prints the record to standard output; 0.
int mdbStatsShow(void);
// The same, to a file descriptor.
int mdbStatsShowFd(int fd);
// Sets every counter to 0 (tests and tools).
void mdbStatsReset(void);

// ---------------------------------------------------------------- error functions
// Each counts its counter, sets the thread's error number, returns its code.
uint32_t mdbNoError(void);
uint32_t mdbErrorTooBig(void);
uint32_t mdbErrorGenError(void);
uint32_t mdbErrorNullBuffer(void);
uint32_t mdbErrorIndexRange(void);
uint32_t mdbErrorAltObject(void);
uint32_t mdbObjectHidden(void);
uint32_t mdbErrorInvalidRange(void);
uint32_t mdbErrorInvalidLength(void);
uint32_t mdbErrorNoSuchInstance(void);
uint32_t mdbErrorNoSuchObject(void);
uint32_t mdbErrorNoNextInstance(void);
uint32_t mdbErrorNoCreation(void);
uint32_t mdbErrorInconsistValue(void);
uint32_t mdbErrorInconsistName(void);
uint32_t mdbErrorResourceUnavail(void);
uint32_t mdbErrorCommitFailed(void);
uint32_t mdbErrorUndoFailed(void);
uint32_t mdbErrorAuthorizationError(void);
uint32_t mdbErrorNotWritable(void);
uint32_t mdbErrorNoAccess(void);
uint32_t mdbErrorWrongType(void);
uint32_t mdbErrorWrongValue(void);
uint32_t mdbErrorWrongLength(void);
uint32_t mdbErrorEndOfMibView(void);
uint32_t mdbErrorWrongEncoding(void);

// The error that fits a request kind for an index that does not fit:
// 1 no next instance, 2 no such instance, 5 no creation, others commit failed.
uint32_t mdbErrorRequestMap(uint32_t requestKind);

// "MDB_GET_NEXT", "MDB_GET", "MDB_SET", "MDB_VALIDATE", "MDB_COMMIT" or "N/A".
const char* mdbRequest2Name(uint32_t request);

// The name of the function that makes an error code ("mdbErrorInvalidRange"),
// for clients and tools; "mdbNoError" for 0, "failed" for -1, "unknown" for
// codes outside the family.
inline const char* mdbErrorName(uint32_t code) {
  static const char* const names[] = {
      "mdbNoError",           "mdbErrorTooBig",          "mdbErrorGenError",         "mdbErrorNullBuffer",
      "mdbErrorIndexRange",   "unknown",                 "mdbErrorAltObject",        "mdbObjectHidden",
      "mdbErrorInvalidRange", "mdbErrorInvalidLength",   "mdbErrorNoSuchInstance",   "mdbErrorNoSuchObject",
      "mdbErrorNoNextInstance", "mdbErrorNoCreation",    "mdbErrorInconsistValue",   "mdbErrorInconsistName",
      "mdbErrorResourceUnavail", "mdbErrorCommitFailed", "mdbErrorUndoFailed",       "mdbErrorAuthorizationError",
      "mdbErrorNotWritable",  "mdbErrorNoAccess",        "mdbErrorWrongType",        "mdbErrorWrongValue",
      "mdbErrorWrongLength",  "mdbErrorEndOfMibView",    "mdbErrorWrongEncoding"};
  if (code == 0) return names[0];
  if (code > MDB_MODULE_ERROR_BASE && code <= MDB_ERR_WRONG_ENCODING) return names[code - MDB_MODULE_ERROR_BASE];
  if (code == 0xFFFFFFFFu) return "failed";
  return "unknown";
}

#endif
