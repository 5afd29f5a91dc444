// The standard interface tables and the management and Ethernet-like
// modules over the default device.
#include "if_test_support.h"
#include "mdb/mdb_modules.h"
#include "services/svc_device.h"
#include "services/svc_if.h"
#include "services/svc_store.h"
#include "services/tgpIf.h"

#include <cstring>

using namespace mdbtest;

namespace {

class StdIfModules : public IfTest {
 protected:
  void SetUp() override {
    IfTest::SetUp();
    ASSERT_EQ(0, ifMibInit());
    ASSERT_EQ(0, ethIfMibInit());
    ASSERT_EQ(0, rfc1213MibInit());
    ASSERT_EQ(0, rfc2233MibInit());
    ASSERT_EQ(0, methIfMibInit());
    ASSERT_EQ(0, etherlikeMibinit());
    svcStoreClear();
    svcDefaultDevice();
  }
  uint32_t get64(const char* name, uint32_t ifIndex, uint32_t (&words)[2]) {
    uint32_t length = 8;
    words[0] = words[1] = 0xFFFFFFFFu;
    return mdbGetApi(name, &ifIndex, 1, words, &length, nullptr);
  }
  uint32_t attribute(uint32_t ifIndex, uint32_t id) {
    uint32_t v = 0;
    EXPECT_EQ(0, tgpIfGetApi(ifIndex, id, &v));
    return v;
  }
};

TEST_F(StdIfModules, IfEntryListsThePrivateListAndRefusesUnknownInterfaces) {
  const std::vector<uint32_t> priv = walk("if:ifIndex");
  ASSERT_FALSE(priv.empty());
  EXPECT_EQ(priv, walk("rfc1213:ifIndex"));
  EXPECT_EQ(priv, walk("rfc1213:ifSpecific"));
  uint32_t number = 0;
  ASSERT_EQ(0u, scalar("rfc1213:ifNumber", &number));  // answered by the private module's count
  EXPECT_EQ(priv.size(), number);

  uint32_t v = 0;
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("rfc1213:ifType", 999, &v));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("rfc1213:ifMtu", 999, &v));
  ASSERT_EQ(0u, get("rfc1213:ifIndex", 1, &v));
  EXPECT_EQ(1u, v);
  ASSERT_EQ(0u, get("rfc1213:ifType", 1, &v));
  EXPECT_EQ(attribute(1, 121), v);
  EXPECT_EQ("ethernet1/0/1", text("rfc1213:ifDescr", 1));
  // The null OID of two arcs.
  uint32_t arcs[4] = {9, 9, 9, 9}, length = sizeof arcs, index = 1;
  ASSERT_EQ(0u, mdbGetApi("rfc1213:ifSpecific", &index, 1, arcs, &length, nullptr));
  EXPECT_EQ(8u, length);
  EXPECT_EQ(0u, arcs[0]);
  EXPECT_EQ(0u, arcs[1]);
}

TEST_F(StdIfModules, IfSpeedSaturatesAt4000Mbps) {
  uint32_t v = 0;
  put(1, 129, 3999);
  ASSERT_EQ(0u, get("rfc1213:ifSpeed", 1, &v));
  EXPECT_EQ(3999000000u, v);
  put(1, 129, 4000);
  ASSERT_EQ(0u, get("rfc1213:ifSpeed", 1, &v));
  EXPECT_EQ(4294967295u, v);
  put(1, 129, 10);
  ASSERT_EQ(0u, get("rfc1213:ifSpeed", 1, &v));
  EXPECT_EQ(10000000u, v);
}

TEST_F(StdIfModules, IfEntryStatusForms) {
  uint32_t v = 0;
  EXPECT_EQ(0u, set("rfc1213:ifAdminStatus", 2, 2));
  EXPECT_EQ(2u, attribute(2, 20));
  EXPECT_EQ(0u, set("rfc1213:ifAdminStatus", 2, 1));
  EXPECT_EQ(1u, attribute(2, 20));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("rfc1213:ifAdminStatus", 2, 3));
  EXPECT_EQ(1u, attribute(2, 20));
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, set("rfc1213:ifMtu", 2, 1400));

  put(3, 19, 1);
  ASSERT_EQ(0u, get("rfc1213:ifOperStatus", 3, &v));
  EXPECT_EQ(1u, v);
  put(3, 19, 0);
  ASSERT_EQ(0u, get("rfc1213:ifOperStatus", 3, &v));
  EXPECT_EQ(2u, v);
  put(3, 575, 7);
  ASSERT_EQ(0u, get("rfc1213:ifOutQLen", 3, &v));
  EXPECT_EQ(7u, v);
}

TEST_F(StdIfModules, CountersAreLowWordsUnlessSuppressed) {
  uint32_t v = 0;
  put64(4, 571, 3, 12345);
  ASSERT_EQ(0u, get("rfc1213:ifInDiscards", 4, &v));
  EXPECT_EQ(12345u, v);
  put(4, 3530, 1);
  ASSERT_EQ(0u, get("rfc1213:ifInDiscards", 4, &v));
  EXPECT_EQ(0u, v);
  ASSERT_EQ(0u, get("rfc1213:ifInOctets", 4, &v));
  EXPECT_EQ(0u, v);
  // Only the counters are suppressed.
  put(4, 129, 100);
  ASSERT_EQ(0u, get("rfc1213:ifSpeed", 4, &v));
  EXPECT_EQ(100000000u, v);
}

TEST_F(StdIfModules, IfXEntryFollowsIfEntry) {
  EXPECT_EQ(walk("rfc1213:ifIndex"), walk("rfc2233:ifName"));
  EXPECT_EQ("ethernet1/0/2", text("rfc2233:ifName", 2));
  uint32_t v = 0;
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("rfc2233:ifHighSpeed", 999, &v));
  // ifHighSpeed is the attribute unchanged where ifSpeed saturates.
  put(1, 129, 4000);
  ASSERT_EQ(0u, get("rfc2233:ifHighSpeed", 1, &v));
  EXPECT_EQ(4000u, v);

  // The 32-bit counter is the low word of the growing 64-bit one.
  uint32_t w[2];
  ASSERT_EQ(0u, get("rfc2233:ifInMulticastPkts", 2, &v));
  ASSERT_EQ(0u, get64("rfc2233:ifHCInMulticastPkts", 2, w));
  EXPECT_EQ(0u, w[0]);
  EXPECT_LE(v, w[1]);
  put(1, 3530, 1);
  ASSERT_EQ(0u, get64("rfc2233:ifHCInMulticastPkts", 1, w));
  EXPECT_EQ(0u, w[0]);
  EXPECT_EQ(0u, w[1]);
  ASSERT_EQ(0u, get("rfc2233:ifInMulticastPkts", 1, &v));
  EXPECT_EQ(0u, v);
}

TEST_F(StdIfModules, IfXEntryWritesAndChecks) {
  EXPECT_EQ(0u, set("rfc2233:ifLinkUpDownTrapEnable", 5, 2));
  EXPECT_EQ(2u, attribute(5, 126));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("rfc2233:ifLinkUpDownTrapEnable", 5, 3));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("rfc2233:ifPromiscuousMode", 5, 0));
  EXPECT_EQ(0u, set("rfc2233:ifPromiscuousMode", 5, 1));
  EXPECT_EQ(1u, attribute(5, 127));

  uint32_t index = 5;
  const std::string alias = "uplink to core";
  ASSERT_EQ(0u, mdbSetApi("rfc2233:ifAlias", &index, 1, alias.data(), alias.size(), nullptr, 1));
  EXPECT_EQ(alias, text("rfc2233:ifAlias", 5));
  const std::string tooLong(65, 'x');
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, mdbSetApi("rfc2233:ifAlias", &index, 1, tooLong.data(), 65, nullptr, 1));
  EXPECT_EQ(alias, text("rfc2233:ifAlias", 5));
}

TEST_F(StdIfModules, StackTestAndAddressTablesHaveNoRows) {
  EXPECT_TRUE(walk("rfc2233:ifStackStatus").empty());
  EXPECT_TRUE(walk("rfc2233:ifTestStatus").empty());
  EXPECT_TRUE(walk("rfc2233:ifRcvAddressStatus").empty());
  // A handler reached at a given index delivers 0.
  uint32_t v = 9;
  ASSERT_EQ(0u, get("rfc2233:ifTestResult", 1, &v));
  EXPECT_EQ(0u, v);
  EXPECT_NE(0u, set("rfc2233:ifTestResult", 1, 1));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("rfc2233:ifTestStatus", 1, 3));
}

TEST_F(StdIfModules, ManagementTableListsTheManagementPortOnly) {
  EXPECT_EQ(std::vector<uint32_t>{SVC_IF_METH}, walk("methif:methIfIndex"));
  EXPECT_EQ(std::vector<uint32_t>{SVC_IF_METH}, walk("methif:methIfStatsIndex"));
  uint32_t n = 0;
  ASSERT_EQ(0u, scalar("methif:methIfNumber", &n));
  EXPECT_EQ(1u, n);
  ASSERT_EQ(0, svcIfAdd(101, 44, {0, 0, 1, 0, 0, 0, 1}));
  ASSERT_EQ(0u, scalar("methif:methIfNumber", &n));
  EXPECT_EQ(2u, n);
  EXPECT_EQ((std::vector<uint32_t>{SVC_IF_METH, 101}), walk("methif:methIfIndex"));
  EXPECT_EQ("meth0", text("methif:methIfName", SVC_IF_METH));
}

TEST_F(StdIfModules, ManagementFailuresAreGenericButMauTypeKeepsTheServiceCode) {
  uint32_t v = 0, w[2];
  // The Ethernet module passes the service's code; this one gives genError.
  const uint32_t serviceCode = get("ethif:ethIfMtu", 999, &v);
  ASSERT_NE(0u, serviceCode);
  ASSERT_NE(MDB_ERR_GEN_ERROR, serviceCode);
  EXPECT_EQ(MDB_ERR_GEN_ERROR, get("methif:methIfMtu", 999, &v));
  EXPECT_EQ(MDB_ERR_GEN_ERROR, get64("methif:methIfStatsRxDiscard", 999, w));
  EXPECT_EQ(MDB_ERR_GEN_ERROR, get("methif:methIfStatsLast5MinsRxUtilizationRate", 999, &v));
  EXPECT_EQ(serviceCode, get("methif:methIfMauType", 999, &v));
  EXPECT_EQ(MDB_ERR_GEN_ERROR, set("methif:methIfMtu", 999, 1500));
}

TEST_F(StdIfModules, ManagementChecksAndWrites) {
  const uint32_t m = SVC_IF_METH;
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, set("methif:methIfFlowStatsInterval", m, 301));
  EXPECT_EQ(0u, set("methif:methIfFlowStatsInterval", m, 300));
  EXPECT_EQ(300u, attribute(m, 70));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("methif:methIfIfgBytes", m, 7));
  EXPECT_EQ(0u, set("methif:methIfIfgBytes", m, 16));
  EXPECT_EQ(16u, attribute(m, 234));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("methif:methIfAutoNego", m, 3));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, set("methif:methIfLinkTrapEnable", m, 0));
  uint32_t v = 9;
  ASSERT_EQ(0u, get("methif:methIfRestConfiguration", m, &v));
  EXPECT_EQ(0u, v);
  ASSERT_EQ(0u, get("methif:methIfStatsReset", m, &v));
  EXPECT_EQ(0u, v);
  EXPECT_EQ(0u, set("methif:methIfStatsReset", m, 5));
  ASSERT_EQ(0u, get("methif:methIfErrStatus", m, &v));
  EXPECT_EQ(0u, v);
}

TEST_F(StdIfModules, EtherlikeStatsOverTheEthernetPorts) {
  EXPECT_EQ(walk("ethif:ethIfIndex"), walk("etherlike:dot3StatsIndex"));
  EXPECT_EQ(walk("ethif:ethIfIndex"), walk("etherlike:dot3StatsDuplexStatus"));
  EXPECT_TRUE(walk("etherlike:dot3CollFrequencies").empty());

  uint32_t v = 9;
  put64(3, 540, 1, 42);
  ASSERT_EQ(0u, get("etherlike:dot3StatsAlignmentErrors", 3, &v));
  EXPECT_EQ(42u, v);
  EXPECT_EQ(MDB_ERR_GEN_ERROR, get("etherlike:dot3StatsAlignmentErrors", 999, &v));

  // Duplex: 1 full -> 3, 0 half -> 2, anything else unknown -> 1.
  for (auto [duplex, status] : {std::pair{1u, 3u}, {0u, 2u}, {7u, 1u}}) {
    put(3, 130, duplex);
    ASSERT_EQ(0u, get("etherlike:dot3StatsDuplexStatus", 3, &v));
    EXPECT_EQ(status, v) << duplex;
  }
  for (const char* zero : {"etherlike:dot3StatsSymbolErrors", "etherlike:dot3StatsRateControlAbility",
                           "etherlike:dot3StatsRateControlStatus"}) {
    v = 9;
    ASSERT_EQ(0u, get(zero, 3, &v)) << zero;
    EXPECT_EQ(0u, v) << zero;
  }
  EXPECT_EQ("", text("etherlike:dot3StatsEtherChipSet", 3));
  // The histogram has no rows, but a read at a given index is 0.
  uint32_t index[2] = {3, 1}, length = 4;
  v = 9;
  ASSERT_EQ(0u, mdbGetApi("etherlike:dot3CollFrequencies", index, 2, &v, &length, nullptr));
  EXPECT_EQ(0u, v);
}

}  // namespace
