// Shared scaffolding of the interface module tests: requests by ifIndex and
// values put straight into the substitute interface service.
#ifndef MDB_TEST_IF_SUPPORT_H
#define MDB_TEST_IF_SUPPORT_H

#include "test_support.h"
#include "services/svc_store.h"

namespace mdbtest {

class IfTest : public DictTest {
 protected:
  uint32_t get(const char* name, uint32_t ifIndex, uint32_t* value) {
    uint32_t length = 4;
    return mdbGetApi(name, &ifIndex, 1, value, &length, nullptr);
  }
  uint32_t scalar(const char* name, uint32_t* value) {
    uint32_t zero = 0, length = 4;
    return mdbGetApi(name, &zero, 1, value, &length, nullptr);
  }
  std::string text(const char* name, uint32_t ifIndex) {
    char buf[1024];
    uint32_t length = sizeof buf;
    return mdbGetApi(name, &ifIndex, 1, buf, &length, nullptr) == 0 ? std::string(buf, length) : "<error>";
  }
  uint32_t set(const char* name, uint32_t ifIndex, uint32_t value) {
    return mdbSetApi(name, &ifIndex, 1, &value, 4, nullptr, 1);
  }
  std::vector<uint32_t> walk(const char* name) {
    std::vector<uint32_t> rows;
    uint32_t index[MDB_MAX_INDEX] = {0}, count = 0;
    for (;;) {
      char value[1024];
      uint32_t length = sizeof value;
      if (mdbGetNext(name, index, MDB_MAX_INDEX, &count, value, &length, nullptr) != 0) break;
      rows.push_back(index[0]);
    }
    return rows;
  }
  void put(uint32_t ifIndex, uint32_t attribute, uint32_t value) {
    ASSERT_EQ(0, svcRowPut(svcServiceFind("tgpIf"), &ifIndex, 1, attribute, &value));
  }
  void put64(uint32_t ifIndex, uint32_t attribute, uint32_t high, uint32_t low) {
    uint32_t words[2] = {high, low};
    MdbOctetValue v{reinterpret_cast<uint8_t*>(words), 8};
    ASSERT_EQ(0, svcRowPut(svcServiceFind("tgpIf"), &ifIndex, 1, attribute, &v));
  }
};

}  // namespace mdbtest

#endif
