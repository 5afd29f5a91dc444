// mdbctl: the command line of mdb, for people and scripts.
//
//   mdbctl [-s SOCKET] [--json] COMMAND ...
//
// Exit status: 0 success, 1 mdb answered with an error code, 2 usage error or
// no connection.
#include "mdb/mdb_client.h"
#include "mdb/mdb_cmd.h"
#include "mdb/mdb_errors.h"
#include "mdb/mdb_timer.h"
#include "mdb/mdb_types.h"

#include <arpa/inet.h>
#include <unistd.h>

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

namespace {

constexpr int kExitOk = 0;
constexpr int kExitMdbError = 1;
constexpr int kExitUsage = 2;
constexpr uint32_t kValueCapacity = ICM_MAX_VALUE;
constexpr uint32_t kChainSteps = 64;

struct Options {
  std::string socket;
  bool json = false;
  bool hex = false;
  uint32_t setOptions = 1;
  const char* tag = nullptr;
};
Options gOpt;
MdbClient* gClient = nullptr;

const char* typeName(uint32_t type) {
  static const char* const names[] = {"NULL",     "INTEGER", "OCTET_STRING", "OBJECT_IDENTIFIER", "IpAddress",
                                      "MACAddress", "Counter", "Guage",       "TimeTicks",         "Opaque",
                                      "Port_List", "BridgeId", "Counter64",   "RowStatus"};
  return type < sizeof names / sizeof names[0] ? names[type] : "unknown";
}

[[noreturn]] void usage(const char* message = nullptr) {
  if (message != nullptr) fprintf(stderr, "mdbctl: %s\n", message);
  fprintf(stderr,
          "usage: mdbctl [-s SOCKET] [--json] COMMAND ...\n"
          "  get NAME [INDEX]                 read one instance (INDEX as dotted sub-ids; a scalar is 0)\n"
          "  next NAME [INDEX]                the instance after INDEX\n"
          "  walk NAME | MODULE               every instance of an object, or of every object of a module\n"
          "  set NAME INDEX VALUE [--options N] [--tag TAG] [--hex]\n"
          "  validate | commit | nvmset NAME INDEX VALUE [--options N] [--tag TAG] [--hex]\n"
          "  info NAME                        the object's descriptor\n"
          "  name OID                         the object at an OID\n"
          "  next-name NAME                   the next object of the module\n"
          "  module NAME                      the module's record\n"
          "  snmp-init                        register with the SNMP agent; with --json, all it was given\n"
          "  export-tree FILE                 the daemon writes its MIB tree to FILE\n"
          "  show-all FILE                    the daemon writes every module's objects to FILE\n"
          "  sysstate N | scalar-get ATTR [TEXT] | scalar-set ATTR VALUE\n"
          "  events [--count N] [--timeout SECONDS]   print configuration-change events as they come\n"
          "SOCKET defaults to $MDB_RUNDIR/mdbcmd.socket (/tmp if unset).\n");
  exit(kExitUsage);
}

// ---------------------------------------------------------------- JSON
// Length of the valid UTF-8 sequence of two to four bytes at data, or 0.
size_t utf8Sequence(const uint8_t* data, size_t length) {
  uint8_t lead = data[0];
  size_t n = lead >= 0xF0 && lead <= 0xF4 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 && lead <= 0xDF ? 2 : 0;
  if (lead >= 0xF5 || n == 0 || n > length) return 0;
  for (size_t i = 1; i < n; i++)
    if ((data[i] & 0xC0) != 0x80) return 0;
  if (n == 3 && ((lead == 0xE0 && data[1] < 0xA0) || (lead == 0xED && data[1] >= 0xA0))) return 0;
  if (n == 4 && ((lead == 0xF0 && data[1] < 0x90) || (lead == 0xF4 && data[1] >= 0x90))) return 0;
  return n;
}

// Valid UTF-8 passes as it is; control characters and bytes that are not
// UTF-8 are escaped (the "hex" member beside it is exact in every case).
std::string jsonString(const uint8_t* data, size_t length) {
  std::string out = "\"";
  for (size_t i = 0; i < length; i++) {
    unsigned char ch = data[i];
    size_t n = ch >= 0x80 ? utf8Sequence(data + i, length - i) : 0;
    if (n != 0) {
      out.append(reinterpret_cast<const char*>(data + i), n);
      i += n - 1;
      continue;
    }
    switch (ch) {
      case '"': out += "\\\""; break;
      case '\\': out += "\\\\"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      case '\t': out += "\\t"; break;
      default:
        if (ch < 0x20 || ch >= 0x7f) {
          char esc[8];
          snprintf(esc, sizeof esc, "\\u%04x", ch);
          out += esc;
        } else {
          out += static_cast<char>(ch);
        }
    }
  }
  return out + "\"";
}
std::string jsonString(const std::string& text) {
  return jsonString(reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

std::string hexText(const uint8_t* data, uint32_t length) {
  std::string out;
  char b[4];
  for (uint32_t i = 0; i < length; i++) {
    snprintf(b, sizeof b, "%02x", data[i]);
    out += b;
  }
  return out;
}

std::string indexText(const uint32_t* index, uint32_t count) {
  std::string out;
  for (uint32_t i = 0; i < count; i++) {
    if (i != 0) out += '.';
    out += std::to_string(index[i]);
  }
  return out;
}

std::string indexJson(const uint32_t* index, uint32_t count) {
  std::string out = "[";
  for (uint32_t i = 0; i < count; i++) {
    if (i != 0) out += ',';
    out += std::to_string(index[i]);
  }
  return out + "]";
}

// ---------------------------------------------------------------- failures
int fail(uint32_t rc, const char* what) {
  if (rc >= MDB_CLIENT_ERR_IO && rc <= MDB_CLIENT_ERR_ARGS) {
    const char* why = rc == MDB_CLIENT_ERR_IO         ? "connection failed"
                      : rc == MDB_CLIENT_ERR_PROTOCOL ? "request refused by the protocol"
                                                      : "argument too large";
    if (gOpt.json) printf("{\"rc\":%u,\"error\":%s}\n", rc, jsonString(std::string(why)).c_str());
    else fprintf(stderr, "mdbctl: %s: %s\n", what, why);
    return kExitUsage;
  }
  if (gOpt.json) printf("{\"rc\":%u,\"error\":\"%s\"}\n", rc, mdbErrorName(rc));
  else fprintf(stderr, "%s: %s (%u)\n", what, mdbErrorName(rc), rc);
  return kExitMdbError;
}

// ---------------------------------------------------------------- values
struct Shown {
  std::string text;  // for people
  std::string json;  // the "value" (and "hex") members
};

// Text a person can read: no control characters, and UTF-8 where not ASCII.
bool printable(const uint8_t* data, uint32_t length) {
  for (uint32_t i = 0; i < length; i++) {
    if (data[i] >= 0x80) {
      size_t n = utf8Sequence(data + i, length - i);
      if (n == 0) return false;
      i += static_cast<uint32_t>(n) - 1;
    } else if (data[i] < 0x20 || data[i] == 0x7f) {
      return false;
    }
  }
  return true;
}

std::string macText(const uint8_t* m) {
  char b[20];
  snprintf(b, sizeof b, "%02x:%02x:%02x:%02x:%02x:%02x", m[0], m[1], m[2], m[3], m[4], m[5]);
  return b;
}

uint32_t word(const uint8_t* data, uint32_t length, uint32_t at) {
  uint32_t v = 0;
  if (at + 4 <= length) memcpy(&v, data + at, 4);
  return v;
}

Shown showValue(uint32_t type, const uint8_t* data, uint32_t length) {
  Shown s;
  char b[64];
  switch (type) {
    case MDB_TYPE_INTEGER:
    case MDB_TYPE_ROWSTATUS:
      s.text = std::to_string(static_cast<int32_t>(word(data, length, 0)));
      s.json = "\"value\":" + s.text;
      break;
    case MDB_TYPE_COUNTER:
    case MDB_TYPE_GAUGE:
    case MDB_TYPE_TIMETICKS:
      s.text = std::to_string(word(data, length, 0));
      s.json = "\"value\":" + s.text;
      break;
    case MDB_TYPE_COUNTER64: {
      uint64_t v = (static_cast<uint64_t>(word(data, length, 0)) << 32) | word(data, length, 4);
      s.text = std::to_string(v);
      s.json = "\"value\":" + s.text;
      break;
    }
    case MDB_TYPE_IPADDRESS:
      if (length == 4) {
        snprintf(b, sizeof b, "%u.%u.%u.%u", data[0], data[1], data[2], data[3]);
        s.text = b;
        s.json = "\"value\":\"" + s.text + "\"";
        break;
      }
      [[fallthrough]];
    case MDB_TYPE_MACADDRESS:
      if (type == MDB_TYPE_MACADDRESS && length == 6) {
        s.text = macText(data);
        s.json = "\"value\":\"" + s.text + "\"";
        break;
      }
      [[fallthrough]];
    case MDB_TYPE_BRIDGEID:
      if (type == MDB_TYPE_BRIDGEID && length == 8) {
        snprintf(b, sizeof b, "%02x%02x/", data[0], data[1]);
        s.text = b + macText(data + 2);
        s.json = "\"value\":\"" + s.text + "\"";
        break;
      }
      [[fallthrough]];
    case MDB_TYPE_OID:
      if (type == MDB_TYPE_OID && length % 4 == 0) {
        for (uint32_t at = 0; at < length; at += 4) s.text += (at ? "." : "") + std::to_string(word(data, length, at));
        s.json = "\"value\":\"" + s.text + "\"";
        break;
      }
      [[fallthrough]];
    default:
      // Octet strings, and any value whose length does not fit its type.
      s.text = printable(data, length) ? "\"" + std::string(reinterpret_cast<const char*>(data), length) + "\""
                                       : "0x" + hexText(data, length);
      s.json = "\"value\":" + jsonString(data, length) + ",\"hex\":\"" + hexText(data, length) + "\"";
  }
  return s;
}

bool parseUnsigned(const char* text, uint64_t max, uint64_t* out) {
  if (*text == '\0' || *text == '-') return false;
  errno = 0;
  char* end;
  unsigned long long v = strtoull(text, &end, 0);
  if (errno != 0 || *end != '\0' || v > max) return false;
  *out = v;
  return true;
}

bool parseMac(const char* text, uint8_t* out) {
  unsigned v[6];
  char tail;
  if (sscanf(text, "%x:%x:%x:%x:%x:%x%c", &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &tail) != 6 &&
      sscanf(text, "%x-%x-%x-%x-%x-%x%c", &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &tail) != 6)
    return false;
  for (int i = 0; i < 6; i++) {
    if (v[i] > 255) return false;
    out[i] = static_cast<uint8_t>(v[i]);
  }
  return true;
}

bool parseHex(const char* text, std::vector<uint8_t>* out) {
  if (strncmp(text, "0x", 2) == 0 || strncmp(text, "0X", 2) == 0) text += 2;
  std::string digits;
  for (const char* p = text; *p; p++)
    if (*p != ':' && *p != ' ' && *p != '-') digits += *p;
  if (digits.size() % 2 != 0) return false;
  for (size_t i = 0; i < digits.size(); i += 2) {
    char pair[3] = {digits[i], digits[i + 1], 0};
    char* end;
    unsigned long v = strtoul(pair, &end, 16);
    if (*end != '\0') return false;
    out->push_back(static_cast<uint8_t>(v));
  }
  return true;
}

bool parseDotted(const char* text, std::vector<uint32_t>* out) {
  if (*text == '.') text++;
  if (*text == '\0') return true;
  const char* p = text;
  while (*p) {
    if (*p < '0' || *p > '9') return false;
    errno = 0;
    char* end;
    unsigned long long v = strtoull(p, &end, 10);
    if (errno != 0 || v > 0xFFFFFFFFull) return false;
    out->push_back(static_cast<uint32_t>(v));
    if (*end == '.') {
      p = end + 1;
      if (*p == '\0') return false;
    } else if (*end == '\0') {
      p = end;
    } else {
      return false;
    }
  }
  return true;
}

// The bytes of a value to write, by the object's type.
bool parseValue(uint32_t type, const char* text, std::vector<uint8_t>* out) {
  auto putWord = [out](uint32_t v) {
    uint8_t b[4];
    memcpy(b, &v, 4);
    out->insert(out->end(), b, b + 4);
  };
  if (gOpt.hex) return parseHex(text, out);
  uint64_t v;
  switch (type) {
    case MDB_TYPE_INTEGER:
    case MDB_TYPE_ROWSTATUS: {
      errno = 0;
      char* end;
      long long s = strtoll(text, &end, 0);
      if (errno != 0 || *end != '\0' || *text == '\0' || s < INT32_MIN || s > UINT32_MAX) return false;
      putWord(static_cast<uint32_t>(s));
      return true;
    }
    case MDB_TYPE_COUNTER:
    case MDB_TYPE_GAUGE:
    case MDB_TYPE_TIMETICKS:
      if (!parseUnsigned(text, UINT32_MAX, &v)) return false;
      putWord(static_cast<uint32_t>(v));
      return true;
    case MDB_TYPE_COUNTER64:
      if (!parseUnsigned(text, UINT64_MAX, &v)) return false;
      putWord(static_cast<uint32_t>(v >> 32));
      putWord(static_cast<uint32_t>(v));
      return true;
    case MDB_TYPE_IPADDRESS: {
      uint8_t a[4];
      if (inet_pton(AF_INET, text, a) != 1) return false;
      out->insert(out->end(), a, a + 4);
      return true;
    }
    case MDB_TYPE_MACADDRESS: {
      uint8_t m[6];
      if (!parseMac(text, m)) return false;
      out->insert(out->end(), m, m + 6);
      return true;
    }
    case MDB_TYPE_BRIDGEID: {
      const char* slash = strchr(text, '/');
      uint8_t m[6];
      if (slash == nullptr || !parseMac(slash + 1, m)) return false;
      std::string priority(text, slash);
      char* end;
      unsigned long p = strtoul(priority.c_str(), &end, 16);
      if (priority.empty() || *end != '\0' || p > 0xFFFF) return false;
      out->push_back(static_cast<uint8_t>(p >> 8));
      out->push_back(static_cast<uint8_t>(p));
      out->insert(out->end(), m, m + 6);
      return true;
    }
    case MDB_TYPE_OID: {
      std::vector<uint32_t> arcs;
      if (!parseDotted(text, &arcs)) return false;
      for (uint32_t arc : arcs) putWord(arc);
      return true;
    }
    default:
      out->insert(out->end(), text, text + strlen(text));
      return true;
  }
}

std::vector<uint32_t> indexArg(const char* text) {
  std::vector<uint32_t> index;
  if (text != nullptr && !parseDotted(text, &index)) usage("an index is dotted sub-ids, such as 3.97.98.99");
  if (index.size() > ICM_MAX_INDEX) usage("index too long");
  return index;
}

// The object's type, by its descriptor. An object the descriptor query does
// not know is taken as an octet string, so that the request itself goes out
// and mdb says what is wrong with it; only a failed connection is an error.
uint32_t objectType(const char* name, uint32_t* type) {
  MdbObjInfo info;
  uint32_t rc = mdbClientObjInfoGet(gClient, name, MDB_INFO_TYPE, &info);
  *type = rc == 0 ? info.type : MDB_TYPE_OCTET_STRING;
  return rc >= MDB_CLIENT_ERR_IO && rc <= MDB_CLIENT_ERR_ARGS ? rc : 0;
}

void printInstance(const char* name, const uint32_t* index, uint32_t count, uint32_t type, const uint8_t* value,
                   uint32_t length) {
  Shown s = showValue(type, value, length);
  if (gOpt.json)
    printf("{\"rc\":0,\"name\":%s,\"index\":%s,\"type\":\"%s\",%s}\n", jsonString(std::string(name)).c_str(),
           indexJson(index, count).c_str(), typeName(type), s.json.c_str());
  else
    printf("%s.%s = %s: %s\n", name, indexText(index, count).c_str(), typeName(type), s.text.c_str());
}

// ---------------------------------------------------------------- commands
int cmdGet(int argc, char** argv, bool next) {
  if (argc < 1 || argc > 2) usage(next ? "next NAME [INDEX]" : "get NAME [INDEX]");
  const char* name = argv[0];
  std::vector<uint32_t> index = indexArg(argc == 2 ? argv[1] : nullptr);
  uint32_t type = 0;
  uint32_t rc = objectType(name, &type);
  if (rc != 0) return fail(rc, name);
  std::vector<uint8_t> value(kValueCapacity);
  uint32_t length = kValueCapacity;
  uint32_t count = static_cast<uint32_t>(index.size());
  if (next) {
    index.resize(ICM_MAX_INDEX);
    rc = mdbClientGetNext(gClient, name, index.data(), ICM_MAX_INDEX, &count, value.data(), &length, gOpt.tag);
  } else {
    rc = mdbClientGetApi(gClient, name, index.data(), count, value.data(), &length, gOpt.tag);
  }
  if (rc != 0) return fail(rc, name);
  printInstance(name, index.data(), count, type, value.data(), length);
  return kExitOk;
}

struct WalkRow {
  std::string name, index, value;
};

struct WalkState {
  const char* name;
  uint32_t type;
  std::vector<WalkRow>* rows;
  uint32_t seen = 0;
};

int walkStep(void* arg, uint32_t rc, const uint32_t* index, uint32_t count, const uint8_t* value, uint32_t length) {
  auto* w = static_cast<WalkState*>(arg);
  if (rc != 0) return 0;
  w->seen++;
  if (gOpt.json) {
    printInstance(w->name, index, count, w->type, value, length);
  } else {
    Shown s = showValue(w->type, value, length);
    w->rows->push_back({w->name, indexText(index, count), std::string(typeName(w->type)) + ": " + s.text});
  }
  return 0;
}

// All instances of one object. 0, or the error that is not the end of the walk.
uint32_t walkObject(const char* name, std::vector<WalkRow>* rows) {
  WalkState state{name, 0, rows};
  uint32_t rc = objectType(name, &state.type);
  if (rc != 0) return rc;
  std::vector<uint32_t> index(ICM_MAX_INDEX);
  uint32_t count = 0;
  for (;;) {
    uint32_t steps = 0;
    std::vector<uint32_t> before(index.begin(), index.begin() + count);
    rc = mdbClientGetNextChain(gClient, name, index.data(), ICM_MAX_INDEX, &count, kChainSteps, kValueCapacity,
                               gOpt.tag, walkStep, &state, &steps);
    if (rc == MDB_ERR_NO_NEXT_INSTANCE) return 0;
    if (rc != 0) return rc;
    // Nothing more came, or an index that does not move forward: the object is done.
    std::vector<uint32_t> after(index.begin(), index.begin() + count);
    if (steps == 0 || !(before < after)) return 0;
  }
}

void printRows(const std::vector<WalkRow>& rows) {
  size_t nameWidth = 0, indexWidth = 0;
  for (const WalkRow& r : rows) {
    nameWidth = std::max(nameWidth, r.name.size());
    indexWidth = std::max(indexWidth, r.index.size());
  }
  for (const WalkRow& r : rows)
    printf("%-*s  %-*s  %s\n", static_cast<int>(nameWidth), r.name.c_str(), static_cast<int>(indexWidth),
           r.index.c_str(), r.value.c_str());
}

int cmdWalk(int argc, char** argv) {
  if (argc != 1) usage("walk NAME | MODULE");
  const char* what = argv[0];
  std::vector<WalkRow> rows;
  if (strchr(what, ':') != nullptr) {
    uint32_t rc = walkObject(what, &rows);
    printRows(rows);
    return rc == 0 ? kExitOk : fail(rc, what);
  }
  MdbClientModule module;
  uint32_t rc = mdbClientModuleGet(gClient, what, &module);
  if (rc != 0) return fail(rc, what);
  std::string object = module.firstObject;
  while (!object.empty()) {
    rc = walkObject(object.c_str(), &rows);
    // An object that answers with an error is shown as such and the walk goes on.
    if (rc != 0 && !gOpt.json) rows.push_back({object, "", std::string("error: ") + mdbErrorName(rc)});
    if (rc >= MDB_CLIENT_ERR_IO && rc <= MDB_CLIENT_ERR_ARGS) return fail(rc, object.c_str());
    char next[ICM_MAX_NAME + 1];
    rc = mdbClientObjectNameNextGet(gClient, object.c_str(), next, sizeof next);
    if (rc == MDB_ERR_NO_SUCH_OBJECT) break;
    if (rc != 0) return fail(rc, object.c_str());
    object = next;
  }
  printRows(rows);
  return kExitOk;
}

int cmdWrite(const char* verb, int argc, char** argv) {
  if (argc != 3) usage("NAME INDEX VALUE");
  const char* name = argv[0];
  std::vector<uint32_t> index = indexArg(argv[1]);
  uint32_t type = 0;
  uint32_t rc = objectType(name, &type);
  if (rc != 0) return fail(rc, name);
  std::vector<uint8_t> value;
  if (!parseValue(type, argv[2], &value)) {
    fprintf(stderr, "mdbctl: '%s' is not a value of type %s\n", argv[2], typeName(type));
    return kExitUsage;
  }
  uint32_t count = static_cast<uint32_t>(index.size());
  uint32_t length = static_cast<uint32_t>(value.size());
  const void* data = value.data();
  if (strcmp(verb, "set") == 0)
    rc = mdbClientSetApi(gClient, name, index.data(), count, data, length, gOpt.tag, gOpt.setOptions);
  else if (strcmp(verb, "validate") == 0)
    rc = mdbClientValidate(gClient, name, index.data(), count, data, length, gOpt.setOptions);
  else if (strcmp(verb, "commit") == 0)
    rc = mdbClientCommit(gClient, name, index.data(), count, data, length, gOpt.setOptions, gOpt.tag);
  else
    rc = mdbClientNvmSet(gClient, name, index.data(), count, data, length);
  if (rc != 0) return fail(rc, name);
  if (gOpt.json) printf("{\"rc\":0,\"name\":%s,\"index\":%s}\n", jsonString(std::string(name)).c_str(),
                        indexJson(index.data(), count).c_str());
  else printf("%s.%s: ok\n", name, indexText(index.data(), count).c_str());
  return kExitOk;
}

int cmdInfo(int argc, char** argv) {
  if (argc != 1) usage("info NAME");
  MdbObjInfo info;
  uint32_t rc = mdbClientObjInfoGet(gClient, argv[0], 0x3FF, &info);
  if (rc != 0) return fail(rc, argv[0]);
  uint32_t arcs = info.oidLen > 0 && info.oidLen <= 17 ? info.oidLen - 1 : 0;
  std::string oid = indexText(info.oid, arcs) + "." + std::to_string(info.subId);
  uint32_t names = info.indexCountMin < 12 ? info.indexCountMin : 12;
  std::string namesJson = "[", namesText;
  for (uint32_t i = 0; i < names; i++) {
    std::string n(info.indexNames[i], strnlen(info.indexNames[i], sizeof info.indexNames[i]));
    namesJson += (i ? "," : "") + jsonString(n);
    namesText += (i ? ", " : "") + n;
  }
  namesJson += "]";
  if (gOpt.json) {
    printf("{\"rc\":0,\"localId\":%u,\"subId\":%u,\"size\":%u,\"min\":%d,\"max\":%d,\"type\":\"%s\",\"oid\":\"%s\","
           "\"oidLen\":%u,\"indexCountMin\":%u,\"indexCountMax\":%u,\"indexNames\":%s}\n",
           info.localId, info.subId, info.size, info.min, info.max, typeName(info.type), oid.c_str(), info.oidLen,
           info.indexCountMin, info.indexCountMax, namesJson.c_str());
  } else {
    printf("%s\n  oid            %s\n  type           %s\n  localId        %u\n  size           %u\n"
           "  range          %d..%d\n  index          %u to %u sub-ids%s%s\n",
           argv[0], oid.c_str(), typeName(info.type), info.localId, info.size, info.min, info.max,
           info.indexCountMin, info.indexCountMax, names ? ": " : "", namesText.c_str());
  }
  return kExitOk;
}

int cmdName(int argc, char** argv) {
  if (argc != 1) usage("name OID");
  std::vector<uint32_t> oid;
  if (!parseDotted(argv[0], &oid) || oid.size() > ICM_MAX_INDEX) usage("an OID is dotted, such as 1.3.6.1.2.1.1.1.0");
  uint32_t oidLen = 0, indexMax = 0, type = 0;
  char name[ICM_MAX_NAME + 1];
  uint32_t rc = mdbClientObjNameGet(gClient, oid.data(), static_cast<uint32_t>(oid.size()), &oidLen, &indexMax,
                                    &type, name, sizeof name);
  if (rc != 0) return fail(rc, argv[0]);
  if (gOpt.json) {
    printf("{\"rc\":0,\"name\":%s,\"oidLen\":%u,\"indexCountMax\":%u,\"type\":\"%s\"}\n",
           jsonString(std::string(name)).c_str(), oidLen, indexMax, typeName(type));
  } else {
    std::string instance = oidLen <= oid.size() ? indexText(oid.data() + oidLen, static_cast<uint32_t>(oid.size()) - oidLen) : "";
    printf("%s%s%s (%s, index of up to %u sub-ids)\n", name, instance.empty() ? "" : ".", instance.c_str(),
           typeName(type), indexMax);
  }
  return kExitOk;
}

int cmdNextName(int argc, char** argv) {
  if (argc != 1) usage("next-name NAME");
  char next[ICM_MAX_NAME + 1];
  uint32_t rc = mdbClientObjectNameNextGet(gClient, argv[0], next, sizeof next);
  if (rc != 0) return fail(rc, argv[0]);
  if (gOpt.json) printf("{\"rc\":0,\"name\":%s}\n", jsonString(std::string(next)).c_str());
  else printf("%s\n", next);
  return kExitOk;
}

int cmdModule(int argc, char** argv) {
  if (argc != 1) usage("module NAME");
  MdbClientModule module;
  uint32_t rc = mdbClientModuleGet(gClient, argv[0], &module);
  if (rc != 0) return fail(rc, argv[0]);
  if (gOpt.json)
    printf("{\"rc\":0,\"name\":%s,\"lastChange\":%u,\"registrationId\":%u}\n",
           jsonString(std::string(module.name)).c_str(), module.lastChange, module.registrationId);
  else
    printf("%s\n  lastChange     %u (centiseconds of uptime)\n  registrationId %u\n  first object   %s\n",
           module.name, module.lastChange, module.registrationId, module.firstObject);
  return kExitOk;
}

int cmdSimple(const char* what, uint32_t rc) {
  if (rc != 0) return fail(rc, what);
  if (gOpt.json) printf("{\"rc\":0}\n");
  else printf("%s: ok\n", what);
  return kExitOk;
}

uint32_t numberArg(const char* text, const char* what) {
  uint64_t v;
  if (!parseUnsigned(text, UINT32_MAX, &v)) usage(what);
  return static_cast<uint32_t>(v);
}

int cmdScalar(bool set, int argc, char** argv) {
  if (argc < 1 || argc > 2 || (set && argc != 2)) usage(set ? "scalar-set ATTR VALUE" : "scalar-get ATTR [TEXT]");
  uint32_t attribute = numberArg(argv[0], "ATTR is a number");
  std::vector<uint8_t> in;
  // Attributes 3 and 4 carry a number; the others a text.
  const bool number = attribute == 3 || attribute == 4;
  if (argc == 2) {
    if (number) {
      uint32_t v = numberArg(argv[1], "VALUE is a number");
      in.resize(4);
      memcpy(in.data(), &v, 4);
    } else if (attribute == 1) {
      // The holder of attribute 1 carries a u32 length before its text.
      uint32_t n = static_cast<uint32_t>(strlen(argv[1]));
      in.resize(4);
      memcpy(in.data(), &n, 4);
      in.insert(in.end(), argv[1], argv[1] + n);
    } else {
      in.assign(argv[1], argv[1] + strlen(argv[1]));
    }
  }
  std::vector<uint8_t> out(kValueCapacity);
  uint32_t length = kValueCapacity;
  uint32_t rc = set ? mdbClientScalarSetApi(gClient, 0, attribute, in.empty() ? nullptr : in.data(),
                                            static_cast<uint32_t>(in.size()), out.data(), &length)
                    : mdbClientScalarGetApi(gClient, 0, attribute, in.empty() ? nullptr : in.data(),
                                            static_cast<uint32_t>(in.size()), out.data(), &length);
  if (rc != 0) return fail(rc, set ? "scalar-set" : "scalar-get");
  std::string value;
  if (set) {
    // A write reports only its result.
  } else if (number && length >= 4) {
    uint32_t v;
    memcpy(&v, out.data(), 4);
    value = std::to_string(v);
  } else {
    value = jsonString(out.data(), attribute == 0 || attribute == 1 ? 0 : length);
  }
  if (gOpt.json) printf("{\"rc\":0%s%s}\n", value.empty() ? "" : ",\"value\":", value.c_str());
  else printf("%s\n", value.empty() ? "ok" : number ? value.c_str() : std::string(out.data(), out.data() + length).c_str());
  return kExitOk;
}

// ---------------------------------------------------------------- SNMP
// The rows of the two lists as JSON objects, appended to a text that starts "[".
int snmpJsonRow(void* arg, const MdbClientSnmpRow* row) {
  auto* out = static_cast<std::string*>(arg);
  if (out->back() != '[') *out += ',';
  std::string oid = "\"" + indexText(row->oid, row->oidLength) + "\"";
  *out += "{\"name\":" + jsonString(std::string(row->name)) + ",\"oid\":" + oid + ",\"type\":\"" +
          typeName(row->type) + "\",\"access\":" + std::to_string(row->access) +
          ",\"indexCountMax\":" + std::to_string(row->indexCountMax) + "}";
  return 0;
}

int snmpJsonORRow(void* arg, const MdbClientSnmpRow* row) {
  auto* out = static_cast<std::string*>(arg);
  if (out->back() != '[') *out += ',';
  *out += "{\"description\":" + jsonString(std::string(row->name)) + ",\"oid\":\"" +
          indexText(row->oid, row->oidLength) + "\"}";
  return 0;
}

// Registers with the agent and shows the counts of the run; with --json also
// every object and sysORTable row the agent now holds, read page by page.
int cmdSnmpInit(int argc, char**) {
  if (argc != 0) usage("snmp-init");
  MdbClientSnmpSummary sum{};
  uint32_t rc = mdbClientSnmpInitSummary(gClient, &sum);
  if (rc != 0) return fail(rc, "snmp-init");
  if (!gOpt.json) {
    printf("snmp-init: ok\n  visible objects  %u\n  hidden objects   %u\n  failed objects   %u\n"
           "  sysORTable rows  %u\n",
           sum.visible, sum.hidden, sum.failed, sum.orRows);
    return kExitOk;
  }
  std::string objects = "[", rows = "[";
  rc = mdbClientSnmpList(gClient, MDB_SNMP_LIST_OBJECTS, 0, snmpJsonRow, &objects, nullptr);
  if (rc == 0) rc = mdbClientSnmpList(gClient, MDB_SNMP_LIST_SYSOR, 0, snmpJsonORRow, &rows, nullptr);
  if (rc != 0) return fail(rc, "snmp-init");
  printf("{\"rc\":0,\"visible\":%u,\"hidden\":%u,\"failed\":%u,\"sysORRows\":%u,\"objects\":%s],"
         "\"sysORTable\":%s]}\n",
         sum.visible, sum.hidden, sum.failed, sum.orRows, objects.c_str(), rows.c_str());
  return kExitOk;
}

// The daemon writes the file, so a relative path is taken from here.
int cmdExport(bool all, int argc, char** argv) {
  const char* what = all ? "show-all" : "export-tree";
  if (argc != 1 || argv[0][0] == '\0') usage(all ? "show-all FILE" : "export-tree FILE");
  std::string path = argv[0];
  if (path[0] != '/') {
    char cwd[4096];
    if (getcwd(cwd, sizeof cwd) == nullptr) usage("cannot resolve a relative FILE");
    path = std::string(cwd) + "/" + path;
  }
  if (path.size() > 511) usage("FILE: at most 511 characters");
  // Attribute 0 takes the path's text; attribute 1 a u32 length, then the text.
  std::vector<uint8_t> in;
  if (all) {
    uint32_t n = static_cast<uint32_t>(path.size());
    in.resize(4);
    memcpy(in.data(), &n, 4);
  }
  in.insert(in.end(), path.begin(), path.end());
  uint32_t length = 0;
  uint32_t rc = mdbClientScalarGetApi(gClient, 0, all ? 1 : 0, in.data(), static_cast<uint32_t>(in.size()), nullptr,
                                      &length);
  if (rc != 0) return fail(rc, what);
  if (gOpt.json) printf("{\"rc\":0,\"file\":%s}\n", jsonString(path).c_str());
  else printf("%s: wrote %s\n", what, path.c_str());
  return kExitOk;
}

// Listens on the bus for change events; one line each. Ends after --count
// events (exit 0) or --timeout seconds without enough (exit 1).
int cmdEvents(int argc, char** argv) {
  long count = -1, timeout = -1;
  for (int i = 0; i < argc; i++) {
    if (strcmp(argv[i], "--count") == 0 && i + 1 < argc) count = static_cast<long>(numberArg(argv[++i], "--count N"));
    else if (strcmp(argv[i], "--timeout") == 0 && i + 1 < argc)
      timeout = static_cast<long>(numberArg(argv[++i], "--timeout SECONDS"));
    else usage("events [--count N] [--timeout SECONDS]");
  }
  MdbClientEvents* events = mdbClientEventsOpen(MDB_CONFG_EVENT_GROUP);
  if (events == nullptr) {
    fprintf(stderr, "mdbctl: cannot listen for events: %s\n", strerror(errno));
    return kExitUsage;
  }
  setvbuf(stdout, nullptr, _IOLBF, 0);
  struct timespec start;
  clock_gettime(CLOCK_MONOTONIC, &start);
  long seen = 0;
  int status = kExitOk;
  while (count < 0 || seen < count) {
    int wait = -1;
    if (timeout >= 0) {
      struct timespec now;
      clock_gettime(CLOCK_MONOTONIC, &now);
      long elapsed = (now.tv_sec - start.tv_sec) * 1000 + (now.tv_nsec - start.tv_nsec) / 1000000;
      if (elapsed >= timeout * 1000) {
        status = kExitMdbError;
        break;
      }
      wait = static_cast<int>(timeout * 1000 - elapsed);
    }
    uint8_t message[256];
    int n = mdbClientEventsRead(events, message, sizeof message, wait);
    if (n <= 0) continue;
    uint32_t length = 0, timeMs = 0;
    uint16_t type = 0;
    if (n >= 8) {
      memcpy(&length, message, 4);
      memcpy(&type, message + 4, 2);
    }
    if (n >= 32) memcpy(&timeMs, message + 28, 4);
    if (gOpt.json) printf("{\"type\":%u,\"length\":%u,\"time\":%u}\n", type, length, timeMs);
    else printf("event type %u length %u time %u ms\n", type, length, timeMs);
    seen++;
  }
  mdbClientEventsClose(events);
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<char*> args;
  for (int i = 1; i < argc; i++) {
    std::string a = argv[i];
    auto value = [&](const char* what) -> char* {
      if (i + 1 >= argc) usage(what);
      return argv[++i];
    };
    if (a == "-s" || a == "--socket") gOpt.socket = value("-s SOCKET");
    else if (a == "--json") gOpt.json = true;
    else if (a == "--hex") gOpt.hex = true;
    else if (a == "--options") gOpt.setOptions = numberArg(value("--options N"), "--options takes a number");
    else if (a == "--tag") gOpt.tag = value("--tag TAG");
    else if (a == "-h" || a == "--help") usage();
    else args.push_back(argv[i]);
  }
  if (args.empty()) usage();
  if (strcmp(args[0], "events") == 0) return cmdEvents(static_cast<int>(args.size()) - 1, args.data() + 1);
  if (gOpt.socket.empty()) {
    char path[256];
    if (mdbCmdSocketPath(path, sizeof path, 24) != 0) usage("run directory path too long");
    gOpt.socket = path;
  }
  gClient = mdbClientOpen(gOpt.socket.c_str());
  if (gClient == nullptr) {
    if (gOpt.json) printf("{\"rc\":%u,\"error\":\"no connection\"}\n", MDB_CLIENT_ERR_IO);
    fprintf(stderr, "mdbctl: cannot connect to %s: %s\n", gOpt.socket.c_str(), strerror(errno));
    return kExitUsage;
  }
  std::string command = args[0];
  int n = static_cast<int>(args.size()) - 1;
  char** rest = args.data() + 1;
  int status;
  if (command == "get") status = cmdGet(n, rest, false);
  else if (command == "next") status = cmdGet(n, rest, true);
  else if (command == "walk") status = cmdWalk(n, rest);
  else if (command == "set" || command == "validate" || command == "commit" || command == "nvmset")
    status = cmdWrite(command.c_str(), n, rest);
  else if (command == "info") status = cmdInfo(n, rest);
  else if (command == "name") status = cmdName(n, rest);
  else if (command == "next-name") status = cmdNextName(n, rest);
  else if (command == "module") status = cmdModule(n, rest);
  else if (command == "snmp-init") status = cmdSnmpInit(n, rest);
  else if (command == "export-tree") status = cmdExport(false, n, rest);
  else if (command == "show-all") status = cmdExport(true, n, rest);
  else if (command == "sysstate")
    status = n == 1 ? cmdSimple("sysstate", mdbClientSysStateSet(gClient, numberArg(rest[0], "sysstate N"))) : (usage("sysstate N"), 2);
  else if (command == "scalar-get") status = cmdScalar(false, n, rest);
  else if (command == "scalar-set") status = cmdScalar(true, n, rest);
  else usage(("unknown command " + command).c_str());
  mdbClientClose(gClient);
  return status;
}
