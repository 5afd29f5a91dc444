// Fixed-capacity containers: element pools, list banks, hash tables, the
// iterator that walks them, and the two intrusive list types underneath.
//
// Layers, each built on the one below:
//   BufPool   equal-sized elements handed out from one block;
//   ListBank  a fixed number of lists whose nodes come from one pool;
//   HashTable a list bank with one (sorted, singly linked) list per bucket.
// Nothing is allocated after creation: a full container refuses, it never
// grows. Every create takes an optional memory block from the caller (it must
// hold ...GetMemSize() bytes and be aligned for a pointer); without one the
// container allocates a single block with silCalloc and frees it on destroy.
//
// Each object carries a magic value that every operation checks first, so a
// wrong or stale pointer gives an error number instead of a wild access. Failures return 0/null or -1 and
// set the thread's error number (errnoSet) to one of the values below.
//
// The containers take no locks: the caller serialises. Searches and walks
// only read, so they may run together under a read lock; alloc, add, delete
// and free need the write lock.
#ifndef MDB_CONTAINERS_H
#define MDB_CONTAINERS_H

#include <cstddef>
#include <cstdint>

struct Iterator;

// ---------------------------------------------------------------- magic values
enum : uint32_t {
  BUFPOOL_MAGIC = 0x504F4F4Cu,    // "POOL"
  LISTBANK_MAGIC = 0x4C424E4Bu,   // "LBNK"
  HASHTABLE_MAGIC = 0x4854424Cu,  // "HTBL"
  ITER_MAGIC = 0x49544552u,       // "ITER"
};

// ---------------------------------------------------------------- error numbers
enum : uint32_t {
  // pool
  BUFPOOL_ERR_BAD_POOL = 81985537,        // null pool (or element) or wrong magic
  BUFPOOL_ERR_CREATE_FAILED = 81985538,   // creatFn failed and set no error of its own
  BUFPOOL_ERR_DESTROY_FAILED = 81985539,  // destroyFn failed and set no error of its own
  BUFPOOL_ERR_ZERO_SIZE = 81985540,       // element size 0
  BUFPOOL_ERR_ZERO_COUNT = 81985541,      // element count 0
  BUFPOOL_ERR_NO_MEMORY = 81985542,       // no (or a misaligned) memory block

  // list bank
  LISTBANK_ERR_BAD_BANK = 82051073,       // null bank or wrong magic
  LISTBANK_ERR_ZERO_LISTS = 82051074,     // nLists 0
  LISTBANK_ERR_ZERO_NODES = 82051075,     // nNodes 0
  LISTBANK_ERR_ZERO_NODE_SIZE = 82051076, // nodeSize 0 (or too large)
  LISTBANK_ERR_NO_MEMORY = 82051077,      // no (or a misaligned) memory block
  LISTBANK_ERR_BAD_NODE = 82051078,       // null node, or a node not in the singly linked list named
  LISTBANK_ERR_BAD_LIST = 82051079,       // list number not below nLists
  LISTBANK_ERR_SORTED = 82051080,         // listBankInsertNode on a sorted bank
  LISTBANK_ERR_BAD_LIST_TYPE = 82051081,  // listType not 0 or 1; backwards in a singly linked list
  LISTBANK_ERR_POOL_EMPTY = 82051082,     // no free node

  // hash table
  HASHTABLE_ERR_BAD_TABLE = 82182145,     // null table or wrong magic
  HASHTABLE_ERR_ZERO_BUCKETS = 82182146,  // nBuckets 0
  HASHTABLE_ERR_ZERO_ELEMENTS = 82182147, // nElements 0
  HASHTABLE_ERR_ZERO_ELEM_SIZE = 82182148,// elemSize 0 (or too large)
  HASHTABLE_ERR_NO_MEMORY = 82182149,     // no (or a misaligned) memory block
  HASHTABLE_ERR_NULL_COMPARE = 82182150,  // null compareFn
  HASHTABLE_ERR_NULL_HASH = 82182151,     // null hashFn
  HASHTABLE_ERR_BAD_ELEMENT = 82182152,   // null element, or a bucket word unfit for the operation
  HASHTABLE_ERR_BAD_BUCKET = 82182153,    // hashFn gave a bucket not below nBuckets
  HASHTABLE_ERR_NULL_KEY = 82182154,      // search with a null key
  HASHTABLE_ERR_NULL_RESULT = 82182155,   // hashTableGetStatistics with a null result pointer
  HASHTABLE_ERR_BANK_FAILED = 82182156,   // the list bank refused an add or delete

  // iterator
  ITER_ERR_BAD_ITERATOR = 82116609,       // no iterator in the container, or a wrong magic
  ITER_ERR_NULL_CONTAINER = 82116610,
  ITER_ERR_NULL_FIRST = 82116611,         // null firstFn
  ITER_ERR_NULL_NEXT = 82116612,          // null nextFn
  ITER_ERR_NO_MEMORY = 82116613,          // iterCreate could not allocate the iterator
  ITER_ERR_BAD_DIRECTION = 82116614,      // direction not 0 or 1
  ITER_ERR_NO_BACKWARD = 82116615,        // backward walk without lastFn and prevFn
  ITER_ERR_NULL_KEY = 82116616,
  ITER_ERR_NO_COMPARE = 82116617,         // search without compareFn
  ITER_ERR_NULL_CALLBACK = 82116618,
  ITER_ERR_NULL_NODE_PTR = 82116619,      // null pNode
};

// ---------------------------------------------------------------- other constants
enum : uint32_t {
  LISTBANK_TYPE_DOUBLE = 0,  // lst lists
  LISTBANK_TYPE_SINGLE = 1,  // sll lists
  ITER_FORWARD = 0,
  ITER_BACKWARD = 1,
  HASHTABLE_DEFAULT_SEED = 71,  // the seed of hashTableSimpleCreate
};

// The bucket word of a hash element that stands in no bucket.
constexpr uintptr_t HASHTABLE_NO_BUCKET = ~static_cast<uintptr_t>(0);

// Alignment of every element, node and header inside a container block, and
// the alignment a caller's memory block must have: enough for the pointer
// links that the containers keep in their nodes and for 64-bit fields.
constexpr size_t CONTAINER_ALIGN = alignof(void*) > alignof(uint64_t) ? alignof(void*) : alignof(uint64_t);

// ---------------------------------------------------------------- callbacks
// Called with an element (the user's part of a node) and the container's
// create argument when it is allocated (non-zero result: failure) and freed.
typedef int32_t (*ContainerElemFn)(void* element, uintptr_t arg);
typedef ContainerElemFn BufPoolElemFn;
typedef ContainerElemFn ListBankNodeFn;
typedef ContainerElemFn HashTableElemFn;

// Less than, equal to or greater than 0, like strcmp. For a search the first
// argument is the container's node and the second the key.
typedef int32_t (*ContainerCompareFn)(const void* a, const void* b, uintptr_t arg);
typedef ContainerCompareFn ListBankCompareFn;
typedef ContainerCompareFn HashTableCompareFn;
typedef ContainerCompareFn IterCompareFn;

// A bucket number below nBuckets for the element (or search key).
typedef uint32_t (*HashTableHashFn)(const void* element, uint32_t nBuckets, uint32_t seed);

// Iterator access functions: the first (last) node of a list, the next
// (previous) node; 0 at the end.
typedef void* (*IterEndFn)(void* container, uint32_t list);
typedef void* (*IterStepFn)(void* container, void* node);
// Iterator callback: node, list number, caller's argument.
typedef int32_t (*IterCallbackFn)(void* node, uint32_t list, uintptr_t arg);

// ---------------------------------------------------------------- lists
// Intrusive lists: a node is the caller's memory, beginning with the links.
// Empty lists are all zero. The list operations trust their arguments.
struct SllNode {
  SllNode* next;
};
struct SllList {
  SllNode* head;
  SllNode* tail;  // valid only while head is not null
};

struct LstNode {
  LstNode* next;
  LstNode* previous;
};
struct LstList {
  LstNode* head;
  LstNode* tail;
  uint32_t count;
};

// Called on each node by sllEach until it returns 0.
typedef int32_t (*SllEachFn)(SllNode* node, uintptr_t arg);

// ---------------------------------------------------------------- pool
// The link words of a free element, and the head of the free list.
struct BufPoolLink {
  void* next;
  void* previous;
};

struct BufPool {
  uint32_t magic;
  uint32_t localAlloc;      // 1 if the pool allocated its own block
  BufPoolLink freeList;     // circular; the empty list points at itself
  void* elements;           // the first element, right behind the header
  BufPoolElemFn creatFn;    // on each alloc; non-zero result: failure
  BufPoolElemFn destroyFn;  // on each free
  uintptr_t arg;            // for both
};

// ---------------------------------------------------------------- list bank
struct ListBank {
  Iterator* iterator;  // first, so that the iterator functions take the bank as their handle
  uint32_t magic;
  uint32_t nLists;
  uint32_t nNodes;
  uint32_t nodeSize;   // the user's part of a node
  uint32_t listType;   // LISTBANK_TYPE_SINGLE (sll) or LISTBANK_TYPE_DOUBLE (lst)
  ListBankNodeFn creatFn;
  ListBankNodeFn destroyFn;
  ListBankCompareFn compareFn;  // set: the lists are kept sorted by it
  uintptr_t createArg;
  uintptr_t compareArg;
  BufPool* pool;
  uint32_t localAlloc;
  void* lists;         // nLists SllList or LstList heads, by listType
};

// ---------------------------------------------------------------- hash table
struct HashTable {
  uint32_t magic;
  uint32_t nBuckets;
  uint32_t nElements;
  uint32_t elemSize;
  HashTableElemFn creatFn;
  HashTableElemFn destroyFn;
  HashTableCompareFn compareFn;
  HashTableHashFn hashFn;
  uintptr_t createArg;
  uintptr_t compareArg;
  uint32_t seed;
  ListBank* listBank;        // listType 1, nBuckets lists, nElements nodes
  uint32_t numEntries;
  uint32_t numCollisions;    // adds into an occupied bucket less removals that left it occupied
  uint32_t maxCollisions;    // the largest numCollisions so far
  uint32_t totalCollisions;  // numCollisions summed over all updates
  uint32_t numUpdates;       // adds and removals
  uint32_t localAlloc;
};

// ---------------------------------------------------------------- iterator
struct Iterator {
  uint32_t magic;
  void* container;  // its first field points back at this iterator
  IterEndFn firstFn;
  IterEndFn lastFn;
  IterStepFn nextFn;
  IterStepFn prevFn;
  IterCompareFn compareFn;  // compareFn(node, key, compareArg)
  uintptr_t compareArg;
  uint32_t localAlloc;
};

// ---------------------------------------------------------------- pool operations
uintptr_t alignAddress(uintptr_t value);  // rounded up to a multiple of 4
size_t bufPoolGetMemSize(uint32_t elementSize, uint32_t elementCount);
BufPool* bufPoolCreate(void* memory, uint32_t elementSize, uint32_t elementCount, BufPoolElemFn creatFn,
                       BufPoolElemFn destroyFn, uintptr_t arg);
int32_t bufPoolDestroy(BufPool* pool);
void* bufPoolAlloc(BufPool* pool);
int32_t bufPoolFree(BufPool* pool, void* element);

// ---------------------------------------------------------------- list bank operations
size_t listBankGetMemSize(uint32_t nLists, uint32_t nNodes, uint32_t nodeSize, uint32_t listType);
ListBank* listBankCreate(void* memory, uint32_t nLists, uint32_t nNodes, uint32_t nodeSize, uint32_t listType,
                         ListBankNodeFn creatFn, ListBankNodeFn destroyFn, ListBankCompareFn compareFn,
                         uintptr_t createArg, uintptr_t compareArg);
int32_t listBankDestroy(ListBank* bank);
void* listBankAllocNode(ListBank* bank);
int32_t listBankFreeNode(ListBank* bank, void* node);
void* listBankAddNode(ListBank* bank, uint32_t list, void* node);
void* listBankInsertNode(ListBank* bank, uint32_t list, void* node, void* after);
void* listBankMoveNode(ListBank* bank, uint32_t fromList, uint32_t toList, void* node, void* after);
int32_t listBankDeleteNode(ListBank* bank, uint32_t list, void* node);
void* listBankFirstNode(ListBank* bank, uint32_t list);
void* listBankLastNode(ListBank* bank, uint32_t list);
void* listBankNextNode(ListBank* bank, void* node);
void* listBankPrevNode(ListBank* bank, void* node);
uint32_t listBankNumberOfLists(ListBank* bank);
uint32_t listBankNodeCount(ListBank* bank, uint32_t list);
// listBankDeleteNode(bank, list, node) in the form of an iterator callback.
int32_t listBankNodeDeleteCallback(void* node, uint32_t list, uintptr_t bank);

// ---------------------------------------------------------------- hash table operations
size_t hashTableGetMemSize(uint32_t nBuckets, uint32_t nElements, uint32_t elemSize);
HashTable* hashTableCreate(void* memory, uint32_t nBuckets, uint32_t nElements, uint32_t elemSize,
                           HashTableElemFn creatFn, HashTableElemFn destroyFn, HashTableCompareFn compareFn,
                           HashTableHashFn hashFn, uintptr_t createArg, uintptr_t compareArg, uint32_t seed);
HashTable* hashTableSimpleCreate(uint32_t nBuckets, uint32_t nElements, uint32_t elemSize,
                                 HashTableCompareFn compareFn, HashTableHashFn hashFn);
int32_t hashTableDestroy(HashTable* table);
void* hashTableAllocEntry(HashTable* table);
int32_t hashTableFreeEntry(HashTable* table, void* element);
void* hashTableAddEntry(HashTable* table, void* element);
int32_t hashTableDeleteEntry(HashTable* table, void* element);
void* hashTableSearchForEntry(HashTable* table, const void* key);
void* hashTableNextEntryUnsorted(HashTable* table, void* element);
int32_t hashTableNumEntries(HashTable* table);
int32_t hashTableNumCollisions(HashTable* table);
int32_t hashTableGetStatistics(HashTable* table, uint32_t* average, uint32_t* maximum);
int32_t hashTableResetStatistics(HashTable* table);
int32_t hashTableShow(HashTable* table);

// ---------------------------------------------------------------- iterator operations
// `container` is a structure whose first field is an Iterator pointer;
// `direction` is ITER_FORWARD or ITER_BACKWARD; a start node of 0 means the
// list's end of entry (its first node forward, its last node backward).
int32_t iterCreate(void* container, IterEndFn firstFn, IterEndFn lastFn, IterStepFn nextFn, IterStepFn prevFn,
                   IterCompareFn compareFn, uintptr_t compareArg);
int32_t iterDestroy(void* container);
size_t iterGetMemSize(void);
void* iterSearchForEntry(void* container, uint32_t list, const void* key, void* start, int32_t target,
                         uint32_t direction);
int32_t iterForEachEntry(void* container, uint32_t list, IterCallbackFn callback, uintptr_t arg,
                         uint32_t direction);
int32_t iterForEachEntryUntil(void* container, uint32_t list, IterCallbackFn callback, uintptr_t arg,
                              uint32_t direction, void** pNode);
int32_t iterForSelectedEntries(void* container, uint32_t list, IterCallbackFn callback, uintptr_t arg,
                               uint32_t direction, const void* key, void** pNode, int32_t target);

// ---------------------------------------------------------------- singly linked lists
SllList* sllCreate(void);  // an empty head from silMalloc, or null
int32_t sllInit(SllList* list);
int32_t sllDelete(SllList* list);  // frees a head from sllCreate
int32_t sllTerminate(void);
void sllPutAtHead(SllList* list, SllNode* node);
void sllPutAtTail(SllList* list, SllNode* node);
SllNode* sllGet(SllList* list);
void sllRemove(SllList* list, SllNode* node, SllNode* previous);
SllNode* sllPrevious(const SllList* list, const SllNode* node);
uint32_t sllCount(const SllList* list);
SllNode* sllEach(SllList* list, SllEachFn callback, uintptr_t arg);

// ---------------------------------------------------------------- doubly linked lists
void lstLibInit(void);
void lstInit(LstList* list);
void lstAdd(LstList* list, LstNode* node);
void lstInsert(LstList* list, LstNode* after, LstNode* node);
void lstDelete(LstList* list, LstNode* node);
LstNode* lstGet(LstList* list);
void lstConcat(LstList* list, LstList* other);
LstNode* lstExtract(LstList* list, LstNode* first, LstNode* last, LstList* out);
uint32_t lstCount(const LstList* list);
LstNode* lstFirst(const LstList* list);
LstNode* lstLast(const LstList* list);
LstNode* lstNext(const LstNode* node);
LstNode* lstPrevious(const LstNode* node);
LstNode* lstNth(const LstList* list, int32_t n);
LstNode* lstNStep(LstNode* node, int32_t n);
int32_t lstFind(const LstList* list, const LstNode* node);
void lstFree(LstList* list);

#endif
