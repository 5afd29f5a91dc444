// List bank: a fixed number of lists whose nodes come from one pool.
//
// One block holds, in this order, the bank's header, its iterator, the array
// of list heads and the node pool. A node is one pool element: the list link
// (an SllNode for singly linked banks, an LstNode for doubly linked ones)
// followed by the user's part. Every operation takes and returns the pointer
// to the user's part; the link lies in front of it and the caller never sees
// it. Pool elements are CONTAINER_ALIGN-aligned and the links are a whole
// number of pointers, so the user's part is pointer-aligned as well.
#include <cstring>

#include "mdb/containers.h"
#include "platform/sil.h"

namespace {

size_t roundUp(size_t value, size_t alignment) { return (value + alignment - 1) / alignment * alignment; }

bool isSingle(uint32_t listType) { return listType == LISTBANK_TYPE_SINGLE; }
size_t linkSize(uint32_t listType) { return isSingle(listType) ? sizeof(SllNode) : sizeof(LstNode); }
size_t headSize(uint32_t listType) { return isSingle(listType) ? sizeof(SllList) : sizeof(LstList); }

// The layout of a bank's block.
size_t iteratorOffset() { return roundUp(sizeof(ListBank), CONTAINER_ALIGN); }
size_t listsOffset() { return iteratorOffset() + roundUp(iterGetMemSize(), CONTAINER_ALIGN); }
size_t poolOffset(uint32_t nLists, uint32_t listType) {
  return listsOffset() + roundUp(static_cast<size_t>(nLists) * headSize(listType), CONTAINER_ALIGN);
}

SllList* sllHead(const ListBank* bank, uint32_t list) { return static_cast<SllList*>(bank->lists) + list; }
LstList* lstHead(const ListBank* bank, uint32_t list) { return static_cast<LstList*>(bank->lists) + list; }

// Between a node (its link) and the user's part.
char* nodeOf(const ListBank* bank, void* user) { return static_cast<char*>(user) - linkSize(bank->listType); }
void* userOf(const ListBank* bank, void* node) {
  return node == nullptr ? nullptr : static_cast<char*>(node) + linkSize(bank->listType);
}

void* firstOf(const ListBank* bank, uint32_t list) {
  if (isSingle(bank->listType)) return sllHead(bank, list)->head;
  return lstHead(bank, list)->head;
}
void* nextOf(const ListBank* bank, void* node) {
  if (isSingle(bank->listType)) return static_cast<SllNode*>(node)->next;
  return static_cast<LstNode*>(node)->next;
}

bool checkBank(const ListBank* bank) {
  if (bank == nullptr || bank->magic != LISTBANK_MAGIC) {
    errnoSet(LISTBANK_ERR_BAD_BANK);
    return false;
  }
  return true;
}
bool checkNode(const void* node) {
  if (node == nullptr) {
    errnoSet(LISTBANK_ERR_BAD_NODE);
    return false;
  }
  return true;
}
bool checkList(const ListBank* bank, uint32_t list) {
  if (list >= bank->nLists) {
    errnoSet(LISTBANK_ERR_BAD_LIST);
    return false;
  }
  return true;
}

// Links a node behind `after` (a node, or 0 for the head).
void linkAfter(ListBank* bank, uint32_t list, char* node, char* after) {
  if (!isSingle(bank->listType)) {
    lstInsert(lstHead(bank, list), reinterpret_cast<LstNode*>(after), reinterpret_cast<LstNode*>(node));
    return;
  }
  SllList* head = sllHead(bank, list);
  auto* n = reinterpret_cast<SllNode*>(node);
  if (after == nullptr) {
    sllPutAtHead(head, n);
    return;
  }
  auto* a = reinterpret_cast<SllNode*>(after);
  n->next = a->next;
  a->next = n;
  if (head->tail == a) head->tail = n;
}

// Sorted insertion: behind the last node that the new one compares above, so
// the list stays ascending and an equal node goes in front of its equals.
void linkSorted(ListBank* bank, uint32_t list, char* node) {
  void* user = userOf(bank, node);
  char* after = nullptr;
  for (void* current = firstOf(bank, list); current != nullptr; current = nextOf(bank, current)) {
    if (bank->compareFn(user, userOf(bank, current), bank->compareArg) < 1) break;
    after = static_cast<char*>(current);
  }
  linkAfter(bank, list, node, after);
}

// Takes a node out of a list. A singly linked list finds the predecessor by a
// walk, and so can tell (at no extra cost) a node that is not in the list: it
// is refused rather than unlinked as if it were the head. A doubly linked list
// refuses a node whose null link does not match the head or tail.
bool unlinkNode(ListBank* bank, uint32_t list, char* node) {
  if (isSingle(bank->listType)) {
    SllList* head = sllHead(bank, list);
    auto* n = reinterpret_cast<SllNode*>(node);
    SllNode* previous = sllPrevious(head, n);
    if (previous == nullptr && head->head != n) {
      errnoSet(LISTBANK_ERR_BAD_NODE);
      return false;
    }
    sllRemove(head, n, previous);
    return true;
  }
  LstList* head = lstHead(bank, list);
  auto* n = reinterpret_cast<LstNode*>(node);
  if ((n->previous == nullptr && head->head != n) || (n->next == nullptr && head->tail != n)) {
    errnoSet(LISTBANK_ERR_BAD_NODE);
    return false;
  }
  lstDelete(head, n);
  return true;
}

// The bank's own pool callbacks: a node leaves the pool with clean links.
int32_t bankNodeCreate(void* element, uintptr_t arg) {
  auto* bank = reinterpret_cast<ListBank*>(arg);
  memset(element, 0, linkSize(bank->listType));
  if (bank->creatFn == nullptr) return 0;
  return bank->creatFn(userOf(bank, element), bank->createArg);
}
int32_t bankNodeDestroy(void* element, uintptr_t arg) {
  auto* bank = reinterpret_cast<ListBank*>(arg);
  if (bank->destroyFn == nullptr) return 0;
  return bank->destroyFn(userOf(bank, element), bank->createArg);
}

// The iterator's view of a bank.
void* iterFirst(void* bank, uint32_t list) { return listBankFirstNode(static_cast<ListBank*>(bank), list); }
void* iterLast(void* bank, uint32_t list) { return listBankLastNode(static_cast<ListBank*>(bank), list); }
void* iterNext(void* bank, void* node) { return listBankNextNode(static_cast<ListBank*>(bank), node); }
void* iterPrev(void* bank, void* node) { return listBankPrevNode(static_cast<ListBank*>(bank), node); }

}  // namespace

size_t listBankGetMemSize(uint32_t nLists, uint32_t nNodes, uint32_t nodeSize, uint32_t listType) {
  if (nLists == 0) {
    errnoSet(LISTBANK_ERR_ZERO_LISTS);
    return 0;
  }
  if (nNodes == 0) {
    errnoSet(LISTBANK_ERR_ZERO_NODES);
    return 0;
  }
  if (nodeSize == 0) {
    errnoSet(LISTBANK_ERR_ZERO_NODE_SIZE);
    return 0;
  }
  if (listType != LISTBANK_TYPE_SINGLE && listType != LISTBANK_TYPE_DOUBLE) {
    errnoSet(LISTBANK_ERR_BAD_LIST_TYPE);
    return 0;
  }
  if (nodeSize > UINT32_MAX - linkSize(listType)) {  // the pool element would not fit its size field
    errnoSet(LISTBANK_ERR_ZERO_NODE_SIZE);
    return 0;
  }
  size_t poolSize = bufPoolGetMemSize(static_cast<uint32_t>(nodeSize + linkSize(listType)), nNodes);
  size_t total;
  if (poolSize == 0 || __builtin_add_overflow(poolOffset(nLists, listType), poolSize, &total)) {
    errnoSet(LISTBANK_ERR_NO_MEMORY);
    return 0;
  }
  return total;
}

ListBank* listBankCreate(void* memory, uint32_t nLists, uint32_t nNodes, uint32_t nodeSize, uint32_t listType,
                         ListBankNodeFn creatFn, ListBankNodeFn destroyFn, ListBankCompareFn compareFn,
                         uintptr_t createArg, uintptr_t compareArg) {
  size_t size = listBankGetMemSize(nLists, nNodes, nodeSize, listType);
  if (size == 0) return nullptr;
  uint32_t localAlloc = 0;
  if (memory != nullptr) {
    if (reinterpret_cast<uintptr_t>(memory) % CONTAINER_ALIGN != 0) {
      errnoSet(LISTBANK_ERR_NO_MEMORY);
      return nullptr;
    }
    memset(memory, 0, size);
  } else {
    memory = silCalloc(1, size);
    if (memory == nullptr) {
      errnoSet(LISTBANK_ERR_NO_MEMORY);
      return nullptr;
    }
    localAlloc = 1;
  }
  char* block = static_cast<char*>(memory);

  auto* bank = static_cast<ListBank*>(memory);
  bank->magic = LISTBANK_MAGIC;
  bank->nLists = nLists;
  bank->nNodes = nNodes;
  bank->nodeSize = nodeSize;
  bank->listType = listType;
  bank->creatFn = creatFn;
  bank->destroyFn = destroyFn;
  bank->compareFn = compareFn;
  bank->createArg = createArg;
  bank->compareArg = compareArg;
  bank->localAlloc = localAlloc;
  bank->lists = block + listsOffset();
  for (uint32_t list = 0; list < nLists; list++) {
    if (isSingle(listType))
      sllInit(sllHead(bank, list));
    else
      lstInit(lstHead(bank, list));
  }

  // Neither can fail: the sizes are checked and the memory is in hand.
  bank->pool = bufPoolCreate(block + poolOffset(nLists, listType),
                             static_cast<uint32_t>(nodeSize + linkSize(listType)), nNodes, bankNodeCreate,
                             bankNodeDestroy, reinterpret_cast<uintptr_t>(bank));
  bank->iterator = reinterpret_cast<Iterator*>(block + iteratorOffset());  // built in place
  if (bank->pool == nullptr ||
      iterCreate(bank, iterFirst, isSingle(listType) ? nullptr : iterLast, iterNext,
                 isSingle(listType) ? nullptr : iterPrev, compareFn, compareArg) != 0) {
    bank->magic = 0;
    if (localAlloc == 1) silFree(memory);
    return nullptr;
  }
  return bank;
}

// Nodes that are allocated but stand in no list are their holder's business:
// only the nodes in the lists are deleted (and see destroyFn).
int32_t listBankDestroy(ListBank* bank) {
  if (!checkBank(bank)) return -1;
  for (uint32_t list = 0; list < bank->nLists; list++)
    iterForEachEntry(bank, list, listBankNodeDeleteCallback, reinterpret_cast<uintptr_t>(bank), ITER_FORWARD);
  iterDestroy(bank);
  bufPoolDestroy(bank->pool);
  bank->magic = 0;
  if (bank->localAlloc == 1) silFree(bank);
  return 0;
}

void* listBankAllocNode(ListBank* bank) {
  if (!checkBank(bank)) return nullptr;
  // An empty pool sets no error number of its own; a failing creatFn does.
  uint32_t saved = errnoGet();
  errnoSet(0);
  void* node = bufPoolAlloc(bank->pool);
  if (node == nullptr) {
    if (errnoGet() == 0) errnoSet(LISTBANK_ERR_POOL_EMPTY);
    return nullptr;
  }
  errnoSet(saved);
  return userOf(bank, node);
}

int32_t listBankFreeNode(ListBank* bank, void* node) {
  if (!checkBank(bank) || !checkNode(node)) return -1;
  return bufPoolFree(bank->pool, nodeOf(bank, node));
}

void* listBankAddNode(ListBank* bank, uint32_t list, void* node) {
  if (!checkBank(bank) || !checkNode(node) || !checkList(bank, list)) return nullptr;
  if (bank->compareFn != nullptr)
    linkSorted(bank, list, nodeOf(bank, node));
  else
    linkAfter(bank, list, nodeOf(bank, node), nullptr);
  return node;
}

void* listBankInsertNode(ListBank* bank, uint32_t list, void* node, void* after) {
  if (!checkBank(bank) || !checkNode(node) || !checkList(bank, list)) return nullptr;
  if (bank->compareFn != nullptr) {
    errnoSet(LISTBANK_ERR_SORTED);
    return nullptr;
  }
  linkAfter(bank, list, nodeOf(bank, node), after == nullptr ? nullptr : nodeOf(bank, after));
  return node;
}

void* listBankMoveNode(ListBank* bank, uint32_t fromList, uint32_t toList, void* node, void* after) {
  if (!checkBank(bank) || !checkNode(node) || !checkList(bank, fromList) || !checkList(bank, toList))
    return nullptr;
  if (!unlinkNode(bank, fromList, nodeOf(bank, node))) return nullptr;
  if (bank->compareFn != nullptr)
    linkSorted(bank, toList, nodeOf(bank, node));
  else
    linkAfter(bank, toList, nodeOf(bank, node), after == nullptr ? nullptr : nodeOf(bank, after));
  return node;
}

int32_t listBankDeleteNode(ListBank* bank, uint32_t list, void* node) {
  if (!checkBank(bank) || !checkNode(node) || !checkList(bank, list)) return -1;
  if (!unlinkNode(bank, list, nodeOf(bank, node))) return -1;
  return bufPoolFree(bank->pool, nodeOf(bank, node));
}

void* listBankFirstNode(ListBank* bank, uint32_t list) {
  if (!checkBank(bank) || !checkList(bank, list)) return nullptr;
  return userOf(bank, firstOf(bank, list));
}

void* listBankLastNode(ListBank* bank, uint32_t list) {
  if (!checkBank(bank) || !checkList(bank, list)) return nullptr;
  if (isSingle(bank->listType)) {
    const SllList* head = sllHead(bank, list);
    return head->head == nullptr ? nullptr : userOf(bank, head->tail);  // tail is stale in an empty list
  }
  return userOf(bank, lstHead(bank, list)->tail);
}

void* listBankNextNode(ListBank* bank, void* node) {
  if (!checkBank(bank) || !checkNode(node)) return nullptr;
  return userOf(bank, nextOf(bank, nodeOf(bank, node)));
}

void* listBankPrevNode(ListBank* bank, void* node) {
  if (!checkBank(bank) || !checkNode(node)) return nullptr;
  if (isSingle(bank->listType)) {
    errnoSet(LISTBANK_ERR_BAD_LIST_TYPE);
    return nullptr;
  }
  return userOf(bank, reinterpret_cast<LstNode*>(nodeOf(bank, node))->previous);
}

uint32_t listBankNumberOfLists(ListBank* bank) {
  if (!checkBank(bank)) return 0;
  return bank->nLists;
}

uint32_t listBankNodeCount(ListBank* bank, uint32_t list) {
  if (!checkBank(bank) || !checkList(bank, list)) return 0;
  if (isSingle(bank->listType)) return sllCount(sllHead(bank, list));
  return lstCount(lstHead(bank, list));
}

int32_t listBankNodeDeleteCallback(void* node, uint32_t list, uintptr_t bank) {
  return listBankDeleteNode(reinterpret_cast<ListBank*>(bank), list, node);
}
