// Registration of a declared module: every row is checked for what its kind
// needs before the dictionary sees it, and the substitute services learn the
// module's schema.
#include "framework/fw.h"
#include "mdb/mdb_dict.h"
#include "platform/logging.h"
#include "services/svc_binding.h"

#include <cstdio>

namespace {

// What is wrong with an object's row, or null.
const char* rowProblem(const MdbObjectBinding* row) {
  const auto* o = reinterpret_cast<const FwObject*>(row->object);
  const FwEntry* e = o->entry;
  if (e == nullptr || &e->desc != row->entry) return "its entry is not the one it is bound to";
  if (o->desc.name == nullptr) return "it has no name";
  if (e->bufferSize > FW_MAX_BUFFER) return "its entry's buffer is larger than a handler's stack allows";
  if (e->keySize > FW_MAX_KEY) return "its entry's key record is too large";
  for (uint32_t c = 0; c < e->columnCount; c++) {
    const FwIndexColumn& col = e->columns[c];
    const bool single = e->keySize == 0 && e->columnCount == 1 && col.kind == FW_IDX_INT;
    uint32_t bytes = col.kind == FW_IDX_INT ? col.width : col.kind == FW_IDX_IP4 ? 4u : col.kind == FW_IDX_IP6 ? 16u
                     : col.kind == FW_IDX_MAC ? 6u : col.kind == FW_IDX_OID || col.kind == FW_IDX_IMPLIED_OID ? col.size * 4u
                                                                                                        : col.size;
    if (!single && col.offset + bytes > e->keySize) return "an index column lies outside the key record";
    const bool counted = col.kind == FW_IDX_STRING || col.kind == FW_IDX_IMPLIED_STRING || col.kind == FW_IDX_OID ||
                         col.kind == FW_IDX_IMPLIED_OID;
    if (counted && col.lengthOffset + 4u > e->keySize) return "an index length field lies outside the key record";
  }
  const bool walks = e->next == FW_NEXT_FULL || e->next == FW_NEXT_ANY;
  if (e->isTable() && walks && (e->table.getFirst == nullptr || e->table.getNext == nullptr))
    return "its table has no GetFirst or GetNext";
  if (e->next == FW_NEXT_HOOK && e->nextHook == nullptr) return "its entry has no Next function";
  if (e->validate == FW_VALIDATE_HOOK && e->validateHook == nullptr) return "its entry has no Validate function";
  switch (o->role) {
    case FW_ROLE_PLAIN:
    case FW_ROLE_WRITE_ONLY: {
      if (o->attribute == FW_NO_ATTRIBUTE) return "it forwards but names no attribute";
      const bool hasGet = e->isTable() ? e->table.getApi != nullptr : e->scalar.getApi != nullptr;
      const bool hasSet = e->isTable() ? e->table.setApi != nullptr : e->scalar.setApi != nullptr;
      if (o->role == FW_ROLE_PLAIN && !hasGet) return "its service has no Get operation";
      if ((o->desc.access & (MDB_ACCESS_WRITE | MDB_ACCESS_CREATE)) != 0 && !hasSet)
        return "it is writable but its service has no Set operation";
      break;
    }
    case FW_ROLE_HOOK:
      if (o->hookFn == nullptr) return "it has no hook function";
      break;
    case FW_ROLE_INDEX:
      if (o->indexColumn >= e->columnCount) return "it is an index column its entry does not have";
      break;
    default:
      break;
  }
  return nullptr;
}

}  // namespace

int fwModuleRegister(const char* moduleName, uint32_t registrationId, const MdbObjectBinding* bindings) {
  if (moduleName == nullptr || bindings == nullptr) return -1;
  for (const MdbObjectBinding* row = bindings; row->object != nullptr; row++) {
    if (row->object->handler != fwHandler) continue;  // a handler of its own
    const char* problem = rowProblem(row);
    if (problem != nullptr) {
      fprintf(stderr, "mdb: module %s, object %s: %s\n", moduleName,
              row->object->name != nullptr ? row->object->name : "(unnamed)", problem);
      loggingLogOutput(MDB_MODULE_ID, LOGGING_ERR, 0, "module %s, object %s: %s", moduleName,
                       row->object->name != nullptr ? row->object->name : "(unnamed)", problem);
      return -1;
    }
  }
  svcLearnModule(bindings);
  return mdbModuleRegisterEx(moduleName, registrationId, bindings);
}
