// The daemon's main, shared by the daemon and by test daemons that add modules of their own.
#include "mdb/mdb_dict.h"
#include "platform/logging.h"
#include "platform/proc.h"
#include "platform/sil.h"

#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {
void usage() {
  fprintf(stderr,
          "usage: mdb [--options FILE] [-o key=value]...\n"
          "  --options FILE   option store (key=value lines); default: $MDB_OPTIONS\n"
          "  -o key=value     set one option (overrides the store)\n"
          "environment: MDB_RUNDIR (socket directory, default /tmp), MDB_LOG_FILE\n");
}
}  // namespace

int mdbProcessMain(int argc, char** argv) {
  if (silOptInit(&argc, argv) != 0) {
    usage();
    return 2;
  }
  if (argc > 1) {
    usage();
    return strcmp(argv[1], "--help") == 0 || strcmp(argv[1], "-h") == 0 ? 0 : 2;
  }
  const char* logFile = getenv("MDB_LOG_FILE");
  if (logFile != nullptr) loggingOpen(logFile);

  silCatchSegFault();
  signal(SIGPIPE, SIG_IGN);
  patchSignalHandler();
  procShellInit("mdb", 0, 0);
  if (mdbOptInit() != 0) return -1;
  for (;;) sleep(10);
}
