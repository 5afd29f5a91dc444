// Catalogue descriptors, dictionary rows, the request record and the global
// record of the object database.
#ifndef MDB_TYPES_H
#define MDB_TYPES_H

#include <pthread.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>

struct HashTable;
struct MdbCrb;

// ---------------------------------------------------------------- type codes
enum MdbTypeCode : uint32_t {
  MDB_TYPE_NULL = 0,
  MDB_TYPE_INTEGER = 1,
  MDB_TYPE_OCTET_STRING = 2,
  MDB_TYPE_OID = 3,
  MDB_TYPE_IPADDRESS = 4,
  MDB_TYPE_MACADDRESS = 5,
  MDB_TYPE_COUNTER = 6,
  MDB_TYPE_GAUGE = 7,
  MDB_TYPE_TIMETICKS = 8,
  MDB_TYPE_OPAQUE = 9,
  MDB_TYPE_PORTLIST = 10,
  MDB_TYPE_BRIDGEID = 11,
  MDB_TYPE_COUNTER64 = 12,
  MDB_TYPE_ROWSTATUS = 13,
};

// ---------------------------------------------------------------- access bits
enum : uint32_t {
  MDB_ACCESS_READ = 0x01,
  MDB_ACCESS_WRITE = 0x02,
  MDB_ACCESS_CREATE = 0x04,
  MDB_ACCESS_NOACCESS = 0x08,
  MDB_ACCESS_INDEX_NA = 0x10,
  // The values in use.
  MDB_ACCESS_RO = 1,
  MDB_ACCESS_WO = 2,
  MDB_ACCESS_RW = 3,
  MDB_ACCESS_RC = 5,
  MDB_ACCESS_NA = 8,
  MDB_ACCESS_RO_INDEX = 17,
};

// ---------------------------------------------------------------- attribute bits
enum : uint32_t {
  MDB_ATTR_ROW = 0x01,       // set in every row
  MDB_ATTR_HIDDEN = 0x08,    // hidden from the SNMP agent, set at run time
  MDB_ATTR_INDEX = 0x10,     // an index column
  MDB_ATTR_IMPLIED = 0x20,   // index with implied length, always with 0x10
  MDB_ATTR_DISPLAY = 0x40,   // marked display text
};

// ---------------------------------------------------------------- request kinds
enum MdbRequest : uint32_t {
  MDB_GET_NEXT = 1,
  MDB_GET = 2,
  MDB_SET = 3,
  MDB_SET_NVM = 4,
  MDB_VALIDATE = 5,
  MDB_COMMIT = 6,
  MDB_FORCE_SET = 131,
};

// ---------------------------------------------------------------- MdbCrb.flags
enum : uint32_t {
  MDB_FLAG_VALIDATED = 0x00000001,
  MDB_FLAG_CALLER_A = 0x00000010,
  MDB_FLAG_CALLER_B = 0x00000020,
  MDB_FLAG_TRANSLATED = 0x00000040,
  MDB_FLAG_NULL_BUF_OK = 0x00000080,
  MDB_FLAG_NVM_GET = 0x00000100,
  MDB_FLAG_FORCE_SET = 0x00000200,
  MDB_FLAG_NO_TRIGGER = 0x00000800,
  MDB_FLAG_TSC = 0x00001000,
  MDB_FLAG_IMMEDIATE = 0x00002000,
  MDB_FLAG_LOG_A = 0x00004000,
  MDB_FLAG_LOG_B = 0x00008000,
  MDB_FLAG_LOG_C = 0x00010000,
  MDB_FLAG_LOGGED = MDB_FLAG_LOG_A | MDB_FLAG_LOG_B | MDB_FLAG_LOG_C,
  MDB_FLAG_SNMP = 0x00020000,
};

// Largest index a request may carry, in sub-ids.
enum : uint32_t { MDB_MAX_INDEX = 256 };

// The holder that a service receives for string-like values.
struct MdbOctetValue {
  uint8_t* data;
  uint32_t length;
};

typedef uint32_t (*MdbObjectHandler)(uint32_t requestKind, MdbCrb* mdb);
typedef uint32_t (*MdbChangeFormatter)(const char* name, uint32_t* pIndex, uint32_t indexCount, uint32_t flags,
                                       char* text, uint32_t textLength, uintptr_t* word);

struct MdbObjectDesc;

// One per scalar group member or per table. `oid` is the only field that ever
// changes (the enterprise OID rewrite at start), hence mutable: the tables
// themselves are constant data.
struct MdbEntryDesc {
  uint32_t oidTag;
  mutable uint32_t oid[16];
  // One 32-bit word, from the most significant bit down: oidLen (8),
  // indexCountMin (12), indexCountMax (12). GCC allocates bit-fields from the
  // least significant bit on this target, hence the reverse declaration order.
  uint32_t indexCountMax : 12;
  uint32_t indexCountMin : 12;
  uint32_t oidLen : 8;
  const char* indexNames[12];
  const MdbObjectDesc* objects;
  const char* entryName;
  uintptr_t crbContext;
  MdbChangeFormatter changeFormatter;
};

// An entry from its OID (without the object's own arc), the index counts and
// the index objects' names; the other fields take their usual values.
constexpr MdbEntryDesc mdbEntryMake(std::initializer_list<uint32_t> oid, uint32_t indexCountMin,
                                    uint32_t indexCountMax, std::initializer_list<const char*> indexNames = {}) {
  MdbEntryDesc e{};
  e.oidTag = 1;
  uint32_t n = 0;
  for (uint32_t arc : oid)
    if (n < 16) e.oid[n++] = arc;
  e.oidLen = n + 1;
  e.indexCountMin = indexCountMin;
  e.indexCountMax = indexCountMax;
  uint32_t i = 0;
  for (const char* name : indexNames)
    if (i < 12) e.indexNames[i++] = name;
  return e;
}

// One per object. `attributes` is changed at run time by the SNMP access
// switch only, hence mutable.
struct MdbObjectDesc {
  uint16_t localId;
  uint16_t subId;
  uint32_t size;
  int32_t min;
  int32_t max;
  uint32_t type;
  uint32_t access;
  mutable uint32_t attributes;
  MdbObjectHandler handler;
  const char* altObject;
  const char* name;
};

// One row of a module's object list; a row with a null object ends the list.
struct MdbObjectBinding {
  const MdbEntryDesc* entry;
  const MdbObjectDesc* object;
};

// A row of the module table or of the object table: both share this form.
// `name` must stay the first field: it is the hash key of both tables.
struct MdbDictRow {
  const char* name;
  const MdbObjectBinding* list;  // module: its list; object: its own binding row
  uint32_t lastChange;           // module: centiseconds of the last write (atomic access)
  uint32_t registrationId;       // module only
  MdbDictRow* module;            // the owning module's row
};
typedef MdbDictRow MdbModuleDesc;
typedef MdbDictRow MdbObjectNode;

// The request record, one per request, in the dispatcher's frame.
struct MdbCrb {
  uint32_t* pIndex;
  uint32_t indexSubIdCount;
  uint32_t indexSubIdCountMax;
  void* pValueBuf;
  uint32_t valueLen;
  uint32_t localId;
  uintptr_t crbContext;
  uint32_t flags;
  const char* objectName;
  void* scratchBuf;
  uint32_t scratchLen;
  void* oldValue;
  uint32_t oldValueLen;
  // Ours: the descriptors of the object being served (after any alternate),
  // so that one generic handler can serve many objects from their rows.
  const MdbObjectDesc* objectDesc;
  const MdbEntryDesc* entryDesc;
};

// ---------------------------------------------------------------- hooks
typedef uint32_t (*MdbIoBlockHook)(uint32_t request, const char* name, uint32_t* pIndex, uint32_t* pIndexCount,
                                   void* pValueBuf, uint32_t* pValueLen);
typedef uint32_t (*MdbTranslateHook)(uint32_t* pRequest, const char** pName, uint32_t* pIndex,
                                     uint32_t* pIndexCount, void* pValueBuf, uint32_t* pValueLen, uint32_t* pFlags);
typedef uint32_t (*MdbUnknownObjectHook)(uint32_t request, const char* name, uint32_t* pIndex,
                                         uint32_t* pIndexCount, void* pValueBuf, uint32_t* pValueLen,
                                         uint32_t* pFlags);
typedef uint32_t (*MdbCrbHook)(const char* name, uint32_t request, MdbCrb* mdb);        // entry, exit
typedef uint32_t (*MdbTagHook)(const char* name, const void* callerTag, MdbCrb* mdb);   // get, immediate, tsc

// ---------------------------------------------------------------- gMdbInfo
enum : uint32_t {
  MDB_MODULE_ID = 81920000u,  // base of error codes and debug module ids
  MDB_MAX_OBJECTS = 20480,
  MDB_MAX_MODULES = 300,
};

// Debug switches of gMdbInfo.debugMask.
enum : uint32_t {
  MDB_DEBUG_DISPATCH = 0x04,   // channel 2
  MDB_DEBUG_GETNEXT = 0x08,    // channel 4
  MDB_DEBUG_WRITE = 0x10,      // channel 3 and the change event
  MDB_DEBUG_STARTUP = 0x800,   // the module start-up sequence
};

struct MdbInfo {
  uint32_t debugMask;
  uint8_t debugLevel[10];
  char version[70];
  uint32_t maxObjects;
  uint32_t maxModules;
  uint8_t sysState;  // two bits in use; read and written through std::atomic_ref
  HashTable* moduleTable;
  HashTable* objectTable;
  pthread_rwlock_t moduleLock;
  pthread_rwlock_t objectLock;
  MdbIoBlockHook ioBlockHook;
  MdbTagHook tscHook;
  MdbTagHook immediateHook;
  MdbTagHook getHook;
  MdbCrbHook entryHook;
  MdbCrbHook exitHook;
  MdbTranslateHook translateHook;
  MdbUnknownObjectHook unknownObjectHook;
};

extern MdbInfo gMdbInfo;

// A debug line on `channel`, written if any bit of `mask` is in debugMask
// (mask ~0u: any non-zero debugMask).
#define MDB_DEBUG(channel, mask, format, ...)                                                          \
  do {                                                                                                 \
    if ((gMdbInfo.debugMask & (mask)) != 0)                                                            \
      loggingDebugOutput(MDB_MODULE_ID + (channel), gMdbInfo.debugLevel[(channel)], 0, format, __func__, \
                         __LINE__ __VA_OPT__(, ) __VA_ARGS__);                                         \
  } while (0)

#endif
