// The object dictionary: module table, object table, registration and lookups.
#include "mdb/containers.h"
#include "mdb/mdb_access.h"
#include "mdb/mdb_dict.h"
#include "mdb/mdb_errors.h"
#include "platform/logging.h"
#include "platform/sil.h"

#include <atomic>
#include <cstring>

namespace {

// The bucket counts: about three rows a bucket when a table is full.
const uint32_t kBucketPrimes[] = {7,    13,   23,   31,   47,   53,   71,   89,   101,  199,  223,  293,  311,
                                  397,  409,  499,  509,  599,  607,  691,  709,  797,  811,  887,  907,  997,
                                  1013, 1097, 1109, 1193, 1201, 1297, 1447, 1601, 2003, 2503, 3001, 3511, 4001,
                                  4507, 5003, 5501, 6007, 7001, 7507, 8009, 9001, 9511, 10007, 0};

// A search key: a record whose first field is the wanted name, the rest zero.
inline MdbDictRow searchKey(const char* name) {
  MdbDictRow key{};
  key.name = name;
  return key;
}

MdbDictRow* searchLocked(HashTable* table, const char* name) {
  MdbDictRow key = searchKey(name);
  return static_cast<MdbDictRow*>(hashTableSearchForEntry(table, &key));
}

}  // namespace

uint32_t mdbNumberBuckets(uint32_t count) {
  const uint32_t last = 10007;
  if (count >= 0x30000u) return last;
  uint16_t third = static_cast<uint16_t>(count / 3);
  for (const uint32_t* p = kBucketPrimes; *p != 0; p++) {
    if (*p > third) return *p;
  }
  return last;
}

uint32_t mdbHashFunction(const void* key, uint32_t bucketCount, uint32_t seed) {
  const char* name = *static_cast<const char* const*>(key);
  uint32_t sum = seed;
  uint32_t length = 0;
  for (const unsigned char* p = reinterpret_cast<const unsigned char*>(name); *p != 0; p++, length++) sum += *p;
  sum += length;
  return sum % bucketCount;
}

int mdbHashCompare(const void* a, const void* b, uintptr_t) {
  return strcmp(*static_cast<const char* const*>(a), *static_cast<const char* const*>(b));
}

// ---------------------------------------------------------------- locks
void mdbModRLock(void) { pthread_rwlock_rdlock(&gMdbInfo.moduleLock); }
void mdbModRUnLock(void) { pthread_rwlock_unlock(&gMdbInfo.moduleLock); }
void mdbModWLock(void) { pthread_rwlock_wrlock(&gMdbInfo.moduleLock); }
void mdbModWUnLock(void) { pthread_rwlock_unlock(&gMdbInfo.moduleLock); }
void mdbObjRLock(void) { pthread_rwlock_rdlock(&gMdbInfo.objectLock); }
void mdbObjRUnLock(void) { pthread_rwlock_unlock(&gMdbInfo.objectLock); }
void mdbObjWLock(void) { pthread_rwlock_wrlock(&gMdbInfo.objectLock); }
void mdbObjWUnLock(void) { pthread_rwlock_unlock(&gMdbInfo.objectLock); }

// ---------------------------------------------------------------- tables
int mdbDictInit(void) {
  gMdbInfo.moduleTable = hashTableSimpleCreate(mdbNumberBuckets(MDB_MAX_MODULES), MDB_MAX_MODULES,
                                               sizeof(MdbModuleDesc), mdbHashCompare, mdbHashFunction);
  if (gMdbInfo.moduleTable == nullptr) {
    MDB_DEBUG(0, ~0u, "%s:%d: MDB option init, hash table create for modules failed.\r\n");
    return -1;
  }
  pthread_rwlock_init(&gMdbInfo.moduleLock, nullptr);
  gMdbInfo.objectTable = hashTableSimpleCreate(mdbNumberBuckets(MDB_MAX_OBJECTS), MDB_MAX_OBJECTS,
                                               sizeof(MdbObjectNode), mdbHashCompare, mdbHashFunction);
  if (gMdbInfo.objectTable == nullptr) {
    MDB_DEBUG(0, ~0u, "%s:%d: MDB option init, hash table create for objects failed.\r\n");
    return -1;
  }
  pthread_rwlock_init(&gMdbInfo.objectLock, nullptr);
  return 0;
}

void mdbDictDestroy(void) {
  if (gMdbInfo.moduleTable != nullptr) {
    hashTableDestroy(gMdbInfo.moduleTable);
    gMdbInfo.moduleTable = nullptr;
    pthread_rwlock_destroy(&gMdbInfo.moduleLock);
  }
  if (gMdbInfo.objectTable != nullptr) {
    hashTableDestroy(gMdbInfo.objectTable);
    gMdbInfo.objectTable = nullptr;
    pthread_rwlock_destroy(&gMdbInfo.objectLock);
  }
}

// ---------------------------------------------------------------- registration
int mdbModuleRegisterEx(const char* moduleName, uint32_t registrationId, const MdbObjectBinding* bindings) {
  MDB_COUNT(modRegisterCalled);
  if (moduleName == nullptr || gMdbInfo.moduleTable == nullptr) return -1;
  MDB_DEBUG(0, ~0u, "%s:%d: MDB register module name %s.\r\n", moduleName);

  mdbModRLock();
  MdbDictRow* known = searchLocked(gMdbInfo.moduleTable, moduleName);
  mdbModRUnLock();
  if (known != nullptr) {
    // A second registration under a known name is a silent success.
    MDB_COUNT(modAlreadyExists);
    return 0;
  }

  mdbModWLock();
  auto* module = static_cast<MdbModuleDesc*>(hashTableAllocEntry(gMdbInfo.moduleTable));
  mdbModWUnLock();
  if (module == nullptr) {
    MDB_COUNT(modTableFull);
    MDB_DEBUG(0, ~0u, "%s:%d: MDB alloc module name %s error.\r\n", moduleName);
    return -1;
  }
  MDB_COUNT(modAllocEntry);
  module->name = moduleName;
  module->registrationId = registrationId;
  module->list = bindings;
  module->lastChange = 0;
  module->module = module;

  mdbModWLock();
  if (hashTableAddEntry(gMdbInfo.moduleTable, module) != nullptr) {
    MDB_COUNT(modTotalCount);
    mdbModWUnLock();
  } else {
    MDB_COUNT(modAddFailed);
    MDB_DEBUG(0, ~0u, "%s:%d: MDB add module name %s error.\r\n", moduleName);
    if (hashTableFreeEntry(gMdbInfo.moduleTable, module) != 0)
      MDB_DEBUG(0, ~0u, "%s:%d: MDB free module name %s error.\r\n", moduleName);
    mdbModWUnLock();
    return -1;
  }

  for (const MdbObjectBinding* binding = bindings; binding != nullptr && binding->object != nullptr; binding++) {
    const char* objectName = binding->object->name;
    if (objectName == nullptr) continue;  // a nameless descriptor cannot be looked up
    MDB_DEBUG(0, ~0u, "%s:%d: MDB register object name %s.\r\n", objectName);

    mdbObjRLock();
    MdbDictRow* existing = searchLocked(gMdbInfo.objectTable, objectName);
    mdbObjRUnLock();
    if (existing != nullptr) {
      MDB_COUNT(objAlreadyExists);
      MDB_DEBUG(0, ~0u, "%s:%d: MDB add object name %s error,obj is already exist.\r\n", objectName);
      return -1;
    }
    MDB_COUNT(objNeedsAdding);

    mdbObjWLock();
    auto* node = static_cast<MdbObjectNode*>(hashTableAllocEntry(gMdbInfo.objectTable));
    if (node == nullptr) {
      mdbObjWUnLock();
      MDB_COUNT(objTableFull);
      MDB_DEBUG(0, ~0u, "%s:%d: MDB alloc object name %s error.\r\n", objectName);
      return -1;
    }
    MDB_COUNT(objAllocEntry);
    node->name = objectName;
    node->list = binding;
    node->lastChange = 0;
    node->registrationId = 0;
    node->module = module;
    if (hashTableAddEntry(gMdbInfo.objectTable, node) != nullptr) {
      MDB_COUNT(objTotalCount);
    } else {
      MDB_COUNT(objAddFailed);
      MDB_DEBUG(0, ~0u, "%s:%d: MDB add object name %s error.\r\n", objectName);
      if (hashTableFreeEntry(gMdbInfo.objectTable, node) != 0) {
        MDB_DEBUG(0, ~0u, "%s:%d: MDB free object name %s error.\r\n", objectName);
        mdbObjWUnLock();
        return -1;
      }
      // The row went back to the pool: this one object is simply missing.
    }
    mdbObjWUnLock();
  }
  return 0;
}

int mdbModuleRegister(const char* moduleName, const MdbObjectBinding* bindings) {
  return mdbModuleRegisterEx(moduleName, 0, bindings);
}

int mdbModuleDeRegister(const char* moduleName) {
  MDB_COUNT(modDeRegisterCalled);
  if (moduleName == nullptr || gMdbInfo.moduleTable == nullptr) return -1;
  mdbModWLock();
  MdbDictRow* module = searchLocked(gMdbInfo.moduleTable, moduleName);
  if (module == nullptr) {
    mdbModWUnLock();
    return 0;
  }
  MDB_COUNT(modDeRegisterFound);
  // Deleting returns the row to the pool: read the list first.
  const MdbObjectBinding* bindings = module->list;
  hashTableDeleteEntry(gMdbInfo.moduleTable, module);
  mdbModWUnLock();

  mdbObjWLock();
  for (const MdbObjectBinding* binding = bindings; binding != nullptr && binding->object != nullptr; binding++) {
    if (binding->object->name == nullptr) continue;
    MdbDictRow* node = searchLocked(gMdbInfo.objectTable, binding->object->name);
    if (node == nullptr || hashTableDeleteEntry(gMdbInfo.objectTable, node) != 0) {
      mdbObjWUnLock();
      return -1;
    }
  }
  mdbObjWUnLock();
  return 0;
}

int mdbModuleSearch(const char* moduleName) { return mdbModuleLookup(moduleName) != nullptr ? 0 : -1; }

int mdbModuleGet(const char* moduleName, MdbModuleDesc* out) {
  if (moduleName == nullptr || out == nullptr || gMdbInfo.moduleTable == nullptr) return -1;
  mdbModRLock();
  MdbDictRow* module = searchLocked(gMdbInfo.moduleTable, moduleName);
  if (module != nullptr) {
    out->name = moduleName;
    out->list = module->list;
    out->lastChange = std::atomic_ref<uint32_t>(module->lastChange).load(std::memory_order_relaxed);
    out->registrationId = module->registrationId;
  }
  mdbModRUnLock();
  return module != nullptr ? 0 : -1;
}

int mdbModuleOidReplace(const uint32_t* oldOid, const uint32_t* newOid, uint32_t length) {
  if (oldOid == nullptr || newOid == nullptr || length == 0 || length > 16 || gMdbInfo.moduleTable == nullptr)
    return 0;
  mdbModWLock();
  for (auto* module = static_cast<MdbDictRow*>(hashTableNextEntryUnsorted(gMdbInfo.moduleTable, nullptr));
       module != nullptr;
       module = static_cast<MdbDictRow*>(hashTableNextEntryUnsorted(gMdbInfo.moduleTable, module))) {
    for (const MdbObjectBinding* b = module->list; b != nullptr && b->object != nullptr; b++) {
      const MdbEntryDesc* entry = b->entry;
      if (entry == nullptr || entry->oidLen == 0 || entry->oidLen - 1u < length) continue;
      // Entries are shared by bindings: a rewritten entry no longer matches.
      if (oidcmp(length, entry->oid, length, oldOid)) memcpy(entry->oid, newOid, length * sizeof(uint32_t));
    }
  }
  mdbModWUnLock();
  return 0;
}

// ---------------------------------------------------------------- lookups
const MdbObjectNode* mdbObjectLookup(const char* name) {
  if (name == nullptr || gMdbInfo.objectTable == nullptr) return nullptr;
  mdbObjRLock();
  MdbDictRow* row = searchLocked(gMdbInfo.objectTable, name);
  mdbObjRUnLock();
  return row;
}

const MdbModuleDesc* mdbModuleLookup(const char* name) {
  if (name == nullptr || gMdbInfo.moduleTable == nullptr) return nullptr;
  mdbModRLock();
  MdbDictRow* row = searchLocked(gMdbInfo.moduleTable, name);
  mdbModRUnLock();
  return row;
}

int mdbModuleForEach(int (*fn)(const MdbModuleDesc* module, void* arg), void* arg) {
  if (fn == nullptr || gMdbInfo.moduleTable == nullptr) return 0;
  int rc = 0;
  mdbModRLock();
  for (auto* module = static_cast<MdbDictRow*>(hashTableNextEntryUnsorted(gMdbInfo.moduleTable, nullptr));
       module != nullptr && rc == 0;
       module = static_cast<MdbDictRow*>(hashTableNextEntryUnsorted(gMdbInfo.moduleTable, module))) {
    rc = fn(module, arg);
  }
  mdbModRUnLock();
  return rc;
}

uint32_t mdbModuleCount(void) {
  return gMdbInfo.moduleTable == nullptr ? 0 : static_cast<uint32_t>(hashTableNumEntries(gMdbInfo.moduleTable));
}

uint32_t mdbObjectCount(void) {
  return gMdbInfo.objectTable == nullptr ? 0 : static_cast<uint32_t>(hashTableNumEntries(gMdbInfo.objectTable));
}

uint32_t mdbCentiSecsGet(void) { return static_cast<uint32_t>(silGetUpTime1ms() / 10u); }
