// Process frame: name and signal handlers.
#include "platform/proc.h"
#include "platform/sil.h"

#include <execinfo.h>
#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace {
char gProcName[32] = "mdb";

void writeText(const char* text) {
  ssize_t ignored = write(STDERR_FILENO, text, strlen(text));
  (void)ignored;
}

void fatalSignal(int sig) {
  // Only async-signal-safe calls here.
  writeText(gProcName);
  writeText(": fatal signal ");
  char num[8];
  int n = 0;
  int v = sig;
  char rev[8];
  do {
    rev[n++] = static_cast<char>('0' + v % 10);
    v /= 10;
  } while (v != 0 && n < 7);
  for (int i = 0; i < n; i++) num[i] = rev[n - 1 - i];
  num[n] = '\0';
  writeText(num);
  writeText(", backtrace:\n");
  void* frames[64];
  int count = backtrace(frames, 64);
  backtrace_symbols_fd(frames, count, STDERR_FILENO);
  signal(sig, SIG_DFL);
  raise(sig);
}

void quitSignal(int) { _exit(0); }
}  // namespace

void silCatchSegFault(void) {
  // backtrace() loads libgcc on first use, which is not safe inside the handler.
  void* warm[1];
  backtrace(warm, 1);
  struct sigaction sa;
  memset(&sa, 0, sizeof sa);
  sa.sa_handler = fatalSignal;
  sigemptyset(&sa.sa_mask);
  sa.sa_flags = SA_RESETHAND;
  for (int sig : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) sigaction(sig, &sa, nullptr);
}

void patchSignalHandler(void) {
  signal(SIGHUP, SIG_IGN);
  signal(SIGTERM, quitSignal);
  signal(SIGINT, quitSignal);
}

int procShellInit(const char* name, uint32_t, uint32_t) {
  if (name != nullptr) {
    snprintf(gProcName, sizeof gProcName, "%s", name);
    prctl(PR_SET_NAME, gProcName, 0, 0, 0);
  }
  return 0;
}

const char* procShellName(void) { return gProcName; }
