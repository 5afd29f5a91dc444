// Timer lists: a singly linked list of running timers, ordered by due time.
#include "platform/sil.h"

namespace {
// Unlinks a running timer; the list must hold it.
void unlink(SilTimerList* list, SilTimer* timer) {
  for (SilTimer** p = &list->head; *p != nullptr; p = &(*p)->next) {
    if (*p == timer) {
      *p = timer->next;
      timer->next = nullptr;
      timer->running = 0;
      list->count--;
      return;
    }
  }
}
}  // namespace

void silTimerListInit(SilTimerList* list) {
  if (list == nullptr) return;
  list->head = nullptr;
  list->count = 0;
}

int silTimerStart(SilTimerList* list, SilTimer* timer, uint64_t delayMs, SilTimerFn callback, uintptr_t arg0,
                  uintptr_t arg1, uintptr_t arg2) {
  if (list == nullptr || timer == nullptr || callback == nullptr) return -1;
  if (timer->running) unlink(list, timer);
  timer->dueMs = silGetUpTime1ms() + delayMs;
  timer->callback = callback;
  timer->arg0 = arg0;
  timer->arg1 = arg1;
  timer->arg2 = arg2;
  // Behind every timer due at the same time or earlier: equal timers fire in
  // the order they were started.
  SilTimer** p = &list->head;
  while (*p != nullptr && (*p)->dueMs <= timer->dueMs) p = &(*p)->next;
  timer->next = *p;
  *p = timer;
  timer->running = 1;
  list->count++;
  return 0;
}

int silTimerStop(SilTimerList* list, SilTimer* timer) {
  if (list != nullptr && timer != nullptr && timer->running) unlink(list, timer);
  return 0;
}

int64_t silTimerListNextTimeout(const SilTimerList* list) {
  if (list == nullptr || list->head == nullptr) return -1;
  uint64_t now = silGetUpTime1ms();
  return list->head->dueMs <= now ? 0 : static_cast<int64_t>(list->head->dueMs - now);
}

int silTimerListCheck(SilTimerList* list) {
  if (list == nullptr) return 0;
  int fired = 0;
  uint64_t now = silGetUpTime1ms();
  while (list->head != nullptr && list->head->dueMs <= now) {
    SilTimer* timer = list->head;
    unlink(list, timer);
    timer->callback(timer->arg0, timer->arg1, timer->arg2);
    fired++;
  }
  return fired;
}
