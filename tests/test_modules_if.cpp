// The interface modules over the default device: which interfaces each
// table lists, the class rules of the private table, and the value forms.
#include "if_test_support.h"
#include "mdb/mdb_modules.h"
#include "services/svc_device.h"
#include "services/svc_if.h"
#include "services/svc_store.h"

using namespace mdbtest;

namespace {

class IfModules : public IfTest {
 protected:
  void SetUp() override {
    IfTest::SetUp();
    ASSERT_EQ(0, ifMibInit());
    ASSERT_EQ(0, ethIfMibInit());
    svcStoreClear();
    svcDefaultDevice();
  }
};

std::vector<uint32_t> range(uint32_t first, uint32_t last) {
  std::vector<uint32_t> v;
  for (uint32_t i = first; i <= last; i++) v.push_back(i);
  return v;
}

TEST_F(IfModules, EachTableListsTheInterfacesOfItsFilter) {
  // The private list: all but the VLAN interfaces and hidden class-8 ones.
  ASSERT_EQ(0, svcIfAdd(400, 8, {0, 0, 0, 0, 0, 0, 0}));
  ASSERT_EQ(0, svcIfAdd(302, 3, {0, 0, 0, 0, 2, 0, 0}));
  std::vector<uint32_t> priv = range(1, 26);
  for (uint32_t i : {100u, 201u, 301u, 1001u, 1002u, 1101u}) priv.push_back(i);
  EXPECT_EQ(priv, walk("if:ifIndex"));
  uint32_t n = 0;
  ASSERT_EQ(0u, scalar("if:ifTotalNumber", &n));
  EXPECT_EQ(priv.size(), n);

  // Ethernet tables: main ports only; the count takes the class with its sub-interfaces.
  EXPECT_EQ(range(1, 26), walk("ethif:ethIfIndex"));
  EXPECT_EQ(range(1, 26), walk("ethif:ethIfStatsIndex"));
  EXPECT_EQ(range(1, 26), walk("ethif:ethIfXIndex"));
  EXPECT_EQ(range(1, 26), walk("ethif:ethIfBasePort"));
  ASSERT_EQ(0u, scalar("ethif:ethIfNumber", &n));
  EXPECT_EQ(28u, n);
}

TEST_F(IfModules, PrivateTableServesEachColumnByClass) {
  uint32_t v = 99;
  // VLAN interface 301 (class 3) is listed and has no MTU.
  ASSERT_EQ(0u, get("if:ifMtu", 301, &v));
  EXPECT_EQ(0u, v);
  EXPECT_EQ(MDB_ERR_GEN_ERROR, set("if:ifMtu", 301, 1400));
  EXPECT_EQ(0u, set("if:ifMtu", 1, 1400));
  ASSERT_EQ(0u, get("if:ifMtu", 1, &v));
  EXPECT_EQ(1400u, v);
  // A trunk has no frame-type setting to read but takes a write.
  ASSERT_EQ(0u, get("if:ifAcceptFrameType", 201, &v));
  EXPECT_EQ(1u, v);
  EXPECT_EQ(0u, set("if:ifAcceptFrameType", 201, 2));
  // Sub-interfaces read the fallback of the marked columns.
  ASSERT_EQ(0u, get("if:ifAutoNego", 1001, &v));
  EXPECT_EQ(2u, v);
  EXPECT_EQ("", text("if:ifMauType", 1001));
  EXPECT_EQ("1000BASE-T", text("if:ifMauType", 1));
  ASSERT_EQ(0u, get("if:ifRateLimitSupport", 100, &v));
  EXPECT_EQ(1u, v);
  ASSERT_EQ(0u, get("if:ifRateLimitSupport", 301, &v));
  EXPECT_EQ(2u, v);
  EXPECT_EQ("ethernet1/0/1.2", text("if:ifPrivName", 1002));
  // The management port cannot leave work mode 1.
  EXPECT_EQ(MDB_ERR_GEN_ERROR, set("if:ifWorkMode", 100, 0));
  EXPECT_EQ(0u, set("if:ifWorkMode", 1, 0));
}

TEST_F(IfModules, PrivateCommitGuardAndLimits) {
  ASSERT_EQ(0, svcIfAdd(500, 5, {0, 0, 0, 0, 0, 0, 1}));
  put(500, 20, 1);
  EXPECT_EQ(MDB_ERR_GEN_ERROR, set("if:ifAdminStatus", 500, 2));
  ASSERT_EQ(0, svcIfAdd(501, 5, {0, 0, 0, 0, 7, 0, 1}));
  put(501, 20, 1);
  EXPECT_EQ(0u, set("if:ifAdminStatus", 501, 2));

  // Range errors of the private table come as invalidLength, but for the frame type.
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, set("if:ifAdminStatus", 1, 3));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, set("if:ifSpeed", 1, 99));
  EXPECT_EQ(0u, set("if:ifSpeed", 1, 100));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, set("if:ifSpeed", 1, 1000001));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, set("if:ifPriority", 1, 8));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("if:ifAcceptFrameType", 1, 3));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, set("if:ifStatisticInterval", 0, 29));
  EXPECT_EQ(0u, set("if:ifStatisticInterval", 0, 300));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, set("if:ifStatisticInterval", 0, 301));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, set("if:ifRestStatistic", 0, 2));
  EXPECT_EQ(0u, set("if:ifRestStatistic", 0, 1));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("ethif:ethIfIfgBytes", 1, 17));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, set("ethif:ethIfFlowStatsInterval", 1, 601));
  EXPECT_EQ(0u, set("ethif:ethIfFlowStatsInterval", 1, 600));
}

TEST_F(IfModules, EthernetValueForms) {
  uint32_t v = 0;
  // Trunk membership of ports 23 and 24.
  ASSERT_EQ(0u, get("ethif:ethIfTrunkIndex", 23, &v));
  EXPECT_EQ(201u, v);
  ASSERT_EQ(0u, get("ethif:ethIfTrunkId", 24, &v));
  EXPECT_EQ(1u, v);
  ASSERT_EQ(0u, get("ethif:ethIfTrunkId", 5, &v));
  EXPECT_EQ(0u, v);
  ASSERT_EQ(0u, get("ethif:ethIfPortId", 25, &v));
  EXPECT_EQ(1u, v);
  ASSERT_EQ(0u, get("ethif:ethIfCardId", 25, &v));
  EXPECT_EQ(1u, v);
  EXPECT_EQ("ethernet1/1/2", text("ethif:ethIfName", 26));
  EXPECT_EQ(std::string(4, '\0'), text("ethif:ethIfIpAddress", 1));
  ASSERT_EQ(0u, get("ethif:ethIfEeeEnable", 1, &v));
  EXPECT_EQ(2u, v);
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, set("ethif:ethIfEeeEnable", 1, 1));

  // A 32-bit counter is the low word of the 64-bit one.
  put(26, 19, 1);
  ASSERT_EQ(0u, get("ethif:ethIfXInMulticastPkts", 2, &v));
  uint32_t words[2] = {0, 0}, length = 8, index = 2;
  ASSERT_EQ(0u, mdbGetApi("ethif:ethIfStatsRxMulticastPkts", &index, 1, words, &length, nullptr));
  EXPECT_EQ(8u, length);
  EXPECT_LE(v, words[1]);
  EXPECT_EQ(0u, words[0]);
  // A port whose link is down counts nothing.
  ASSERT_EQ(0u, mdbGetApi("ethif:ethIfStatsRxOctets", (index = 5, &index), 1, words, &length, nullptr));
  EXPECT_EQ(0u, words[1]);
}

TEST_F(IfModules, UtilisationIsClampedAndZeroWithoutSpeed) {
  uint32_t v = 0;
  // 1000 Mb/s; 2500000 octets and 125000 frames: (2500000 + 2500000) / 1250000 = 4.0 %.
  put64(1, 500, 0, 125000);
  put64(1, 502, 7, 2500000);  // the high word is not used
  ASSERT_EQ(0u, get("ethif:ethIfStatsLast5MinsRxUtilizationRate", 1, &v));
  EXPECT_EQ(400u, v);
  put64(1, 502, 0, 0xF0000000u);
  ASSERT_EQ(0u, get("ethif:ethIfStatsLast5MinsRxUtilizationRate", 1, &v));
  EXPECT_EQ(10000u, v);
  put(1, 129, 0);
  ASSERT_EQ(0u, get("ethif:ethIfStatsLast5MinsRxUtilizationRate", 1, &v));
  EXPECT_EQ(0u, v);
}

TEST_F(IfModules, UnknownInterfaceEndsInTheServiceFailure) {
  uint32_t v = 0;
  EXPECT_NE(0u, get("ethif:ethIfMtu", 999, &v));
  EXPECT_NE(0u, get("if:ifOndType", 999, &v));
}

}  // namespace
