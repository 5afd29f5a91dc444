// Timer service and the configuration-change event.
#include "mdb/mdb_subsys.h"

#include <atomic>

namespace {
std::atomic<uint32_t> gChangeNotifications{0};
}

// The timer task is not built yet.
void mdbTimerInit(void) {}

// Counts the logged writes; the coalescing timer and the event are not built yet.
void mdbConfgChangeNotify(MdbCrb*, char*, uint32_t, uintptr_t) {
  gChangeNotifications.fetch_add(1, std::memory_order_relaxed);
}

uint32_t mdbConfgChangeCount(void) { return gChangeNotifications.load(std::memory_order_relaxed); }
