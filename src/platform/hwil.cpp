// Hardware scalar record: the platform's hardware layer, as a small in-memory table.
#include "platform/tgp.h"
#include "mdb/mdb_types.h"

#include <cstring>
#include <map>
#include <mutex>
#include <vector>

namespace {
struct HwilValue {
  bool bytes = false;
  uint32_t number = 0;
  std::vector<uint8_t> data;
};
std::mutex gHwilLock;
std::map<uint32_t, HwilValue>& hwil() {
  static std::map<uint32_t, HwilValue> table;
  return table;
}
constexpr uint32_t kHwilMaxBytes = 512;
}  // namespace

int tgpHwilScalarSet(uint32_t, uint32_t attribute, const void* value, uint32_t length) {
  if (value == nullptr || length > kHwilMaxBytes) return -1;
  HwilValue v;
  if (length == 0) {
    memcpy(&v.number, value, sizeof v.number);
  } else {
    v.bytes = true;
    v.data.assign(static_cast<const uint8_t*>(value), static_cast<const uint8_t*>(value) + length);
  }
  std::lock_guard guard(gHwilLock);
  hwil()[attribute] = std::move(v);
  return 0;
}

int tgpHwilScalarGet(uint32_t, uint32_t attribute, void* value) {
  if (value == nullptr) return -1;
  std::lock_guard guard(gHwilLock);
  auto it = hwil().find(attribute);
  if (it == hwil().end() || !it->second.bytes) {
    uint32_t number = it == hwil().end() ? 0 : it->second.number;
    memcpy(value, &number, sizeof number);
    return 0;
  }
  auto* holder = static_cast<MdbOctetValue*>(value);
  if (holder->data == nullptr) return -1;
  uint32_t n = static_cast<uint32_t>(it->second.data.size());
  if (n > holder->length) n = holder->length;
  memcpy(holder->data, it->second.data.data(), n);
  holder->length = n;
  return 0;
}
