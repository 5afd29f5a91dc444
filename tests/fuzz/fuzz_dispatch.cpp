// Fuzzes the dispatcher and the verbs: any request kind, a registered or an
// arbitrary name, an index of any count and content, a value of any length,
// any flags, over every registered module.
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::vector<std::string>& names = mdbfuzz::database();
  mdbfuzz::Input in{data, size};
  uint8_t choice = in.byte();
  std::string name;
  if (choice < 224 && !names.empty()) {
    name = names[in.u32() % names.size()];
  } else {
    size_t n = in.byte() % 64;
    for (size_t i = 0; i < n; i++) name += static_cast<char>(in.byte());
  }
  uint32_t kind = in.byte();
  if (kind < 200) kind = kind % 8;  // mostly the real kinds, sometimes anything
  uint32_t flags = in.u32() & ~MDB_FLAG_NULL_BUF_OK;
  if (in.byte() & 1) flags |= MDB_FLAG_NULL_BUF_OK;
  // The index: a count that may lie, over an array that always holds the
  // largest index a handler may write.
  static uint32_t index[4096];
  uint32_t count = in.byte();
  if (in.byte() & 1) count += 256;
  for (uint32_t i = 0; i < 300 && in.left() > 0; i++) index[i] = in.byte() < 200 ? in.byte() : in.u32();
  // The value: its length as the input says, within a buffer that holds it.
  static uint8_t value[8192];
  uint32_t length = in.u32() % (sizeof value);
  size_t copy = std::min<size_t>(length, in.left());
  memcpy(value, data + in.at, copy);
  void* buffer = (flags & MDB_FLAG_NULL_BUF_OK) && (choice & 1) ? nullptr : value;
  uint32_t* pLength = choice & 2 ? nullptr : &length;
  uint32_t options = flags;
  switch (choice % 5) {
    case 0:
      mdbDispatch(kind, name.c_str(), index, &count, buffer, pLength, &flags, choice & 4 ? "snmp" : nullptr);
      break;
    case 1:
      mdbSetApi(name.c_str(), index, count, value, length, nullptr, options & 0xFB);  // no logged writes
      break;
    case 2:
      mdbGetNext(name.c_str(), index, 256, &count, value, &length, "snmp");
      break;
    case 3: {
      MdbObjInfo info;
      mdbObjInfoGet(name.c_str(), flags, &info);
      char next[128];
      mdbObjectNameNextGet(name.c_str(), next, sizeof next);
      break;
    }
    default:
      mdbGetApi(name.c_str(), index, count, value, &length, nullptr);
  }
  return 0;
}
