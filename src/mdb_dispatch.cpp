// The request dispatcher.
#include "mdb/mdb_dispatch.h"
#include "mdb/mdb_dict.h"
#include "mdb/mdb_errors.h"
#include "mdb/mdb_subsys.h"
#include "platform/logging.h"
#include "platform/sil.h"

#include <atomic>
#include <cstring>

namespace {

// An alternate object may name another alternate; a chain longer than this
// is a catalogue loop and ends the request instead of the stack.
constexpr int kMaxAlternateDepth = 8;
constexpr uint32_t kScratchSize = 128;
constexpr uint32_t kOldValueSize = 1024;
constexpr uint32_t kChangeTextSize = 256;

struct Channel {
  uint32_t channel;
  uint32_t mask;
};

inline Channel channelOf(uint32_t request) {
  if (request == MDB_GET_NEXT) return {4, MDB_DEBUG_GETNEXT};
  if (request == MDB_SET_NVM || request == MDB_VALIDATE || request == MDB_COMMIT) return {3, MDB_DEBUG_WRITE};
  return {2, MDB_DEBUG_DISPATCH};
}

#define DISPATCH_DEBUG(format, ...) MDB_DEBUG(ch.channel, ch.mask, format __VA_OPT__(, ) __VA_ARGS__)

uint32_t dispatch(uint32_t request, const char* objectName, uint32_t* pIndex, uint32_t* pIndexCount,
                  void* pValueBuf, uint32_t* pValueLen, uint32_t* pFlags, const void* callerTag, int depth) {
  MDB_COUNT(mdbDispatchCalled);
  errnoSet(0);
  Channel ch = channelOf(request);

  if (objectName == nullptr) {
    DISPATCH_DEBUG("%s:%d: MDB dispatch, object name is null.\r\n");
    return mdbErrorGenError();
  }
  // The count and the flags word are the caller's by contract; a caller that
  // gives neither gets an error, not a fault.
  if (pIndexCount == nullptr || pFlags == nullptr) return mdbErrorGenError();
  if (pValueBuf == nullptr && (*pFlags & MDB_FLAG_NULL_BUF_OK) == 0) {
    MDB_COUNT(mdbDispatchBufNull);
    DISPATCH_DEBUG("%s:%d: MDB dispatch, object %s null buffer.\r\n", objectName);
    return mdbErrorNullBuffer();
  }
  if (*pIndexCount > MDB_MAX_INDEX) {
    MDB_COUNT(mdbDispatchRangeErr);
    DISPATCH_DEBUG("%s:%d: MDB dispatch, object %s range <%u> invalid.\r\n", objectName, *pIndexCount);
    return mdbErrorIndexRange();
  }
  if (request == MDB_COMMIT && gMdbInfo.ioBlockHook != nullptr &&
      gMdbInfo.ioBlockHook(request, objectName, pIndex, pIndexCount, pValueBuf, pValueLen) != 0)
    return mdbErrorNotWritable();
  if (gMdbInfo.translateHook != nullptr && (*pFlags & MDB_FLAG_TRANSLATED) == 0) {
    *pFlags |= MDB_FLAG_TRANSLATED;
    if (gMdbInfo.translateHook(&request, &objectName, pIndex, pIndexCount, pValueBuf, pValueLen, pFlags) ==
        static_cast<uint32_t>(-1))
      return static_cast<uint32_t>(-1);
    if (objectName == nullptr) return mdbErrorGenError();
    ch = channelOf(request);
  }

  const MdbObjectNode* node = mdbObjectLookup(objectName);
  if (node == nullptr) {
    MDB_COUNT(mdbDispatchUnknown);
    DISPATCH_DEBUG("%s:%d: MDB dispatch, object %s not found (%08x).\r\n", objectName, errnoGet());
    if (gMdbInfo.unknownObjectHook != nullptr)
      return gMdbInfo.unknownObjectHook(request, objectName, pIndex, pIndexCount, pValueBuf, pValueLen, pFlags);
    return mdbErrorNoSuchObject();
  }
  const MdbObjectBinding* binding = node->list;
  const MdbObjectDesc* object = binding->object;
  const MdbEntryDesc* entry = binding->entry;

  if (object->altObject != nullptr) {
    MDB_COUNT(mdbDispatchAltObject);
    if (depth >= kMaxAlternateDepth) return mdbErrorAltObject();
    return dispatch(request, object->altObject, pIndex, pIndexCount, pValueBuf, pValueLen, pFlags, callerTag,
                    depth + 1);
  }
  if (object->handler == nullptr || entry == nullptr) {
    MDB_COUNT(mdbDispatchNullHandler);
    DISPATCH_DEBUG("%s:%d: MDB dispatch, object %s invalid pointer.\r\n", objectName);
    return mdbErrorGenError();
  }

  uint32_t ownIndex[MDB_MAX_INDEX];
  alignas(8) uint8_t scratch[kScratchSize];
  alignas(8) uint8_t oldValue[kOldValueSize];  // only used by logged writes with a formatter
  MdbCrb crb{};
  if (pIndex == nullptr) {
    memset(ownIndex, 0, sizeof ownIndex);
    crb.pIndex = ownIndex;
  } else {
    crb.pIndex = pIndex;
  }
  crb.indexSubIdCount = *pIndexCount;
  crb.indexSubIdCountMax = entry->indexCountMax;
  crb.pValueBuf = pValueBuf;
  crb.valueLen = pValueLen != nullptr ? *pValueLen : 0;
  crb.localId = object->localId;
  crb.crbContext = entry->crbContext;
  crb.flags = *pFlags;
  crb.objectName = objectName;
  crb.scratchBuf = scratch;
  crb.scratchLen = kScratchSize;
  crb.objectDesc = object;
  crb.entryDesc = entry;

  if (crb.indexSubIdCount > crb.indexSubIdCountMax && request != MDB_GET_NEXT) {
    DISPATCH_DEBUG("%s:%d: MDB dispatch, object %s %s indexcount too big(%u/%u).\r\n", objectName,
                   mdbRequest2Name(request), crb.indexSubIdCount, crb.indexSubIdCountMax);
    return mdbErrorRequestMap(request);
  }
  if (request == MDB_GET && crb.indexSubIdCount < entry->indexCountMin) {
    DISPATCH_DEBUG("%s:%d: MDB dispatch, object %s %s indexcount less(%u/%u).\r\n", objectName,
                   mdbRequest2Name(request), crb.indexSubIdCount, static_cast<uint32_t>(entry->indexCountMin));
    return mdbErrorRequestMap(request);
  }

  switch (request) {
    case MDB_GET_NEXT: MDB_COUNT(mdbDispatchGetNext); break;
    case MDB_GET: MDB_COUNT(mdbDispatchGet); break;
    case MDB_SET_NVM: MDB_COUNT(mdbDispatchSetNvm); break;
    case MDB_FORCE_SET: MDB_COUNT(mdbForceSet); break;
    case MDB_SET:
    case MDB_VALIDATE:
    case MDB_COMMIT:
      if (request == MDB_SET) MDB_COUNT(mdbDispatchSet);
      else if (request == MDB_VALIDATE) MDB_COUNT(mdbDispatchValidate);
      else MDB_COUNT(mdbDispatchCommit);
      // Read-only is the value 1 exactly: index columns (17) and
      // not-accessible objects (8) are not stopped here.
      if (object->access == MDB_ACCESS_RO) {
        MDB_COUNT(mdbDispatchReadOnly);
        DISPATCH_DEBUG("%s:%d: MDB dispatch, object %s is read only.\r\n", objectName);
        return mdbErrorNotWritable();
      }
      break;
    default:
      MDB_COUNT(mdbDispatchUnknownRequest);
      DISPATCH_DEBUG("%s:%d: MDB dispatch, object %s using an invalid request %s.\r\n", objectName,
                     mdbRequest2Name(request));
      return mdbErrorGenError();
  }

  if (gMdbInfo.entryHook != nullptr) {
    MDB_COUNT(mdbDispatchEntryHook);
    if (gMdbInfo.entryHook(objectName, request, &crb) != 0) return static_cast<uint32_t>(-1);
    *pFlags = crb.flags;
  }
  MDB_COUNT(mdbDispatchObjHandler);

  uint32_t rc;
  if (request == MDB_SET || request == MDB_FORCE_SET) {
    rc = object->handler(MDB_VALIDATE, &crb);
    DISPATCH_DEBUG("%s:%d: MDB dispatch, object %s %s request rc (%d).\r\n", objectName, mdbRequest2Name(request),
                   static_cast<int>(rc));
    *pFlags = crb.flags;
    if (rc == 0) {
      const bool logged = (*pFlags & MDB_FLAG_LOGGED) != 0;
      bool eventBlocked = false;
      char changeText[kChangeTextSize];
      uintptr_t changeWord = 0;
      changeText[0] = '\0';
      if (logged && entry->changeFormatter != nullptr) {
        // Keep the value before the commit for the formatter of the event.
        MdbCrb before = crb;
        before.pValueBuf = oldValue;
        before.valueLen = kOldValueSize;
        before.oldValue = nullptr;
        before.oldValueLen = 0;
        if (object->handler(MDB_GET, &before) == 0) {
          crb.oldValue = oldValue;
          crb.oldValueLen = before.valueLen;
          if (entry->changeFormatter(objectName, crb.pIndex, crb.indexSubIdCount, crb.flags, changeText,
                                     kChangeTextSize - 1, &changeWord) != 0)
            eventBlocked = true;
        } else {
          eventBlocked = true;
        }
      }
      rc = object->handler(MDB_COMMIT, &crb);
      *pFlags = crb.flags;
      if (rc == 0 && logged && !eventBlocked)
        mdbConfgChangeNotify(&crb, changeText, kChangeTextSize - 1, changeWord);
    }
  } else {
    if (request == MDB_GET && (crb.flags & MDB_FLAG_TSC) != 0 && gMdbInfo.getHook != nullptr)
      gMdbInfo.getHook(objectName, callerTag, &crb);
    rc = object->handler(request, &crb);
    DISPATCH_DEBUG("%s:%d: MDB dispatch, object %s %s request rc (%d).\r\n", objectName, mdbRequest2Name(request),
                   static_cast<int>(rc));
  }

  if (rc == 0 && (request == MDB_GET || request == MDB_GET_NEXT)) {
    if (pValueLen != nullptr) *pValueLen = crb.valueLen;
    *pIndexCount = crb.indexSubIdCount;
    *pFlags = crb.flags;
  }
  if (rc == 0 && gMdbInfo.exitHook != nullptr) {
    MDB_COUNT(mdbDispatchExitHook);
    rc = gMdbInfo.exitHook(objectName, request, &crb);
    if (rc == 0) *pFlags = crb.flags;
  }
  mdbInfoLog(request, node, &crb, rc);

  if (rc == 0 && (request == MDB_SET || request == MDB_VALIDATE || request == MDB_COMMIT)) {
    std::atomic_ref<uint32_t>(node->module->lastChange).store(mdbCentiSecsGet(), std::memory_order_relaxed);
    if ((crb.flags & MDB_FLAG_NO_TRIGGER) != 0) return rc;
    DISPATCH_DEBUG("%s:%d: MDB dispatch, object %s %s request crb flags (%s/%s) immediate (%p) tsc (%p).\r\n",
                   objectName, mdbRequest2Name(request), (crb.flags & MDB_FLAG_IMMEDIATE) ? "y" : "n",
                   (crb.flags & MDB_FLAG_TSC) ? "y" : "n", reinterpret_cast<void*>(gMdbInfo.immediateHook),
                   reinterpret_cast<void*>(gMdbInfo.tscHook));
    if ((crb.flags & MDB_FLAG_IMMEDIATE) != 0 && gMdbInfo.immediateHook != nullptr)
      gMdbInfo.immediateHook(objectName, callerTag, &crb);
    if ((crb.flags & MDB_FLAG_TSC) != 0 && gMdbInfo.tscHook != nullptr)
      gMdbInfo.tscHook(objectName, callerTag, &crb);
  }
  return rc;
}

}  // namespace

uint32_t mdbDispatch(uint32_t request, const char* objectName, uint32_t* pIndex, uint32_t* pIndexCount,
                     void* pValueBuf, uint32_t* pValueLen, uint32_t* pFlags, const void* callerTag) {
  return dispatch(request, objectName, pIndex, pIndexCount, pValueBuf, pValueLen, pFlags, callerTag, 0);
}

// ---------------------------------------------------------------- by numeric id
// Nothing maps an id to a name, so the name stays null and every request ends
// where a null name ends: the family is kept for its callers' sake only.
uint32_t mdbXDispatch(uint32_t request, uint32_t, uint32_t*, uint32_t*, void*, uint32_t*, uint32_t*, const void*) {
  MDB_COUNT(mdbDispatchCalled);
  errnoSet(0);
  Channel ch = channelOf(request);
  DISPATCH_DEBUG("%s:%d: MDB dispatchx, object Name is null.\r\n");
  return mdbErrorGenError();
}

namespace {
uint32_t xCall(MdbStatId counter, uint32_t request, uint32_t objectId, uint32_t* pIndex, uint32_t* pIndexCount,
               const void* pValue, uint32_t* pValueLen, uint32_t flags, const void* callerTag) {
  mdbStatInc(counter);
  return mdbXDispatch(request, objectId, pIndex, pIndexCount, const_cast<void*>(pValue), pValueLen, &flags,
                      callerTag);
}
}  // namespace

uint32_t mdbXGet(uint32_t id, uint32_t* pIndex, uint32_t n, void* buf, uint32_t* len, const void* tag) {
  return xCall(MDB_STAT_mdbGetCalled, MDB_GET, id, pIndex, &n, buf, len, 0x30, tag);
}
uint32_t mdbXNvmGet(uint32_t id, uint32_t* pIndex, uint32_t n, void* buf, uint32_t* len) {
  return xCall(MDB_STAT_mdbNvmGetCalled, MDB_GET, id, pIndex, &n, buf, len, 0x130, nullptr);
}
uint32_t mdbXSet(uint32_t id, uint32_t* pIndex, uint32_t n, const void* v, uint32_t len, const void* tag) {
  return xCall(MDB_STAT_mdbSetCalled, MDB_VALIDATE, id, pIndex, &n, v, &len, 0, tag);
}
uint32_t mdbXSetX(uint32_t id, uint32_t* pIndex, uint32_t n, const void* v, uint32_t len, const void* tag,
                  uint32_t options) {
  return xCall(MDB_STAT_mdbSetCalled, MDB_VALIDATE, id, pIndex, &n, v, &len, 0, tag);
}
uint32_t mdbXForceSet(uint32_t id, uint32_t* pIndex, uint32_t n, const void* v, uint32_t len) {
  return xCall(MDB_STAT_mdbSetCalled, MDB_FORCE_SET, id, pIndex, &n, v, &len, 0x230, nullptr);
}
uint32_t mdbXValidate(uint32_t id, uint32_t* pIndex, uint32_t n, const void* v, uint32_t len, uint32_t options) {
  return xCall(MDB_STAT_mdbValidateCalled, MDB_VALIDATE, id, pIndex, &n, v, &len, options & 0x30, nullptr);
}
uint32_t mdbXCommit(uint32_t id, uint32_t* pIndex, uint32_t n, const void* v, uint32_t len, uint32_t options,
                    const void* tag) {
  return xCall(MDB_STAT_mdbCommitCalled, MDB_COMMIT, id, pIndex, &n, v, &len, options & 0x30, tag);
}
uint32_t mdbXGetNext(uint32_t id, uint32_t* pIndex, uint32_t, uint32_t* pIndexCount, void* buf, uint32_t* len,
                     const void* tag) {
  return xCall(MDB_STAT_mdbGetNextCalled, MDB_GET_NEXT, id, pIndex, pIndexCount, buf, len, 0x30, tag);
}
uint32_t mdbXNvmSet(uint32_t id, uint32_t* pIndex, uint32_t n, const void* v, uint32_t len) {
  return xCall(MDB_STAT_mdbSetNvmCalled, MDB_SET_NVM, id, pIndex, &n, v, &len, 0x30, nullptr);
}
uint32_t mdbXRemove(uint32_t id, uint32_t* pIndex, uint32_t n) {
  return xCall(MDB_STAT_mdbRemoveCalled, MDB_FORCE_SET, id, pIndex, &n, nullptr, nullptr, 0xB0, nullptr);
}
