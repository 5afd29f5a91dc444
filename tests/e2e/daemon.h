// Starts a daemon in a private run directory and stops it (only it, by its
// process id) at the end of the test.
#ifndef MDB_TEST_DAEMON_H
#define MDB_TEST_DAEMON_H

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "mdb/mdb_client.h"
#include "mdb/mdb_cmd.h"

namespace mdbtest {

class TestDaemon {
 public:
  // Starts `binary` with `args` and waits until all 25 sockets accept.
  bool start(const char* binary, std::vector<std::string> args = {}) {
    char dir[] = "/tmp/mdbtest-run-XXXXXX";
    if (mkdtemp(dir) == nullptr) return false;
    runDir = dir;
    pid = fork();
    if (pid == 0) {
      prctl(PR_SET_PDEATHSIG, SIGTERM);  // never outlive the test
      setenv("MDB_RUNDIR", runDir.c_str(), 1);
      std::string log = runDir + "/daemon.log";
      FILE* f = freopen(log.c_str(), "w", stderr);
      (void)f;
      std::vector<char*> argv{const_cast<char*>(binary)};
      for (auto& a : args) argv.push_back(a.data());
      argv.push_back(nullptr);
      execv(binary, argv.data());
      _exit(127);
    }
    for (int attempt = 0; attempt < 500; attempt++) {
      MdbClient* c = mdbClientOpen(socketPath(24).c_str());
      if (c != nullptr) {
        mdbClientClose(c);
        for (uint32_t i = 0; i < MDB_CMD_SOCKETS; i++)
          if (access(socketPath(i).c_str(), F_OK) != 0) return false;
        return true;
      }
      int status;
      if (waitpid(pid, &status, WNOHANG) == pid) {
        pid = -1;
        return false;
      }
      usleep(10000);
    }
    return false;
  }

  std::string socketPath(uint32_t socket) const {
    char name[32];
    if (socket < 16) snprintf(name, sizeof name, "mdbcmd-r%u.socket", socket);
    else if (socket < 24) snprintf(name, sizeof name, "mdbcmd-w%u.socket", socket - 16);
    else snprintf(name, sizeof name, "mdbcmd.socket");
    return runDir + "/" + name;
  }

  bool alive() const { return pid > 0 && kill(pid, 0) == 0; }

  void stop() {
    if (pid > 0) {
      kill(pid, SIGTERM);
      int status;
      waitpid(pid, &status, 0);
      pid = -1;
    }
    if (!runDir.empty()) {
      std::string cmd = "rm -rf '" + runDir + "'";
      int ignored = system(cmd.c_str());
      (void)ignored;
      runDir.clear();
    }
  }

  ~TestDaemon() { stop(); }

  pid_t pid = -1;
  std::string runDir;
};

// Runs mdbctl against the daemon (in `cwd` if given): its output, standard
// error included, and its exit status.
inline std::string runMdbctl(const TestDaemon& d, const std::string& args, int* status = nullptr,
                             const char* cwd = nullptr) {
  std::string cmd = std::string(cwd != nullptr ? "cd '" + std::string(cwd) + "' && " : "") + "MDB_RUNDIR='" +
                    d.runDir + "' " MDBCTL_PATH " " + args + " 2>&1";
  FILE* p = popen(cmd.c_str(), "r");
  std::string out;
  char buf[4096];
  size_t n;
  while ((n = fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
  int s = pclose(p);
  if (status != nullptr) *status = WIFEXITED(s) ? WEXITSTATUS(s) : -1;
  return out;
}

}  // namespace mdbtest

#endif
