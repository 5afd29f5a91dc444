// A database for the fuzzers: the modules built so far over the default
// device, in a private run directory, with the export attributes kept away
// (they write files at a path the request names).
#ifndef MDB_FUZZ_SUPPORT_H
#define MDB_FUZZ_SUPPORT_H

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "mdb/mdb.h"
#include "platform/sil.h"

namespace mdbfuzz {

// Registers what the daemon registers and returns every object name.
inline const std::vector<std::string>& database() {
  static std::vector<std::string>* names = [] {
    static char dir[] = "/tmp/mdbfuzz-XXXXXX";
    if (mkdtemp(dir) != nullptr) {
      setenv("MDB_RUNDIR", dir, 1);
      silOptSet("mdb.ramdir", dir);
    }
    silOptSet("mdb.system.enable", "true");
    mdbInfoInit();
    mdbDictInit();
    mdbUserMibInit();
    auto* list = new std::vector<std::string>();
    mdbModuleForEach(
        [](const MdbModuleDesc* module, void* arg) {
          for (const MdbObjectBinding* b = module->list; b != nullptr && b->object != nullptr; b++)
            static_cast<std::vector<std::string>*>(arg)->push_back(b->object->name);
          return 0;
        },
        list);
    return list;
  }();
  return *names;
}

// Reads from the input as it lasts; zeros after its end.
struct Input {
  const uint8_t* data;
  size_t size;
  size_t at = 0;
  uint32_t u32() {
    uint32_t v = 0;
    for (int i = 0; i < 4; i++) v = (v << 8) | byte();
    return v;
  }
  uint8_t byte() { return at < size ? data[at++] : 0; }
  size_t left() const { return size - at; }
};

}  // namespace mdbfuzz

#endif
