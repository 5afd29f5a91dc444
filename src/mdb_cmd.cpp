// The command sockets: the function map that every socket serves, and the
// functions that carry each command's arguments to its verb and back.
#include "mdb/mdb_cmd.h"
#include "mdb/mdb_dict.h"
#include "mdb/mdb_snmp.h"
#include "mdb/mdb_subsys.h"
#include "mdb/mdb_verbs.h"
#include "platform/icm.h"
#include "platform/sil.h"
#include "platform/snmp_agent.h"

#include <cstdio>
#include <cstring>

namespace {

// A request's own buffers, on the serving task's stack. The index has room
// for any Next function's answer; values for the largest object.
struct Frame {
  char name[ICM_MAX_NAME + 1];
  char tag[ICM_MAX_TAG + 1];
  uint32_t index[ICM_MAX_INDEX];
  uint32_t indexCount;
  alignas(8) uint8_t value[ICM_MAX_VALUE + 8];
  uint32_t valueLength;
  const char* nameArg;
  const char* tagArg;
};

// Reads the name and index arguments at 0 and 1. Sub-ids the client did not
// send read as 0 up to the largest index a request may carry.
bool readNameIndex(const IcmRequest* r, Frame* f) {
  if (!icmArgString(r, 0, f->name, sizeof f->name, &f->nameArg)) return false;
  if (!icmArgU32Array(r, 1, f->index, ICM_MAX_INDEX, &f->indexCount)) return false;
  if (f->indexCount < MDB_MAX_INDEX) memset(f->index + f->indexCount, 0, (MDB_MAX_INDEX - f->indexCount) * 4);
  return true;
}

bool readTag(const IcmRequest* r, uint32_t i, Frame* f) {
  return icmArgString(r, i, f->tag, sizeof f->tag, &f->tagArg, true);
}

// A value to write: copied into the frame, so that the handler sees an aligned
// buffer with zeros behind the value; NONE is a null buffer.
bool readValue(const IcmRequest* r, uint32_t i, Frame* f, void** buffer) {
  const uint8_t* data;
  if (!icmArgBytes(r, i, &data, &f->valueLength, ICM_MAX_VALUE)) return false;
  if (data == nullptr) {
    *buffer = nullptr;
    return true;
  }
  memcpy(f->value, data, f->valueLength);
  memset(f->value + f->valueLength, 0, 8);
  *buffer = f->value;
  return true;
}

// The capacity a reader asks for, bounded by the frame's buffer.
bool readCapacity(const IcmRequest* r, uint32_t i, Frame* f) {
  if (!icmArgU32(r, i, &f->valueLength)) return false;
  if (f->valueLength > ICM_MAX_VALUE) f->valueLength = ICM_MAX_VALUE;
  return true;
}

// The index a handler left, never more than the frame holds.
uint32_t boundedCount(uint32_t count) { return count < ICM_MAX_INDEX ? count : ICM_MAX_INDEX; }
uint32_t boundedLength(uint32_t length) { return length < ICM_MAX_VALUE ? length : ICM_MAX_VALUE; }

// 1: name, index, capacity, tag -> rc, index, value
uint32_t cmdGetNext(const IcmRequest* r, IcmWriter* w) {
  Frame f;
  if (r->argCount != 4 || !readNameIndex(r, &f) || !readCapacity(r, 2, &f) || !readTag(r, 3, &f))
    return ICM_STATUS_BAD_ARGUMENTS;
  uint32_t rc = mdbGetNext(f.nameArg, f.index, ICM_MAX_INDEX, &f.indexCount, f.value, &f.valueLength, f.tagArg);
  icmPutU32(w, rc);
  icmPutU32Array(w, f.index, rc == 0 ? boundedCount(f.indexCount) : 0);
  icmPutBytes(w, f.value, rc == 0 ? boundedLength(f.valueLength) : 0);
  return ICM_STATUS_OK;
}

// 2: name, index, value, options, tag -> rc
uint32_t cmdCommit(const IcmRequest* r, IcmWriter* w) {
  Frame f;
  void* value;
  uint32_t options;
  if (r->argCount != 5 || !readNameIndex(r, &f) || !readValue(r, 2, &f, &value) || !icmArgU32(r, 3, &options) ||
      !readTag(r, 4, &f))
    return ICM_STATUS_BAD_ARGUMENTS;
  icmPutU32(w, mdbCommit(f.nameArg, f.index, f.indexCount, value, f.valueLength, options, f.tagArg));
  return ICM_STATUS_OK;
}

// 3: name, index, value, options -> rc
uint32_t cmdValidate(const IcmRequest* r, IcmWriter* w) {
  Frame f;
  void* value;
  uint32_t options;
  if (r->argCount != 4 || !readNameIndex(r, &f) || !readValue(r, 2, &f, &value) || !icmArgU32(r, 3, &options))
    return ICM_STATUS_BAD_ARGUMENTS;
  icmPutU32(w, mdbValidate(f.nameArg, f.index, f.indexCount, value, f.valueLength, options));
  return ICM_STATUS_OK;
}

// 4: name, index, value -> rc
uint32_t cmdNvmSet(const IcmRequest* r, IcmWriter* w) {
  Frame f;
  void* value;
  if (r->argCount != 3 || !readNameIndex(r, &f) || !readValue(r, 2, &f, &value)) return ICM_STATUS_BAD_ARGUMENTS;
  icmPutU32(w, mdbNvmSet(f.nameArg, f.index, f.indexCount, value, f.valueLength));
  return ICM_STATUS_OK;
}

// 5: name, index, value, tag, options -> rc
uint32_t cmdSetApi(const IcmRequest* r, IcmWriter* w) {
  Frame f;
  void* value;
  uint32_t options;
  if (r->argCount != 5 || !readNameIndex(r, &f) || !readValue(r, 2, &f, &value) || !readTag(r, 3, &f) ||
      !icmArgU32(r, 4, &options))
    return ICM_STATUS_BAD_ARGUMENTS;
  icmPutU32(w, mdbSetApi(f.nameArg, f.index, f.indexCount, value, f.valueLength, f.tagArg, options));
  return ICM_STATUS_OK;
}

// 6: name, index, capacity, tag -> rc, value
uint32_t cmdGetApi(const IcmRequest* r, IcmWriter* w) {
  Frame f;
  if (r->argCount != 4 || !readNameIndex(r, &f) || !readCapacity(r, 2, &f) || !readTag(r, 3, &f))
    return ICM_STATUS_BAD_ARGUMENTS;
  uint32_t rc = mdbGetApi(f.nameArg, f.index, f.indexCount, f.value, &f.valueLength, f.tagArg);
  icmPutU32(w, rc);
  icmPutBytes(w, f.value, rc == 0 ? boundedLength(f.valueLength) : 0);
  return ICM_STATUS_OK;
}

// 7: name, mask -> rc, the 1,640-byte record (cleared, then filled)
uint32_t cmdObjInfoGet(const IcmRequest* r, IcmWriter* w) {
  char name[ICM_MAX_NAME + 1];
  const char* nameArg;
  uint32_t mask;
  if (r->argCount != 2 || !icmArgString(r, 0, name, sizeof name, &nameArg) || !icmArgU32(r, 1, &mask))
    return ICM_STATUS_BAD_ARGUMENTS;
  MdbObjInfo info;
  memset(&info, 0, sizeof info);
  icmPutU32(w, mdbObjInfoGet(nameArg, mask, &info));
  icmPutBytes(w, &info, sizeof info);
  return ICM_STATUS_OK;
}

// 8: name, outLength -> rc, name
uint32_t cmdObjectNameNextGet(const IcmRequest* r, IcmWriter* w) {
  char name[ICM_MAX_NAME + 1];
  char next[ICM_MAX_NAME + 1] = {0};
  const char* nameArg;
  uint32_t outLength;
  if (r->argCount != 2 || !icmArgString(r, 0, name, sizeof name, &nameArg) || !icmArgU32(r, 1, &outLength))
    return ICM_STATUS_BAD_ARGUMENTS;
  if (outLength > sizeof next) outLength = sizeof next;
  icmPutU32(w, mdbObjectNameNextGet(nameArg, next, outLength));
  icmPutString(w, next);
  return ICM_STATUS_OK;
}

// 9: oid -> rc, oidLen, indexCountMax, type, name
uint32_t cmdObjNameGet(const IcmRequest* r, IcmWriter* w) {
  uint32_t oid[ICM_MAX_INDEX];
  uint32_t oidLength;
  if (r->argCount != 1 || !icmArgU32Array(r, 0, oid, ICM_MAX_INDEX, &oidLength)) return ICM_STATUS_BAD_ARGUMENTS;
  uint32_t oidLen = 0, indexCountMax = 0, type = 0;
  char name[MDB_NAME_MAX] = {0};
  icmPutU32(w, static_cast<uint32_t>(mdbObjNameGet(oid, oidLength, &oidLen, &indexCountMax, &type, name)));
  icmPutU32(w, oidLen);
  icmPutU32(w, indexCountMax);
  icmPutU32(w, type);
  icmPutString(w, name);
  return ICM_STATUS_OK;
}

// 10: name -> rc, name, lastChange, registrationId, first object
uint32_t cmdModuleGet(const IcmRequest* r, IcmWriter* w) {
  char name[ICM_MAX_NAME + 1];
  const char* nameArg;
  if (r->argCount != 1 || !icmArgString(r, 0, name, sizeof name, &nameArg)) return ICM_STATUS_BAD_ARGUMENTS;
  MdbModuleDesc module{};
  int rc = mdbModuleGet(nameArg, &module);
  icmPutU32(w, static_cast<uint32_t>(rc));
  icmPutString(w, rc == 0 ? module.name : "");
  icmPutU32(w, module.lastChange);
  icmPutU32(w, module.registrationId);
  // The list itself does not cross the socket: its first accessible object
  // does, so that a client can walk the module with mdbObjectNameNextGet.
  const char* first = "";
  for (const MdbObjectBinding* b = rc == 0 ? module.list : nullptr; b != nullptr && b->object != nullptr; b++) {
    if (b->object->access != MDB_ACCESS_NA && b->object->name != nullptr) {
      first = b->object->name;
      break;
    }
  }
  icmPutString(w, first);
  return ICM_STATUS_OK;
}

// Bytes that an argument of `length` data bytes takes in a frame.
uint32_t argSpace(uint32_t length) { return ICM_ARG_HEADER_SIZE + icmPad4(length); }

// Whether one more row of `args` arguments and `bytes` bytes fits the reply,
// which holds `used` arguments so far.
bool rowFits(const IcmWriter* w, uint32_t used, uint32_t args, uint32_t bytes) {
  return used + args <= ICM_MAX_REPLY_ARGS && bytes <= w->capacity - w->length;
}

// A page of the agent's records from `offset`: as many rows as the reply
// holds, at most maxRows (0: no limit). The rows are copied one at a time
// into this frame; the count is written in its place when the page is done.
void snmpListPage(uint32_t list, uint32_t offset, uint32_t maxRows, IcmWriter* w) {
  const bool objects = list == MDB_SNMP_LIST_OBJECTS;
  const uint32_t total = objects ? snmpAgentObjectCount() : snmpAgentORCount();
  icmPutU32(w, 0);
  icmPutU32(w, total);
  const uint32_t countAt = w->length;
  icmPutU32(w, 0);
  uint32_t count = 0, used = 3;
  for (uint32_t at = offset; at < total && (maxRows == 0 || count < maxRows); at++) {
    if (objects) {
      // name, OID, type, access, indexCountMax
      SnmpAgentObject o;
      if (snmpAgentObjectGet(at, &o) != 0) break;
      uint32_t nameLength = static_cast<uint32_t>(strlen(o.name));
      if (!rowFits(w, used, 5, argSpace(nameLength) + argSpace(o.oidLength * 4) + 3 * argSpace(4))) break;
      icmPutString(w, o.name);
      icmPutU32Array(w, o.oid, o.oidLength);
      icmPutU32(w, o.type);
      icmPutU32(w, o.access);
      icmPutU32(w, o.indexCountMax);
      used += 5;
    } else {
      // description, OID
      SnmpAgentORRow row;
      if (snmpAgentORGet(at, &row) != 0) break;
      uint32_t textLength = static_cast<uint32_t>(strlen(row.description));
      if (!rowFits(w, used, 2, argSpace(textLength) + argSpace(row.oidLength * 4))) break;
      icmPutString(w, row.description);
      icmPutU32Array(w, row.oid, row.oidLength);
      used += 2;
    }
    count++;
  }
  icmStore32(w->buf + countAt + ICM_ARG_HEADER_SIZE, count);
}

// 11: -> rc, visible, hidden, failed, sysOR rows (of this run), objects and
// sysOR rows the agent holds (the totals of the two lists).
// Ours, 11 with list, offset, maxRows -> rc, total, count, then count rows:
// for MDB_SNMP_LIST_OBJECTS name, OID, type, access, indexCountMax; for
// MDB_SNMP_LIST_SYSOR description, OID. An unknown list answers -1.
uint32_t cmdSnmpInit(const IcmRequest* r, IcmWriter* w) {
  if (r->argCount == 0) {
    uint32_t rc = static_cast<uint32_t>(mdbSnmpInit());
    MdbSnmpTally tally;
    mdbSnmpTallyGet(&tally);
    icmPutU32(w, rc);
    icmPutU32(w, tally.visible);
    icmPutU32(w, tally.hidden);
    icmPutU32(w, tally.failed);
    icmPutU32(w, tally.orRows);
    icmPutU32(w, snmpAgentObjectCount());
    icmPutU32(w, snmpAgentORCount());
    return ICM_STATUS_OK;
  }
  uint32_t list, offset, maxRows;
  if (r->argCount != 3 || !icmArgU32(r, 0, &list) || !icmArgU32(r, 1, &offset) || !icmArgU32(r, 2, &maxRows))
    return ICM_STATUS_BAD_ARGUMENTS;
  if (list != MDB_SNMP_LIST_OBJECTS && list != MDB_SNMP_LIST_SYSOR) {
    icmPutU32(w, 0xFFFFFFFFu);
    icmPutU32(w, 0);
    icmPutU32(w, 0);
    return ICM_STATUS_OK;
  }
  snmpListPage(list, offset, maxRows, w);
  return ICM_STATUS_OK;
}

// 12: state -> rc
uint32_t cmdSysStateSet(const IcmRequest* r, IcmWriter* w) {
  uint32_t state;
  if (r->argCount != 1 || !icmArgU32(r, 0, &state)) return ICM_STATUS_BAD_ARGUMENTS;
  icmPutU32(w, static_cast<uint32_t>(mdbSysStateSet(state)));
  return ICM_STATUS_OK;
}

// 13, 14, 15: instance, attribute, value bytes (or none), capacity -> rc, value.
// Attribute 4 passes a u32; the others an MdbOctetValue over the frame's
// buffer holding the bytes sent, with room for the capacity asked.
typedef int (*ScalarFn)(uint32_t, uint32_t, void*);
uint32_t scalarCall(const IcmRequest* r, IcmWriter* w, ScalarFn fn) {
  uint32_t instance, attribute, capacity;
  const uint8_t* data;
  uint32_t length;
  if (r->argCount != 4 || !icmArgU32(r, 0, &instance) || !icmArgU32(r, 1, &attribute) ||
      !icmArgBytes(r, 2, &data, &length, ICM_MAX_VALUE) || !icmArgU32(r, 3, &capacity))
    return ICM_STATUS_BAD_ARGUMENTS;
  alignas(8) uint8_t buffer[ICM_MAX_VALUE + 8] = {0};
  if (length != 0) memcpy(buffer, data, length);
  int rc;
  uint32_t outLength;
  if (attribute == 4) {
    uint32_t slot;
    memcpy(&slot, buffer, sizeof slot);
    rc = fn(instance, attribute, &slot);
    memcpy(buffer, &slot, sizeof slot);
    outLength = sizeof slot;
  } else {
    if (capacity > ICM_MAX_VALUE) capacity = ICM_MAX_VALUE;
    // No bytes and no capacity is a null holder.
    MdbOctetValue holder{buffer, length > capacity ? length : capacity};
    rc = fn(instance, attribute, data != nullptr || capacity != 0 ? &holder : nullptr);
    outLength = boundedLength(holder.length);
  }
  icmPutU32(w, static_cast<uint32_t>(rc));
  icmPutBytes(w, buffer, rc == 0 ? outLength : 0);
  return ICM_STATUS_OK;
}
uint32_t cmdScalarGetApi(const IcmRequest* r, IcmWriter* w) { return scalarCall(r, w, mdbScalarGetApi); }
uint32_t cmdScalarSetApi(const IcmRequest* r, IcmWriter* w) { return scalarCall(r, w, mdbScalarSetApi); }
uint32_t cmdScalarSyncApi(const IcmRequest* r, IcmWriter* w) { return scalarCall(r, w, mdbScalarSyncApi); }

// 16, our own: name, index, capacity, steps, tag -> count, then per step rc,
// index, value. Each step starts where the last one ended; the chain stops at
// the first error (which it reports) or when the reply could not hold one
// more step of the asked capacity.
uint32_t cmdGetNextChain(const IcmRequest* r, IcmWriter* w) {
  Frame f;
  uint32_t steps;
  if (r->argCount != 5 || !readNameIndex(r, &f) || !readCapacity(r, 2, &f) || !icmArgU32(r, 3, &steps) ||
      !readTag(r, 4, &f))
    return ICM_STATUS_BAD_ARGUMENTS;
  if (steps > MDB_CHAIN_MAX_STEPS) steps = MDB_CHAIN_MAX_STEPS;
  const uint32_t capacity = f.valueLength;
  const uint32_t countAt = w->length;
  icmPutU32(w, 0);
  uint32_t done = 0;
  while (done < steps) {
    // Room for rc, the largest index and the value, with their headers.
    if (icmRoom(w) < 3 * ICM_ARG_HEADER_SIZE + 4 + ICM_MAX_INDEX * 4 + capacity + 8) break;
    uint32_t length = capacity;
    uint32_t rc = mdbGetNext(f.nameArg, f.index, ICM_MAX_INDEX, &f.indexCount, f.value, &length, f.tagArg);
    if (rc == 0) f.indexCount = boundedCount(f.indexCount);
    icmPutU32(w, rc);
    icmPutU32Array(w, f.index, rc == 0 ? f.indexCount : 0);
    icmPutBytes(w, f.value, rc == 0 ? boundedLength(length) : 0);
    done++;
    if (rc != 0) break;
  }
  icmStore32(w->buf + countAt + ICM_ARG_HEADER_SIZE, done);
  return ICM_STATUS_OK;
}

}  // namespace

const IcmFuncMapRow gMdbFuncMap[MDB_FUNC_MAP_ROWS] = {
    {0, "none", nullptr},
    {1, "mdbGetNext", cmdGetNext},
    {2, "mdbCommit", cmdCommit},
    {3, "mdbValidate", cmdValidate},
    {4, "mdbNvmSet", cmdNvmSet},
    {5, "mdbSetApi", cmdSetApi},
    {6, "mdbGetApi", cmdGetApi},
    {7, "mdbObjInfoGet", cmdObjInfoGet},
    {8, "mdbObjectNameNextGet", cmdObjectNameNextGet},
    {9, "mdbObjNameGet", cmdObjNameGet},
    {10, "mdbModuleGet", cmdModuleGet},
    {11, "mdbSnmpInit", cmdSnmpInit},
    {12, "mdbSysStateSet", cmdSysStateSet},
    {13, "mdbScalarGetApi", cmdScalarGetApi},
    {14, "mdbScalarSetApi", cmdScalarSetApi},
    {15, "mdbScalarSyncApi", cmdScalarSyncApi},
    {16, "mdbGetNextChain", cmdGetNextChain},
};

int mdbCmdTaskInit(void) {
  // 16 read sockets, 8 write sockets and the general one; the server makes no
  // difference between them.
  for (uint32_t socket = 0; socket < MDB_CMD_SOCKETS; socket++) {
    char task[32];
    char path[256];
    if (socket < 16) snprintf(task, sizeof task, "mdbcmdtask-r%u", socket);
    else if (socket < 24) snprintf(task, sizeof task, "mdbcmdtask-w%u", socket - 16);
    else snprintf(task, sizeof task, "mdbcmdtask");
    if (mdbCmdSocketPath(path, sizeof path, socket) != 0) continue;
    icmProcTcpInit(task, path, gMdbFuncMap, MDB_FUNC_MAP_ROWS);
  }
  return 0;
}
