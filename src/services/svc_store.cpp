// The substitute services' store.
//
// Layout
//   A directory maps each prefix to its SvcService. Service objects are never
//   freed: svcStoreReset only marks them undeclared and empties them, so an
//   SvcServiceId kept by a caller stays valid memory (its operations then
//   answer SVC_ERR_UNKNOWN until the prefix is declared again, which revives
//   the same object).
//   A service holds its attribute declarations (sorted by id), its status
//   attribute, and its values: one record for a scalar group, a map of records
//   keyed by the index sub-ids in OID order for a table. A record is a vector of
//   values sorted by attribute id.
//
// Locking
//   The directory's lock (a reader-writer lock) guards the prefix map and, together with a
//   service's own lock, the service's `declared` and `table` fields: both are
//   written only while holding the directory lock exclusively AND the
//   service's lock exclusively, so either lock held shared is enough to read
//   them. Everything else in a service is guarded by the service's lock.
//   Order: the directory lock before a service lock; several service locks
//   only in prefix order and only under the directory lock held exclusively
//   (load). Providers are called with no lock held, so a provider may call
//   back into the store (an action that saves the configuration, say).
//
// File format (svcStoreSave / svcStoreLoad), one item a line, '\n' ended,
// single spaces between tokens, numbers in unsigned decimal:
//   mdb-store 1                         the format tag, first line
//   service <prefix> table|scalar       starts a service (1..64 printable
//                                       characters, no space)
//   row <n> <sub-id 1> ... <sub-id n>   starts a row of the last table
//                                       (n <= SVC_MAX_KEY)
//   int <attribute> <value>             a value of the last row (table) or of
//   octet <attribute> <length> <hex>    the service (scalar group); the hex
//                                       token is absent when the length is 0;
//                                       length <= 65536
//   end                                 the last line; nothing may follow
// A service's lines name the forms of its attributes; on load they must agree
// with the attributes already declared, and a service or attribute not yet
// declared is declared from them. Provided attributes are never written, and a
// file that gives a value for one is refused.
#include "services/svc_store.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>  // std::shared_lock
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr uint32_t kMaxOctet = 65536;     // longest octet value kept
constexpr size_t kMaxPrefix = 64;         // longest service prefix
constexpr size_t kMaxLine = 2 * kMaxOctet + 64;  // longest line a valid file can hold
constexpr off_t kMaxFile = 512L << 20;    // a larger file is refused outright
constexpr const char* kFormatTag = "mdb-store 1";

using Key = std::vector<uint32_t>;

struct KeyView {
  const uint32_t* sub;
  uint32_t count;
};

// OID order: sub-id by sub-id as unsigned numbers, a prefix before the longer key.
struct OidLess {
  using is_transparent = void;
  static bool less(const uint32_t* a, size_t na, const uint32_t* b, size_t nb) {
    return std::lexicographical_compare(a, a + na, b, b + nb);
  }
  bool operator()(const Key& a, const Key& b) const { return less(a.data(), a.size(), b.data(), b.size()); }
  bool operator()(const Key& a, const KeyView& b) const { return less(a.data(), a.size(), b.sub, b.count); }
  bool operator()(const KeyView& a, const Key& b) const { return less(a.sub, a.count, b.data(), b.size()); }
};

struct Value {
  uint32_t attribute;
  uint32_t number;               // SVC_FORM_INT
  std::vector<uint8_t> octets;   // SVC_FORM_OCTET
};

// The values of one row or of a scalar group, sorted by attribute id.
struct Record {
  std::vector<Value> values;

  const Value* find(uint32_t attribute) const {
    auto it = std::lower_bound(values.begin(), values.end(), attribute,
                               [](const Value& v, uint32_t a) { return v.attribute < a; });
    return it != values.end() && it->attribute == attribute ? &*it : nullptr;
  }
  Value& slot(uint32_t attribute) {
    auto it = std::lower_bound(values.begin(), values.end(), attribute,
                               [](const Value& v, uint32_t a) { return v.attribute < a; });
    if (it == values.end() || it->attribute != attribute) it = values.insert(it, Value{attribute, 0, {}});
    return *it;
  }
  void erase(uint32_t attribute) {
    auto it = std::lower_bound(values.begin(), values.end(), attribute,
                               [](const Value& v, uint32_t a) { return v.attribute < a; });
    if (it != values.end() && it->attribute == attribute) values.erase(it);
  }
};

using Rows = std::map<Key, Record, OidLess>;

struct Attribute {
  uint32_t id;
  SvcForm form;
  bool provided;
  SvcGetFn get;
  SvcSetFn set;
};

bool formValid(uint32_t form) { return form == SVC_FORM_INT || form == SVC_FORM_OCTET; }

// A reader-writer lock that lets a waiting writer in before new readers: with
// 25 tasks reading, the default (reader-first) lock can hold a write off for
// as long as the reads keep overlapping. Not recursive, in either mode.
class RwLock {
 public:
  RwLock() {
    pthread_rwlockattr_t attr;
    pthread_rwlockattr_init(&attr);
    pthread_rwlockattr_setkind_np(&attr, PTHREAD_RWLOCK_PREFER_WRITER_NONRECURSIVE_NP);
    pthread_rwlock_init(&lock_, &attr);
    pthread_rwlockattr_destroy(&attr);
  }
  ~RwLock() { pthread_rwlock_destroy(&lock_); }
  RwLock(const RwLock&) = delete;
  RwLock& operator=(const RwLock&) = delete;
  void lock() { pthread_rwlock_wrlock(&lock_); }
  void unlock() { pthread_rwlock_unlock(&lock_); }
  void lock_shared() { pthread_rwlock_rdlock(&lock_); }
  void unlock_shared() { pthread_rwlock_unlock(&lock_); }

 private:
  pthread_rwlock_t lock_;
};

}  // namespace

struct SvcService {
  explicit SvcService(std::string p) : prefix(std::move(p)) {}

  const std::string prefix;
  mutable RwLock lock;
  bool declared = false;  // see "Locking" above
  bool table = false;
  std::vector<Attribute> attributes;  // sorted by id
  bool hasStatus = false;
  uint32_t statusAttribute = 0;
  SvcStatusSet statusSet = SVC_STATUS_ROW;
  Record scalar;
  Rows rows;

  const Attribute* attribute(uint32_t id) const {
    auto it = std::lower_bound(attributes.begin(), attributes.end(), id,
                               [](const Attribute& a, uint32_t i) { return a.id < i; });
    return it != attributes.end() && it->id == id ? &*it : nullptr;
  }
  Attribute* attribute(uint32_t id) { return const_cast<Attribute*>(std::as_const(*this).attribute(id)); }
  Attribute& addAttribute(uint32_t id, SvcForm form) {
    auto it = std::lower_bound(attributes.begin(), attributes.end(), id,
                               [](const Attribute& a, uint32_t i) { return a.id < i; });
    return *attributes.insert(it, Attribute{id, form, false, nullptr, nullptr});
  }
  void forgetSchema() {
    attributes.clear();
    hasStatus = false;
    statusAttribute = 0;
    statusSet = SVC_STATUS_ROW;
  }
};

namespace {

struct Directory {
  RwLock lock;
  std::map<std::string, std::unique_ptr<SvcService>, std::less<>> services;
};

// Never destroyed, so that no static destructor elsewhere can outlive it.
Directory& directory() {
  static Directory* d = new Directory;
  return *d;
}

bool prefixValid(const char* prefix) {
  if (prefix == nullptr) return false;
  size_t n = strnlen(prefix, kMaxPrefix + 1);
  if (n == 0 || n > kMaxPrefix) return false;
  for (size_t i = 0; i < n; ++i) {
    unsigned char c = static_cast<unsigned char>(prefix[i]);
    if (c <= ' ' || c >= 0x7F) return false;
  }
  return true;
}

bool keyValid(const uint32_t* key, uint32_t keyCount) {
  return keyCount <= SVC_MAX_KEY && (key != nullptr || keyCount == 0);
}

// Copies a kept value into the caller's holder.
int readValue(SvcForm form, const Value& v, void* out) {
  if (form == SVC_FORM_INT) {
    *static_cast<uint32_t*>(out) = v.number;
    return 0;
  }
  auto* holder = static_cast<MdbOctetValue*>(out);
  if (holder->data == nullptr) {
    if (holder->length != 0) return SVC_ERR_UNKNOWN;
    return 0;
  }
  uint32_t n = static_cast<uint32_t>(std::min<size_t>(v.octets.size(), holder->length));
  if (n != 0) memcpy(holder->data, v.octets.data(), n);
  holder->length = n;
  return 0;
}

// Checks a value to be written; 0 or the error.
int checkValue(SvcForm form, const void* in) {
  if (form == SVC_FORM_INT) return 0;
  auto* holder = static_cast<const MdbOctetValue*>(in);
  if (holder->data == nullptr && holder->length != 0) return SVC_ERR_UNKNOWN;
  if (holder->length > kMaxOctet) return MDB_ERR_WRONG_LENGTH;
  return 0;
}

// Stores a value already checked by checkValue.
void writeValue(SvcForm form, Value& v, const void* in) {
  if (form == SVC_FORM_INT) {
    v.number = *static_cast<const uint32_t*>(in);
    v.octets.clear();
    return;
  }
  auto* holder = static_cast<const MdbOctetValue*>(in);
  v.number = 0;
  v.octets.assign(holder->data, holder->data + holder->length);
}

void copyKey(const Key& from, uint32_t* key, uint32_t* keyCount) {
  std::copy(from.begin(), from.end(), key);
  *keyCount = static_cast<uint32_t>(from.size());
}

}  // namespace

// ---------------------------------------------------------------- schema

SvcServiceId svcServiceDeclare(const char* prefix, bool table) {
  if (!prefixValid(prefix)) return nullptr;
  Directory& d = directory();
  std::unique_lock dirLock(d.lock);
  auto it = d.services.find(std::string_view(prefix));
  if (it == d.services.end()) it = d.services.emplace(prefix, std::make_unique<SvcService>(prefix)).first;
  SvcService* s = it->second.get();
  std::unique_lock serviceLock(s->lock);
  if (!s->declared) {
    s->declared = true;
    s->table = table;
    return s;
  }
  return s->table == table ? s : nullptr;
}

SvcServiceId svcServiceFind(const char* prefix) {
  if (!prefixValid(prefix)) return nullptr;
  Directory& d = directory();
  std::shared_lock dirLock(d.lock);
  auto it = d.services.find(std::string_view(prefix));
  if (it == d.services.end() || !it->second->declared) return nullptr;
  return it->second.get();
}

int svcAttributeDeclare(SvcServiceId service, uint32_t attribute, SvcForm form) {
  if (service == nullptr || !formValid(form)) return -1;
  std::unique_lock lock(service->lock);
  if (!service->declared) return -1;
  if (const Attribute* a = service->attribute(attribute)) return a->form == form ? 0 : -1;
  service->addAttribute(attribute, form);
  return 0;
}

int svcStatusDeclare(SvcServiceId service, uint32_t attribute, SvcStatusSet set) {
  if (service == nullptr || (set != SVC_STATUS_ROW && set != SVC_STATUS_ENTRY)) return -1;
  std::unique_lock lock(service->lock);
  if (!service->declared || !service->table) return -1;
  if (service->hasStatus) return service->statusAttribute == attribute && service->statusSet == set ? 0 : -1;
  const Attribute* a = service->attribute(attribute);
  if (a != nullptr && (a->form != SVC_FORM_INT || a->provided)) return -1;
  if (a == nullptr) service->addAttribute(attribute, SVC_FORM_INT);
  service->hasStatus = true;
  service->statusAttribute = attribute;
  service->statusSet = set;
  return 0;
}

int svcProvide(SvcServiceId service, uint32_t attribute, SvcForm form, SvcGetFn get, SvcSetFn set) {
  if (service == nullptr || !formValid(form)) return -1;
  std::unique_lock lock(service->lock);
  if (!service->declared) return -1;
  if (service->hasStatus && service->statusAttribute == attribute) return -1;  // rows live by it
  Attribute* a = service->attribute(attribute);
  if (a != nullptr && a->form != form) return -1;
  if (a == nullptr) a = &service->addAttribute(attribute, form);
  a->provided = true;
  a->get = get;
  a->set = set;
  // Values kept before the attribute became provided would never be seen again.
  service->scalar.erase(attribute);
  for (auto& [key, row] : service->rows) row.erase(attribute);
  return 0;
}

// ---------------------------------------------------------------- scalar groups

int svcScalarGet(SvcServiceId service, uint32_t attribute, void* value) {
  if (service == nullptr || value == nullptr) return SVC_ERR_UNKNOWN;
  SvcGetFn get;
  {
    std::shared_lock lock(service->lock);
    if (!service->declared || service->table) return SVC_ERR_UNKNOWN;
    const Attribute* a = service->attribute(attribute);
    if (a == nullptr) return SVC_ERR_UNKNOWN;
    if (!a->provided) {
      const Value* v = service->scalar.find(attribute);
      return v == nullptr ? static_cast<int>(SVC_ERR_NO_ROW) : readValue(a->form, *v, value);
    }
    get = a->get;
  }
  return get == nullptr ? static_cast<int>(SVC_ERR_UNKNOWN) : get(nullptr, 0, attribute, value);
}

int svcScalarSet(SvcServiceId service, uint32_t attribute, const void* value) {
  if (service == nullptr || value == nullptr) return SVC_ERR_UNKNOWN;
  SvcSetFn set;
  {
    std::unique_lock lock(service->lock);
    if (!service->declared || service->table) return SVC_ERR_UNKNOWN;
    const Attribute* a = service->attribute(attribute);
    if (a == nullptr) return SVC_ERR_UNKNOWN;
    if (!a->provided) {
      if (int rc = checkValue(a->form, value)) return rc;
      writeValue(a->form, service->scalar.slot(attribute), value);
      return 0;
    }
    set = a->set;
  }
  return set == nullptr ? static_cast<int>(SVC_ERR_UNKNOWN) : set(nullptr, 0, attribute, value);
}

// ---------------------------------------------------------------- tables

int svcRowFirst(SvcServiceId service, uint32_t* key, uint32_t* keyCount) {
  if (service == nullptr || key == nullptr || keyCount == nullptr) return SVC_ERR_UNKNOWN;
  std::shared_lock lock(service->lock);
  if (!service->declared || !service->table) return SVC_ERR_UNKNOWN;
  if (service->rows.empty()) return SVC_ERR_NO_ROW;
  copyKey(service->rows.begin()->first, key, keyCount);
  return 0;
}

int svcRowNext(SvcServiceId service, const uint32_t* key, uint32_t keyCount, uint32_t* nextKey,
               uint32_t* nextKeyCount) {
  if (service == nullptr || !keyValid(key, keyCount) || nextKey == nullptr || nextKeyCount == nullptr)
    return SVC_ERR_UNKNOWN;
  std::shared_lock lock(service->lock);
  if (!service->declared || !service->table) return SVC_ERR_UNKNOWN;
  auto it = service->rows.upper_bound(KeyView{key, keyCount});
  if (it == service->rows.end()) return SVC_ERR_NO_ROW;
  copyKey(it->first, nextKey, nextKeyCount);
  return 0;
}

int svcRowGet(SvcServiceId service, const uint32_t* key, uint32_t keyCount, uint32_t attribute, void* value) {
  if (service == nullptr || value == nullptr || !keyValid(key, keyCount)) return SVC_ERR_UNKNOWN;
  SvcGetFn get;
  {
    std::shared_lock lock(service->lock);
    if (!service->declared || !service->table) return SVC_ERR_UNKNOWN;
    const Attribute* a = service->attribute(attribute);
    if (a == nullptr) return SVC_ERR_UNKNOWN;
    auto row = service->rows.find(KeyView{key, keyCount});
    if (row == service->rows.end()) return SVC_ERR_NO_ROW;
    if (!a->provided) {
      const Value* v = row->second.find(attribute);
      return v == nullptr ? static_cast<int>(SVC_ERR_NO_ROW) : readValue(a->form, *v, value);
    }
    get = a->get;
  }
  // The row may go between here and the call; the provider answers for itself then.
  return get == nullptr ? static_cast<int>(SVC_ERR_UNKNOWN) : get(key, keyCount, attribute, value);
}

namespace {

// A write of the status attribute, under the service's lock held exclusively.
int statusWrite(SvcService* s, const KeyView& key, uint32_t code) {
  auto row = s->rows.find(key);
  bool exists = row != s->rows.end();
  enum { kCreate, kRemove, kSet } act;
  uint32_t stored = code;
  if (s->statusSet == SVC_STATUS_ROW) {
    switch (code) {
      case 1: case 2: act = kSet; break;                     // active, notInService
      case 4: act = kCreate; stored = 1; break;              // createAndGo
      case 5: act = kCreate; stored = 2; break;              // createAndWait
      case 6: act = kRemove; break;                          // destroy
      default: return SVC_ERR_WRONG_VALUE;                   // 0, notReady, beyond 6
    }
  } else {
    switch (code) {
      case 1: case 3: act = kSet; break;                     // valid, underCreation
      case 2: act = kCreate; stored = 3; break;              // createRequest
      case 4: act = kRemove; break;                          // invalid
      default: return SVC_ERR_WRONG_VALUE;
    }
  }
  switch (act) {
    case kCreate:
      if (exists) return SVC_ERR_STATE;
      row = s->rows.emplace(Key(key.sub, key.sub + key.count), Record{}).first;
      break;
    case kSet:
      if (!exists) return SVC_ERR_STATE;
      break;
    case kRemove:
      if (exists) s->rows.erase(row);
      return 0;
  }
  Value& v = row->second.slot(s->statusAttribute);
  v.number = stored;
  return 0;
}

}  // namespace

int svcRowSet(SvcServiceId service, const uint32_t* key, uint32_t keyCount, uint32_t attribute, const void* value) {
  if (service == nullptr || value == nullptr || !keyValid(key, keyCount)) return SVC_ERR_UNKNOWN;
  SvcSetFn set;
  {
    std::unique_lock lock(service->lock);
    if (!service->declared || !service->table) return SVC_ERR_UNKNOWN;
    const Attribute* a = service->attribute(attribute);
    if (a == nullptr) return SVC_ERR_UNKNOWN;
    KeyView view{key, keyCount};
    if (service->hasStatus && attribute == service->statusAttribute)
      return statusWrite(service, view, *static_cast<const uint32_t*>(value));
    if (!a->provided) {
      if (int rc = checkValue(a->form, value)) return rc;
      auto row = service->rows.find(view);
      if (row == service->rows.end()) return SVC_ERR_NO_CREATION;
      writeValue(a->form, row->second.slot(attribute), value);
      return 0;
    }
    if (service->rows.find(view) == service->rows.end()) return SVC_ERR_NO_CREATION;
    set = a->set;
  }
  return set == nullptr ? static_cast<int>(SVC_ERR_UNKNOWN) : set(key, keyCount, attribute, value);
}

int svcRowPut(SvcServiceId service, const uint32_t* key, uint32_t keyCount, uint32_t attribute, const void* value) {
  if (service == nullptr || value == nullptr || !keyValid(key, keyCount)) return SVC_ERR_UNKNOWN;
  std::unique_lock lock(service->lock);
  if (!service->declared || !service->table) return SVC_ERR_UNKNOWN;
  const Attribute* a = service->attribute(attribute);
  if (a == nullptr || a->provided) return SVC_ERR_UNKNOWN;  // the store keeps no value of a provided one
  if (int rc = checkValue(a->form, value)) return rc;
  KeyView view{key, keyCount};
  auto row = service->rows.find(view);
  if (row == service->rows.end()) row = service->rows.emplace(Key(key, key + keyCount), Record{}).first;
  writeValue(a->form, row->second.slot(attribute), value);
  return 0;
}

uint32_t svcRowCount(SvcServiceId service) {
  if (service == nullptr) return 0;
  std::shared_lock lock(service->lock);
  if (!service->declared || !service->table) return 0;
  return static_cast<uint32_t>(service->rows.size());
}

// ---------------------------------------------------------------- saving

namespace {

const char kHex[] = "0123456789abcdef";

void appendRecord(std::string& out, const SvcService& s, const Record& r) {
  char line[64];
  for (const Value& v : r.values) {
    const Attribute* a = s.attribute(v.attribute);
    if (a == nullptr || a->provided) continue;
    if (a->form == SVC_FORM_INT) {
      snprintf(line, sizeof line, "int %u %u\n", v.attribute, v.number);
      out += line;
      continue;
    }
    snprintf(line, sizeof line, "octet %u %zu", v.attribute, v.octets.size());
    out += line;
    if (!v.octets.empty()) {
      out += ' ';
      for (uint8_t b : v.octets) {
        out += kHex[b >> 4];
        out += kHex[b & 0xF];
      }
    }
    out += '\n';
  }
}

std::string snapshot() {
  std::string out = kFormatTag;
  out += '\n';
  Directory& d = directory();
  std::shared_lock dirLock(d.lock);
  for (const auto& [prefix, service] : d.services) {
    const SvcService& s = *service;
    std::shared_lock lock(s.lock);
    if (!s.declared) continue;
    out += "service ";
    out += prefix;
    out += s.table ? " table\n" : " scalar\n";
    if (!s.table) {
      appendRecord(out, s, s.scalar);
      continue;
    }
    for (const auto& [key, row] : s.rows) {
      char number[16];
      snprintf(number, sizeof number, "row %zu", key.size());
      out += number;
      for (uint32_t sub : key) {
        snprintf(number, sizeof number, " %u", sub);
        out += number;
      }
      out += '\n';
      appendRecord(out, s, row);
    }
  }
  out += "end\n";
  return out;
}

bool writeAll(int fd, const std::string& text) {
  const char* p = text.data();
  size_t left = text.size();
  while (left > 0) {
    ssize_t n = write(fd, p, left);
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    p += n;
    left -= static_cast<size_t>(n);
  }
  return true;
}

std::string directoryOf(const std::string& path) {
  size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  if (slash == 0) return "/";
  return path.substr(0, slash);
}

std::atomic<uint32_t> gTempSerial{0};

}  // namespace

int svcStoreSave(const char* path) {
  if (path == nullptr || *path == '\0') return -1;
  std::string text = snapshot();  // no lock is held past this point

  std::string target(path);
  char suffix[48];
  snprintf(suffix, sizeof suffix, ".tmp.%ld.%u", static_cast<long>(getpid()),
           gTempSerial.fetch_add(1, std::memory_order_relaxed));
  std::string temp = target + suffix;

  int fd = open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (fd < 0) return -1;
  bool ok = writeAll(fd, text) && fsync(fd) == 0;
  ok = close(fd) == 0 && ok;
  if (!ok || rename(temp.c_str(), target.c_str()) != 0) {
    unlink(temp.c_str());
    return -1;
  }
  // The rename is durable only once the directory is.
  int dirFd = open(directoryOf(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (dirFd < 0) return -1;
  ok = fsync(dirFd) == 0;
  close(dirFd);
  return ok ? 0 : -1;
}

// ---------------------------------------------------------------- loading

namespace {

struct Loaded {
  bool table = false;
  std::map<uint32_t, SvcForm> forms;  // of every attribute the file gives a value for
  Record scalar;
  Rows rows;
};

using LoadedSet = std::map<std::string, Loaded, std::less<>>;

// Splits a line at single spaces; false on an empty token (double, leading or
// trailing space) or more than `max` tokens.
bool split(std::string_view line, std::vector<std::string_view>& tokens, size_t max) {
  tokens.clear();
  size_t start = 0;
  for (;;) {
    size_t space = line.find(' ', start);
    std::string_view token = line.substr(start, space == std::string_view::npos ? std::string_view::npos : space - start);
    if (token.empty() || tokens.size() == max) return false;
    tokens.push_back(token);
    if (space == std::string_view::npos) return true;
    start = space + 1;
  }
}

bool parseNumber(std::string_view text, uint32_t& out) {
  if (text.empty() || text.size() > 10) return false;
  uint64_t n = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
    n = n * 10 + static_cast<uint64_t>(c - '0');
  }
  if (n > UINT32_MAX) return false;
  out = static_cast<uint32_t>(n);
  return true;
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool readFile(const char* path, std::string& text) {
  int fd = open(path, O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  struct stat st;
  if (fstat(fd, &st) != 0 || !S_ISREG(st.st_mode) || st.st_size > kMaxFile) {
    close(fd);
    return false;
  }
  text.clear();
  char buffer[65536];
  for (;;) {
    ssize_t n = read(fd, buffer, sizeof buffer);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0 || text.size() + static_cast<size_t>(n) > static_cast<size_t>(kMaxFile)) {
      close(fd);
      return false;
    }
    if (n == 0) break;
    text.append(buffer, static_cast<size_t>(n));
  }
  close(fd);
  return true;
}

// Parses a whole file; false if any part of it is malformed.
bool parse(std::string_view text, LoadedSet& out) {
  Loaded* service = nullptr;
  Record* record = nullptr;  // where value lines go
  std::vector<std::string_view> tokens;
  tokens.reserve(SVC_MAX_KEY + 2);
  bool first = true;
  size_t pos = 0;
  while (pos < text.size()) {
    size_t eol = text.find('\n', pos);
    if (eol == std::string_view::npos) return false;  // cut short
    std::string_view line = text.substr(pos, eol - pos);
    pos = eol + 1;
    if (line.size() > kMaxLine) return false;
    if (first) {
      if (line != kFormatTag) return false;
      first = false;
      continue;
    }
    if (line == "end") return pos == text.size();
    if (!split(line, tokens, SVC_MAX_KEY + 2)) return false;
    std::string_view verb = tokens[0];
    if (verb == "service") {
      if (tokens.size() != 3 || tokens[1].size() > kMaxPrefix) return false;
      std::string prefix(tokens[1]);
      if (!prefixValid(prefix.c_str())) return false;
      bool table;
      if (tokens[2] == "table") table = true;
      else if (tokens[2] == "scalar") table = false;
      else return false;
      auto [it, fresh] = out.try_emplace(std::move(prefix));
      if (!fresh) return false;
      service = &it->second;
      service->table = table;
      record = table ? nullptr : &service->scalar;
    } else if (verb == "row") {
      uint32_t count;
      if (service == nullptr || !service->table || tokens.size() < 2 || !parseNumber(tokens[1], count) ||
          count > SVC_MAX_KEY || tokens.size() != count + 2u)
        return false;
      Key key(count);
      for (uint32_t i = 0; i < count; ++i)
        if (!parseNumber(tokens[i + 2], key[i])) return false;
      auto [it, fresh] = service->rows.try_emplace(std::move(key));
      if (!fresh) return false;
      record = &it->second;
    } else if (verb == "int" || verb == "octet") {
      if (record == nullptr) return false;
      SvcForm form = verb == "int" ? SVC_FORM_INT : SVC_FORM_OCTET;
      uint32_t attribute;
      if (tokens.size() < 3 || !parseNumber(tokens[1], attribute)) return false;
      auto [known, fresh] = service->forms.try_emplace(attribute, form);
      if (known->second != form || record->find(attribute) != nullptr) return false;
      Value& v = record->slot(attribute);
      if (form == SVC_FORM_INT) {
        if (tokens.size() != 3 || !parseNumber(tokens[2], v.number)) return false;
        continue;
      }
      uint32_t length;
      if (!parseNumber(tokens[2], length) || length > kMaxOctet) return false;
      if (length == 0) {
        if (tokens.size() != 3) return false;
        continue;
      }
      if (tokens.size() != 4 || tokens[3].size() != 2u * length) return false;
      v.octets.resize(length);
      for (uint32_t i = 0; i < length; ++i) {
        int hi = hexDigit(tokens[3][2 * i]), lo = hexDigit(tokens[3][2 * i + 1]);
        if (hi < 0 || lo < 0) return false;
        v.octets[i] = static_cast<uint8_t>(hi << 4 | lo);
      }
    } else {
      return false;
    }
  }
  return false;  // no "end" line
}

// Whether the loaded service fits the schema of `s` (null: not yet known).
bool fits(const SvcService* s, const Loaded& l) {
  if (s == nullptr || !s->declared) return true;
  if (s->table != l.table) return false;
  for (const auto& [id, form] : l.forms) {
    const Attribute* a = s->attribute(id);
    if (a != nullptr && (a->provided || a->form != form)) return false;
  }
  return true;
}

}  // namespace

int svcStoreLoad(const char* path) {
  if (path == nullptr) return -1;
  std::string text;
  if (!readFile(path, text)) return -1;
  LoadedSet loaded;
  if (!parse(text, loaded)) return -1;
  text = std::string();

  Directory& d = directory();
  std::unique_lock dirLock(d.lock);
  // Every service named in the file, locked in prefix order: no one else takes
  // two service locks, and no one takes the directory lock while holding one.
  std::vector<std::unique_lock<RwLock>> locks;
  for (const auto& [prefix, l] : loaded) {
    auto it = d.services.find(prefix);
    if (it == d.services.end()) continue;
    locks.emplace_back(it->second->lock);
    if (!fits(it->second.get(), l)) return -1;
  }
  for (auto& [prefix, l] : loaded) {
    auto it = d.services.find(prefix);
    if (it == d.services.end()) {
      // Nobody can reach a new service before the directory lock is released.
      it = d.services.emplace(prefix, std::make_unique<SvcService>(prefix)).first;
    }
    SvcService& s = *it->second;
    if (!s.declared) {
      s.declared = true;
      s.table = l.table;
    }
    for (const auto& [id, form] : l.forms)
      if (s.attribute(id) == nullptr) s.addAttribute(id, form);
    s.scalar = std::move(l.scalar);
    s.rows = std::move(l.rows);
  }
  return 0;
}

// ---------------------------------------------------------------- the whole store

void svcStoreClear(void) {
  Directory& d = directory();
  std::shared_lock dirLock(d.lock);
  for (auto& [prefix, service] : d.services) {
    std::unique_lock lock(service->lock);
    service->scalar.values.clear();
    service->rows.clear();
  }
}

void svcStoreReset(void) {
  Directory& d = directory();
  std::unique_lock dirLock(d.lock);
  for (auto& [prefix, service] : d.services) {
    std::unique_lock lock(service->lock);
    service->declared = false;
    service->table = false;
    service->forgetSchema();
    service->scalar.values.clear();
    service->rows.clear();
  }
}
