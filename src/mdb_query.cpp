// Object queries and the system scalars of the database itself.
#include "mdb/containers.h"
#include "mdb/mdb_access.h"
#include "mdb/mdb_dict.h"
#include "mdb/mdb_errors.h"
#include "mdb/mdb_subsys.h"
#include "mdb/mdb_verbs.h"
#include "platform/logging.h"
#include "platform/sil.h"

#include <atomic>
#include <cstdio>
#include <cstring>

namespace {

constexpr int kMaxAlternateDepth = 8;  // as in the dispatcher: a longer chain is a loop

uint32_t objInfoGet(const char* name, uint32_t mask, MdbObjInfo* out, int depth) {
  if (name == nullptr || out == nullptr) return mdbErrorGenError();
  errnoSet(0);
  const MdbObjectNode* node = mdbObjectLookup(name);
  if (node == nullptr) return mdbErrorGenError();
  const MdbObjectDesc* object = node->list->object;
  const MdbEntryDesc* entry = node->list->entry;
  if (object->altObject != nullptr) {
    if (depth >= kMaxAlternateDepth) return mdbErrorAltObject();
    return objInfoGet(object->altObject, mask, out, depth + 1);
  }
  if (mask & MDB_INFO_LOCALID) out->localId = object->localId;
  if (mask & MDB_INFO_SUBID) out->subId = object->subId;
  if (mask & MDB_INFO_SIZE) out->size = object->size;
  if (mask & MDB_INFO_RANGE) {
    out->min = object->min;
    out->max = object->max;
  }
  if (mask & MDB_INFO_TYPE) out->type = object->type;
  if (entry == nullptr) return 0;
  if (mask & MDB_INFO_OID) {
    uint32_t arcs = entry->oidLen > 0 ? entry->oidLen - 1u : 0u;
    if (arcs > 16) arcs = 16;
    memcpy(out->oid, entry->oid, arcs * sizeof(uint32_t));
  }
  if (mask & MDB_INFO_OIDLEN) out->oidLen = entry->oidLen;
  if (mask & MDB_INFO_INDEXMIN) out->indexCountMin = entry->indexCountMin;
  if (mask & MDB_INFO_INDEXMAX) out->indexCountMax = entry->indexCountMax;
  if (mask & MDB_INFO_INDEXNAMES) {
    // indexCountMin names, never more than the record holds; a table that
    // declares more index sub-ids than names (a MAC index) leaves the rest.
    uint32_t names = entry->indexCountMin < 12 ? entry->indexCountMin : 12;
    for (uint32_t i = 0; i < names; i++) {
      if (entry->indexNames[i] != nullptr)
        snprintf(out->indexNames[i], sizeof out->indexNames[i], "%s", entry->indexNames[i]);
    }
  }
  return 0;
}

std::atomic_ref<uint8_t> sysState() { return std::atomic_ref<uint8_t>(gMdbInfo.sysState); }

// The path of an export: the text cut to 511 bytes in a zeroed 512-byte buffer.
void makePath(char (&path)[512], const uint8_t* text, uint32_t length) {
  memset(path, 0, sizeof path);
  if (length > 511) length = 511;
  if (text != nullptr) memcpy(path, text, length);
}

}  // namespace

uint32_t mdbObjInfoGet(const char* name, uint32_t mask, MdbObjInfo* out) {
  MDB_COUNT(mdbGetInfoCalled);
  return objInfoGet(name, mask, out, 0);
}

uint32_t mdbObjectNameNextGet(const char* name, char* out, uint32_t outLength) {
  MDB_COUNT(mdbObjectNameNextGetCalled);
  errnoSet(0);
  if (name == nullptr) {
    MDB_DEBUG(2, ~0u, "%s:%d: MDB dispatchx, object name is null\r\n");
    return mdbErrorGenError();
  }
  if (out == nullptr) {
    MDB_DEBUG(2, ~0u, "%s:%d: MDB dispatchx, next object name return buffer is null.\r\n");
    return mdbErrorGenError();
  }
  const MdbObjectNode* node = mdbObjectLookup(name);
  if (node != nullptr) {
    // The walk crosses the tables of the module but never leaves it.
    for (const MdbObjectBinding* b = node->list + 1; b->object != nullptr; b++) {
      if (b->object->access == MDB_ACCESS_NA) continue;
      snprintf(out, outLength, "%s", b->object->name != nullptr ? b->object->name : "");
      return 0;
    }
  }
  MDB_DEBUG(2, ~0u, "%s:%d: MDB dispatchx, object %s not found (%08x).\r\n", name, errnoGet());
  return mdbErrorNoSuchObject();
}

int mdbObjNameGet(const uint32_t* oid, uint32_t oidLength, uint32_t* pOidLen, uint32_t* pIndexCountMax,
                  uint32_t* pType, char* nameOut) {
  if (oid == nullptr || oidLength < 7 || gMdbInfo.moduleTable == nullptr) return -1;
  int rc = -1;
  mdbModRLock();
  for (auto* module = static_cast<MdbModuleDesc*>(hashTableNextEntryUnsorted(gMdbInfo.moduleTable, nullptr));
       module != nullptr && rc != 0;
       module = static_cast<MdbModuleDesc*>(hashTableNextEntryUnsorted(gMdbInfo.moduleTable, module))) {
    for (const MdbObjectBinding* b = module->list; b != nullptr && b->object != nullptr; b++) {
      const MdbEntryDesc* entry = b->entry;
      if (entry == nullptr || entry->oidLen == 0 || oidLength < entry->oidLen) continue;
      uint32_t arcs = entry->oidLen - 1u;
      if (arcs > 16) continue;
      if (memcmp(oid, entry->oid, arcs * sizeof(uint32_t)) != 0 || oid[arcs] != b->object->subId) continue;
      if (nameOut != nullptr) snprintf(nameOut, MDB_NAME_MAX, "%s", b->object->name);
      if (pIndexCountMax != nullptr) *pIndexCountMax = entry->indexCountMax;
      if (pOidLen != nullptr) *pOidLen = entry->oidLen;
      if (pType != nullptr) *pType = b->object->type;
      rc = 0;
      break;
    }
  }
  mdbModRUnLock();
  return rc;
}

int mdbScalarGetApi(uint32_t, uint32_t attribute, void* value) {
  switch (attribute) {
    case 0: {
      auto* holder = static_cast<MdbOctetValue*>(value);
      if (holder == nullptr || holder->data == nullptr) return -1;
      if (holder->length > 511) holder->length = 511;
      char path[512];
      makePath(path, holder->data, holder->length);
      return mdbMibTreeExport(path);
    }
    case 1: {
      // The holder points at a u32 length followed by the text; neither
      // length is trusted beyond the holder's own.
      auto* holder = static_cast<MdbOctetValue*>(value);
      if (holder == nullptr || holder->data == nullptr || holder->length < sizeof(uint32_t)) return -1;
      uint32_t length;
      memcpy(&length, holder->data, sizeof length);
      if (length >= 512) length = 511;
      if (length > holder->length - sizeof(uint32_t)) length = holder->length - sizeof(uint32_t);
      char path[512];
      makePath(path, holder->data + sizeof(uint32_t), length);
      return mdbModuleAllShow(path);
    }
    case 2:
      return 0;
    case 4:
      if (value == nullptr) return -1;
      *static_cast<uint32_t*>(value) = sysState().load(std::memory_order_relaxed);
      return 0;
    case 5: {
      auto* holder = static_cast<MdbOctetValue*>(value);
      if (holder == nullptr || holder->data == nullptr) return -1;
      uint32_t n = static_cast<uint32_t>(strnlen(gMdbInfo.version, sizeof gMdbInfo.version));
      if (n > holder->length) n = holder->length;
      memcpy(holder->data, gMdbInfo.version, n);
      holder->length = n;
      return 0;
    }
    default:
      return -1;
  }
}

int mdbScalarSetApi(uint32_t, uint32_t attribute, void* value) {
  if (attribute == 3) return 0;  // accepted and ignored: clients rely on it
  if (attribute == 4 && value != nullptr) {
    sysState().store(static_cast<uint8_t>(*static_cast<const uint32_t*>(value) & 3u), std::memory_order_relaxed);
    return 0;
  }
  return -1;
}

int mdbScalarSyncApi(uint32_t instance, uint32_t attribute, void* value) {
  return mdbScalarSetApi(instance, attribute, value);
}

int mdbSysStateSet(uint32_t state) {
  sysState().store(static_cast<uint8_t>(state & 3u), std::memory_order_relaxed);
  return 0;
}

uint32_t mdbSysStateGet(void) { return sysState().load(std::memory_order_relaxed); }

uint32_t mdbIoBlock(uint32_t, const char* name, uint32_t*, uint32_t*, void*, uint32_t*) {
  return sysState().load(std::memory_order_relaxed) == 2 && name != nullptr && strncmp(name, "ospfv2:", 7) == 0 ? 1
                                                                                                             : 0;
}
