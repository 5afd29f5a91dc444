// The iterator: one way to walk, search and apply a function over any
// container that can name the first and the next node of one of its lists.
// The container's first field points at its iterator, so every operation
// takes the container itself as its handle.
//
// Every walk reads the next node before it calls the callback, so a callback
// may delete the node it is given (listBankDestroy relies on that). Walks
// only read the container.
#include "mdb/containers.h"
#include "platform/sil.h"

namespace {

// The container's first field.
Iterator** iteratorSlot(void* container) { return static_cast<Iterator**>(container); }

// The container's iterator, checked; 0 with the error number set.
Iterator* iteratorOf(void* container) {
  if (container == nullptr) {
    errnoSet(ITER_ERR_NULL_CONTAINER);
    return nullptr;
  }
  Iterator* iterator = *iteratorSlot(container);
  if (iterator == nullptr || iterator->magic != ITER_MAGIC) {
    errnoSet(ITER_ERR_BAD_ITERATOR);
    return nullptr;
  }
  return iterator;
}

// The container's iterator, checked for a walk in `direction`; 0 with the
// error number set if the walk cannot be made.
Iterator* walkIterator(void* container, uint32_t direction) {
  Iterator* iterator = iteratorOf(container);
  if (iterator == nullptr) return nullptr;
  if (direction != ITER_FORWARD && direction != ITER_BACKWARD) {
    errnoSet(ITER_ERR_BAD_DIRECTION);
    return nullptr;
  }
  if (direction == ITER_BACKWARD && (iterator->lastFn == nullptr || iterator->prevFn == nullptr)) {
    errnoSet(ITER_ERR_NO_BACKWARD);
    return nullptr;
  }
  return iterator;
}

// The step function of a checked walk, and its first node: `start`, or the
// list's end of entry if `start` is 0.
IterStepFn beginWalk(const Iterator* iterator, uint32_t list, uint32_t direction, void* start, void** first) {
  if (direction == ITER_FORWARD) {
    *first = start != nullptr ? start : iterator->firstFn(iterator->container, list);
    return iterator->nextFn;
  }
  *first = start != nullptr ? start : iterator->lastFn(iterator->container, list);
  return iterator->prevFn;
}

// A target and a compare result match if both are 0, both negative, or both
// 1 or more.
bool signMatches(int32_t target, int32_t result) {
  if (target == 0) return result == 0;
  if (target < 0) return result < 0;
  return result > 0;
}

}  // namespace

int32_t iterCreate(void* container, IterEndFn firstFn, IterEndFn lastFn, IterStepFn nextFn, IterStepFn prevFn,
                   IterCompareFn compareFn, uintptr_t compareArg) {
  if (container == nullptr) {
    errnoSet(ITER_ERR_NULL_CONTAINER);
    return -1;
  }
  if (firstFn == nullptr) {
    errnoSet(ITER_ERR_NULL_FIRST);
    return -1;
  }
  if (nextFn == nullptr) {
    errnoSet(ITER_ERR_NULL_NEXT);
    return -1;
  }
  // A container that brings the memory for its iterator (a list bank keeps
  // it in its own block) has pointed its first field at it already.
  Iterator* iterator = *iteratorSlot(container);
  uint32_t localAlloc = 0;
  if (iterator == nullptr) {
    iterator = static_cast<Iterator*>(silCalloc(1, sizeof(Iterator)));
    if (iterator == nullptr) {
      errnoSet(ITER_ERR_NO_MEMORY);
      return -1;
    }
    localAlloc = 1;
  }
  iterator->magic = ITER_MAGIC;
  iterator->container = container;
  iterator->firstFn = firstFn;
  iterator->lastFn = lastFn;
  iterator->nextFn = nextFn;
  iterator->prevFn = prevFn;
  iterator->compareFn = compareFn;
  iterator->compareArg = compareArg;
  iterator->localAlloc = localAlloc;
  *iteratorSlot(container) = iterator;
  return 0;
}

int32_t iterDestroy(void* container) {
  Iterator* iterator = iteratorOf(container);
  if (iterator == nullptr) return -1;
  iterator->magic = 0;
  if (iterator->localAlloc == 1) {
    silFree(iterator);
    *iteratorSlot(container) = nullptr;
  }
  return 0;
}

size_t iterGetMemSize(void) { return sizeof(Iterator); }

// A search that finds nothing returns 0 and leaves the error number alone.
void* iterSearchForEntry(void* container, uint32_t list, const void* key, void* start, int32_t target,
                         uint32_t direction) {
  Iterator* iterator = walkIterator(container, direction);
  if (iterator == nullptr) return nullptr;
  if (key == nullptr) {
    errnoSet(ITER_ERR_NULL_KEY);
    return nullptr;
  }
  if (iterator->compareFn == nullptr) {
    errnoSet(ITER_ERR_NO_COMPARE);
    return nullptr;
  }
  void* node;
  IterStepFn step = beginWalk(iterator, list, direction, start, &node);
  for (; node != nullptr; node = step(container, node))
    if (signMatches(target, iterator->compareFn(node, key, iterator->compareArg))) return node;
  return nullptr;
}

int32_t iterForEachEntry(void* container, uint32_t list, IterCallbackFn callback, uintptr_t arg,
                         uint32_t direction) {
  Iterator* iterator = walkIterator(container, direction);
  if (iterator == nullptr) return -1;
  if (callback == nullptr) {
    errnoSet(ITER_ERR_NULL_CALLBACK);
    return -1;
  }
  void* node;
  IterStepFn step = beginWalk(iterator, list, direction, nullptr, &node);
  while (node != nullptr) {
    void* next = step(container, node);
    callback(node, list, arg);
    node = next;
  }
  return 0;
}

int32_t iterForEachEntryUntil(void* container, uint32_t list, IterCallbackFn callback, uintptr_t arg,
                              uint32_t direction, void** pNode) {
  Iterator* iterator = walkIterator(container, direction);
  if (iterator == nullptr) return -1;
  if (callback == nullptr) {
    errnoSet(ITER_ERR_NULL_CALLBACK);
    return -1;
  }
  if (pNode == nullptr) {
    errnoSet(ITER_ERR_NULL_NODE_PTR);
    return -1;
  }
  void* node;
  IterStepFn step = beginWalk(iterator, list, direction, *pNode, &node);
  while (node != nullptr) {
    void* next = step(container, node);
    if (callback(node, list, arg) != 0) break;
    node = next;
  }
  *pNode = node;
  return 0;
}

int32_t iterForSelectedEntries(void* container, uint32_t list, IterCallbackFn callback, uintptr_t arg,
                               uint32_t direction, const void* key, void** pNode, int32_t target) {
  Iterator* iterator = walkIterator(container, direction);
  if (iterator == nullptr) return -1;
  if (callback == nullptr) {
    errnoSet(ITER_ERR_NULL_CALLBACK);
    return -1;
  }
  if (key == nullptr) {
    errnoSet(ITER_ERR_NULL_KEY);
    return -1;
  }
  if (pNode == nullptr) {
    errnoSet(ITER_ERR_NULL_NODE_PTR);
    return -1;
  }
  if (iterator->compareFn == nullptr) {
    errnoSet(ITER_ERR_NO_COMPARE);
    return -1;
  }
  void* node;
  IterStepFn step = beginWalk(iterator, list, direction, *pNode, &node);
  while (node != nullptr && signMatches(target, iterator->compareFn(node, key, iterator->compareArg))) {
    void* next = step(container, node);
    callback(node, list, arg);
    node = next;
  }
  *pNode = node;
  return 0;
}
