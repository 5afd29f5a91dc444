// The SNMP agent's substitute services: the operations of each prefix, the
// computed attributes, and the default agent of a fresh device.
#include "services/svc_snmp.h"

#include "platform/sil.h"
#include "services/snmp.h"
#include "services/snmpCommunity.h"
#include "services/snmpNotify.h"
#include "services/snmpNotifyFilter.h"
#include "services/snmpNotifyProfile.h"
#include "services/snmpSysOR.h"
#include "services/snmpTargetAddr.h"
#include "services/snmpTargetParams.h"
#include "services/snmpUser.h"
#include "services/snmpVacmAccess.h"
#include "services/snmpVacmContext.h"
#include "services/snmpVacmSecGroup.h"
#include "services/snmpVacmView.h"
#include "services/svc_store.h"
#include "services/tgp.h"

#include <atomic>
#include <cstring>
#include <initializer_list>

SVC_DEFINE_SCALAR(snmp)
SVC_DEFINE_SCALAR(tgp)
SVC_DEFINE_TABLE(snmpCommunity)
SVC_DEFINE_TABLE(snmpTargetAddr)
SVC_DEFINE_TABLE(snmpTargetParams)
SVC_DEFINE_TABLE(snmpVacmAccess)
SVC_DEFINE_TABLE(snmpVacmSecGroup)
SVC_DEFINE_TABLE(snmpVacmView)
SVC_DEFINE_TABLE(snmpVacmContext)
SVC_DEFINE_TABLE(snmpUser)
SVC_DEFINE_TABLE(snmpNotify)
SVC_DEFINE_TABLE(snmpNotifyProfile)
SVC_DEFINE_TABLE(snmpNotifyFilter)
SVC_DEFINE_TABLE(snmpSysOR)

namespace {

// ---------------------------------------------------------------- attributes of the snmp group
enum : uint32_t {
  kDefaultRoCommunity = 4,
  kDefaultRwCommunity = 5,
  kAuthFailReply = 8,
  kVacmViewSpinLock = 10,
  kTargetSpinLock = 11,
  kUsmUserSpinLock = 12,
  kVersionSupportCfg = 13,
  kRwCommunityEnable = 14,
  kLoginFailCount = 15,
  kCurrentFailCount = 16,
  kReauthInterval = 17,
  kIpv4Port = 18,
  kIpv6Port = 19,
  kSetFilter = 20,
  kGetFilter = 21,
  kMaxPacketSize = 23,
  kReplySourceIp = 25,
  kTrapSourceIf = 28,
  kEnableAuthenTraps = 29,
  kSysContact = 30,
  kSysLocation = 31,
  kTrapEnable = 34,
  kEngineId = 40,
  kEngineBoots = 41,
  kEngineTime = 42,
  kEngineMaxMessageSize = 43,
  kResetStatistics = 44,
  kSysDescr = 45,
  kSysObjectId = 46,
  kSysServices = 47,
  kSysORLastChange = 48,
  kSetSerialNo = 49,
  kTimerTrapEnable = 92,
  kTimerTrapInterval = 94,
};

// The agent's counters: the snmp group's, the context, MPD and USM counters.
constexpr uint32_t kCounters[] = {50, 51, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 64, 65, 66, 67, 68, 69, 70,
                                  71, 72, 73, 74, 75, 76, 77, 78, 79, 80, 81, 82, 83, 84, 85, 86, 87, 88, 89,
                                  90, 91};

// Of tgp.
enum : uint32_t {
  kBaseMac = 6,
  kSerialNumber = 49,
  kDeviceName = 50,
  kProductName = 58,
  kUpTime = 149,
};

constexpr uint8_t kBaseMacAddress[6] = {0x02, 0x4d, 0x44, 0x42, 0x00, 0x01};
// RFC 3411 form: the enterprise number with the top bit set, format 3 (a MAC address), the address.
constexpr uint8_t kLocalEngineId[11] = {0x80, 0x00, 0xb9, 0x1f, 0x03, 0x02, 0x4d, 0x44, 0x42, 0x00, 0x01};

// ---------------------------------------------------------------- computed attributes

int upTimeRead(const uint32_t*, uint32_t, uint32_t, void* value) {
  *static_cast<uint32_t*>(value) = silGetUpTime();
  return 0;
}

// The spin locks (TestAndIncr): a write of the current value advances the
// lock by one, wrapping after 2147483647 to 0; any other value is refused.
std::atomic<uint32_t> gSpinLocks[4];

std::atomic<uint32_t>& spinLockOf(uint32_t attribute) {
  switch (attribute) {
    case kVacmViewSpinLock: return gSpinLocks[0];
    case kTargetSpinLock: return gSpinLocks[1];
    case kUsmUserSpinLock: return gSpinLocks[2];
    default: return gSpinLocks[3];  // snmpSetSerialNo
  }
}

int spinLockRead(const uint32_t*, uint32_t, uint32_t attribute, void* value) {
  *static_cast<uint32_t*>(value) = spinLockOf(attribute).load(std::memory_order_relaxed);
  return 0;
}

int spinLockWrite(const uint32_t*, uint32_t, uint32_t attribute, const void* value) {
  uint32_t expected = *static_cast<const uint32_t*>(value);
  const uint32_t next = expected >= 2147483647u ? 0 : expected + 1;
  return spinLockOf(attribute).compare_exchange_strong(expected, next) ? 0 : static_cast<int>(MDB_ERR_INCONSIST_VALUE);
}

// A write of any value sets every counter of the agent back to 0.
int statisticsReset(const uint32_t*, uint32_t, uint32_t, const void*) {
  SvcServiceId snmp = svcServiceOf("snmp", false);
  const uint32_t zero = 0;
  for (uint32_t counter : kCounters) svcScalarSet(snmp, counter, &zero);
  return 0;
}

// ---------------------------------------------------------------- filling the store
// Each value declares its attribute's form as it goes: some columns are read
// only through objects with a handler of their own, whose forms the
// catalogue does not hand to the store.

void putInt(SvcServiceId s, uint32_t attribute, uint32_t value) {
  svcAttributeDeclare(s, attribute, SVC_FORM_INT);
  svcScalarSet(s, attribute, &value);
}

void putBytes(SvcServiceId s, uint32_t attribute, const void* bytes, uint32_t length) {
  svcAttributeDeclare(s, attribute, SVC_FORM_OCTET);
  MdbOctetValue v{static_cast<uint8_t*>(const_cast<void*>(bytes)), length};
  svcScalarSet(s, attribute, &v);
}

void putText(SvcServiceId s, uint32_t attribute, const char* text) {
  putBytes(s, attribute, text, static_cast<uint32_t>(strlen(text)));
}

// An OID as the service keeps it: its arcs of 32 bits.
struct Arcs {
  uint32_t arc[32];
  uint32_t count = 0;
  Arcs(std::initializer_list<uint32_t> arcs) {
    for (uint32_t a : arcs)
      if (count < 32) arc[count++] = a;
  }
  uint32_t bytes() const { return count * static_cast<uint32_t>(sizeof(uint32_t)); }
};

void provide(SvcServiceId s, uint32_t attribute, SvcGetFn get, SvcSetFn set) {
  svcProvide(s, attribute, SVC_FORM_INT, get, set);
}

// A row's index sub-ids: strings and OIDs with their length sub-id.
struct RowKey {
  uint32_t sub[SVC_MAX_KEY];
  uint32_t count = 0;
  RowKey& num(uint32_t v) {
    if (count < SVC_MAX_KEY) sub[count++] = v;
    return *this;
  }
  RowKey& bytes(const void* data, uint32_t length) {
    num(length);
    for (uint32_t i = 0; i < length; i++) num(static_cast<const uint8_t*>(data)[i]);
    return *this;
  }
  RowKey& str(const char* text) { return bytes(text, static_cast<uint32_t>(strlen(text))); }
  RowKey& oid(const Arcs& arcs) {
    num(arcs.count);
    for (uint32_t i = 0; i < arcs.count; i++) num(arcs.arc[i]);
    return *this;
  }
};

// One row of a table being filled.
struct Row {
  SvcServiceId service;
  RowKey key;
  Row& integer(uint32_t attribute, uint32_t value) {
    svcAttributeDeclare(service, attribute, SVC_FORM_INT);
    svcRowPut(service, key.sub, key.count, attribute, &value);
    return *this;
  }
  Row& bytes(uint32_t attribute, const void* data, uint32_t length) {
    svcAttributeDeclare(service, attribute, SVC_FORM_OCTET);
    MdbOctetValue v{static_cast<uint8_t*>(const_cast<void*>(data)), length};
    svcRowPut(service, key.sub, key.count, attribute, &v);
    return *this;
  }
  Row& text(uint32_t attribute, const char* value) {
    return bytes(attribute, value, static_cast<uint32_t>(strlen(value)));
  }
  Row& oid(uint32_t attribute, const Arcs& arcs) { return bytes(attribute, arcs.arc, arcs.bytes()); }
};

Row row(const char* prefix, const RowKey& key) { return Row{svcServiceOf(prefix, true), key}; }

// ---------------------------------------------------------------- the default agent

void agentDefaults(SvcServiceId snmp) {
  for (uint32_t lock : {kVacmViewSpinLock, kTargetSpinLock, kUsmUserSpinLock, kSetSerialNo}) {
    spinLockOf(lock).store(0);
    provide(snmp, lock, spinLockRead, spinLockWrite);
  }
  provide(snmp, kEngineTime, upTimeRead, nullptr);
  provide(snmp, kResetStatistics, nullptr, statisticsReset);

  // The system group.
  putText(snmp, kSysDescr, "Carrier Ethernet Switch, mdb 3.0");
  const Arcs objectId{1, 3, 6, 1, 4, 1, 47391, 1, 1};
  putBytes(snmp, kSysObjectId, objectId.arc, objectId.bytes());
  putText(snmp, kSysContact, "");
  putText(snmp, kSysLocation, "");
  putInt(snmp, kSysServices, 6);  // datalink and internet
  putInt(snmp, kSysORLastChange, 0);
  putInt(snmp, kEnableAuthenTraps, 2);
  for (uint32_t counter : kCounters) putInt(snmp, counter, 0);

  // The engine.
  putBytes(snmp, kEngineId, kLocalEngineId, sizeof kLocalEngineId);
  putInt(snmp, kEngineBoots, 1);
  putInt(snmp, kEngineMaxMessageSize, 1500);

  // The agent's own settings.
  putInt(snmp, kTrapEnable, 1);
  putInt(snmp, kVersionSupportCfg, 7);  // v1, v2c and v3
  putInt(snmp, kRwCommunityEnable, 1);
  putInt(snmp, kLoginFailCount, 5);
  putInt(snmp, kCurrentFailCount, 0);
  putInt(snmp, kReauthInterval, 5);
  putInt(snmp, kIpv4Port, 161);
  putInt(snmp, kIpv6Port, 161);
  putInt(snmp, kSetFilter, 2);
  putInt(snmp, kGetFilter, 2);
  putInt(snmp, kMaxPacketSize, 1500);
  putText(snmp, kDefaultRoCommunity, "public");
  putText(snmp, kDefaultRwCommunity, "private");
  putInt(snmp, kAuthFailReply, 2);
  putInt(snmp, kReplySourceIp, 2);
  putInt(snmp, kTrapSourceIf, 0);
  putInt(snmp, kTimerTrapEnable, 2);
  putInt(snmp, kTimerTrapInterval, 6000);
}

void platformDefaults() {
  // sysName is the command line's host name; the command line's module may
  // not be registered, so its form is declared here (its value is the cli's).
  svcAttributeDeclare(svcServiceOf("cli", false), 14, SVC_FORM_OCTET);

  SvcServiceId tgp = svcServiceOf("tgp", false);
  svcProvide(tgp, kUpTime, SVC_FORM_INT, upTimeRead, nullptr);
  putBytes(tgp, kBaseMac, kBaseMacAddress, sizeof kBaseMacAddress);
  putText(tgp, kDeviceName, "switch");
  putText(tgp, kProductName, "Carrier Ethernet Switch");
  putText(tgp, kSerialNumber, "MDB0000000001");
}

void capabilities() {
  struct Capability {
    const char* description;
    Arcs id;
  };
  const Capability kCapabilities[] = {
      {"SNMPv2-MIB: the SNMP entity", {1, 3, 6, 1, 6, 3, 1}},
      {"SNMP-FRAMEWORK-MIB: the SNMP management architecture", {1, 3, 6, 1, 6, 3, 10}},
      {"SNMP-MPD-MIB: message processing and dispatching", {1, 3, 6, 1, 6, 3, 11}},
      {"SNMP-TARGET-MIB: the targets of notifications", {1, 3, 6, 1, 6, 3, 12}},
      {"SNMP-NOTIFICATION-MIB: notification filtering", {1, 3, 6, 1, 6, 3, 13}},
      {"SNMP-USER-BASED-SM-MIB: the user-based security model", {1, 3, 6, 1, 6, 3, 15}},
      {"SNMP-VIEW-BASED-ACM-MIB: the view-based access control model", {1, 3, 6, 1, 6, 3, 16}},
  };
  uint32_t index = 1;
  for (const Capability& c : kCapabilities)
    row("snmpSysOR", RowKey().num(index++)).oid(0, c.id).text(1, c.description).integer(2, 0);
}

// "public" reads everything but the users; "private" reads and writes all.
void communities() {
  struct Community {
    const char* name;
    const char* group;
    const char* view;
    uint32_t permission;  // 1 read-only, 2 read-write
  };
  const Community kCommunities[] = {{"public", "public-group", "public-view", 1},
                                    {"private", "private-group", "private-view", 2}};
  for (const Community& c : kCommunities) {
    row("snmpCommunity", RowKey().str(c.name))
        .text(1, c.view)
        .integer(2, c.permission)
        .integer(4, 0)
        .integer(6, 0)
        .integer(5, 0)
        .integer(3, 1);
    for (uint32_t model : {1u, 2u})  // SNMPv1, SNMPv2c
      row("snmpVacmSecGroup", RowKey().num(model).str(c.name)).text(2, c.group).integer(3, 3).integer(4, 1);
    const bool writes = c.permission == 2;
    row("snmpVacmAccess", RowKey().str(c.group).str("").num(0).num(1))  // any model, noAuthNoPriv
        .integer(4, 1)
        .text(5, c.view)
        .text(6, writes ? c.view : "")
        .text(7, c.view)
        .integer(8, 3)
        .integer(9, 1);
  }
  const Arcs internet{1, 3, 6, 1};
  const Arcs usm{1, 3, 6, 1, 6, 3, 15};
  auto family = [](const char* view, const Arcs& subtree, uint32_t type) {  // 1 included, 2 excluded
    row("snmpVacmView", RowKey().str(view).oid(subtree)).text(0, "").integer(1, type).integer(2, 3).integer(3, 1);
  };
  family("public-view", internet, 1);
  family("public-view", usm, 2);
  family("private-view", internet, 1);

  // The default context. The store keeps a row by its values: it keeps the name.
  row("snmpVacmContext", RowKey().str("")).text(0, "");
}

// One SNMPv3 user, "admin", SHA and AES, with the private view.
void users() {
  row("snmpVacmSecGroup", RowKey().num(3).str("admin")).text(2, "admin-group").integer(3, 3).integer(4, 1);
  row("snmpVacmAccess", RowKey().str("admin-group").str("").num(3).num(3))  // USM, authPriv
      .integer(4, 1)
      .text(5, "private-view")
      .text(6, "private-view")
      .text(7, "private-view")
      .integer(8, 3)
      .integer(9, 1);
  row("snmpUser", RowKey().bytes(kLocalEngineId, sizeof kLocalEngineId).str("admin"))
      .text(2, "admin")
      .oid(3, Arcs{0, 0})
      .oid(4, Arcs{1, 3, 6, 1, 6, 3, 10, 1, 1, 3})  // usmHMACSHAAuthProtocol
      .text(5, "")
      .text(6, "")
      .text(7, "")
      .oid(8, Arcs{1, 3, 6, 1, 6, 3, 10, 1, 2, 4})  // usmAesCfb128Protocol
      .text(9, "")
      .text(10, "")
      .text(11, "")
      .text(12, "")
      .integer(13, 3)
      .integer(14, 0)
      .integer(15, 0)
      .integer(16, 1);
}

// One trap receiver, "nms" at 192.0.2.10 port 162, SNMPv2c with "public".
void trapTarget() {
  const uint8_t address[6] = {192, 0, 2, 10, 0, 162};
  row("snmpTargetAddr", RowKey().str("nms"))
      .oid(0, Arcs{1, 3, 6, 1, 6, 1, 1})  // snmpUDPDomain
      .bytes(1, address, sizeof address)
      .text(2, "")
      .integer(3, 1)
      .text(4, "trap")
      .text(5, "nms-params")
      .integer(6, 1500)
      .integer(7, 3)
      .integer(8, 3)
      .integer(9, 0)
      .integer(10, 1);
  row("snmpTargetParams", RowKey().str("nms-params"))
      .text(0, "public")
      .integer(1, 1)
      .integer(2, 2)
      .integer(3, 1)
      .integer(4, 3)
      .integer(5, 1);
  row("snmpNotify", RowKey().str("trap")).text(0, "trap").integer(1, 1).integer(2, 3).integer(3, 1);
}

}  // namespace

void svcSnmpDefaults(void) {
  agentDefaults(svcServiceOf("snmp", false));
  platformDefaults();
  capabilities();
  communities();
  users();
  trapTarget();
}
