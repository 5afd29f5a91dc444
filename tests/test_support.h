// Shared test scaffolding: a fresh dictionary per test and a small test module
// whose handler records what it is asked.
#ifndef MDB_TEST_SUPPORT_H
#define MDB_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <string>
#include <unistd.h>
#include <vector>

#include "mdb/mdb.h"
#include "platform/sil.h"

namespace mdbtest {

inline MdbEntryDesc makeEntry(std::initializer_list<uint32_t> oid, uint32_t indexMin, uint32_t indexMax,
                              std::initializer_list<const char*> indexNames = {}) {
  return mdbEntryMake(oid, indexMin, indexMax, indexNames);
}

inline MdbObjectDesc makeObject(uint16_t localId, uint16_t subId, uint32_t access, MdbObjectHandler handler,
                                const char* name, int32_t min = 0, int32_t max = 0,
                                const char* alt = nullptr, uint32_t type = MDB_TYPE_INTEGER) {
  MdbObjectDesc o{};
  o.localId = localId;
  o.subId = subId;
  o.size = 4;
  o.min = min;
  o.max = max;
  o.type = type;
  o.access = access;
  o.attributes = MDB_ATTR_ROW;
  o.handler = handler;
  o.altObject = alt;
  o.name = name;
  return o;
}

// Fresh start values, an empty dictionary and zeroed counters for each test.
class DictTest : public ::testing::Test {
 protected:
  void SetUp() override {
    mdbDictDestroy();
    mdbInfoInit();
    gMdbInfo.entryHook = nullptr;
    gMdbInfo.exitHook = nullptr;
    gMdbInfo.translateHook = nullptr;
    gMdbInfo.unknownObjectHook = nullptr;
    ASSERT_EQ(0, mdbDictInit());
    mdbStatsReset();
    silOptClear();
    errnoSet(0);
  }
  void TearDown() override {
    mdbDictDestroy();
    silOptClear();
    silClockSet(nullptr);
  }
};

inline uint32_t stat(MdbStatId id) { return mdbStatGet(id); }

// Runs fn with standard output captured; returns what it printed.
template <typename Fn>
std::string captureStdout(Fn fn) {
  fflush(stdout);
  char path[] = "/tmp/mdbtest-stdout-XXXXXX";
  int fd = mkstemp(path);
  int saved = dup(STDOUT_FILENO);
  dup2(fd, STDOUT_FILENO);
  fn();
  fflush(stdout);
  dup2(saved, STDOUT_FILENO);
  close(saved);
  std::string text;
  lseek(fd, 0, SEEK_SET);
  char buf[4096];
  ssize_t n;
  while ((n = read(fd, buf, sizeof buf)) > 0) text.append(buf, static_cast<size_t>(n));
  close(fd);
  unlink(path);
  return text;
}

}  // namespace mdbtest

#endif
