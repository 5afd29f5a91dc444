// Diagnostics: the request journal, the shows of the dictionary and of object
// values, and the two file exports (all values, the object tree).
//
// Everything here reads: the dictionary through its lookups and locks, the
// values through the verbs, like any client. Texts are built in bounded
// buffers; what goes to a file descriptor is gathered in a chunk and written
// with write(), what goes to the console with stdio.
#include "mdb/mdb_show.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "mdb/containers.h"
#include "mdb/mdb_dict.h"
#include "mdb/mdb_errors.h"
#include "mdb/mdb_subsys.h"
#include "mdb/mdb_verbs.h"
#include "platform/convert.h"
#include "platform/logging.h"
#include "platform/sil.h"

namespace {

// ---------------------------------------------------------------- output
// Where a show prints: the console (standard output) or a descriptor.
// Public functions map fd 0 and negative fds to the console; the exports pass
// the descriptor of their file as it is, whatever its number.
struct Target {
  int fd;  // kConsole, or a descriptor
};
constexpr int kConsole = -1;

Target targetOf(int fd) { return Target{fd <= 0 ? kConsole : fd}; }

// A formatted text, either bounded (the journal's value text: what does not
// fit is cut) or gathered in a chunk and written to a target.
class Out {
 public:
  explicit Out(Target target) : fd_(target.fd), text_(chunk_), capacity_(sizeof chunk_), bounded_(false) {}
  Out(char* text, size_t capacity) : fd_(kConsole), text_(text), capacity_(capacity), bounded_(true) {
    text_[0] = '\0';
  }
  ~Out() { flush(); }
  Out(const Out&) = delete;
  Out& operator=(const Out&) = delete;

  void put(const char* format, ...) __attribute__((format(printf, 2, 3))) {
    va_list args;
    va_start(args, format);
    vput(format, args);
    va_end(args);
  }

  // A bounded text that is full takes nothing more.
  bool full() const { return bounded_ && length_ + 1 >= capacity_; }
  // A write to the descriptor failed.
  bool failed() const { return failed_; }

  void flush() {
    if (bounded_ || length_ == 0) return;
    if (fd_ == kConsole) {
      if (fwrite(text_, 1, length_, stdout) != length_) failed_ = true;
    } else {
      writeAll(text_, length_);
    }
    length_ = 0;
  }

 private:
  void vput(const char* format, va_list args) {
    va_list again;
    va_copy(again, args);
    int n = vsnprintf(text_ + length_, capacity_ - length_, format, args);
    if (n < 0) {
      va_end(again);
      return;
    }
    size_t size = static_cast<size_t>(n);
    if (bounded_) {
      length_ = size < capacity_ - length_ ? length_ + size : capacity_ - 1;
    } else if (size < capacity_ - length_) {
      length_ += size;
    } else {
      // Did not fit behind what is gathered: write that, and then the piece
      // from the chunk, or straight to the target if it is larger.
      flush();
      if (size < capacity_) {
        vsnprintf(text_, capacity_, format, again);
        length_ = size;
      } else if (fd_ == kConsole) {
        if (vfprintf(stdout, format, again) < 0) failed_ = true;
      } else if (vdprintf(fd_, format, again) < 0) {
        failed_ = true;
      }
    }
    va_end(again);
  }

  void writeAll(const char* data, size_t size) {
    while (size > 0 && !failed_) {
      ssize_t n = write(fd_, data, size);
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) {
        failed_ = true;
        break;
      }
      data += n;
      size -= static_cast<size_t>(n);
    }
  }

  int fd_;
  char* text_;
  size_t capacity_;
  size_t length_ = 0;
  bool bounded_;
  bool failed_ = false;
  char chunk_[2048];
};

// ---------------------------------------------------------------- small helpers
const char* orNull(const char* text) { return text != nullptr ? text : "(null)"; }

// Arcs of an entry's OID that are stored: oidLen - 1, never more than 16.
uint32_t entryArcs(const MdbEntryDesc* entry) {
  if (entry == nullptr || entry->oidLen == 0) return 0;
  uint32_t arcs = entry->oidLen - 1u;
  return arcs < 16 ? arcs : 16;
}

// The full OID of an object: the entry's arcs, each as "%u.", then the subId.
// 16 arcs and the subId take at most 17 * 11 characters.
constexpr size_t kOidTextSize = 256;
void objectOidText(const MdbEntryDesc* entry, uint32_t subId, char (&text)[kOidTextSize]) {
  size_t length = 0;
  uint32_t arcs = entryArcs(entry);
  for (uint32_t i = 0; i < arcs; i++)
    length += static_cast<size_t>(snprintf(text + length, sizeof text - length, "%u.", entry->oid[i]));
  snprintf(text + length, sizeof text - length, "%u", subId);
}

uint32_t bindingCount(const MdbObjectBinding* list) {
  uint32_t count = 0;
  for (const MdbObjectBinding* b = list; b != nullptr && b->object != nullptr; b++) count++;
  return count;
}

// The module table search without the lock, for callers that hold it or that
// run where the table no longer changes.
const MdbModuleDesc* moduleFindUnlocked(const char* name) {
  if (name == nullptr || gMdbInfo.moduleTable == nullptr) return nullptr;
  MdbDictRow key{};
  key.name = name;
  return static_cast<const MdbModuleDesc*>(hashTableSearchForEntry(gMdbInfo.moduleTable, &key));
}

// ---------------------------------------------------------------- value forms
// A fixed-size value is read as far as valueLen goes; the rest reads as 0.
void valueBytes(const uint8_t* value, uint32_t valueLen, void* out, size_t size) {
  memset(out, 0, size);
  memcpy(out, value, valueLen < size ? valueLen : size);
}

uint32_t valueWord(const uint8_t* value, uint32_t valueLen, uint32_t at) {
  uint32_t word = 0;
  if (valueLen > at) valueBytes(value + at, valueLen - at, &word, sizeof word);
  return word;
}

void asciiPart(Out& out, const uint8_t* bytes, uint32_t count) {
  char ascii[17];
  for (uint32_t i = 0; i < count; i++)
    ascii[i] = bytes[i] >= 0x20 && bytes[i] < 0x7F ? static_cast<char>(bytes[i]) : '.';
  ascii[count] = '\0';
  out.put("[ascii=%s]", ascii);
}

// The text of a value by its type, as the journal and mdbObjectValueShow
// print it.
void valueForm(Out& out, uint32_t type, const void* pValue, uint32_t valueLen) {
  const auto* value = static_cast<const uint8_t*>(pValue);
  switch (type) {
    case MDB_TYPE_INTEGER: {
      uint32_t v = valueWord(value, valueLen, 0);
      out.put("Integer-{%u,0x%08x}\n", v, v);
      break;
    }
    case MDB_TYPE_OCTET_STRING:
      out.put("OctetString-");
      out.put("{");
      for (uint32_t i = 0; i < valueLen && !out.full(); i++) {
        out.put("0x%02x", value[i]);
        if ((i + 1) % 16 == 0) asciiPart(out, value + i - 15, 16);
      }
      if (valueLen % 16 != 0 && !out.full()) asciiPart(out, value + valueLen - valueLen % 16, valueLen % 16);
      out.put("}\n");
      break;
    case MDB_TYPE_OID: {
      char text[2048];
      oid2StrWithSuffix(reinterpret_cast<const uint32_t*>(value), valueLen / sizeof(uint32_t), 0, text,
                        sizeof text - 1);
      out.put("ObjectIdentifier-{%s}\n", text);
      break;
    }
    case MDB_TYPE_IPADDRESS: {
      uint8_t address[4];
      valueBytes(value, valueLen, address, sizeof address);
      char text[INET_ADDRSTRLEN] = "";
      inet_ntop(AF_INET, address, text, sizeof text);
      out.put("IPAddress-{%s}\n", text);
      break;
    }
    case MDB_TYPE_MACADDRESS: {
      uint8_t mac[6];
      valueBytes(value, valueLen, mac, sizeof mac);
      char text[MAC_STR_SIZE];
      out.put("MACAddress-{%s}\n", macToStr(mac, text, sizeof text));
      break;
    }
    case MDB_TYPE_COUNTER:
      out.put("Counter-{%u}\n", valueWord(value, valueLen, 0));
      break;
    case MDB_TYPE_GAUGE:
      out.put("Guage-{%u}\n", valueWord(value, valueLen, 0));
      break;
    case MDB_TYPE_TIMETICKS: {
      char text[TICKS_STR_SIZE];
      out.put("TimeTicks-{%s}\n", ticksToTimeDateFormat(valueWord(value, valueLen, 0), text, sizeof text));
      break;
    }
    case MDB_TYPE_BRIDGEID: {
      uint8_t id[8];
      valueBytes(value, valueLen, id, sizeof id);
      char text[MAC_STR_SIZE];
      out.put("BridgeId-{%02x%02x-%s}\n", id[0], id[1], macToStr(id + 2, text, sizeof text));
      break;
    }
    case MDB_TYPE_COUNTER64: {
      unsigned long long v =
          (static_cast<unsigned long long>(valueWord(value, valueLen, 0)) << 32) | valueWord(value, valueLen, 4);
      out.put("Counter64-{%llu}\n", v);
      break;
    }
    case MDB_TYPE_ROWSTATUS: {
      uint32_t v = valueWord(value, valueLen, 0);
      out.put("RowStatus-{%u,0x%08x}\n", v, v);
      break;
    }
    default:
      out.put("Unknown-{Type %d}\n", static_cast<int>(type));
      break;
  }
}

// ---------------------------------------------------------------- journal
constexpr uint32_t kJournalId = MDB_MODULE_ID + 1;  // the journal's first message
constexpr uint32_t kJournalPiece = 254;             // characters of one segment
constexpr size_t kJournalValueSize = 8192;          // the value text: 8,191 characters

// Logs `prefix` followed by `body`, cut into pieces of kJournalPiece
// characters, one message each.
void journalPieces(uint32_t severity, const char* prefix, const char* body) {
  size_t prefixLength = strlen(prefix);
  size_t total = prefixLength + strlen(body);
  char piece[kJournalPiece + 1];
  for (size_t at = 0; at < total; at += kJournalPiece) {
    size_t n = total - at < kJournalPiece ? total - at : kJournalPiece;
    for (size_t k = 0; k < n; k++) piece[k] = at + k < prefixLength ? prefix[at + k] : body[at + k - prefixLength];
    piece[n] = '\0';
    loggingLogOutput(MDB_MODULE_ID, severity, 0x11F, "%s", piece);
  }
}

// ---------------------------------------------------------------- object shows
int objectValueShow(Target target, const char* name, const uint32_t* pIndex, uint32_t indexCount, const void* value,
                    uint32_t valueLen) {
  Out out(target);
  MdbObjInfo info{};
  uint32_t rc = mdbObjInfoGet(name, MDB_INFO_SHOW, &info);
  if (rc != 0) {
    if (gMdbInfo.debugMask != 0) out.put("Error-{mdbObjInfoGet %08x}\n", rc);
    return -1;
  }
  char oid[2048];
  uint32_t arcs = info.oidLen > 0 ? info.oidLen - 1u : 0u;
  oid2StrWithSuffix(info.oid, arcs < 16 ? arcs : 16, info.subId, oid, sizeof oid - 1);
  out.put("\r\n%s-", name);
  out.put("[%s", oid);
  if (pIndex == nullptr) indexCount = 0;
  for (uint32_t i = 0; i < indexCount; i++) out.put(".%u", pIndex[i]);
  out.put("]-");
  valueForm(out, info.type, value, valueLen);
  return 0;
}

constexpr uint32_t kShowBufferSize = 2048;  // the value buffer of a show
constexpr uint32_t kShowReadLength = 4;     // the capacity given to each read
// A walk offers room for 256 sub-ids, but a handler may write as many as its
// entry's indexCountMax (12 bits); the array holds that many, and the next
// step of a walk whose index grew past 256 fails in the dispatcher.
constexpr uint32_t kShowIndexRoom = 4096;

int objectAllShow(Target target, const char* name, uint32_t walk) {
  MDB_COUNT(mdbObjectShowCalled);
  alignas(8) uint8_t value[kShowBufferSize];
  uint32_t index[kShowIndexRoom] = {0};

  if (walk == 0) {
    uint32_t length = kShowReadLength;
    uint32_t rc = mdbGetApi(name, index, 1, value, &length, "");
    if (rc != 0) {
      Out out(target);
      out.put("%s-", orNull(name));
      if (rc == MDB_ERR_WRONG_LENGTH)
        out.put("\r\nError-{mdbGetApi Buffer too Small}\n");
      else
        out.put("\r\nError-{mdbGetApi %08x}\n", rc);
      return -1;
    }
    objectValueShow(target, name, index, 1, value, length);
    return 0;
  }

  uint32_t count = 0;
  uint32_t rc;
  for (;;) {
    uint32_t length = kShowReadLength;
    rc = mdbGetNext(name, index, MDB_MAX_INDEX, &count, value, &length, "");
    if (rc != 0) break;
    if (count > kShowIndexRoom) count = kShowIndexRoom;
    objectValueShow(target, name, index, count, value, length);
  }
  if (rc != MDB_ERR_NO_NEXT_INSTANCE) {
    Out out(target);
    out.put("%s-", orNull(name));
    if (rc == MDB_ERR_WRONG_LENGTH)
      out.put("Error-{mdbGetApi Buffer too Small}\n");
    else
      out.put("Error-{mdbGetNext %08x}\n", rc);
  }
  return 0;
}

// Shows one binding unless its object is not accessible: scalars read once,
// tables walk.
void bindingShow(Target target, const MdbObjectBinding* binding) {
  if ((binding->object->access & MDB_ACCESS_NOACCESS) != 0) return;
  objectAllShow(target, binding->object->name, binding->entry != nullptr ? binding->entry->indexCountMin : 0);
}

int moduleShow(Target target, const char* moduleName) {
  const MdbModuleDesc* module = moduleFindUnlocked(moduleName);
  if (module == nullptr) {
    Out out(target);
    out.put("\r\nError-{mdbModuleShow-invalid %s MDB module name}\n", orNull(moduleName));
    return -1;
  }
  for (const MdbObjectBinding* b = module->list; b != nullptr && b->object != nullptr; b++) bindingShow(target, b);
  return 0;
}

// ---------------------------------------------------------------- file exports
int exportOpen(const char* path) {
  if (path == nullptr) return -1;
  return open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
}

struct AllShowState {
  int fd;
  bool failed;
};

int allShowModule(const MdbModuleDesc* module, void* arg) {
  auto* state = static_cast<AllShowState*>(arg);
  {
    Out out(Target{state->fd});
    out.put("\r\nModule-{%s} Object Count-{%u}\n", orNull(module->name), bindingCount(module->list));
    out.flush();
    if (out.failed()) {
      state->failed = true;
      return 1;
    }
  }
  moduleShow(Target{state->fd}, module->name);
  return 0;
}

const char* const kTypeNames[] = {"NULL",       "INTEGER",  "OCTET_STRING", "OBJECT_IDENTIFIER", "IpAddress",
                                  "MACAddress", "Counter",  "Guage",        "TimeTicks",         "Opaque",
                                  "Port_List",  "BridgeId", "Counter64",    "RowStatus"};

int treeModule(const MdbModuleDesc* module, void* arg) {
  Out& out = *static_cast<Out*>(arg);
  if (module->list == nullptr || module->list->object == nullptr) return 0;
  out.put("%s\r\n", module->name != nullptr ? module->name : "Unknown module");
  // The entry name printed last; a name too long to keep is printed again
  // for each of its objects.
  char lastEntry[64] = "";
  for (const MdbObjectBinding* b = module->list; b->object != nullptr; b++) {
    const MdbObjectDesc* object = b->object;
    const char* entryName = b->entry != nullptr ? b->entry->entryName : nullptr;
    if (entryName != nullptr && strcmp(entryName, lastEntry) != 0) {
      out.put("  %s\r\n", entryName);
      if (strlen(entryName) < sizeof lastEntry) memcpy(lastEntry, entryName, strlen(entryName) + 1);
    }
    const char* colon = object->name != nullptr ? strchr(object->name, ':') : nullptr;
    char oid[kOidTextSize];
    objectOidText(b->entry, object->subId, oid);
    char access[5];
    size_t n = 0;
    if (object->access & MDB_ACCESS_READ) access[n++] = 'r';
    if (object->access & MDB_ACCESS_WRITE) access[n++] = 'w';
    if (object->access & MDB_ACCESS_CREATE) access[n++] = 'c';
    if (object->access & MDB_ACCESS_NOACCESS) access[n++] = 'u';
    if (n == 0) access[n++] = 'n';
    access[n] = '\0';
    const char* type = object->type <= MDB_TYPE_ROWSTATUS ? kTypeNames[object->type] : "Unknown";
    out.put("    %-50s%-40s%-10s%-25s\r\n", colon != nullptr ? colon + 1 : "Unknown", oid, access, type);
  }
  return 0;
}

// ---------------------------------------------------------------- name checks
bool listHasEntry(const MdbObjectBinding* list, const char* rowName) {
  for (const MdbObjectBinding* b = list; b != nullptr && b->object != nullptr; b++) {
    if (b->entry != nullptr && b->entry->entryName != nullptr && strcmp(b->entry->entryName, rowName) == 0) return true;
  }
  return false;
}

int moduleHasEntry(const MdbModuleDesc* module, void* rowName) {
  return listHasEntry(module->list, static_cast<const char*>(rowName)) ? 1 : 0;
}

constexpr size_t kRowNameSize = 128;  // "module:rowName" is shorter than this

int rowNameCheck(const char* name) {
  const char* colon = strchr(name, ':');
  if (colon == nullptr) return mdbModuleForEach(moduleHasEntry, const_cast<char*>(name)) != 0 ? 0 : -1;
  if (colon[1] == '\0' || strnlen(name, kRowNameSize) >= kRowNameSize) return -1;
  char moduleName[kRowNameSize];
  size_t moduleLength = static_cast<size_t>(colon - name);
  memcpy(moduleName, name, moduleLength);
  moduleName[moduleLength] = '\0';
  const MdbModuleDesc* module = mdbModuleLookup(moduleName);
  if (module == nullptr) return -1;
  return listHasEntry(module->list, colon + 1) ? 0 : -1;
}

// ---------------------------------------------------------------- module list
struct ListState {
  uint32_t modules;
  uint32_t objects;
};

int listModule(const MdbModuleDesc* module, void* arg) {
  auto* state = static_cast<ListState*>(arg);
  uint32_t count = bindingCount(module->list);
  printf("Module-{%s} Object Count-{%u}\n", orNull(module->name), count);
  state->modules++;
  state->objects += count;
  return 0;
}

}  // namespace

// ---------------------------------------------------------------- journal
void mdbInfoLog(uint32_t request, const MdbObjectNode* objectRow, const MdbCrb* record, uint32_t result) {
  if (gMdbInfo.debugMask == 0) return;
  const char* requestName;
  uint32_t severity;
  switch (request) {
    case MDB_SET:
      requestName = "MDB_SET";
      severity = LOGGING_NOTICE;
      break;
    case MDB_FORCE_SET:
      requestName = "MDB_FORCE_SET";
      severity = LOGGING_NOTICE;
      break;
    case MDB_SET_NVM:
      requestName = "MDB_SET_NVM";
      severity = LOGGING_NOTICE;
      break;
    case MDB_VALIDATE:
      requestName = "MDB_VALIDATE";
      severity = LOGGING_NOTICE;
      break;
    case MDB_COMMIT:
      requestName = "MDB_COMMIT";
      severity = LOGGING_NOTICE;
      break;
    case MDB_GET:
      requestName = "MDB_GET";
      severity = LOGGING_DEBUG;
      break;
    case MDB_GET_NEXT:
      requestName = "MDB_GET_NEXT";
      severity = LOGGING_DEBUG;
      break;
    default:
      return;
  }
  if (objectRow == nullptr || record == nullptr || objectRow->list == nullptr || objectRow->list->object == nullptr)
    return;
  const MdbObjectBinding* binding = objectRow->list;
  const MdbObjectDesc* object = binding->object;
  const char* name = orNull(objectRow->name);

  char oid[kOidTextSize];
  objectOidText(binding->entry, object->subId, oid);
  const char* index = "{ }";
  // A request without a value (mdbRemove) journals an empty value text.
  char value[kJournalValueSize];
  {
    Out out(value, sizeof value);
    if (record->pValueBuf != nullptr) valueForm(out, object->type, record->pValueBuf, record->valueLen);
  }
  int rc = static_cast<int>(result);

  int total = snprintf(nullptr, 0, "Request:%s  OID:%s  ObjName:%s  ", requestName, oid, name) +
              snprintf(nullptr, 0, "pIndex:%s  ", index) + snprintf(nullptr, 0, "value:%s  rc:%d%s", value, rc, "\r\n");
  if (total < 255) {
    loggingLogOutput(kJournalId, severity, 0x100, "Request:%s  OID:%s\t ObjName:%s  pIndex:%s  value:%s  rc:%d%s",
                     requestName, oid, name, index, value, rc, "\r\n");
    return;
  }
  loggingLogOutput(kJournalId, severity, 0x11E, "Request:%s  OID:%s  ObjName:%s", requestName, oid, name);
  journalPieces(severity, "  pIndex:", index);
  journalPieces(severity, "  value:", value);
  loggingLogOutput(MDB_MODULE_ID, severity, 0x11D, "  rc:%d%s", rc, "\r\n");
}

// ---------------------------------------------------------------- shows
int mdbObjectValueShow(int fd, const char* name, const uint32_t* pIndex, uint32_t indexCount, const void* value,
                       uint32_t valueLen) {
  if (value == nullptr) {
    if (gMdbInfo.debugMask != 0) {
      Out out(targetOf(fd));
      out.put("%s:%d Object %s invalid pointer to dpyInfo\n\r", __func__, __LINE__, orNull(name));
    }
    return static_cast<int>(mdbErrorGenError());
  }
  return objectValueShow(targetOf(fd), name, pIndex, indexCount, value, valueLen);
}

int mdbObjectAllShow(int fd, const char* name, uint32_t walk) { return objectAllShow(targetOf(fd), name, walk); }

int mdbModuleShow(int fd, const char* moduleName) { return moduleShow(targetOf(fd), moduleName); }

int mdbModuleNodeShow(int fd, const char* moduleName, const char* shortName) {
  if (fd < 0) return -1;
  Target target = targetOf(fd);
  const MdbModuleDesc* module = mdbModuleLookup(moduleName);
  if (module == nullptr) {
    Out out(target);
    out.put("\r\nError-{mdbModuleShow-invalid %s:%s MDB module name}\n", orNull(moduleName), orNull(shortName));
    return -1;
  }
  if (shortName == nullptr) return 0;
  // The binding whose name is "moduleName:shortName", compared in its parts
  // so that no length of either is too long.
  size_t moduleLength = strlen(moduleName);
  for (const MdbObjectBinding* b = module->list; b != nullptr && b->object != nullptr; b++) {
    const char* full = b->object->name;
    if (full == nullptr || strncmp(full, moduleName, moduleLength) != 0 || full[moduleLength] != ':' ||
        strcmp(full + moduleLength + 1, shortName) != 0)
      continue;
    bindingShow(target, b);
    break;
  }
  return 0;
}

int mdbModuleAllShow(const char* path) {
  int fd = exportOpen(path);
  if (fd < 0) return -1;
  AllShowState state{fd, false};
  mdbModuleForEach(allShowModule, &state);
  if (close(fd) != 0) state.failed = true;
  return state.failed ? -1 : 0;
}

int mdbModuleList(void) {
  ListState state{0, 0};
  mdbModuleForEach(listModule, &state);
  printf("------------------------------------------\n");
  printf("Total  Modules- %u Objects- %u\n", state.modules, state.objects);
  return 0;
}

int mdbHashShow(void) {
  printf("*** MDB+ Module Hash Table ***");
  hashTableShow(gMdbInfo.moduleTable);
  printf("\n*** MDB+ Object Hash Table ***");
  hashTableShow(gMdbInfo.objectTable);
  return 0;
}

int mdbStructureShow(const MdbCrb* mdb) {
  if (mdb == nullptr) return 0;
  printf("mdb->pIndex              = %u\n", mdb->pIndex != nullptr ? mdb->pIndex[0] : 0u);
  printf("mdb->indexSubIdCount     = %u\n", mdb->indexSubIdCount);
  printf("mdb->indexSubIdCountMax  = %u\n", mdb->indexSubIdCountMax);
  printf("mdb->pValueBuf           = %p\n", mdb->pValueBuf);
  printf("mdb->valueLen            = 0x%08X\n", mdb->valueLen);
  printf("mdb->localId             = 0x%08X\n", mdb->localId);
  printf("mdb->flags               = 0x%08X\n", mdb->flags);
  return 0;
}

int mdbMibTreeExport(const char* path) {
  int fd = exportOpen(path);
  if (fd < 0) return -1;
  bool failed;
  {
    Out out(Target{fd});
    out.put("export mib:\r\n");
    mdbModuleForEach(treeModule, &out);
    out.flush();
    failed = out.failed();
  }
  if (close(fd) != 0) failed = true;
  return failed ? -1 : 0;
}

int mdbObjNameCheck(const char* name, uint32_t kind) {
  if (name == nullptr) return -1;
  switch (kind) {
    case MDB_NAME_CHECK_MODULE:
      return mdbModuleLookup(name) != nullptr ? 0 : -1;
    case MDB_NAME_CHECK_OBJECT:
      return mdbObjectLookup(name) != nullptr ? 0 : -1;
    case MDB_NAME_CHECK_ROW:
      return rowNameCheck(name);
    default:
      return -1;
  }
}
