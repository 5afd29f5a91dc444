// The trunk and sub-interface modules over the default device: which
// interfaces they list, trunk membership writes, the active-link limits and
// the failure conventions.
#include "if_test_support.h"
#include "mdb/mdb_dict.h"
#include "mdb/mdb_modules.h"
#include "services/svc_device.h"
#include "services/svc_if.h"
#include "services/svc_store.h"

using namespace mdbtest;

namespace {

class TrunkModules : public IfTest {
 protected:
  void SetUp() override {
    IfTest::SetUp();
    ASSERT_EQ(0, ethaggIfMibInit());
    ASSERT_EQ(0, ethsubifMibInit());
    ASSERT_EQ(0, ethaggsubifMibInit());
    ASSERT_EQ(0, ethSubifStatisticMibInit());
    ASSERT_EQ(0, ethaggSubifStatisticMibInit());
    svcStoreClear();
    svcDefaultDevice();
  }
  // A trunk's member list as ifIndex values.
  std::vector<uint32_t> members(uint32_t trunkNumber) {
    uint8_t list[512];
    uint32_t length = sizeof list;
    std::vector<uint32_t> out;
    if (mdbGetApi("ethaggif:ethaggIfPortsList", &trunkNumber, 1, list, &length, nullptr) != 0) return {9999};
    for (uint32_t at = 0; at + 4 <= length; at += 4)
      out.push_back(uint32_t{list[at]} << 24 | uint32_t{list[at + 1]} << 16 | uint32_t{list[at + 2]} << 8 | list[at + 3]);
    return out;
  }
  uint32_t writeList(const char* name, uint32_t trunkNumber, std::vector<uint32_t> ports, uint32_t extra = 0) {
    std::vector<uint8_t> bytes;
    for (uint32_t p : ports)
      for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<uint8_t>(p >> shift));
    bytes.resize(bytes.size() + extra, 0xEE);
    const uint8_t none = 0;  // an empty value still comes in a buffer
    return mdbSetApi(name, &trunkNumber, 1, bytes.empty() ? &none : bytes.data(), static_cast<uint32_t>(bytes.size()),
                     nullptr, 1);
  }
  // A second trunk, eth-trunk 2, without members, in mode `mode`.
  void addTrunkTwo(uint32_t mode) {
    ASSERT_EQ(0, svcIfAdd(202, 2, {0, 0, 0, 0, 2, 0, 1}));
    uint32_t number = 2;
    ASSERT_EQ(0, svcRowPut(svcServiceFind("tgpEthAgg"), &number, 1, 1002, &mode));
  }
};

TEST_F(TrunkModules, EachTableListsItsInterfaces) {
  const std::vector<uint32_t> trunk{201};
  EXPECT_EQ(trunk, walk("ethaggif:ethaggIfIndex"));
  EXPECT_EQ(trunk, walk("ethaggif:ethaggIfStatsIndex"));
  EXPECT_EQ(std::vector<uint32_t>{1}, walk("ethaggif:ethaggIfBasePort"));  // by trunk number
  uint32_t n = 0;
  ASSERT_EQ(0u, scalar("ethaggif:ethaggIfNumber", &n));
  EXPECT_EQ(1u, n);
  // Sub-interfaces only: the main ports and the trunk itself are skipped.
  const std::vector<uint32_t> subs{1001, 1002}, trunkSubs{1101};
  EXPECT_EQ(subs, walk("ethsubif:ethSubIfIndex"));
  EXPECT_EQ(subs, walk("ethsubif_statistic:ethSubIfStatsIndex"));
  EXPECT_EQ(trunkSubs, walk("ethaggsubif:ethAggSubIfIndex"));
  EXPECT_EQ(trunkSubs, walk("ethaggsubif_statistic:ethaggSubIfStatsIndex"));
  EXPECT_EQ("eth-trunk1", text("ethaggif:ethaggIfBasePortName", 1));
  EXPECT_EQ(std::string(8, '\0'), text("ethaggif:ethaggIfStatsTxErr", 201));  // kept, not growing
  ASSERT_EQ(0u, get("ethaggif:ethaggIfBaseIndex", 1, &n));
  EXPECT_EQ(201u, n);

  // A device without sub-interfaces: the sub-interface tables are empty.
  svcStoreClear();
  ASSERT_EQ(0, svcIfAdd(1, 1, {0, 1, 1, 0, 0, 0, 1}));
  ASSERT_EQ(0, svcIfAdd(201, 2, {0, 0, 0, 0, 1, 0, 1}));
  uint32_t index[MDB_MAX_INDEX] = {0}, count = 0, value[256], length = sizeof value;
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE,
            mdbGetNext("ethsubif:ethSubIfIndex", index, MDB_MAX_INDEX, &count, value, &length, nullptr));
  EXPECT_TRUE(walk("ethaggsubif:ethAggSubIfIndex").empty());
}

TEST_F(TrunkModules, MemberListWritesMoveKeepAndSkipPorts) {
  EXPECT_EQ((std::vector<uint32_t>{23, 24}), members(1));
  addTrunkTwo(2);
  EXPECT_TRUE(members(2).empty());
  // 23 moves from trunk 1, 5 joins; a trailing partial element is ignored.
  EXPECT_EQ(0u, writeList("ethaggif:ethaggIfPortsList", 2, {23, 5}, 3));
  EXPECT_EQ((std::vector<uint32_t>{5, 23}), members(2));
  EXPECT_EQ(std::vector<uint32_t>{24}, members(1));
  // A port already in the trunk stays as it is.
  EXPECT_EQ(0u, writeList("ethaggif:ethaggIfPortsList", 2, {5}));
  EXPECT_EQ((std::vector<uint32_t>{5, 23}), members(2));
  // A port the service refuses stops the write; the ports before it stay moved.
  EXPECT_EQ(MDB_ERR_GEN_ERROR, writeList("ethaggif:ethaggIfPortsList", 2, {6, 7777, 7}));
  EXPECT_EQ((std::vector<uint32_t>{5, 6, 23}), members(2));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, writeList("ethaggif:ethaggIfPortsList", 2, std::vector<uint32_t>(64, 1)));

  // Removal detaches members, skips other ports and reads empty.
  EXPECT_EQ(0u, writeList("ethaggif:ethaggIfRemovePorts", 2, {6, 24, 8}));
  EXPECT_EQ((std::vector<uint32_t>{5, 23}), members(2));
  EXPECT_EQ(std::vector<uint32_t>{24}, members(1));
  EXPECT_EQ("", text("ethaggif:ethaggIfRemovePorts", 2));
  EXPECT_EQ(0u, writeList("ethaggif:ethaggIfRemovePorts", 2, {}));  // members, nothing named
  EXPECT_EQ((std::vector<uint32_t>{5, 23}), members(2));
  EXPECT_EQ(0u, writeList("ethaggif:ethaggIfRemovePorts", 2, {5, 23}));
  EXPECT_EQ(MDB_ERR_GEN_ERROR, writeList("ethaggif:ethaggIfRemovePorts", 2, {}));  // no members left

  // One port at a time through the trunk's actions; both read 0.
  EXPECT_EQ(0u, set("ethaggif:ethaggIfAddMemberPort", 2, 9));
  EXPECT_EQ(std::vector<uint32_t>{9}, members(2));
  EXPECT_EQ(0u, set("ethaggif:ethaggIfDelMemberPort", 2, 9));
  EXPECT_TRUE(members(2).empty());
  uint32_t v = 7;
  ASSERT_EQ(0u, get("ethaggif:ethaggIfAddMemberPort", 2, &v));
  EXPECT_EQ(0u, v);
}

TEST_F(TrunkModules, ActiveLinkLimitsFollowTheMode) {
  uint32_t v = 0;
  // LACP trunk 1: the aggregator's maximum (8) bounds the minimum too.
  ASSERT_EQ(0u, get("ethaggif:ethaggIfMaxActiveLinkNum", 1, &v));
  EXPECT_EQ(8u, v);
  EXPECT_EQ(0u, set("ethaggif:ethaggIfMinActiveLinkNum", 1, 8));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("ethaggif:ethaggIfMinActiveLinkNum", 1, 9));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("ethaggif:ethaggIfMinActiveLinkNum", 1, 0));
  EXPECT_EQ(0u, set("ethaggif:ethaggIfMaxActiveLinkNum", 1, 4));
  ASSERT_EQ(0u, get("ethaggif:ethaggIfMaxActiveLinkNum", 1, &v));
  EXPECT_EQ(4u, v);
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("ethaggif:ethaggIfMinActiveLinkNum", 1, 5));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("ethaggif:ethaggIfMaxActiveLinkNum", 1, 9));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("ethaggif:ethaggIfMaxActiveLinkNum", 1, 0));
  // A static trunk has no aggregator: it reads 0, takes a write without effect,
  // and its minimum is limited by the range alone.
  addTrunkTwo(2);
  EXPECT_EQ(0u, set("ethaggif:ethaggIfMaxActiveLinkNum", 2, 3));
  v = 7;
  ASSERT_EQ(0u, get("ethaggif:ethaggIfMaxActiveLinkNum", 2, &v));
  EXPECT_EQ(0u, v);
  EXPECT_EQ(0u, set("ethaggif:ethaggIfMinActiveLinkNum", 2, 16));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("ethaggif:ethaggIfMinActiveLinkNum", 2, 17));
}

TEST_F(TrunkModules, FailureConventions) {
  uint32_t v = 0;
  // A trunk number the name service does not know has no instance.
  uint32_t number = 5, mode = 1;
  ASSERT_EQ(0, svcRowPut(svcServiceFind("tgpEthAgg"), &number, 1, 1002, &mode));
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, get("ethaggif:ethaggIfMLMode", 5, &v));
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, set("ethaggif:ethaggIfMLMode", 5, 2));
  ASSERT_EQ(0u, get("ethaggif:ethaggIfMLMode", 1, &v));
  EXPECT_EQ(1u, v);
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, set("ethaggif:ethaggIfSchduleProfileMode", 1, 1));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("ethaggif:ethaggIfEntryStatus", 1, 7));

  // The trunk table passes the service's code on, but for the inbound limit.
  ASSERT_EQ(0, svcIfAdd(202, 2, {0, 0, 0, 0, 2, 0, 1}));  // no attributes of its own
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("ethaggif:ethaggIfMtu", 202, &v));
  EXPECT_EQ(MDB_ERR_GEN_ERROR, get("ethaggif:ethaggIfBWInLimit", 202, &v));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, set("ethaggif:ethaggIfFlowStatsInterval", 201, 301));
  EXPECT_EQ(0u, set("ethaggif:ethaggIfFlowStatsInterval", 201, 300));
  EXPECT_EQ(MDB_ERR_GEN_ERROR, get("ethaggif:ethaggIfStatsLast5MinsRxUtilizationRate", 202, &v));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("ethaggsubif_statistic:ethaggSubIfStatsLast5MinsRxUtilizationRate", 202, &v));

  // Sub-interfaces: every refusal is a genError; the alias reads at most 64 bytes.
  EXPECT_EQ(MDB_ERR_GEN_ERROR, get("ethsubif:ethSubIfMtu", 202, &v));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("ethsubif:ethSubIfAdminStatus", 1001, 3));
  const std::string alias(100, 'a');
  uint32_t ifIndex = 1001;
  ASSERT_EQ(0u, mdbSetApi("ethsubif:ethSubIfAlias", &ifIndex, 1, alias.data(), 100, nullptr, 1));
  EXPECT_EQ(std::string(64, 'a'), text("ethsubif:ethSubIfAlias", 1001));
  EXPECT_EQ("103", text("ethaggsubif:ethAggSubIfEncapDot1q", 1101));
  // The row status belongs to the service: destroy removes the sub-interface.
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("ethsubif:ethSubIfRowStatus", 1002, 7));
  EXPECT_EQ(0u, set("ethsubif:ethSubIfRowStatus", 1002, 6));
  EXPECT_EQ(std::vector<uint32_t>{1001}, walk("ethsubif:ethSubIfIndex"));
}

// The default device holds every attribute its interfaces are asked for:
// each readable column of each interface table answers on every row of its
// table's walk (a missing attribute ends a walk with the service's failure).
TEST_F(TrunkModules, DefaultDeviceAnswersEveryColumnOfEveryRow) {
  ASSERT_EQ(0, ifMibInit());
  ASSERT_EQ(0, methIfMibInit());
  ASSERT_EQ(0, ethIfMibInit());
  ASSERT_EQ(0, rfc1213MibInit());
  ASSERT_EQ(0, rfc2233MibInit());
  ASSERT_EQ(0, etherlikeMibinit());
  svcStoreClear();
  svcDefaultDevice();
  uint32_t columns = 0;
  for (const char* module : {"if", "methif", "ethif", "ethaggif", "ethsubif", "ethaggsubif", "ethsubif_statistic",
                             "ethaggsubif_statistic", "rfc1213", "rfc2233", "etherlike"}) {
    const MdbModuleDesc* m = mdbModuleLookup(module);
    ASSERT_NE(nullptr, m) << module;
    for (const MdbObjectBinding* b = m->list; b->object != nullptr; b++) {
      if (b->entry->indexCountMin == 0 || b->object->access == MDB_ACCESS_NA) continue;
      const std::string name = b->object->name;
      const std::string index = std::string(name, 0, name.find(':') + 1) + b->entry->indexNames[0];
      uint32_t at[MDB_MAX_INDEX] = {0}, count = 0, rows = 0, rc;
      for (;;) {
        uint8_t value[4096];
        uint32_t length = sizeof value;
        rc = mdbGetNext(name.c_str(), at, MDB_MAX_INDEX, &count, value, &length, nullptr);
        if (rc != 0) break;
        rows++;
      }
      EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, rc) << name << " after " << rows << " rows";
      if (mdbObjectLookup(index.c_str()) != nullptr) EXPECT_EQ(walk(index.c_str()).size(), rows) << name;
      columns++;
    }
  }
  EXPECT_GT(columns, 500u);
}

}  // namespace
