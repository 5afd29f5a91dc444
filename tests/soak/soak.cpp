// mdbsoak [--seconds N] [--daemon PATH] [--core-seconds N]: the daemon under 25 clients.
// The daemon (MDB_DAEMON_PATH or --daemon) runs in a private run directory with a client on each of its 25 command
// sockets for N seconds (60): walks, reads of what a quiet walk found before the load, writes of what each client
// alone owns, a row each creates and destroys, requests that must be refused. Every answer is checked, all that is
// owned is read back at the end, VmRSS must not grow after the first fifth, and the daemon must end with 0 on SIGTERM
// with no sanitizer report nor fatal signal in its log. A client cannot read its counters, so the same core then runs
// in this process under the same load (--core-seconds, N / 6 but at least 3) and its mdbStats must add up with what
// the clients sent and saw. Exit status 0 if all held, 1 if not, 2 for a usage error.
#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <barrier>
#include <chrono>
#include <cstdarg>
#include <cstring>
#include <deque>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "mdb/mdb_client.h"
#include "mdb/mdb_dict.h"
#include "mdb/mdb_errors.h"
#include "platform/icm.h"
#include "platform/sil.h"

#ifndef MDB_DAEMON_PATH
#define MDB_DAEMON_PATH "mdb"
#endif

// A sanitizer's runtime calls this after each report it makes in this process (where the second run's core is).
static std::atomic<int> gSanitizerReports{0};
extern "C" void __sanitizer_report_error_summary(const char* summary) {
  gSanitizerReports++, fprintf(stderr, "%s\n", summary);
}

namespace {

using Index = std::vector<uint32_t>;
using Bytes = std::vector<uint8_t>;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr uint32_t kClients = 25;
constexpr uint32_t kCodes = 27;        // the family's codes: the base + 1 to 26
constexpr uint32_t kAny = 0xFFFFFFFF;  // every 32-bit value is valid
constexpr uint32_t kStepValue = 1024;  // value bytes of a walk step: more than any walked value
constexpr size_t kMaxRows = 100000;    // a walk longer than this does not end
constexpr const char* kTag = "soak";

// How much the daemon's VmRSS may grow from the end of the first fifth of the load to its end. Under a sanitizer (the
// daemon is then built the same way) the runtime's shadow and bookkeeping grow slowly with the addresses the heap
// reaches (about 1.5 MiB a minute under ThreadSanitizer): only a gross leak shows there.
#ifndef __has_feature
#define __has_feature(x) 0
#endif
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__) || __has_feature(thread_sanitizer) || \
    __has_feature(address_sanitizer)
constexpr long kRssSlackKiB = 8192;
#else
constexpr long kRssSlackKiB = 256;
#endif

std::mutex gFailMutex;
std::vector<std::string> gFailures;  // the clients' first 100, and all others
uint64_t gFailCount = 0;

__attribute__((format(printf, 1, 2))) std::string format(const char* f, ...) {
  char text[1024];
  va_list args;
  va_start(args, f);
  vsnprintf(text, sizeof text, f, args);
  va_end(args);
  return text;
}

void fail(const std::string& message) {
  std::lock_guard<std::mutex> lock(gFailMutex);
  if (gFailCount++ < 100 || message.compare(0, 7, "client ") != 0) gFailures.push_back(message);
}

std::string text(const Index& index) {
  std::string out;
  for (uint32_t s : index) out += (out.empty() ? "" : ".") + std::to_string(s);
  return out.empty() ? "(start)" : out;
}
std::string rcText(uint32_t rc) {  // the client library's own codes: no answer came
  if (rc >= MDB_CLIENT_ERR_IO && rc <= MDB_CLIENT_ERR_ARGS) return format("no answer (client error %u)", rc);
  return format("%s (%u)", mdbErrorName(rc), rc);
}

Bytes num(uint32_t v) { return {uint8_t(v), uint8_t(v >> 8), uint8_t(v >> 16), uint8_t(v >> 24)}; }
const uint8_t* bytes(const Bytes& v) {  // an empty value, not an absent one
  static const uint8_t kEmpty = 0;
  return v.empty() ? &kEmpty : v.data();
}
std::string show(char form, const Bytes& b) {
  if (form == 'i' && b.size() == 4) return std::to_string(b[0] | b[1] << 8 | b[2] << 16 | uint32_t(b[3]) << 24);
  return "\"" + std::string(b.begin(), b.end()) + "\"";
}

std::string socketPath(const std::string& dir, uint32_t s) {
  return dir + (s < 16 ? format("/mdbcmd-r%u.socket", s) : s < 24 ? format("/mdbcmd-w%u.socket", s - 16)
                                                                   : std::string("/mdbcmd.socket"));
}

// Waits up to 60 s until all 25 command sockets in dir accept, while alive() holds.
template <class Alive>
bool socketsAccept(const std::string& dir, Alive alive) {
  const auto deadline = Clock::now() + 60s;
  for (uint32_t s = 0; s < kClients;) {
    if (MdbClient* c = mdbClientOpen(socketPath(dir, s).c_str())) mdbClientClose(c), s++;
    else if (!alive() || Clock::now() > deadline) return false;
    else std::this_thread::sleep_for(20ms);
  }
  return true;
}

// Where client c's instance is: its interface (c + 1), its VLAN mirroring row (VID 100 + c), its community
// ("soak-cNN"), a scalar, mirror group 1, its row of mirrorIfMacEntry (if c + 1, MAC 02:50:00:00:00:c, mask 48).
enum Where { kPort, kVlan, kComm, kZero, kGroup, kChurn };

struct Item {
  const char* name;
  Where where;
  char form;  // 'i' an integer from lo to hi, 't' a text of at most hi characters, 'b' hi bytes
  uint32_t lo, hi;
  bool refusal;  // a value beyond hi is refused at validation
};

// What every client writes; nobody else writes these instances nor the attributes behind them.
const Item kEveryClient[] = {
    {"rfc2233:ifLinkUpDownTrapEnable", kPort, 'i', 1, 2, 1}, {"rfc2233:ifAlias", kPort, 't', 0, 64, 1},
    {"ethif:ethIfFlowStatsInterval", kPort, 'i', 30, 600, 1}, {"if:ifPortDownHoldTime", kPort, 'i', 0, kAny, 0},
    {"mirror:mirrorVlanInGroupId", kVlan, 'i', 0, 15, 1}, {"mirror:mirrorVlanOutGroupId", kVlan, 'i', 0, 15, 1},
    {"mirror:mirrorVlanInEnable", kVlan, 'i', 1, 2, 1}, {"mirror:mirrorVlanOutEnable", kVlan, 'i', 1, 2, 1},
    {"snmp:snmpComm2ViewViewName", kComm, 't', 0, 255, 1}, {"snmp:snmpComm2ViewPermission", kComm, 'i', 1, 2, 1},
    {"snmp:snmpComm2ViewFilter", kComm, 'i', 0, kAny, 0}, {"snmp:snmpComm2ViewType", kComm, 'i', 0, 1, 1},
    {"snmp:snmpComm2ViewIpv6Filter", kComm, 'i', 0, kAny, 0},
};
// And one of its own each for clients 0 to 23.
const Item kOneEach[] = {
    {"rfc1907:sysContact", kZero, 't', 0, 127, 1}, {"rfc1907:sysName", kZero, 't', 0, 128, 1},
    {"rfc1907:sysLocation", kZero, 't', 0, 127, 1}, {"rfc1907:snmpEnableAuthenTraps", kZero, 'i', 1, 2, 0},
    {"snmp:snmpLoginFailCount", kZero, 'i', 0, 30, 1}, {"snmp:snmpReauthInterval", kZero, 'i', 0, 1440, 1},
    {"snmp:snmpMaxPacketSize", kZero, 'i', 100, 4000, 1}, {"snmp:snmpTrapEnable", kZero, 'i', 1, 2, 1},
    {"snmp:snmpSetFilter", kZero, 'i', 1, 2, 1}, {"snmp:snmpGetFilter", kZero, 'i', 1, 2, 1},
    {"snmp:snmpAuthFailReply", kZero, 'i', 1, 2, 1}, {"snmp:snmpReplySourceIp", kZero, 'i', 1, 2, 1},
    {"snmp:snmpTrapSourceIf", kZero, 'i', 0, kAny, 0}, {"clock:clockClockTimeZoneName", kZero, 't', 0, 128, 1},
    {"clock:clockClockSummerTime", kZero, 't', 0, 512, 1}, {"clock:clockClockTimeZoneOffset", kZero, 'i', 0, kAny, 0},
    {"mirror:mirrorGroupVlan", kGroup, 'i', 0, 4094, 1}, {"mirror:mirrorGroupTpId", kGroup, 'i', 0, 65535, 1},
    {"mirror:mirrorGroupDscp", kGroup, 'i', 0, kAny, 0}, {"mirror:mirrorGroupIpVlan", kGroup, 'i', 0, kAny, 0},
    {"mirror:mirrorGroupMirrorToPort", kGroup, 't', 0, 40, 0}, {"mirror:mirrorIfInGroupId", kGroup, 'b', 0, 2, 0},
    {"clock:clockClockTimeZone", kZero, 't', 0, 128, 1}, {"snmp:snmpRwCommunityEnable", kZero, 'i', 1, 2, 1},
};
// Set up by the client, then only read back or changed by its churn.
const Item kVlanStatus{"mirror:mirrorVlanStatus", kVlan, 'i', 1, 1, false};
const Item kCommStatus{"snmp:snmpComm2ViewRowStatus", kComm, 'i', 1, 1, false};
const Item kChurnStatus{"mirror:mirrorIfMacStatus", kChurn, 'i', 1, 4, false};
const Item kChurnGroup{"mirror:mirrorIfMacInGroupId", kChurn, 'i', 0, 15, false};

Index churnIndex(uint32_t c) { return {c + 1, 2, 80, 0, 0, 0, c, 48}; }
bool isChurnRow(const Index& i) { return i.size() == 8 && i[0] >= 1 && i[0] <= kClients && i == churnIndex(i[0] - 1); }

struct Owned {
  Item item;
  Index index;
  bool writable;           // false: only read back
  uint32_t rc;             // what a read answers: 0, or the store's own code for a row that is gone
  bool known;              // whether rc and value are known
  Bytes value;             // what the last write that returned 0 put there
  uint32_t refusalRc = 0;  // what a value beyond hi answers, once seen
};

// A module (its objects listed by name as the walk goes), an entry (its first object and those after it under the
// same entry OID), or the index columns and status of mirrorIfMacEntry, whose rows the clients create and destroy all
// along: a walk of its other columns stops at a row being created.
const std::pair<char, const char*> kTargets[] = {
    {'m', "rfc1907"}, {'m', "clock"}, {'m', "rfc2233"}, {'m', "if"}, {'m', "etherlike"},
    {'e', "rfc1213:ifIndex"}, {'e', "ethif:ethIfIndex"}, {'e', "ethif:ethIfStatsIndex"},
    {'e', "mirror:mirrorGenMaxGroup"}, {'e', "mirror:mirrorGroupIndex"}, {'e', "mirror:mirrorIfIndex"},
    {'e', "mirror:mirrorVlanVid"}, {'e', "mirror:mirrorVlanMacVid"}, {'e', "snmp:snmpComm2ViewCommName"},
    {'e', "snmp:snmpdProcessStatus"}, {'c', "mirrorIfMacEntry"},
};
const char* const kChurnColumns[] = {"mirror:mirrorIfMacIf", "mirror:mirrorIfMacAddr", "mirror:mirrorIfMacMask",
                                     "mirror:mirrorIfMacStatus"};

// What the walk of a target found when nobody wrote: its objects and their rows.
struct Baseline { std::vector<std::string> names; std::vector<std::vector<Index>> rows; };

// Where a walk departs from the quiet walk: its rows, in order, and no other but (in the churned entry) churn rows.
std::string departure(const std::vector<Index>& quiet, const std::vector<Index>& rows, bool churned) {
  size_t q = 0;
  for (const Index& row : rows) {
    if (q < quiet.size() && row == quiet[q]) q++;
    else if (!churned || !isChurnRow(row)) return "row " + text(row) + " is not in the quiet walk";
  }
  return q == quiet.size() ? "" : "row " + text(quiet[q]) + " of the quiet walk is missing";
}

// What the clients sent: requests (frames), each verb's calls (a chain step is one mdbGetNext), summary figures.
enum Count { kRequests, kGets, kUnknownGets, kGetNexts, kSets, kSetsOk, kReadOnlySets, kValidates, kInfos,
             kNameNexts, kModuleGets, kWalks, kWrites, kReadBacks, kCounts };

struct Load {
  std::string dir;
  double seconds;
  uint32_t seed;
  std::atomic<uint64_t> n[kCounts]{};
  std::atomic<uint64_t> codes[kCodes]{};   // answers by code of the family
  std::atomic<uint64_t> passed[kCodes]{};  // of those, a service's own, which the database does not count
  std::vector<Baseline> base = std::vector<Baseline>(std::size(kTargets));  // without names: not walked
  std::vector<std::pair<std::string, Index>> cells;  // the quiet walk's instances, but the churned entry's
  std::atomic<bool> stop{false};
  std::barrier<> sync{kClients + 1};
};

struct Client {
  Load& l;
  const uint32_t id;
  std::mt19937 rng{l.seed * 1000003u + id};
  MdbClient* conn = nullptr;
  bool dead = false;
  std::vector<Owned> owned;
  uint32_t serial = 0;

  ~Client() { mdbClientClose(conn); }
  uint32_t random(size_t n) { return static_cast<uint32_t>(rng() % n); }
  bool expect(uint32_t rc, uint32_t want, const std::string& what) {
    if (rc != want)
      fail(format("client %u: %s: %s, expected %s", id, what.c_str(), rcText(rc).c_str(), rcText(want).c_str()));
    return rc == want;
  }
  // A request of a verb is sent; its answer is counted by code (`passed`: the code a service gives itself).
  void count(Count verb) { l.n[kRequests]++, l.n[verb]++; }
  uint32_t note(uint32_t rc, uint32_t passed = 0) {
    const uint32_t code = rc - MDB_MODULE_ERROR_BASE;
    if (code > 0 && code < kCodes) l.codes[code]++, l.passed[code] += rc == passed;
    dead = dead || rc == MDB_CLIENT_ERR_IO;
    return rc;
  }
  uint32_t get(const std::string& name, const Index& i, Bytes* v, uint32_t passed = 0) {
    uint32_t length = ICM_MAX_VALUE;
    v->resize(length), count(kGets);
    const uint32_t rc = note(mdbClientGetApi(conn, name.c_str(), i.data(), i.size(), v->data(), &length, kTag), passed);
    v->resize(rc == 0 ? length : 0);
    return rc;
  }
  uint32_t set(const std::string& name, const Index& i, const Bytes& v) {
    count(kSets);
    const uint32_t rc = note(mdbClientSetApi(conn, name.c_str(), i.data(), i.size(), bytes(v), v.size(), kTag, 1));
    l.n[kSetsOk] += rc == 0;  // options 1: validation, then commit
    return rc;
  }
  // The objects of a target, found by name the way a client finds them.
  bool objects(char kind, const std::string& target, std::vector<std::string>* names) {
    if (kind == 'c') return names->assign(std::begin(kChurnColumns), std::end(kChurnColumns)), true;
    MdbObjInfo first{}, o{};
    MdbClientModule module{};
    auto info = [&](const std::string& name, MdbObjInfo* out) {
      count(kInfos);
      return expect(note(mdbClientObjInfoGet(conn, name.c_str(), MDB_INFO_OID | MDB_INFO_OIDLEN, out)), 0,
                    "information of " + name);
    };
    if (kind == 'm') count(kModuleGets);
    if (kind == 'm' && !expect(note(mdbClientModuleGet(conn, target.c_str(), &module)), 0, "module " + target))
      return false;
    if (kind == 'e' && !info(target, &first)) return false;
    for (std::string name = kind == 'm' ? module.firstObject : target;;) {
      names->push_back(name);
      char next[ICM_MAX_NAME + 1] = "";
      count(kNameNexts);
      const uint32_t rc = note(mdbClientObjectNameNextGet(conn, name.c_str(), next, sizeof next));
      if (rc == MDB_ERR_NO_SUCH_OBJECT) return true;  // the module's last object
      if (!expect(rc, 0, "object after " + name) || (kind == 'e' && !info(next, &o))) return false;
      if (kind == 'e' && (o.oidLen != first.oidLen || memcmp(o.oid, first.oid, 4 * (o.oidLen - 1)) != 0)) return true;
      name = next;
    }
  }
  // Every instance of an object, `steps` GetNext a chain (0: one a request): true if it climbed and ended as walks end.
  bool walkObject(const std::string& name, uint32_t steps, std::vector<Index>* rows) {
    uint32_t index[ICM_MAX_INDEX], count = 0, rc, done = 1;
    std::string bad;
    auto take = [&](uint32_t r, const uint32_t* sub, uint32_t n) {
      l.n[kGetNexts]++;
      if (note(r) != 0) return;
      Index at(sub, sub + n);
      if (bad.empty() && !rows->empty() && !(rows->back() < at))
        bad = "index " + text(at) + " after " + text(rows->back());
      rows->push_back(std::move(at));
    };
    using Take = decltype(take);
    auto step = [](void* arg, uint32_t r, const uint32_t* sub, uint32_t n, const uint8_t*, uint32_t) {
      return (*static_cast<Take*>(arg))(r, sub, n), 0;
    };
    while (bad.empty()) {
      uint8_t value[kStepValue];
      uint32_t length = sizeof value;
      l.n[kRequests]++;
      if (steps == 0) {
        rc = mdbClientGetNext(conn, name.c_str(), index, ICM_MAX_INDEX, &count, value, &length, kTag);
        take(rc, index, count);
      } else {
        rc = mdbClientGetNextChain(conn, name.c_str(), index, ICM_MAX_INDEX, &count, steps, kStepValue, kTag, step,
                                   &take, &done);
        dead = dead || rc == MDB_CLIENT_ERR_IO;  // the steps' answers are counted by take
      }
      if (rc == MDB_ERR_NO_NEXT_INSTANCE && bad.empty()) return true;
      if (bad.empty())
        bad = rc != 0 ? rcText(rc) : done == 0 ? "a chain brought nothing" : rows->size() > kMaxRows ? "no end" : "";
    }
    return fail(format("client %u: walk of %s, %zu rows: %s", id, name.c_str(), rows->size(), bad.c_str())), false;
  }
  // Walks target t with a random kind of step: the quiet walk records what it finds, the others must find that.
  bool walk(size_t t, Baseline* quiet) {
    static const uint32_t kSteps[] = {0, 4, 16, 64, 256};
    const auto [kind, target] = kTargets[t];
    std::vector<std::string> names;
    l.n[kWalks]++;
    if (!objects(kind, target, &names)) return false;
    if (quiet == nullptr && names != l.base[t].names)
      return fail(format("client %u: %s lists %zu objects, %zu in the quiet walk", id, target, names.size(),
                         l.base[t].names.size())), false;
    const uint32_t steps = quiet != nullptr ? 64 : kSteps[random(std::size(kSteps))];
    for (size_t i = 0; i < names.size(); i++) {
      std::vector<Index> rows;
      if (!walkObject(names[i], steps, &rows)) return false;
      if (quiet != nullptr) quiet->rows.push_back(std::move(rows));
      else if (std::string d = departure(l.base[t].rows[i], rows, kind == 'c'); !d.empty())
        return fail(format("client %u: walk of %s by %u: %s", id, names[i].c_str(), steps, d.c_str())), false;
    }
    if (quiet != nullptr) quiet->names = names;
    return true;
  }
  Bytes validValue(const Item& it) {
    if (it.form == 'i') return num(static_cast<uint32_t>(it.lo + rng() % (uint64_t(it.hi) - it.lo + 1)));
    Bytes b = num(rng());
    if (it.form == 'b') return b.resize(it.hi), b;
    // Printable, from who wrote it and when; now and then shorter, down to empty.
    std::string s = format("c%02u-%u-", id, serial++);
    const uint32_t length = random(std::min<uint32_t>(it.hi, 96) + 1);
    while (s.size() < length) s += static_cast<char>('a' + random(26));
    s.resize(std::min<size_t>(random(8) == 0 ? length : s.size(), it.hi));
    return Bytes(s.begin(), s.end());
  }
  void readBack(const Owned& o, const char* when) {
    if (!o.known || dead) return;
    Bytes value;
    l.n[kReadBacks]++;
    const uint32_t rc = get(o.item.name, o.index, &value, o.rc);
    const std::string what = format("%s read-back of %s.%s", when, o.item.name, text(o.index).c_str());
    if (expect(rc, o.rc, what) && rc == 0 && value != o.value)
      fail(format("client %u: %s: %s, last written %s", id, what.c_str(), show(o.item.form, value).c_str(),
                  show(o.item.form, o.value).c_str()));
  }
  void write(Owned& o) {
    Bytes value = validValue(o.item);
    l.n[kWrites]++;
    if (expect(set(o.item.name, o.index, value), 0, format("write of %s.%s", o.item.name, text(o.index).c_str())))
      o.value = std::move(value), o.known = true;
  }
  // A value beyond hi: refused at validation, always with the same code (range or length); the value stays.
  void refuse(Owned& o) {
    const Item& it = o.item;
    l.n[kWrites]++;
    const uint32_t rc = set(it.name, o.index, it.form == 'i' ? num(it.hi + 1) : Bytes(it.hi + 1, 'x'));
    if (o.refusalRc == 0 && (rc == MDB_ERR_INVALID_RANGE || rc == MDB_ERR_INVALID_LENGTH)) o.refusalRc = rc;
    expect(rc, o.refusalRc != 0 ? o.refusalRc : MDB_ERR_INVALID_RANGE,
           format("write of %u%s to %s.%s", it.hi + 1, it.form == 'i' ? "" : " bytes", it.name, text(o.index).c_str()));
    readBack(o, "after a refused write,");
  }
  // A step in the life of the client's row of mirrorIfMacEntry (an EntryStatus): created (underCreation), its group
  // written, made valid, then its group written again or the row destroyed.
  void churn() {
    Owned &status = owned[owned.size() - 2], &group = owned.back();  // set up last
    const uint32_t now = status.rc != 0 ? 0 : status.value[0];  // 0: no row
    auto to = [&](Owned& o, uint32_t v, const char* what) {
      l.n[kWrites]++;
      return expect(set(o.item.name, o.index, num(v)), 0, format("%s of churn row %s", what, text(o.index).c_str()));
    };
    if (now == 0) {
      if (to(status, 2, "creation")) status.rc = group.rc = 0, status.value = num(3), group.known = false;
    } else if (now == 1 && random(2) == 0) {
      if (to(status, 4, "removal")) status.rc = group.rc = MDB_ERR_NO_SUCH_INSTANCE, group.known = true;
    } else if (now == 3 && group.known) {
      if (to(status, 1, "validation")) status.value = num(1);
    } else if (const uint32_t g = random(16); to(group, g, "group write")) {
      group.value = num(g), group.known = true;
    }
    if (random(4) == 0) readBack(status, "churn"), readBack(group, "churn");
  }
  void setUp() {
    Index community{8};  // "soak-cNN", its length first
    for (char ch : format("soak-c%02u", id)) community.push_back(static_cast<uint8_t>(ch));
    const Index where[] = {{id + 1}, {100 + id}, community, {0}, {1}, churnIndex(id)};
    auto own = [&](const Item& it, bool writable, uint32_t rc = 0) {  // read-only ones read 1 or rc
      owned.push_back(Owned{it, where[it.where], writable, rc, !writable, num(1)});
    };
    for (const Item& it : kEveryClient) own(it, true);
    if (id < std::size(kOneEach)) own(kOneEach[id], true);
    // Its VLAN mirroring row and community exist, all columns written, before the quiet walk: no walk meets them bare.
    expect(set(kVlanStatus.name, where[kVlan], num(2)), 0, "creation of the VLAN mirroring row");  // createRequest
    expect(set(kCommStatus.name, where[kComm], num(4)), 0, "creation of the community");  // createAndGo
    for (Owned& o : owned) write(o);
    expect(set(kVlanStatus.name, where[kVlan], num(1)), 0, "validation of the VLAN mirroring row");
    own(kVlanStatus, false), own(kCommStatus, false);
    for (Owned& o : owned)
      if (o.item.refusal) refuse(o);
    // The churn row starts absent (removing a row that is not there is fine).
    expect(set(kChurnStatus.name, where[kChurn], num(4)), 0, "removal of the churn row");
    own(kChurnStatus, false, MDB_ERR_NO_SUCH_INSTANCE), own(kChurnGroup, false, MDB_ERR_NO_SUCH_INSTANCE);
  }
  void step() {
    const uint32_t r = random(100);
    Owned& o = owned[random(owned.size())];
    Bytes value;
    if (const size_t t = random(std::size(kTargets)); r < 15) {
      if (!l.base[t].names.empty()) walk(t, nullptr);
    } else if (r < 45 && !l.cells.empty()) {
      const auto& [name, index] = l.cells[random(l.cells.size())];
      expect(get(name, index, &value), 0, format("read of %s.%s", name.c_str(), text(index).c_str()));
    } else if (r == 45) {
      l.n[kUnknownGets]++;
      expect(get("soak:noSuchObject", {0}, &value), MDB_ERR_NO_SUCH_OBJECT, "read of an object that does not exist");
    } else if (r == 46) {
      l.n[kReadOnlySets]++;
      expect(set("mirror:mirrorGenMaxGroup", {0}, num(4)), MDB_ERR_NOT_WRITABLE, "write of mirror:mirrorGenMaxGroup");
    } else if (r == 47 && o.writable) {  // a validation alone changes nothing
      value = validValue(o.item), count(kValidates);
      const uint32_t* i = o.index.data();
      if (expect(note(mdbClientValidate(conn, o.item.name, i, o.index.size(), bytes(value), value.size(), 0)), 0,
                 format("validation of %s", o.item.name)))
        readBack(o, "after a validation,");
    } else if (r == 48 && o.item.refusal) {
      refuse(o);
    } else if (r >= 49 && r < 88 && o.writable) {
      write(o);
      if (random(4) == 0) readBack(o, "immediate");
    } else if (r >= 88) {
      r < 93 ? churn() : readBack(o, "load");
    }
  }
  void run() {
    const std::string path = socketPath(l.dir, id);
    dead = (conn = mdbClientOpen(path.c_str())) == nullptr;
    if (!dead) mdbClientSetTimeout(conn, 60000), setUp();  // a request unanswered for a minute is a hung server
    l.sync.arrive_and_wait();  // every client's rows exist
    for (size_t t = 0; id == 0 && !dead && t < std::size(kTargets); t++) {
      Baseline& b = l.base[t];
      if (!walk(t, &b)) b = {}, fail(format("the quiet walk of %s failed: it is not walked", kTargets[t].second));
      for (size_t i = 0; kTargets[t].first != 'c' && i < b.names.size(); i++)
        for (const Index& row : b.rows[i]) l.cells.emplace_back(b.names[i], row);
    }
    l.sync.arrive_and_wait();  // the load starts
    while (!dead && !l.stop.load(std::memory_order_relaxed)) step();
    if (dead) return fail(format("client %u: no connection to %s; its load ended", id, path.c_str()));
    for (const Owned& o : owned) readBack(o, "final");
  }
};

struct Daemon {
  pid_t pid = -1;
  int status = 0;
  bool ended = false;
  long rssWarm = -1, rssEnd = -1;
  std::string how() const {
    return WIFEXITED(status) ? format("exit status %d", WEXITSTATUS(status)) : format("signal %d", WTERMSIG(status));
  }
  bool alive() {
    if (pid <= 0 || ended || waitpid(pid, &status, WNOHANG) != pid) return pid > 0 && !ended;
    return ended = true, fail("the daemon ended by itself: " + how()), false;
  }
  long rssKiB() const {
    std::ifstream in(format("/proc/%d/status", pid));
    for (std::string line; std::getline(in, line);)
      if (line.compare(0, 6, "VmRSS:") == 0) return strtol(line.c_str() + 6, nullptr, 10);
    return -1;
  }
};

// Runs the 25 clients on the sockets in load.dir for load.seconds; `daemon` (null for the core in this process) is
// watched, its VmRSS taken after a fifth of the time and at the end. The seconds the load lasted.
double runLoad(Load& load, Daemon* daemon) {
  std::deque<Client> clients;
  std::vector<std::thread> threads;
  for (uint32_t c = 0; c < kClients; c++) threads.emplace_back(&Client::run, &clients.emplace_back(load, c));
  load.sync.arrive_and_wait();  // set-up done
  load.sync.arrive_and_wait();  // quiet walk done
  if (load.cells.empty()) fail("the quiet walk found nothing to read");
  const auto start = Clock::now();
  double elapsed = 0;
  while (elapsed < load.seconds && (daemon == nullptr || daemon->alive())) {
    std::this_thread::sleep_for(100ms);
    elapsed = std::chrono::duration<double>(Clock::now() - start).count();
    if (daemon != nullptr && daemon->rssWarm < 0 && elapsed >= load.seconds / 5) daemon->rssWarm = daemon->rssKiB();
  }
  if (daemon != nullptr && daemon->alive()) daemon->rssEnd = daemon->rssKiB();
  load.stop = true;
  for (std::thread& t : threads) t.join();
  return elapsed;
}

// The daemon under the load: started in a new run directory, stopped by its pid with SIGTERM, its log searched.
void daemonRun(const std::string& binary, Load& load, Daemon& d) {
  char dir[] = "/tmp/mdbsoak-XXXXXX";
  if (mkdtemp(dir) == nullptr) return fail(format("mkdtemp: %s", strerror(errno)));
  load.dir = dir;
  const std::string log = load.dir + "/daemon.log", ram = "mdb.ramdir=" + load.dir + "/ram";
  if ((d.pid = fork()) == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // never outlive the soak
    setenv("MDB_RUNDIR", dir, 1);
    unsetenv("MDB_OPTIONS"), unsetenv("MDB_LOG_FILE");
    const int fd = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    dup2(fd, STDOUT_FILENO), dup2(fd, STDERR_FILENO);
    execl(binary.c_str(), binary.c_str(), "-o", ram.c_str(), static_cast<char*>(nullptr));
    fprintf(stderr, "mdbsoak: cannot run %s: %s\n", binary.c_str(), strerror(errno));
    _exit(127);
  }
  if (d.pid > 0 && socketsAccept(dir, [&d] { return d.alive(); })) {
    load.seconds = runLoad(load, &d);
    if (d.rssWarm < 0 || d.rssEnd < 0) fail("the daemon's VmRSS was not measured");
    else if (d.rssEnd - d.rssWarm > kRssSlackKiB)
      fail(format("the daemon's VmRSS grew after warm-up: %ld KiB, then %ld KiB", d.rssWarm, d.rssEnd));
  } else {
    fail("the daemon " + binary + " did not open its 25 sockets within 60 s");
  }
  if (d.pid > 0 && !d.ended) {
    kill(d.pid, SIGTERM);
    for (auto end = Clock::now() + 20s; waitpid(d.pid, &d.status, WNOHANG) != d.pid; std::this_thread::sleep_for(20ms))
      if (Clock::now() > end) fail("the daemon did not end within 20 s of SIGTERM"), kill(d.pid, SIGKILL), end += 1h;
    if (!WIFEXITED(d.status) || WEXITSTATUS(d.status) != 0) fail("the daemon's end after SIGTERM: " + d.how());
  }
  // Sanitizer reports and fatal signals: each a failure, and the log then kept.
  const uint64_t failures = gFailCount;
  std::ifstream in(log);
  for (std::string line; std::getline(in, line);)
    if (line.find("Sanitizer:") != std::string::npos || line.find("runtime error:") != std::string::npos ||
        line.find("fatal signal") != std::string::npos)
      fail("daemon log: " + line);
  if (gFailCount == failures) std::filesystem::remove_all(load.dir);
  else printf("soak: the daemon's log is kept in %s\n", log.c_str());
}

// After the load the core's counters must show each verb's calls as sent, the dispatches as the verbs make them and
// as the sum of their outcomes, and each error code the database gave (not one a service gave itself) once under its
// name. Returns the relations checked.
int checkCounters(const uint32_t* before, const uint32_t* after, const Load& l) {
  auto d = [&](uint32_t id) -> uint64_t { return static_cast<uint32_t>(after[id] - before[id]); };
  auto n = [&](Count c) -> uint64_t { return l.n[c].load(); };
#define D(name) d(MDB_STAT_##name)
  const uint64_t outcomes = D(mdbDispatchGet) + D(mdbDispatchGetNext) + D(mdbDispatchValidate) +
                            D(mdbDispatchSet) + D(mdbDispatchCommit) + D(mdbDispatchSetNvm) + D(mdbForceSet) +
                            D(mdbDispatchUnknownRequest) + D(mdbDispatchUnknown) + D(mdbDispatchAltObject) +
                            D(mdbDispatchBufNull) + D(mdbDispatchRangeErr) + D(mdbDispatchNullHandler);
  struct Relation { std::string what; uint64_t counted, expected; };
  std::vector<Relation> relations = {
      {"mdbGetCalled = reads", D(mdbGetCalled), n(kGets)},
      {"mdbGetNextCalled = GetNexts and chain steps", D(mdbGetNextCalled), n(kGetNexts)},
      {"mdbSetCalled = writes", D(mdbSetCalled), n(kSets)},
      {"mdbValidateCalled = validations", D(mdbValidateCalled), n(kValidates)},
      {"mdbGetInfoCalled = information requests", D(mdbGetInfoCalled), n(kInfos)},
      {"mdbObjectNameNextGetCalled = next-name requests", D(mdbObjectNameNextGetCalled), n(kNameNexts)},
      {"mdbDispatchCalled = the verbs' dispatches", D(mdbDispatchCalled),
       n(kGets) + n(kGetNexts) + n(kValidates) + n(kSets) + n(kSetsOk) + D(mdbDispatchAltObject)},
      {"mdbDispatchCalled = the sum of the outcomes", D(mdbDispatchCalled), outcomes},
      {"mdbDispatchGet = reads of known objects", D(mdbDispatchGet), n(kGets) - n(kUnknownGets)},
      {"mdbDispatchUnknown = reads of unknown objects", D(mdbDispatchUnknown), n(kUnknownGets)},
      {"mdbDispatchGetNext = GetNexts and chain steps", D(mdbDispatchGetNext), n(kGetNexts)},
      {"mdbDispatchValidate = validations and writes", D(mdbDispatchValidate), n(kValidates) + n(kSets)},
      {"mdbDispatchSet = writes past validation", D(mdbDispatchSet), n(kSetsOk)},
      {"mdbDispatchReadOnly = writes of a read-only object", D(mdbDispatchReadOnly), n(kReadOnlySets)},
  };
#undef D
  for (uint32_t code = 1; code < kCodes; code++) {
    std::string name = mdbErrorName(MDB_MODULE_ERROR_BASE + code);  // mdbErrorInvalidRange counts in mdbInvalidRange
    if (name == "unknown") continue;
    if (name.compare(0, 8, "mdbError") == 0) name = "mdb" + name.substr(8);
    uint32_t id = 0;
    while (id < MDB_STAT_COUNT && name != mdbStatName(id) && name + "Error" != mdbStatName(id)) id++;
    if (id == MDB_STAT_COUNT) fail("counters: no counter for " + name);
    else relations.push_back({format("%s = its answers", mdbStatName(id)), d(id), l.codes[code] - l.passed[code]});
  }
  for (const Relation& r : relations)
    if (r.counted != r.expected)
      fail(format("counters: %s: %lu, expected %lu", r.what.c_str(), r.counted, r.expected));
  return static_cast<int>(relations.size());
}

}  // namespace

int main(int argc, char** argv) {
  double seconds = 60, coreSeconds = -1;
  std::string binary = MDB_DAEMON_PATH;
  bool usage = argc % 2 == 0;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string a = argv[i];
    if (a == "--seconds") seconds = atof(argv[i + 1]);
    else if (a == "--core-seconds") coreSeconds = atof(argv[i + 1]);
    else if (a == "--daemon") binary = argv[i + 1];
    else usage = true;
  }
  if (usage || seconds < 1)
    return fprintf(stderr, "usage: mdbsoak [--seconds N] [--daemon PATH] [--core-seconds N]\n"), 2;
  if (coreSeconds < 0) coreSeconds = std::max(3.0, seconds / 6);
  signal(SIGPIPE, SIG_IGN);
  setvbuf(stdout, nullptr, _IOLBF, 0);
  printf("soak: %s, %u clients, %.0f s; then the core in this process, %.0f s\n", binary.c_str(), kClients, seconds,
         coreSeconds);
  Load load{.seconds = seconds, .seed = 1};
  Daemon daemon;
  daemonRun(binary, load, daemon);
  // The core in this process, where its counters are.
  Load core{.seconds = coreSeconds, .seed = 2};
  int relations = 0;
  char dir[] = "/tmp/mdbsoak-core-XXXXXX";
  if (coreSeconds > 0 && mkdtemp(dir) != nullptr) {
    setenv("MDB_RUNDIR", (core.dir = dir).c_str(), 1);
    silOptSet("mdb.ramdir", (core.dir + "/ram").c_str());
    uint32_t before[MDB_STAT_COUNT], after[MDB_STAT_COUNT];
    if (mdbOptInit() != 0 || !socketsAccept(dir, [] { return true; })) {
      fail("the core did not start in this process");
    } else {
      for (uint32_t i = 0; i < MDB_STAT_COUNT; i++) before[i] = mdbStatGet(MdbStatId(i));
      core.seconds = runLoad(core, nullptr);
      for (uint32_t i = 0; i < MDB_STAT_COUNT; i++) after[i] = mdbStatGet(MdbStatId(i));
      relations = checkCounters(before, after, core);
    }
    std::filesystem::remove_all(dir);  // the core's tasks keep their sockets open until the end
  }
  if (gSanitizerReports != 0) fail(format("%d sanitizer reports in this process", gSanitizerReports.load()));

  printf("soak: %.0f s, %lu requests, %lu walks, %lu writes, %lu read-backs, VmRSS %ld KiB after warm-up and %ld KiB "
         "at the end; core %.0f s, %lu requests, %d counter relations; %lu failures\n",
         load.seconds, load.n[kRequests].load(), load.n[kWalks].load(), load.n[kWrites].load(),
         load.n[kReadBacks].load(), daemon.rssWarm, daemon.rssEnd, core.seconds, core.n[kRequests].load(), relations,
         gFailCount);
  for (const std::string& f : gFailures) printf("  FAIL %s\n", f.c_str());
  if (gFailCount > gFailures.size()) printf("  ... and %lu more\n", gFailCount - gFailures.size());
  printf("soak: %s\n", gFailCount == 0 ? "PASS" : "FAIL");
  fflush(stdout), fflush(stderr);
  _exit(gFailCount == 0 ? 0 : 1);  // the core's tasks still wait on their sockets: no destructors under them
}
