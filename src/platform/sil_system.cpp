// Clock, memory, thread error number, tasks and semaphores of the system layer.
#include "platform/sil.h"

#include <pthread.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>

// ---------------------------------------------------------------- clock
namespace {

uint64_t monotonicMs() {
  timespec ts;
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return static_cast<uint64_t>(ts.tv_sec) * 1000u + static_cast<uint64_t>(ts.tv_nsec) / 1000000u;
}

// Taken before main runs, so uptime counts from the start of the process.
const uint64_t gProcessStartMs = monotonicMs();
std::atomic<SilClockFn> gTestClock{nullptr};

}  // namespace

uint64_t silGetUpTime1ms(void) {
  SilClockFn clock = gTestClock.load(std::memory_order_acquire);
  if (clock != nullptr) return clock();
  return monotonicMs() - gProcessStartMs;
}

uint32_t silGetUpTime(void) { return static_cast<uint32_t>(silGetUpTime1ms() / 1000u); }

void silClockSet(SilClockFn clock) { gTestClock.store(clock, std::memory_order_release); }

// ---------------------------------------------------------------- memory
namespace {
std::atomic<long> gAllocBudget{-1};  // -1: no fault injection

bool allocAllowed() {
  long budget = gAllocBudget.load(std::memory_order_relaxed);
  while (budget >= 0) {
    if (budget == 0) return false;
    if (gAllocBudget.compare_exchange_weak(budget, budget - 1, std::memory_order_relaxed)) return true;
  }
  return true;
}
}  // namespace

void* silMalloc(size_t size) { return allocAllowed() ? malloc(size) : nullptr; }
void* silCalloc(size_t count, size_t size) { return allocAllowed() ? calloc(count, size) : nullptr; }
void silFree(void* memory) { free(memory); }
void silAllocFailAfter(long n) { gAllocBudget.store(n < 0 ? -1 : n, std::memory_order_relaxed); }

// ---------------------------------------------------------------- error number
namespace {
thread_local uint32_t tErrno = 0;
}
void errnoSet(uint32_t code) { tErrno = code; }
uint32_t errnoGet(void) { return tErrno; }

// ---------------------------------------------------------------- tasks
namespace {
struct TaskStart {
  SilTaskEntry entry;
  uintptr_t arg;
  char name[16];
};

void* taskTrampoline(void* p) {
  TaskStart start = *static_cast<TaskStart*>(p);
  delete static_cast<TaskStart*>(p);
  pthread_setname_np(pthread_self(), start.name);
  start.entry(start.arg);
  return nullptr;
}
}  // namespace

int silCreateTask(const char* name, int, size_t stackSize, SilTaskEntry entry, uintptr_t arg, uint32_t,
                  SilTaskId* taskIdOut) {
  if (entry == nullptr) return -1;
  auto* start = new TaskStart{entry, arg, {}};
  if (name != nullptr) strncpy(start->name, name, sizeof start->name - 1);
  pthread_attr_t attr;
  pthread_attr_init(&attr);
  pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
  if (stackSize != 0) {
    if (stackSize < static_cast<size_t>(PTHREAD_STACK_MIN)) stackSize = static_cast<size_t>(PTHREAD_STACK_MIN);
    pthread_attr_setstacksize(&attr, stackSize);
  }
  pthread_t thread;
  int rc = pthread_create(&thread, &attr, taskTrampoline, start);
  pthread_attr_destroy(&attr);
  if (rc != 0) {
    delete start;
    return -1;
  }
  if (taskIdOut != nullptr) *taskIdOut = static_cast<SilTaskId>(thread);
  return 0;
}

void silDelayTask(uint32_t ms) {
  timespec ts{static_cast<time_t>(ms / 1000u), static_cast<long>(ms % 1000u) * 1000000L};
  while (nanosleep(&ts, &ts) != 0 && errno == EINTR) {
  }
}

// ---------------------------------------------------------------- semaphores
struct SilSem {
  pthread_mutex_t mutex;
};

SilSemId silCreateMSem(uint32_t) {
  auto* sem = static_cast<SilSem*>(silCalloc(1, sizeof(SilSem)));
  if (sem == nullptr) return nullptr;
  pthread_mutexattr_t attr;
  pthread_mutexattr_init(&attr);
  pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(&sem->mutex, &attr);
  pthread_mutexattr_destroy(&attr);
  return sem;
}

int silTakeSem(SilSemId sem, int32_t timeoutMs) {
  if (sem == nullptr) return -1;
  if (timeoutMs < 0) return pthread_mutex_lock(&sem->mutex) == 0 ? 0 : -1;
  if (timeoutMs == 0) return pthread_mutex_trylock(&sem->mutex) == 0 ? 0 : -1;
  timespec deadline;
  clock_gettime(CLOCK_REALTIME, &deadline);
  deadline.tv_sec += timeoutMs / 1000;
  deadline.tv_nsec += static_cast<long>(timeoutMs % 1000) * 1000000L;
  if (deadline.tv_nsec >= 1000000000L) {
    deadline.tv_sec++;
    deadline.tv_nsec -= 1000000000L;
  }
  return pthread_mutex_timedlock(&sem->mutex, &deadline) == 0 ? 0 : -1;
}

int silGiveSem(SilSemId sem) {
  if (sem == nullptr) return -1;
  return pthread_mutex_unlock(&sem->mutex) == 0 ? 0 : -1;
}

int silDeleteSem(SilSemId sem) {
  if (sem == nullptr) return -1;
  pthread_mutex_destroy(&sem->mutex);
  silFree(sem);
  return 0;
}
