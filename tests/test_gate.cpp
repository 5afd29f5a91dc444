// The start-up sequence: gates, nested and paired steps, with stand-in
// modules that register an empty module under each name.
#include "test_support.h"
#include "mdb/mdb_gate.h"
#include "platform/logging.h"

#include <fstream>
#include <map>
#include <set>

using namespace mdbtest;

namespace {

std::vector<std::string> gCalled;
const MdbObjectBinding kNoObjects[] = {{nullptr, nullptr}};

int standIn(const MdbInit* init) {
  gCalled.push_back(init->module);
  return mdbModuleRegisterEx(init->module, init->registrationId, kNoObjects);
}

class Gate : public DictTest {
 protected:
  std::set<std::string> run(std::initializer_list<std::pair<const char*, const char*>> options) {
    mdbDictDestroy();
    mdbDictInit();
    mdbStatsReset();
    silOptClear();
    for (auto& [k, v] : options) silOptSet(k, v);
    gCalled.clear();
    mdbInitSequenceRun(gMdbInitSequence, gMdbInitSequenceLength, standIn);
    std::set<std::string> present;
    for (auto& m : gCalled)
      if (mdbModuleSearch(m.c_str()) == 0) present.insert(m);
    return present;
  }
  static size_t count(const std::string& module) {
    size_t n = 0;
    for (auto& m : gCalled) n += m == module;
    return n;
  }
};

TEST_F(Gate, DefaultsAndTheClosedGates) {
  EXPECT_EQ(129u, gMdbInitSequenceLength - 6);  // 129 steps and 6 nested ones
  auto present = run({});
  EXPECT_EQ(169u, present.size());
  EXPECT_EQ(169u, mdbModuleCount());
  for (const char* absent : {"ethsubif_statistic", "ethaggsubif_statistic", "fdb"}) EXPECT_EQ(0u, present.count(absent));
  // hvs and queue stand twice: the second registration is a known name.
  EXPECT_EQ(2u, count("hvs"));
  EXPECT_EQ(2u, count("queue"));
  EXPECT_EQ(2u, stat(MDB_STAT_modAlreadyExists));
  EXPECT_EQ(1u, count("rfc5519"));
  EXPECT_EQ(1u, count("dhcp6"));
  EXPECT_EQ("qxopticaltransceiver", gCalled.front());
  EXPECT_EQ("rfc2575", gCalled.back());

  present = run({{"tgpif.ethsubifstatistics.enable", "true"},
                 {"tgpif.ethaggsubifstatistics.enable", "T"},
                 {"mam.mibcompatible.enable", "tRUE"}});
  EXPECT_EQ(172u, present.size());
  // Only t or T opens a closed gate; only a set value other than t or T closes an open one.
  for (const char* value : {"yes", "1", "", "on"}) {
    present = run({{"tgpif.ethsubifstatistics.enable", value}, {"vct.enable", value}});
    EXPECT_EQ(0u, present.count("ethsubif_statistic")) << value;
    EXPECT_EQ(0u, present.count("vct")) << value;
  }
  for (const char* value : {"False", "0", "Yes", "f"}) EXPECT_EQ(0u, run({{"acl.enable", value}}).count("acl"));
  EXPECT_EQ(1u, run({{"acl.enable", "Tomorrow"}}).count("acl"));
}

TEST_F(Gate, NestedStepsFollowTheirEnclosingGate) {
  auto present = run({{"mam.mibcompatible.enable", "true"}, {"mam.enable", "false"}});
  EXPECT_EQ(0u, present.count("mam"));
  EXPECT_EQ(0u, present.count("fdb"));
  present = run({{"lldp.enable", "false"}, {"lldp.vendortlv.enable", "true"}});
  for (const char* m : {"lldp", "lldppriv", "lldpdot1", "lldpdot3", "lldpmed", "lldpvendor"})
    EXPECT_EQ(0u, present.count(m)) << m;
  present = run({{"lldp.vendortlv.enable", "no"}});
  EXPECT_EQ(1u, present.count("lldpdot3"));
  EXPECT_EQ(0u, present.count("lldpvendor"));
  present = run({{"ipv6.enable", "false"}, {"ospfv3.enable", "true"}});
  for (const char* m : {"ipv6", "rfc2465", "ripng", "rfc5643", "ospfv3priv", "pim6", "dhcp6"})
    EXPECT_EQ(0u, present.count(m)) << m;
  EXPECT_EQ(1u, present.count("mirror"));  // the steps after the nested ones go on
  present = run({{"ospfv3.enable", "false"}});
  EXPECT_EQ(0u, present.count("rfc5643"));
  EXPECT_EQ(1u, present.count("pim6"));
}

TEST_F(Gate, CountedAndPairedGates) {
  auto present = run({{"dhcp6.server.enable", "false"}, {"dhcp6.relay.enable", "false"}, {"dhcp6.client.enable", "false"}});
  EXPECT_EQ(0u, present.count("dhcp6"));
  present = run({{"dhcp6.server.enable", "false"}, {"dhcp6.relay.enable", "false"}});
  EXPECT_EQ(1u, present.count("dhcp6"));
  EXPECT_EQ(1u, count("dhcp6"));

  run({{"igmp.enable", "false"}});  // mld unset: the second gate runs them, once
  EXPECT_EQ(1u, count("rfc5519vpn"));
  EXPECT_EQ(1u, count("rfc5519"));
  run({{"igmp.enable", "true"}, {"mld.enable", "true"}});
  EXPECT_EQ(1u, count("rfc5519"));
  run({{"igmp.enable", "false"}, {"mld.enable", "false"}});
  EXPECT_EQ(0u, count("rfc5519"));
}

TEST_F(Gate, TheBuiltModulesAndTheDebugLines) {
  // The modules built so far, through the real init functions.
  mdbInitSequenceRun(gMdbInitSequence, gMdbInitSequenceLength, mdbInitCallDefault);
  EXPECT_EQ(0, mdbModuleSearch("clock"));
  EXPECT_EQ(0, mdbModuleSearch("mirror"));
  // clock, mirror, the nine SNMP modules, etherlike, rfc1213 (its interface group), rfc2233, if, methif,
  // ethif, ethaggif and the two sub-interface tables
  EXPECT_EQ(8u + 46u + 218u + 39u + 150u + 23u + 31u + 88u + 19u + 97u + 9u + 9u, mdbObjectCount());
  MdbModuleDesc module{};
  ASSERT_EQ(0, mdbModuleGet("mirror", &module));
  EXPECT_EQ(164u, module.registrationId);

  mdbDictDestroy();
  mdbDictInit();
  silOptSet("clock.enable", "false");
  char path[] = "/tmp/mdbtest-gate-log-XXXXXX";
  close(mkstemp(path));
  loggingOpen(path);
  gMdbInfo.debugMask = MDB_DEBUG_STARTUP;
  mdbInitSequenceRun(gMdbInitSequence, gMdbInitSequenceLength, mdbInitCallDefault);
  gMdbInfo.debugMask = 0;
  loggingOpen(nullptr);
  EXPECT_EQ(-1, mdbModuleSearch("clock"));
  EXPECT_EQ(46u + 218u + 39u + 150u + 23u + 31u + 88u + 19u + 97u + 9u + 9u, mdbObjectCount());
  std::ifstream in(path);
  std::string all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_NE(std::string::npos, all.find("MDB init mirrorMibInit MIB"));
  EXPECT_EQ(std::string::npos, all.find("MDB init clockMibInit MIB"));
  unlink(path);

  // A terminate function removes its module.
  const MdbObjectBinding none[] = {{nullptr, nullptr}};
  ASSERT_EQ(0, mdbModuleRegister("rmon", none));
  EXPECT_EQ(0, rmonMibTerminate());
  EXPECT_EQ(-1, mdbModuleSearch("rmon"));
}

}  // namespace
