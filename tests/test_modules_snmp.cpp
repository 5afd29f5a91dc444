// The SNMP agent's modules over the default agent: the standard face
// (rfc1907, rfc2571, rfc2572, rfc2573n, rfc2573t, rfc2574, rfc2575), the
// private face (snmp) and the timed trap (snmptraptimer).
#include "test_support.h"
#include "mdb/mdb_modules.h"
#include "services/cli.h"
#include "services/snmp.h"
#include "services/svc_device.h"
#include "services/svc_store.h"

#include <algorithm>

using namespace mdbtest;

namespace {

using Index = std::vector<uint32_t>;

// A string index column: its length, then a sub-id per character.
Index str(const std::string& s) {
  Index i{static_cast<uint32_t>(s.size())};
  for (unsigned char c : s) i.push_back(c);
  return i;
}
// An OID index column: its length, then the arcs.
Index oid(Index arcs) {
  arcs.insert(arcs.begin(), static_cast<uint32_t>(arcs.size()));
  return arcs;
}
Index operator+(Index a, const Index& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

const std::string kEngineId("\x80\x00\xb9\x1f\x03\x02\x4d\x44\x42\x00\x01", 11);
const uint32_t kFailedMinusOne = 0xFFFFFFFFu;

class SnmpModules : public DictTest {
 protected:
  void SetUp() override {
    DictTest::SetUp();
    struct {
      int (*init)(void);
      const char* module;
      uint32_t objects, registrationId;
    } const modules[] = {{rfc1907MibInit, "rfc1907", 45, 0},   {rfc2571MibInit, "rfc2571", 4, 0},
                         {rfc2572MibInit, "rfc2572", 3, 0},    {rfc2573nMibInit, "rfc2573n", 13, 145},
                         {rfc2573tMibInit, "rfc2573t", 19, 145}, {rfc2574MibInit, "rfc2574", 20, 145},
                         {snmpMibInit, "snmp", 84, 145},       {snmpTimerTrapMibInit, "snmptraptimer", 8, 0},
                         {rfc2575MibInit, "rfc2575", 22, 145}};
    for (const auto& m : modules) {
      const uint32_t before = mdbObjectCount();
      ASSERT_EQ(0, m.init()) << m.module;
      EXPECT_EQ(m.objects, mdbObjectCount() - before) << m.module;
      MdbModuleDesc module{};
      ASSERT_EQ(0, mdbModuleGet(m.module, &module));
      EXPECT_EQ(m.registrationId, module.registrationId) << m.module;
    }
    svcStoreClear();
    svcDefaultDevice();
  }

  uint32_t get(const char* name, Index index, uint32_t* value) {
    uint32_t length = 4;
    return mdbGetApi(name, index.data(), static_cast<uint32_t>(index.size()), value, &length, nullptr);
  }
  uint32_t num(const char* name, Index index) {
    uint32_t value = 0xDEADBEEF;
    EXPECT_EQ(0u, get(name, index, &value)) << name;
    return value;
  }
  std::string text(const char* name, Index index, uint32_t* rc = nullptr) {
    char buf[4096];
    uint32_t length = sizeof buf;
    uint32_t r = mdbGetApi(name, index.data(), static_cast<uint32_t>(index.size()), buf, &length, nullptr);
    if (rc != nullptr) *rc = r;
    return r == 0 ? std::string(buf, length) : std::string("<error>");
  }
  Index arcs(const char* name, Index index) {
    uint32_t buf[128];
    uint32_t length = sizeof buf;
    EXPECT_EQ(0u, mdbGetApi(name, index.data(), static_cast<uint32_t>(index.size()), buf, &length, nullptr)) << name;
    return Index(buf, buf + length / 4);
  }
  uint32_t set(const char* name, Index index, uint32_t value) {
    return mdbSetApi(name, index.data(), static_cast<uint32_t>(index.size()), &value, 4, nullptr, 1);
  }
  uint32_t setText(const char* name, Index index, const std::string& value) {
    return mdbSetApi(name, index.data(), static_cast<uint32_t>(index.size()), value.data(),
                     static_cast<uint32_t>(value.size()), nullptr, 1);
  }
  uint32_t setArcs(const char* name, Index index, const Index& value) {
    return mdbSetApi(name, index.data(), static_cast<uint32_t>(index.size()), value.data(),
                     static_cast<uint32_t>(value.size() * 4), nullptr, 1);
  }
  uint32_t validate(const char* name, Index index, uint32_t* value) {
    return mdbValidate(name, index.data(), static_cast<uint32_t>(index.size()), value, 4, 0);
  }
  // One walk step from `index`; the index comes back in place.
  uint32_t next(const char* name, Index& index) {
    uint32_t buf[MDB_MAX_INDEX] = {0};
    std::copy(index.begin(), index.end(), buf);
    uint32_t count = static_cast<uint32_t>(index.size()), length = 4096;
    char value[4096];
    uint32_t rc = mdbGetNext(name, buf, MDB_MAX_INDEX, &count, value, &length, nullptr);
    if (rc == 0) index.assign(buf, buf + count);
    return rc;
  }
  std::vector<Index> walk(const char* name) {
    std::vector<Index> rows;
    Index index;
    while (next(name, index) == 0 && rows.size() < 100) rows.push_back(index);
    return rows;
  }
  static void serviceText(uint32_t attribute, const std::string& value) {
    MdbOctetValue v{reinterpret_cast<uint8_t*>(const_cast<char*>(value.data())), static_cast<uint32_t>(value.size())};
    ASSERT_EQ(0, snmpScalarSetApi(0, attribute, &v));
  }
  static void serviceInt(uint32_t attribute, uint32_t value) { ASSERT_EQ(0, snmpScalarSetApi(0, attribute, &value)); }
};

uint64_t fortyTwoSeconds() { return 42000; }

TEST_F(SnmpModules, SystemDescriptionUptimeAndTheDeviceIdentity) {
  // The vendor's name goes in front once, and only under its own enterprise number.
  EXPECT_EQ("ZERIDA Carrier Ethernet Switch, mdb 3.0", text("rfc1907:sysDescr", {0}));
  serviceText(45, "Edge switch by ZERIDA Networks");
  EXPECT_EQ("Edge switch by ZERIDA Networks", text("rfc1907:sysDescr", {0}));
  serviceText(45, "zerida edge");
  EXPECT_EQ("zerida edge", text("rfc1907:sysDescr", {0}));
  serviceText(45, "Edge switch");
  silOptSet("snmp.enterpriseoid", "12345");
  EXPECT_EQ("Edge switch", text("rfc1907:sysDescr", {0}));
  silOptSet("snmp.enterpriseoid", "47391");
  EXPECT_EQ("ZERIDA Edge switch", text("rfc1907:sysDescr", {0}));
  serviceText(45, std::string(512, 'd'));
  EXPECT_EQ("ZERIDA " + std::string(504, 'd'), text("rfc1907:sysDescr", {0}));  // at most 511 characters
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, setText("rfc1907:sysDescr", {0}, "mine"));

  // Hundredths of a second, from the platform's seconds.
  silClockSet(fortyTwoSeconds);
  EXPECT_EQ(4200u, num("rfc1907:sysUpTime", {0}));
  EXPECT_EQ(42u, num("rfc2571:snmpEngineTime", {0}));

  // The trap objects read the device's object identifier, as sysObjectID does.
  const Index device{1, 3, 6, 1, 4, 1, 47391, 1, 1};
  EXPECT_EQ(device, arcs("rfc1907:sysObjectID", {0}));
  EXPECT_EQ(device, arcs("rfc1907:snmpTrapOID", {0}));
  EXPECT_EQ(device, arcs("rfc1907:snmpTrapEnterprise", {0}));
  // Not accessible: the dispatcher lets the write through, the handler refuses it.
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, setArcs("rfc1907:snmpTrapOID", {0}, device));

  EXPECT_EQ(kEngineId, text("rfc2571:snmpEngineID", {0}));
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, set("rfc2571:snmpEngineBoots", {0}, 2));
}

TEST_F(SnmpModules, SystemScalarsAnswerAnyInstance) {
  // Any index the dispatcher lets through is the instance .0 ...
  EXPECT_EQ(0u, setText("rfc1907:sysContact", {7}, "noc"));
  EXPECT_EQ("noc", text("rfc1907:sysContact", {}));
  EXPECT_EQ("noc", text("rfc1907:sysContact", {0}));
  EXPECT_EQ(6u, num("rfc1907:sysServices", {3}));
  uint32_t value = 0;
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("rfc1907:sysServices", {0, 0}, &value));  // too long for the dispatcher
  // ... but a walk stands on .0 only once.
  Index index;
  ASSERT_EQ(0u, next("rfc1907:snmpInPkts", index));
  EXPECT_EQ(Index{0}, index);
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, next("rfc1907:snmpInPkts", index));
  // The private face's scalars keep the usual rule.
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("snmp:snmpTrapEnable", {1}, &value));

  EXPECT_EQ(0u, setText("rfc1907:sysLocation", {0}, std::string(127, 'l')));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, setText("rfc1907:sysLocation", {0}, std::string(128, 'l')));
  // sysName is the command line's host name.
  EXPECT_EQ("switch", text("rfc1907:sysName", {0}));
  EXPECT_EQ(0u, setText("rfc1907:sysName", {0}, std::string(128, 'n')));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, setText("rfc1907:sysName", {0}, std::string(129, 'n')));
  EXPECT_EQ(0u, setText("rfc1907:sysName", {0}, "edge-7"));
  char host[32];
  MdbOctetValue holder{reinterpret_cast<uint8_t*>(host), sizeof host};
  ASSERT_EQ(0, cliScalarGetApi(0, 14, &holder));
  EXPECT_EQ("edge-7", std::string(host, holder.length));
}

TEST_F(SnmpModules, CapabilitiesTable) {
  std::vector<Index> rows = walk("rfc1907:sysORDescr");
  ASSERT_EQ(7u, rows.size());
  for (uint32_t i = 0; i < rows.size(); i++) EXPECT_EQ(Index{i + 1}, rows[i]);
  EXPECT_EQ((Index{1, 3, 6, 1, 6, 3, 16}), arcs("rfc1907:sysORID", {7}));
  EXPECT_EQ(4u, num("rfc1907:sysORIndex", {4}));
  // A missing row: the index column answers from the index, a column fails generically.
  EXPECT_EQ(99u, num("rfc1907:sysORIndex", {99}));
  uint32_t value = 0;
  EXPECT_EQ(MDB_ERR_GEN_ERROR, get("rfc1907:sysORUpTime", {99}, &value));
  // Any index but the empty one continues from its first sub-id.
  Index partial{3};
  ASSERT_EQ(0u, next("rfc1907:sysORUpTime", partial));
  EXPECT_EQ(Index{4}, partial);
}

TEST_F(SnmpModules, AgentSettingsAndTheirChecks) {
  uint32_t value = 0;
  // Constant reads, whatever the service holds.
  EXPECT_EQ(5u, num("snmp:snmpVersionSupport", {0}));
  EXPECT_EQ(1u, num("snmp:snmpdProcessStatus", {0}));
  // The process status passes its check, then refuses to be written.
  value = 2;
  EXPECT_EQ(0u, validate("snmp:snmpdProcessStatus", {0}, &value));
  value = 3;
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, validate("snmp:snmpdProcessStatus", {0}, &value));
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, set("snmp:snmpdProcessStatus", {0}, 2));

  // The ports: 161, or from 1024 on.
  for (uint32_t port : {161u, 1024u, 65535u}) EXPECT_EQ(0u, set("snmp:snmpIpv4Port", {0}, port)) << port;
  for (uint32_t port : {1023u, 65536u, 160u}) EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("snmp:snmpIpv4Port", {0}, port)) << port;
  EXPECT_EQ(0u, set("snmp:snmpIpv6Port", {0}, 2161));
  EXPECT_EQ(2161u, num("snmp:snmpIpv6Port", {0}));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("snmp:snmpMaxPacketSize", {0}, 99));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("snmp:snmpLoginFailCount", {0}, 31));
  EXPECT_EQ(0u, set("snmp:snmpReauthInterval", {0}, 1440));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("snmp:snmpReauthInterval", {0}, 1441));

  // The version bits only grow.
  serviceInt(13, 1);
  EXPECT_EQ(0u, set("snmp:snmpVersionSupportCfg", {0}, 2));
  EXPECT_EQ(3u, num("snmp:snmpVersionSupportCfg", {0}));
  EXPECT_EQ(0u, set("snmp:snmpVersionSupportCfg", {0}, 1));
  EXPECT_EQ(3u, num("snmp:snmpVersionSupportCfg", {0}));

  // Taken and forgotten.
  EXPECT_EQ(0u, set("snmp:snmpTrapL2Enable", {0}, 1));
  EXPECT_EQ(2u, num("snmp:snmpTrapL2Enable", {0}));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("snmp:snmpTrapL2Enable", {0}, 3));

  EXPECT_EQ(0u, setText("snmp:snmpDefualtRwCommunity", {0}, std::string(33, 'w')));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, setText("snmp:snmpDefualtRwCommunity", {0}, std::string(34, 'w')));
  EXPECT_EQ(std::string(33, 'w'), text("snmp:snmpDefualtRwCommunity", {0}));
}

TEST_F(SnmpModules, ResetOfTheStatisticsIsWriteOnly) {
  serviceInt(80, 17);  // snmpInPkts
  serviceInt(84, 5);   // snmpInvalidMsgs
  serviceInt(90, 2);   // usmStatsWrongDigests
  EXPECT_EQ(17u, num("rfc1907:snmpInPkts", {0}));
  EXPECT_EQ(0u, set("snmp:snmpResetStatstic", {0}, 1));
  EXPECT_EQ(0u, num("snmp:snmpResetStatstic", {0}));
  EXPECT_EQ(0u, num("rfc1907:snmpInPkts", {0}));
  EXPECT_EQ(0u, num("rfc2572:snmpInvalidMsgs", {0}));
  EXPECT_EQ(0u, num("rfc2574:usmStatsWrongDigests", {0}));
}

TEST_F(SnmpModules, SpinLocks) {
  // The target lock is a plain attribute: the service takes its current value only.
  EXPECT_EQ(MDB_ERR_INCONSIST_VALUE, set("rfc2573t:snmpTargetSpinLock", {0}, 5));
  EXPECT_EQ(0u, set("rfc2573t:snmpTargetSpinLock", {0}, 0));
  EXPECT_EQ(1u, num("rfc2573t:snmpTargetSpinLock", {0}));

  // The other two put the current value into the request at Validate, so
  // that any write reaches the service as the current value.
  for (const char* lock : {"rfc2574:usmUserSpinLock", "rfc2575:vacmViewSpinLock"}) {
    uint32_t value = 77;
    EXPECT_EQ(0u, validate(lock, {0}, &value)) << lock;
    EXPECT_EQ(0u, value) << lock;
    EXPECT_EQ(0u, set(lock, {0}, 1234)) << lock;
    EXPECT_EQ(1u, num(lock, {0})) << lock;
    // A write that skips Validate hands the service its own value.
    value = 9;
    EXPECT_EQ(MDB_ERR_INCONSIST_VALUE, mdbNvmSet(lock, Index{0}.data(), 1, &value, 4)) << lock;
  }
}

TEST_F(SnmpModules, CommunitiesGiveTheirViews) {
  // In OID order the length comes first: "public" before "private".
  EXPECT_EQ((std::vector<Index>{str("public"), str("private")}), walk("snmp:snmpComm2ViewViewName"));
  EXPECT_EQ("public", text("snmp:snmpComm2ViewCommName", str("public")));
  EXPECT_EQ(1u, num("snmp:snmpComm2ViewPermission", str("public")));
  EXPECT_EQ(2u, num("snmp:snmpComm2ViewPermission", str("private")));
  // Each community's view is made of view tree families of the VACM.
  for (const char* community : {"public", "private"}) {
    std::string view = text("snmp:snmpComm2ViewViewName", str(community));
    EXPECT_EQ(1u, num("rfc2575:vacmViewTreeFamilyType", str(view) + oid({1, 3, 6, 1}))) << view;
  }
  EXPECT_EQ(2u, num("rfc2575:vacmViewTreeFamilyType", str("public-view") + oid({1, 3, 6, 1, 6, 3, 15})));

  // A community of 32 characters is a row; a length of 33 names none.
  const Index longest = str(std::string(32, 'c'));
  ASSERT_EQ(0u, set("snmp:snmpComm2ViewRowStatus", longest, 4));
  EXPECT_EQ(0u, setText("snmp:snmpComm2ViewViewName", longest, "private-view"));
  EXPECT_EQ("private-view", text("snmp:snmpComm2ViewViewName", longest));
  Index tooLong = str(std::string(32, 'c'));
  tooLong[0] = 33;
  uint32_t value = 1;
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("snmp:snmpComm2ViewPermission", tooLong, &value));
  EXPECT_EQ(MDB_ERR_NO_CREATION, validate("snmp:snmpComm2ViewPermission", tooLong, &value));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("snmp:snmpComm2ViewType", longest, 2));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("snmp:snmpComm2ViewRowStatus", longest, 7));
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, setText("snmp:snmpComm2ViewCommName", longest, "x"));
  ASSERT_EQ(0u, set("snmp:snmpComm2ViewRowStatus", longest, 6));
  EXPECT_EQ(2u, walk("snmp:snmpComm2ViewViewName").size());
}

TEST_F(SnmpModules, TargetRowsShowOnBothFaces) {
  const Index nms = str("nms");
  EXPECT_EQ((std::vector<Index>{nms}), walk("rfc2573t:snmpTargetAddrTagList"));
  EXPECT_EQ(0u, setText("snmp:snmpTargetAddrTagList", nms, "trap alarm"));
  EXPECT_EQ("trap alarm", text("rfc2573t:snmpTargetAddrTagList", nms));
  EXPECT_EQ(0u, set("rfc2573t:snmpTargetAddrRetryCount", nms, 5));
  EXPECT_EQ(5u, num("snmp:snmpTargetAddrRetryCount", nms));

  // A transport address is 6 or 18 bytes, on both faces.
  for (const char* name : {"snmp:snmpTargetAddrTAddress", "rfc2573t:snmpTargetAddrTAddress"}) {
    for (size_t n : {5u, 7u, 17u}) EXPECT_EQ(MDB_ERR_INVALID_LENGTH, setText(name, nms, std::string(n, '\1'))) << n;
    EXPECT_EQ(0u, setText(name, nms, std::string(18, '\1'))) << name;
    EXPECT_EQ(0u, setText(name, nms, std::string("\xc0\x00\x02\x0b\x00\xa2", 6))) << name;
  }

  // A row made on the standard face appears on the private one.
  const Index lab = str("lab");
  ASSERT_EQ(0u, set("rfc2573t:snmpTargetAddrRowStatus", lab, 5));
  EXPECT_EQ(0u, setArcs("rfc2573t:snmpTargetAddrTDomain", lab, {1, 3, 6, 1, 6, 1, 1}));
  EXPECT_EQ((std::vector<Index>{lab, nms}), walk("snmp:snmpTargetAddrTDomain"));
  EXPECT_EQ(2u, num("snmp:snmpTargetAddrRowStatus", lab));  // notInService after createAndWait

  // Failures: the standard face and the transport columns of the private one
  // answer a generic error, the other private columns the service's code.
  const Index none = str("none");
  uint32_t value = 0;
  EXPECT_EQ(MDB_ERR_GEN_ERROR, get("rfc2573t:snmpTargetAddrTimeout", none, &value));
  EXPECT_EQ(MDB_ERR_GEN_ERROR, get("snmp:snmpTargetAddrTDomain", none, &value));
  EXPECT_EQ(MDB_ERR_GEN_ERROR, setText("snmp:snmpTargetAddrTAddress", none, std::string(6, '\1')));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("snmp:snmpTargetAddrTimeout", none, &value));
  EXPECT_EQ(MDB_ERR_INCONSIST_NAME, set("snmp:snmpTargetAddrTimeout", none, 10));
  EXPECT_EQ(MDB_ERR_GEN_ERROR, set("rfc2573t:snmpTargetAddrTimeout", none, 10));
  // The name is the index and answers nothing.
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("rfc2573t:snmpTargetAddrName", nms, &value));

  // The VPN name is written at the commit only.
  EXPECT_EQ(0u, setText("snmp:snmpTargetAddrVpnName", nms, "red"));
  EXPECT_EQ("red", text("snmp:snmpTargetAddrVpnName", nms));
  EXPECT_EQ(0u, mdbNvmSet("snmp:snmpTargetAddrVpnName", Index(nms).data(), 4, "blue", 4));
  EXPECT_EQ("red", text("snmp:snmpTargetAddrVpnName", nms));
}

TEST_F(SnmpModules, TargetIndexLimits) {
  // Names of 115 characters; a longer one names no row.
  const Index longest = str(std::string(115, 't'));
  ASSERT_EQ(0u, set("rfc2573t:snmpTargetParamsRowStatus", longest, 4));
  EXPECT_EQ(0u, setText("snmp:snmpTargetParamsSecurityName", longest, "public"));
  EXPECT_EQ("public", text("rfc2573t:snmpTargetParamsSecurityName", longest));
  uint32_t value = 4;
  EXPECT_EQ(MDB_ERR_NO_CREATION, validate("rfc2573t:snmpTargetParamsRowStatus", str(std::string(116, 't')), &value));

  // A walk step from 129 sub-ids or more: the address table of the private
  // face reads the name as it stands, the others find nothing.
  Index padded = str("lab");
  padded.resize(130, 0);
  Index step = padded;
  ASSERT_EQ(0u, next("snmp:snmpTargetAddrTimeout", step));
  EXPECT_EQ(str("nms"), step);
  step = padded;
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, next("rfc2573t:snmpTargetAddrTimeout", step));
  step = str("a");
  step.resize(129, 0);
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, next("snmp:snmpTargetParamsMPModel", step));
  step.resize(128);
  ASSERT_EQ(0u, next("snmp:snmpTargetParamsMPModel", step));
  EXPECT_EQ(str("nms-params"), step);

  // Limits of the columns, which differ between the faces.
  const Index params = str("nms-params");
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("rfc2573t:snmpTargetParamsSecurityModel", params, 4));
  EXPECT_EQ(0u, set("snmp:snmpTargetParamsSecurityModel", params, 4));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("snmp:snmpTargetParamsSecurityModel", params, 0x80000000u));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, setText("rfc2573t:snmpTargetParamsSecurityName", params, std::string(33, 's')));
  EXPECT_EQ(0u, setText("snmp:snmpTargetParamsSecurityName", params, std::string(255, 's')));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("rfc2573t:snmpTargetParamsSecurityLevel", params, 4));
  // A parameters row without a name is a generic error on the private face.
  EXPECT_EQ(MDB_ERR_GEN_ERROR, get("snmp:snmpTargetParamsMPModel", str(""), &value));
  EXPECT_EQ(MDB_ERR_GEN_ERROR, get("snmp:snmpTargetParamsName", str(""), &value));
}

TEST_F(SnmpModules, NotificationsProfilesAndFilters) {
  EXPECT_EQ((std::vector<Index>{str("trap")}), walk("rfc2573n:snmpNotifyTag"));
  EXPECT_EQ("trap", text("rfc2573n:snmpNotifyTag", str("trap")));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("rfc2573n:snmpNotifyType", str("trap"), 3));
  uint32_t value = 0;
  EXPECT_EQ(MDB_ERR_GEN_ERROR, get("rfc2573n:snmpNotifyTag", str("inform"), &value));
  // The entry counts 32 sub-ids: a name of 31 characters at most reaches a row.
  EXPECT_EQ(MDB_ERR_GEN_ERROR, get("rfc2573n:snmpNotifyType", str(std::string(31, 'n')), &value));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("rfc2573n:snmpNotifyType", str(std::string(32, 'n')), &value));

  // The default target's parameters use the profile "ops".
  const Index params = str("nms-params");
  ASSERT_EQ(0u, set("rfc2573n:snmpNotifyFilterProfileRowStatus", params, 5));
  ASSERT_EQ(0u, setText("rfc2573n:snmpNotifyFilterProfileName", params, "ops"));
  EXPECT_EQ("ops", text("rfc2573n:snmpNotifyFilterProfileName", params));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, setText("rfc2573n:snmpNotifyFilterProfileName", params, std::string(33, 'p')));

  // Its filters: the profile's name, then the subtree with its length.
  const std::vector<Index> keys = {str("ops") + oid({1, 3, 6, 1, 4}), str("ops") + oid({1, 3, 6, 1, 2, 1}),
                                   str("all") + oid({1})};
  for (const Index& k : keys) ASSERT_EQ(0u, set("rfc2573n:snmpNotifyFilterRowStatus", k, 4));
  EXPECT_EQ((std::vector<Index>{keys[2], keys[0], keys[1]}), walk("rfc2573n:snmpNotifyFilterRowStatus"));
  EXPECT_EQ(0u, setText("rfc2573n:snmpNotifyFilterMask", keys[0], "\xff"));
  EXPECT_EQ("\xff", text("rfc2573n:snmpNotifyFilterMask", keys[0]));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("rfc2573n:snmpNotifyFilterType", keys[0], 0));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("rfc2573n:snmpNotifyFilterSubtree", keys[0], &value));
}

TEST_F(SnmpModules, AccessRightsOnBothFaces) {
  // The index: group, context prefix (its characters behind its length), model, level.
  const Index key = str("ops-group") + str("ctx") + Index{3, 2};
  ASSERT_EQ(0u, set("rfc2575:vacmAccessStatus", key, 5));
  EXPECT_EQ(0u, setText("rfc2575:vacmAccessReadViewName", key, "public-view"));
  std::vector<Index> rows = walk("snmp:snmpVacmAccessContextPrefix");
  ASSERT_EQ(4u, rows.size());
  EXPECT_EQ(key, rows[0]);  // "ops-group" has 9 characters, the defaults' groups 11 and more
  EXPECT_EQ((Index{3, 'c', 't', 'x'}), Index(rows[0].begin() + 10, rows[0].begin() + 14));
  EXPECT_EQ("ctx", text("snmp:snmpVacmAccessContextPrefix", key));
  EXPECT_EQ("ops-group", text("snmp:snmpVacmGroupName", key));
  EXPECT_EQ(3u, num("snmp:snmpVacmAccessSecurityModel", key));
  EXPECT_EQ(2u, num("snmp:snmpVacmAccessSecurityLevel", key));
  EXPECT_EQ("public-view", text("snmp:snmpVacmAccessReadViewName", key));
  EXPECT_EQ(2u, num("snmp:snmpVacmAccessStatus", key));

  // View names: 32 characters on the standard face, 255 on the private one.
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, setText("rfc2575:vacmAccessWriteViewName", key, std::string(33, 'v')));
  EXPECT_EQ(0u, setText("snmp:snmpVacmAccessWriteViewName", key, std::string(255, 'v')));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("snmp:snmpVacmAccessContextMatch", key, 3));
  EXPECT_EQ(0u, set("rfc2575:vacmAccessContextMatch", key, 3));  // no check on the standard face
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, set("snmp:snmpVacmAccessSecurityLevel", key, 1));
  uint32_t value = 0;
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("rfc2575:vacmAccessContextPrefix", key, &value));
  EXPECT_EQ(MDB_ERR_GEN_ERROR, get("rfc2575:vacmAccessStatus", str("nobody") + str("") + Index{0, 1}, &value));

  // A walk step from 65 sub-ids or more finds nothing.
  Index step = str("a");
  step.resize(65, 0);
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, next("rfc2575:vacmAccessStatus", step));
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, next("snmp:snmpVacmAccessStatus", step));
}

TEST_F(SnmpModules, GroupsViewsAndContexts) {
  // Security to group: model, then the name; the order of OIDs.
  const std::vector<Index> groups = walk("rfc2575:vacmGroupName");
  EXPECT_EQ((std::vector<Index>{Index{1} + str("public"), Index{1} + str("private"), Index{2} + str("public"),
                                Index{2} + str("private"), Index{3} + str("admin")}),
            groups);
  const Index ops = Index{3} + str("ops");
  ASSERT_EQ(0u, set("snmp:snmpVacmSecurityStatus", ops, 4));
  EXPECT_EQ(0u, setText("snmp:snmpVacmSecurityGroupName", ops, "ops-group"));
  EXPECT_EQ("ops-group", text("rfc2575:vacmGroupName", ops));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, setText("rfc2575:vacmGroupName", ops, std::string(33, 'g')));
  // An over-long name: -1 on the private face, the usual errors on the standard one.
  Index overLong = Index{3} + str(std::string(32, 'u'));
  overLong[1] = 33;
  uint32_t value = 0;
  EXPECT_EQ(kFailedMinusOne, get("snmp:snmpVacmSecurityGroupName", overLong, &value));
  EXPECT_EQ(kFailedMinusOne, get("snmp:snmpVacmSecurityModel", overLong, &value));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("rfc2575:vacmGroupName", overLong, &value));
  Index step = Index{3} + str("a");
  step.resize(35, 0);
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, next("snmp:snmpVacmSecurityGroupName", step));

  // View tree families: the subtree read from the index, on the private face.
  const Index family = str("ops-view") + oid({1, 3, 6, 1, 2, 1, 1});
  ASSERT_EQ(0u, set("snmp:snmpVacmViewTreeFamilyStatus", family, 4));
  EXPECT_EQ((Index{1, 3, 6, 1, 2, 1, 1}), arcs("snmp:snmpVacmViewTreeFamilySubtree", family));
  EXPECT_EQ("ops-view", text("snmp:snmpVacmViewTreeFamilyViewName", family));
  EXPECT_EQ(1u, num("rfc2575:vacmViewTreeFamilyStatus", family));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, setText("rfc2575:vacmViewTreeFamilyMask", family, std::string(17, '\xff')));
  EXPECT_EQ(0u, setText("snmp:snmpVacmViewTreeFamilyMask", family, std::string(17, '\xff')));
  EXPECT_EQ(std::string(17, '\xff'), text("rfc2575:vacmViewTreeFamilyMask", family));
  EXPECT_EQ(4u, walk("rfc2575:vacmViewTreeFamilyStatus").size());

  // The default context has the empty name.
  EXPECT_EQ((std::vector<Index>{Index{0}}), walk("rfc2575:vacmContextName"));
  EXPECT_EQ("", text("rfc2575:vacmContextName", {0}));
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, mdbNvmSet("rfc2575:vacmContextName", Index{0}.data(), 1, "x", 1));
}

TEST_F(SnmpModules, UsersAndTheirKeys) {
  const Index admin = str(kEngineId) + str("admin");
  EXPECT_EQ((std::vector<Index>{admin}), walk("rfc2574:usmUserStatus"));
  EXPECT_EQ((std::vector<Index>{admin}), walk("snmp:snmpUsmUserStatus"));
  EXPECT_EQ(kEngineId, text("snmp:snmpUsmUserEngineID", admin));
  EXPECT_EQ((Index{1, 3, 6, 1, 6, 3, 10, 1, 1, 3}), arcs("rfc2574:usmUserAuthProtocol", admin));

  // A user made on the standard face; its security name comes from the index.
  const Index ops = str(kEngineId) + str("ops");
  ASSERT_EQ(0u, set("rfc2574:usmUserStatus", ops, 5));
  EXPECT_EQ("ops", text("rfc2574:usmUserSecurityName", ops));
  uint32_t value = 0;
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("snmp:snmpUsmUserSecurityName", ops, &value));  // the service's
  EXPECT_EQ("ghost", text("rfc2574:usmUserSecurityName", str(kEngineId) + str("ghost")));  // no service asked
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("rfc2574:usmUserName", ops, &value));

  // The keys pass through as sent; a read comes back through 128 bytes.
  const std::string key(512, 'k');
  EXPECT_EQ(0u, setText("snmp:snmpUsmUserPlainAuthKeyChange", ops, key));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, setText("snmp:snmpUsmUserPlainAuthKeyChange", ops, key + "k"));
  EXPECT_EQ(key.substr(0, 128), text("snmp:snmpUsmUserPlainAuthKeyChange", ops));
  EXPECT_EQ(0u, setText("rfc2574:usmUserPublic", ops, "nonce"));
  EXPECT_EQ("nonce", text("snmp:snmpUsmUserPublic", ops));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("snmp:snmpUsmUserFilter", ops, 0));
  EXPECT_EQ(0u, set("snmp:snmpUsmUserFilter", ops, 3000));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("rfc2574:usmUserStorageType", ops, 6));

  // Over-long lengths: -1 on the private face; a walk step refuses them.
  EXPECT_EQ(kFailedMinusOne, get("snmp:snmpUsmUserStorageType", Index{65, 'e'} + str("u"), &value));
  EXPECT_EQ(kFailedMinusOne, get("snmp:snmpUsmUserStorageType", str("e") + Index{33, 'u'}, &value));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("rfc2574:usmUserStorageType", str("e") + Index{33, 'u'}, &value));
  Index step = str("e") + Index{33, 'u'};
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, next("snmp:snmpUsmUserStatus", step));
  step = str("e");
  step.resize(67, 0);
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, next("rfc2574:usmUserStatus", step));
}

TEST_F(SnmpModules, TimedTrapAndTrapVariables) {
  EXPECT_EQ(0u, set("snmptraptimer:timerTrapInterval", {0}, 30000));
  EXPECT_EQ(30000u, num("snmptraptimer:timerTrapInterval", {0}));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("snmptraptimer:timerTrapEnable", {0}, 3));
  EXPECT_EQ("", text("snmptraptimer:trapUserID", {0}));
  EXPECT_EQ("", text("snmptraptimer:trapIPAddr", {0}));
  EXPECT_EQ(std::string("\x02\x4d\x44\x42\x00\x01", 6), text("snmptraptimer:trapMacAddr", {0}));
  EXPECT_EQ("switch", text("snmptraptimer:trapDevName", {0}));
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, setText("snmptraptimer:trapDevName", {0}, "x"));
  uint32_t index[] = {0};
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, mdbNvmSet("snmptraptimer:trapUserID", index, 1, "x", 1));
}

}  // namespace
