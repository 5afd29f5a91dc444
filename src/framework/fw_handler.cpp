// The generic handler: the one object handler of every declared module. It
// judges the index, finds the next instance, then serves the object by its
// row: read, validate, write, with the entry's service operations.
#include "framework/fw.h"
#include "platform/mibindex.h"

#include <cstring>

namespace {

inline int serviceGet(const FwEntry* e, uintptr_t key, uint32_t attribute, void* value) {
  if (e->isTable()) return e->table.getApi != nullptr ? e->table.getApi(key, attribute, value) : -1;
  return e->scalar.getApi != nullptr ? e->scalar.getApi(0, attribute, value) : -1;
}

inline int serviceSet(const FwEntry* e, uintptr_t key, uint32_t attribute, void* value) {
  if (e->isTable()) return e->table.setApi != nullptr ? e->table.setApi(key, attribute, value) : -1;
  return e->scalar.setApi != nullptr ? e->scalar.setApi(0, attribute, value) : -1;
}

// A service's failure, by the entry's convention.
uint32_t serviceFailed(const FwEntry* e, int rc, bool write) {
  switch (e->failure) {
    case FW_FAIL_GENERIC: return write ? mdbErrorCommitFailed() : mdbErrorGenError();
    case FW_FAIL_GENERIC_ALL: return mdbErrorGenError();
    default: return static_cast<uint32_t>(rc);
  }
}

uint32_t readIndexColumn(MdbCrb* mdb, const FwEntry* e, const FwObject* o) {
  int at = fwIndexColumnAt(e, mdb->pIndex, mdb->indexSubIdCount, o->indexColumn);
  if (at < 0) return mdbErrorNoSuchInstance();
  const uint32_t* s = mdb->pIndex + at;
  const uint32_t left = mdb->indexSubIdCount - static_cast<uint32_t>(at);
  const FwIndexColumn& col = e->columns[o->indexColumn];
  char bytes[MDB_MAX_INDEX];
  switch (col.kind) {
    case FW_IDX_INT:
      ulongSet(mdb, s[0]);
      return 0;
    case FW_IDX_IP4:
    case FW_IDX_IP6:
    case FW_IDX_MAC:
    case FW_IDX_FIXED: {
      uint32_t n = FwEntry::fwIndexColumnMax(col);
      if (n > left || mibindex2str(s, n, bytes, sizeof bytes) < 0) return mdbErrorNoSuchInstance();
      octetSet(mdb, bytes, n);
      return 0;
    }
    case FW_IDX_STRING:
    case FW_IDX_IMPLIED_STRING: {
      const bool implied = col.kind == FW_IDX_IMPLIED_STRING;
      uint32_t n = implied ? left : s[0];
      const uint32_t* chars = implied ? s : s + 1;
      if (n > left - (implied ? 0u : 1u) || mibindex2str(chars, n, bytes, sizeof bytes) < 0)
        return mdbErrorNoSuchInstance();
      octetSet(mdb, bytes, n);
      return 0;
    }
    case FW_IDX_OID:
    case FW_IDX_IMPLIED_OID: {
      const bool implied = col.kind == FW_IDX_IMPLIED_OID;
      uint32_t n = implied ? left : s[0];
      if (n > left - (implied ? 0u : 1u)) return mdbErrorNoSuchInstance();
      oidSet(mdb, implied ? s : s + 1, n);
      return 0;
    }
    default:
      return mdbErrorNoSuchInstance();
  }
}

uint32_t readObject(MdbCrb* mdb, const FwEntry* e, const FwObject* o, FwCall* call) {
  switch (o->role) {
    case FW_ROLE_CONST:
      if (o->form == FW_FORM_INT) ulongSet(mdb, o->constant);
      else octetSet(mdb, nullptr, 0);
      return 0;
    case FW_ROLE_NO_SERVICE:
      if (o->form == FW_FORM_INT) ulongSet(mdb, 0);
      else octetSet(mdb, nullptr, 0);
      return 0;
    case FW_ROLE_WRITE_ONLY:
      return 0;  // no read branch: the request's value stays as it came
    default:
      break;
  }
  int rc;
  if (o->form == FW_FORM_INT) {
    rc = serviceGet(e, call->key, o->attribute, &call->slot);
    if (rc != 0 && e->failure != FW_FAIL_IGNORE) return serviceFailed(e, rc, false);
    ulongSet(mdb, call->slot);
    return 0;
  }
  if (o->readCapacity != 0 && o->readCapacity < call->holder.length) call->holder.length = o->readCapacity;
  rc = serviceGet(e, call->key, o->attribute, &call->holder);
  if (rc != 0 && e->failure != FW_FAIL_IGNORE) return serviceFailed(e, rc, false);
  uint32_t n = call->holder.length < call->bufferSize ? call->holder.length : call->bufferSize;
  octetSet(mdb, call->buffer, n);
  return 0;
}

uint32_t validateObject(MdbCrb* mdb, const FwObject* o) {
  bool ok = true;
  uint32_t v = 0;
  switch (o->check) {
    case FW_CHECK_RANGE:
      v = ulongGet(mdb);
      ok = v >= o->lo && v <= o->hi;
      break;
    case FW_CHECK_SIGNED_RANGE: {
      int32_t s = slongGet(mdb);
      ok = s >= static_cast<int32_t>(o->lo) && s <= static_cast<int32_t>(o->hi);
      break;
    }
    case FW_CHECK_LENGTH:
      if (mdb->valueLen > o->hi) return mdbErrorInvalidLength();
      break;
    case FW_CHECK_ROW_STATUS:
      v = ulongGet(mdb);
      ok = v >= 1 && v <= 6;
      break;
    case FW_CHECK_ENTRY_STATUS:
      v = ulongGet(mdb);
      ok = v >= 1 && v <= 4;
      break;
    default:
      break;
  }
  if (!ok) return o->lengthError ? mdbErrorInvalidLength() : mdbErrorInvalidRange();
  mdb->flags |= MDB_FLAG_VALIDATED;
  return 0;
}

// What a write may carry, judged before any hook reads it: an integer is
// exactly the 4 bytes the accessors read (a shorter value would be read past
// its end), an octet value at most its catalogued size (an OID's size counts
// sub-ids of 4 bytes) unless the object states a length limit of its own.
bool valueFits(const MdbCrb* mdb, const FwObject* o) {
  if (o->form == FW_FORM_INT) return mdb->valueLen == 4;
  if (o->check == FW_CHECK_LENGTH || o->desc.size == 0) return true;
  const uint32_t limit = o->desc.type == MDB_TYPE_OID ? o->desc.size * 4 : o->desc.size;
  return mdb->valueLen <= limit;
}

uint32_t writeObject(MdbCrb* mdb, const FwEntry* e, const FwObject* o, FwCall* call) {
  if (o->role == FW_ROLE_CONST || o->role == FW_ROLE_NO_SERVICE) return 0;
  int rc;
  if (o->form == FW_FORM_INT) {
    call->slot = ulongGet(mdb);
    rc = serviceSet(e, call->key, o->attribute, &call->slot);
  } else {
    // The service reads the request's own bytes: nothing is copied.
    MdbOctetValue value{octetGet(mdb), mdb->valueLen};
    rc = serviceSet(e, call->key, o->attribute, &value);
  }
  return rc == 0 ? 0 : serviceFailed(e, rc, true);
}

}  // namespace

uint32_t fwHandler(uint32_t kind, MdbCrb* mdb) {
  const FwObject* o = fwObjectOf(mdb);
  const FwEntry* e = fwEntryOf(mdb);
  if (o == nullptr || e == nullptr) return mdbErrorGenError();
  if (e->snmpRefused && (mdb->flags & MDB_FLAG_SNMP) != 0) return mdbErrorRequestMap(kind);

  alignas(8) uint8_t record[FW_MAX_KEY];
  alignas(8) uint8_t buffer[FW_MAX_BUFFER];
  FwCall call;
  call.entry = e;
  call.object = o;
  call.key = 0;
  call.buffer = buffer;
  call.bufferSize = e->bufferSize < FW_MAX_BUFFER ? e->bufferSize : static_cast<uint32_t>(FW_MAX_BUFFER);
  call.holder = MdbOctetValue{buffer, call.bufferSize};
  call.slot = 0;

  if (!e->isTable()) {
    if (mdbScalarValidate(kind, mdb) != 0) return mdbErrorRequestMap(kind);
    if (kind == MDB_GET_NEXT && mdbNextScalarIndex(mdb) != 0) return mdbErrorNoNextInstance();
  } else {
    if (kind == MDB_GET_NEXT && fwNextIndex(e, mdb) != 0) return mdbErrorNoNextInstance();
    if (fwValidateIndex(e, mdb) != 0) return mdbErrorRequestMap(kind);
    if (fwIndexDecode(e, mdb->pIndex, mdb->indexSubIdCount, &call.key, record) != 0)
      return mdbErrorRequestMap(kind);
  }

  if ((kind == MDB_VALIDATE || kind == MDB_COMMIT || kind == MDB_SET_NVM) && o->role != FW_ROLE_INDEX &&
      o->role != FW_ROLE_UNSERVED && !valueFits(mdb, o))
    return mdbErrorInvalidLength();

  switch (o->role) {
    case FW_ROLE_UNSERVED:
      return mdbErrorNoSuchInstance();
    case FW_ROLE_HOOK:
      return o->hookFn != nullptr ? o->hookFn(kind, mdb, &call) : mdbErrorNoSuchInstance();
    case FW_ROLE_INDEX:
      if (kind == MDB_GET_NEXT || kind == MDB_GET) return readIndexColumn(mdb, e, o);
      if (kind == MDB_SET_NVM || kind == MDB_VALIDATE || kind == MDB_COMMIT) return mdbErrorNotWritable();
      return 0;
    default:
      break;
  }
  return fwServePlain(kind, mdb, &call);
}

uint32_t fwServePlain(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  const FwEntry* e = call->entry;
  const FwObject* o = call->object;
  const bool writable = (o->desc.access & (MDB_ACCESS_WRITE | MDB_ACCESS_CREATE)) != 0;
  switch (kind) {
    case MDB_GET_NEXT:
    case MDB_GET:
      return readObject(mdb, e, o, call);
    case MDB_VALIDATE:
      return writable ? validateObject(mdb, o) : mdbErrorNotWritable();
    case MDB_SET_NVM:
    case MDB_COMMIT:
      return writable ? writeObject(mdb, e, o, call) : mdbErrorNotWritable();
    default:
      return 0;
  }
}

uint32_t fwSpinLock(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (kind != MDB_VALIDATE) return fwServePlain(kind, mdb, call);
  int rc = call->entry->scalar.getApi(0, call->object->attribute, &call->slot);
  if (rc != 0 && call->entry->failure != FW_FAIL_IGNORE) return static_cast<uint32_t>(rc);
  ulongSet(mdb, call->slot);
  return 0;
}
