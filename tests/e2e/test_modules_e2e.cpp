// End to end: the real daemon with its default device: mirror walked and
// written with mdbctl, and the configuration saved and found again after a
// restart.
#include "daemon.h"

#include <sstream>

using namespace mdbtest;

namespace {

size_t lines(const std::string& text) {
  size_t n = 0;
  for (char c : text) n += c == '\n';
  return n;
}

TEST(DefaultDevice, MirrorWalksAndConfigurationSurvivesARestart) {
  char ram[] = "/tmp/mdbtest-ram-XXXXXX";
  ASSERT_NE(nullptr, mkdtemp(ram));
  const std::vector<std::string> args = {"-o", "mdb.system.enable=true", "-o", std::string("mdb.ramdir=") + ram};
  {
    TestDaemon d;
    ASSERT_TRUE(d.start(MDB_DAEMON_PATH, args));
    // 7 capabilities, the 13 columns of group 1, the 4 of interface 1.
    int status = -1;
    std::string walk = runMdbctl(d, "--json walk mirror", &status);
    EXPECT_EQ(0, status);
    EXPECT_EQ(24u, lines(walk)) << walk;
    EXPECT_NE(std::string::npos, walk.find(R"({"rc":0,"name":"mirror:mirrorGroupMirrorToPort","index":[1],"type":"OCTET_STRING","value":"1/0/24","hex":"312f302f3234"})"));
    runMdbctl(d, "set mirror:mirrorGroupVlan 1 100", &status);
    EXPECT_EQ(0, status);
    EXPECT_EQ("{\"rc\":81920008,\"error\":\"mdbErrorInvalidRange\"}\n", runMdbctl(d, "--json set mirror:mirrorGroupVlan 1 4095"));
    runMdbctl(d, "set mirror:mirrorVlanStatus 10 2", &status);  // a new row by createRequest
    EXPECT_EQ(0, status);
    runMdbctl(d, "set system:systemHostName 0 core-switch-3", &status);
    EXPECT_EQ(0, status);
    runMdbctl(d, "set system:systemWriteConfig 0 1", &status);
    EXPECT_EQ(0, status);
    runMdbctl(d, "set system:systemHostName 0 not-saved", &status);
  }
  {
    TestDaemon d;
    ASSERT_TRUE(d.start(MDB_DAEMON_PATH, args));
    EXPECT_EQ("system:systemHostName.0 = OCTET_STRING: \"core-switch-3\"\n", runMdbctl(d, "get system:systemHostName 0"));
    EXPECT_EQ("mirror:mirrorGroupVlan.1 = Guage: 100\n", runMdbctl(d, "get mirror:mirrorGroupVlan 1"));
    EXPECT_EQ("mirror:mirrorVlanStatus.10 = INTEGER: 3\n", runMdbctl(d, "get mirror:mirrorVlanStatus 10"));
    // Erasing removes the start file: the next start is the default device again.
    int status = -1;
    runMdbctl(d, "set system:systemEraseConfig 0 1", &status);
    EXPECT_EQ(0, status);
  }
  {
    TestDaemon d;
    ASSERT_TRUE(d.start(MDB_DAEMON_PATH, args));
    EXPECT_EQ("system:systemHostName.0 = OCTET_STRING: \"switch\"\n", runMdbctl(d, "get system:systemHostName 0"));
    // Without the option, the system module is not there.
  }
  {
    TestDaemon d;
    ASSERT_TRUE(d.start(MDB_DAEMON_PATH, {"-o", std::string("mdb.ramdir=") + ram}));
    EXPECT_EQ("{\"rc\":81920011,\"error\":\"mdbErrorNoSuchObject\"}\n", runMdbctl(d, "--json get system:systemHostName 0"));
  }
  int ignored = system((std::string("rm -rf ") + ram).c_str());
  (void)ignored;
}

}  // namespace
