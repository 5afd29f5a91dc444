// The timer service of the database and the coalesced configuration-change event.
#ifndef MDB_TIMER_H
#define MDB_TIMER_H

#include <cstdint>

#include "mdb/mdb_types.h"
#include "platform/sil.h"

struct MdbTimerService {
  SilTimerList list;
  SilSemId lock;
  int32_t socket;  // the timer task's bound datagram socket, woken by every start
};
extern MdbTimerService gMdbTimer;

enum : uint32_t {
  MDB_TIMER_DEFAULT_WAKE_MS = 30000,  // the task wakes at least this often
  MDB_CONFG_DELAY_MS = 10000,         // the event goes out this long after the first change of a burst
  MDB_CONFG_WINDOW_S = 10,
  MDB_CONFG_EVENT_GROUP = 90,
  MDB_CONFG_EVENT_TYPE = 357,
  MDB_CONFG_EVENT_LENGTH = 32,
};

// The event message, 32 bytes in the machine's byte order.
struct MdbConfgEvent {
  uint32_t length;    // 32
  uint16_t type;      // 357
  uint16_t flags;     // 0
  uint32_t sequence;  // 0
  uint32_t pid;       // 0
  uint8_t reserved[8];
  uint32_t arg;       // the timer's first argument
  uint32_t timeMs;    // low 32 bits of the uptime in milliseconds when sent
};
static_assert(sizeof(MdbConfgEvent) == 32, "the change event is 32 bytes");

// The wake-up socket's file name in the run directory.
#define MDB_TIMER_SOCKET_NAME "mdbtimer.socket"

void mdbTimerInit(void);
int mdbTimerStart(SilTimer* timer, uint32_t delayMs, SilTimerFn callback, uintptr_t arg0, uintptr_t arg1,
                  uintptr_t arg2);
int mdbTimerStop(SilTimer* timer);
void mdbTimerLock(void);
void mdbTimerUnlock(void);
void mdbTimerTask(uintptr_t defaultTimeoutMs);

void mdbConfgChangeNotify(MdbCrb* record, char* text, uint32_t textLength, uintptr_t word);
int mdbSendConfgChangeNotify(uintptr_t arg0, uintptr_t arg1, uintptr_t arg2);

// Logged writes that reached mdbConfgChangeNotify, and events sent, so far.
uint32_t mdbConfgChangeCount(void);
uint32_t mdbConfgEventCount(void);

#endif
