// End to end: the mdbctl contract that scripts rely on (JSON lines, value
// forms, exit status), against a daemon with the test module "e2e".
#include "daemon.h"

#include <sstream>

using namespace mdbtest;

namespace {

struct CtlRun {
  int status;
  std::string out;
  std::vector<std::string> lines() const {
    std::vector<std::string> v;
    std::istringstream in(out);
    for (std::string l; std::getline(in, l);) v.push_back(l);
    return v;
  }
};

class Mdbctl : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(daemon.start(MDB_TESTD_PATH)); }

  CtlRun run(const std::string& args) {
    std::string cmd = "MDB_RUNDIR='" + daemon.runDir + "' " MDBCTL_PATH " " + args + " 2>/dev/null";
    FILE* p = popen(cmd.c_str(), "r");
    CtlRun r{-1, ""};
    if (p == nullptr) return r;
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof buf, p)) > 0) r.out.append(buf, n);
    int status = pclose(p);
    r.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return r;
  }
  std::string json(const std::string& args) {
    CtlRun r = run("--json " + args);
    return r.out.empty() ? "" : r.out.substr(0, r.out.size() - 1);
  }

  TestDaemon daemon;
};

TEST_F(Mdbctl, ReadsAndWritesByType) {
  EXPECT_EQ(R"({"rc":0,"name":"e2e:int","index":[0],"type":"INTEGER","value":7})", json("get e2e:int 0"));
  EXPECT_EQ(0, run("set e2e:int 0 0x20").status);  // hex accepted on input
  EXPECT_EQ("e2e:int.0 = INTEGER: 32\n", run("get e2e:int 0").out);
  EXPECT_EQ(R"({"rc":0,"name":"e2e:alias","index":[0],"type":"INTEGER","value":32})", json("get e2e:alias 0"));

  EXPECT_EQ(0, run("set e2e:ip 0 10.1.2.3").status);
  EXPECT_EQ(R"({"rc":0,"name":"e2e:ip","index":[0],"type":"IpAddress","value":"10.1.2.3"})", json("get e2e:ip 0"));
  EXPECT_EQ(0, run("set e2e:mac 0 AA:bb:cc:00:11:22").status);
  EXPECT_EQ(R"({"rc":0,"name":"e2e:mac","index":[0],"type":"MACAddress","value":"aa:bb:cc:00:11:22"})",
            json("get e2e:mac 0"));
  EXPECT_EQ(0, run("set e2e:oid 0 1.3.6.1.2.1").status);
  EXPECT_EQ(R"({"rc":0,"name":"e2e:oid","index":[0],"type":"OBJECT_IDENTIFIER","value":"1.3.6.1.2.1"})",
            json("get e2e:oid 0"));
  EXPECT_EQ(0, run("set e2e:bridge 0 1000/00:11:22:33:44:55").status);
  EXPECT_EQ(R"({"rc":0,"name":"e2e:bridge","index":[0],"type":"BridgeId","value":"1000/00:11:22:33:44:55"})",
            json("get e2e:bridge 0"));
  EXPECT_EQ(R"({"rc":0,"name":"e2e:c64","index":[0],"type":"Counter64","value":4886718345})", json("get e2e:c64 0"));
  EXPECT_EQ(R"({"rc":0,"name":"e2e:counter","index":[0],"type":"Counter","value":4000000000})",
            json("get e2e:counter 0"));

  // Octet strings: text and hex in JSON, escapes for what is not text.
  EXPECT_EQ(0, run("set e2e:text 0 'say \"hi\"'").status);
  EXPECT_EQ(R"({"rc":0,"name":"e2e:text","index":[0],"type":"OCTET_STRING","value":"say \"hi\"","hex":"7361792022686922"})",
            json("get e2e:text 0"));
  EXPECT_EQ(0, run("set --hex e2e:text 0 00ff41").status);
  EXPECT_EQ(R"({"rc":0,"name":"e2e:text","index":[0],"type":"OCTET_STRING","value":"\u0000\u00ffA","hex":"00ff41"})",
            json("get e2e:text 0"));
  EXPECT_EQ("e2e:text.0 = OCTET_STRING: 0x00ff41\n", run("get e2e:text 0").out);

  // A walk step, and a string index written as sub-ids.
  EXPECT_EQ(R"({"rc":0,"name":"e2e:rowValue","index":[6],"type":"Guage","value":60})", json("next e2e:rowValue 5"));
  EXPECT_EQ(R"({"rc":0,"name":"e2e:nameValue","index":[5,97,108,112,104,97],"type":"INTEGER","value":22})",
            json("get e2e:nameValue 5.97.108.112.104.97"));
  EXPECT_EQ(R"({"rc":0,"name":"e2e:rowValue","index":[1],"type":"Guage","value":10})", json("next e2e:rowValue"));
}

TEST_F(Mdbctl, ErrorsAndExitStatus) {
  CtlRun r = run("--json set e2e:int 0 101");
  EXPECT_EQ(1, r.status);
  EXPECT_EQ("{\"rc\":81920008,\"error\":\"mdbErrorInvalidRange\"}\n", r.out);
  EXPECT_EQ("{\"rc\":81920011,\"error\":\"mdbErrorNoSuchObject\"}", json("get e2e:none 0"));
  EXPECT_EQ("{\"rc\":81920020,\"error\":\"mdbErrorNotWritable\"}", json("set e2e:counter 0 5"));
  EXPECT_EQ("{\"rc\":81920010,\"error\":\"mdbErrorNoSuchInstance\"}", json("get e2e:rowValue 65"));
  EXPECT_EQ(1, run("get e2e:rowValue 65").status);
  EXPECT_EQ(0, run("validate e2e:int 0 50").status);
  EXPECT_EQ(1, run("validate e2e:int 0 500").status);
  EXPECT_EQ(0, run("commit e2e:int 0 500").status);  // a commit alone does not validate
  EXPECT_EQ(0, run("nvmset e2e:int 0 9").status);
  EXPECT_EQ(0, run("set e2e:int 0 99 --options 0").status);  // validation only
  EXPECT_EQ("e2e:int.0 = INTEGER: 9\n", run("get e2e:int 0").out);

  EXPECT_EQ(2, run("set e2e:int 0 abc").status);  // not a value of its type
  EXPECT_EQ(2, run("set e2e:ip 0 300.1.1.1").status);
  EXPECT_EQ(2, run("get e2e:int 1..2").status);
  EXPECT_EQ(2, run("frobnicate").status);
  EXPECT_EQ(2, run("get").status);
  EXPECT_EQ(2, run("-s /nonexistent/socket get e2e:int 0").status);
}

TEST_F(Mdbctl, WalksAndQueries) {
  CtlRun r = run("--json walk e2e:nameKey");
  EXPECT_EQ(0, r.status);
  ASSERT_EQ(3u, r.lines().size());
  EXPECT_EQ(R"({"rc":0,"name":"e2e:nameKey","index":[4,98,101,116,97],"type":"OCTET_STRING","value":"beta","hex":"62657461"})",
            r.lines()[0]);
  // The whole module: 9 accessible scalars, 3 columns of 64 rows, 2 of 3.
  r = run("--json walk e2e");
  EXPECT_EQ(0, r.status);
  EXPECT_EQ(9u + 3 * 64 + 2 * 3, r.lines().size());
  EXPECT_EQ(std::string::npos, r.out.find("e2e:hidden"));
  // People get aligned columns.
  r = run("walk e2e:nameValue");
  EXPECT_EQ("e2e:nameValue  4.98.101.116.97      INTEGER: 11\n"
            "e2e:nameValue  5.97.108.112.104.97  INTEGER: 22\n"
            "e2e:nameValue  5.103.97.109.109.97  INTEGER: 33\n",
            r.out);
  EXPECT_EQ(1, run("walk e2e:none").status);

  EXPECT_EQ(R"({"rc":0,"localId":12,"subId":3,"size":32,"min":0,"max":0,"type":"OCTET_STRING","oid":"1.3.6.1.4.1.47391.2.9990.2.1.3","oidLen":12,"indexCountMin":1,"indexCountMax":1,"indexNames":["e2e:rowIndex"]})",
            json("info e2e:rowName"));
  EXPECT_EQ(R"({"rc":0,"name":"e2e:rowName","oidLen":12,"indexCountMax":1,"type":"OCTET_STRING"})",
            json("name 1.3.6.1.4.1.47391.2.9990.2.1.3.5"));
  EXPECT_EQ(R"({"rc":0,"name":"e2e:text"})", json("next-name e2e:int"));
  EXPECT_EQ("{\"rc\":81920011,\"error\":\"mdbErrorNoSuchObject\"}", json("next-name e2e:nameValue"));
  EXPECT_EQ(R"({"rc":0,"name":"e2e","lastChange":0,"registrationId":77})", json("module e2e"));
  EXPECT_EQ(R"({"rc":0,"value":"MDB_VL3.00.00.00"})", json("scalar-get 5"));
  EXPECT_EQ(R"({"rc":0})", json("sysstate 6"));
  EXPECT_EQ(R"({"rc":0,"value":2})", json("scalar-get 4"));
  EXPECT_EQ(R"({"rc":0})", json("scalar-set 4 1"));
  EXPECT_EQ("1\n", run("scalar-get 4").out);
  EXPECT_EQ(1, run("scalar-get 3").status);
  EXPECT_EQ(0, run("snmp-init").status);
}

}  // namespace
