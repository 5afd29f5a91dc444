// Doubly linked intrusive lists. A node begins with `next` and `previous`;
// the head keeps `head`, `tail` and the node count, so lstCount needs no walk.
#include "mdb/containers.h"
#include "platform/sil.h"

void lstLibInit(void) {}

void lstInit(LstList* list) {
  list->head = nullptr;
  list->tail = nullptr;
  list->count = 0;
}

void lstAdd(LstList* list, LstNode* node) { lstInsert(list, list->tail, node); }

void lstInsert(LstList* list, LstNode* after, LstNode* node) {
  LstNode* next;
  if (after == nullptr) {
    next = list->head;
    list->head = node;
  } else {
    next = after->next;
    after->next = node;
  }
  if (next == nullptr)
    list->tail = node;
  else
    next->previous = node;
  node->previous = after;
  node->next = next;
  list->count++;
}

// The node keeps its own links: a walk that stands on it can still step on.
void lstDelete(LstList* list, LstNode* node) {
  if (node->previous == nullptr)
    list->head = node->next;
  else
    node->previous->next = node->next;
  if (node->next == nullptr)
    list->tail = node->previous;
  else
    node->next->previous = node->previous;
  list->count--;
}

LstNode* lstGet(LstList* list) {
  LstNode* node = list->head;
  if (node != nullptr) lstDelete(list, node);
  return node;
}

void lstConcat(LstList* list, LstList* other) {
  if (other->count == 0) return;
  if (list->count == 0) {
    *list = *other;
  } else {
    list->tail->next = other->head;
    other->head->previous = list->tail;
    list->tail = other->tail;
    list->count += other->count;
  }
  lstInit(other);
}

LstNode* lstExtract(LstList* list, LstNode* first, LstNode* last, LstList* out) {
  LstNode* before = first->previous;
  LstNode* after = last->next;
  if (before == nullptr)
    list->head = after;
  else
    before->next = after;
  if (after == nullptr)
    list->tail = before;
  else
    after->previous = before;

  first->previous = nullptr;
  last->next = nullptr;
  uint32_t n = 0;
  for (LstNode* node = first; node != nullptr; node = node->next) n++;
  list->count -= n;
  out->head = first;
  out->tail = last;
  out->count = n;
  return last;
}

uint32_t lstCount(const LstList* list) { return list->count; }
LstNode* lstFirst(const LstList* list) { return list->head; }
LstNode* lstLast(const LstList* list) { return list->tail; }
LstNode* lstNext(const LstNode* node) { return node->next; }
LstNode* lstPrevious(const LstNode* node) { return node->previous; }

// Walks from the nearer end: from the head if count / 2 is above n.
LstNode* lstNth(const LstList* list, int32_t n) {
  if (n < 1 || static_cast<uint32_t>(n) > list->count) return nullptr;
  uint32_t position = static_cast<uint32_t>(n);
  LstNode* node;
  if (list->count / 2 > position) {
    node = list->head;
    while (--position > 0) node = node->next;
  } else {
    node = list->tail;
    for (uint32_t steps = list->count - position; steps > 0; steps--) node = node->previous;
  }
  return node;
}

LstNode* lstNStep(LstNode* node, int32_t n) {
  for (; n > 0 && node != nullptr; n--) node = node->next;
  for (; n < 0 && node != nullptr; n++) node = node->previous;
  return node;
}

int32_t lstFind(const LstList* list, const LstNode* node) {
  int32_t position = 1;
  for (const LstNode* current = list->head; current != nullptr; current = current->next, position++)
    if (current == node) return position;
  return -1;
}

void lstFree(LstList* list) {
  if (list->count == 0) return;
  LstNode* node = list->head;
  while (node != nullptr) {
    LstNode* next = node->next;
    silFree(node);
    node = next;
  }
  lstInit(list);
}
