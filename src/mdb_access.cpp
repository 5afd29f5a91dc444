// Value accessors and index helpers.
#include "mdb/mdb_access.h"
#include "mdb/mdb_errors.h"
#include "mdb/mdb_verbs.h"

#include <cstring>

namespace {
// The buffer may lie anywhere in a client's frame: copy, never cast.
template <typename T>
inline void store(MdbCrb* mdb, T value) {
  if (mdb->pValueBuf != nullptr) memcpy(mdb->pValueBuf, &value, sizeof value);
  mdb->valueLen = sizeof value;
}

template <typename T>
inline T load(const MdbCrb* mdb) {
  T value{};
  if (mdb->pValueBuf != nullptr) memcpy(&value, mdb->pValueBuf, sizeof value);
  return value;
}
}  // namespace

void ulongSet(MdbCrb* mdb, uint32_t value) { store(mdb, value); }
uint32_t ulongGet(const MdbCrb* mdb) { return load<uint32_t>(mdb); }
void slongSet(MdbCrb* mdb, int32_t value) { store(mdb, value); }
int32_t slongGet(const MdbCrb* mdb) { return load<int32_t>(mdb); }
void ushortSet(MdbCrb* mdb, uint16_t value) { store(mdb, value); }
uint16_t ushortGet(const MdbCrb* mdb) { return load<uint16_t>(mdb); }
void ucharSet(MdbCrb* mdb, uint8_t value) { store(mdb, value); }
uint8_t ucharGet(const MdbCrb* mdb) { return load<uint8_t>(mdb); }

void ulonglongSet(MdbCrb* mdb, uint32_t high, uint32_t low) {
  uint32_t words[2] = {high, low};
  if (mdb->pValueBuf != nullptr) memcpy(mdb->pValueBuf, words, sizeof words);
  mdb->valueLen = sizeof words;
}

void quadSet(MdbCrb* mdb, uint64_t value) {
  ulonglongSet(mdb, static_cast<uint32_t>(value >> 32), static_cast<uint32_t>(value));
}

uint64_t quadGet(const MdbCrb* mdb) {
  uint32_t words[2] = {0, 0};
  if (mdb->pValueBuf != nullptr) memcpy(words, mdb->pValueBuf, sizeof words);
  return (static_cast<uint64_t>(words[0]) << 32) | words[1];
}

void octetSet(MdbCrb* mdb, const void* source, uint32_t length) {
  // On a read valueLen is the capacity of the caller's buffer: a longer text is cut.
  uint32_t n = length < mdb->valueLen ? length : mdb->valueLen;
  if (source == nullptr || mdb->pValueBuf == nullptr) n = 0;
  if (n != 0) memmove(mdb->pValueBuf, source, n);
  mdb->valueLen = n;
}

uint8_t* octetGet(const MdbCrb* mdb) { return static_cast<uint8_t*>(mdb->pValueBuf); }

void oidSet(MdbCrb* mdb, const uint32_t* arcs, uint32_t count) {
  // An OID is as long as its service says; the caller's capacity bounds it.
  uint32_t room = mdb->valueLen / sizeof(uint32_t);
  if (count > room) count = room;
  if (arcs == nullptr || mdb->pValueBuf == nullptr) count = 0;
  if (count != 0) memmove(mdb->pValueBuf, arcs, count * sizeof(uint32_t));
  mdb->valueLen = count * sizeof(uint32_t);
}

uint32_t* oidGet(const MdbCrb* mdb) { return static_cast<uint32_t*>(mdb->pValueBuf); }

void pUlongSet(MdbCrb* mdb, uint32_t value) {
  mdb->pValueBuf = reinterpret_cast<void*>(static_cast<uintptr_t>(value));
  mdb->valueLen = 4;
}
void pUcharSet(MdbCrb* mdb, uint8_t value) {
  mdb->pValueBuf = reinterpret_cast<void*>(static_cast<uintptr_t>(value));
  mdb->valueLen = 4;
}
uint32_t pUlongGet(const MdbCrb* mdb) { return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(mdb->pValueBuf)); }
uint8_t pUcharGet(const MdbCrb* mdb) { return static_cast<uint8_t>(reinterpret_cast<uintptr_t>(mdb->pValueBuf)); }

// ---------------------------------------------------------------- index helpers
int mdbScalarValidate(uint32_t requestKind, MdbCrb* mdb) {
  MDB_COUNT(mdbScalarValidate);
  if (requestKind == MDB_GET_NEXT) return mdb->indexSubIdCount == 0 ? 0 : -1;
  return mdb->indexSubIdCount == 1 && mdb->pIndex[0] == 0 ? 0 : -1;
}

uint32_t mdbNextScalarIndex(MdbCrb* mdb) {
  MDB_COUNT(mdbNextScalarIndex);
  if (mdb->indexSubIdCount != 0) return mdbErrorNoNextInstance();
  mdb->pIndex[0] = 0;
  mdb->indexSubIdCount = 1;
  return 0;
}

uint32_t mdbNextSimpleIndex(MdbCrb* mdb) {
  MDB_COUNT(mdbNextSimpleIndex);
  if (mdb->indexSubIdCount == 0) {
    mdb->pIndex[0] = 1;
    mdb->indexSubIdCount = 1;
  } else {
    // Past the end is for the handler's service to find out.
    mdb->pIndex[0]++;
  }
  return 0;
}

uint32_t mdbNextAddressIndex(MdbCrb* mdb) {
  MDB_COUNT(mdbNextAddressIndex);
  uint32_t* s = mdb->pIndex;
  uint32_t address = 0;
  if (mdb->indexSubIdCount != 0)
    address = ((s[0] << 24) | (s[1] << 16) | (s[2] << 8) | s[3]) + 1u;  // 255.255.255.255 wraps to 0.0.0.0
  else
    address = 1;
  s[0] = address >> 24;
  s[1] = (address >> 16) & 0xFFu;
  s[2] = (address >> 8) & 0xFFu;
  s[3] = address & 0xFFu;
  mdb->indexSubIdCount = 4;
  return 0;
}

uint32_t mdbNextMACIndex(MdbCrb* mdb) {
  MDB_COUNT(mdbNextAddressIndex);
  uint32_t* s = mdb->pIndex;
  uint32_t high = 0;
  uint32_t low = 1;
  if (mdb->indexSubIdCount != 0) {
    high = (s[0] << 8) | s[1];
    low = ((s[2] << 24) | (s[3] << 16) | (s[4] << 8) | s[5]) + 1u;
    if (low == 0) high++;  // the carry runs from the low four octets into the high two
  }
  s[0] = (high >> 8) & 0xFFu;
  s[1] = high & 0xFFu;
  s[2] = low >> 24;
  s[3] = (low >> 16) & 0xFFu;
  s[4] = (low >> 8) & 0xFFu;
  s[5] = low & 0xFFu;
  mdb->indexSubIdCount = 6;
  return 0;
}

int mdbIndexesAreEqual(const uint32_t* a, const uint32_t* b, uint32_t count) {
  MDB_COUNT(mdbIndexesAreEqual);
  if (count == 0) return 1;
  if (a == nullptr || b == nullptr) return 0;
  return memcmp(a, b, count * sizeof(uint32_t)) == 0 ? 1 : 0;
}

uint32_t mdbScalarIntGet(const char* name, uint32_t* pValue) {
  if (pValue != nullptr) *pValue = 0;
  uint32_t index[1] = {0};
  uint32_t value = 0;
  uint32_t length = sizeof value;
  uint32_t rc = mdbGetApi(name, index, 1, &value, &length, "");
  if (rc == 0 && pValue != nullptr) *pValue = value;
  return rc;
}

int oidcmp(uint32_t lengthA, const uint32_t* a, uint32_t lengthB, const uint32_t* b) {
  if (a == nullptr || b == nullptr || lengthA != lengthB) return 0;
  return memcmp(a, b, lengthA * sizeof(uint32_t)) == 0 ? 1 : 0;
}

int oidcmp2(uint32_t lengthA, const uint32_t* a, uint32_t lengthB, const uint32_t* b) {
  if (a == nullptr) lengthA = 0;
  if (b == nullptr) lengthB = 0;
  uint32_t n = lengthA < lengthB ? lengthA : lengthB;
  for (uint32_t i = 0; i < n; i++) {
    if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
  }
  if (lengthA == lengthB) return 0;
  return lengthA < lengthB ? -1 : 1;
}
