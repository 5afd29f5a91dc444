// Pools, list banks, hash tables, the iterator and the two list types,
// through their public interface.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "mdb/containers.h"
#include "platform/sil.h"

namespace {

constexpr uint32_t kSentinel = 12345;

// Restores unlimited allocation however a test ends.
struct AllocFailGuard {
  explicit AllocFailGuard(long n) { silAllocFailAfter(n); }
  ~AllocFailGuard() { silAllocFailAfter(-1); }
};

// A caller's memory block, suitably aligned.
struct Block {
  explicit Block(size_t bytes, unsigned char fill = 0xAB) : words(bytes / 8 + 1) {
    memset(words.data(), fill, words.size() * 8);
  }
  void* get() { return words.data(); }
  bool contains(const void* p) const {
    auto* b = reinterpret_cast<const char*>(words.data());
    return p >= b && p < b + words.size() * 8;
  }
  std::vector<uint64_t> words;
};

// ---------------------------------------------------------------- callbacks
struct Calls {
  int created = 0;
  int destroyed = 0;
  int failCreate = 0;      // 1: fail without an error number, 2: fail with one of our own
  bool failDestroy = false;
  std::vector<void*> seen;
};

int32_t countCreate(void* element, uintptr_t arg) {
  auto* calls = reinterpret_cast<Calls*>(arg);
  calls->seen.push_back(element);
  if (calls->failCreate == 2) errnoSet(777);
  if (calls->failCreate != 0) return -1;
  calls->created++;
  return 0;
}

int32_t countDestroy(void*, uintptr_t arg) {
  auto* calls = reinterpret_cast<Calls*>(arg);
  calls->destroyed++;
  return calls->failDestroy ? -1 : 0;
}

// List bank nodes and iterator nodes carry an int.
int32_t compareInt(const void* a, const void* b, uintptr_t) {
  int x = *static_cast<const int*>(a);
  int y = *static_cast<const int*>(b);
  return x < y ? -1 : (x > y ? 1 : 0);
}

// Hash rows: a name first, like the dictionary's rows.
struct Row {
  const char* name;
  uint32_t value;
};

int32_t compareName(const void* a, const void* b, uintptr_t) {
  return strcmp(static_cast<const Row*>(a)->name, static_cast<const Row*>(b)->name);
}
// Bucket by first letter: "a..." in 0, "b..." in 1 ...
uint32_t letterHash(const void* e, uint32_t nBuckets, uint32_t) {
  return static_cast<uint32_t>(static_cast<const Row*>(e)->name[0] - 'a') % nBuckets;
}
uint32_t badHash(const void*, uint32_t nBuckets, uint32_t) { return nBuckets; }

Row* addRow(HashTable* table, const char* name, uint32_t value = 0) {
  auto* row = static_cast<Row*>(hashTableAllocEntry(table));
  if (row == nullptr) return nullptr;
  row->name = name;
  row->value = value;
  return static_cast<Row*>(hashTableAddEntry(table, row));
}

std::vector<int> bankValues(ListBank* bank, uint32_t list) {
  std::vector<int> values;
  for (void* n = listBankFirstNode(bank, list); n != nullptr; n = listBankNextNode(bank, n))
    values.push_back(*static_cast<int*>(n));
  return values;
}

int* bankAdd(ListBank* bank, uint32_t list, int value) {
  auto* node = static_cast<int*>(listBankAllocNode(bank));
  *node = value;
  return static_cast<int*>(listBankAddNode(bank, list, node));
}

}  // namespace

// ---------------------------------------------------------------- pool
TEST(ContainersPool, FreeListIsAQueueAndExhaustionLeavesErrno) {
  BufPool* pool = bufPoolCreate(nullptr, 32, 4, nullptr, nullptr, 0);
  ASSERT_NE(pool, nullptr);
  EXPECT_EQ(pool->magic, BUFPOOL_MAGIC);
  EXPECT_EQ(pool->localAlloc, 1u);

  char* e[4];
  for (auto& p : e) p = static_cast<char*>(bufPoolAlloc(pool));
  EXPECT_EQ(e[0], pool->elements);  // in address order
  for (int i = 1; i < 4; i++) EXPECT_EQ(e[i] - e[i - 1], 32);
  errnoSet(kSentinel);
  EXPECT_EQ(bufPoolAlloc(pool), nullptr);
  EXPECT_EQ(errnoGet(), kSentinel);

  // Beyond the two link words, contents survive free and alloc.
  memset(e[1] + 16, 0x5A, 16);
  EXPECT_EQ(bufPoolFree(pool, e[1]), 0);
  EXPECT_EQ(bufPoolFree(pool, e[3]), 0);
  EXPECT_EQ(bufPoolAlloc(pool), e[1]);  // freed first, reused first
  EXPECT_EQ(bufPoolFree(pool, e[0]), 0);  // queued behind e[3]
  EXPECT_EQ(bufPoolAlloc(pool), e[3]);
  EXPECT_EQ(bufPoolAlloc(pool), e[0]);
  for (int i = 16; i < 32; i++) EXPECT_EQ(e[1][i], 0x5A);
  EXPECT_EQ(bufPoolDestroy(pool), 0);
}

TEST(ContainersPool, SizesAlignmentAndErrors) {
  EXPECT_EQ(alignAddress(5), 8u);
  EXPECT_EQ(bufPoolGetMemSize(0, 1), 0u);
  EXPECT_EQ(errnoGet(), BUFPOOL_ERR_ZERO_SIZE);
  EXPECT_EQ(bufPoolGetMemSize(1, 0), 0u);
  EXPECT_EQ(errnoGet(), BUFPOOL_ERR_ZERO_COUNT);

  // Odd sizes still give pointer-aligned elements with room for the links.
  for (uint32_t size : {1u, 4u, 12u, 20u}) {
    BufPool* pool = bufPoolCreate(nullptr, size, 3, nullptr, nullptr, 0);
    ASSERT_NE(pool, nullptr);
    for (int i = 0; i < 3; i++) {
      void* p = bufPoolAlloc(pool);
      ASSERT_NE(p, nullptr);
      EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % alignof(void*), 0u) << size;
    }
    bufPoolDestroy(pool);
  }

  EXPECT_EQ(bufPoolAlloc(nullptr), nullptr);
  EXPECT_EQ(errnoGet(), BUFPOOL_ERR_BAD_POOL);
  BufPool bogus{};
  EXPECT_EQ(bufPoolFree(&bogus, &bogus), -1);
  EXPECT_EQ(errnoGet(), BUFPOOL_ERR_BAD_POOL);
  errnoSet(kSentinel);
  EXPECT_EQ(bufPoolDestroy(nullptr), -1);
  EXPECT_EQ(bufPoolDestroy(&bogus), -1);
  EXPECT_EQ(errnoGet(), kSentinel);

  AllocFailGuard guard(0);
  EXPECT_EQ(bufPoolCreate(nullptr, 8, 2, nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(errnoGet(), BUFPOOL_ERR_NO_MEMORY);
}

TEST(ContainersPool, CallbacksAndCallerMemory) {
  Calls calls;
  size_t size = bufPoolGetMemSize(24, 2);
  Block block(size);
  BufPool* pool = bufPoolCreate(block.get(), 24, 2, countCreate, countDestroy, reinterpret_cast<uintptr_t>(&calls));
  ASSERT_EQ(pool, block.get());
  EXPECT_EQ(pool->localAlloc, 0u);
  EXPECT_EQ(calls.created, 0);  // creation runs no callback

  // A failing creatFn: our error unless it set one; the pool is unchanged.
  calls.failCreate = 1;
  EXPECT_EQ(bufPoolAlloc(pool), nullptr);
  EXPECT_EQ(errnoGet(), BUFPOOL_ERR_CREATE_FAILED);
  calls.failCreate = 2;
  EXPECT_EQ(bufPoolAlloc(pool), nullptr);
  EXPECT_EQ(errnoGet(), 777u);
  calls.failCreate = 0;
  errnoSet(kSentinel);
  void* a = bufPoolAlloc(pool);
  EXPECT_EQ(a, pool->elements);
  EXPECT_EQ(errnoGet(), kSentinel);  // success leaves the error number alone
  void* b = bufPoolAlloc(pool);
  EXPECT_TRUE(block.contains(a) && block.contains(b));
  EXPECT_EQ(calls.created, 2);

  // A failing destroyFn is reported, but the element is freed all the same.
  calls.failDestroy = true;
  EXPECT_EQ(bufPoolFree(pool, a), 0);
  EXPECT_EQ(errnoGet(), BUFPOOL_ERR_DESTROY_FAILED);
  EXPECT_EQ(bufPoolAlloc(pool), a);
  EXPECT_EQ(bufPoolDestroy(pool), 0);
  EXPECT_EQ(bufPoolDestroy(pool), -1);  // the magic is gone

  alignas(8) char misaligned[64];
  EXPECT_EQ(bufPoolCreate(misaligned + 1, 8, 1, nullptr, nullptr, 0), nullptr);
  EXPECT_EQ(errnoGet(), BUFPOOL_ERR_NO_MEMORY);
}

// ---------------------------------------------------------------- list bank
TEST(ContainersListBank, SortedBankOrdersAndRefusesInsert) {
  for (uint32_t type : {LISTBANK_TYPE_SINGLE, LISTBANK_TYPE_DOUBLE}) {
    SCOPED_TRACE(type);
    ListBank* bank = listBankCreate(nullptr, 2, 8, sizeof(int), type, nullptr, nullptr, compareInt, 0, 0);
    ASSERT_NE(bank, nullptr);
    EXPECT_EQ(bank->magic, LISTBANK_MAGIC);
    int* three = bankAdd(bank, 1, 3);
    bankAdd(bank, 1, 1);
    int* two = bankAdd(bank, 1, 2);
    EXPECT_EQ(bankValues(bank, 1), (std::vector<int>{1, 2, 3}));
    int* two2 = bankAdd(bank, 1, 2);
    EXPECT_EQ(listBankNextNode(bank, two2), two);  // the later equal goes in front
    EXPECT_EQ(listBankLastNode(bank, 1), three);
    EXPECT_EQ(listBankNodeCount(bank, 1), 4u);
    EXPECT_EQ(listBankNodeCount(bank, 0), 0u);
    EXPECT_EQ(listBankFirstNode(bank, 0), nullptr);

    auto* extra = static_cast<int*>(listBankAllocNode(bank));
    *extra = 0;
    EXPECT_EQ(listBankInsertNode(bank, 1, extra, nullptr), nullptr);
    EXPECT_EQ(errnoGet(), LISTBANK_ERR_SORTED);
    EXPECT_EQ(bankValues(bank, 1), (std::vector<int>{1, 2, 2, 3}));

    // A move into a sorted bank sorts, whatever `after` says.
    EXPECT_EQ(listBankMoveNode(bank, 1, 0, three, nullptr), three);
    EXPECT_EQ(listBankMoveNode(bank, 1, 0, two, nullptr), two);
    EXPECT_EQ(bankValues(bank, 0), (std::vector<int>{2, 3}));
    EXPECT_EQ(bankValues(bank, 1), (std::vector<int>{1, 2}));
    EXPECT_EQ(listBankFreeNode(bank, extra), 0);
    EXPECT_EQ(listBankDestroy(bank), 0);
  }
}

TEST(ContainersListBank, UnsortedBankInsertMoveDelete) {
  for (uint32_t type : {LISTBANK_TYPE_SINGLE, LISTBANK_TYPE_DOUBLE}) {
    SCOPED_TRACE(type);
    ListBank* bank = listBankCreate(nullptr, 3, 6, sizeof(int), type, nullptr, nullptr, nullptr, 0, 0);
    ASSERT_NE(bank, nullptr);
    int* one = bankAdd(bank, 0, 1);
    int* two = bankAdd(bank, 0, 2);
    EXPECT_EQ(bankValues(bank, 0), (std::vector<int>{2, 1}));  // each add at the head
    auto* three = static_cast<int*>(listBankAllocNode(bank));
    *three = 3;
    EXPECT_EQ(listBankInsertNode(bank, 0, three, nullptr), three);
    auto* four = static_cast<int*>(listBankAllocNode(bank));
    *four = 4;
    EXPECT_EQ(listBankInsertNode(bank, 0, four, one), four);  // behind the tail: the new tail
    EXPECT_EQ(bankValues(bank, 0), (std::vector<int>{3, 2, 1, 4}));
    EXPECT_EQ(listBankLastNode(bank, 0), four);

    EXPECT_EQ(listBankMoveNode(bank, 0, 2, four, nullptr), four);
    EXPECT_EQ(listBankMoveNode(bank, 0, 2, three, four), three);
    EXPECT_EQ(bankValues(bank, 0), (std::vector<int>{2, 1}));
    EXPECT_EQ(bankValues(bank, 2), (std::vector<int>{4, 3}));
    EXPECT_EQ(listBankLastNode(bank, 0), one);

    // Delete the tail, then the only node.
    EXPECT_EQ(listBankDeleteNode(bank, 0, one), 0);
    EXPECT_EQ(listBankLastNode(bank, 0), two);
    EXPECT_EQ(listBankDeleteNode(bank, 0, two), 0);
    EXPECT_EQ(listBankFirstNode(bank, 0), nullptr);
    EXPECT_EQ(listBankLastNode(bank, 0), nullptr);
    // A node that is not in the list is refused, not unlinked as a head.
    EXPECT_EQ(listBankDeleteNode(bank, 0, three), -1);
    EXPECT_EQ(errnoGet(), LISTBANK_ERR_BAD_NODE);
    void* fresh = listBankAllocNode(bank);  // in no list at all
    EXPECT_EQ(listBankDeleteNode(bank, 2, fresh), -1);
    EXPECT_EQ(errnoGet(), LISTBANK_ERR_BAD_NODE);
    EXPECT_EQ(listBankFreeNode(bank, fresh), 0);
    EXPECT_EQ(bankValues(bank, 2), (std::vector<int>{4, 3}));

    if (type == LISTBANK_TYPE_SINGLE) {
      EXPECT_EQ(listBankPrevNode(bank, three), nullptr);
      EXPECT_EQ(errnoGet(), LISTBANK_ERR_BAD_LIST_TYPE);
    } else {
      EXPECT_EQ(listBankPrevNode(bank, three), four);
      EXPECT_EQ(listBankPrevNode(bank, four), nullptr);
    }
    listBankDestroy(bank);
  }
}

TEST(ContainersListBank, ErrorsCapacityAndCallbacks) {
  EXPECT_EQ(listBankGetMemSize(0, 1, 1, 1), 0u);
  EXPECT_EQ(errnoGet(), LISTBANK_ERR_ZERO_LISTS);
  EXPECT_EQ(listBankGetMemSize(1, 0, 1, 1), 0u);
  EXPECT_EQ(errnoGet(), LISTBANK_ERR_ZERO_NODES);
  EXPECT_EQ(listBankGetMemSize(1, 1, 0, 1), 0u);
  EXPECT_EQ(errnoGet(), LISTBANK_ERR_ZERO_NODE_SIZE);
  EXPECT_EQ(listBankGetMemSize(1, 1, 1, 2), 0u);
  EXPECT_EQ(errnoGet(), LISTBANK_ERR_BAD_LIST_TYPE);

  Calls calls;
  Block block(listBankGetMemSize(2, 3, sizeof(int), LISTBANK_TYPE_DOUBLE));
  ListBank* bank = listBankCreate(block.get(), 2, 3, sizeof(int), LISTBANK_TYPE_DOUBLE, countCreate, countDestroy,
                                  nullptr, reinterpret_cast<uintptr_t>(&calls), 0);
  ASSERT_EQ(bank, block.get());
  EXPECT_EQ(bank->localAlloc, 0u);
  EXPECT_EQ(listBankNumberOfLists(bank), 2u);

  bankAdd(bank, 0, 1);
  bankAdd(bank, 1, 2);
  auto* loose = static_cast<int*>(listBankAllocNode(bank));
  EXPECT_EQ(calls.seen, (std::vector<void*>{listBankFirstNode(bank, 0), listBankFirstNode(bank, 1), loose}));
  EXPECT_TRUE(block.contains(loose));
  errnoSet(kSentinel);
  EXPECT_EQ(listBankAllocNode(bank), nullptr);
  EXPECT_EQ(errnoGet(), LISTBANK_ERR_POOL_EMPTY);
  EXPECT_EQ(listBankFreeNode(bank, loose), 0);
  calls.failCreate = 1;  // a failing creatFn is not an empty pool
  EXPECT_EQ(listBankAllocNode(bank), nullptr);
  EXPECT_EQ(errnoGet(), BUFPOOL_ERR_CREATE_FAILED);
  calls.failCreate = 0;
  EXPECT_EQ(listBankAllocNode(bank), loose);

  EXPECT_EQ(listBankAddNode(bank, 2, loose), nullptr);
  EXPECT_EQ(errnoGet(), LISTBANK_ERR_BAD_LIST);
  EXPECT_EQ(listBankAddNode(bank, 0, nullptr), nullptr);
  EXPECT_EQ(errnoGet(), LISTBANK_ERR_BAD_NODE);
  EXPECT_EQ(listBankNodeCount(bank, 5), 0u);
  EXPECT_EQ(errnoGet(), LISTBANK_ERR_BAD_LIST);
  ListBank bogus{};
  EXPECT_EQ(listBankAllocNode(&bogus), nullptr);
  EXPECT_EQ(errnoGet(), LISTBANK_ERR_BAD_BANK);
  EXPECT_EQ(listBankNumberOfLists(nullptr), 0u);
  EXPECT_EQ(errnoGet(), LISTBANK_ERR_BAD_BANK);

  // Destroy deletes the nodes in the lists (destroyFn for each), not the loose one.
  int destroyedBefore = calls.destroyed;
  EXPECT_EQ(listBankDestroy(bank), 0);
  EXPECT_EQ(calls.destroyed - destroyedBefore, 2);
  EXPECT_EQ(listBankDestroy(bank), -1);

  AllocFailGuard guard(0);
  EXPECT_EQ(listBankCreate(nullptr, 1, 1, 4, 1, nullptr, nullptr, nullptr, 0, 0), nullptr);
  EXPECT_EQ(errnoGet(), LISTBANK_ERR_NO_MEMORY);
}

// ---------------------------------------------------------------- hash table
TEST(ContainersHashTable, ElementLifecycleAndBucketWord) {
  HashTable* table = hashTableSimpleCreate(4, 3, sizeof(Row), compareName, letterHash);
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->magic, HASHTABLE_MAGIC);
  EXPECT_EQ(table->seed, 71u);

  // The hidden word lies right behind the user's bytes: -1 after alloc.
  auto* row = static_cast<Row*>(hashTableAllocEntry(table));
  ASSERT_NE(row, nullptr);
  uintptr_t word;
  memcpy(&word, row + 1, sizeof word);
  EXPECT_EQ(word, HASHTABLE_NO_BUCKET);
  EXPECT_EQ(hashTableFreeEntry(table, row), 0);  // fresh from alloc: free at once

  row = static_cast<Row*>(hashTableAllocEntry(table));
  row->name = "b1";
  EXPECT_EQ(hashTableAddEntry(table, row), row);
  memcpy(&word, row + 1, sizeof word);
  EXPECT_EQ(word, 1u);
  EXPECT_EQ(hashTableNumEntries(table), 1);
  EXPECT_EQ(hashTableAddEntry(table, row), nullptr);  // twice
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_BAD_ELEMENT);
  EXPECT_EQ(hashTableFreeEntry(table, row), -1);  // in a bucket
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_BAD_ELEMENT);
  EXPECT_EQ(hashTableNumEntries(table), 1);

  EXPECT_EQ(hashTableDeleteEntry(table, row), 0);
  EXPECT_EQ(hashTableNumEntries(table), 0);
  EXPECT_EQ(hashTableFreeEntry(table, row), -1);  // delete has released it already
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_BAD_ELEMENT);
  EXPECT_EQ(hashTableDeleteEntry(table, row), -1);  // not in its bucket any more
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_BANK_FAILED);
  EXPECT_EQ(hashTableNumEntries(table), 0);

  // Capacity 3: the fourth alloc fails in the bank.
  EXPECT_NE(addRow(table, "a"), nullptr);
  EXPECT_NE(addRow(table, "b"), nullptr);
  auto* loose = static_cast<Row*>(hashTableAllocEntry(table));
  EXPECT_NE(loose, nullptr);
  EXPECT_EQ(hashTableAllocEntry(table), nullptr);
  EXPECT_EQ(errnoGet(), LISTBANK_ERR_POOL_EMPTY);
  EXPECT_EQ(hashTableDeleteEntry(table, loose), -1);
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_BAD_ELEMENT);
  EXPECT_EQ(hashTableAddEntry(table, nullptr), nullptr);
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_BAD_ELEMENT);
  EXPECT_EQ(hashTableDestroy(table), 0);
}

TEST(ContainersHashTable, SearchWithForeignKey) {
  HashTable* table = hashTableSimpleCreate(7, 8, sizeof(Row), compareName, letterHash);
  Row* abc = addRow(table, "abc", 1);
  addRow(table, "aaa", 2);
  Row* xyz = addRow(table, "xyz", 3);

  Row key{};
  std::string name = "abc";  // another copy of the text: only compareFn decides
  key.name = name.c_str();
  EXPECT_EQ(hashTableSearchForEntry(table, &key), abc);
  key.name = "xyz";
  EXPECT_EQ(hashTableSearchForEntry(table, &key), xyz);
  key.name = "abb";  // a miss in front of a greater element
  errnoSet(kSentinel);
  EXPECT_EQ(hashTableSearchForEntry(table, &key), nullptr);
  EXPECT_EQ(errnoGet(), kSentinel);

  // Equal keys stand side by side; the later one is found first.
  Row* abc2 = addRow(table, "abc", 4);
  key.name = "abc";
  EXPECT_EQ(hashTableSearchForEntry(table, &key), abc2);
  EXPECT_EQ(hashTableDeleteEntry(table, abc2), 0);
  EXPECT_EQ(hashTableSearchForEntry(table, &key), abc);

  EXPECT_EQ(hashTableSearchForEntry(table, nullptr), nullptr);
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_NULL_KEY);
  EXPECT_EQ(hashTableSearchForEntry(nullptr, &key), nullptr);
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_BAD_TABLE);
  hashTableDestroy(table);

  // A hash function out of range: add fails and the element stays free-able.
  table = hashTableSimpleCreate(3, 2, sizeof(Row), compareName, badHash);
  auto* row = static_cast<Row*>(hashTableAllocEntry(table));
  row->name = "a";
  EXPECT_EQ(hashTableAddEntry(table, row), nullptr);
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_BAD_BUCKET);
  EXPECT_EQ(hashTableSearchForEntry(table, row), nullptr);
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_BAD_BUCKET);
  EXPECT_EQ(hashTableFreeEntry(table, row), 0);
  EXPECT_EQ(hashTableNumEntries(table), 0);
  hashTableDestroy(table);
}

TEST(ContainersHashTable, CollisionStatisticsAndReset) {
  HashTable* table = hashTableSimpleCreate(4, 10, sizeof(Row), compareName, letterHash);
  uint32_t average = 99, maximum = 99;
  EXPECT_EQ(hashTableGetStatistics(table, &average, &maximum), 0);  // no update yet: no division by 0
  EXPECT_EQ(average, 0u);
  EXPECT_EQ(maximum, 0u);

  Row* a1 = addRow(table, "a1");  // collisions after each update: 0
  addRow(table, "a2");            // 1
  addRow(table, "a3");            // 2
  Row* b1 = addRow(table, "b1");  // 2
  EXPECT_EQ(hashTableNumCollisions(table), 2);
  EXPECT_EQ(hashTableDeleteEntry(table, a1), 0);  // bucket still occupied: 1
  EXPECT_EQ(hashTableDeleteEntry(table, b1), 0);  // bucket left empty: 1
  EXPECT_EQ(hashTableNumCollisions(table), 1);
  EXPECT_EQ(table->maxCollisions, 2u);
  EXPECT_EQ(table->totalCollisions, 7u);
  EXPECT_EQ(table->numUpdates, 6u);
  EXPECT_EQ(hashTableGetStatistics(table, &average, &maximum), 0);
  EXPECT_EQ(average, 1u);
  EXPECT_EQ(maximum, 2u);

  EXPECT_EQ(hashTableResetStatistics(table), 0);
  EXPECT_EQ(hashTableNumCollisions(table), 1);
  EXPECT_EQ(hashTableGetStatistics(table, &average, &maximum), 0);
  EXPECT_EQ(average, 0u);
  EXPECT_EQ(maximum, 0u);
  addRow(table, "c1");  // numCollisions 1 counts into the fresh totals
  EXPECT_EQ(table->totalCollisions, 1u);
  EXPECT_EQ(table->numUpdates, 1u);
  EXPECT_EQ(table->maxCollisions, 1u);

  EXPECT_EQ(hashTableGetStatistics(table, nullptr, &maximum), -1);
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_NULL_RESULT);
  EXPECT_EQ(hashTableNumCollisions(nullptr), -1);
  EXPECT_EQ(hashTableResetStatistics(nullptr), -1);
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_BAD_TABLE);
  hashTableDestroy(table);
}

TEST(ContainersHashTable, UnsortedWalkVisitsEachOnce) {
  // 8 buckets, filled only in 2, 3 and 5: empty buckets at both ends.
  HashTable* table = hashTableSimpleCreate(8, 8, sizeof(Row), compareName, letterHash);
  for (const char* name : {"fz", "c2", "fa", "d1", "c1"}) addRow(table, name);
  std::vector<std::string> seen;
  for (void* e = hashTableNextEntryUnsorted(table, nullptr); e != nullptr; e = hashTableNextEntryUnsorted(table, e))
    seen.push_back(static_cast<Row*>(e)->name);
  EXPECT_EQ(seen, (std::vector<std::string>{"c1", "c2", "d1", "fa", "fz"}));

  auto* loose = static_cast<Row*>(hashTableAllocEntry(table));
  EXPECT_EQ(hashTableNextEntryUnsorted(table, loose), nullptr);
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_BAD_ELEMENT);
  hashTableDestroy(table);

  HashTable* empty = hashTableSimpleCreate(3, 1, sizeof(Row), compareName, letterHash);
  EXPECT_EQ(hashTableNextEntryUnsorted(empty, nullptr), nullptr);
  hashTableDestroy(empty);
}

TEST(ContainersHashTable, CreateErrorsCallerMemoryAndCallbacks) {
  EXPECT_EQ(hashTableGetMemSize(0, 1, 1), 0u);
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_ZERO_BUCKETS);
  EXPECT_EQ(hashTableGetMemSize(1, 0, 1), 0u);
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_ZERO_ELEMENTS);
  EXPECT_EQ(hashTableGetMemSize(1, 1, 0), 0u);
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_ZERO_ELEM_SIZE);
  EXPECT_EQ(hashTableSimpleCreate(3, 3, sizeof(Row), nullptr, letterHash), nullptr);
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_NULL_COMPARE);
  EXPECT_EQ(hashTableSimpleCreate(3, 3, sizeof(Row), compareName, nullptr), nullptr);
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_NULL_HASH);
  {
    AllocFailGuard guard(0);
    EXPECT_EQ(hashTableSimpleCreate(3, 3, sizeof(Row), compareName, letterHash), nullptr);
    EXPECT_EQ(errnoGet(), HASHTABLE_ERR_NO_MEMORY);
  }

  // Header, bank and pool all inside the caller's block; no allocation at all.
  Calls calls;
  Block block(hashTableGetMemSize(5, 4, sizeof(Row)));
  AllocFailGuard guard(0);
  HashTable* table = hashTableCreate(block.get(), 5, 4, sizeof(Row), countCreate, countDestroy, compareName,
                                     letterHash, reinterpret_cast<uintptr_t>(&calls), 0, 3);
  ASSERT_EQ(table, block.get());
  EXPECT_EQ(table->localAlloc, 0u);
  EXPECT_TRUE(block.contains(table->listBank));
  Row* a = addRow(table, "a");
  addRow(table, "b");
  auto* loose = static_cast<Row*>(hashTableAllocEntry(table));
  EXPECT_TRUE(block.contains(a) && block.contains(loose));
  EXPECT_EQ(calls.created, 3);
  EXPECT_EQ(hashTableFreeEntry(table, loose), 0);
  EXPECT_EQ(calls.destroyed, 1);
  EXPECT_EQ(hashTableDestroy(table), 0);  // the two in the table
  EXPECT_EQ(calls.destroyed, 3);
  EXPECT_EQ(hashTableDestroy(table), -1);
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_BAD_TABLE);
}

TEST(ContainersHashTable, ShowPrintsFieldsAndBuckets) {
  HashTable* table = hashTableCreate(nullptr, 3, 6, sizeof(Row), nullptr, nullptr, compareName, letterHash,
                                     0xbeef, 9, 71);
  addRow(table, "b1");
  addRow(table, "b2");
  addRow(table, "c1");
  char text[1024];
  snprintf(text, sizeof text,
           "HashTable @ %p\n"
           "  nBuckets 3 nElements 6 elemSize 16\r\n"
           "  creatFn (nil) destroyFn (nil) compareFn %p hashFn %p\r\n"
           "  createArg beef compareArg 9 seed 71\r\n"
           "  listBank %#lx numEntries 3\r\n"
           "  numCollisions 1 maxCollisions 1 totalCollisions 2d\r\n"
           "  AvgCollisions 0  MaxCollisions 1\r\n"
           "  numUpdates 3 localAlloc 1\r\n"
           "   0- \n"
           "   1- **\n"
           "   2- *\n",
           static_cast<void*>(table), reinterpret_cast<void*>(compareName), reinterpret_cast<void*>(letterHash),
           static_cast<unsigned long>(reinterpret_cast<uintptr_t>(table->listBank)));
  testing::internal::CaptureStdout();
  EXPECT_EQ(hashTableShow(table), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), text);

  HashTable bogus{};
  snprintf(text, sizeof text, "HashTable @ %p\nMagic value is invalid!\r", static_cast<void*>(&bogus));
  testing::internal::CaptureStdout();
  EXPECT_EQ(hashTableShow(&bogus), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), text);
  EXPECT_EQ(errnoGet(), HASHTABLE_ERR_BAD_TABLE);
  hashTableDestroy(table);
}

// ---------------------------------------------------------------- iterator
namespace {

// A container of our own: its first field is the iterator pointer.
struct IntList {
  Iterator* iterator;
  LstList list;
};
struct IntNode {
  LstNode link;
  int value;
};

void* intFirst(void* c, uint32_t) { return lstFirst(&static_cast<IntList*>(c)->list); }
void* intLast(void* c, uint32_t) { return lstLast(&static_cast<IntList*>(c)->list); }
void* intNext(void*, void* n) { return lstNext(static_cast<LstNode*>(n)); }
void* intPrev(void*, void* n) { return lstPrevious(static_cast<LstNode*>(n)); }
int32_t compareIntNode(const void* node, const void* key, uintptr_t) {
  return compareInt(&static_cast<const IntNode*>(node)->value, key, 0);
}
int32_t collect(void* node, uint32_t, uintptr_t arg) {
  reinterpret_cast<std::vector<int>*>(arg)->push_back(static_cast<IntNode*>(node)->value);
  return 0;
}
int32_t stopAtThree(void* node, uint32_t list, uintptr_t arg) {
  collect(node, list, arg);
  return static_cast<IntNode*>(node)->value == 3;
}

}  // namespace

TEST(ContainersIterator, WalksAndSearchesBySign) {
  IntList c{};
  IntNode nodes[5];
  for (int i = 0; i < 5; i++) {
    nodes[i].value = i + 1;
    lstAdd(&c.list, &nodes[i].link);
  }
  ASSERT_EQ(iterCreate(&c, intFirst, intLast, intNext, intPrev, compareIntNode, 0), 0);
  ASSERT_NE(c.iterator, nullptr);
  EXPECT_EQ(c.iterator->magic, ITER_MAGIC);
  EXPECT_EQ(c.iterator->localAlloc, 1u);

  std::vector<int> seen;
  auto arg = reinterpret_cast<uintptr_t>(&seen);
  EXPECT_EQ(iterForEachEntry(&c, 0, collect, arg, ITER_FORWARD), 0);
  EXPECT_EQ(iterForEachEntry(&c, 0, collect, arg, ITER_BACKWARD), 0);
  EXPECT_EQ(seen, (std::vector<int>{1, 2, 3, 4, 5, 5, 4, 3, 2, 1}));

  seen.clear();
  void* at = nullptr;
  EXPECT_EQ(iterForEachEntryUntil(&c, 0, stopAtThree, arg, ITER_FORWARD, &at), 0);
  EXPECT_EQ(at, &nodes[2]);
  at = &nodes[3];
  EXPECT_EQ(iterForEachEntryUntil(&c, 0, stopAtThree, arg, ITER_FORWARD, &at), 0);
  EXPECT_EQ(at, nullptr);
  EXPECT_EQ(seen, (std::vector<int>{1, 2, 3, 4, 5}));

  int key = 3;
  EXPECT_EQ(iterSearchForEntry(&c, 0, &key, nullptr, 0, ITER_FORWARD), &nodes[2]);
  EXPECT_EQ(iterSearchForEntry(&c, 0, &key, nullptr, -5, ITER_FORWARD), &nodes[0]);
  EXPECT_EQ(iterSearchForEntry(&c, 0, &key, nullptr, 1, ITER_FORWARD), &nodes[3]);
  EXPECT_EQ(iterSearchForEntry(&c, 0, &key, nullptr, 7, ITER_BACKWARD), &nodes[4]);
  EXPECT_EQ(iterSearchForEntry(&c, 0, &key, &nodes[1], -1, ITER_BACKWARD), &nodes[1]);
  key = 9;
  errnoSet(kSentinel);
  EXPECT_EQ(iterSearchForEntry(&c, 0, &key, nullptr, 0, ITER_FORWARD), nullptr);
  EXPECT_EQ(errnoGet(), kSentinel);

  // Selected entries: while below 3 from the head; it stops on the 3.
  seen.clear();
  key = 3;
  at = nullptr;
  EXPECT_EQ(iterForSelectedEntries(&c, 0, collect, arg, ITER_FORWARD, &key, &at, -1), 0);
  EXPECT_EQ(seen, (std::vector<int>{1, 2}));
  EXPECT_EQ(at, &nodes[2]);
  seen.clear();
  at = nullptr;
  EXPECT_EQ(iterForSelectedEntries(&c, 0, collect, arg, ITER_BACKWARD, &key, &at, 1), 0);
  EXPECT_EQ(seen, (std::vector<int>{5, 4}));
  key = 0;
  at = nullptr;
  EXPECT_EQ(iterForSelectedEntries(&c, 0, collect, arg, ITER_FORWARD, &key, &at, 1), 0);
  EXPECT_EQ(at, nullptr);  // ran to the end

  EXPECT_EQ(iterDestroy(&c), 0);
  EXPECT_EQ(c.iterator, nullptr);
  EXPECT_EQ(iterDestroy(&c), -1);
  EXPECT_EQ(errnoGet(), ITER_ERR_BAD_ITERATOR);
}

TEST(ContainersIterator, DeletingCallbackAndErrors) {
  // Over a list bank, whose iterator lies in its own block.
  ListBank* bank = listBankCreate(nullptr, 1, 4, sizeof(int), LISTBANK_TYPE_DOUBLE, nullptr, nullptr, nullptr, 0, 0);
  for (int i = 0; i < 4; i++) bankAdd(bank, 0, i);
  EXPECT_EQ(bank->iterator->localAlloc, 0u);
  EXPECT_EQ(iterForEachEntry(bank, 0, listBankNodeDeleteCallback, reinterpret_cast<uintptr_t>(bank),
                             ITER_BACKWARD), 0);
  EXPECT_EQ(listBankNodeCount(bank, 0), 0u);
  for (int i = 0; i < 4; i++) EXPECT_NE(listBankAllocNode(bank), nullptr);  // all back in the pool
  listBankDestroy(bank);

  ListBank* single = listBankCreate(nullptr, 1, 2, 4, LISTBANK_TYPE_SINGLE, nullptr, nullptr, compareInt, 0, 0);
  std::vector<int> seen;
  auto arg = reinterpret_cast<uintptr_t>(&seen);
  EXPECT_EQ(iterForEachEntry(single, 0, collect, arg, ITER_BACKWARD), -1);
  EXPECT_EQ(errnoGet(), ITER_ERR_NO_BACKWARD);
  EXPECT_EQ(iterForEachEntry(single, 0, collect, arg, 2), -1);
  EXPECT_EQ(errnoGet(), ITER_ERR_BAD_DIRECTION);
  EXPECT_EQ(iterForEachEntry(single, 0, nullptr, arg, ITER_FORWARD), -1);
  EXPECT_EQ(errnoGet(), ITER_ERR_NULL_CALLBACK);
  EXPECT_EQ(iterForEachEntryUntil(single, 0, collect, arg, ITER_FORWARD, nullptr), -1);
  EXPECT_EQ(errnoGet(), ITER_ERR_NULL_NODE_PTR);
  EXPECT_EQ(iterSearchForEntry(single, 0, nullptr, nullptr, 0, ITER_FORWARD), nullptr);
  EXPECT_EQ(errnoGet(), ITER_ERR_NULL_KEY);
  EXPECT_EQ(iterForEachEntry(nullptr, 0, collect, arg, ITER_FORWARD), -1);
  EXPECT_EQ(errnoGet(), ITER_ERR_NULL_CONTAINER);
  listBankDestroy(single);

  IntList c{};
  int key = 1;
  EXPECT_EQ(iterForEachEntry(&c, 0, collect, arg, ITER_FORWARD), -1);
  EXPECT_EQ(errnoGet(), ITER_ERR_BAD_ITERATOR);
  EXPECT_EQ(iterCreate(&c, nullptr, nullptr, intNext, nullptr, nullptr, 0), -1);
  EXPECT_EQ(errnoGet(), ITER_ERR_NULL_FIRST);
  EXPECT_EQ(iterCreate(&c, intFirst, nullptr, nullptr, nullptr, nullptr, 0), -1);
  EXPECT_EQ(errnoGet(), ITER_ERR_NULL_NEXT);
  {
    AllocFailGuard guard(0);
    EXPECT_EQ(iterCreate(&c, intFirst, nullptr, intNext, nullptr, nullptr, 0), -1);
    EXPECT_EQ(errnoGet(), ITER_ERR_NO_MEMORY);
  }
  ASSERT_EQ(iterCreate(&c, intFirst, nullptr, intNext, nullptr, nullptr, 0), 0);
  EXPECT_EQ(iterSearchForEntry(&c, 0, &key, nullptr, 0, ITER_FORWARD), nullptr);
  EXPECT_EQ(errnoGet(), ITER_ERR_NO_COMPARE);
  EXPECT_EQ(iterForEachEntry(&c, 0, collect, arg, ITER_BACKWARD), -1);
  EXPECT_EQ(errnoGet(), ITER_ERR_NO_BACKWARD);
  iterDestroy(&c);
}

// ---------------------------------------------------------------- sll
namespace {
int32_t keepGoingUnlessMarked(SllNode* node, uintptr_t arg) { return node != reinterpret_cast<SllNode*>(arg); }
int32_t unlinkHead(SllNode* node, uintptr_t arg) {
  sllRemove(reinterpret_cast<SllList*>(arg), node, nullptr);
  return 1;
}
}  // namespace

TEST(ContainersSll, PutGetRemoveAndEach) {
  SllNode n[4];
  SllList list;
  sllInit(&list);
  sllPutAtTail(&list, &n[1]);
  sllPutAtHead(&list, &n[0]);
  sllPutAtTail(&list, &n[2]);
  EXPECT_EQ(sllCount(&list), 3u);
  EXPECT_EQ(list.head, &n[0]);
  EXPECT_EQ(list.tail, &n[2]);
  EXPECT_EQ(sllPrevious(&list, &n[2]), &n[1]);
  EXPECT_EQ(sllPrevious(&list, &n[0]), nullptr);
  EXPECT_EQ(sllPrevious(&list, &n[3]), nullptr);
  EXPECT_EQ(sllEach(&list, keepGoingUnlessMarked, reinterpret_cast<uintptr_t>(&n[1])), &n[1]);
  EXPECT_EQ(sllEach(&list, keepGoingUnlessMarked, 0), nullptr);

  sllRemove(&list, &n[2], &n[1]);  // the tail: tail moves back
  EXPECT_EQ(list.tail, &n[1]);
  EXPECT_EQ(n[1].next, nullptr);
  sllRemove(&list, &n[0], nullptr);
  sllRemove(&list, &n[1], nullptr);  // the only node
  EXPECT_EQ(list.head, nullptr);
  EXPECT_EQ(list.tail, nullptr);

  // sllGet leaves a stale tail behind; a put after it must not use it.
  sllPutAtTail(&list, &n[0]);
  EXPECT_EQ(sllGet(&list), &n[0]);
  EXPECT_EQ(sllGet(&list), nullptr);
  sllPutAtTail(&list, &n[3]);
  EXPECT_EQ(list.head, &n[3]);
  EXPECT_EQ(list.tail, &n[3]);
  EXPECT_EQ(sllCount(&list), 1u);
  sllGet(&list);
  sllPutAtHead(&list, &n[2]);
  EXPECT_EQ(list.tail, &n[2]);

  // The callback may unlink the node it is given.
  sllPutAtTail(&list, &n[1]);
  EXPECT_EQ(sllEach(&list, unlinkHead, reinterpret_cast<uintptr_t>(&list)), nullptr);
  EXPECT_EQ(list.head, nullptr);
}

// ---------------------------------------------------------------- lst
TEST(ContainersLst, NthStepFindAndDelete) {
  LstNode n[6];
  LstList list;
  lstInit(&list);
  for (auto& node : n) lstAdd(&list, &node);
  EXPECT_EQ(lstCount(&list), 6u);
  for (int i = 1; i <= 6; i++) EXPECT_EQ(lstNth(&list, i), &n[i - 1]) << i;  // from either end
  EXPECT_EQ(lstNth(&list, 0), nullptr);
  EXPECT_EQ(lstNth(&list, 7), nullptr);
  EXPECT_EQ(lstNth(&list, -1), nullptr);
  EXPECT_EQ(lstNStep(&n[1], 3), &n[4]);
  EXPECT_EQ(lstNStep(&n[4], -4), &n[0]);
  EXPECT_EQ(lstNStep(&n[4], 2), nullptr);
  EXPECT_EQ(lstFind(&list, &n[3]), 4);

  lstDelete(&list, &n[3]);  // its own links stay
  EXPECT_EQ(n[3].next, &n[4]);
  EXPECT_EQ(n[3].previous, &n[2]);
  EXPECT_EQ(lstFind(&list, &n[3]), -1);
  EXPECT_EQ(lstNext(&n[2]), &n[4]);
  EXPECT_EQ(lstGet(&list), &n[0]);
  EXPECT_EQ(lstFirst(&list)->previous, nullptr);
  lstInsert(&list, nullptr, &n[0]);
  lstInsert(&list, &n[5], &n[3]);
  EXPECT_EQ(lstLast(&list), &n[3]);
  EXPECT_EQ(lstCount(&list), 6u);
}

TEST(ContainersLst, ConcatExtractAndFree) {
  LstNode n[5];
  LstList a, b, out;
  lstInit(&a);
  lstInit(&b);
  lstInit(&out);
  for (int i = 0; i < 3; i++) lstAdd(&b, &n[i]);
  lstConcat(&a, &b);  // into an empty list: takes over head, tail, count
  EXPECT_EQ(a.head, &n[0]);
  EXPECT_EQ(a.tail, &n[2]);
  EXPECT_EQ(lstCount(&a), 3u);
  EXPECT_TRUE(b.head == nullptr && b.tail == nullptr && b.count == 0);
  lstConcat(&a, &b);  // an empty other: nothing
  EXPECT_EQ(lstCount(&a), 3u);
  lstAdd(&b, &n[3]);
  lstAdd(&b, &n[4]);
  lstConcat(&a, &b);
  EXPECT_EQ(lstCount(&a), 5u);
  EXPECT_EQ(n[3].previous, &n[2]);
  EXPECT_EQ(lstNth(&a, 5), &n[4]);

  EXPECT_EQ(lstExtract(&a, &n[1], &n[3], &out), &n[3]);
  EXPECT_EQ(lstCount(&a), 2u);
  EXPECT_EQ(lstCount(&out), 3u);
  EXPECT_EQ(n[0].next, &n[4]);
  EXPECT_EQ(n[4].previous, &n[0]);
  EXPECT_EQ(out.head, &n[1]);
  EXPECT_EQ(out.tail, &n[3]);
  EXPECT_EQ(n[1].previous, nullptr);
  EXPECT_EQ(n[3].next, nullptr);
  lstExtract(&a, &n[0], &n[4], &b);  // the whole list
  EXPECT_EQ(a.head, nullptr);
  EXPECT_EQ(a.tail, nullptr);
  EXPECT_EQ(lstCount(&b), 2u);

  LstList heap;
  lstInit(&heap);
  lstFree(&heap);  // empty: left alone
  for (int i = 0; i < 3; i++) lstAdd(&heap, static_cast<LstNode*>(silMalloc(sizeof(LstNode))));
  lstFree(&heap);  // the sanitizer checks each node is freed once
  EXPECT_EQ(heap.head, nullptr);
  EXPECT_EQ(lstCount(&heap), 0u);
}
