// The module framework: how a module declares its entries and objects, and
// the one generic handler that serves them.
//
// A module file is a declaration. An entry (a scalar group or a table) is an
// FwEntry: its MdbEntryDesc, the service prefix and operations, the index
// layout and key record, the Next and Validate rules, the handler's buffer
// and its service-failure convention. An object is an FwObject: its
// MdbObjectDesc and the handler facts (attribute id, value form, role, the
// handler's own limit and the error it gives). The descriptors the dictionary
// registers are the first members of these rows, so the generic handler finds
// the row of the object it serves from the request record. A module reads
// like its MIB:
//
//   constexpr FwEntry kGroupEntry = fwTable("mirrorGroup", {1,3,6,1,4,1,47391,2,2611,2,1}, MIRROR_GROUP_OPS)
//       .intIndex("mirror:mirrorGroupIndex").buffer(2000);
//   constexpr FwObject kObjects[] = {
//       fwObject(&kGroupEntry, 9, 3, "mirror:mirrorGroupVlan").gauge().rw().attr(2).below(4095),
//       ...
//   };
//   constexpr auto kBindings = fwBindings(kObjects);
//
// Special behaviour is a hook on the object (FW_ROLE_HOOK) or on the entry
// (Next and Validate hooks), written next to the declaration.
#ifndef FRAMEWORK_FW_H
#define FRAMEWORK_FW_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "mdb/mdb_access.h"
#include "mdb/mdb_errors.h"
#include "mdb/mdb_types.h"

// ---------------------------------------------------------------- service operations
// A table's four operations. The key is the integer itself for a table with
// one integer index, else the address of the table's key record.
struct FwTableOps {
  int (*getFirst)(void* keyOut);
  int (*getNext)(uintptr_t keyIn, void* keyOut);
  int (*getApi)(uintptr_t key, uint32_t attributeId, void* value);
  int (*setApi)(uintptr_t key, uint32_t attributeId, void* value);
};
// A scalar group's two operations; the instance is always 0.
struct FwScalarOps {
  int (*getApi)(uint32_t instance, uint32_t attributeId, void* value);
  int (*setApi)(uint32_t instance, uint32_t attributeId, void* value);
};

// ---------------------------------------------------------------- index layout
enum FwIndexKind : uint8_t {
  FW_IDX_INT = 1,      // one sub-id; a u32 field (or narrower, by `width`)
  FW_IDX_IP4,          // 4 sub-ids; a u32 field, host order
  FW_IDX_IP6,          // 16 sub-ids; 16 bytes
  FW_IDX_MAC,          // 6 sub-ids; 6 bytes
  FW_IDX_STRING,       // the length, then a sub-id per character; char[size] and a u32 length
  FW_IDX_FIXED,        // `size` sub-ids, no length; bytes[size]
  FW_IDX_OID,          // the length, then the arcs; u32[size] and a u32 count
  FW_IDX_IMPLIED_STRING,  // as STRING without the length sub-id: the rest of the index
  FW_IDX_IMPLIED_OID,     // as OID without the length sub-id
};

struct FwIndexColumn {
  const char* name;      // the index object's full name
  uint8_t kind;          // FwIndexKind
  uint8_t width;         // bytes of an integer field: 1, 2 or 4
  uint16_t size;         // characters, bytes or arcs at most
  uint16_t offset;       // of the field in the key record
  uint16_t lengthOffset; // of the u32 length of a string or OID field
};

enum FwNextRule : uint8_t {
  FW_NEXT_FULL = 1,  // a full index continues from it; an empty or partial one starts again
  FW_NEXT_ANY,       // any index but the empty one continues, read as it stands
  FW_NEXT_EMPTY,     // the table has no rows to walk
  FW_NEXT_SINGLE,    // one row, index 1
  FW_NEXT_HOOK,      // the entry's own function
};

enum FwValidateRule : uint8_t {
  FW_VALIDATE_NONE = 0,        // every index is accepted (the service finds out)
  FW_VALIDATE_FIRST_BELOW,     // the first sub-id (a string's length, a VLAN id) below the limit
  FW_VALIDATE_TWO_BELOW,       // two string lengths, each below the limit
  FW_VALIDATE_FULL_COUNT,      // at least indexCountMax sub-ids, else noSuchInstance
  FW_VALIDATE_HOOK,            // the entry's own function
};

enum FwFailure : uint8_t {
  FW_FAIL_PASS = 0,      // the service's code, unchanged
  FW_FAIL_GENERIC,       // a failed read: genError; a failed write: commitFailed
  FW_FAIL_GENERIC_ALL,   // genError for both
  FW_FAIL_IGNORE,        // reads deliver what the slot and buffer hold; writes pass the code
};

struct FwEntry;
struct FwObject;

// What the generic handler has prepared for a hook: the decoded key and the
// handler's buffer with its holder.
struct FwCall {
  const FwEntry* entry;
  const FwObject* object;
  uintptr_t key;        // the integer, or the address of `keyRecord`
  uint8_t* buffer;      // the entry's buffer, `bufferSize` bytes
  uint32_t bufferSize;
  MdbOctetValue holder; // over the buffer
  uint32_t slot;        // the value slot
};

typedef uint32_t (*FwNextFn)(const FwEntry* entry, MdbCrb* mdb);
typedef uint32_t (*FwValidateFn)(const FwEntry* entry, MdbCrb* mdb);
// An object's own behaviour: called after the index has been judged and
// decoded, for every request kind; returns what the handler returns.
typedef uint32_t (*FwHookFn)(uint32_t kind, MdbCrb* mdb, FwCall* call);

enum : uint32_t {
  FW_MAX_INDEX_COLUMNS = 12,
  FW_MAX_KEY = 1024,      // bytes of a key record
  FW_MAX_BUFFER = 4096,   // bytes of a handler's buffer
};

uint32_t fwHandler(uint32_t kind, MdbCrb* mdb);
// What the generic handler does for a forwarding object once the index is
// decoded: read, validate or write by the object's row. Hooks use it for the
// kinds they do not treat themselves.
uint32_t fwServePlain(uint32_t kind, MdbCrb* mdb, FwCall* call);

// ---------------------------------------------------------------- entries
struct FwEntry {
  MdbEntryDesc desc;  // first: the dictionary points here
  const char* service;
  FwTableOps table;
  FwScalarOps scalar;
  FwIndexColumn columns[FW_MAX_INDEX_COLUMNS];
  uint8_t columnCount;
  uint16_t keySize;       // the key record's size; 0 for one integer passed by value
  uint8_t next;           // FwNextRule
  uint8_t validate;       // FwValidateRule
  uint8_t failure;        // FwFailure
  uint8_t snmpRefused;    // requests of the SNMP agent are refused
  uint32_t validateLimit;
  uint16_t bufferSize;
  FwNextFn nextHook;
  FwValidateFn validateHook;

  constexpr bool isTable() const { return desc.indexCountMin > 0 || columnCount > 0; }

  // Builders.
  constexpr FwEntry buffer(uint16_t bytes) const { FwEntry e = *this; e.bufferSize = bytes; return e; }
  constexpr FwEntry fail(FwFailure convention) const { FwEntry e = *this; e.failure = convention; return e; }
  constexpr FwEntry anyIndex() const { FwEntry e = *this; e.next = FW_NEXT_ANY; return e; }
  constexpr FwEntry fullIndex() const { FwEntry e = *this; e.next = FW_NEXT_FULL; return e; }
  constexpr FwEntry emptyTable() const { FwEntry e = *this; e.next = FW_NEXT_EMPTY; return e; }
  constexpr FwEntry singleRow() const { FwEntry e = *this; e.next = FW_NEXT_SINGLE; return e; }
  constexpr FwEntry nextBy(FwNextFn fn) const { FwEntry e = *this; e.next = FW_NEXT_HOOK; e.nextHook = fn; return e; }
  constexpr FwEntry validateFirstBelow(uint32_t limit) const {
    FwEntry e = *this; e.validate = FW_VALIDATE_FIRST_BELOW; e.validateLimit = limit; return e;
  }
  constexpr FwEntry validateTwoBelow(uint32_t limit) const {
    FwEntry e = *this; e.validate = FW_VALIDATE_TWO_BELOW; e.validateLimit = limit; return e;
  }
  constexpr FwEntry validateFullCount() const { FwEntry e = *this; e.validate = FW_VALIDATE_FULL_COUNT; return e; }
  constexpr FwEntry validateBy(FwValidateFn fn) const {
    FwEntry e = *this; e.validate = FW_VALIDATE_HOOK; e.validateHook = fn; return e;
  }
  constexpr FwEntry noSnmp() const { FwEntry e = *this; e.snmpRefused = 1; return e; }
  constexpr FwEntry named(const char* entryName) const { FwEntry e = *this; e.desc.entryName = entryName; return e; }
  // Index columns, in order. `offset` places the field in the key record;
  // a table of one integer column and no key record passes the integer.
  constexpr FwEntry index(FwIndexColumn column) const {
    FwEntry e = *this;
    e.columns[e.columnCount++] = column;
    e.desc.indexNames[e.desc.indexCountMin] = column.name;
    e.desc.indexCountMin = e.desc.indexCountMin + 1;
    e.desc.indexCountMax = e.desc.indexCountMax + fwIndexColumnMax(column);
    return e;
  }
  constexpr FwEntry intIndex(const char* name) const { return index({name, FW_IDX_INT, 4, 1, 0, 0}); }
  constexpr FwEntry key(uint16_t bytes) const { FwEntry e = *this; e.keySize = bytes; return e; }
  // The count of index sub-ids, where it is not the sum of the columns.
  constexpr FwEntry indexCounts(uint32_t min, uint32_t max) const {
    FwEntry e = *this; e.desc.indexCountMin = min; e.desc.indexCountMax = max; return e;
  }

  static constexpr uint32_t fwIndexColumnMax(const FwIndexColumn& c) {
    switch (c.kind) {
      case FW_IDX_INT: return 1;
      case FW_IDX_IP4: return 4;
      case FW_IDX_IP6: return 16;
      case FW_IDX_MAC: return 6;
      case FW_IDX_STRING: case FW_IDX_OID: return 1u + c.size;
      default: return c.size;
    }
  }
};

constexpr FwEntry fwEntryBase(const char* service, std::initializer_list<uint32_t> oid) {
  FwEntry e{};
  e.desc = mdbEntryMake(oid, 0, 0);
  e.service = service;
  e.next = FW_NEXT_FULL;
  e.bufferSize = 512;
  return e;
}
// A scalar group: entry OID as given, the instance .0.
constexpr FwEntry fwScalars(const char* service, std::initializer_list<uint32_t> oid, FwScalarOps ops) {
  FwEntry e = fwEntryBase(service, oid);
  e.scalar = ops;
  e.desc.indexCountMax = 1;
  return e;
}
// A table: entry OID as given; add its index columns.
constexpr FwEntry fwTable(const char* service, std::initializer_list<uint32_t> oid, FwTableOps ops) {
  FwEntry e = fwEntryBase(service, oid);
  e.table = ops;
  return e;
}

// Index column makers.
constexpr FwIndexColumn fwIdxInt(const char* name, uint16_t offset = 0, uint8_t width = 4) {
  return {name, FW_IDX_INT, width, 1, offset, 0};
}
constexpr FwIndexColumn fwIdxIp4(const char* name, uint16_t offset) { return {name, FW_IDX_IP4, 4, 4, offset, 0}; }
constexpr FwIndexColumn fwIdxIp6(const char* name, uint16_t offset) { return {name, FW_IDX_IP6, 0, 16, offset, 0}; }
constexpr FwIndexColumn fwIdxMac(const char* name, uint16_t offset) { return {name, FW_IDX_MAC, 0, 6, offset, 0}; }
constexpr FwIndexColumn fwIdxString(const char* name, uint16_t size, uint16_t offset, uint16_t lengthOffset) {
  return {name, FW_IDX_STRING, 0, size, offset, lengthOffset};
}
constexpr FwIndexColumn fwIdxImpliedString(const char* name, uint16_t size, uint16_t offset, uint16_t lengthOffset) {
  return {name, FW_IDX_IMPLIED_STRING, 0, size, offset, lengthOffset};
}
constexpr FwIndexColumn fwIdxFixed(const char* name, uint16_t size, uint16_t offset) {
  return {name, FW_IDX_FIXED, 0, size, offset, 0};
}
constexpr FwIndexColumn fwIdxOid(const char* name, uint16_t arcs, uint16_t offset, uint16_t countOffset) {
  return {name, FW_IDX_OID, 0, arcs, offset, countOffset};
}

// ---------------------------------------------------------------- objects
enum FwForm : uint8_t { FW_FORM_INT = 1, FW_FORM_OCTET = 2 };

enum FwRole : uint8_t {
  FW_ROLE_UNSERVED = 0,  // not served by the handler: noSuchInstance
  FW_ROLE_PLAIN,         // forwarded to the service attribute
  FW_ROLE_INDEX,         // an index column, answered from the index
  FW_ROLE_CONST,         // reads a constant; writes do nothing
  FW_ROLE_NO_SERVICE,    // reads 0 or empty; takes a write without effect
  FW_ROLE_WRITE_ONLY,    // writes its attribute; a read succeeds and delivers nothing
  FW_ROLE_HOOK,          // the object's own function
};

enum FwCheck : uint8_t {
  FW_CHECK_NONE = 0,
  FW_CHECK_RANGE,          // lo..hi as unsigned numbers
  FW_CHECK_SIGNED_RANGE,   // lo..hi as signed numbers
  FW_CHECK_LENGTH,         // at most hi bytes
  FW_CHECK_ROW_STATUS,     // 1..6
  FW_CHECK_ENTRY_STATUS,   // 1..4
};

enum : uint16_t { FW_NO_ATTRIBUTE = 0xFFFF };

struct FwObject {
  MdbObjectDesc desc;  // first: the dictionary points here
  const FwEntry* entry;
  uint16_t attribute;
  uint8_t form;        // FwForm
  uint8_t role;        // FwRole
  uint8_t check;       // FwCheck
  uint8_t lengthError; // 1: the limit gives invalidLength instead of invalidRange
  uint32_t lo, hi;
  uint32_t constant;
  uint16_t readCapacity;  // bytes a read asks of the service; 0 for the entry's buffer
  uint8_t indexColumn;    // FW_ROLE_INDEX: which column
  FwHookFn hookFn;
  // The attribute bits as built: desc.attributes is mutable and cannot be
  // read while the tables are built at compile time, so builders keep the
  // bits here and assign them.
  uint32_t attributeBits;

  constexpr FwObject withBits(uint32_t bits) const {
    FwObject o = *this; o.attributeBits = attributeBits | bits; o.desc.attributes = o.attributeBits; return o;
  }

  // Types, with the value form that goes with them.
  constexpr FwObject typed(uint32_t type, FwForm f, uint32_t size) const {
    FwObject o = *this; o.desc.type = type; o.form = f; o.desc.size = size; return o;
  }
  constexpr FwObject integer() const { return typed(MDB_TYPE_INTEGER, FW_FORM_INT, 4); }
  constexpr FwObject gauge() const { return typed(MDB_TYPE_GAUGE, FW_FORM_INT, 4); }
  constexpr FwObject counter() const { return typed(MDB_TYPE_COUNTER, FW_FORM_INT, 4); }
  constexpr FwObject timeticks() const { return typed(MDB_TYPE_TIMETICKS, FW_FORM_INT, 4); }
  constexpr FwObject rowStatus() const { return typed(MDB_TYPE_ROWSTATUS, FW_FORM_INT, 4).check_(FW_CHECK_ROW_STATUS); }
  constexpr FwObject entryStatus() const { return integer().range(1, 4).check_(FW_CHECK_ENTRY_STATUS); }
  constexpr FwObject octets(uint32_t size) const { return typed(MDB_TYPE_OCTET_STRING, FW_FORM_OCTET, size); }
  constexpr FwObject ipAddress() const { return typed(MDB_TYPE_IPADDRESS, FW_FORM_OCTET, 4); }
  constexpr FwObject macAddress() const { return typed(MDB_TYPE_MACADDRESS, FW_FORM_OCTET, 6); }
  constexpr FwObject oid(uint32_t size) const { return typed(MDB_TYPE_OID, FW_FORM_OCTET, size); }
  constexpr FwObject counter64() const { return typed(MDB_TYPE_COUNTER64, FW_FORM_OCTET, 8); }
  constexpr FwObject bridgeId() const { return typed(MDB_TYPE_BRIDGEID, FW_FORM_OCTET, 8); }
  constexpr FwObject form_(FwForm f) const { FwObject o = *this; o.form = f; return o; }

  // Access.
  constexpr FwObject access_(uint32_t a) const { FwObject o = *this; o.desc.access = a; return o; }
  constexpr FwObject ro() const { return access_(MDB_ACCESS_RO); }
  constexpr FwObject rw() const { return access_(MDB_ACCESS_RW); }
  constexpr FwObject rc() const { return access_(MDB_ACCESS_RC); }
  constexpr FwObject wo() const { return access_(MDB_ACCESS_WO); }
  constexpr FwObject na() const { return access_(MDB_ACCESS_NA); }
  constexpr FwObject display() const { return withBits(MDB_ATTR_DISPLAY); }
  constexpr FwObject alternate(const char* name) const { FwObject o = *this; o.desc.altObject = name; return o; }

  // The catalogued range (the descriptor's min and max).
  constexpr FwObject catalogued(int32_t min, int32_t max) const {
    FwObject o = *this; o.desc.min = min; o.desc.max = max; return o;
  }

  // The service attribute.
  constexpr FwObject attr(uint16_t id) const { FwObject o = *this; o.attribute = id; o.role = FW_ROLE_PLAIN; return o; }
  // The handler's own limits; they also give the catalogued range unless one is set.
  constexpr FwObject check_(FwCheck c) const { FwObject o = *this; o.check = c; return o; }
  constexpr FwObject range(uint32_t low, uint32_t high) const {
    FwObject o = check_(FW_CHECK_RANGE); o.lo = low; o.hi = high;
    if (o.desc.min == 0 && o.desc.max == 0) { o.desc.min = static_cast<int32_t>(low); o.desc.max = static_cast<int32_t>(high); }
    return o;
  }
  constexpr FwObject signedRange(int32_t low, int32_t high) const {
    FwObject o = check_(FW_CHECK_SIGNED_RANGE); o.lo = static_cast<uint32_t>(low); o.hi = static_cast<uint32_t>(high);
    if (o.desc.min == 0 && o.desc.max == 0) { o.desc.min = low; o.desc.max = high; }
    return o;
  }
  constexpr FwObject below(uint32_t limit) const { return range(0, limit - 1); }
  constexpr FwObject maxLength(uint32_t bytes) const { FwObject o = check_(FW_CHECK_LENGTH); o.hi = bytes; return o; }
  // The limit gives invalidLength instead of invalidRange (families that report so).
  constexpr FwObject lengthErrors() const { FwObject o = *this; o.lengthError = 1; return o; }
  constexpr FwObject readWith(uint16_t capacity) const { FwObject o = *this; o.readCapacity = capacity; return o; }

  // Roles.
  constexpr FwObject role_(FwRole r) const { FwObject o = *this; o.role = r; return o; }
  constexpr FwObject constant_(uint32_t value) const { FwObject o = role_(FW_ROLE_CONST); o.constant = value; return o; }
  constexpr FwObject noService() const { return role_(FW_ROLE_NO_SERVICE); }
  constexpr FwObject writeOnly(uint16_t id) const { FwObject o = attr(id); o.role = FW_ROLE_WRITE_ONLY; return o; }
  constexpr FwObject hook(FwHookFn fn) const { FwObject o = role_(FW_ROLE_HOOK); o.hookFn = fn; return o; }
  // An index column: answered from the index, never writable.
  constexpr FwObject indexOf(uint8_t column) const {
    FwObject o = role_(FW_ROLE_INDEX).withBits(MDB_ATTR_INDEX); o.indexColumn = column;
    if (o.desc.access == MDB_ACCESS_RW) o.desc.access = MDB_ACCESS_RO;
    return o;
  }
  constexpr FwObject implied() const { return withBits(MDB_ATTR_INDEX | MDB_ATTR_IMPLIED); }
};

// An object of `entry`: its localId, sub-id and full name. Integer,
// read-write and served by the generic handler until said otherwise.
constexpr FwObject fwObject(const FwEntry* entry, uint16_t localId, uint16_t subId, const char* name) {
  FwObject o{};
  o.desc.localId = localId;
  o.desc.subId = subId;
  o.desc.size = 4;
  o.desc.type = MDB_TYPE_INTEGER;
  o.desc.access = MDB_ACCESS_RW;
  o.desc.attributes = MDB_ATTR_ROW;
  o.attributeBits = MDB_ATTR_ROW;
  o.desc.handler = fwHandler;
  o.desc.name = name;
  o.entry = entry;
  o.attribute = FW_NO_ATTRIBUTE;
  o.form = FW_FORM_INT;
  o.role = FW_ROLE_UNSERVED;
  return o;
}

// The binding list of a module's objects, ended by the null row.
template <size_t N>
constexpr std::array<MdbObjectBinding, N + 1> fwBindings(const FwObject (&objects)[N]) {
  std::array<MdbObjectBinding, N + 1> b{};
  for (size_t i = 0; i < N; i++) b[i] = {&objects[i].entry->desc, &objects[i].desc};
  return b;
}

// The operations of a service prefix, as the substitute services (or the
// product's libraries) declare them.
#define FW_TABLE_OPS(prefix) \
  FwTableOps { prefix##GetFirst, prefix##GetNext, prefix##GetApi, prefix##SetApi }
#define FW_SCALAR_OPS(prefix) \
  FwScalarOps { prefix##ScalarGetApi, prefix##ScalarSetApi }

inline const FwObject* fwObjectOf(const MdbCrb* mdb) { return reinterpret_cast<const FwObject*>(mdb->objectDesc); }
inline const FwEntry* fwEntryOf(const MdbCrb* mdb) { return reinterpret_cast<const FwEntry*>(mdb->entryDesc); }

// ---------------------------------------------------------------- registration
// Checks every row of the module (each object has what its role needs, each
// entry its operations and a key that fits), tells the substitute services
// the schema, and registers the module. A wrong row is reported by name and
// the module is not registered. 0 or -1.
int fwModuleRegister(const char* moduleName, uint32_t registrationId, const MdbObjectBinding* bindings);

// ---------------------------------------------------------------- index codec
// The sub-ids of the index at `index` (count sub-ids) as the entry's key: the
// integer in *key, or the key record filled at `record` (keySize bytes). A
// string longer than its field, or an index shorter than the layout, is
// refused: -1. 0 on success.
int fwIndexDecode(const FwEntry* entry, const uint32_t* index, uint32_t count, uintptr_t* key, uint8_t* record);
// The key's sub-ids into `index` (room for `capacity`); their number, or 0
// if they do not fit.
uint32_t fwIndexEncode(const FwEntry* entry, uintptr_t key, uint32_t* index, uint32_t capacity);
// Where column `column` starts in the index, or -1 beyond `count`.
int fwIndexColumnAt(const FwEntry* entry, const uint32_t* index, uint32_t count, uint32_t column);
// The Next and Validate functions of an entry, by its rules.
uint32_t fwNextIndex(const FwEntry* entry, MdbCrb* mdb);
uint32_t fwValidateIndex(const FwEntry* entry, MdbCrb* mdb);

// A Next function for tables whose walk ends at an index of `limit` sub-ids
// or more (a string index longer than the table takes); a shorter index goes
// on by the rules of `walk`, the same entry without this function.
template <const FwEntry& walk, uint32_t limit>
uint32_t fwNextBelow(const FwEntry*, MdbCrb* mdb) {
  return mdb->indexSubIdCount < limit ? fwNextIndex(&walk, mdb) : static_cast<uint32_t>(-1);
}

// A spin lock (TestAndIncr): at Validate the lock's current value replaces
// the one in the request and no mark is set; a write hands the request's
// value to the service, which decides what it does to the lock.
uint32_t fwSpinLock(uint32_t kind, MdbCrb* mdb, FwCall* call);

#endif
