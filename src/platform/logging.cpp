// Logging substitute: one line per message, with time, module id and severity.
#include "platform/logging.h"
#include "platform/proc.h"
#include "platform/sil.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>

namespace {
std::mutex gLogLock;
FILE* gLogFile = nullptr;  // null: standard error
std::atomic<uint32_t> gLines{0};
std::atomic<int> gTrapLogRegistered{0};

const char* severityName(uint32_t severity) {
  static const char* const names[] = {"emerg", "alert", "crit", "err", "warning", "notice", "info", "debug"};
  return severity < 8 ? names[severity] : "debug";
}

void emit(const char* kind, uint32_t moduleId, uint32_t severity, const char* format, va_list args) {
  char text[2048];
  vsnprintf(text, sizeof text, format, args);
  // Messages carry their own "\r\n"; a log line ends in one "\n".
  size_t n = strlen(text);
  while (n > 0 && (text[n - 1] == '\n' || text[n - 1] == '\r')) text[--n] = '\0';
  uint64_t ms = silGetUpTime1ms();
  std::lock_guard guard(gLogLock);
  FILE* out = gLogFile != nullptr ? gLogFile : stderr;
  fprintf(out, "%llu.%03llu %s %s %u %s: %s\n", static_cast<unsigned long long>(ms / 1000),
          static_cast<unsigned long long>(ms % 1000), procShellName(), kind, moduleId, severityName(severity), text);
  fflush(out);
  gLines.fetch_add(1, std::memory_order_relaxed);
}
}  // namespace

void loggingDebugOutput(uint32_t moduleId, uint32_t severity, uint32_t, const char* format, ...) {
  va_list args;
  va_start(args, format);
  emit("debug", moduleId, severity, format, args);
  va_end(args);
}

void loggingLogOutput(uint32_t moduleId, uint32_t severity, uint32_t, const char* format, ...) {
  va_list args;
  va_start(args, format);
  emit("log", moduleId, severity, format, args);
  va_end(args);
}

int loggingOpen(const char* path) {
  std::lock_guard guard(gLogLock);
  if (gLogFile != nullptr) {
    fclose(gLogFile);
    gLogFile = nullptr;
  }
  if (path == nullptr || *path == '\0') return 0;
  gLogFile = fopen(path, "a");
  return gLogFile != nullptr ? 0 : -1;
}

uint32_t loggingLineCount(void) { return gLines.load(std::memory_order_relaxed); }

int loggingSnmpTrapLogRegister(void) {
  gTrapLogRegistered.store(1, std::memory_order_relaxed);
  return 0;
}

int loggingSnmpTrapLogRegistered(void) { return gTrapLogRegistered.load(std::memory_order_relaxed); }
