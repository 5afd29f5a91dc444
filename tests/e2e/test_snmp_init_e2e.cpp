// End to end: registration with the SNMP agent on the real daemon, through
// mdbctl and through the client library's paging.
#include "daemon.h"

#include <regex>

using namespace mdbtest;

namespace {

size_t occurrences(const std::string& text, const std::string& what) {
  size_t n = 0;
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) n++;
  return n;
}

int collect(void* arg, const MdbClientSnmpRow* row) {
  static_cast<std::vector<std::string>*>(arg)->push_back(row->name);
  return 0;
}

TEST(SnmpInitE2e, SnmpInitShowsTheCountsAndTheWholeListUnderTheRewrittenEnterprise) {
  char ram[] = "/tmp/mdbtest-ram-XXXXXX";
  ASSERT_NE(nullptr, mkdtemp(ram));
  TestDaemon d;
  ASSERT_TRUE(d.start(MDB_DAEMON_PATH, {"-o", "mdb.system.enable=true", "-o", std::string("mdb.ramdir=") + ram, "-o",
                                        "snmp.enterpriseoid=12345"}));
  int status = -1;
  std::string counts = runMdbctl(d, "snmp-init", &status);
  EXPECT_EQ(0, status);
  std::smatch m;
  ASSERT_TRUE(std::regex_match(counts, m, std::regex("snmp-init: ok\n  visible objects  ([0-9]+)\n  hidden objects   0\n"
                                                     "  failed objects   0\n  sysORTable rows  135\n")))
      << counts;
  const size_t visible = std::stoul(m[1]);
  EXPECT_GT(visible, 20u);

  // The list: every visible object of system, clock and mirror, and the 135 rows,
  // each under the enterprise number of the option; a second run adds nothing.
  std::string json = runMdbctl(d, "--json snmp-init", &status);
  EXPECT_EQ(0, status);
  EXPECT_EQ(0u, json.find("{\"rc\":0,\"visible\":" + std::to_string(visible) +
                          ",\"hidden\":0,\"failed\":0,\"sysORRows\":135,\"objects\":[{\"name\":"))
      << json;
  EXPECT_EQ(visible, occurrences(json, "{\"name\":"));
  EXPECT_EQ(135u, occurrences(json, "{\"description\":"));
  EXPECT_EQ(0u, occurrences(json, ".47391."));
  EXPECT_NE(std::string::npos, json.find(R"({"description":"MIRROR-MIB","oid":"1.3.6.1.4.1.12345.2.2611"})"));
  EXPECT_NE(std::string::npos, json.find(R"({"description":"LLDP-MIB","oid":"1.0.8802.1.1.2"})"));
  EXPECT_NE(std::string::npos, json.find(R"({"description":"RFC 1213-SYSTEM-MIB","oid":"1.3.6.1.2.1.1"})"));
  // The agent has an object under the OID that the descriptor query gives.
  std::string info = runMdbctl(d, "--json info mirror:mirrorGroupMirrorToPort");
  ASSERT_TRUE(std::regex_search(info, m, std::regex("\"oid\":\"([0-9.]+)\""))) << info;
  EXPECT_NE(std::string::npos, json.find("{\"name\":\"mirror:mirrorGroupMirrorToPort\",\"oid\":\"" + m[1].str() +
                                         "\",\"type\":\"OCTET_STRING\",\"access\":3,\"indexCountMax\":1}"))
      << m[1];
  EXPECT_EQ(json, runMdbctl(d, "--json snmp-init"));

  // The client library reads the same list in pages of any size.
  MdbClient* client = mdbClientOpen(d.socketPath(3).c_str());
  ASSERT_NE(nullptr, client);
  std::vector<std::string> small, whole;
  uint32_t count = 0;
  EXPECT_EQ(0u, mdbClientSnmpList(client, MDB_SNMP_LIST_OBJECTS, 7, collect, &small, &count));
  EXPECT_EQ(visible, count);
  EXPECT_EQ(0u, mdbClientSnmpList(client, MDB_SNMP_LIST_OBJECTS, 0, collect, &whole, nullptr));
  EXPECT_EQ(whole, small);
  EXPECT_EQ(0u, mdbClientSnmpInit(client));  // the plain call still works
  uint32_t total = 0;
  EXPECT_EQ(0u, mdbClientSnmpListPage(client, MDB_SNMP_LIST_SYSOR, 130, 0, nullptr, nullptr, &total, &count));
  EXPECT_EQ(135u, total);
  EXPECT_EQ(5u, count);
  mdbClientClose(client);

  // The daemon writes the exports; a relative path is taken from mdbctl's directory.
  const std::string tree = std::string(ram) + "/tree.txt", all = std::string(ram) + "/all.txt";
  EXPECT_EQ("export-tree: wrote " + tree + "\n", runMdbctl(d, "export-tree tree.txt", &status, ram));
  EXPECT_EQ(0, status);
  EXPECT_EQ("{\"rc\":0,\"file\":\"" + all + "\"}\n", runMdbctl(d, "--json show-all " + all, &status));
  EXPECT_EQ(0, status);
  struct stat st;
  EXPECT_TRUE(stat(tree.c_str(), &st) == 0 && st.st_size > 0);
  EXPECT_TRUE(stat(all.c_str(), &st) == 0 && st.st_size > 0);
  runMdbctl(d, "show-all", &status);
  EXPECT_EQ(2, status);
  d.stop();
  int ignored = system((std::string("rm -rf ") + ram).c_str());
  (void)ignored;
}

}  // namespace
