// The command-socket protocol and server of the platform.
//
// A client sends frames on a local stream socket; the server task behind the
// socket calls the row of its function map that the frame's command names and
// sends back one reply frame per request, in order. The codec is header-only
// so that the server and the client library share it.
//
// Frame (all integers little-endian):
//   0  u32  length of the whole frame, header included
//   4  u16  version (ICM_VERSION)
//   6  u16  command id
//   8  u32  sequence number, echoed in the reply
//  12  u32  status: 0 in a request; in a reply ICM_STATUS_OK, or a protocol
//           error and then no arguments
//  16  arguments, each: u8 type, u8 0, u16 0, u32 length, the data, padding
//      to a multiple of 4
#ifndef PLATFORM_ICM_H
#define PLATFORM_ICM_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

static_assert(std::endian::native == std::endian::little, "the wire codec assumes a little-endian machine");

enum : uint32_t {
  ICM_VERSION = 1,
  ICM_HEADER_SIZE = 16,
  ICM_ARG_HEADER_SIZE = 8,
  ICM_MAX_REQUEST = 16384,  // largest request frame the server reads
  ICM_MAX_REPLY = 65536,    // largest reply frame the server writes
  ICM_MAX_ARGS = 12,        // arguments of one request
  ICM_MAX_REPLY_ARGS = 1024,  // arguments of one reply
  ICM_MAX_NAME = 255,       // characters of an object or module name
  ICM_MAX_TAG = 63,         // characters of a caller tag
  ICM_MAX_VALUE = 8192,     // bytes of a value
  ICM_MAX_INDEX = 1024,     // sub-ids of an index or OID on the wire
};

enum IcmArgType : uint8_t {
  ICM_U32 = 1,
  ICM_BYTES = 2,
  ICM_STRING = 3,     // text without its NUL; may not contain a NUL
  ICM_U32ARRAY = 4,
  ICM_NONE = 5,       // an absent pointer argument
};

enum IcmStatus : uint32_t {
  ICM_STATUS_OK = 0,
  ICM_STATUS_BAD_VERSION = 1,
  ICM_STATUS_UNKNOWN_COMMAND = 2,
  ICM_STATUS_BAD_ARGUMENTS = 3,  // wrong count, type or size of arguments
  ICM_STATUS_TOO_BIG = 4,        // frame above the maximum: the connection closes
  ICM_STATUS_BAD_FRAME = 5,      // arguments that do not fill the frame exactly
};

// One argument: a view into the frame.
struct IcmArg {
  uint8_t type;
  uint32_t length;
  const uint8_t* data;
};

struct IcmRequest {
  uint16_t command;
  uint32_t sequence;
  uint32_t argCount;
  IcmArg args[ICM_MAX_REPLY_ARGS];
};

// Appends arguments to a frame in a fixed buffer; an argument that does not
// fit sets `overflow` and is dropped.
struct IcmWriter {
  uint8_t* buf;
  uint32_t capacity;
  uint32_t length;
  bool overflow;
};

inline uint32_t icmLoad32(const uint8_t* p) {
  uint32_t v;
  memcpy(&v, p, 4);
  return v;
}
inline uint16_t icmLoad16(const uint8_t* p) {
  uint16_t v;
  memcpy(&v, p, 2);
  return v;
}
inline void icmStore32(uint8_t* p, uint32_t v) { memcpy(p, &v, 4); }
inline void icmStore16(uint8_t* p, uint16_t v) { memcpy(p, &v, 2); }
inline uint32_t icmPad4(uint32_t n) { return (n + 3u) & ~3u; }

// Starts a frame: reserves the header.
inline void icmBegin(IcmWriter* w, uint8_t* buf, uint32_t capacity) {
  w->buf = buf;
  w->capacity = capacity;
  w->length = ICM_HEADER_SIZE;
  w->overflow = capacity < ICM_HEADER_SIZE;
}

// Room left for the data of one more argument.
inline uint32_t icmRoom(const IcmWriter* w) {
  uint32_t used = w->length + ICM_ARG_HEADER_SIZE;
  return used + 3 < w->capacity ? w->capacity - used - 3 : 0;
}

inline void icmPut(IcmWriter* w, uint8_t type, const void* data, uint32_t length) {
  if (w->overflow) return;
  uint64_t end = static_cast<uint64_t>(w->length) + ICM_ARG_HEADER_SIZE + icmPad4(length);
  if (length > ICM_MAX_REPLY || end > w->capacity) {
    w->overflow = true;
    return;
  }
  uint8_t* p = w->buf + w->length;
  p[0] = type;
  p[1] = 0;
  icmStore16(p + 2, 0);
  icmStore32(p + 4, length);
  if (length != 0) memcpy(p + ICM_ARG_HEADER_SIZE, data, length);
  memset(p + ICM_ARG_HEADER_SIZE + length, 0, icmPad4(length) - length);
  w->length = static_cast<uint32_t>(end);
}
inline void icmPutU32(IcmWriter* w, uint32_t v) { icmPut(w, ICM_U32, &v, 4); }
inline void icmPutBytes(IcmWriter* w, const void* data, uint32_t length) { icmPut(w, ICM_BYTES, data, length); }
inline void icmPutString(IcmWriter* w, const char* text) {
  if (text == nullptr) icmPut(w, ICM_NONE, nullptr, 0);
  else icmPut(w, ICM_STRING, text, static_cast<uint32_t>(strnlen(text, ICM_MAX_REPLY)));
}
inline void icmPutU32Array(IcmWriter* w, const uint32_t* values, uint32_t count) {
  icmPut(w, ICM_U32ARRAY, values, count * 4u);
}
inline void icmPutNone(IcmWriter* w) { icmPut(w, ICM_NONE, nullptr, 0); }

// Ends a frame: writes the header; returns the frame's length, or 0 if an
// argument did not fit.
inline uint32_t icmEnd(IcmWriter* w, uint16_t command, uint32_t sequence, uint32_t status) {
  if (w->overflow) return 0;
  icmStore32(w->buf, w->length);
  icmStore16(w->buf + 4, ICM_VERSION);
  icmStore16(w->buf + 6, command);
  icmStore32(w->buf + 8, sequence);
  icmStore32(w->buf + 12, status);
  return w->length;
}

// Reads a frame's header. 0, or the status that the frame deserves.
inline uint32_t icmParseHeader(const uint8_t* frame, uint32_t available, uint32_t maxLength, uint32_t* length) {
  if (available < ICM_HEADER_SIZE) return ICM_STATUS_BAD_FRAME;
  *length = icmLoad32(frame);
  if (*length < ICM_HEADER_SIZE) return ICM_STATUS_BAD_FRAME;
  if (*length > maxLength) return ICM_STATUS_TOO_BIG;
  return ICM_STATUS_OK;
}

// Splits a whole frame into at most maxArgs arguments. 0, or the status it deserves.
inline uint32_t icmDecode(const uint8_t* frame, uint32_t length, IcmRequest* out, uint32_t* status,
                          uint32_t maxArgs) {
  if (maxArgs > ICM_MAX_REPLY_ARGS) maxArgs = ICM_MAX_REPLY_ARGS;
  out->command = icmLoad16(frame + 6);
  out->sequence = icmLoad32(frame + 8);
  out->argCount = 0;
  if (status != nullptr) *status = icmLoad32(frame + 12);
  if (icmLoad16(frame + 4) != ICM_VERSION) return ICM_STATUS_BAD_VERSION;
  uint32_t at = ICM_HEADER_SIZE;
  while (at < length) {
    if (out->argCount == maxArgs || length - at < ICM_ARG_HEADER_SIZE) return ICM_STATUS_BAD_FRAME;
    const uint8_t* p = frame + at;
    uint8_t type = p[0];
    uint32_t argLength = icmLoad32(p + 4);
    if (type < ICM_U32 || type > ICM_NONE || p[1] != 0 || icmLoad16(p + 2) != 0) return ICM_STATUS_BAD_FRAME;
    uint64_t padded = (static_cast<uint64_t>(argLength) + 3u) & ~static_cast<uint64_t>(3u);
    if (padded > length - at - ICM_ARG_HEADER_SIZE) return ICM_STATUS_BAD_FRAME;
    if ((type == ICM_U32 && argLength != 4) || (type == ICM_U32ARRAY && argLength % 4 != 0) ||
        (type == ICM_NONE && argLength != 0) ||
        (type == ICM_STRING && memchr(p + ICM_ARG_HEADER_SIZE, 0, argLength) != nullptr))
      return ICM_STATUS_BAD_FRAME;
    out->args[out->argCount++] = IcmArg{type, argLength, p + ICM_ARG_HEADER_SIZE};
    at += ICM_ARG_HEADER_SIZE + static_cast<uint32_t>(padded);
  }
  return ICM_STATUS_OK;
}

// Typed readers of a decoded request; each returns false for a missing
// argument of the wrong type or size.
inline bool icmArgU32(const IcmRequest* r, uint32_t i, uint32_t* v) {
  if (i >= r->argCount || r->args[i].type != ICM_U32) return false;
  *v = icmLoad32(r->args[i].data);
  return true;
}
// A text into a NUL-terminated buffer of `capacity` bytes; NONE gives null
// if `optional`, else fails.
inline bool icmArgString(const IcmRequest* r, uint32_t i, char* buf, uint32_t capacity, const char** out,
                         bool optional = false) {
  if (i >= r->argCount) return false;
  const IcmArg& a = r->args[i];
  if (a.type == ICM_NONE && optional) {
    *out = nullptr;
    return true;
  }
  if (a.type != ICM_STRING || a.length >= capacity) return false;
  memcpy(buf, a.data, a.length);
  buf[a.length] = '\0';
  *out = buf;
  return true;
}
// An array into `out` (room for `capacity` values); the count in *count.
inline bool icmArgU32Array(const IcmRequest* r, uint32_t i, uint32_t* out, uint32_t capacity, uint32_t* count) {
  if (i >= r->argCount || r->args[i].type != ICM_U32ARRAY || r->args[i].length / 4 > capacity) return false;
  *count = r->args[i].length / 4;
  if (*count != 0) memcpy(out, r->args[i].data, r->args[i].length);
  return true;
}
// Bytes, or NONE as a null pointer.
inline bool icmArgBytes(const IcmRequest* r, uint32_t i, const uint8_t** data, uint32_t* length,
                        uint32_t maxLength) {
  if (i >= r->argCount) return false;
  const IcmArg& a = r->args[i];
  if (a.type == ICM_NONE) {
    *data = nullptr;
    *length = 0;
    return true;
  }
  if (a.type != ICM_BYTES || a.length > maxLength) return false;
  *data = a.data;
  *length = a.length;
  return true;
}

// ---------------------------------------------------------------- server
// A row of a function map: the command id and the function that serves it.
// The function reads the request's arguments, calls the operation and writes
// the reply's arguments; it returns ICM_STATUS_OK, or ICM_STATUS_BAD_ARGUMENTS
// (the operation was not called and the reply carries no arguments).
typedef uint32_t (*IcmCommandFn)(const IcmRequest* request, IcmWriter* reply);
struct IcmFuncMapRow {
  uint32_t id;
  const char* name;
  IcmCommandFn fn;
};

// Starts a task named taskName that listens on the local socket socketPath
// (a stale file there is removed first; the socket gets mode 0660) and serves
// any number of connections, each any number of requests, answered in order.
// 0, or -1 if the socket or the task could not be made.
int icmProcTcpInit(const char* taskName, const char* socketPath, const IcmFuncMapRow* functionMap,
                   uint32_t rowCount);

// Connections a server task serves at once; a connection beyond them is
// closed at once.
enum : uint32_t { ICM_MAX_CONNECTIONS = 128 };

#endif
