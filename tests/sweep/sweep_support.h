// The bad-input sweep: the default device with every module gate open, the
// catalogue walked module by module, and the machinery that sends a careless
// client's values to an object, then checks the answer and what the object
// holds afterwards.
//
// Nothing here knows a module: what a probe expects comes from the object's
// own row (its FwObject: check, lo, hi, lengthError, role, the descriptor's
// size and catalogued range) and from the dispatcher's rules.
#ifndef MDB_SWEEP_SUPPORT_H
#define MDB_SWEEP_SUPPORT_H

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "framework/fw.h"
#include "mdb/mdb.h"
#include "mdb/mdb_gate.h"
#include "platform/sil.h"
#include "services/svc_store.h"

namespace sweep {

using Bytes = std::vector<uint8_t>;
using Index = std::vector<uint32_t>;

// The caller tag of every request of the sweep: an ordinary client, not the
// SNMP agent.
inline const char* const kTag = "sweep";
// What lies in the caller's buffer past the bytes a probe announces: a handler
// that reads past valueLen takes these bytes into the value it judges or writes.
constexpr uint8_t kPad = 0xA5;
constexpr uint32_t kPadBytes = 16;
constexpr uint32_t kReadCapacity = 8192;

// ---------------------------------------------------------------- the device

// The database as the daemon's start-up builds it, in this process: every
// module gate open (the closed-by-default ones and `system` opened by their
// options), the default device in the substitute services, a private "/ram".
class Device {
 public:
  static void start() {
    char dir[] = "/tmp/mdbsweep-XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(dir));
    runDir() = dir;
    const char* old = getenv("MDB_RUNDIR");
    savedRunDir() = old != nullptr ? old : "";
    hadRunDir() = old != nullptr;
    setenv("MDB_RUNDIR", dir, 1);

    mdbDictDestroy();
    mdbInfoInit();
    gMdbInfo.entryHook = nullptr;
    gMdbInfo.exitHook = nullptr;
    gMdbInfo.translateHook = nullptr;
    gMdbInfo.unknownObjectHook = nullptr;
    ASSERT_EQ(0, mdbDictInit());
    silOptClear();
    silOptSet("mdb.ramdir", dir);
    openEveryGate();
    mdbStatsReset();
    svcStoreClear();
    mdbUserMibInit();
  }

  static void stop() {
    mdbDictDestroy();
    svcStoreClear();
    silOptClear();
    if (hadRunDir()) setenv("MDB_RUNDIR", savedRunDir().c_str(), 1);
    else unsetenv("MDB_RUNDIR");
    if (!runDir().empty()) {
      std::string command = "rm -rf '" + runDir() + "'";
      int ignored = system(command.c_str());
      (void)ignored;
    }
  }

  // The options that open what is closed by default; the gates open by
  // default stay unset, which opens them.
  static void openEveryGate() {
    for (uint32_t i = 0; i < gMdbInitSequenceLength; i++) {
      const MdbInitStep& step = gMdbInitSequence[i];
      if (step.kind != MDB_GATE_CLOSED) continue;
      for (const char* key : step.keys)
        if (key != nullptr) silOptSet(key, "true");
    }
    silOptSet("mdb.system.enable", "true");
  }

 private:
  static std::string& runDir() { static std::string s; return s; }
  static std::string& savedRunDir() { static std::string s; return s; }
  static bool& hadRunDir() { static bool b = false; return b; }
};

// ---------------------------------------------------------------- the catalogue

struct Target {
  std::string module;
  std::string name;                     // as a client names it
  const MdbObjectBinding* binding;      // the row that serves it (after alternate objects)
  const MdbObjectDesc* desc;
  const MdbEntryDesc* entry;
  const FwObject* fw;                   // the framework row, or null for a module of its own kind
  bool scalar;
  bool hasRow;                          // `index` names an existing instance
  Index index;                          // that instance, or one made up for a table without rows
  bool readable;                        // the instance reads back
  Bytes before;                         // what it read before the probes

  bool writable() const { return (desc->access & (MDB_ACCESS_WRITE | MDB_ACCESS_CREATE)) != 0; }
  bool intForm() const {
    if (fw != nullptr) return fw->form == FW_FORM_INT;
    switch (desc->type) {
      case MDB_TYPE_INTEGER: case MDB_TYPE_COUNTER: case MDB_TYPE_GAUGE: case MDB_TYPE_TIMETICKS:
      case MDB_TYPE_ROWSTATUS: return true;
      default: return false;
    }
  }
  bool hook() const { return fw != nullptr && fw->role == FW_ROLE_HOOK; }
  std::string where() const {
    std::string s = name + " [";
    for (size_t i = 0; i < index.size() && i < 12; i++) s += (i ? "." : "") + std::to_string(index[i]);
    if (index.size() > 12) s += "...(" + std::to_string(index.size()) + " sub-ids)";
    return s + "]";
  }
};

// The framework row behind a binding. A module declared with the framework
// binds FwObject rows only (fwBindings); such a module shows itself by the
// rows the generic handler serves, and every row of it must name the entry
// it is bound to.
inline const FwObject* frameworkRow(const MdbObjectBinding* b, bool frameworkModule) {
  if (b->object->handler != fwHandler && !frameworkModule) return nullptr;
  const auto* o = reinterpret_cast<const FwObject*>(b->object);
  return o->entry != nullptr && &o->entry->desc == b->entry ? o : nullptr;
}

// An index that the entry's codec takes, for a table the walk finds no row
// in: 1 for an integer, the address 1.1.1.1..., the empty string or OID.
inline Index madeUpIndex(const MdbEntryDesc* entry, const FwObject* fw) {
  Index index;
  if (fw != nullptr && fw->entry->columnCount > 0) {
    for (uint32_t c = 0; c < fw->entry->columnCount; c++) {
      const FwIndexColumn& col = fw->entry->columns[c];
      switch (col.kind) {
        case FW_IDX_STRING: case FW_IDX_OID: index.push_back(0); break;
        case FW_IDX_IMPLIED_STRING: case FW_IDX_IMPLIED_OID: break;
        default: index.insert(index.end(), FwEntry::fwIndexColumnMax(col), 1); break;
      }
    }
  }
  while (index.size() < entry->indexCountMin) index.push_back(1);
  return index;
}

inline uint32_t readAt(const std::string& name, const Index& index, Bytes* out) {
  out->assign(kReadCapacity, 0);
  uint32_t length = kReadCapacity;
  Index copy = index;
  uint32_t rc = mdbGetApi(name.c_str(), copy.empty() ? nullptr : copy.data(), static_cast<uint32_t>(copy.size()),
                          out->data(), &length, kTag);
  out->resize(rc == 0 ? std::min(length, kReadCapacity) : 0);
  return rc;
}

inline bool firstInstance(const std::string& name, Index* index) {
  uint32_t sub[MDB_MAX_INDEX] = {0};
  uint32_t count = 0;
  Bytes value(kReadCapacity);
  uint32_t length = kReadCapacity;
  if (mdbGetNext(name.c_str(), sub, MDB_MAX_INDEX, &count, value.data(), &length, kTag) != 0) return false;
  if (count > MDB_MAX_INDEX) return false;
  index->assign(sub, sub + count);
  return true;
}

struct Catalogue {
  std::vector<std::string> modules;       // by name
  std::vector<Target> objects;            // every registered object, module by module

  // Walks every registered module's list of objects; keeps the objects whose
  // name the dictionary resolves to that very row.
  void load() {
    std::vector<const MdbModuleDesc*> registered;
    mdbModuleForEach(
        [](const MdbModuleDesc* m, void* arg) {
          static_cast<std::vector<const MdbModuleDesc*>*>(arg)->push_back(m);
          return 0;
        },
        &registered);
    std::sort(registered.begin(), registered.end(),
              [](const MdbModuleDesc* a, const MdbModuleDesc* b) { return strcmp(a->name, b->name) < 0; });
    std::map<const MdbEntryDesc*, Index> rows;
    std::set<const MdbEntryDesc*> empty;
    for (const MdbModuleDesc* m : registered) {
      modules.push_back(m->name);
      bool frameworkModule = false;
      for (const MdbObjectBinding* b = m->list; b != nullptr && b->object != nullptr; b++)
        if (b->object->handler == fwHandler) frameworkModule = true;
      for (const MdbObjectBinding* b = m->list; b != nullptr && b->object != nullptr; b++) {
        if (b->object->name == nullptr) continue;
        const MdbObjectNode* node = mdbObjectLookup(b->object->name);
        if (node == nullptr || node->list != b) continue;
        Target t{};
        t.module = m->name;
        t.name = b->object->name;
        t.binding = b;
        // An alternate object is served as the one it names.
        for (int depth = 0; t.binding->object->altObject != nullptr && depth < 8; depth++) {
          const MdbObjectNode* alt = mdbObjectLookup(t.binding->object->altObject);
          if (alt == nullptr) break;
          t.binding = alt->list;
        }
        t.desc = t.binding->object;
        t.entry = t.binding->entry;
        const bool servedHere = t.binding == b;
        t.fw = frameworkRow(t.binding, servedHere ? frameworkModule : t.binding->object->handler == fwHandler);
        t.scalar = t.fw != nullptr ? !t.fw->entry->isTable() : (t.entry->indexCountMin == 0 && t.entry->indexCountMax <= 1);
        objects.push_back(t);
      }
    }
    // The instance of each object: .0 for a scalar, else the first row a walk
    // finds in its table, through the object or a sibling of its entry.
    for (Target& t : objects) {
      if (t.scalar) {
        t.index = {0};
        t.hasRow = true;
        continue;
      }
      auto known = rows.find(t.entry);
      if (known != rows.end()) {
        t.index = known->second;
        t.hasRow = true;
        continue;
      }
      if (empty.count(t.entry) != 0) {
        t.index = madeUpIndex(t.entry, t.fw);
        continue;
      }
      Index found;
      bool ok = firstInstance(t.name, &found);
      for (const Target& sibling : objects) {
        if (ok) break;
        if (sibling.entry == t.entry && &sibling != &t) ok = firstInstance(sibling.name, &found);
      }
      if (ok) {
        rows[t.entry] = found;
        t.index = found;
        t.hasRow = true;
      } else {
        empty.insert(t.entry);
        t.index = madeUpIndex(t.entry, t.fw);
      }
    }
    refresh();
  }

  // Reads every writable object's value, the reference of "unchanged". A
  // write-only object, or a read that succeeds and delivers nothing (the
  // length comes back as it went), has no value to compare.
  void refresh() {
    for (Target& t : objects) {
      if (!t.writable()) continue;
      t.readable = readAt(t.name, t.index, &t.before) == 0 && t.before.size() != kReadCapacity &&
                   (t.fw == nullptr || t.fw->role != FW_ROLE_WRITE_ONLY);
      if (!t.readable) t.before.clear();
    }
  }
};

// ---------------------------------------------------------------- faults and figures

struct Fault {
  std::string module, object, probe, expected, got, detail;
};

inline std::string codeName(uint32_t rc) {
  if (rc == 0) return "0 (accepted)";
  std::string name = mdbErrorName(rc);
  return name == "unknown" ? "unknown code " + std::to_string(static_cast<int32_t>(rc)) : name;
}

// A documented answer: success, or a code of the database's error family.
inline bool documented(uint32_t rc) { return rc == 0 || (rc > MDB_MODULE_ERROR_BASE && rc <= MDB_ERR_WRONG_ENCODING); }

inline std::string show(const Bytes& v) {
  if (v.size() == 4) {
    uint32_t w;
    memcpy(&w, v.data(), 4);
    char text[48];
    snprintf(text, sizeof text, "%u (0x%08x)", w, w);
    return text;
  }
  std::string s = std::to_string(v.size()) + " bytes";
  if (!v.empty()) s += " ";
  for (size_t i = 0; i < v.size() && i < 12; i++) {
    char hex[4];
    snprintf(hex, sizeof hex, "%02x", v[i]);
    s += hex;
  }
  if (v.size() > 12) s += "...";
  return s;
}

inline Bytes word(uint32_t value) {
  Bytes b(4);
  memcpy(b.data(), &value, 4);
  return b;
}

inline bool containsPad(const Bytes& v, size_t from) {
  for (size_t i = from; i < v.size(); i++)
    if (v[i] == kPad) return true;
  return false;
}

// What one probe brought back.
struct Sent {
  uint32_t rc = 0;
  bool changed = false;          // the instance read back differently afterwards
  Bytes after;                   // what it read then
  bool wrotePast = false;        // the call wrote into the caller's buffer past valueLen
  bool wroteInto = false;        // the call wrote into the caller's (constant) value
  bool restoreFailed = false;    // the old value could not be written back
};

enum class Verb { Set, Commit };

class Sweep {
 public:
  explicit Sweep(const char* title) : title_(title), started_(std::chrono::steady_clock::now()) {}

  // Sends one request with `value` (null: a null buffer) of `length` bytes at
  // `index`, then reads the object's own instance back; a value that moved
  // is written back so that the next probe starts from the device as it was.
  Sent send(Target& t, const Index& index, const Bytes* value, uint32_t length, Verb verb = Verb::Set) {
    Sent s;
    Bytes buffer;
    if (value != nullptr) {
      buffer = *value;
      buffer.resize(std::max<size_t>(buffer.size(), length));
      buffer.insert(buffer.end(), kPadBytes, kPad);
    }
    const Bytes sent = buffer;
    Index sub = index;
    uint32_t* pIndex = sub.empty() ? nullptr : sub.data();
    const uint32_t count = static_cast<uint32_t>(sub.size());
    const void* pValue = value != nullptr ? buffer.data() : nullptr;
    s.rc = verb == Verb::Set ? mdbSetApi(t.name.c_str(), pIndex, count, pValue, length, kTag, MDB_SETOPT_COMMIT)
                             : mdbCommit(t.name.c_str(), pIndex, count, pValue, length, 0, kTag);
    probes_++;
    perModule_[t.module].probes++;
    if (value != nullptr) {
      for (size_t i = 0; i < buffer.size(); i++) {
        if (buffer[i] == sent[i]) continue;
        if (i < length) s.wroteInto = true;
        else s.wrotePast = true;
      }
    }
    if (!t.readable) return s;
    Bytes now;
    if (readAt(t.name, t.index, &now) != 0) {
      s.changed = true;
      s.restoreFailed = true;
      s.after.clear();
      t.readable = false;  // the instance is gone: nothing more to compare with
      return s;
    }
    if (now == t.before) return s;
    if (s.rc != 0 && moving(t)) {
      t.before = now;
      return s;
    }
    s.changed = true;
    s.after = now;
    Bytes old = t.before;
    old.insert(old.end(), kPadBytes, 0);
    Index own = t.index;
    uint32_t* pOwn = own.empty() ? nullptr : own.data();
    const uint32_t ownCount = static_cast<uint32_t>(own.size()), oldLength = static_cast<uint32_t>(t.before.size());
    mdbSetApi(t.name.c_str(), pOwn, ownCount, old.data(), oldLength, kTag, MDB_SETOPT_COMMIT);
    Bytes restored;
    if (readAt(t.name, t.index, &restored) != 0 || restored != t.before) {
      // A value its own check refuses (a default outside the limit): the
      // commit alone, which validates nothing, puts it back.
      mdbCommit(t.name.c_str(), pOwn, ownCount, old.data(), oldLength, 0, kTag);
      if (readAt(t.name, t.index, &restored) == 0 && restored == t.before) {
        notes_.insert(t.name + ": its value as read is refused by its own check when written back");
      } else {
        s.restoreFailed = true;
        t.before = restored;
        if (restored.empty()) t.readable = false;
      }
    }
    return s;
  }

  Sent sendValue(Target& t, const Bytes& value, uint32_t length) { return send(t, t.index, &value, length); }

  // The answer must be `expected` exactly, and a refused write leaves the
  // value as it was; nothing is written into the caller's buffer past the
  // value.
  void expect(const Target& t, const std::string& probe, const Sent& s, uint32_t expected) {
    if (s.rc != expected) fault(t, probe, codeName(expected), codeName(s.rc), consequence(s));
    else if (s.rc != 0 && s.changed) fault(t, probe, "value unchanged", "value changed", consequence(s));
    checkBuffer(t, probe, s);
  }

  // A hook with no stated limit: any refusal, or a success that is listed for
  // review; a refused write must leave the value, and an accepted one must
  // not leave a value outside [min, max] (signed or not), nor pad bytes read
  // past the value.
  void lenient(const Target& t, const std::string& probe, const Sent& s, const Bytes* illegal = nullptr,
               size_t announced = 4) {
    if (s.rc != 0) {
      if (s.changed) fault(t, probe, "value unchanged after a refusal", "value changed", consequence(s));
    } else {
      accepted_.push_back(t.where() + ": " + probe + (s.changed ? ", value now " + show(s.after) : ", value unchanged"));
      if (s.changed && illegal != nullptr && s.after == *illegal)
        fault(t, probe, "refusal or no effect", "accepted and stored", consequence(s));
      else if (s.changed && announced < s.after.size() && containsPad(s.after, announced))
        fault(t, probe, "refusal or no effect", "accepted bytes past the value", consequence(s));
      else if (s.changed && outsideCatalogue(t, s.after))
        fault(t, probe, "refusal or no effect", "accepted, now outside its catalogued range", consequence(s));
    }
    checkBuffer(t, probe, s);
  }

  // An integer outside the descriptor's range, where it has one.
  static bool outsideCatalogue(const Target& t, const Bytes& value) {
    if (!t.intForm() || value.size() != 4 || (t.desc->min == 0 && t.desc->max == 0)) return false;
    uint32_t v;
    memcpy(&v, value.data(), 4);
    if (t.desc->type == MDB_TYPE_INTEGER)
      return static_cast<int32_t>(v) < t.desc->min || static_cast<int32_t>(v) > t.desc->max;
    return v < static_cast<uint32_t>(t.desc->min) || v > static_cast<uint32_t>(t.desc->max);
  }

  void checkBuffer(const Target& t, const std::string& probe, const Sent& s) {
    if (s.wrotePast) fault(t, probe, "caller's buffer untouched", "written past valueLen", "");
    if (s.wroteInto) notes_.insert(t.name + ": writes into the caller's value at Validate (" + probe + ")");
  }

  void fault(const Target& t, const std::string& probe, const std::string& expected, const std::string& got,
             const std::string& detail) {
    faults_.push_back({t.module, t.where(), probe, expected, got, detail});
  }

  static std::string consequence(const Sent& s) {
    std::string d;
    if (s.changed) d = s.after.empty() && s.restoreFailed ? "the instance no longer reads" : "value now " + show(s.after);
    if (s.restoreFailed) d += "; the old value could not be written back";
    return d;
  }

  void swept(const Target& t) {
    objects_++;
    perModule_[t.module].objects++;
  }
  void note(const std::string& text) { notes_.insert(text); }
  void answer(const std::string& key, const std::string& object) { answers_[key].push_back(object); }
  uint32_t probes() const { return probes_; }
  uint32_t objects() const { return objects_; }
  const std::vector<Fault>& faults() const { return faults_; }

  // The figures and lists on standard output, and one failure per kind of
  // fault with every object it was seen on.
  void report() {
    const double ms =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started_).count();
    printf("\n[sweep] %s: %u objects, %u probes, %.0f ms\n", title_.c_str(), objects_, probes_, ms);
    for (const auto& [module, n] : perModule_)
      printf("[sweep]   %-24s %4u objects %6u probes\n", module.c_str(), n.objects, n.probes);
    for (const auto& [key, list] : answers_) {
      printf("[sweep]   answer %s: %zu objects\n", key.c_str(), list.size());
      std::string line;
      for (const auto& o : list) {
        if (!line.empty() && line.size() + o.size() > 110) {
          printf("[sweep]     %s\n", line.c_str());
          line.clear();
        }
        line += (line.empty() ? "" : ", ") + o;
      }
      if (!line.empty()) printf("[sweep]     %s\n", line.c_str());
    }
    if (!accepted_.empty()) {
      printf("[sweep]   hook objects that accepted an out-of-limit value (for review): %zu\n", accepted_.size());
      for (const auto& a : accepted_) printf("[sweep]     %s\n", a.c_str());
    }
    for (const auto& n : notes_) printf("[sweep]   note: %s\n", n.c_str());
    std::map<std::string, std::vector<const Fault*>> byKind;
    for (const Fault& f : faults_) byKind[f.probe + ": expected " + f.expected + ", got " + f.got].push_back(&f);
    printf("[sweep]   faults: %zu\n", faults_.size());
    for (const auto& [kind, list] : byKind) {
      std::string text = kind + " (" + std::to_string(list.size()) + " objects)";
      printf("[sweep]     %s\n", text.c_str());
      for (const Fault* f : list) text += "\n    " + f->object + (f->detail.empty() ? "" : ": " + f->detail);
      ADD_FAILURE() << text;
    }
    fflush(stdout);
  }

 private:
  // A value that moves by itself (a clock): two reads a second apart differ.
  static bool moving(const Target& t) {
    static std::map<std::string, bool> known;
    auto it = known.find(t.name);
    if (it != known.end()) return it->second;
    Bytes a, b;
    readAt(t.name, t.index, &a);
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    readAt(t.name, t.index, &b);
    return known[t.name] = a != b;
  }

  struct Counts {
    uint32_t objects = 0, probes = 0;
  };
  std::string title_;
  std::chrono::steady_clock::time_point started_;
  uint32_t objects_ = 0, probes_ = 0;
  std::map<std::string, Counts> perModule_;
  std::vector<Fault> faults_;
  std::vector<std::string> accepted_;
  std::set<std::string> notes_;
  std::map<std::string, std::vector<std::string>> answers_;
};

}  // namespace sweep

#endif
