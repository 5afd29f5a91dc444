// A key record with a column of every index kind, for the codec's tests and
// its fuzzer.
#ifndef MDB_TEST_WIDE_KEY_H
#define MDB_TEST_WIDE_KEY_H

#include <cstddef>
#include <cstdint>

#include "framework/fw.h"

struct WideKey {
  uint32_t number;
  uint32_t ip4;
  uint8_t ip6[16];
  uint8_t mac[6];
  uint16_t small;
  char name[8];
  uint32_t nameLength;
  char fixed[3];
  uint8_t pad;
  uint32_t arcs[4];
  uint32_t arcCount;
  char tail[5];
  uint8_t pad2[3];
  uint32_t tailLength;
};

// The index of WideKey on a table entry: integer, IPv4, IPv6, MAC, a 16-bit
// integer, a string of 8, 3 fixed bytes, an OID of 4 arcs, an implied string of 5.
constexpr FwEntry wideIndex(FwEntry table) {
  return table.key(sizeof(WideKey))
      .index(fwIdxInt("fwt:number", offsetof(WideKey, number)))
      .index(fwIdxIp4("fwt:ip4", offsetof(WideKey, ip4)))
      .index(fwIdxIp6("fwt:ip6", offsetof(WideKey, ip6)))
      .index(fwIdxMac("fwt:mac", offsetof(WideKey, mac)))
      .index(fwIdxInt("fwt:small", offsetof(WideKey, small), 2))
      .index(fwIdxString("fwt:name", 8, offsetof(WideKey, name), offsetof(WideKey, nameLength)))
      .index(fwIdxFixed("fwt:fixed", 3, offsetof(WideKey, fixed)))
      .index(fwIdxOid("fwt:arcs", 4, offsetof(WideKey, arcs), offsetof(WideKey, arcCount)))
      .index(fwIdxImpliedString("fwt:tail", 5, offsetof(WideKey, tail), offsetof(WideKey, tailLength)));
}

#endif
