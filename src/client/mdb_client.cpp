// libmdbclient: one connection to an mdb command socket, one request at a time.
#include "mdb/mdb_client.h"
#include "mdb/mdb_cmd.h"
#include "platform/icm.h"
#include "platform/sil.h"
#include "platform/tgp.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <atomic>
#include <new>

struct MdbClient {
  int fd;
  uint32_t sequence;
  uint32_t lastStatus;
  int timeoutMs;
  IcmRequest reply;  // views into `in`
  alignas(8) uint8_t out[ICM_MAX_REQUEST];
  alignas(8) uint8_t in[ICM_MAX_REPLY];
};

namespace {

bool sendAll(MdbClient* c, const uint8_t* data, uint32_t length) {
  uint32_t sent = 0;
  while (sent < length) {
    ssize_t n = send(c->fd, data + sent, length - sent, MSG_NOSIGNAL);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    sent += static_cast<uint32_t>(n);
  }
  return true;
}

bool readAll(MdbClient* c, uint8_t* data, uint32_t length) {
  uint32_t got = 0;
  while (got < length) {
    pollfd p{c->fd, POLLIN, 0};
    int ready = poll(&p, 1, c->timeoutMs);
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return false;
    ssize_t n = recv(c->fd, data + got, length - got, 0);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    got += static_cast<uint32_t>(n);
  }
  return true;
}

// Sends the frame in the writer and reads its reply into c->reply. 0, or a
// client error; after an I/O error the connection is unusable.
uint32_t roundTrip(MdbClient* c, IcmWriter* w, uint16_t command) {
  c->lastStatus = 0;
  if (c->fd < 0) return MDB_CLIENT_ERR_IO;
  uint32_t sequence = ++c->sequence;
  uint32_t length = icmEnd(w, command, sequence, 0);
  if (length == 0) return MDB_CLIENT_ERR_ARGS;
  if (!sendAll(c, c->out, length) || !readAll(c, c->in, ICM_HEADER_SIZE)) {
    close(c->fd);
    c->fd = -1;
    return MDB_CLIENT_ERR_IO;
  }
  uint32_t replyLength = 0;
  if (icmParseHeader(c->in, ICM_HEADER_SIZE, ICM_MAX_REPLY, &replyLength) != ICM_STATUS_OK ||
      !readAll(c, c->in + ICM_HEADER_SIZE, replyLength - ICM_HEADER_SIZE)) {
    close(c->fd);
    c->fd = -1;
    return MDB_CLIENT_ERR_IO;
  }
  uint32_t status = 0;
  if (icmDecode(c->in, replyLength, &c->reply, &status, ICM_MAX_REPLY_ARGS) != ICM_STATUS_OK || c->reply.sequence != sequence ||
      c->reply.command != command) {
    c->lastStatus = ICM_STATUS_BAD_FRAME;
    return MDB_CLIENT_ERR_PROTOCOL;
  }
  if (status != ICM_STATUS_OK) {
    c->lastStatus = status;
    return MDB_CLIENT_ERR_PROTOCOL;
  }
  return 0;
}

// The frame's first arguments: name and index.
bool beginNamed(MdbClient* c, IcmWriter* w, const char* name, const uint32_t* index, uint32_t count) {
  icmBegin(w, c->out, sizeof c->out);
  if (name == nullptr || strlen(name) > ICM_MAX_NAME || count > ICM_MAX_INDEX || (index == nullptr && count != 0))
    return false;
  icmPutString(w, name);
  icmPutU32Array(w, index, count);
  return true;
}

bool putTag(IcmWriter* w, const char* tag) {
  if (tag != nullptr && strlen(tag) > ICM_MAX_TAG) return false;
  icmPutString(w, tag);
  return true;
}

bool putValue(IcmWriter* w, const void* value, uint32_t length) {
  if (length > ICM_MAX_VALUE) return false;
  if (value == nullptr) icmPutNone(w);
  else icmPutBytes(w, value, length);
  return true;
}

// Reply readers: each fails if the argument is missing or of another type.
bool replyU32(const MdbClient* c, uint32_t i, uint32_t* v) { return icmArgU32(&c->reply, i, v); }
bool replyBytes(const MdbClient* c, uint32_t i, const uint8_t** data, uint32_t* length) {
  return icmArgBytes(&c->reply, i, data, length, ICM_MAX_REPLY);
}

// Copies reply bytes into a caller's buffer of *pLength bytes (if given).
void copyOut(const uint8_t* data, uint32_t length, void* buffer, uint32_t* pLength) {
  if (pLength == nullptr) return;
  uint32_t n = length < *pLength ? length : *pLength;
  if (buffer != nullptr && n != 0) memcpy(buffer, data, n);
  *pLength = n;
}

uint32_t simpleResult(MdbClient* c, IcmWriter* w, uint16_t command) {
  uint32_t rc = roundTrip(c, w, command);
  if (rc != 0) return rc;
  uint32_t result;
  if (!replyU32(c, 0, &result)) return MDB_CLIENT_ERR_PROTOCOL;
  return result;
}

uint32_t scalarCall(MdbClient* c, uint16_t command, uint32_t instance, uint32_t attribute, const void* in,
                    uint32_t inLength, void* out, uint32_t* pOutLength) {
  IcmWriter w;
  icmBegin(&w, c->out, sizeof c->out);
  icmPutU32(&w, instance);
  icmPutU32(&w, attribute);
  if (!putValue(&w, in, inLength)) return MDB_CLIENT_ERR_ARGS;
  icmPutU32(&w, pOutLength != nullptr ? *pOutLength : 0);
  uint32_t rc = roundTrip(c, &w, command);
  if (rc != 0) return rc;
  uint32_t result;
  const uint8_t* data;
  uint32_t length;
  if (!replyU32(c, 0, &result) || !replyBytes(c, 1, &data, &length)) return MDB_CLIENT_ERR_PROTOCOL;
  copyOut(data, length, out, pOutLength);
  return result;
}

}  // namespace

MdbClient* mdbClientOpen(const char* socketPath) {
  if (socketPath == nullptr) {
    errno = EINVAL;
    return nullptr;
  }
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (strlen(socketPath) >= sizeof address.sun_path) {
    errno = ENAMETOOLONG;
    return nullptr;
  }
  strcpy(address.sun_path, socketPath);
  int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return nullptr;
  if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    int saved = errno;
    close(fd);
    errno = saved;
    return nullptr;
  }
  auto* c = new (std::nothrow) MdbClient;
  if (c == nullptr) {
    close(fd);
    errno = ENOMEM;
    return nullptr;
  }
  c->fd = fd;
  c->sequence = 0;
  c->lastStatus = 0;
  c->timeoutMs = 10000;
  return c;
}

MdbClient* mdbClientOpenSocket(uint32_t socket) {
  char path[256];
  if (mdbCmdSocketPath(path, sizeof path, socket) != 0) {
    errno = EINVAL;
    return nullptr;
  }
  return mdbClientOpen(path);
}

void mdbClientClose(MdbClient* client) {
  if (client == nullptr) return;
  if (client->fd >= 0) close(client->fd);
  delete client;
}

int mdbClientSetTimeout(MdbClient* client, uint32_t milliseconds) {
  if (client == nullptr || milliseconds > 0x7FFFFFFF) return -1;
  client->timeoutMs = static_cast<int>(milliseconds);
  return 0;
}

uint32_t mdbClientLastStatus(const MdbClient* client) { return client != nullptr ? client->lastStatus : 0; }

uint32_t mdbClientGetApi(MdbClient* c, const char* name, const uint32_t* pIndex, uint32_t indexCount,
                         void* pValueBuf, uint32_t* pValueLen, const char* callerTag) {
  IcmWriter w;
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  if (!beginNamed(c, &w, name, pIndex, indexCount)) return MDB_CLIENT_ERR_ARGS;
  icmPutU32(&w, pValueLen != nullptr ? *pValueLen : 0);
  if (!putTag(&w, callerTag)) return MDB_CLIENT_ERR_ARGS;
  uint32_t rc = roundTrip(c, &w, MDB_CMD_GET_API);
  if (rc != 0) return rc;
  uint32_t result;
  const uint8_t* data;
  uint32_t length;
  if (!replyU32(c, 0, &result) || !replyBytes(c, 1, &data, &length)) return MDB_CLIENT_ERR_PROTOCOL;
  if (result == 0) copyOut(data, length, pValueBuf, pValueLen);
  return result;
}

uint32_t mdbClientGetNext(MdbClient* c, const char* name, uint32_t* pIndex, uint32_t indexCapacity,
                          uint32_t* pIndexCount, void* pValueBuf, uint32_t* pValueLen, const char* callerTag) {
  IcmWriter w;
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  if (pIndexCount == nullptr || !beginNamed(c, &w, name, pIndex, *pIndexCount)) return MDB_CLIENT_ERR_ARGS;
  icmPutU32(&w, pValueLen != nullptr ? *pValueLen : 0);
  if (!putTag(&w, callerTag)) return MDB_CLIENT_ERR_ARGS;
  uint32_t rc = roundTrip(c, &w, MDB_CMD_GET_NEXT);
  if (rc != 0) return rc;
  uint32_t result;
  const uint8_t* data;
  uint32_t length;
  if (!replyU32(c, 0, &result) || c->reply.argCount != 3 || c->reply.args[1].type != ICM_U32ARRAY ||
      !replyBytes(c, 2, &data, &length))
    return MDB_CLIENT_ERR_PROTOCOL;
  if (result == 0) {
    uint32_t count = c->reply.args[1].length / 4;
    if (count > indexCapacity || pIndex == nullptr) return MDB_CLIENT_ERR_ARGS;
    memcpy(pIndex, c->reply.args[1].data, count * 4);
    *pIndexCount = count;
    copyOut(data, length, pValueBuf, pValueLen);
  }
  return result;
}

uint32_t mdbClientSetApi(MdbClient* c, const char* name, const uint32_t* pIndex, uint32_t indexCount,
                         const void* pValue, uint32_t valueLen, const char* callerTag, uint32_t options) {
  IcmWriter w;
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  if (!beginNamed(c, &w, name, pIndex, indexCount) || !putValue(&w, pValue, valueLen) || !putTag(&w, callerTag))
    return MDB_CLIENT_ERR_ARGS;
  icmPutU32(&w, options);
  return simpleResult(c, &w, MDB_CMD_SET_API);
}

uint32_t mdbClientValidate(MdbClient* c, const char* name, const uint32_t* pIndex, uint32_t indexCount,
                           const void* pValue, uint32_t valueLen, uint32_t options) {
  IcmWriter w;
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  if (!beginNamed(c, &w, name, pIndex, indexCount) || !putValue(&w, pValue, valueLen)) return MDB_CLIENT_ERR_ARGS;
  icmPutU32(&w, options);
  return simpleResult(c, &w, MDB_CMD_VALIDATE);
}

uint32_t mdbClientCommit(MdbClient* c, const char* name, const uint32_t* pIndex, uint32_t indexCount,
                         const void* pValue, uint32_t valueLen, uint32_t options, const char* callerTag) {
  IcmWriter w;
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  if (!beginNamed(c, &w, name, pIndex, indexCount) || !putValue(&w, pValue, valueLen)) return MDB_CLIENT_ERR_ARGS;
  icmPutU32(&w, options);
  if (!putTag(&w, callerTag)) return MDB_CLIENT_ERR_ARGS;
  return simpleResult(c, &w, MDB_CMD_COMMIT);
}

uint32_t mdbClientNvmSet(MdbClient* c, const char* name, const uint32_t* pIndex, uint32_t indexCount,
                         const void* pValue, uint32_t valueLen) {
  IcmWriter w;
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  if (!beginNamed(c, &w, name, pIndex, indexCount) || !putValue(&w, pValue, valueLen)) return MDB_CLIENT_ERR_ARGS;
  return simpleResult(c, &w, MDB_CMD_NVM_SET);
}

uint32_t mdbClientObjInfoGet(MdbClient* c, const char* name, uint32_t mask, MdbObjInfo* out) {
  IcmWriter w;
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  if (name == nullptr || strlen(name) > ICM_MAX_NAME) return MDB_CLIENT_ERR_ARGS;
  icmBegin(&w, c->out, sizeof c->out);
  icmPutString(&w, name);
  icmPutU32(&w, mask);
  uint32_t rc = roundTrip(c, &w, MDB_CMD_OBJ_INFO_GET);
  if (rc != 0) return rc;
  uint32_t result;
  const uint8_t* data;
  uint32_t length;
  if (!replyU32(c, 0, &result) || !replyBytes(c, 1, &data, &length) || length != sizeof(MdbObjInfo))
    return MDB_CLIENT_ERR_PROTOCOL;
  if (out != nullptr) memcpy(out, data, sizeof *out);
  return result;
}

uint32_t mdbClientObjectNameNextGet(MdbClient* c, const char* name, char* out, uint32_t outLength) {
  IcmWriter w;
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  if (name == nullptr || strlen(name) > ICM_MAX_NAME) return MDB_CLIENT_ERR_ARGS;
  icmBegin(&w, c->out, sizeof c->out);
  icmPutString(&w, name);
  icmPutU32(&w, outLength);
  uint32_t rc = roundTrip(c, &w, MDB_CMD_OBJECT_NAME_NEXT_GET);
  if (rc != 0) return rc;
  uint32_t result;
  char next[ICM_MAX_NAME + 1];
  const char* text;
  if (!replyU32(c, 0, &result) || !icmArgString(&c->reply, 1, next, sizeof next, &text))
    return MDB_CLIENT_ERR_PROTOCOL;
  if (out != nullptr && outLength != 0) snprintf(out, outLength, "%s", text);
  return result;
}

uint32_t mdbClientObjNameGet(MdbClient* c, const uint32_t* oid, uint32_t oidLength, uint32_t* pOidLen,
                             uint32_t* pIndexCountMax, uint32_t* pType, char* nameOut, uint32_t nameCapacity) {
  IcmWriter w;
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  if (oidLength > ICM_MAX_INDEX || (oid == nullptr && oidLength != 0)) return MDB_CLIENT_ERR_ARGS;
  icmBegin(&w, c->out, sizeof c->out);
  icmPutU32Array(&w, oid, oidLength);
  uint32_t rc = roundTrip(c, &w, MDB_CMD_OBJ_NAME_GET);
  if (rc != 0) return rc;
  uint32_t result, oidLen, indexCountMax, type;
  char name[ICM_MAX_NAME + 1];
  const char* text;
  if (!replyU32(c, 0, &result) || !replyU32(c, 1, &oidLen) || !replyU32(c, 2, &indexCountMax) ||
      !replyU32(c, 3, &type) || !icmArgString(&c->reply, 4, name, sizeof name, &text))
    return MDB_CLIENT_ERR_PROTOCOL;
  if (result == 0) {
    if (pOidLen != nullptr) *pOidLen = oidLen;
    if (pIndexCountMax != nullptr) *pIndexCountMax = indexCountMax;
    if (pType != nullptr) *pType = type;
    if (nameOut != nullptr && nameCapacity != 0) snprintf(nameOut, nameCapacity, "%s", text);
  }
  return result;
}

uint32_t mdbClientModuleGet(MdbClient* c, const char* name, MdbClientModule* out) {
  IcmWriter w;
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  if (name == nullptr || strlen(name) > ICM_MAX_NAME) return MDB_CLIENT_ERR_ARGS;
  icmBegin(&w, c->out, sizeof c->out);
  icmPutString(&w, name);
  uint32_t rc = roundTrip(c, &w, MDB_CMD_MODULE_GET);
  if (rc != 0) return rc;
  uint32_t result, lastChange, registrationId;
  char moduleName[ICM_MAX_NAME + 1];
  const char* text;
  if (!replyU32(c, 0, &result) || !icmArgString(&c->reply, 1, moduleName, sizeof moduleName, &text) ||
      !replyU32(c, 2, &lastChange) || !replyU32(c, 3, &registrationId))
    return MDB_CLIENT_ERR_PROTOCOL;
  char first[ICM_MAX_NAME + 1];
  const char* firstText;
  if (!icmArgString(&c->reply, 4, first, sizeof first, &firstText)) return MDB_CLIENT_ERR_PROTOCOL;
  if (out != nullptr && result == 0) {
    snprintf(out->name, sizeof out->name, "%s", text);
    snprintf(out->firstObject, sizeof out->firstObject, "%s", firstText);
    out->lastChange = lastChange;
    out->registrationId = registrationId;
  }
  return result;
}

uint32_t mdbClientSnmpInit(MdbClient* c) {
  IcmWriter w;
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  icmBegin(&w, c->out, sizeof c->out);
  return simpleResult(c, &w, MDB_CMD_SNMP_INIT);
}

uint32_t mdbClientSnmpInitSummary(MdbClient* c, MdbClientSnmpSummary* out) {
  IcmWriter w;
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  icmBegin(&w, c->out, sizeof c->out);
  uint32_t rc = roundTrip(c, &w, MDB_CMD_SNMP_INIT);
  if (rc != 0) return rc;
  uint32_t v[7];
  if (c->reply.argCount != 7) return MDB_CLIENT_ERR_PROTOCOL;
  for (uint32_t i = 0; i < 7; i++)
    if (!replyU32(c, i, &v[i])) return MDB_CLIENT_ERR_PROTOCOL;
  if (out != nullptr) *out = MdbClientSnmpSummary{v[1], v[2], v[3], v[4], v[5], v[6]};
  return v[0];
}

uint32_t mdbClientSnmpListPage(MdbClient* c, uint32_t list, uint32_t offset, uint32_t maxRows,
                               MdbClientSnmpRowFn fn, void* arg, uint32_t* pTotal, uint32_t* pCount) {
  IcmWriter w;
  if (pCount != nullptr) *pCount = 0;
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  icmBegin(&w, c->out, sizeof c->out);
  icmPutU32(&w, list);
  icmPutU32(&w, offset);
  icmPutU32(&w, maxRows);
  uint32_t rc = roundTrip(c, &w, MDB_CMD_SNMP_INIT);
  if (rc != 0) return rc;
  uint32_t result, total, count;
  const uint32_t perRow = list == MDB_SNMP_LIST_OBJECTS ? 5 : 2;
  if (!replyU32(c, 0, &result) || !replyU32(c, 1, &total) || !replyU32(c, 2, &count) ||
      c->reply.argCount != 3 + perRow * count)
    return MDB_CLIENT_ERR_PROTOCOL;
  bool listening = fn != nullptr;
  for (uint32_t i = 0; i < count && listening; i++) {
    const uint32_t at = 3 + perRow * i;
    MdbClientSnmpRow row{};
    const char* text;
    if (!icmArgString(&c->reply, at, row.name, sizeof row.name, &text) ||
        !icmArgU32Array(&c->reply, at + 1, row.oid, sizeof row.oid / sizeof row.oid[0], &row.oidLength) ||
        (perRow == 5 && (!replyU32(c, at + 2, &row.type) || !replyU32(c, at + 3, &row.access) ||
                         !replyU32(c, at + 4, &row.indexCountMax))))
      return MDB_CLIENT_ERR_PROTOCOL;
    if (fn(arg, &row) != 0) listening = false;
  }
  if (pTotal != nullptr) *pTotal = total;
  if (pCount != nullptr) *pCount = count;
  return result;
}

namespace {
struct ListWalk {
  MdbClientSnmpRowFn fn;
  void* arg;
  uint32_t passed;
  bool stopped;
};
int listWalkRow(void* arg, const MdbClientSnmpRow* row) {
  auto* walk = static_cast<ListWalk*>(arg);
  walk->passed++;
  if (walk->fn != nullptr && walk->fn(walk->arg, row) != 0) walk->stopped = true;
  return walk->stopped ? 1 : 0;
}
}  // namespace

uint32_t mdbClientSnmpList(MdbClient* c, uint32_t list, uint32_t pageRows, MdbClientSnmpRowFn fn, void* arg,
                           uint32_t* pCount) {
  ListWalk walk{fn, arg, 0, false};
  uint32_t offset = 0, total = 0, count = 0;
  uint32_t rc;
  do {
    rc = mdbClientSnmpListPage(c, list, offset, pageRows, listWalkRow, &walk, &total, &count);
    offset += count;
    // A page that brings nothing ends the list even if its total says otherwise.
  } while (rc == 0 && !walk.stopped && count != 0 && offset < total);
  if (pCount != nullptr) *pCount = walk.passed;
  return rc;
}

uint32_t mdbClientSysStateSet(MdbClient* c, uint32_t state) {
  IcmWriter w;
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  icmBegin(&w, c->out, sizeof c->out);
  icmPutU32(&w, state);
  return simpleResult(c, &w, MDB_CMD_SYS_STATE_SET);
}

uint32_t mdbClientScalarGetApi(MdbClient* c, uint32_t instance, uint32_t attribute, const void* in,
                               uint32_t inLength, void* out, uint32_t* pOutLength) {
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  return scalarCall(c, MDB_CMD_SCALAR_GET_API, instance, attribute, in, inLength, out, pOutLength);
}
uint32_t mdbClientScalarSetApi(MdbClient* c, uint32_t instance, uint32_t attribute, const void* in,
                               uint32_t inLength, void* out, uint32_t* pOutLength) {
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  return scalarCall(c, MDB_CMD_SCALAR_SET_API, instance, attribute, in, inLength, out, pOutLength);
}
uint32_t mdbClientScalarSyncApi(MdbClient* c, uint32_t instance, uint32_t attribute, const void* in,
                                uint32_t inLength, void* out, uint32_t* pOutLength) {
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  return scalarCall(c, MDB_CMD_SCALAR_SYNC_API, instance, attribute, in, inLength, out, pOutLength);
}

uint32_t mdbClientGetNextChain(MdbClient* c, const char* name, uint32_t* pIndex, uint32_t indexCapacity,
                               uint32_t* pIndexCount, uint32_t steps, uint32_t valueCapacity,
                               const char* callerTag, MdbClientStepFn step, void* arg, uint32_t* pSteps) {
  IcmWriter w;
  if (pSteps != nullptr) *pSteps = 0;
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  if (pIndexCount == nullptr || !beginNamed(c, &w, name, pIndex, *pIndexCount)) return MDB_CLIENT_ERR_ARGS;
  icmPutU32(&w, valueCapacity);
  icmPutU32(&w, steps);
  if (!putTag(&w, callerTag)) return MDB_CLIENT_ERR_ARGS;
  uint32_t rc = roundTrip(c, &w, MDB_CMD_GET_NEXT_CHAIN);
  if (rc != 0) return rc;
  uint32_t count;
  if (!replyU32(c, 0, &count) || c->reply.argCount != 1 + 3 * count) return MDB_CLIENT_ERR_PROTOCOL;
  uint32_t last = 0;
  bool listening = step != nullptr;
  for (uint32_t i = 0; i < count; i++) {
    const IcmArg& index = c->reply.args[1 + 3 * i + 1];
    uint32_t result;
    const uint8_t* data;
    uint32_t length;
    if (!replyU32(c, 1 + 3 * i, &result) || index.type != ICM_U32ARRAY || !replyBytes(c, 1 + 3 * i + 2, &data, &length))
      return MDB_CLIENT_ERR_PROTOCOL;
    uint32_t n = index.length / 4;
    if (result == 0) {
      if (n > indexCapacity || pIndex == nullptr) return MDB_CLIENT_ERR_ARGS;
      memcpy(pIndex, index.data, index.length);
      *pIndexCount = n;
    }
    if (listening && step(arg, result, pIndex, result == 0 ? n : 0, data, length) != 0) listening = false;
    last = result;
  }
  if (pSteps != nullptr) *pSteps = count;
  return last;
}

struct MdbClientEvents {
  int fd;
  sockaddr_un address;
};

MdbClientEvents* mdbClientEventsOpen(uint32_t group) {
  static std::atomic<uint32_t> serial{0};
  char prefix[32], name[96];
  tgpBusPrefix(prefix, sizeof prefix, group);
  snprintf(name, sizeof name, "%s%d-%u.socket", prefix, static_cast<int>(getpid()), serial.fetch_add(1));
  auto* e = new (std::nothrow) MdbClientEvents;
  if (e == nullptr) return nullptr;
  memset(&e->address, 0, sizeof e->address);
  e->address.sun_family = AF_UNIX;
  e->fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (e->fd < 0 || silRunPath(e->address.sun_path, sizeof e->address.sun_path, name) != 0) {
    if (e->fd >= 0) close(e->fd);
    delete e;
    return nullptr;
  }
  unlink(e->address.sun_path);
  if (bind(e->fd, reinterpret_cast<sockaddr*>(&e->address), sizeof e->address) != 0) {
    close(e->fd);
    delete e;
    return nullptr;
  }
  return e;
}

int mdbClientEventsRead(MdbClientEvents* e, void* buffer, uint32_t capacity, int timeoutMs) {
  if (e == nullptr || buffer == nullptr) return -1;
  for (;;) {
    pollfd p{e->fd, POLLIN, 0};
    int ready = poll(&p, 1, timeoutMs);
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return ready;
    ssize_t n = recv(e->fd, buffer, capacity, 0);
    if (n < 0 && errno == EINTR) continue;
    return n < 0 ? -1 : static_cast<int>(n);
  }
}

void mdbClientEventsClose(MdbClientEvents* e) {
  if (e == nullptr) return;
  close(e->fd);
  unlink(e->address.sun_path);
  delete e;
}
