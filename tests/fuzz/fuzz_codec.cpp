// Fuzzes the index codecs and conversions: any sub-ids into key records of
// every column kind, and back.
#include "framework/fw.h"
#include "platform/mibindex.h"
#include "../wide_key.h"

#include <cstddef>
#include <cstring>

namespace {

constexpr FwEntry kEntry = wideIndex(fwTable("fuzzWide", {1, 3, 6, 1, 4, 1, 47391, 2, 9, 1, 1}, FwTableOps{}));

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
    if (fwIndexDecode(&kEntry, again, n, &key2, second) != 0 || memcmp(record, second, sizeof(WideKey)) != 0)
      __builtin_trap();
  }
  for (uint32_t column = 0; column < 10; column++) fwIndexColumnAt(&kEntry, index, count, column);
  char text[64];
  mibindex2str(index, count, text, sizeof text);
  str2mibindex(reinterpret_cast<const char*>(data), static_cast<uint32_t>(size), index, 256);
  return 0;
}
