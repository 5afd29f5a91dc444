// mdb-snmpd: the SNMP agent of the switch as an AgentX subagent of a
// Net-SNMP master. It learns from mdb (command 11) which objects exist and
// which MIBs the device implements, registers the OID subtrees with the
// master, fills the master's sysORTable, and answers GET, GETNEXT, GETBULK and
// SET by the verbs of mdb over its command sockets. See docs/snmp.md.
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "mdb/mdb_client.h"
#include "mdb/mdb_errors.h"
#include "mdb/mdb_types.h"

#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#include <net-snmp/agent/net-snmp-agent-includes.h>
#include <net-snmp/agent/agent_sysORTable.h>

namespace {

// ---------------------------------------------------------------- options
struct Options {
  std::string agentx;                  // the master's AgentX address; empty: Net-SNMP's default
  uint32_t socket = 24;                // mdb command socket
  uint32_t chain = 16;                 // GetNext steps fetched per round trip (1: no read-ahead)
  int priority = 127;                  // AgentX registration priority
  std::vector<std::vector<oid>> skip;  // subtrees left to the master (default: its sysORTable)
  bool verbose = false;
  bool noSysOR = false;
};
Options gOpt;
volatile sig_atomic_t gRunning = 1;

void usage() {
  fprintf(stderr,
          "usage: mdb-snmpd [--agentx ADDRESS] [--socket N] [--chain N] [--priority N]\n"
          "                 [--skip OID]... [--no-skip] [--no-sysortable] [-v]\n"
          "  --agentx ADDRESS  the master's AgentX socket, such as tcp:localhost:705 or /var/agentx/master\n"
          "  --socket N        mdb command socket 0-24 in $MDB_RUNDIR (default 24)\n"
          "  --chain N         GetNext results read ahead per round trip to mdb (default 16, 1-256)\n"
          "  --priority N      AgentX registration priority (default 127; lower wins)\n"
          "  --skip OID        do not serve this subtree (default: 1.3.6.1.2.1.1.9, the master's sysORTable)\n"
          "  --no-skip         serve every registered object\n"
          "  --no-sysortable   do not add the MIB list to the master's sysORTable\n");
  exit(2);
}

bool parseOid(const char* text, std::vector<oid>* out) {
  out->clear();
  if (*text == '.') text++;
  while (*text) {
    char* end;
    unsigned long v = strtoul(text, &end, 10);
    if (end == text) return false;
    out->push_back(static_cast<oid>(v));
    if (*end == '.') end++;
    else if (*end != '\0') return false;
    text = end;
  }
  return !out->empty();
}

std::string oidText(const oid* o, size_t n) {
  std::string s;
  for (size_t i = 0; i < n; i++) s += (i ? "." : "") + std::to_string(o[i]);
  return s;
}

// ---------------------------------------------------------------- mdb connection
MdbClient* gClient = nullptr;

MdbClient* client() {
  if (gClient == nullptr) {
    gClient = mdbClientOpenSocket(gOpt.socket);
    if (gClient != nullptr) mdbClientSetTimeout(gClient, 5000);
  }
  return gClient;
}

// After a failed connection the library closes it; the next call reconnects.
uint32_t checked(uint32_t rc) {
  if (rc == MDB_CLIENT_ERR_IO && gClient != nullptr) {
    mdbClientClose(gClient);
    gClient = nullptr;
  }
  return rc;
}

// ---------------------------------------------------------------- the OID index
struct Object {
  std::vector<oid> id;  // the column's (or scalar's) full OID
  std::string name;
  uint32_t type;
  uint32_t access;
  uint32_t indexCountMax;
};
std::vector<Object> gObjects;                 // sorted by OID
std::map<std::string, size_t> gByName;        // name -> position in gObjects
std::deque<std::vector<oid>> gSysORIds;       // kept for the life of the process

bool isPrefix(const std::vector<oid>& prefix, const oid* o, size_t n) {
  return prefix.size() <= n && std::equal(prefix.begin(), prefix.end(), o);
}

bool skipped(const std::vector<oid>& id) {
  for (auto& s : gOpt.skip)
    if (isPrefix(s, id.data(), id.size())) return true;
  return false;
}

int collectObject(void* arg, const MdbClientSnmpRow* row) {
  Object o;
  o.id.assign(row->oid, row->oid + std::min<uint32_t>(row->oidLength, 128));
  o.name = row->name;
  o.type = row->type;
  o.access = row->access;
  o.indexCountMax = row->indexCountMax;
  if (!skipped(o.id)) gObjects.push_back(std::move(o));
  return 0;
}

int collectSysOR(void* arg, const MdbClientSnmpRow* row) {
  static_cast<std::vector<std::pair<std::string, std::vector<oid>>>*>(arg)->push_back(
      {row->name, std::vector<oid>(row->oid, row->oid + std::min<uint32_t>(row->oidLength, 128))});
  return 0;
}

// ---------------------------------------------------------------- values
uint32_t word(const uint8_t* v, uint32_t len, uint32_t at) {
  uint32_t w = 0;
  if (at < len) memcpy(&w, v + at, std::min<uint32_t>(4, len - at));
  return w;
}

// mdb's bytes as the SNMP value of the object's type. 0 or an SNMP error.
int setVarFromMdb(netsnmp_variable_list* var, uint32_t type, const uint8_t* v, uint32_t len) {
  switch (type) {
    case MDB_TYPE_INTEGER:
    case MDB_TYPE_ROWSTATUS: {
      long x = static_cast<int32_t>(word(v, len, 0));
      return snmp_set_var_typed_value(var, ASN_INTEGER, &x, sizeof x);
    }
    case MDB_TYPE_COUNTER:
    case MDB_TYPE_GAUGE:
    case MDB_TYPE_TIMETICKS: {
      u_long x = word(v, len, 0);
      u_char t = type == MDB_TYPE_COUNTER ? ASN_COUNTER : type == MDB_TYPE_GAUGE ? ASN_GAUGE : ASN_TIMETICKS;
      return snmp_set_var_typed_value(var, t, &x, sizeof x);
    }
    case MDB_TYPE_COUNTER64: {
      struct counter64 c;
      c.high = word(v, len, 0);
      c.low = word(v, len, 4);
      return snmp_set_var_typed_value(var, ASN_COUNTER64, &c, sizeof c);
    }
    case MDB_TYPE_IPADDRESS: {
      uint8_t a[4] = {0, 0, 0, 0};
      memcpy(a, v, std::min<uint32_t>(4, len));
      return snmp_set_var_typed_value(var, ASN_IPADDRESS, a, 4);
    }
    case MDB_TYPE_OID: {
      std::vector<oid> arcs;
      for (uint32_t at = 0; at + 4 <= len && arcs.size() < MAX_OID_LEN; at += 4) arcs.push_back(word(v, len, at));
      if (arcs.size() < 2) arcs = {0, 0};  // zeroDotZero for an empty value
      return snmp_set_var_typed_value(var, ASN_OBJECT_ID, arcs.data(), arcs.size() * sizeof(oid));
    }
    case MDB_TYPE_NULL:
      return snmp_set_var_typed_value(var, ASN_NULL, nullptr, 0);
    default:  // octet strings, MAC addresses, bridge ids, port lists, opaque
      return snmp_set_var_typed_value(var, ASN_OCTET_STR, v, len);
  }
}

// The SNMP value as mdb's bytes for the object's type; 0 or an SNMP error.
int mdbFromVar(const netsnmp_variable_list* var, uint32_t type, std::vector<uint8_t>* out) {
  auto putWord = [out](uint32_t w) {
    uint8_t b[4];
    memcpy(b, &w, 4);
    out->insert(out->end(), b, b + 4);
  };
  switch (type) {
    case MDB_TYPE_INTEGER:
    case MDB_TYPE_ROWSTATUS:
      if (var->type != ASN_INTEGER) return SNMP_ERR_WRONGTYPE;
      putWord(static_cast<uint32_t>(*var->val.integer));
      return 0;
    case MDB_TYPE_COUNTER:
    case MDB_TYPE_GAUGE:
    case MDB_TYPE_TIMETICKS: {
      u_char want = type == MDB_TYPE_COUNTER ? ASN_COUNTER : type == MDB_TYPE_GAUGE ? ASN_GAUGE : ASN_TIMETICKS;
      if (var->type != want) return SNMP_ERR_WRONGTYPE;
      putWord(static_cast<uint32_t>(*var->val.integer));
      return 0;
    }
    case MDB_TYPE_COUNTER64:
      if (var->type != ASN_COUNTER64) return SNMP_ERR_WRONGTYPE;
      putWord(static_cast<uint32_t>(var->val.counter64->high));
      putWord(static_cast<uint32_t>(var->val.counter64->low));
      return 0;
    case MDB_TYPE_IPADDRESS:
      if (var->type != ASN_IPADDRESS) return SNMP_ERR_WRONGTYPE;
      if (var->val_len != 4) return SNMP_ERR_WRONGLENGTH;
      out->assign(var->val.string, var->val.string + 4);
      return 0;
    case MDB_TYPE_OID:
      if (var->type != ASN_OBJECT_ID) return SNMP_ERR_WRONGTYPE;
      for (size_t i = 0; i < var->val_len / sizeof(oid); i++) putWord(static_cast<uint32_t>(var->val.objid[i]));
      return 0;
    case MDB_TYPE_NULL:
      return SNMP_ERR_WRONGTYPE;
    default:
      if (var->type != ASN_OCTET_STR && !(type == MDB_TYPE_OPAQUE && var->type == ASN_OPAQUE))
        return SNMP_ERR_WRONGTYPE;
      if (type == MDB_TYPE_MACADDRESS && var->val_len != 6) return SNMP_ERR_WRONGLENGTH;
      if (type == MDB_TYPE_BRIDGEID && var->val_len != 8) return SNMP_ERR_WRONGLENGTH;
      out->assign(var->val.string, var->val.string + var->val_len);
      return 0;
  }
}

// ---------------------------------------------------------------- error map
// mdb's result of a write as an SNMP error status (docs/snmp.md).
int setError(uint32_t rc, bool action) {
  switch (rc) {
    case MDB_OK: return SNMP_ERR_NOERROR;
    case MDB_ERR_NO_SUCH_INSTANCE:
    case MDB_ERR_NO_NEXT_INSTANCE:
    case MDB_ERR_INDEX_RANGE:
    case MDB_ERR_NO_CREATION: return SNMP_ERR_NOCREATION;
    case MDB_ERR_NO_SUCH_OBJECT:
    case MDB_ERR_OBJECT_HIDDEN:
    case MDB_ERR_NOT_WRITABLE: return SNMP_ERR_NOTWRITABLE;
    case MDB_ERR_NO_ACCESS: return SNMP_ERR_NOACCESS;
    case MDB_ERR_INVALID_RANGE:
    case MDB_ERR_WRONG_VALUE: return SNMP_ERR_WRONGVALUE;
    case MDB_ERR_INVALID_LENGTH:
    case MDB_ERR_WRONG_LENGTH:
    case MDB_ERR_TOO_BIG: return SNMP_ERR_WRONGLENGTH;
    case MDB_ERR_WRONG_TYPE: return SNMP_ERR_WRONGTYPE;
    case MDB_ERR_WRONG_ENCODING: return SNMP_ERR_WRONGENCODING;
    case MDB_ERR_INCONSIST_VALUE: return SNMP_ERR_INCONSISTENTVALUE;
    case MDB_ERR_INCONSIST_NAME: return SNMP_ERR_INCONSISTENTNAME;
    case MDB_ERR_RESOURCE_UNAVAIL: return SNMP_ERR_RESOURCEUNAVAILABLE;
    case MDB_ERR_COMMIT_FAILED: return SNMP_ERR_COMMITFAILED;
    case MDB_ERR_UNDO_FAILED: return SNMP_ERR_UNDOFAILED;
    case MDB_ERR_AUTHORIZATION: return SNMP_ERR_AUTHORIZATIONERROR;
    default: return action ? SNMP_ERR_COMMITFAILED : SNMP_ERR_GENERR;
  }
}

// ---------------------------------------------------------------- lookups
// The object at an OID and the instance after it, by mdbObjNameGet.
bool splitOid(const oid* o, size_t n, std::string* name, uint32_t* type, std::vector<uint32_t>* index) {
  if (n > 128) return false;
  uint32_t arcs[128];
  for (size_t i = 0; i < n; i++) arcs[i] = static_cast<uint32_t>(o[i]);
  uint32_t oidLen = 0, icMax = 0, t = 0;
  char buf[256] = {0};
  MdbClient* c = client();
  if (c == nullptr) return false;
  uint32_t rc = checked(mdbClientObjNameGet(c, arcs, static_cast<uint32_t>(n), &oidLen, &icMax, &t, buf, sizeof buf));
  if (rc != 0 || oidLen > n) return false;
  *name = buf;
  *type = t;
  index->assign(arcs + oidLen, arcs + n);
  return true;
}

// ---------------------------------------------------------------- GetNext read-ahead
// The results of one chained GetNext, for the walks and GETBULKs that ask for
// them one by one. Valid for a short while, and dropped by any write.
struct Step {
  uint32_t rc;
  std::vector<uint32_t> index;
  std::vector<uint8_t> value;
};
struct ReadAhead {
  std::string name;
  std::vector<uint32_t> from;  // the index the chain started from
  std::vector<Step> steps;
  std::chrono::steady_clock::time_point when;
} gAhead;
const auto kAheadLife = std::chrono::milliseconds(1000);

int collectStep(void* arg, uint32_t rc, const uint32_t* index, uint32_t indexCount, const uint8_t* value,
                uint32_t valueLength) {
  static_cast<std::vector<Step>*>(arg)->push_back(
      {rc, std::vector<uint32_t>(index, index + indexCount), std::vector<uint8_t>(value, value + valueLength)});
  return 0;
}

// The instance of `name` after `index`: 0 with its index and value, or mdb's error.
uint32_t nextInstance(const std::string& name, const std::vector<uint32_t>& index, std::vector<uint32_t>* outIndex,
                      std::vector<uint8_t>* outValue) {
  auto now = std::chrono::steady_clock::now();
  if (gAhead.name == name && now - gAhead.when < kAheadLife) {
    // The result after `index` is the one after the step that returned it.
    const std::vector<uint32_t>* prev = &gAhead.from;
    for (auto& s : gAhead.steps) {
      if (*prev == index) {
        if (s.rc != 0) return s.rc;
        *outIndex = s.index;
        *outValue = s.value;
        return 0;
      }
      if (s.rc != 0) break;
      prev = &s.index;
    }
  }
  MdbClient* c = client();
  if (c == nullptr) return MDB_CLIENT_ERR_IO;
  std::vector<uint32_t> idx(MDB_MAX_INDEX, 0);
  std::copy(index.begin(), index.end(), idx.begin());
  uint32_t count = static_cast<uint32_t>(index.size());
  std::vector<Step> steps;
  uint32_t n = 0;
  uint32_t rc = checked(mdbClientGetNextChain(c, name.c_str(), idx.data(), MDB_MAX_INDEX, &count, gOpt.chain, 8192,
                                              "snmp", collectStep, &steps, &n));
  if (steps.empty()) return rc != 0 ? rc : MDB_ERR_NO_NEXT_INSTANCE;
  gAhead.name = name;
  gAhead.from = index;
  gAhead.steps = std::move(steps);
  gAhead.when = now;
  const Step& first = gAhead.steps.front();
  if (first.rc != 0) return first.rc;
  *outIndex = first.index;
  *outValue = first.value;
  return 0;
}

bool greater(const std::vector<oid>& a, const oid* b, size_t bn) {
  return snmp_oid_compare(a.data(), a.size(), b, bn) > 0;
}

// GETNEXT for one varbind inside the registration `root`: the first instance
// after the requested OID, across columns, tables and modules in OID order.
void getNext(netsnmp_variable_list* var, const oid* root, size_t rootLen) {
  const oid* req = var->name;
  size_t reqLen = var->name_length;
  // First object whose OID is above the request; the one before it may hold
  // the request as one of its instances.
  auto cmp = [](const Object& o, const std::pair<const oid*, size_t>& r) {
    return snmp_oid_compare(o.id.data(), o.id.size(), r.first, r.second) <= 0;
  };
  size_t pos = std::lower_bound(gObjects.begin(), gObjects.end(), std::make_pair(req, reqLen), cmp) - gObjects.begin();
  size_t start = pos;
  if (pos > 0 && isPrefix(gObjects[pos - 1].id, req, reqLen)) start = pos - 1;
  for (size_t i = start; i < gObjects.size(); i++) {
    const Object& o = gObjects[i];
    if (snmp_oidtree_compare(root, rootLen, o.id.data(), o.id.size()) != 0) {
      // Outside this registration: leave it to the master's next subtree.
      if (snmp_oid_compare(o.id.data(), o.id.size(), root, rootLen) > 0) break;
      continue;
    }
    if (o.access == MDB_ACCESS_NA) continue;
    std::vector<uint32_t> index;
    if (isPrefix(o.id, req, reqLen) && reqLen > o.id.size()) {
      if (reqLen - o.id.size() > MDB_MAX_INDEX) continue;
      for (size_t k = o.id.size(); k < reqLen; k++) index.push_back(static_cast<uint32_t>(req[k]));
    }
    // mdb's order is the table's; guard the walk against an index that does
    // not come after the request.
    for (int tries = 0; tries < 64; tries++) {
      std::vector<uint32_t> nextIndex;
      std::vector<uint8_t> value;
      if (nextInstance(o.name, index, &nextIndex, &value) != 0) break;
      std::vector<oid> full(o.id);
      for (uint32_t a : nextIndex) full.push_back(a);
      if (full.size() <= MAX_OID_LEN && greater(full, req, reqLen)) {
        snmp_set_var_objid(var, full.data(), full.size());
        if (setVarFromMdb(var, o.type, value.data(), static_cast<uint32_t>(value.size())) != 0)
          snmp_set_var_typed_value(var, ASN_OCTET_STR, value.data(), value.size());
        return;
      }
      if (nextIndex == index) break;
      index = nextIndex;
    }
  }
  // Nothing more here: the agent goes on with the next registration.
}

void get(netsnmp_variable_list* var) {
  std::string name;
  uint32_t type;
  std::vector<uint32_t> index;
  if (!splitOid(var->name, var->name_length, &name, &type, &index)) {
    snmp_set_var_typed_value(var, SNMP_NOSUCHOBJECT, nullptr, 0);
    return;
  }
  auto it = gByName.find(name);
  if (it == gByName.end() || gObjects[it->second].access == MDB_ACCESS_NA) {
    snmp_set_var_typed_value(var, SNMP_NOSUCHOBJECT, nullptr, 0);
    return;
  }
  if (index.empty() || index.size() > MDB_MAX_INDEX) {
    snmp_set_var_typed_value(var, SNMP_NOSUCHINSTANCE, nullptr, 0);
    return;
  }
  std::vector<uint8_t> value(8192);
  uint32_t len = static_cast<uint32_t>(value.size());
  MdbClient* c = client();
  uint32_t rc = c == nullptr ? MDB_CLIENT_ERR_IO
                             : checked(mdbClientGetApi(c, name.c_str(), index.data(), static_cast<uint32_t>(index.size()),
                                                       value.data(), &len, "snmp"));
  if (rc == 0) {
    setVarFromMdb(var, type, value.data(), len);
  } else if (rc == MDB_ERR_NO_SUCH_OBJECT || rc == MDB_ERR_OBJECT_HIDDEN) {
    snmp_set_var_typed_value(var, SNMP_NOSUCHOBJECT, nullptr, 0);
  } else {
    snmp_set_var_typed_value(var, SNMP_NOSUCHINSTANCE, nullptr, 0);
  }
}

// One phase of a SET for one varbind; 0 or an SNMP error status.
int set(netsnmp_variable_list* var, bool action) {
  std::string name;
  uint32_t type;
  std::vector<uint32_t> index;
  if (!splitOid(var->name, var->name_length, &name, &type, &index)) return SNMP_ERR_NOTWRITABLE;
  auto it = gByName.find(name);
  if (it == gByName.end()) return SNMP_ERR_NOTWRITABLE;
  const Object& o = gObjects[it->second];
  if (!(o.access & (MDB_ACCESS_WRITE | MDB_ACCESS_CREATE))) return SNMP_ERR_NOTWRITABLE;
  if (index.empty() || index.size() > MDB_MAX_INDEX) return SNMP_ERR_NOCREATION;
  std::vector<uint8_t> value;
  int err = mdbFromVar(var, type, &value);
  if (err != 0) return err;
  MdbClient* c = client();
  if (c == nullptr) return action ? SNMP_ERR_COMMITFAILED : SNMP_ERR_GENERR;
  gAhead.name.clear();
  uint32_t rc = checked(mdbClientSetApi(c, name.c_str(), index.data(), static_cast<uint32_t>(index.size()),
                                        value.data(), static_cast<uint32_t>(value.size()), "snmp", action ? 1 : 0));
  if (gOpt.verbose && rc != 0) fprintf(stderr, "mdb-snmpd: set %s: %u\n", name.c_str(), rc);
  return setError(rc, action);
}

int handler(netsnmp_mib_handler* h, netsnmp_handler_registration* reg, netsnmp_agent_request_info* reqinfo,
            netsnmp_request_info* requests) {
  for (netsnmp_request_info* r = requests; r != nullptr; r = r->next) {
    if (r->processed) continue;
    netsnmp_variable_list* var = r->requestvb;
    switch (reqinfo->mode) {
      case MODE_GET:
        get(var);
        break;
      case MODE_GETNEXT:
        getNext(var, reg->rootoid, reg->rootoid_len);
        break;
      case MODE_SET_RESERVE1: {
        int err = set(var, false);
        if (err != 0) netsnmp_set_request_error(reqinfo, r, err);
        break;
      }
      case MODE_SET_ACTION: {
        int err = set(var, true);
        if (err != 0) netsnmp_set_request_error(reqinfo, r, err);
        break;
      }
      default:  // RESERVE2, COMMIT, FREE, UNDO: mdb has done its part at ACTION
        break;
    }
  }
  return SNMP_ERR_NOERROR;
}

// The subtrees to register: the parents (table entries and scalar groups) of
// the objects, without those inside another.
std::vector<std::vector<oid>> registrationRoots() {
  std::vector<std::vector<oid>> parents;
  for (auto& o : gObjects)
    if (o.id.size() > 1) parents.emplace_back(o.id.begin(), o.id.end() - 1);
  std::sort(parents.begin(), parents.end());
  parents.erase(std::unique(parents.begin(), parents.end()), parents.end());
  std::vector<std::vector<oid>> roots;
  for (auto& p : parents)
    if (roots.empty() || !isPrefix(roots.back(), p.data(), p.size())) roots.push_back(p);
  return roots;
}

void onSignal(int) { gRunning = 0; }

}  // namespace

int main(int argc, char** argv) {
  gOpt.skip.push_back({1, 3, 6, 1, 2, 1, 1, 9});
  for (int i = 1; i < argc; i++) {
    std::string a = argv[i];
    auto value = [&]() -> const char* {
      if (i + 1 >= argc) usage();
      return argv[++i];
    };
    if (a == "--agentx") gOpt.agentx = value();
    else if (a == "--socket") gOpt.socket = static_cast<uint32_t>(strtoul(value(), nullptr, 10));
    else if (a == "--chain") gOpt.chain = std::clamp<uint32_t>(static_cast<uint32_t>(strtoul(value(), nullptr, 10)), 1, 256);
    else if (a == "--priority") gOpt.priority = atoi(value());
    else if (a == "--skip") {
      std::vector<oid> o;
      if (!parseOid(value(), &o)) usage();
      gOpt.skip.push_back(o);
    } else if (a == "--no-skip") gOpt.skip.clear();
    else if (a == "--no-sysortable") gOpt.noSysOR = true;
    else if (a == "-v") gOpt.verbose = true;
    else usage();
  }
  if (gOpt.socket > 24) usage();

  // mdb first: wait for it for up to 30 s, then run command 11 and read what
  // the agent was given.
  for (int tries = 0; client() == nullptr && tries < 300; tries++) usleep(100000);
  if (client() == nullptr) {
    fprintf(stderr, "mdb-snmpd: cannot connect to mdb command socket %u\n", gOpt.socket);
    return 1;
  }
  MdbClientSnmpSummary sum{};
  uint32_t rc = mdbClientSnmpInitSummary(client(), &sum);
  if (rc != 0) {
    fprintf(stderr, "mdb-snmpd: command 11 failed (%u)\n", rc);
    return 1;
  }
  uint32_t count = 0;
  rc = mdbClientSnmpList(client(), MDB_SNMP_LIST_OBJECTS, 0, collectObject, nullptr, &count);
  std::vector<std::pair<std::string, std::vector<oid>>> sysor;
  if (rc == 0) rc = mdbClientSnmpList(client(), MDB_SNMP_LIST_SYSOR, 0, collectSysOR, &sysor, nullptr);
  if (rc != 0) {
    fprintf(stderr, "mdb-snmpd: reading the registered objects failed (%u)\n", rc);
    return 1;
  }
  std::sort(gObjects.begin(), gObjects.end(), [](const Object& a, const Object& b) {
    return snmp_oid_compare(a.id.data(), a.id.size(), b.id.data(), b.id.size()) < 0;
  });
  // Two names at one OID would make the walk ambiguous: the first one serves.
  gObjects.erase(std::unique(gObjects.begin(), gObjects.end(), [](const Object& a, const Object& b) { return a.id == b.id; }),
                 gObjects.end());
  for (size_t i = 0; i < gObjects.size(); i++) gByName[gObjects[i].name] = i;

  // The subagent.
  netsnmp_ds_set_boolean(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_ROLE, 1);
  if (!gOpt.agentx.empty())
    netsnmp_ds_set_string(NETSNMP_DS_APPLICATION_ID, NETSNMP_DS_AGENT_X_SOCKET, gOpt.agentx.c_str());
  netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE, 1);
  netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DISABLE_PERSISTENT_LOAD, 1);
  snmp_enable_stderrlog();
  init_agent("mdb-snmpd");

  auto roots = registrationRoots();
  size_t registered = 0;
  for (auto& root : roots) {
    std::string label = "mdb-snmpd:" + oidText(root.data(), root.size());
    netsnmp_handler_registration* reg = netsnmp_create_handler_registration(
        label.c_str(), handler, root.data(), root.size(), HANDLER_CAN_RWRITE);
    if (reg == nullptr) continue;
    reg->priority = gOpt.priority;
    if (netsnmp_register_handler(reg) == MIB_REGISTERED_OK) registered++;
    else fprintf(stderr, "mdb-snmpd: registering %s failed\n", label.c_str() + 10);
  }
  if (!gOpt.noSysOR)
    for (auto& row : sysor) {
      gSysORIds.push_back(row.second);
      register_sysORTable(gSysORIds.back().data(), gSysORIds.back().size(), row.first.c_str());
    }

  init_snmp("mdb-snmpd");
  signal(SIGTERM, onSignal);
  signal(SIGINT, onSignal);
  fprintf(stderr, "mdb-snmpd: %zu objects in %zu subtrees (%zu registered), %zu sysORTable rows, AgentX %s\n",
          gObjects.size(), roots.size(), registered, sysor.size(),
          gOpt.agentx.empty() ? "(default)" : gOpt.agentx.c_str());
  while (gRunning) agent_check_and_process(1);
  snmp_shutdown("mdb-snmpd");
  if (gClient != nullptr) mdbClientClose(gClient);
  return 0;
}
