// The substitute services by prefix: keys to index sub-ids and back, with the
// codec of the table the catalogue declared for the prefix.
#include "services/svc_binding.h"
#include "framework/fw.h"

#include <map>
#include <mutex>
#include <string>

struct SvcBinding {
  SvcServiceId service;
  const FwEntry* codec;  // null for a scalar group
};

namespace {

std::mutex gBindingLock;
// Bindings live as long as the process (command tasks may still run while it
// exits), so the map is never destroyed.
std::map<std::string, SvcBinding>& bindings() {
  static auto* map = new std::map<std::string, SvcBinding>();
  return *map;
}

SvcBinding* bind(const char* prefix, bool table, const FwEntry* codec) {
  std::lock_guard guard(gBindingLock);
  auto it = bindings().find(prefix);
  if (it == bindings().end()) {
    SvcServiceId service = svcServiceDeclare(prefix, table);
    if (service == nullptr) return nullptr;
    it = bindings().emplace(prefix, SvcBinding{service, codec}).first;
  } else if (it->second.codec == nullptr && codec != nullptr) {
    it->second.codec = codec;
  }
  return &it->second;
}

SvcBinding* resolve(SvcRef* ref, bool table) {
  SvcBinding* b = ref->binding.load(std::memory_order_acquire);
  if (b != nullptr) return b;
  {
    std::lock_guard guard(gBindingLock);
    auto it = bindings().find(ref->prefix);
    if (it != bindings().end()) b = &it->second;
  }
  if (b == nullptr || (table && b->codec == nullptr)) return nullptr;
  ref->binding.store(b, std::memory_order_release);
  return b;
}

// The key's sub-ids; 0 if the key cannot be encoded.
uint32_t encode(const SvcBinding* b, uintptr_t key, uint32_t* sub) {
  return fwIndexEncode(b->codec, key, sub, SVC_MAX_KEY);
}

// Sub-ids from the store into the caller's key (the integer, or its record).
int decodeInto(const SvcBinding* b, const uint32_t* sub, uint32_t count, void* keyOut) {
  const FwEntry* e = b->codec;
  uintptr_t key = 0;
  if (e->keySize == 0) {
    if (fwIndexDecode(e, sub, count, &key, nullptr) != 0) return SVC_ERR_UNKNOWN;
    *static_cast<uint32_t*>(keyOut) = static_cast<uint32_t>(key);
    return 0;
  }
  return fwIndexDecode(e, sub, count, &key, static_cast<uint8_t*>(keyOut)) == 0 ? 0 : SVC_ERR_UNKNOWN;
}

}  // namespace

SvcServiceId svcServiceOf(const char* prefix, bool table) {
  SvcBinding* b = bind(prefix, table, nullptr);
  return b != nullptr ? b->service : nullptr;
}

void svcLearnModule(const MdbObjectBinding* list) {
  for (const MdbObjectBinding* row = list; row != nullptr && row->object != nullptr; row++) {
    if (row->object->handler != fwHandler) continue;
    const auto* o = reinterpret_cast<const FwObject*>(row->object);
    const FwEntry* e = o->entry;
    if (e == nullptr || e->service == nullptr) continue;
    SvcBinding* b = bind(e->service, e->isTable(), e->isTable() ? e : nullptr);
    if (b == nullptr || o->attribute == FW_NO_ATTRIBUTE) continue;
    if (o->role != FW_ROLE_PLAIN && o->role != FW_ROLE_WRITE_ONLY && o->role != FW_ROLE_HOOK) continue;
    svcAttributeDeclare(b->service, o->attribute, o->form == FW_FORM_OCTET ? SVC_FORM_OCTET : SVC_FORM_INT);
    if (o->check == FW_CHECK_ROW_STATUS) svcStatusDeclare(b->service, o->attribute, SVC_STATUS_ROW);
    if (o->check == FW_CHECK_ENTRY_STATUS) svcStatusDeclare(b->service, o->attribute, SVC_STATUS_ENTRY);
  }
}

int svcTableFirst(SvcRef* ref, void* keyOut) {
  SvcBinding* b = resolve(ref, true);
  if (b == nullptr || keyOut == nullptr) return SVC_ERR_UNKNOWN;
  uint32_t sub[SVC_MAX_KEY];
  uint32_t count = 0;
  int rc = svcRowFirst(b->service, sub, &count);
  return rc != 0 ? rc : decodeInto(b, sub, count, keyOut);
}

int svcTableNext(SvcRef* ref, uintptr_t keyIn, void* keyOut) {
  SvcBinding* b = resolve(ref, true);
  if (b == nullptr || keyOut == nullptr) return SVC_ERR_UNKNOWN;
  uint32_t sub[SVC_MAX_KEY], next[SVC_MAX_KEY];
  uint32_t count = encode(b, keyIn, sub), nextCount = 0;
  if (count == 0) return SVC_ERR_UNKNOWN;
  int rc = svcRowNext(b->service, sub, count, next, &nextCount);
  return rc != 0 ? rc : decodeInto(b, next, nextCount, keyOut);
}

int svcTableGet(SvcRef* ref, uintptr_t key, uint32_t attribute, void* value) {
  SvcBinding* b = resolve(ref, true);
  if (b == nullptr) return SVC_ERR_UNKNOWN;
  uint32_t sub[SVC_MAX_KEY];
  uint32_t count = encode(b, key, sub);
  if (count == 0) return SVC_ERR_UNKNOWN;
  return svcRowGet(b->service, sub, count, attribute, value);
}

int svcTableSet(SvcRef* ref, uintptr_t key, uint32_t attribute, void* value) {
  SvcBinding* b = resolve(ref, true);
  if (b == nullptr) return SVC_ERR_UNKNOWN;
  uint32_t sub[SVC_MAX_KEY];
  uint32_t count = encode(b, key, sub);
  if (count == 0) return SVC_ERR_UNKNOWN;
  return svcRowSet(b->service, sub, count, attribute, value);
}

int svcGroupGet(SvcRef* ref, uint32_t attribute, void* value) {
  SvcBinding* b = resolve(ref, false);
  return b != nullptr ? svcScalarGet(b->service, attribute, value) : SVC_ERR_UNKNOWN;
}

int svcGroupSet(SvcRef* ref, uint32_t attribute, void* value) {
  SvcBinding* b = resolve(ref, false);
  return b != nullptr ? svcScalarSet(b->service, attribute, value) : SVC_ERR_UNKNOWN;
}
