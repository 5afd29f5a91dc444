// System layer: options, clock, memory, tasks, semaphores, thread error number.
// This is our own substitute for the switch's system interface library; a
// product build links the real one in its place.
#ifndef PLATFORM_SIL_H
#define PLATFORM_SIL_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// ---------------------------------------------------------------- options
// The option store: a "key=value" file (named by --options FILE or the
// environment variable MDB_OPTIONS) plus "-o key=value" overrides from the
// command line. With no store every option is unset. A key given with the
// empty value ("-o key=") is set, to the empty text.

// Parse the command line of a program: "--options FILE", "--options=FILE",
// "-o key=value" (repeatable). Arguments it does not know are left alone and
// counted in the result; recognised ones are removed from argv (argc updated).
// Returns 0, or -1 (with a message on standard error) for an unreadable file
// or a malformed override.
int silOptInit(int* argc, char** argv);

// Load a store file; replaces the file layer (overrides stay). 0 or -1.
int silOptLoadFile(const char* path);
// Set one override; value may be the empty text. 0 or -1.
int silOptSet(const char* key, const char* value);
// Forget every option (file and overrides).
void silOptClear(void);

// Read an option. If the key is set: copies at most maxLength characters of
// its text into buffer, followed by a NUL (so buffer must hold maxLength + 1
// bytes), and returns the number of characters copied plus 1 (so a key set to
// the empty text returns 1). If not set: returns 0 and leaves buffer alone.
// instance, section and flags are accepted for the interface's sake and not used;
// type must be 1 (text), other types return -1.
int silOptRead(uint32_t instance, const char* key, uint32_t section, uint32_t flags,
               uint32_t type, char* buffer, uint32_t maxLength);

// The run directory of the process's sockets: $MDB_RUNDIR, or /tmp.
inline const char* silRunDir(void) {
  const char* dir = getenv("MDB_RUNDIR");
  return dir != nullptr && *dir != '\0' ? dir : "/tmp";
}
// "<run directory>/<name>" into buffer; 0, or -1 if it does not fit.
inline int silRunPath(char* buffer, size_t capacity, const char* name) {
  int n = snprintf(buffer, capacity, "%s/%s", silRunDir(), name);
  return n >= 0 && static_cast<size_t>(n) < capacity ? 0 : -1;
}

// ---------------------------------------------------------------- clock
// Uptime from a monotonic clock. Tests may replace the clock source: the
// function returns milliseconds since an arbitrary origin.
typedef uint64_t (*SilClockFn)(void);
uint32_t silGetUpTime(void);     // seconds since the process started
uint64_t silGetUpTime1ms(void);  // milliseconds since the process started
// Replace the clock: while a test clock is set, uptime in milliseconds is
// exactly what it returns. Null restores the monotonic clock, measured from
// the start of the process.
void silClockSet(SilClockFn clock);

// ---------------------------------------------------------------- memory
void* silMalloc(size_t size);
void* silCalloc(size_t count, size_t size);
void silFree(void* memory);
// Fault injection for tests: after `n` more successful allocations every
// allocation fails (returns null). A negative n turns injection off.
void silAllocFailAfter(long n);

// ---------------------------------------------------------------- error number
void errnoSet(uint32_t code);
uint32_t errnoGet(void);

// ---------------------------------------------------------------- tasks
typedef void (*SilTaskEntry)(uintptr_t arg);
typedef uintptr_t SilTaskId;
// Start a named thread running entry(arg). priority is recorded, not applied.
// stackSize 0 takes the default. 0, or -1 if the thread could not be created.
int silCreateTask(const char* name, int priority, size_t stackSize, SilTaskEntry entry,
                  uintptr_t arg, uint32_t options, SilTaskId* taskIdOut);
void silDelayTask(uint32_t ms);

// ---------------------------------------------------------------- semaphores
// Mutual-exclusion semaphores: owned by one task at a time, recursive.
typedef struct SilSem* SilSemId;
SilSemId silCreateMSem(uint32_t options);
// timeoutMs -1 waits for ever; 0 tries once. 0, or -1 on timeout or bad handle.
int silTakeSem(SilSemId sem, int32_t timeoutMs);
int silGiveSem(SilSemId sem);
int silDeleteSem(SilSemId sem);

// ---------------------------------------------------------------- timer lists
// A timer list keeps running one-shot timers in the order they fall due, by
// the uptime clock. A timer is the caller's record; the list owns it while it
// runs. The list takes no lock: its user serialises the calls.
typedef int (*SilTimerFn)(uintptr_t arg0, uintptr_t arg1, uintptr_t arg2);
struct SilTimer {
  SilTimer* next;
  uint64_t dueMs;  // uptime in milliseconds at which it fires
  SilTimerFn callback;
  uintptr_t arg0, arg1, arg2;
  uint32_t running;
};
struct SilTimerList {
  SilTimer* head;
  uintptr_t count;
};
void silTimerListInit(SilTimerList* list);
// Starts (or restarts) a timer that fires once after delayMs. 0, or -1 for a
// null list, timer or callback.
int silTimerStart(SilTimerList* list, SilTimer* timer, uint64_t delayMs, SilTimerFn callback, uintptr_t arg0,
                  uintptr_t arg1, uintptr_t arg2);
// Stops a timer; one that is not running is no error. 0.
int silTimerStop(SilTimerList* list, SilTimer* timer);
// Milliseconds to the next timeout (0 if one is due), or -1 if no timer runs.
int64_t silTimerListNextTimeout(const SilTimerList* list);
// Fires, on the caller's thread, each timer that is due, in order; a timer is
// idle again when its callback runs. Returns the number fired.
int silTimerListCheck(SilTimerList* list);

// ---------------------------------------------------------------- process
// Installs a handler for SIGSEGV, SIGBUS, SIGFPE and SIGILL that writes the
// signal and a backtrace to standard error, then dies of the same signal.
void silCatchSegFault(void);

#endif
