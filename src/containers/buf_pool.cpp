// Element pool: equal-sized elements handed out from one block.
//
// The free list is a queue: alloc takes the element at its head and free puts
// one at its tail, so the element freed last is reused last. It is circular
// and doubly linked, with the pool's own `freeList` as its anchor; a free
// element holds its two links in its first two words and nothing else of it
// is touched, also across free and alloc.
//
// The links are read and written with memcpy: the same words serve as list
// links of another type once the element is handed out (a list bank's node
// links), and memcpy keeps the two views from aliasing each other.
#include <cstring>

#include "mdb/containers.h"
#include "platform/sil.h"

namespace {

size_t roundUp(size_t value, size_t alignment) { return (value + alignment - 1) / alignment * alignment; }

// The space one element takes: the caller's size rounded up to a multiple of
// 4 (alignAddress), then to CONTAINER_ALIGN so that the pointer links of every
// element lie aligned, and at least the two link words.
size_t elementStride(uint32_t elementSize) {
  size_t size = roundUp(alignAddress(elementSize), CONTAINER_ALIGN);
  return size < sizeof(BufPoolLink) ? sizeof(BufPoolLink) : size;
}

size_t headerSize() { return roundUp(sizeof(BufPool), CONTAINER_ALIGN); }

// A link is either the pool's freeList or the first two words of an element.
void* linkNext(const void* link) {
  void* next;
  memcpy(&next, link, sizeof next);
  return next;
}
void* linkPrevious(const void* link) {
  void* previous;
  memcpy(&previous, static_cast<const char*>(link) + sizeof(void*), sizeof previous);
  return previous;
}
void linkSetNext(void* link, void* next) { memcpy(link, &next, sizeof next); }
void linkSetPrevious(void* link, void* previous) {
  memcpy(static_cast<char*>(link) + sizeof(void*), &previous, sizeof previous);
}

void putAtTail(BufPool* pool, void* element) {
  void* anchor = &pool->freeList;
  void* last = linkPrevious(anchor);
  linkSetNext(element, anchor);
  linkSetPrevious(element, last);
  linkSetNext(last, element);
  linkSetPrevious(anchor, element);
}

void putAtHead(BufPool* pool, void* element) {
  void* anchor = &pool->freeList;
  void* first = linkNext(anchor);
  linkSetNext(element, first);
  linkSetPrevious(element, anchor);
  linkSetPrevious(first, element);
  linkSetNext(anchor, element);
}

void unlink(void* element) {
  void* next = linkNext(element);
  void* previous = linkPrevious(element);
  linkSetNext(previous, next);
  linkSetPrevious(next, previous);
}

bool poolValid(const BufPool* pool) { return pool != nullptr && pool->magic == BUFPOOL_MAGIC; }

}  // namespace

uintptr_t alignAddress(uintptr_t value) { return (value + 3u) & ~static_cast<uintptr_t>(3u); }

size_t bufPoolGetMemSize(uint32_t elementSize, uint32_t elementCount) {
  if (elementSize == 0) {
    errnoSet(BUFPOOL_ERR_ZERO_SIZE);
    return 0;
  }
  if (elementCount == 0) {
    errnoSet(BUFPOOL_ERR_ZERO_COUNT);
    return 0;
  }
  size_t elements;
  size_t total;
  if (__builtin_mul_overflow(elementStride(elementSize), static_cast<size_t>(elementCount), &elements) ||
      __builtin_add_overflow(elements, headerSize(), &total)) {
    errnoSet(BUFPOOL_ERR_NO_MEMORY);  // no block could ever hold it
    return 0;
  }
  return total;
}

BufPool* bufPoolCreate(void* memory, uint32_t elementSize, uint32_t elementCount, BufPoolElemFn creatFn,
                       BufPoolElemFn destroyFn, uintptr_t arg) {
  size_t size = bufPoolGetMemSize(elementSize, elementCount);
  if (size == 0) return nullptr;
  uint32_t localAlloc = 0;
  if (memory != nullptr) {
    if (reinterpret_cast<uintptr_t>(memory) % CONTAINER_ALIGN != 0) {
      errnoSet(BUFPOOL_ERR_NO_MEMORY);
      return nullptr;
    }
    memset(memory, 0, size);
  } else {
    memory = silCalloc(1, size);
    if (memory == nullptr) {
      errnoSet(BUFPOOL_ERR_NO_MEMORY);
      return nullptr;
    }
    localAlloc = 1;
  }

  auto* pool = static_cast<BufPool*>(memory);
  pool->magic = BUFPOOL_MAGIC;
  pool->localAlloc = localAlloc;
  pool->freeList.next = &pool->freeList;
  pool->freeList.previous = &pool->freeList;
  pool->elements = static_cast<char*>(memory) + headerSize();

  // In address order, so the first alloc hands out the first element.
  size_t stride = elementStride(elementSize);
  char* element = static_cast<char*>(pool->elements);
  for (uint32_t i = 0; i < elementCount; i++, element += stride) putAtTail(pool, element);

  pool->creatFn = creatFn;
  pool->destroyFn = destroyFn;
  pool->arg = arg;
  return pool;
}

// The destroy callback is not run for the elements: their owner has done so.
int32_t bufPoolDestroy(BufPool* pool) {
  if (!poolValid(pool)) return -1;
  pool->magic = 0;  // a stale handle to a caller's block now fails the check
  if (pool->localAlloc == 1) silFree(pool);
  return 0;
}

// An empty pool returns 0 and leaves the error number alone; the caller
// decides what an empty pool means.
void* bufPoolAlloc(BufPool* pool) {
  if (!poolValid(pool)) {
    errnoSet(BUFPOOL_ERR_BAD_POOL);
    return nullptr;
  }
  void* anchor = &pool->freeList;
  void* element = linkNext(anchor);
  if (element == anchor) return nullptr;
  unlink(element);

  if (pool->creatFn != nullptr) {
    // Cleared for the call so that an error number of the callback's own can
    // be told from an older one; restored when all went well.
    uint32_t saved = errnoGet();
    errnoSet(0);
    if (pool->creatFn(element, pool->arg) != 0) {
      if (errnoGet() == 0) errnoSet(BUFPOOL_ERR_CREATE_FAILED);
      // Back where it was, so that the failure leaves the pool as it found it.
      putAtHead(pool, element);
      return nullptr;
    }
    errnoSet(saved);
  }
  return element;
}

// The pool does not know whether the element is already free and does not
// check that it lies in its block.
int32_t bufPoolFree(BufPool* pool, void* element) {
  if (!poolValid(pool) || element == nullptr) {
    errnoSet(BUFPOOL_ERR_BAD_POOL);
    return -1;
  }
  if (pool->destroyFn != nullptr) {
    uint32_t saved = errnoGet();
    errnoSet(0);
    if (pool->destroyFn(element, pool->arg) != 0) {
      if (errnoGet() == 0) errnoSet(BUFPOOL_ERR_DESTROY_FAILED);
    } else {
      errnoSet(saved);
    }
  }
  putAtTail(pool, element);
  return 0;
}
