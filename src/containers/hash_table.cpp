// Hash table: a singly linked list bank with one list per bucket, each bucket
// kept sorted by the table's compareFn.
//
// One block holds the table's header followed by its list bank (which holds
// its iterator, its bucket heads and its node pool). Each element carries a
// hidden bucket word right behind the user's elemSize bytes, rounded up so
// that the word is aligned: the number of the bucket it stands in, or
// HASHTABLE_NO_BUCKET (-1) while it stands in none. Alloc sets it to -1, add
// stores the bucket, and delete leaves it as it was when the element goes
// back to the pool, so that a later free of that element is refused.
//
// Search and the unsorted walk read the bank's bucket heads and node links
// directly rather than through the bank's iterator: they are on the path of
// every request, and one hash plus a walk of one bucket is all they may cost.
#include <cstdio>
#include <cstring>

#include "mdb/containers.h"
#include "platform/sil.h"

namespace {

size_t roundUp(size_t value, size_t alignment) { return (value + alignment - 1) / alignment * alignment; }

size_t headerSize() { return roundUp(sizeof(HashTable), CONTAINER_ALIGN); }

// Where the bucket word lies in an element, and the bank's node size.
size_t bucketOffset(uint32_t elemSize) { return roundUp(elemSize, alignof(uintptr_t)); }
size_t bankNodeSize(uint32_t elemSize) { return bucketOffset(elemSize) + sizeof(uintptr_t); }

uintptr_t* bucketWord(const HashTable* table, const void* element) {
  return reinterpret_cast<uintptr_t*>(const_cast<char*>(static_cast<const char*>(element)) +
                                      bucketOffset(table->elemSize));
}

// The bank is singly linked: an element's SllNode link lies right in front of it.
SllNode* bucketHead(const HashTable* table, uint32_t bucket) {
  return static_cast<const SllList*>(table->listBank->lists)[bucket].head;
}
SllNode* linkOf(void* element) { return reinterpret_cast<SllNode*>(element) - 1; }
void* elementOf(SllNode* node) { return node + 1; }

bool checkTable(const HashTable* table) {
  if (table == nullptr || table->magic != HASHTABLE_MAGIC) {
    errnoSet(HASHTABLE_ERR_BAD_TABLE);
    return false;
  }
  return true;
}

// The table's own bank callbacks: an element leaves the pool in no bucket.
int32_t tableElemCreate(void* element, uintptr_t arg) {
  auto* table = reinterpret_cast<HashTable*>(arg);
  *bucketWord(table, element) = HASHTABLE_NO_BUCKET;
  if (table->creatFn == nullptr) return 0;
  return table->creatFn(element, table->createArg);
}
int32_t tableElemDestroy(void* element, uintptr_t arg) {
  auto* table = reinterpret_cast<HashTable*>(arg);
  if (table->destroyFn == nullptr) return 0;
  return table->destroyFn(element, table->createArg);
}

void updateStatistics(HashTable* table) {
  if (table->numCollisions > table->maxCollisions) table->maxCollisions = table->numCollisions;
  table->totalCollisions += table->numCollisions;
  table->numUpdates++;
}

}  // namespace

size_t hashTableGetMemSize(uint32_t nBuckets, uint32_t nElements, uint32_t elemSize) {
  if (nBuckets == 0) {
    errnoSet(HASHTABLE_ERR_ZERO_BUCKETS);
    return 0;
  }
  if (nElements == 0) {
    errnoSet(HASHTABLE_ERR_ZERO_ELEMENTS);
    return 0;
  }
  // Too large also counts as a bad size: the node must fit the bank's 32-bit
  // node size with the link in front of it.
  if (elemSize == 0 || bankNodeSize(elemSize) > UINT32_MAX - 2 * CONTAINER_ALIGN) {
    errnoSet(HASHTABLE_ERR_ZERO_ELEM_SIZE);
    return 0;
  }
  size_t bankSize =
      listBankGetMemSize(nBuckets, nElements, static_cast<uint32_t>(bankNodeSize(elemSize)), LISTBANK_TYPE_SINGLE);
  size_t total;
  if (bankSize == 0 || __builtin_add_overflow(headerSize(), bankSize, &total)) {
    errnoSet(HASHTABLE_ERR_NO_MEMORY);
    return 0;
  }
  return total;
}

HashTable* hashTableCreate(void* memory, uint32_t nBuckets, uint32_t nElements, uint32_t elemSize,
                           HashTableElemFn creatFn, HashTableElemFn destroyFn, HashTableCompareFn compareFn,
                           HashTableHashFn hashFn, uintptr_t createArg, uintptr_t compareArg, uint32_t seed) {
  size_t size = hashTableGetMemSize(nBuckets, nElements, elemSize);
  if (size == 0) return nullptr;
  uint32_t localAlloc = 0;
  if (memory != nullptr) {
    if (reinterpret_cast<uintptr_t>(memory) % CONTAINER_ALIGN != 0) {
      errnoSet(HASHTABLE_ERR_NO_MEMORY);
      return nullptr;
    }
    memset(memory, 0, size);
  } else {
    memory = silCalloc(1, size);
    if (memory == nullptr) {
      errnoSet(HASHTABLE_ERR_NO_MEMORY);
      return nullptr;
    }
    localAlloc = 1;
  }
  if (compareFn == nullptr || hashFn == nullptr) {
    errnoSet(compareFn == nullptr ? HASHTABLE_ERR_NULL_COMPARE : HASHTABLE_ERR_NULL_HASH);
    if (localAlloc == 1) silFree(memory);
    return nullptr;
  }

  auto* table = static_cast<HashTable*>(memory);
  table->nBuckets = nBuckets;
  table->nElements = nElements;
  table->elemSize = elemSize;
  table->creatFn = creatFn;
  table->destroyFn = destroyFn;
  table->compareFn = compareFn;
  table->hashFn = hashFn;
  table->createArg = createArg;
  table->compareArg = compareArg;
  table->seed = seed;
  table->localAlloc = localAlloc;
  table->listBank = listBankCreate(static_cast<char*>(memory) + headerSize(), nBuckets, nElements,
                                   static_cast<uint32_t>(bankNodeSize(elemSize)), LISTBANK_TYPE_SINGLE,
                                   tableElemCreate, tableElemDestroy, compareFn,
                                   reinterpret_cast<uintptr_t>(table), compareArg);
  if (table->listBank == nullptr) {
    if (localAlloc == 1) silFree(memory);
    return nullptr;
  }
  table->numEntries = 0;
  table->numCollisions = 0;
  table->maxCollisions = 0;
  table->totalCollisions = 0;
  table->numUpdates = 0;
  table->magic = HASHTABLE_MAGIC;  // last: a table that failed half-way never looks valid
  return table;
}

HashTable* hashTableSimpleCreate(uint32_t nBuckets, uint32_t nElements, uint32_t elemSize,
                                 HashTableCompareFn compareFn, HashTableHashFn hashFn) {
  return hashTableCreate(nullptr, nBuckets, nElements, elemSize, nullptr, nullptr, compareFn, hashFn, 0, 0,
                         HASHTABLE_DEFAULT_SEED);
}

// The elements still in the buckets go back to the pool (destroyFn runs for
// each); the block goes if the table allocated it.
int32_t hashTableDestroy(HashTable* table) {
  if (!checkTable(table)) return -1;
  listBankDestroy(table->listBank);
  table->magic = 0;
  if (table->localAlloc == 1) silFree(table);
  return 0;
}

void* hashTableAllocEntry(HashTable* table) {
  if (!checkTable(table)) return nullptr;
  return listBankAllocNode(table->listBank);
}

int32_t hashTableFreeEntry(HashTable* table, void* element) {
  if (!checkTable(table)) return -1;
  if (element == nullptr || *bucketWord(table, element) != HASHTABLE_NO_BUCKET) {
    errnoSet(HASHTABLE_ERR_BAD_ELEMENT);
    return -1;
  }
  return listBankFreeNode(table->listBank, element);
}

// No test for an equal element: the caller searches first, and equal keys
// may stand side by side (the later one in front).
void* hashTableAddEntry(HashTable* table, void* element) {
  if (!checkTable(table)) return nullptr;
  if (element == nullptr || *bucketWord(table, element) != HASHTABLE_NO_BUCKET) {
    errnoSet(HASHTABLE_ERR_BAD_ELEMENT);
    return nullptr;
  }
  uint32_t bucket = table->hashFn(element, table->nBuckets, table->seed);
  if (bucket >= table->nBuckets) {
    errnoSet(HASHTABLE_ERR_BAD_BUCKET);
    return nullptr;
  }
  *bucketWord(table, element) = bucket;  // stays set if the bank refuses
  bool occupied = bucketHead(table, bucket) != nullptr;
  if (listBankAddNode(table->listBank, bucket, element) != element) {
    errnoSet(HASHTABLE_ERR_BANK_FAILED);
    return nullptr;
  }
  table->numEntries++;
  if (occupied) table->numCollisions++;
  updateStatistics(table);
  return element;
}

int32_t hashTableDeleteEntry(HashTable* table, void* element) {
  if (!checkTable(table)) return -1;
  uintptr_t bucket = element == nullptr ? HASHTABLE_NO_BUCKET : *bucketWord(table, element);
  if (bucket >= table->nBuckets) {  // also catches -1
    errnoSet(HASHTABLE_ERR_BAD_ELEMENT);
    return -1;
  }
  if (listBankDeleteNode(table->listBank, static_cast<uint32_t>(bucket), element) != 0) {
    errnoSet(HASHTABLE_ERR_BANK_FAILED);
    return -1;
  }
  table->numEntries--;
  if (bucketHead(table, static_cast<uint32_t>(bucket)) != nullptr && table->numCollisions > 0)
    table->numCollisions--;
  updateStatistics(table);
  return 0;
}

// The first element that compares equal to the key. The bucket is sorted, but
// the walk does not stop at a greater element: it runs to the bucket's end.
// A miss returns 0 and leaves the error number alone.
void* hashTableSearchForEntry(HashTable* table, const void* key) {
  if (!checkTable(table)) return nullptr;
  if (key == nullptr) {
    errnoSet(HASHTABLE_ERR_NULL_KEY);
    return nullptr;
  }
  uint32_t bucket = table->hashFn(key, table->nBuckets, table->seed);
  if (bucket >= table->nBuckets) {
    errnoSet(HASHTABLE_ERR_BAD_BUCKET);
    return nullptr;
  }
  HashTableCompareFn compare = table->compareFn;
  uintptr_t compareArg = table->compareArg;
  for (SllNode* node = bucketHead(table, bucket); node != nullptr; node = node->next)
    if (compare(elementOf(node), key, compareArg) == 0) return elementOf(node);
  return nullptr;
}

// Bucket by bucket, and within a bucket in compareFn order.
void* hashTableNextEntryUnsorted(HashTable* table, void* element) {
  if (!checkTable(table)) return nullptr;
  uint32_t bucket = 0;
  if (element != nullptr) {
    uintptr_t word = *bucketWord(table, element);
    if (word >= table->nBuckets) {
      errnoSet(HASHTABLE_ERR_BAD_ELEMENT);
      return nullptr;
    }
    SllNode* next = linkOf(element)->next;
    if (next != nullptr) return elementOf(next);
    bucket = static_cast<uint32_t>(word) + 1;
  }
  for (; bucket < table->nBuckets; bucket++) {
    SllNode* head = bucketHead(table, bucket);
    if (head != nullptr) return elementOf(head);
  }
  return nullptr;
}

int32_t hashTableNumEntries(HashTable* table) {
  if (!checkTable(table)) return -1;
  return static_cast<int32_t>(table->numEntries);
}

int32_t hashTableNumCollisions(HashTable* table) {
  if (!checkTable(table)) return -1;
  return static_cast<int32_t>(table->numCollisions);
}

int32_t hashTableGetStatistics(HashTable* table, uint32_t* average, uint32_t* maximum) {
  if (!checkTable(table)) return -1;
  if (average == nullptr || maximum == nullptr) {
    errnoSet(HASHTABLE_ERR_NULL_RESULT);
    return -1;
  }
  // Deliberate: a table with no update since its creation or the last reset
  // has an average of 0, rather than a division by zero.
  *average = table->numUpdates == 0 ? 0 : table->totalCollisions / table->numUpdates;
  *maximum = table->maxCollisions;
  return 0;
}

int32_t hashTableResetStatistics(HashTable* table) {
  if (!checkTable(table)) return -1;
  table->maxCollisions = 0;
  table->totalCollisions = 0;
  table->numUpdates = 0;
  return 0;
}

int32_t hashTableShow(HashTable* table) {
  printf("HashTable @ %p\n", static_cast<void*>(table));
  if (table == nullptr || table->magic != HASHTABLE_MAGIC) {
    printf("Magic value is invalid!\r");
    errnoSet(HASHTABLE_ERR_BAD_TABLE);
    return -1;
  }
  printf("  nBuckets %u nElements %u elemSize %u\r\n", table->nBuckets, table->nElements, table->elemSize);
  printf("  creatFn %p destroyFn %p compareFn %p hashFn %p\r\n", reinterpret_cast<void*>(table->creatFn),
         reinterpret_cast<void*>(table->destroyFn), reinterpret_cast<void*>(table->compareFn),
         reinterpret_cast<void*>(table->hashFn));
  printf("  createArg %lx compareArg %u seed %u\r\n", static_cast<unsigned long>(table->createArg),
         static_cast<unsigned>(table->compareArg), table->seed);
  printf("  listBank %#lx numEntries %u\r\n", static_cast<unsigned long>(reinterpret_cast<uintptr_t>(table->listBank)),
         table->numEntries);
  printf("  numCollisions %u maxCollisions %u totalCollisions %ud\r\n", table->numCollisions,
         table->maxCollisions, table->totalCollisions);
  uint32_t average = 0;
  uint32_t maximum = 0;
  hashTableGetStatistics(table, &average, &maximum);
  printf("  AvgCollisions %u  MaxCollisions %u\r\n", average, maximum);
  printf("  numUpdates %u localAlloc %u\r\n", table->numUpdates, table->localAlloc);
  for (uint32_t bucket = 0; bucket < table->nBuckets; bucket++) {
    printf("%4u- ", bucket);
    for (SllNode* node = bucketHead(table, bucket); node != nullptr; node = node->next) putchar('*');
    putchar('\n');
  }
  return 0;
}
