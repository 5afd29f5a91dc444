// What the interface modules share: the Next functions over the interface
// service's filters, the value forms of its attributes (32-bit views of
// 64-bit counters, names, addresses, utilisation) and the statistics table's
// columns, which five tables carry under their own prefixes.
#ifndef MODULES_L2_IF_FAMILY_H
#define MODULES_L2_IF_FAMILY_H

#include "framework/fw.h"
#include "platform/tgp_if.h"
#include "services/tgpIf.h"

#include <cstring>

namespace iffam {

// ---------------------------------------------------------------- filters
enum Filter {
  kPrivate,      // all but the VLAN interfaces and class 8 of flag byte 0
  kEthernet,     // Ethernet ports (class 1, port-kind 1152)
  kEthClass,     // class 1, sub-interfaces included
  kTrunk,        // trunks (class 2, port-kind 1024)
  kTrunkClass,   // class 2
  kManagement,   // class 44
};

inline void filterFor(Filter filter, uint8_t* record, uint32_t* level) {
  memset(record, 0, TGP_IF_FILTER_SIZE);
  *level = 0;
  switch (filter) {
    case kPrivate:
      tgpIfFilterSetMode(record, 1);
      tgpIfFilterAddRule(record, 3, 0, 0, {TGP_IF_MASK_CLASS, TGP_IF_MASK_FLAG, TGP_IF_MASK_EXTRA});
      tgpIfFilterAddRule(record, 8, 0, 0, {TGP_IF_MASK_CLASS, TGP_IF_MASK_FLAG, TGP_IF_MASK_EXTRA});
      *level = 16;
      break;
    case kEthernet:
      tgpIfFilterAddRule(record, 1, TGP_IF_PORT_KIND_ETH, 0, {TGP_IF_MASK_CLASS, TGP_IF_MASK_PORT_KIND});
      *level = 5;
      break;
    case kEthClass: tgpIfFilterAddRule(record, 1, 0, 0, {TGP_IF_MASK_CLASS}); break;
    case kTrunk:
      tgpIfFilterAddRule(record, 2, TGP_IF_PORT_KIND_TRUNK, 0, {TGP_IF_MASK_CLASS, TGP_IF_MASK_PORT_KIND});
      *level = 5;
      break;
    case kTrunkClass: tgpIfFilterAddRule(record, 2, 0, 0, {TGP_IF_MASK_CLASS}); break;
    case kManagement: tgpIfFilterAddRule(record, 44, 0, 0, {TGP_IF_MASK_CLASS}); break;
  }
}

inline bool isSubInterface(uint32_t ifIndex) {
  uint32_t position[TGP_POS_WORDS] = {0};
  return tgpIndexTrans(ifIndex, 5, position) == 0 && position[TGP_POS_SUB] != 0;
}

// Next instance over a filter, from the request's index if it has one,
// stepping on past interfaces that `accept` refuses.
inline uint32_t nextByFilter(Filter filter, MdbCrb* mdb, bool (*accept)(uint32_t ifIndex) = nullptr) {
  alignas(4) uint8_t record[TGP_IF_FILTER_SIZE];
  uint32_t level;
  filterFor(filter, record, &level);
  int rc;
  if (mdb->indexSubIdCount != 0) {
    tgpIfFilterSetIndex(record, mdb->pIndex[0]);
    rc = tgpIfFilterGetNext(record, record);
  } else {
    rc = tgpIfFilterGetFirst(record, level);
  }
  while (rc == 0 && accept != nullptr && !accept(tgpIfFilterIndex(record))) rc = tgpIfFilterGetNext(record, record);
  if (rc != 0) return static_cast<uint32_t>(-1);
  mdb->indexSubIdCount = mdb->indexSubIdCountMax;
  mdb->pIndex[0] = tgpIfFilterIndex(record);
  return 0;
}

// Next sub-interface of a class filter.
inline uint32_t nextSubInterface(Filter filter, MdbCrb* mdb) { return nextByFilter(filter, mdb, isSubInterface); }

// The interfaces a filter lists, by a full walk.
inline uint32_t countByFilter(Filter filter) {
  alignas(4) uint8_t record[TGP_IF_FILTER_SIZE];
  uint32_t level, n = 0;
  filterFor(filter, record, &level);
  for (int rc = tgpIfFilterGetFirst(record, level); rc == 0; rc = tgpIfFilterGetNext(record, record)) n++;
  return n;
}

// ---------------------------------------------------------------- hooks
inline bool isRead(uint32_t kind) { return kind == MDB_GET || kind == MDB_GET_NEXT; }

inline int get(const FwCall* call, uint32_t attribute, void* value) {
  return call->entry->table.getApi(call->key, attribute, value);
}
inline int set(const FwCall* call, uint32_t attribute, void* value) {
  return call->entry->table.setApi(call->key, attribute, value);
}

// A failed service call by the entry's convention.
inline uint32_t failed(const FwCall* call, int rc) {
  return call->entry->failure == FW_FAIL_PASS ? static_cast<uint32_t>(rc) : mdbErrorGenError();
}

// A 64-bit attribute: the two words, high first.
inline int read64(const FwCall* call, uint32_t attribute, uint32_t (&words)[2]) {
  words[0] = words[1] = 0;
  MdbOctetValue holder{reinterpret_cast<uint8_t*>(words), sizeof words};
  return get(call, attribute, &holder);
}

inline uint32_t counter64(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  uint32_t w[2];
  if (int rc = read64(call, call->object->attribute, w)) return failed(call, rc);
  ulonglongSet(mdb, w[0], w[1]);
  return 0;
}

// The standard tables' counters read 0 without a service call while the
// interface's suppression flag (attribute 3530) is 1.
inline bool countersSuppressed(const FwCall* call) {
  uint32_t flag = 0;
  return get(call, 3530, &flag) == 0 && flag == 1;
}

// The 32-bit form of a 64-bit counter: its low word.
inline uint32_t counterLow(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  uint32_t w[2];
  if (int rc = read64(call, call->object->attribute, w)) return failed(call, rc);
  ulongSet(mdb, w[1]);
  return 0;
}

inline uint32_t zero64(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  ulonglongSet(mdb, 0, 0);
  return 0;
}

// The interface's full name of at most Limit characters.
template <uint32_t Limit>
uint32_t fullName(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  char name[Limit + 1];
  name[0] = '\0';
  nmGetIfFullDescr(static_cast<uint32_t>(call->key), name, Limit);
  octetSet(mdb, name, static_cast<uint32_t>(strlen(name)));
  return 0;
}

// A string attribute read with at most Limit bytes.
template <uint32_t Limit>
uint32_t shortText(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  uint8_t text[Limit];
  MdbOctetValue holder{text, Limit};
  if (int rc = get(call, call->object->attribute, &holder)) return failed(call, rc);
  octetSet(mdb, text, holder.length < Limit ? holder.length : Limit);
  return 0;
}

// The first primary IPv4 address of the address list, in network order; 0 if none.
inline uint32_t ipAddress(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  MdbOctetValue holder{call->buffer, call->bufferSize};
  if (get(call, 99, &holder) != 0) return 1;  // the result 1, as the service's callers have always had it
  uint8_t address[4] = {0, 0, 0, 0};
  for (uint32_t at = 0; at + 8 <= holder.length; at += 8) {
    const uint8_t* e = call->buffer + at;
    if (e[0] == 1 && e[7] == 0) {
      memcpy(address, e + 2, 4);
      break;
    }
  }
  octetSet(mdb, address, 4);
  return 0;
}

// 0 when the call succeeds, else what it left in the slot.
inline uint32_t errStatus(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  uint32_t value = 0;
  ulongSet(mdb, get(call, 68, &value) == 0 ? 0 : value);
  return 0;
}

// 1 if the attribute can be read, 2 if not.
inline uint32_t supported(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  uint32_t value = 0;
  ulongSet(mdb, get(call, call->object->attribute, &value) == 0 ? 1 : 2);
  return 0;
}

// The attribute, or 0 when it cannot be read.
inline uint32_t orZero(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  uint32_t value = 0;
  if (get(call, call->object->attribute, &value) != 0) value = 0;
  ulongSet(mdb, value);
  return 0;
}

// Reads as 0; a write passes the client's value to the attribute.
inline uint32_t actionValue(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  ulongSet(mdb, 0);
  return 0;
}

// Reads as 0; a write passes 1 to attribute 71 whatever the client sent.
inline uint32_t resetOne(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (isRead(kind)) {
    ulongSet(mdb, 0);
    return 0;
  }
  if (kind != MDB_COMMIT && kind != MDB_SET_NVM) return fwServePlain(kind, mdb, call);
  uint32_t one = 1;
  int rc = set(call, 71, &one);
  return rc == 0 ? 0 : failed(call, rc);
}

// A trunk has no such attribute: the read succeeds and delivers nothing.
inline uint32_t notOnTrunk(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (isRead(kind) && isEthTrunkInterface(static_cast<uint32_t>(call->key))) return 0;
  return fwServePlain(kind, mdb, call);
}

// Five-minute load in hundredths of a per cent, 0 to 10000.
inline int utilisation(const FwCall* call, bool rx, uint32_t* value) {
  uint32_t pkts[2], octets[2];
  if (int rc = read64(call, rx ? 500 : 501, pkts)) return rc;
  if (int rc = read64(call, rx ? 502 : 503, octets)) return rc;
  *value = 0;
  uint32_t speed = 0;
  if (get(call, 129, &speed) != 0 || speed == 0) return 0;
  const uint32_t frames = 20u * pkts[1];
  const int32_t line = static_cast<int32_t>(speed * 1250u);
  float rate = (static_cast<float>(octets[1]) + static_cast<float>(frames)) / static_cast<float>(line);
  if (rate > 100.0f) rate = 100.0f;
  *value = static_cast<uint32_t>(rate * 100.0f);
  return 0;
}

template <bool Rx, bool GenericFailure>
uint32_t utilisationHook(uint32_t kind, MdbCrb* mdb, FwCall* call) {
  if (!isRead(kind)) return fwServePlain(kind, mdb, call);
  uint32_t value = 0;
  if (int rc = utilisation(call, Rx, &value)) return GenericFailure ? mdbErrorGenError() : failed(call, rc);
  ulongSet(mdb, value);
  return 0;
}

}  // namespace iffam

// The 53 columns of a statistics table: `E` the entry, `M` the module's name,
// `P` the columns' prefix, `L` the first localId, `U` the utilisation hooks'
// failure (true: genError).
#define IF_STATS_C64(E, M, P, L, n, name, a) \
  fwObject(&E, (L) + (n) - 1, n, M ":" P name).counter64().ro().attr(a).hook(iffam::counter64)
#define IF_STATS_ZERO(E, M, P, L, n, name) \
  fwObject(&E, (L) + (n) - 1, n, M ":" P name).counter64().ro().hook(iffam::zero64)
#define IF_STATS_COLUMNS(E, M, P, L, U)                                                                       \
  fwObject(&E, (L), 1, M ":" P "Index").gauge().ro().indexOf(0),                                              \
  IF_STATS_C64(E, M, P, L, 2, "TxPkts", 504), IF_STATS_C64(E, M, P, L, 3, "RxPkts", 505),                     \
  IF_STATS_C64(E, M, P, L, 4, "TxOctets", 506), IF_STATS_C64(E, M, P, L, 5, "RxOctets", 507),                 \
  IF_STATS_C64(E, M, P, L, 6, "RxFragments", 508), IF_STATS_C64(E, M, P, L, 7, "RxJabbers", 554),             \
  IF_STATS_C64(E, M, P, L, 8, "RxCRCAlignErrors", 510), IF_STATS_C64(E, M, P, L, 9, "Collisions", 511),       \
  IF_STATS_C64(E, M, P, L, 10, "RxUndersizePkts", 512), IF_STATS_C64(E, M, P, L, 11, "RxOversizePkts", 513),  \
  IF_STATS_C64(E, M, P, L, 12, "TxPkts64Octets", 514), IF_STATS_C64(E, M, P, L, 13, "TxPkts65to127Octets", 515), \
  IF_STATS_C64(E, M, P, L, 14, "TxPkts128to255Octets", 516),                                                  \
  IF_STATS_C64(E, M, P, L, 15, "TxPkts256to511Octets", 517),                                                  \
  IF_STATS_C64(E, M, P, L, 16, "TxPkts512to1023Octets", 518),                                                 \
  IF_STATS_C64(E, M, P, L, 17, "TxPkts1024to1518Octets", 519),                                                \
  IF_STATS_C64(E, M, P, L, 18, "TxPkts1519toMaxOctets", 520),                                                 \
  IF_STATS_C64(E, M, P, L, 19, "RxPkts64Octets", 521), IF_STATS_C64(E, M, P, L, 20, "RxPkts65to127Octets", 522), \
  IF_STATS_C64(E, M, P, L, 21, "RxPkts128to255Octets", 523),                                                  \
  IF_STATS_C64(E, M, P, L, 22, "RxPkts256to511Octets", 524),                                                  \
  IF_STATS_C64(E, M, P, L, 23, "RxPkts512to1023Octets", 525),                                                 \
  IF_STATS_C64(E, M, P, L, 24, "RxPkts1024to1518Octets", 526),                                                \
  IF_STATS_C64(E, M, P, L, 25, "RxPkts1519toMaxOctets", 527),                                                 \
  IF_STATS_C64(E, M, P, L, 26, "TxUnicastPkts", 535), IF_STATS_C64(E, M, P, L, 27, "TxMulticastPkts", 536),   \
  IF_STATS_C64(E, M, P, L, 28, "TxBroadcastPkts", 537), IF_STATS_C64(E, M, P, L, 29, "RxUnicastPkts", 532),   \
  IF_STATS_C64(E, M, P, L, 30, "RxMulticastPkts", 533), IF_STATS_C64(E, M, P, L, 31, "RxBroadcastPkts", 534), \
  fwObject(&E, (L) + 31, 32, M ":" P "All").octets(1024).noService().maxLength(1024),                         \
  fwObject(&E, (L) + 32, 33, M ":" P "Reset").integer().attr(71).hook(iffam::resetOne),                       \
  IF_STATS_C64(E, M, P, L, 34, "Last5MinsRxPkts", 500), IF_STATS_C64(E, M, P, L, 35, "Last5MinsTxPkts", 501), \
  IF_STATS_C64(E, M, P, L, 36, "Last5MinsRxOctets", 502),                                                     \
  IF_STATS_C64(E, M, P, L, 37, "Last5MinsTxOctets", 503),                                                     \
  fwObject(&E, (L) + 37, 38, M ":" P "Last5MinsRxUtilizationRate").integer().ro()                             \
      .hook(iffam::utilisationHook<true, U>),                                                                 \
  fwObject(&E, (L) + 38, 39, M ":" P "Last5MinsTxUtilizationRate").integer().ro()                             \
      .hook(iffam::utilisationHook<false, U>),                                                                \
  IF_STATS_ZERO(E, M, P, L, 40, "DropEvent"), IF_STATS_C64(E, M, P, L, 41, "RxDiscard", 571),                 \
  IF_STATS_ZERO(E, M, P, L, 42, "RxPause"), IF_STATS_ZERO(E, M, P, L, 43, "TxPause"),                         \
  IF_STATS_ZERO(E, M, P, L, 44, "SymErr"), IF_STATS_ZERO(E, M, P, L, 45, "RxUnknownOpcode"),                  \
  IF_STATS_ZERO(E, M, P, L, 46, "SingleColl"), IF_STATS_ZERO(E, M, P, L, 47, "MultiColl"),                    \
  IF_STATS_ZERO(E, M, P, L, 48, "LateColl"), IF_STATS_ZERO(E, M, P, L, 49, "ExcessColl"),                     \
  IF_STATS_ZERO(E, M, P, L, 50, "DeferTrans"), IF_STATS_C64(E, M, P, L, 51, "TxErr", 574),                    \
  IF_STATS_C64(E, M, P, L, 52, "RxErr", 570), IF_STATS_C64(E, M, P, L, 53, "TxDiscard", 567)

// The 9 columns of a sub-interface table: `E` the entry, `M` the module's
// name, `P` the columns' prefix, `L` the first localId. The row status is
// the interface's own: the service creates and removes the sub-interface.
#define IF_SUBIF_COLUMNS(E, M, P, L)                                                          \
  fwObject(&E, (L), 1, M ":" P "Index").gauge().ro().indexOf(0),                              \
  fwObject(&E, (L) + 1, 2, M ":" P "Alias").octets(512).attr(4).hook(iffam::shortText<64>),   \
  fwObject(&E, (L) + 2, 3, M ":" P "Mtu").integer().attr(78),                                 \
  fwObject(&E, (L) + 3, 4, M ":" P "AdminStatus").integer().attr(20).range(1, 2),             \
  fwObject(&E, (L) + 4, 5, M ":" P "OperStatus").integer().ro().catalogued(1, 2).attr(19),    \
  fwObject(&E, (L) + 5, 6, M ":" P "EncapDot1q").octets(512).attr(3000),                      \
  fwObject(&E, (L) + 6, 7, M ":" P "RowStatus").integer().catalogued(1, 6).attr(36)           \
      .check_(FW_CHECK_ROW_STATUS),                                                           \
  fwObject(&E, (L) + 7, 8, M ":" P "BdId").integer().attr(270),                               \
  fwObject(&E, (L) + 8, 9, M ":" P "PktEncapType").integer().catalogued(0, 3).attr(49)

#endif
