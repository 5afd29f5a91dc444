// Process frame: name, signal handling.
#ifndef PLATFORM_PROC_H
#define PLATFORM_PROC_H

#include <cstdint>

// Names the process (as ps shows it) and records the name for log lines. 0.
int procShellInit(const char* name, uint32_t arg1, uint32_t arg2);
const char* procShellName(void);
// Termination signals end the process at once with status 0 (it has no
// orderly stop); SIGHUP is ignored.
void patchSignalHandler(void);

#endif
