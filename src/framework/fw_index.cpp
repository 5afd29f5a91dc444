// Index codecs, and the Next and Validate functions of entries by their rules.
#include "framework/fw.h"
#include "platform/mibindex.h"

#include <cstring>

namespace {

inline void putInt(uint8_t* field, uint8_t width, uint32_t v) {
  if (width == 1) {
    *field = static_cast<uint8_t>(v);
  } else if (width == 2) {
    uint16_t s = static_cast<uint16_t>(v);
    memcpy(field, &s, 2);
  } else {
    memcpy(field, &v, 4);
  }
}

inline uint32_t getInt(const uint8_t* field, uint8_t width) {
  if (width == 1) return *field;
  if (width == 2) {
    uint16_t s;
    memcpy(&s, field, 2);
    return s;
  }
  uint32_t v;
  memcpy(&v, field, 4);
  return v;
}

inline bool singleInteger(const FwEntry* e) {
  return e->keySize == 0 && e->columnCount == 1 && e->columns[0].kind == FW_IDX_INT;
}

}  // namespace

int fwIndexDecode(const FwEntry* e, const uint32_t* index, uint32_t count, uintptr_t* key, uint8_t* record) {
  *key = 0;
  if (e->columnCount == 0) return 0;
  if (singleInteger(e)) {
    if (count < 1) return -1;
    *key = index[0];
    return 0;
  }
  if (record == nullptr || e->keySize > FW_MAX_KEY) return -1;
  memset(record, 0, e->keySize);
  uint32_t pos = 0;
  for (uint32_t c = 0; c < e->columnCount; c++) {
    const FwIndexColumn& col = e->columns[c];
    uint8_t* field = record + col.offset;
    switch (col.kind) {
      case FW_IDX_INT:
        if (pos + 1 > count) return -1;
        putInt(field, col.width, index[pos++]);
        break;
      case FW_IDX_IP4: {
        if (pos + 4 > count) return -1;
        uint32_t address = ip4MibIndex2Addr(index + pos);
        memcpy(field, &address, 4);
        pos += 4;
        break;
      }
      case FW_IDX_IP6:
        if (pos + 16 > count) return -1;
        ip6MibIndex2Addr(index + pos, field);
        pos += 16;
        break;
      case FW_IDX_MAC:
      case FW_IDX_FIXED: {
        uint32_t n = col.kind == FW_IDX_MAC ? 6u : col.size;
        if (pos + n > count) return -1;
        mibindex2str(index + pos, n, reinterpret_cast<char*>(field), n);
        pos += n;
        break;
      }
      case FW_IDX_STRING:
      case FW_IDX_IMPLIED_STRING:
      case FW_IDX_OID:
      case FW_IDX_IMPLIED_OID: {
        const bool implied = col.kind == FW_IDX_IMPLIED_STRING || col.kind == FW_IDX_IMPLIED_OID;
        uint32_t n;
        if (implied) {
          n = count - pos;
        } else {
          if (pos + 1 > count) return -1;
          n = index[pos++];
        }
        // A client's length is never trusted: one longer than the field names no row.
        if (n > col.size || n > count - pos) return -1;
        if (col.kind == FW_IDX_STRING || col.kind == FW_IDX_IMPLIED_STRING)
          mibindex2str(index + pos, n, reinterpret_cast<char*>(field), col.size);
        else
          memcpy(field, index + pos, n * sizeof(uint32_t));
        memcpy(record + col.lengthOffset, &n, 4);
        pos += n;
        break;
      }
      default:
        return -1;
    }
  }
  *key = reinterpret_cast<uintptr_t>(record);
  return 0;
}

uint32_t fwIndexEncode(const FwEntry* e, uintptr_t key, uint32_t* index, uint32_t capacity) {
  if (e->columnCount == 0) return 0;
  if (singleInteger(e)) {
    if (capacity < 1) return 0;
    index[0] = static_cast<uint32_t>(key);
    return 1;
  }
  const uint8_t* record = reinterpret_cast<const uint8_t*>(key);
  if (record == nullptr) return 0;
  uint32_t pos = 0;
  for (uint32_t c = 0; c < e->columnCount; c++) {
    const FwIndexColumn& col = e->columns[c];
    const uint8_t* field = record + col.offset;
    switch (col.kind) {
      case FW_IDX_INT:
        if (pos + 1 > capacity) return 0;
        index[pos++] = getInt(field, col.width);
        break;
      case FW_IDX_IP4: {
        if (pos + 4 > capacity) return 0;
        uint32_t address;
        memcpy(&address, field, 4);
        ip4Addr2MibIndex(address, index + pos);
        pos += 4;
        break;
      }
      case FW_IDX_IP6:
        if (pos + 16 > capacity) return 0;
        ip6Addr2MibIndex(field, index + pos);
        pos += 16;
        break;
      case FW_IDX_MAC:
      case FW_IDX_FIXED: {
        uint32_t n = col.kind == FW_IDX_MAC ? 6u : col.size;
        if (pos + n > capacity) return 0;
        str2mibindex(reinterpret_cast<const char*>(field), n, index + pos, n);
        pos += n;
        break;
      }
      case FW_IDX_STRING:
      case FW_IDX_IMPLIED_STRING:
      case FW_IDX_OID:
      case FW_IDX_IMPLIED_OID: {
        const bool implied = col.kind == FW_IDX_IMPLIED_STRING || col.kind == FW_IDX_IMPLIED_OID;
        uint32_t n;
        memcpy(&n, record + col.lengthOffset, 4);
        if (n > col.size) n = col.size;  // a service's length is bounded by its field too
        if (pos + n + (implied ? 0u : 1u) > capacity) return 0;
        if (!implied) index[pos++] = n;
        if (col.kind == FW_IDX_STRING || col.kind == FW_IDX_IMPLIED_STRING)
          str2mibindex(reinterpret_cast<const char*>(field), n, index + pos, n);
        else
          memcpy(index + pos, field, n * sizeof(uint32_t));
        pos += n;
        break;
      }
      default:
        return 0;
    }
  }
  return pos;
}

int fwIndexColumnAt(const FwEntry* e, const uint32_t* index, uint32_t count, uint32_t column) {
  uint32_t pos = 0;
  for (uint32_t c = 0; c < e->columnCount && c < column; c++) {
    const FwIndexColumn& col = e->columns[c];
    switch (col.kind) {
      case FW_IDX_STRING:
      case FW_IDX_OID:
        if (pos >= count) return -1;
        pos += 1 + index[pos];
        break;
      case FW_IDX_IMPLIED_STRING:
      case FW_IDX_IMPLIED_OID:
        pos = count;
        break;
      default:
        pos += FwEntry::fwIndexColumnMax(col);
    }
  }
  return column < e->columnCount && pos < count ? static_cast<int>(pos) : -1;
}

uint32_t fwNextIndex(const FwEntry* e, MdbCrb* mdb) {
  switch (e->next) {
    case FW_NEXT_EMPTY:
      return static_cast<uint32_t>(-1);
    case FW_NEXT_SINGLE:
      if (mdb->indexSubIdCount != 0) return static_cast<uint32_t>(-1);
      mdb->pIndex[0] = 1;
      mdb->indexSubIdCount = 1;
      return 0;
    case FW_NEXT_HOOK:
      return e->nextHook != nullptr ? e->nextHook(e, mdb) : static_cast<uint32_t>(-1);
    case FW_NEXT_FULL:
    case FW_NEXT_ANY:
      break;
    default:
      return static_cast<uint32_t>(-1);
  }
  if (e->table.getFirst == nullptr || e->table.getNext == nullptr) return static_cast<uint32_t>(-1);
  alignas(8) uint8_t in[FW_MAX_KEY];
  alignas(8) uint8_t out[FW_MAX_KEY];
  const uint32_t count = mdb->indexSubIdCount;
  const uint32_t max = mdb->indexSubIdCountMax;
  uint32_t integer = 0;
  void* keyOut = singleInteger(e) ? static_cast<void*>(&integer) : static_cast<void*>(out);
  int rc;
  if (count == 0 || (e->next == FW_NEXT_FULL && count < max)) {
    rc = e->table.getFirst(keyOut);
  } else {
    // Any-index: the sub-ids beyond the count are read as they stand.
    uint32_t readable = count;
    if (e->next == FW_NEXT_ANY && readable < max) readable = max < MDB_MAX_INDEX ? max : MDB_MAX_INDEX;
    if (readable > MDB_MAX_INDEX) readable = MDB_MAX_INDEX;
    uintptr_t keyIn;
    if (fwIndexDecode(e, mdb->pIndex, readable, &keyIn, in) != 0) return static_cast<uint32_t>(-1);
    rc = e->table.getNext(keyIn, keyOut);
  }
  if (rc != 0) return static_cast<uint32_t>(rc);
  uintptr_t key = singleInteger(e) ? integer : reinterpret_cast<uintptr_t>(out);
  uint32_t written = fwIndexEncode(e, key, mdb->pIndex, MDB_MAX_INDEX);
  if (written == 0) return static_cast<uint32_t>(-1);
  mdb->indexSubIdCount = written;
  return 0;
}

uint32_t fwValidateIndex(const FwEntry* e, MdbCrb* mdb) {
  switch (e->validate) {
    case FW_VALIDATE_NONE:
      return 0;
    case FW_VALIDATE_FIRST_BELOW:
      return mdb->pIndex[0] < e->validateLimit ? 0 : static_cast<uint32_t>(-1);
    case FW_VALIDATE_TWO_BELOW: {
      uint32_t first = mdb->pIndex[0];
      if (first >= e->validateLimit || first + 1 >= MDB_MAX_INDEX) return static_cast<uint32_t>(-1);
      return mdb->pIndex[first + 1] < e->validateLimit ? 0 : static_cast<uint32_t>(-1);
    }
    case FW_VALIDATE_FULL_COUNT:
      return mdb->indexSubIdCount >= mdb->indexSubIdCountMax ? 0 : mdbErrorNoSuchInstance();
    case FW_VALIDATE_HOOK:
      return e->validateHook != nullptr ? e->validateHook(e, mdb) : 0;
    default:
      return static_cast<uint32_t>(-1);
  }
}
