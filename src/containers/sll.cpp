// Singly linked intrusive lists. A node begins with its `next` pointer; the
// head keeps `head` and `tail`. `tail` is only meaningful while `head` is set:
// sllGet leaves it behind when it takes the last node off, so every operation
// that needs it tests `head` first.
#include "mdb/containers.h"
#include "platform/sil.h"

SllList* sllCreate(void) {
  auto* list = static_cast<SllList*>(silMalloc(sizeof(SllList)));
  if (list != nullptr) sllInit(list);
  return list;
}

int32_t sllInit(SllList* list) {
  list->head = nullptr;
  list->tail = nullptr;
  return 0;
}

int32_t sllDelete(SllList* list) {
  silFree(list);
  return 0;
}

int32_t sllTerminate(void) { return 0; }

void sllPutAtHead(SllList* list, SllNode* node) {
  if (list->head == nullptr) list->tail = node;
  node->next = list->head;
  list->head = node;
}

void sllPutAtTail(SllList* list, SllNode* node) {
  node->next = nullptr;
  if (list->head == nullptr)
    list->head = node;
  else
    list->tail->next = node;
  list->tail = node;
}

SllNode* sllGet(SllList* list) {
  SllNode* node = list->head;
  if (node != nullptr) list->head = node->next;
  return node;
}

void sllRemove(SllList* list, SllNode* node, SllNode* previous) {
  if (previous == nullptr)
    list->head = node->next;
  else
    previous->next = node->next;
  if (list->tail == node) list->tail = previous;
}

SllNode* sllPrevious(const SllList* list, const SllNode* node) {
  SllNode* previous = list->head;
  if (previous == nullptr || previous == node) return nullptr;
  while (previous->next != nullptr) {
    if (previous->next == node) return previous;
    previous = previous->next;
  }
  return nullptr;
}

uint32_t sllCount(const SllList* list) {
  uint32_t count = 0;
  for (const SllNode* node = list->head; node != nullptr; node = node->next) count++;
  return count;
}

SllNode* sllEach(SllList* list, SllEachFn callback, uintptr_t arg) {
  SllNode* node = list->head;
  while (node != nullptr) {
    SllNode* next = node->next;  // read first: the callback may unlink the node
    if (callback(node, arg) == 0) return node;
    node = next;
  }
  return nullptr;
}
