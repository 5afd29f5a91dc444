// The substitute services' store: one in-memory record per service, keyed by
// attribute id, for the services that the closed libraries would provide.
// A service is a scalar group (one record) or a table (rows kept in the order
// of their index sub-ids, which is the OID order a walk must come out in).
// The store learns each attribute's value form and each table's status
// attribute from the catalogue when the modules register.
#ifndef SERVICES_SVC_STORE_H
#define SERVICES_SVC_STORE_H

#include <cstdint>

#include "mdb/mdb_errors.h"
#include "mdb/mdb_types.h"

// Value forms: an integer is passed as the address of a uint32_t; a string as
// the address of an MdbOctetValue (on a read `length` is the capacity in and
// the bytes delivered out; a longer value is cut to the capacity).
enum SvcForm : uint8_t { SVC_FORM_INT = 1, SVC_FORM_OCTET = 2 };

// Status code sets of a table's status attribute.
enum SvcStatusSet : uint8_t {
  SVC_STATUS_ROW = 1,    // RowStatus: 1 active, 2 notInService, 3 notReady, 4 createAndGo, 5 createAndWait, 6 destroy
  SVC_STATUS_ENTRY = 2,  // EntryStatus: 1 valid, 2 createRequest, 3 underCreation, 4 invalid
};

// What the store answers (the codes are mdb's, so a client sees a known name).
enum : uint32_t {
  SVC_ERR_NO_ROW = MDB_ERR_NO_SUCH_INSTANCE,     // read of a missing row or attribute
  SVC_ERR_NO_CREATION = MDB_ERR_INCONSIST_NAME,  // write of a non-status attribute of a missing row
  SVC_ERR_STATE = MDB_ERR_INCONSIST_VALUE,       // a status value the row's state does not allow
  SVC_ERR_WRONG_VALUE = MDB_ERR_WRONG_VALUE,     // a status value outside its code set, or notReady written
  SVC_ERR_FORM = MDB_ERR_WRONG_TYPE,             // a value in the other form than the attribute's
  SVC_ERR_UNKNOWN = MDB_ERR_GEN_ERROR,           // no such service or attribute in the schema; null arguments
};

typedef struct SvcService* SvcServiceId;

// ---------------------------------------------------------------- schema
// Declares a service (idempotent: a second call returns the same one; a
// declaration as a table and as a scalar group of one prefix is an error, null).
SvcServiceId svcServiceDeclare(const char* prefix, bool table);
SvcServiceId svcServiceFind(const char* prefix);
// Declares an attribute's form; a second declaration with another form keeps
// the first and returns -1, else 0.
int svcAttributeDeclare(SvcServiceId service, uint32_t attribute, SvcForm form);
// The status attribute of a table and its code set. 0 or -1.
int svcStatusDeclare(SvcServiceId service, uint32_t attribute, SvcStatusSet set);

// Computed or action attributes: the store calls these instead of keeping a
// value (key null for a scalar group). Either may be null (then a read or a
// write of the attribute is refused with SVC_ERR_UNKNOWN).
typedef int (*SvcGetFn)(const uint32_t* key, uint32_t keyCount, uint32_t attribute, void* value);
typedef int (*SvcSetFn)(const uint32_t* key, uint32_t keyCount, uint32_t attribute, const void* value);
int svcProvide(SvcServiceId service, uint32_t attribute, SvcForm form, SvcGetFn get, SvcSetFn set);

// ---------------------------------------------------------------- scalar groups
int svcScalarGet(SvcServiceId service, uint32_t attribute, void* value);
int svcScalarSet(SvcServiceId service, uint32_t attribute, const void* value);

// ---------------------------------------------------------------- tables
// Keys are the rows' index sub-ids; rows are ordered as OIDs are (sub-id by
// sub-id as unsigned numbers, a prefix before the longer key).
enum : uint32_t { SVC_MAX_KEY = 256 };
// The first row's key. 0, or SVC_ERR_NO_ROW on an empty table.
int svcRowFirst(SvcServiceId service, uint32_t* key, uint32_t* keyCount);
// The key of the first row after `key` (which need not exist). 0 or SVC_ERR_NO_ROW.
int svcRowNext(SvcServiceId service, const uint32_t* key, uint32_t keyCount, uint32_t* nextKey,
               uint32_t* nextKeyCount);
int svcRowGet(SvcServiceId service, const uint32_t* key, uint32_t keyCount, uint32_t attribute, void* value);
// A write. On the status attribute it creates and removes rows by the code
// set; on any other attribute the row must exist.
int svcRowSet(SvcServiceId service, const uint32_t* key, uint32_t keyCount, uint32_t attribute, const void* value);
// Puts a value into a row, creating the row if needed, with no status rules
// (the default device and loading use it).
int svcRowPut(SvcServiceId service, const uint32_t* key, uint32_t keyCount, uint32_t attribute, const void* value);
uint32_t svcRowCount(SvcServiceId service);

// ---------------------------------------------------------------- the whole store
// Writes every kept value (not the provided ones) to `path` so that a crash
// leaves the old file or the new one whole: a temporary file in the same
// directory, fsync, rename, fsync of the directory. 0 or -1.
int svcStoreSave(const char* path);
// Replaces the kept values of the services named in the file by the file's.
// 0, or -1 if the file cannot be read or is malformed (then nothing changes).
int svcStoreLoad(const char* path);
// Forgets every value and row (the schema stays).
void svcStoreClear(void);
// Forgets everything, schema included (tests).
void svcStoreReset(void);

#endif
