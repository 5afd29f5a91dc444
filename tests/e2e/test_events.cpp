// End to end: a logged write on a running daemon brings one change event, 10
// seconds later, to `mdbctl events`; plain writes bring none.
#include "daemon.h"

#include <dirent.h>

#include <chrono>
#include <thread>

using namespace mdbtest;

namespace {

int busListeners(const std::string& dir) {
  int n = 0;
  DIR* d = opendir(dir.c_str());
  if (d == nullptr) return 0;
  while (dirent* e = readdir(d)) n += strncmp(e->d_name, "mdbbus-90-", 10) == 0;
  closedir(d);
  return n;
}

int ctl(const TestDaemon& d, const std::string& args) {
  std::string cmd = "MDB_RUNDIR='" + d.runDir + "' " MDBCTL_PATH " " + args + " >/dev/null 2>&1";
  int status = system(cmd.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(Events, LoggedWriteBringsOneEventTenSecondsLater) {
  TestDaemon daemon;
  ASSERT_TRUE(daemon.start(MDB_TESTD_PATH));
  EXPECT_EQ(0, access((daemon.runDir + "/mdbtimer.socket").c_str(), F_OK));

  std::vector<std::string> lines;
  std::vector<std::chrono::steady_clock::time_point> arrivals;
  int status = -1;
  std::thread listener([&] {
    std::string cmd = "MDB_RUNDIR='" + daemon.runDir + "' " MDBCTL_PATH " --json events --timeout 14";
    FILE* p = popen(cmd.c_str(), "r");
    char line[512];
    while (fgets(line, sizeof line, p) != nullptr) {
      arrivals.push_back(std::chrono::steady_clock::now());
      lines.emplace_back(line);
    }
    int s = pclose(p);
    status = WIFEXITED(s) ? WEXITSTATUS(s) : -1;
  });
  for (int i = 0; i < 500 && busListeners(daemon.runDir) == 0; i++) usleep(10000);
  ASSERT_EQ(1, busListeners(daemon.runDir));

  EXPECT_EQ(0, ctl(daemon, "set e2e:int 0 5"));  // not a logged write
  auto firstLogged = std::chrono::steady_clock::now();
  EXPECT_EQ(0, ctl(daemon, "set e2e:int 0 6 --options 9"));
  sleep(1);
  EXPECT_EQ(0, ctl(daemon, "set e2e:int 0 7 --options 17"));  // within the window: no second event
  listener.join();

  EXPECT_EQ(1, status);  // the timeout ended it
  ASSERT_EQ(1u, lines.size());  // one event for the burst
  EXPECT_EQ(0u, lines[0].find("{\"type\":357,\"length\":32,\"time\":"));
  double delay = std::chrono::duration<double>(arrivals[0] - firstLogged).count();
  EXPECT_GT(delay, 9.5);
  EXPECT_LT(delay, 11.5);
  EXPECT_EQ(0, busListeners(daemon.runDir));  // mdbctl removed its listener
}

}  // namespace
