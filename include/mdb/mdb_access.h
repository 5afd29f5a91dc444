// Value accessors and index helpers: how a handler touches its request record.
#ifndef MDB_ACCESS_H
#define MDB_ACCESS_H

#include <cstdint>

#include "mdb/mdb_types.h"

// Accessors. Values lie in pValueBuf in the machine's byte order; 64-bit values
// as two u32, high word first. The Set family stores its fixed size (the
// caller's buffer must have room); octetSet and oidSet respect the capacity
// that valueLen brings in. A null pValueBuf (a request under
// MDB_FLAG_NULL_BUF_OK) reads as 0 and takes no store.
void ulongSet(MdbCrb* mdb, uint32_t value);
uint32_t ulongGet(const MdbCrb* mdb);
void slongSet(MdbCrb* mdb, int32_t value);
int32_t slongGet(const MdbCrb* mdb);
void ushortSet(MdbCrb* mdb, uint16_t value);
uint16_t ushortGet(const MdbCrb* mdb);
void ucharSet(MdbCrb* mdb, uint8_t value);
uint8_t ucharGet(const MdbCrb* mdb);
void ulonglongSet(MdbCrb* mdb, uint32_t high, uint32_t low);
void quadSet(MdbCrb* mdb, uint64_t value);
uint64_t quadGet(const MdbCrb* mdb);
void octetSet(MdbCrb* mdb, const void* source, uint32_t length);
uint8_t* octetGet(const MdbCrb* mdb);
void oidSet(MdbCrb* mdb, const uint32_t* arcs, uint32_t count);
uint32_t* oidGet(const MdbCrb* mdb);
// These keep the value in the pointer field itself, not behind it: an object
// uses either this family or the one above, never both.
void pUlongSet(MdbCrb* mdb, uint32_t value);
void pUcharSet(MdbCrb* mdb, uint8_t value);
uint32_t pUlongGet(const MdbCrb* mdb);
uint8_t pUcharGet(const MdbCrb* mdb);

// Index helpers.
int mdbScalarValidate(uint32_t requestKind, MdbCrb* mdb);  // 0 or -1 (not an error code)
uint32_t mdbNextScalarIndex(MdbCrb* mdb);
uint32_t mdbNextSimpleIndex(MdbCrb* mdb);
uint32_t mdbNextAddressIndex(MdbCrb* mdb);
uint32_t mdbNextMACIndex(MdbCrb* mdb);
int mdbIndexesAreEqual(const uint32_t* a, const uint32_t* b, uint32_t count);
uint32_t mdbScalarIntGet(const char* name, uint32_t* pValue);

// OIDs: oidcmp tests equality (1 or 0); oidcmp2 orders (-1, 0, 1), arc by arc
// as unsigned numbers, a prefix before the longer OID.
int oidcmp(uint32_t lengthA, const uint32_t* a, uint32_t lengthB, const uint32_t* b);
int oidcmp2(uint32_t lengthA, const uint32_t* a, uint32_t lengthB, const uint32_t* b);

#endif
