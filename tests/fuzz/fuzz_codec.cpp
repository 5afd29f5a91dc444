// Fuzzes the index codecs and conversions: any sub-ids into key records of
// every column kind, and back.
#include "framework/fw.h"
#include "platform/mibindex.h"

#include <cstddef>
#include <cstring>

namespace {

struct Key {
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

constexpr FwEntry kEntry = fwTable("fuzzWide", {1, 3, 6, 1, 4, 1, 47391, 2, 9, 1, 1}, FwTableOps{})
                               .key(sizeof(Key))
                               .index(fwIdxInt("f:a", offsetof(Key, number)))
                               .index(fwIdxIp4("f:b", offsetof(Key, ip4)))
                               .index(fwIdxIp6("f:c", offsetof(Key, ip6)))
                               .index(fwIdxMac("f:d", offsetof(Key, mac)))
                               .index(fwIdxInt("f:e", offsetof(Key, small), 2))
                               .index(fwIdxString("f:f", 8, offsetof(Key, name), offsetof(Key, nameLength)))
                               .index(fwIdxFixed("f:g", 3, offsetof(Key, fixed)))
                               .index(fwIdxOid("f:h", 4, offsetof(Key, arcs), offsetof(Key, arcCount)))
                               .index(fwIdxImpliedString("f:i", 5, offsetof(Key, tail), offsetof(Key, tailLength)));

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  uint32_t index[256];
  uint32_t count = static_cast<uint32_t>(size / 4 < 256 ? size / 4 : 256);
  memcpy(index, data, count * 4);
  alignas(8) uint8_t record[FW_MAX_KEY];
  uintptr_t key;
  if (fwIndexDecode(&kEntry, index, count, &key, record) == 0) {
    uint32_t again[256];
    uint32_t n = fwIndexEncode(&kEntry, key, again, 256);
    // What decodes encodes back to the bytes that decoded (sub-ids cut to bytes).
    if (n == 0 || n > count) __builtin_trap();
    alignas(8) uint8_t second[FW_MAX_KEY];
    uintptr_t key2;
    if (fwIndexDecode(&kEntry, again, n, &key2, second) != 0 || memcmp(record, second, sizeof(Key)) != 0)
      __builtin_trap();
  }
  for (uint32_t column = 0; column < 10; column++) fwIndexColumnAt(&kEntry, index, count, column);
  char text[64];
  mibindex2str(index, count, text, sizeof text);
  str2mibindex(reinterpret_cast<const char*>(data), static_cast<uint32_t>(size), index, 256);
  return 0;
}
