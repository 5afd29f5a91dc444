// Error functions, request names and the statistics record.
#include "mdb/mdb_errors.h"
#include "platform/sil.h"

#include <unistd.h>

#include <cstdio>
#include <cstring>

std::atomic<uint32_t> mdbStats[MDB_STAT_COUNT];

namespace {
const char* const kStatNames[MDB_STAT_COUNT] = {
#define MDB_STAT_NAME(name, group) #name,
    MDB_STATS_LIST(MDB_STAT_NAME)
#undef MDB_STAT_NAME
};
const uint8_t kStatGroups[MDB_STAT_COUNT] = {
#define MDB_STAT_GROUP(name, group) group,
    MDB_STATS_LIST(MDB_STAT_GROUP)
#undef MDB_STAT_GROUP
};

inline uint32_t fail(MdbStatId counter, uint32_t code) {
  mdbStatInc(counter);
  errnoSet(code);
  return code;
}
}  // namespace

const char* mdbStatName(uint32_t id) { return id < MDB_STAT_COUNT ? kStatNames[id] : nullptr; }

void mdbStatsReset(void) {
  for (auto& counter : mdbStats) counter.store(0, std::memory_order_relaxed);
}

int mdbStatsShowFd(int fd) {
  // Every counter but the last, a blank line after each of groups 1 to 9.
  for (uint32_t id = 0; id + 1 < MDB_STAT_COUNT; id++) {
    dprintf(fd, "%-28s= %u\n", kStatNames[id], mdbStatGet(static_cast<MdbStatId>(id)));
    if (kStatGroups[id] < 10 && kStatGroups[id + 1] != kStatGroups[id]) dprintf(fd, "\n");
  }
  return 0;
}

int mdbStatsShow(void) {
  fflush(stdout);
  return mdbStatsShowFd(STDOUT_FILENO);
}

uint32_t mdbNoError(void) { return fail(MDB_STAT_mdbNoError, MDB_OK); }
uint32_t mdbErrorTooBig(void) { return fail(MDB_STAT_mdbTooBig, MDB_ERR_TOO_BIG); }
uint32_t mdbErrorGenError(void) { return fail(MDB_STAT_mdbGenError, MDB_ERR_GEN_ERROR); }
uint32_t mdbErrorNullBuffer(void) { return fail(MDB_STAT_mdbNullBuffer, MDB_ERR_NULL_BUFFER); }
uint32_t mdbErrorIndexRange(void) { return fail(MDB_STAT_mdbIndexRange, MDB_ERR_INDEX_RANGE); }
uint32_t mdbErrorAltObject(void) { return fail(MDB_STAT_mdbAltObjectError, MDB_ERR_ALT_OBJECT); }
uint32_t mdbObjectHidden(void) { return fail(MDB_STAT_mdbObjectHidden, MDB_ERR_OBJECT_HIDDEN); }
uint32_t mdbErrorInvalidRange(void) { return fail(MDB_STAT_mdbInvalidRange, MDB_ERR_INVALID_RANGE); }
uint32_t mdbErrorInvalidLength(void) { return fail(MDB_STAT_mdbInvalidLength, MDB_ERR_INVALID_LENGTH); }
uint32_t mdbErrorNoSuchInstance(void) { return fail(MDB_STAT_mdbNoSuchInstance, MDB_ERR_NO_SUCH_INSTANCE); }
uint32_t mdbErrorNoSuchObject(void) { return fail(MDB_STAT_mdbNoSuchObject, MDB_ERR_NO_SUCH_OBJECT); }
uint32_t mdbErrorNoNextInstance(void) { return fail(MDB_STAT_mdbNoNextInstance, MDB_ERR_NO_NEXT_INSTANCE); }
uint32_t mdbErrorNoCreation(void) { return fail(MDB_STAT_mdbNoCreation, MDB_ERR_NO_CREATION); }
uint32_t mdbErrorInconsistValue(void) { return fail(MDB_STAT_mdbInconsistValue, MDB_ERR_INCONSIST_VALUE); }
uint32_t mdbErrorInconsistName(void) { return fail(MDB_STAT_mdbInconsistName, MDB_ERR_INCONSIST_NAME); }
uint32_t mdbErrorResourceUnavail(void) { return fail(MDB_STAT_mdbResourceUnavail, MDB_ERR_RESOURCE_UNAVAIL); }
uint32_t mdbErrorCommitFailed(void) { return fail(MDB_STAT_mdbCommitFailed, MDB_ERR_COMMIT_FAILED); }
uint32_t mdbErrorUndoFailed(void) { return fail(MDB_STAT_mdbUndoFailed, MDB_ERR_UNDO_FAILED); }
uint32_t mdbErrorAuthorizationError(void) { return fail(MDB_STAT_mdbAuthorizationError, MDB_ERR_AUTHORIZATION); }
uint32_t mdbErrorNotWritable(void) { return fail(MDB_STAT_mdbNotWritable, MDB_ERR_NOT_WRITABLE); }
uint32_t mdbErrorNoAccess(void) { return fail(MDB_STAT_mdbNoAccess, MDB_ERR_NO_ACCESS); }
uint32_t mdbErrorWrongType(void) { return fail(MDB_STAT_mdbWrongType, MDB_ERR_WRONG_TYPE); }
uint32_t mdbErrorWrongValue(void) { return fail(MDB_STAT_mdbWrongValue, MDB_ERR_WRONG_VALUE); }
uint32_t mdbErrorWrongLength(void) { return fail(MDB_STAT_mdbWrongLength, MDB_ERR_WRONG_LENGTH); }
uint32_t mdbErrorEndOfMibView(void) { return fail(MDB_STAT_mdbEndOfMibView, MDB_ERR_END_OF_MIB_VIEW); }
// Counted behind mdbEndOfMibView, in the one counter that mdbStatsShow leaves out.
uint32_t mdbErrorWrongEncoding(void) { return fail(MDB_STAT_mdbWrongEncoding, MDB_ERR_WRONG_ENCODING); }

uint32_t mdbErrorRequestMap(uint32_t requestKind) {
  switch (requestKind) {
    case 1: return mdbErrorNoNextInstance();
    case 2: return mdbErrorNoSuchInstance();
    case 5: return mdbErrorNoCreation();
    default: return mdbErrorCommitFailed();
  }
}

const char* mdbRequest2Name(uint32_t request) {
  switch (request) {
    case 1: return "MDB_GET_NEXT";
    case 2: return "MDB_GET";
    case 3: return "MDB_SET";
    case 5: return "MDB_VALIDATE";
    case 6: return "MDB_COMMIT";
    default: return "N/A";
  }
}

