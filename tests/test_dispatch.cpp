// The dispatcher: early failures, index rules, read-only check, alternates,
// validate-then-commit, hooks, logged writes, error functions and counters.
#include "test_support.h"

#include <sstream>
#include <thread>

using namespace mdbtest;

namespace {

struct Call {
  uint32_t kind;
  uint32_t localId;
  uint32_t flags;
  uint32_t count;
  bool nullBuffer;
  void* oldValue;
};
std::vector<Call> gCalls;
uint32_t gValues[16];
uint32_t gFailKind = 0;  // a kind on which the handler fails with commit failed

// A handler in the usual shape: scalars at localId < 10, a table of three
// rows (1..3) at localId 10 and above.
uint32_t testHandler(uint32_t kind, MdbCrb* crb) {
  gCalls.push_back({kind, crb->localId, crb->flags, crb->indexSubIdCount, crb->pValueBuf == nullptr, crb->oldValue});
  if (kind == gFailKind) return mdbErrorCommitFailed();
  const bool table = crb->localId >= 10;
  switch (kind) {
    case MDB_GET_NEXT:
      if (table) {
        uint32_t next = crb->indexSubIdCount == 0 ? 1 : crb->pIndex[0] + 1;
        if (next > 3) return mdbErrorNoNextInstance();
        crb->pIndex[0] = next;
        crb->indexSubIdCount = 1;
        ulongSet(crb, next * 100);
        return 0;
      }
      if (mdbScalarValidate(kind, crb) != 0) return mdbErrorNoNextInstance();
      mdbNextScalarIndex(crb);
      ulongSet(crb, gValues[crb->localId]);
      return 0;
    case MDB_GET:
      if (table) {
        if (crb->pIndex[0] < 1 || crb->pIndex[0] > 3) return mdbErrorNoSuchInstance();
        ulongSet(crb, crb->pIndex[0] * 100);
        return 0;
      }
      if (mdbScalarValidate(kind, crb) != 0) return mdbErrorNoSuchInstance();
      ulongSet(crb, gValues[crb->localId]);
      return 0;
    case MDB_VALIDATE: {
      if (crb->pValueBuf == nullptr) return 0;
      const MdbObjectDesc* o = crb->objectDesc;
      uint32_t v = ulongGet(crb);
      if ((o->min != 0 || o->max != 0) && (v < static_cast<uint32_t>(o->min) || v > static_cast<uint32_t>(o->max)))
        return mdbErrorInvalidRange();
      crb->flags |= MDB_FLAG_VALIDATED;
      return 0;
    }
    case MDB_SET_NVM:
    case MDB_COMMIT:
      if (crb->pValueBuf != nullptr && !table) gValues[crb->localId] = ulongGet(crb);
      return 0;
    default:
      return mdbErrorGenError();
  }
}

uint32_t gFormatterResult = 0;
uint32_t gFormatterCalls = 0;
uint32_t testFormatter(const char*, uint32_t*, uint32_t, uint32_t, char* text, uint32_t textLength, uintptr_t* word) {
  gFormatterCalls++;
  snprintf(text, textLength, "changed");
  *word = 7;
  return gFormatterResult;
}

MdbEntryDesc gScalars = makeEntry({1, 3, 6, 1, 4, 1, 47391, 2, 99}, 0, 1);
MdbEntryDesc gTable = makeEntry({1, 3, 6, 1, 4, 1, 47391, 2, 99, 2, 1}, 1, 1, {"test:tblIndex"});
MdbEntryDesc gLogged = [] {
  MdbEntryDesc e = makeEntry({1, 3, 6, 1, 4, 1, 47391, 2, 99, 3}, 0, 1);
  e.changeFormatter = testFormatter;
  return e;
}();

MdbObjectDesc gObjects[] = {
    makeObject(0, 1, MDB_ACCESS_RW, testHandler, "test:rw", 1, 10),
    makeObject(1, 2, MDB_ACCESS_RO, testHandler, "test:ro"),
    makeObject(2, 3, MDB_ACCESS_RO_INDEX, testHandler, "test:index"),
    makeObject(3, 4, MDB_ACCESS_NA, testHandler, "test:na"),
    makeObject(4, 5, MDB_ACCESS_RW, nullptr, "test:nohandler"),
    makeObject(0, 6, MDB_ACCESS_RW, testHandler, "test:alias", 0, 0, "test:rw"),
    makeObject(0, 7, MDB_ACCESS_RW, testHandler, "test:loopA", 0, 0, "test:loopB"),
    makeObject(0, 8, MDB_ACCESS_RW, testHandler, "test:loopB", 0, 0, "test:loopA"),
    makeObject(10, 2, MDB_ACCESS_RC, testHandler, "test:tblValue"),
    makeObject(5, 1, MDB_ACCESS_RW, testHandler, "test:logged"),
    makeObject(6, 1, MDB_ACCESS_RW, testHandler, "ospfv2:guarded"),
};
MdbObjectBinding gBindings[] = {
    {&gScalars, &gObjects[0]}, {&gScalars, &gObjects[1]}, {&gScalars, &gObjects[2]},  {&gScalars, &gObjects[3]},
    {&gScalars, &gObjects[4]}, {&gScalars, &gObjects[5]}, {&gScalars, &gObjects[6]},  {&gScalars, &gObjects[7]},
    {&gTable, &gObjects[8]},   {&gLogged, &gObjects[9]},  {&gScalars, &gObjects[10]}, {nullptr, nullptr},
};

class Dispatch : public DictTest {
 protected:
  void SetUp() override {
    DictTest::SetUp();
    ASSERT_EQ(0, mdbModuleRegister("test", gBindings));
    gCalls.clear();
    memset(gValues, 0, sizeof gValues);
    gFailKind = 0;
    gFormatterResult = 0;
    gFormatterCalls = 0;
    mdbStatsReset();
  }

  // One dispatch with an index of `count` sub-ids and a 4-byte value.
  uint32_t run(uint32_t request, const char* name, uint32_t count, uint32_t value = 5, uint32_t flags = 0x30) {
    uint32_t index[MDB_MAX_INDEX + 1] = {0};
    lastValue = value;
    lastLen = 4;
    lastCount = count;
    lastFlags = flags;
    return mdbDispatch(request, name, index, &lastCount, &lastValue, &lastLen, &lastFlags, nullptr);
  }
  std::vector<uint32_t> kinds() const {
    std::vector<uint32_t> k;
    for (const Call& c : gCalls) k.push_back(c.kind);
    return k;
  }
  uint32_t lastValue = 0, lastLen = 0, lastCount = 0, lastFlags = 0;
};

TEST_F(Dispatch, EarlyFailuresCountAndLeaveTheCallerAlone) {
  uint32_t count = 1, len = 4, flags = 0, value = 0;
  EXPECT_EQ(MDB_ERR_GEN_ERROR, mdbDispatch(MDB_GET, nullptr, nullptr, &count, &value, &len, &flags, nullptr));
  EXPECT_EQ(1u, stat(MDB_STAT_mdbDispatchCalled));
  EXPECT_EQ(1u, stat(MDB_STAT_mdbGenError));
  EXPECT_EQ(MDB_ERR_GEN_ERROR, errnoGet());

  // A null buffer fails before the lookup: an unknown name still says null buffer.
  EXPECT_EQ(MDB_ERR_NULL_BUFFER, mdbDispatch(MDB_GET, "no:such", nullptr, &count, nullptr, &len, &flags, nullptr));
  EXPECT_EQ(1u, stat(MDB_STAT_mdbDispatchBufNull));
  EXPECT_EQ(0u, stat(MDB_STAT_mdbDispatchUnknown));

  // 257 sub-ids are refused before the lookup; 256 pass on to the entry's limit.
  EXPECT_EQ(MDB_ERR_INDEX_RANGE, run(MDB_GET, "test:rw", 257));
  EXPECT_EQ(1u, stat(MDB_STAT_mdbDispatchRangeErr));
  EXPECT_EQ(MDB_ERR_NO_SUCH_OBJECT, run(MDB_GET, "no:such", 256));
  EXPECT_EQ(1u, stat(MDB_STAT_mdbDispatchUnknown));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, run(MDB_GET, "test:rw", 256));
  EXPECT_EQ(256u, lastCount);  // untouched on failure
  EXPECT_EQ(4u, lastLen);

  // Unknown request kinds pass the checks and the lookup, then fail.
  EXPECT_EQ(MDB_ERR_GEN_ERROR, run(0, "test:rw", 1));
  EXPECT_EQ(MDB_ERR_GEN_ERROR, run(7, "test:rw", 1));
  EXPECT_EQ(2u, stat(MDB_STAT_mdbDispatchUnknownRequest));

  EXPECT_EQ(MDB_ERR_GEN_ERROR, run(MDB_GET, "test:nohandler", 1));
  EXPECT_EQ(1u, stat(MDB_STAT_mdbDispatchNullHandler));

  // Missing count or flags pointers are refused, not followed.
  EXPECT_EQ(MDB_ERR_GEN_ERROR, mdbDispatch(MDB_GET, "test:rw", nullptr, nullptr, &value, &len, &flags, nullptr));
  EXPECT_EQ(MDB_ERR_GEN_ERROR, mdbDispatch(MDB_GET, "test:rw", nullptr, &count, &value, &len, nullptr, nullptr));
  EXPECT_TRUE(gCalls.empty());
  EXPECT_EQ(0u, stat(MDB_STAT_mdbDispatchObjHandler));
}

TEST_F(Dispatch, IndexCountRulesPerKind) {
  // Above the entry's maximum: a walk still reaches the handler (which ends
  // it), every other kind gets the error that fits it.
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, run(MDB_GET_NEXT, "test:rw", 2));
  ASSERT_EQ(1u, gCalls.size());
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, run(MDB_GET, "test:rw", 2));
  EXPECT_EQ(MDB_ERR_NO_CREATION, run(MDB_VALIDATE, "test:rw", 2));
  for (uint32_t kind : {MDB_SET, MDB_COMMIT, MDB_SET_NVM, MDB_FORCE_SET})
    EXPECT_EQ(MDB_ERR_COMMIT_FAILED, run(kind, "test:rw", 2)) << kind;
  EXPECT_EQ(1u, gCalls.size());

  // Below the minimum: only a read is held to it.
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, run(MDB_GET, "test:tblValue", 0));
  EXPECT_EQ(1u, gCalls.size());
  EXPECT_EQ(0u, run(MDB_VALIDATE, "test:tblValue", 0));
  EXPECT_EQ(2u, gCalls.size());

  // No index from the caller: the handler gets a zeroed one of its own.
  uint32_t count = 1, len = 4, flags = 0, value = 0;
  EXPECT_EQ(0u, mdbDispatch(MDB_GET, "test:rw", nullptr, &count, &value, &len, &flags, nullptr));
}

TEST_F(Dispatch, ReadOnlyIsAccessOneExactly) {
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, run(MDB_SET, "test:ro", 1));
  EXPECT_EQ(1u, stat(MDB_STAT_mdbDispatchSet));
  EXPECT_EQ(1u, stat(MDB_STAT_mdbDispatchReadOnly));
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, run(MDB_VALIDATE, "test:ro", 1));
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, run(MDB_COMMIT, "test:ro", 1));
  EXPECT_TRUE(gCalls.empty());

  EXPECT_EQ(0u, run(MDB_SET, "test:index", 1));
  EXPECT_EQ(0u, run(MDB_SET, "test:na", 1));
  EXPECT_EQ(0u, run(MDB_FORCE_SET, "test:ro", 1));
  EXPECT_EQ(0u, run(MDB_SET_NVM, "test:ro", 1));
  EXPECT_EQ(1u, stat(MDB_STAT_mdbForceSet));
  EXPECT_EQ(1u, stat(MDB_STAT_mdbDispatchSetNvm));
  EXPECT_EQ((std::vector<uint32_t>{5, 6, 5, 6, 5, 6, 4}), kinds());
}

TEST_F(Dispatch, AlternateObjectIsServedAsTheAlternate) {
  gValues[0] = 9;
  EXPECT_EQ(0u, run(MDB_GET, "test:alias", 1));
  EXPECT_EQ(9u, lastValue);
  EXPECT_EQ(2u, stat(MDB_STAT_mdbDispatchCalled));  // the whole road once more
  EXPECT_EQ(1u, stat(MDB_STAT_mdbDispatchAltObject));
  // The alternate's limits apply: test:rw takes 1..10.
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, run(MDB_SET, "test:alias", 1, 11));
  EXPECT_EQ(0u, run(MDB_SET, "test:alias", 1, 3));
  EXPECT_EQ(3u, gValues[0]);
  // Two objects naming each other end in an error, not in the stack's end.
  EXPECT_EQ(MDB_ERR_ALT_OBJECT, run(MDB_GET, "test:loopA", 1));
}

TEST_F(Dispatch, SetValidatesThenCommitsOnOneRecord) {
  silClockSet([]() -> uint64_t { return 123450; });
  EXPECT_EQ(0u, run(MDB_SET, "test:rw", 1, 7));
  ASSERT_EQ((std::vector<uint32_t>{5, 6}), kinds());
  // The mark set in the validation is still there in the commit, and reaches the caller.
  EXPECT_EQ(0u, gCalls[0].flags & MDB_FLAG_VALIDATED);
  EXPECT_NE(0u, gCalls[1].flags & MDB_FLAG_VALIDATED);
  EXPECT_NE(0u, lastFlags & MDB_FLAG_VALIDATED);
  EXPECT_EQ(7u, gValues[0]);
  MdbModuleDesc module{};
  ASSERT_EQ(0, mdbModuleGet("test", &module));
  EXPECT_EQ(12345u, module.lastChange);

  // A refused value is never committed; a failed commit is returned as it is.
  gCalls.clear();
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, run(MDB_SET, "test:rw", 1, 0));
  EXPECT_EQ((std::vector<uint32_t>{5}), kinds());
  gFailKind = MDB_COMMIT;
  EXPECT_EQ(MDB_ERR_COMMIT_FAILED, run(MDB_SET, "test:rw", 1, 2));
  EXPECT_EQ(7u, gValues[0]);

  // lastChange moves on a successful validation, not on the forced and NVM writes.
  gFailKind = 0;
  silClockSet([]() -> uint64_t { return 200000; });
  EXPECT_EQ(0u, run(MDB_FORCE_SET, "test:rw", 1, 2));
  EXPECT_EQ(0u, run(MDB_SET_NVM, "test:rw", 1, 2));
  mdbModuleGet("test", &module);
  EXPECT_EQ(12345u, module.lastChange);
  EXPECT_EQ(0u, run(MDB_VALIDATE, "test:rw", 1, 2));
  mdbModuleGet("test", &module);
  EXPECT_EQ(20000u, module.lastChange);
}

TEST_F(Dispatch, ReadsCopyBackLengthCountAndFlags) {
  uint32_t index[MDB_MAX_INDEX] = {0};
  uint32_t count = 0, len = 4, flags = 0x30, value = 0;
  EXPECT_EQ(0u, mdbDispatch(MDB_GET_NEXT, "test:tblValue", index, &count, &value, &len, &flags, nullptr));
  EXPECT_EQ(1u, count);
  EXPECT_EQ(1u, index[0]);
  EXPECT_EQ(100u, value);
  EXPECT_EQ(0u, mdbDispatch(MDB_GET_NEXT, "test:tblValue", index, &count, &value, &len, &flags, nullptr));
  EXPECT_EQ(2u, index[0]);
  index[0] = 3;
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE,
            mdbDispatch(MDB_GET_NEXT, "test:tblValue", index, &count, &value, &len, &flags, nullptr));
  EXPECT_EQ(3u, index[0]);
  EXPECT_EQ(3u, stat(MDB_STAT_mdbDispatchGetNext));
}

// ---------------------------------------------------------------- hooks
std::vector<std::string> gHookLog;
uint32_t gHookResult = 0;

uint32_t entryHook(const char* name, uint32_t request, MdbCrb* crb) {
  gHookLog.push_back(std::string("entry ") + name);
  crb->flags |= 0x40000000;
  return gHookResult;
}
uint32_t exitHook(const char* name, uint32_t request, MdbCrb* crb) {
  gHookLog.push_back(std::string("exit ") + name);
  return gHookResult;
}
uint32_t tagHook(const char* name, const void* tag, MdbCrb* crb) {
  gHookLog.push_back(std::string("tag ") + name + " " + (tag ? static_cast<const char*>(tag) : "-") +
                     " after " + std::to_string(gCalls.size()));
  return 0;
}
uint32_t translateHook(uint32_t* pRequest, const char** pName, uint32_t*, uint32_t*, void*, uint32_t*, uint32_t*) {
  gHookLog.push_back(std::string("translate ") + *pName);
  if (strcmp(*pName, "old:name") == 0) *pName = "test:rw";
  return strcmp(*pName, "refuse:me") == 0 ? static_cast<uint32_t>(-1) : 0;
}
uint32_t unknownHook(uint32_t, const char*, uint32_t*, uint32_t*, void*, uint32_t*, uint32_t*) { return 42; }

TEST_F(Dispatch, HooksRunAtTheirPlaces) {
  gHookLog.clear();
  gHookResult = 0;
  gMdbInfo.entryHook = entryHook;
  gMdbInfo.exitHook = exitHook;
  EXPECT_EQ(0u, run(MDB_GET, "test:rw", 1));
  EXPECT_EQ((std::vector<std::string>{"entry test:rw", "exit test:rw"}), gHookLog);
  EXPECT_NE(0u, lastFlags & 0x40000000);  // what the entry hook set reaches the caller
  EXPECT_EQ(1u, stat(MDB_STAT_mdbDispatchEntryHook));
  EXPECT_EQ(1u, stat(MDB_STAT_mdbDispatchExitHook));
  gHookResult = 5;  // a refusing entry hook ends the request with -1 before the handler
  gCalls.clear();
  EXPECT_EQ(0xFFFFFFFFu, run(MDB_GET, "test:rw", 1));
  EXPECT_TRUE(gCalls.empty());
  gMdbInfo.entryHook = nullptr;
  EXPECT_EQ(5u, run(MDB_GET, "test:rw", 1));  // the exit hook's result becomes the request's
  gMdbInfo.exitHook = nullptr;

  // The translate hook runs once, even across an alternate, and may rename.
  gHookLog.clear();
  gMdbInfo.translateHook = translateHook;
  EXPECT_EQ(0u, run(MDB_GET, "old:name", 1));
  EXPECT_NE(0u, lastFlags & MDB_FLAG_TRANSLATED);
  EXPECT_EQ(0u, run(MDB_GET, "test:alias", 1));
  EXPECT_EQ((std::vector<std::string>{"translate old:name", "translate test:alias"}), gHookLog);
  EXPECT_EQ(0xFFFFFFFFu, run(MDB_GET, "refuse:me", 1));
  gMdbInfo.translateHook = nullptr;

  gMdbInfo.unknownObjectHook = unknownHook;
  EXPECT_EQ(42u, run(MDB_GET, "no:such", 1));
  gMdbInfo.unknownObjectHook = nullptr;

  // getHook on a read with 0x1000, before the handler; immediate and tsc after a write.
  gHookLog.clear();
  gCalls.clear();
  gMdbInfo.getHook = tagHook;
  gMdbInfo.immediateHook = tagHook;
  gMdbInfo.tscHook = tagHook;
  uint32_t index[1] = {0}, count = 1, len = 4, value = 3, flags = MDB_FLAG_TSC;
  EXPECT_EQ(0u, mdbDispatch(MDB_GET, "test:rw", index, &count, &value, &len, &flags, "cli"));
  EXPECT_EQ(0u, run(MDB_SET, "test:rw", 1, 3, MDB_FLAG_IMMEDIATE));
  EXPECT_EQ(0u, run(MDB_VALIDATE, "test:rw", 1, 3, MDB_FLAG_TSC));
  EXPECT_EQ(0u, run(MDB_SET, "test:rw", 1, 3, MDB_FLAG_IMMEDIATE | MDB_FLAG_NO_TRIGGER));
  EXPECT_EQ(0u, run(MDB_GET, "test:rw", 1, 3, 0));
  EXPECT_EQ((std::vector<std::string>{"tag test:rw cli after 0", "tag test:rw - after 3", "tag test:rw - after 4"}),
            gHookLog);
  gMdbInfo.getHook = gMdbInfo.immediateHook = gMdbInfo.tscHook = nullptr;
}

TEST_F(Dispatch, CommitGuardStopsDirectCommitsOnly) {
  mdbSysStateSet(2);
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, run(MDB_COMMIT, "ospfv2:guarded", 1));
  EXPECT_EQ(0u, run(MDB_SET, "ospfv2:guarded", 1));  // the commit inside a set is not asked
  EXPECT_EQ(0u, run(MDB_COMMIT, "test:rw", 1));
  mdbSysStateSet(1);
  EXPECT_EQ(0u, run(MDB_COMMIT, "ospfv2:guarded", 1));
}

TEST_F(Dispatch, LoggedWritesReachTheChangeEvent) {
  uint32_t before = mdbConfgChangeCount();
  EXPECT_EQ(0u, run(MDB_SET, "test:rw", 1, 3));
  EXPECT_EQ(before, mdbConfgChangeCount());
  for (uint32_t bit : {MDB_FLAG_LOG_A, MDB_FLAG_LOG_B, MDB_FLAG_LOG_C}) {
    EXPECT_EQ(0u, run(MDB_SET, "test:rw", 1, 3, bit));
    EXPECT_EQ(++before, mdbConfgChangeCount());
  }
  // Only a set carries the event, and only a successful commit.
  EXPECT_EQ(0u, run(MDB_COMMIT, "test:rw", 1, 3, MDB_FLAG_LOG_A));
  gFailKind = MDB_COMMIT;
  EXPECT_EQ(MDB_ERR_COMMIT_FAILED, run(MDB_SET, "test:rw", 1, 3, MDB_FLAG_LOG_A));
  EXPECT_EQ(before, mdbConfgChangeCount());
  gFailKind = 0;

  // With a formatter, the old value is read between validation and commit.
  gCalls.clear();
  gValues[5] = 77;
  EXPECT_EQ(0u, run(MDB_SET, "test:logged", 1, 3, MDB_FLAG_LOG_A));
  EXPECT_EQ((std::vector<uint32_t>{5, 2, 6}), kinds());
  EXPECT_NE(nullptr, gCalls[2].oldValue);
  EXPECT_EQ(1u, gFormatterCalls);
  EXPECT_EQ(++before, mdbConfgChangeCount());
  // A refusing formatter or a failed old-value read stops the event, not the write.
  gFormatterResult = 1;
  EXPECT_EQ(0u, run(MDB_SET, "test:logged", 1, 4, MDB_FLAG_LOG_A));
  EXPECT_EQ(4u, gValues[5]);
  gFormatterResult = 0;
  gFailKind = MDB_GET;
  EXPECT_EQ(0u, run(MDB_SET, "test:logged", 1, 6, MDB_FLAG_LOG_A));
  EXPECT_EQ(6u, gValues[5]);
  EXPECT_EQ(before, mdbConfgChangeCount());
}

// ---------------------------------------------------------------- errors
TEST_F(Dispatch, EveryErrorFunctionCountsSetsAndReturns) {
  struct Row {
    uint32_t (*fn)(void);
    uint32_t code;
    MdbStatId counter;
  };
  const Row rows[] = {
      {mdbNoError, 0, MDB_STAT_mdbNoError},
      {mdbErrorTooBig, 81920001, MDB_STAT_mdbTooBig},
      {mdbErrorGenError, 81920002, MDB_STAT_mdbGenError},
      {mdbErrorNullBuffer, 81920003, MDB_STAT_mdbNullBuffer},
      {mdbErrorIndexRange, 81920004, MDB_STAT_mdbIndexRange},
      {mdbErrorAltObject, 81920006, MDB_STAT_mdbAltObjectError},
      {mdbObjectHidden, 81920007, MDB_STAT_mdbObjectHidden},
      {mdbErrorInvalidRange, 81920008, MDB_STAT_mdbInvalidRange},
      {mdbErrorInvalidLength, 81920009, MDB_STAT_mdbInvalidLength},
      {mdbErrorNoSuchInstance, 81920010, MDB_STAT_mdbNoSuchInstance},
      {mdbErrorNoSuchObject, 81920011, MDB_STAT_mdbNoSuchObject},
      {mdbErrorNoNextInstance, 81920012, MDB_STAT_mdbNoNextInstance},
      {mdbErrorNoCreation, 81920013, MDB_STAT_mdbNoCreation},
      {mdbErrorInconsistValue, 81920014, MDB_STAT_mdbInconsistValue},
      {mdbErrorInconsistName, 81920015, MDB_STAT_mdbInconsistName},
      {mdbErrorResourceUnavail, 81920016, MDB_STAT_mdbResourceUnavail},
      {mdbErrorCommitFailed, 81920017, MDB_STAT_mdbCommitFailed},
      {mdbErrorUndoFailed, 81920018, MDB_STAT_mdbUndoFailed},
      {mdbErrorAuthorizationError, 81920019, MDB_STAT_mdbAuthorizationError},
      {mdbErrorNotWritable, 81920020, MDB_STAT_mdbNotWritable},
      {mdbErrorNoAccess, 81920021, MDB_STAT_mdbNoAccess},
      {mdbErrorWrongType, 81920022, MDB_STAT_mdbWrongType},
      {mdbErrorWrongValue, 81920023, MDB_STAT_mdbWrongValue},
      {mdbErrorWrongLength, 81920024, MDB_STAT_mdbWrongLength},
      {mdbErrorEndOfMibView, 81920025, MDB_STAT_mdbEndOfMibView},
      {mdbErrorWrongEncoding, 81920026, MDB_STAT_mdbWrongEncoding},
  };
  for (const Row& row : rows) {
    errnoSet(12345);
    uint32_t before = stat(row.counter);
    EXPECT_EQ(row.code, row.fn());
    EXPECT_EQ(row.code, errnoGet());
    EXPECT_EQ(before + 1, stat(row.counter)) << mdbStatName(row.counter);
  }
  // The error number is the task's own.
  errnoSet(0);
  std::thread other([] { mdbErrorCommitFailed(); });
  other.join();
  EXPECT_EQ(0u, errnoGet());

  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, mdbErrorRequestMap(1));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, mdbErrorRequestMap(2));
  EXPECT_EQ(MDB_ERR_NO_CREATION, mdbErrorRequestMap(5));
  for (uint32_t kind : {0u, 3u, 4u, 6u, 131u}) EXPECT_EQ(MDB_ERR_COMMIT_FAILED, mdbErrorRequestMap(kind));

  EXPECT_STREQ("MDB_GET_NEXT", mdbRequest2Name(1));
  EXPECT_STREQ("MDB_SET", mdbRequest2Name(3));
  EXPECT_STREQ("N/A", mdbRequest2Name(4));
  EXPECT_STREQ("N/A", mdbRequest2Name(131));
  EXPECT_STREQ("MDB_COMMIT", mdbRequest2Name(6));

  // Counters wrap without harm.
  mdbStats[MDB_STAT_mdbTooBig].store(0xFFFFFFFFu);
  mdbErrorTooBig();
  EXPECT_EQ(0u, stat(MDB_STAT_mdbTooBig));
}

TEST_F(Dispatch, StatsShowPrintsEveryCounterButTheLast) {
  mdbErrorWrongEncoding();
  run(MDB_GET, "test:rw", 1);
  std::string text = captureStdout([] { mdbStatsShow(); });
  std::istringstream lines(text);
  std::string line;
  std::vector<std::string> counters;
  int blanks = 0;
  while (std::getline(lines, line)) {
    if (line.empty()) blanks++;
    else counters.push_back(line);
  }
  ASSERT_EQ(83u, counters.size());
  EXPECT_EQ(9, blanks);
  EXPECT_EQ("mdbInitCalled               = 0", counters.front());
  EXPECT_EQ("mdbDispatchCalled           = 1", counters[20]);
  EXPECT_EQ("mdbEndOfMibView             = 0", counters.back());
  EXPECT_EQ(std::string::npos, text.find("mdbWrongEncoding"));
  EXPECT_NE(text.size() - 2, text.rfind("\n\n"));  // group 10 ends the output without a blank line
}

}  // namespace
