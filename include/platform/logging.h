// Logging service: debug lines and log lines with the module id and severity.
// Our substitute writes to standard error, or to the file named by the option
// "mdb.logfile" / the environment variable MDB_LOG_FILE (see loggingOpen).
#ifndef PLATFORM_LOGGING_H
#define PLATFORM_LOGGING_H

#include <cstdint>

// Severities, as syslog numbers them.
enum {
  LOGGING_EMERG = 0, LOGGING_ALERT = 1, LOGGING_CRIT = 2, LOGGING_ERR = 3,
  LOGGING_WARNING = 4, LOGGING_NOTICE = 5, LOGGING_INFO = 6, LOGGING_DEBUG = 7
};

// A debug line: the format usually starts "%s:%d: " for the function and line.
void loggingDebugOutput(uint32_t moduleId, uint32_t severity, uint32_t flags, const char* format, ...)
    __attribute__((format(printf, 4, 5)));
// A log line (the request journal and the registration failures).
void loggingLogOutput(uint32_t moduleId, uint32_t severity, uint32_t flags, const char* format, ...)
    __attribute__((format(printf, 4, 5)));
// Where the lines go: a path (appended to), or null for standard error.
// 0, or -1 if the file cannot be opened (the lines then stay on standard error).
int loggingOpen(const char* path);
// Count of lines written so far (for tests).
uint32_t loggingLineCount(void);
// Registers the process as a source of SNMP trap log lines; our substitute
// records that it was called.
int loggingSnmpTrapLogRegister(void);
int loggingSnmpTrapLogRegistered(void);

#endif
