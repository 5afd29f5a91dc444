// End to end: the daemon killed at any moment while it saves the start file
// in a loop leaves the old file or the new one, whole, never a part of one.
#include "daemon.h"

#include <atomic>
#include <set>
#include <fstream>
#include <random>
#include <sstream>
#include <thread>

using namespace mdbtest;

namespace {

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

TEST(CrashSafety, StartFileIsAlwaysWholeAfterSigkill) {
  char ram[] = "/tmp/mdbtest-crash-XXXXXX";
  ASSERT_NE(nullptr, mkdtemp(ram));
  const std::string start = std::string(ram) + "/start.cfg";
  const std::vector<std::string> args = {"-o", "mdb.system.enable=true", "-o", std::string("mdb.ramdir=") + ram};
  std::mt19937 random(12345);
  std::set<std::string> written;
  for (int round = 0; round < 6; round++) {
    TestDaemon d;
    ASSERT_TRUE(d.start(MDB_DAEMON_PATH, args));
    // A save the last kill cut short left no temporary file behind once started again.
    std::string anyLeft = "ls " + std::string(ram) + " | grep -q '\\.tmp\\.'";
    EXPECT_NE(0, system(anyLeft.c_str())) << "a temporary file of a save remains";
    if (round > 0) {
      // What the last killed daemon left loads: the host name is one it saved.
      std::string name = runMdbctl(d, "--json get system:systemHostName 0");
      bool known = false;
      for (const std::string& w : written) known = known || name.find("\"value\":\"" + w + "\"") != std::string::npos;
      EXPECT_TRUE(known) << name;
    }
    std::atomic<bool> stop{false};
    std::thread writer([&, round] {
      MdbClient* c = mdbClientOpen(d.socketPath(round % MDB_CMD_SOCKETS).c_str());
      const uint32_t zero[] = {0}, one = 1;
      for (int i = 0; c != nullptr && !stop.load(); i++) {
        // Long values make each save take a while.
        std::string name = "host-" + std::to_string(round) + "-" + std::to_string(i) + std::string(100, 'x');
        if (mdbClientSetApi(c, "system:systemHostName", zero, 1, name.data(), static_cast<uint32_t>(name.size()),
                            nullptr, 1) != 0)
          break;
        written.insert(name);  // the save in flight when the kill comes may have landed
        if (mdbClientSetApi(c, "system:systemWriteConfig", zero, 1, &one, 4, nullptr, 1) != 0) break;
      }
      mdbClientClose(c);
    });
    usleep(std::uniform_int_distribution<int>(20000, 150000)(random));
    kill(d.pid, SIGKILL);
    stop = true;
    writer.join();
    int status;
    waitpid(d.pid, &status, 0);
    d.pid = -1;
    if (access(start.c_str(), F_OK) != 0) continue;  // killed before the first save
    std::string text = readFile(start);
    EXPECT_EQ(0u, text.rfind("mdb-store 1\n", 0)) << "round " << round;
    ASSERT_GE(text.size(), 4u);
    EXPECT_EQ("end\n", text.substr(text.size() - 4)) << "round " << round;
  }
  int ignored = system((std::string("rm -rf ") + ram).c_str());
  (void)ignored;
}

}  // namespace
