// The timer service: one task that sleeps on a datagram socket and on the
// next timeout of its timer list; and the configuration-change event, sent
// 10 seconds after the first logged write of a burst.
#include "mdb/mdb_timer.h"
#include "mdb/mdb_errors.h"
#include "platform/logging.h"
#include "platform/tgp.h"

#include <sys/select.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstring>

MdbTimerService gMdbTimer = {{nullptr, 0}, nullptr, -1};

namespace {

std::atomic<bool> gTimerReady{false};
SilTimer gConfgTimer;  // the change event's timer
// In seconds of uptime. Written by every command task without a lock: two
// writes at once can at worst restart the timer once more, or leave it alone.
std::atomic<uint32_t> gConfgLastCall{0};
std::atomic<uint32_t> gConfgArmedAt{0};
std::atomic<uint32_t> gChangeCalls{0};
std::atomic<uint32_t> gEventsSent{0};

bool timerAddress(sockaddr_un* address) {
  memset(address, 0, sizeof *address);
  address->sun_family = AF_UNIX;
  return silRunPath(address->sun_path, sizeof address->sun_path, MDB_TIMER_SOCKET_NAME) == 0;
}

}  // namespace

namespace {
// The sockets open before the timer service starts, so a logged write may
// start the change timer first: the lock exists from its first use on, and
// the list, empty when zeroed, is valid before mdbTimerInit.
SilSemId timerLock() {
  static const SilSemId lock = silCreateMSem(0);
  return lock;
}
}  // namespace

void mdbTimerLock(void) { silTakeSem(timerLock(), -1); }
void mdbTimerUnlock(void) { silGiveSem(timerLock()); }

void mdbTimerInit(void) {
  if (gTimerReady.load()) return;
  gMdbTimer.lock = timerLock();
  mdbTimerLock();
  if (gMdbTimer.list.head == nullptr) silTimerListInit(&gMdbTimer.list);
  mdbTimerUnlock();
  sockaddr_un address;
  if (!timerAddress(&address)) return;
  unlink(address.sun_path);  // left over from an earlier run
  int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (fd < 0) {
    perror("create sock failed!");
    return;
  }
  if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) perror("bind failed!");
  gMdbTimer.socket = fd;
  silCreateTask("mdbtimertask", 50, 0x10000, mdbTimerTask, MDB_TIMER_DEFAULT_WAKE_MS, 0, nullptr);
  gTimerReady.store(true);
}

void mdbTimerTask(uintptr_t defaultTimeoutMs) {
  for (;;) {
    mdbTimerLock();
    int64_t timeout = silTimerListNextTimeout(&gMdbTimer.list);
    mdbTimerUnlock();
    if (timeout < 0) timeout = static_cast<int64_t>(defaultTimeoutMs);
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(gMdbTimer.socket, &readable);
    timeval tv{static_cast<time_t>(timeout / 1000), static_cast<suseconds_t>((timeout % 1000) * 1000)};
    int ready = select(gMdbTimer.socket + 1, &readable, nullptr, nullptr, &tv);
    if (ready > 0) {
      char drain[128];
      ssize_t ignored = recv(gMdbTimer.socket, drain, sizeof drain, MSG_DONTWAIT);
      (void)ignored;
    } else if (ready < 0) {
      continue;
    }
    // Callbacks run here with the lock held: they must not start or stop timers.
    mdbTimerLock();
    silTimerListCheck(&gMdbTimer.list);
    mdbTimerUnlock();
  }
}

int mdbTimerStart(SilTimer* timer, uint32_t delayMs, SilTimerFn callback, uintptr_t arg0, uintptr_t arg1,
                  uintptr_t arg2) {
  mdbTimerLock();
  silTimerStart(&gMdbTimer.list, timer, delayMs, callback, arg0, arg1, arg2);
  mdbTimerUnlock();
  // Wake the task, so that it sleeps to the new timeout.
  sockaddr_un address;
  timerAddress(&address);
  int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (fd < 0) {
    printf("Failed to open %s\r\n", address.sun_path);
    return -1;
  }
  const uint32_t wake = 0;
  ssize_t ignored = sendto(fd, &wake, sizeof wake, MSG_DONTWAIT | MSG_NOSIGNAL,
                           reinterpret_cast<sockaddr*>(&address), sizeof address);
  (void)ignored;
  close(fd);
  return 0;
}

int mdbTimerStop(SilTimer* timer) {
  mdbTimerLock();
  silTimerStop(&gMdbTimer.list, timer);
  mdbTimerUnlock();
  return 0;
}

void mdbConfgChangeNotify(MdbCrb*, char*, uint32_t, uintptr_t) {
  gChangeCalls.fetch_add(1, std::memory_order_relaxed);
  const uint32_t now = silGetUpTime();
  const uint32_t last = gConfgLastCall.load(std::memory_order_relaxed);
  const uint32_t armed = gConfgArmedAt.load(std::memory_order_relaxed);
  // A change within the window of the running timer leaves it alone, so the
  // event goes out 10 seconds after the first change of a burst. The first
  // clause only matters after a large backward jump of the clock, or in the
  // first seconds after boot.
  const bool leaveRunning =
      now >= (last + MDB_CONFG_WINDOW_S) / 2 && last != 0 && armed != 0 && now < armed + MDB_CONFG_WINDOW_S;
  if (!leaveRunning) {
    mdbTimerStop(&gConfgTimer);
    mdbTimerStart(&gConfgTimer, MDB_CONFG_DELAY_MS, mdbSendConfgChangeNotify, 0, 0, 0);
    gConfgArmedAt.store(now, std::memory_order_relaxed);
  }
  gConfgLastCall.store(now, std::memory_order_relaxed);
}

int mdbSendConfgChangeNotify(uintptr_t arg0, uintptr_t, uintptr_t) {
  MdbConfgEvent event;
  memset(&event, 0, sizeof event);
  event.length = MDB_CONFG_EVENT_LENGTH;
  event.type = MDB_CONFG_EVENT_TYPE;
  event.arg = static_cast<uint32_t>(arg0);
  event.timeMs = static_cast<uint32_t>(silGetUpTime1ms());
  MDB_DEBUG(3, MDB_DEBUG_WRITE, "%s:%d: MDB send config change event.\r\n");
  gEventsSent.fetch_add(1, std::memory_order_relaxed);
  return tgpNetlinkSGrpSend(MDB_CONFG_EVENT_GROUP, 0, &event, sizeof event);
}

uint32_t mdbConfgChangeCount(void) { return gChangeCalls.load(std::memory_order_relaxed); }
uint32_t mdbConfgEventCount(void) { return gEventsSent.load(std::memory_order_relaxed); }
