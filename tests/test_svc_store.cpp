// The substitute services' store, through its public interface: schema, row
// order, the two status code sets, value forms, providers, persistence and
// concurrent use.
#include <gtest/gtest.h>

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "services/svc_store.h"

namespace {

using Key = std::vector<uint32_t>;
constexpr int kNoRow = SVC_ERR_NO_ROW, kUnknown = SVC_ERR_UNKNOWN, kNoCreation = SVC_ERR_NO_CREATION,
              kState = SVC_ERR_STATE, kWrongValue = SVC_ERR_WRONG_VALUE, kWrongLength = MDB_ERR_WRONG_LENGTH;

// Every test starts and ends with an empty store.
struct FreshStore {
  FreshStore() { svcStoreReset(); }
  ~FreshStore() { svcStoreReset(); }
};

// A private directory, removed with its files at the end.
struct TempDir {
  std::string path;
  TempDir() {
    char name[] = "/tmp/svcstoreXXXXXX";
    path = mkdtemp(name);
  }
  ~TempDir() {
    for (const std::string& f : files()) unlink(file(f).c_str());
    rmdir(path.c_str());
  }
  std::string file(const std::string& name) const { return path + "/" + name; }
  std::vector<std::string> files() const {
    std::vector<std::string> out;
    if (DIR* d = opendir(path.c_str())) {
      while (dirent* e = readdir(d))
        if (strcmp(e->d_name, ".") != 0 && strcmp(e->d_name, "..") != 0) out.push_back(e->d_name);
      closedir(d);
    }
    return out;
  }
};

std::string readText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}
void writeText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

uint32_t size(const Key& k) { return static_cast<uint32_t>(k.size()); }
int putInt(SvcServiceId s, const Key& k, uint32_t a, uint32_t v) { return svcRowPut(s, k.data(), size(k), a, &v); }
int setInt(SvcServiceId s, const Key& k, uint32_t a, uint32_t v) { return svcRowSet(s, k.data(), size(k), a, &v); }
int getInt(SvcServiceId s, const Key& k, uint32_t a, uint32_t* v) { return svcRowGet(s, k.data(), size(k), a, v); }
uint32_t intOf(SvcServiceId s, const Key& k, uint32_t a) {
  uint32_t v = 0xDEADBEEF;
  EXPECT_EQ(getInt(s, k, a, &v), 0);
  return v;
}
int setText(SvcServiceId s, const Key& k, uint32_t a, const std::string& text) {
  MdbOctetValue v{reinterpret_cast<uint8_t*>(const_cast<char*>(text.data())), static_cast<uint32_t>(text.size())};
  return svcRowSet(s, k.data(), size(k), a, &v);
}
std::string textOf(SvcServiceId s, const Key& k, uint32_t a) {
  std::vector<uint8_t> buffer(70000);
  MdbOctetValue v{buffer.data(), static_cast<uint32_t>(buffer.size())};
  EXPECT_EQ(svcRowGet(s, k.data(), size(k), a, &v), 0);
  return std::string(reinterpret_cast<char*>(buffer.data()), v.length);
}

std::vector<Key> walk(SvcServiceId s) {
  std::vector<Key> out;
  uint32_t key[SVC_MAX_KEY], count = 0;
  int rc = svcRowFirst(s, key, &count);
  while (rc == 0) {
    out.emplace_back(key, key + count);
    rc = svcRowNext(s, out.back().data(), size(out.back()), key, &count);
  }
  EXPECT_EQ(rc, kNoRow);
  return out;
}

// A table with status column 1, integer column 2 and octet column 3.
SvcServiceId makeTable(const char* prefix, SvcStatusSet set = SVC_STATUS_ROW) {
  SvcServiceId s = svcServiceDeclare(prefix, true);
  EXPECT_NE(s, nullptr);
  EXPECT_EQ(svcStatusDeclare(s, 1, set), 0);
  EXPECT_EQ(svcAttributeDeclare(s, 2, SVC_FORM_INT), 0);
  EXPECT_EQ(svcAttributeDeclare(s, 3, SVC_FORM_OCTET), 0);
  return s;
}

// ---------------------------------------------------------------- schema

TEST(SvcStoreSchema, Declarations) {
  FreshStore fresh;
  SvcServiceId t = svcServiceDeclare("mirrorGroup", true);
  ASSERT_NE(t, nullptr);
  EXPECT_EQ(svcServiceDeclare("mirrorGroup", true), t);
  EXPECT_EQ(svcServiceDeclare("mirrorGroup", false), nullptr);
  EXPECT_EQ(svcServiceFind("mirrorGroup"), t);
  EXPECT_EQ(svcServiceFind("mirror"), nullptr);
  EXPECT_EQ(svcServiceDeclare("", true), nullptr);
  EXPECT_EQ(svcServiceDeclare("two words", true), nullptr);  // could not be saved

  EXPECT_EQ(svcAttributeDeclare(t, 5, SVC_FORM_INT), 0);
  EXPECT_EQ(svcAttributeDeclare(t, 5, SVC_FORM_INT), 0);
  EXPECT_EQ(svcAttributeDeclare(t, 5, SVC_FORM_OCTET), -1);
  EXPECT_EQ(svcAttributeDeclare(t, 7, SVC_FORM_OCTET), 0);
  EXPECT_EQ(svcStatusDeclare(t, 7, SVC_STATUS_ROW), -1);  // a status is an integer
  EXPECT_EQ(svcStatusDeclare(t, 9, SVC_STATUS_ENTRY), 0);
  EXPECT_EQ(svcStatusDeclare(t, 9, SVC_STATUS_ENTRY), 0);
  EXPECT_EQ(svcStatusDeclare(t, 9, SVC_STATUS_ROW), -1);
  EXPECT_EQ(svcStatusDeclare(t, 5, SVC_STATUS_ENTRY), -1);
  EXPECT_EQ(svcProvide(t, 9, SVC_FORM_INT, nullptr, nullptr), -1);  // rows live by the status
  EXPECT_EQ(svcProvide(t, 5, SVC_FORM_OCTET, nullptr, nullptr), -1);
  EXPECT_EQ(svcStatusDeclare(svcServiceDeclare("cli", false), 1, SVC_STATUS_ROW), -1);
}

TEST(SvcStoreSchema, ClearKeepsSchemaResetForgetsIt) {
  FreshStore fresh;
  SvcServiceId t = makeTable("trunk");
  ASSERT_EQ(setInt(t, {1}, 1, 4), 0);
  svcStoreClear();
  EXPECT_EQ(svcRowCount(t), 0u);
  EXPECT_EQ(setInt(t, {1}, 1, 5), 0);  // the status attribute is still known
  EXPECT_EQ(intOf(t, {1}, 1), 2u);
  EXPECT_EQ(svcAttributeDeclare(t, 3, SVC_FORM_INT), -1);

  svcStoreReset();
  EXPECT_EQ(svcServiceFind("trunk"), nullptr);
  uint32_t v;
  EXPECT_EQ(getInt(t, {1}, 1, &v), kUnknown);  // an old id stays safe to use
  EXPECT_EQ(svcRowCount(t), 0u);
  SvcServiceId g = svcServiceDeclare("trunk", false);  // the other kind now
  ASSERT_NE(g, nullptr);
  EXPECT_EQ(svcAttributeDeclare(g, 3, SVC_FORM_INT), 0);
}

// ---------------------------------------------------------------- rows

TEST(SvcStoreRows, WalkComesOutInOidOrder) {
  FreshStore fresh;
  SvcServiceId t = makeTable("fdb");
  for (const Key& k : std::vector<Key>{{1, 2}, {1, 10}, {2}, {1}, {1, 2, 0}, {0xFFFFFFFFu}, {0x80000000u, 1}})
    ASSERT_EQ(putInt(t, k, 2, 7), 0);
  EXPECT_EQ(walk(t), (std::vector<Key>{{1}, {1, 2}, {1, 2, 0}, {1, 10}, {2}, {0x80000000u, 1}, {0xFFFFFFFFu}}));
  EXPECT_EQ(svcRowCount(t), 7u);
}

TEST(SvcStoreRows, NextFromAnyKey) {
  FreshStore fresh;
  SvcServiceId t = makeTable("arp");
  for (const Key& k : std::vector<Key>{{1, 5}, {3}, {3, 1}}) ASSERT_EQ(putInt(t, k, 2, 0), 0);
  uint32_t next[SVC_MAX_KEY], count = 0;
  auto nextOf = [&](const Key& k) {
    return svcRowNext(t, k.data(), size(k), next, &count) == 0 ? Key(next, next + count) : Key{99};
  };
  EXPECT_EQ(nextOf({}), (Key{1, 5}));
  EXPECT_EQ(nextOf({1}), (Key{1, 5}));
  EXPECT_EQ(nextOf({1, 5}), (Key{3}));
  EXPECT_EQ(nextOf({1, 5, 0}), (Key{3}));
  EXPECT_EQ(nextOf({2, 99}), (Key{3}));
  EXPECT_EQ(nextOf({3, 0}), (Key{3, 1}));
  EXPECT_EQ(nextOf({3, 1}), (Key{99}));
  EXPECT_EQ(nextOf({4}), (Key{99}));
}

TEST(SvcStoreRows, KeyLimits) {
  FreshStore fresh;
  SvcServiceId t = makeTable("route");
  uint32_t key[SVC_MAX_KEY + 1] = {}, count = 0, v = 4;
  EXPECT_EQ(svcRowFirst(t, key, &count), kNoRow);
  Key longest(SVC_MAX_KEY, 7);
  ASSERT_EQ(setInt(t, longest, 1, 4), 0);
  ASSERT_EQ(svcRowFirst(t, key, &count), 0);
  EXPECT_EQ(Key(key, key + count), longest);
  EXPECT_EQ(svcRowSet(t, key, SVC_MAX_KEY + 1, 1, &v), kUnknown);
  EXPECT_EQ(svcRowPut(t, key, SVC_MAX_KEY + 1, 2, &v), kUnknown);
  EXPECT_EQ(svcRowGet(t, key, SVC_MAX_KEY + 1, 2, &v), kUnknown);
  EXPECT_EQ(svcRowNext(t, key, SVC_MAX_KEY + 1, key, &count), kUnknown);
  EXPECT_EQ(svcRowGet(t, nullptr, 1, 2, &v), kUnknown);
  EXPECT_EQ(svcRowCount(t), 1u);
}

TEST(SvcStoreRows, MissingRowsAndAttributes) {
  FreshStore fresh;
  SvcServiceId t = makeTable("acl");
  uint32_t v = 0;
  EXPECT_EQ(getInt(t, {1}, 2, &v), kNoRow);
  EXPECT_EQ(setInt(t, {1}, 2, 3), kNoCreation);
  EXPECT_EQ(setText(t, {1}, 3, "x"), kNoCreation);
  EXPECT_EQ(svcRowCount(t), 0u);
  ASSERT_EQ(setInt(t, {1}, 1, 4), 0);
  EXPECT_EQ(getInt(t, {1}, 2, &v), kNoRow);  // the row has no value for it yet
  EXPECT_EQ(setInt(t, {1}, 2, 3), 0);
  EXPECT_EQ(intOf(t, {1}, 2), 3u);
  EXPECT_EQ(getInt(t, {1}, 42, &v), kUnknown);  // never declared
  EXPECT_EQ(setInt(t, {1}, 42, 3), kUnknown);
  EXPECT_EQ(putInt(t, {2}, 42, 3), kUnknown);
  EXPECT_EQ(svcRowGet(t, Key{1}.data(), 1, 2, nullptr), kUnknown);
  EXPECT_EQ(svcRowSet(t, Key{1}.data(), 1, 2, nullptr), kUnknown);
  EXPECT_EQ(svcScalarGet(t, 2, &v), kUnknown);  // a table is no scalar group
  SvcServiceId g = svcServiceDeclare("sys", false);
  ASSERT_EQ(svcAttributeDeclare(g, 2, SVC_FORM_INT), 0);
  EXPECT_EQ(getInt(g, {1}, 2, &v), kUnknown);
  EXPECT_EQ(svcScalarGet(g, 2, &v), kNoRow);
}

// ---------------------------------------------------------------- status code sets

TEST(SvcStoreStatus, RowStatus) {
  FreshStore fresh;
  SvcServiceId t = makeTable("mirrorGroup", SVC_STATUS_ROW);
  EXPECT_EQ(setInt(t, {1}, 1, 4), 0);  // createAndGo: active
  EXPECT_EQ(intOf(t, {1}, 1), 1u);
  EXPECT_EQ(setInt(t, {2}, 1, 5), 0);  // createAndWait: notInService
  EXPECT_EQ(intOf(t, {2}, 1), 2u);
  EXPECT_EQ(setInt(t, {1}, 1, 4), kState);
  EXPECT_EQ(setInt(t, {1}, 1, 5), kState);
  EXPECT_EQ(setInt(t, {2}, 1, 1), 0);
  EXPECT_EQ(intOf(t, {2}, 1), 1u);
  EXPECT_EQ(setInt(t, {2}, 1, 2), 0);
  EXPECT_EQ(intOf(t, {2}, 1), 2u);
  EXPECT_EQ(setInt(t, {3}, 1, 1), kState);
  EXPECT_EQ(setInt(t, {3}, 1, 2), kState);
  for (uint32_t wrong : {0u, 3u, 7u, 0xFFFFFFFFu}) {
    EXPECT_EQ(setInt(t, {2}, 1, wrong), kWrongValue) << wrong;
    EXPECT_EQ(setInt(t, {3}, 1, wrong), kWrongValue) << wrong;
  }
  EXPECT_EQ(intOf(t, {2}, 1), 2u);

  ASSERT_EQ(setInt(t, {1}, 2, 77), 0);
  EXPECT_EQ(setInt(t, {1}, 1, 6), 0);  // destroy takes the row's values with it
  EXPECT_EQ(setInt(t, {1}, 1, 6), 0);
  EXPECT_EQ(walk(t), (std::vector<Key>{{2}}));
  EXPECT_EQ(setInt(t, {1}, 1, 5), 0);
  uint32_t v;
  EXPECT_EQ(getInt(t, {1}, 2, &v), kNoRow);
  EXPECT_EQ(putInt(t, {4}, 1, 3), 0);  // a put knows no rules
  EXPECT_EQ(intOf(t, {4}, 1), 3u);
}

TEST(SvcStoreStatus, EntryStatus) {
  FreshStore fresh;
  SvcServiceId t = makeTable("rmonEvent", SVC_STATUS_ENTRY);
  EXPECT_EQ(setInt(t, {1}, 1, 2), 0);  // createRequest: underCreation
  EXPECT_EQ(intOf(t, {1}, 1), 3u);
  EXPECT_EQ(setInt(t, {1}, 1, 2), kState);
  EXPECT_EQ(setInt(t, {1}, 1, 1), 0);
  EXPECT_EQ(intOf(t, {1}, 1), 1u);
  EXPECT_EQ(setInt(t, {1}, 1, 3), 0);
  EXPECT_EQ(intOf(t, {1}, 1), 3u);
  EXPECT_EQ(setInt(t, {2}, 1, 1), kState);
  EXPECT_EQ(setInt(t, {2}, 1, 3), kState);
  for (uint32_t wrong : {0u, 5u, 6u}) EXPECT_EQ(setInt(t, {1}, 1, wrong), kWrongValue) << wrong;
  EXPECT_EQ(setInt(t, {1}, 1, 4), 0);  // invalid
  EXPECT_EQ(setInt(t, {1}, 1, 4), 0);
  EXPECT_EQ(svcRowCount(t), 0u);
}

// ---------------------------------------------------------------- value forms

TEST(SvcStoreForms, OctetValues) {
  FreshStore fresh;
  SvcServiceId t = makeTable("if");
  ASSERT_EQ(setInt(t, {1}, 1, 4), 0);
  ASSERT_EQ(setText(t, {1}, 3, "GigabitEthernet"), 0);
  uint8_t buffer[8];
  memset(buffer, '#', sizeof buffer);
  MdbOctetValue v{buffer, 4};
  ASSERT_EQ(svcRowGet(t, Key{1}.data(), 1, 3, &v), 0);
  EXPECT_EQ(v.length, 4u);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 8), "Giga####");
  MdbOctetValue none{nullptr, 0};
  EXPECT_EQ(svcRowGet(t, Key{1}.data(), 1, 3, &none), 0);
  EXPECT_EQ(none.length, 0u);
  MdbOctetValue bad{nullptr, 4};
  EXPECT_EQ(svcRowGet(t, Key{1}.data(), 1, 3, &bad), kUnknown);
  EXPECT_EQ(svcRowSet(t, Key{1}.data(), 1, 3, &bad), kUnknown);

  ASSERT_EQ(setText(t, {1}, 3, std::string("a\0b", 3)), 0);  // shorter replaces whole
  EXPECT_EQ(textOf(t, {1}, 3), std::string("a\0b", 3));
  ASSERT_EQ(setText(t, {1}, 3, ""), 0);
  EXPECT_EQ(textOf(t, {1}, 3), "");
  std::string big(65536, 'z');
  EXPECT_EQ(setText(t, {1}, 3, big), 0);
  EXPECT_EQ(textOf(t, {1}, 3), big);
  EXPECT_EQ(setText(t, {1}, 3, big + "z"), kWrongLength);
  EXPECT_EQ(textOf(t, {1}, 3), big);
}

// ---------------------------------------------------------------- providers

struct ProviderLog {
  std::vector<Key> keys;
  std::string savePath;
  SvcServiceId service = nullptr;
  int saveResult = 99;
} gLog;

int recordingGet(const uint32_t* key, uint32_t keyCount, uint32_t attribute, void* value) {
  gLog.keys.emplace_back(key, key + keyCount);
  *static_cast<uint32_t*>(value) = 1000 + attribute;
  return 0;
}
int failingSet(const uint32_t*, uint32_t, uint32_t, const void*) { return MDB_ERR_COMMIT_FAILED; }

// An action that writes the same service and saves the store, from inside a write.
int saveAction(const uint32_t* key, uint32_t keyCount, uint32_t, const void* value) {
  gLog.keys.emplace_back(key, key + keyCount);
  if (*static_cast<const uint32_t*>(value) != 1) return kWrongValue;
  uint32_t v = 5;
  if (svcScalarSet(gLog.service, 16, &v) != 0) return -1;
  return gLog.saveResult = svcStoreSave(gLog.savePath.c_str());
}

TEST(SvcStoreProviders, CalledWithTheRowKey) {
  FreshStore fresh;
  gLog = ProviderLog{};
  SvcServiceId t = makeTable("counters");
  ASSERT_EQ(svcProvide(t, 8, SVC_FORM_INT, recordingGet, failingSet), 0);
  ASSERT_EQ(svcProvide(t, 9, SVC_FORM_INT, nullptr, nullptr), 0);
  uint32_t v = 0;
  EXPECT_EQ(getInt(t, {3, 4}, 8, &v), kNoRow);
  EXPECT_EQ(setInt(t, {3, 4}, 8, 1), kNoCreation);
  EXPECT_TRUE(gLog.keys.empty());

  ASSERT_EQ(setInt(t, {3, 4}, 1, 4), 0);
  EXPECT_EQ(getInt(t, {3, 4}, 8, &v), 0);
  EXPECT_EQ(v, 1008u);
  EXPECT_EQ(setInt(t, {3, 4}, 8, 1), static_cast<int>(MDB_ERR_COMMIT_FAILED));
  EXPECT_EQ(gLog.keys, (std::vector<Key>{{3, 4}}));
  EXPECT_EQ(getInt(t, {3, 4}, 9, &v), kUnknown);
  EXPECT_EQ(setInt(t, {3, 4}, 9, 1), kUnknown);
  EXPECT_EQ(putInt(t, {3, 4}, 8, 1), kUnknown);  // nothing is kept for it
}

TEST(SvcStoreProviders, ActionSavesFromInsideAWrite) {
  FreshStore fresh;
  TempDir dir;
  gLog = ProviderLog{};
  gLog.savePath = dir.file("start.cfg");
  gLog.service = svcServiceDeclare("cli", false);
  ASSERT_EQ(svcAttributeDeclare(gLog.service, 16, SVC_FORM_INT), 0);
  ASSERT_EQ(svcProvide(gLog.service, 15, SVC_FORM_INT, recordingGet, saveAction), 0);

  uint32_t one = 1, two = 2, v = 0;
  ASSERT_EQ(svcScalarSet(gLog.service, 15, &one), 0);
  EXPECT_EQ(gLog.saveResult, 0);
  EXPECT_EQ(gLog.keys, (std::vector<Key>{{}}));  // a scalar group has no key
  const std::string saved = readText(gLog.savePath);
  EXPECT_NE(saved.find("int 16 5\n"), std::string::npos);
  EXPECT_EQ(saved.find(" 15 "), std::string::npos);  // provided values are never saved
  ASSERT_EQ(svcScalarGet(gLog.service, 15, &v), 0);
  EXPECT_EQ(v, 1015u);
  EXPECT_EQ(svcScalarSet(gLog.service, 15, &two), kWrongValue);
}

// ---------------------------------------------------------------- persistence

// Two tables and a scalar group, with values of every shape.
void fillStore() {
  SvcServiceId t = makeTable("mirrorGroup");
  ASSERT_EQ(setInt(t, {1}, 1, 4), 0);
  ASSERT_EQ(setInt(t, {1}, 2, 0xFFFFFFFFu), 0);
  ASSERT_EQ(setText(t, {1}, 3, std::string("\x00\xff\n x", 5)), 0);
  ASSERT_EQ(setInt(t, {2, 0}, 1, 5), 0);
  ASSERT_EQ(setText(t, {2, 0}, 3, ""), 0);
  ASSERT_EQ(setInt(makeTable("rmonEvent", SVC_STATUS_ENTRY), {9}, 1, 2), 0);
  SvcServiceId g = svcServiceDeclare("sys", false);
  ASSERT_EQ(svcAttributeDeclare(g, 1, SVC_FORM_OCTET), 0);
  uint8_t name[] = "switch-1";
  MdbOctetValue v{name, 8};
  ASSERT_EQ(svcScalarSet(g, 1, &v), 0);
}

void expectFilledStore() {
  SvcServiceId t = svcServiceFind("mirrorGroup");
  ASSERT_NE(t, nullptr);
  EXPECT_EQ(walk(t), (std::vector<Key>{{1}, {2, 0}}));
  EXPECT_EQ(intOf(t, {1}, 1), 1u);
  EXPECT_EQ(intOf(t, {1}, 2), 0xFFFFFFFFu);
  EXPECT_EQ(textOf(t, {1}, 3), std::string("\x00\xff\n x", 5));
  EXPECT_EQ(intOf(t, {2, 0}, 1), 2u);
  EXPECT_EQ(textOf(t, {2, 0}, 3), "");
  ASSERT_NE(svcServiceFind("rmonEvent"), nullptr);
  EXPECT_EQ(intOf(svcServiceFind("rmonEvent"), {9}, 1), 3u);
  uint8_t buffer[32];
  MdbOctetValue v{buffer, sizeof buffer};
  ASSERT_EQ(svcScalarGet(svcServiceFind("sys"), 1, &v), 0);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), v.length), "switch-1");
}

TEST(SvcStorePersistence, RoundTripReplacesNamedServicesOnly) {
  FreshStore fresh;
  TempDir dir;
  fillStore();
  const std::string path = dir.file("start.cfg");
  ASSERT_EQ(svcStoreSave(path.c_str()), 0);
  EXPECT_EQ(dir.files(), std::vector<std::string>{"start.cfg"});  // no temporary left
  EXPECT_EQ(readText(path).rfind("mdb-store 1\n", 0), 0u);

  SvcServiceId t = svcServiceFind("mirrorGroup");
  ASSERT_EQ(setInt(t, {7}, 1, 4), 0);
  ASSERT_EQ(setInt(t, {1}, 2, 3), 0);
  ASSERT_EQ(setInt(t, {2, 0}, 1, 6), 0);
  SvcServiceId other = svcServiceDeclare("ntp", false);  // not in the file
  ASSERT_EQ(svcAttributeDeclare(other, 1, SVC_FORM_INT), 0);
  uint32_t v = 11;
  ASSERT_EQ(svcScalarSet(other, 1, &v), 0);

  ASSERT_EQ(svcStoreLoad(path.c_str()), 0);
  expectFilledStore();
  ASSERT_EQ(svcScalarGet(other, 1, &v), 0);
  EXPECT_EQ(v, 11u);
  EXPECT_EQ(setInt(t, {1}, 1, 4), kState);  // status rules hold on loaded rows

  // Into an empty store: services, kinds and forms come from the file.
  svcStoreReset();
  ASSERT_EQ(svcStoreLoad(path.c_str()), 0);
  expectFilledStore();
  EXPECT_EQ(svcAttributeDeclare(svcServiceFind("mirrorGroup"), 3, SVC_FORM_INT), -1);
  EXPECT_EQ(svcServiceDeclare("sys", true), nullptr);
}

TEST(SvcStorePersistence, TruncatedFileChangesNothing) {
  FreshStore fresh;
  TempDir dir;
  fillStore();
  const std::string path = dir.file("start.cfg");
  ASSERT_EQ(svcStoreSave(path.c_str()), 0);
  const std::string whole = readText(path);
  SvcServiceId t = svcServiceFind("mirrorGroup");
  ASSERT_EQ(setInt(t, {1}, 2, 3), 0);
  ASSERT_EQ(setInt(t, {5}, 1, 4), 0);
  for (size_t n = 0; n < whole.size(); ++n) {
    writeText(path, whole.substr(0, n));
    ASSERT_EQ(svcStoreLoad(path.c_str()), -1) << "cut at " << n;
  }
  EXPECT_EQ(intOf(t, {1}, 2), 3u);
  EXPECT_EQ(walk(t), (std::vector<Key>{{1}, {2, 0}, {5}}));
}

TEST(SvcStorePersistence, MalformedFileChangesNothing) {
  FreshStore fresh;
  TempDir dir;
  SvcServiceId t = makeTable("mirrorGroup");
  ASSERT_EQ(svcProvide(t, 8, SVC_FORM_INT, recordingGet, nullptr), 0);
  ASSERT_EQ(setInt(t, {1}, 1, 4), 0);
  const std::string path = dir.file("bad.cfg");
  std::string keyOf257 = "row 257";
  for (int i = 0; i < 257; ++i) keyOf257 += " 1";
  const std::string head = "mdb-store 1\nservice mirrorGroup table\n";
  const std::vector<std::string> bad = {
      "mdb-store 2\nend\n",
      "mdb-store 1\r\nend\n",
      head + "row 1 2\nint 2 5\nend\nextra\n",
      head + "int 2 5\nend\n",                          // a value before any row
      head + "row 1 2\nint 2 5\nint 2 6\nend\n",        // the same value twice
      head + "row 1 2\nrow 1 2\nend\n",                 // the same row twice
      head + "row 2 2\nend\n",                          // fewer sub-ids than counted
      head + "row 1 4294967296\nend\n",
      head + "row 1 -1\nend\n",
      head + keyOf257 + "\nend\n",
      head + "row 1 2\nint 2  5\nend\n",
      head + "row 1 2\nint 2 5 \nend\n",
      head + "row 1 2\noctet 3 2 abc\nend\n",           // hex shorter than the length
      head + "row 1 2\noctet 3 1 zz\nend\n",
      head + "row 1 2\noctet 3 65537 " + std::string(131074, 'a') + "\nend\n",
      head + "row 1 2\nint 3 5\nend\n",                 // 3 is declared an octet
      head + "row 1 2\nint 8 5\nend\n",                 // 8 is provided
      head + "row 1 2\nint 20 5\noctet 20 1 41\nend\n", // two forms in one file
      "mdb-store 1\nservice mirrorGroup scalar\nint 2 5\nend\n",
      "mdb-store 1\nservice new table\nrow 1 1\nend\nservice new table\nend\n",
      "mdb-store 1\nservice x scalar\nrow 1 1\nend\n",
  };
  for (size_t i = 0; i < bad.size(); ++i) {
    writeText(path, bad[i]);
    EXPECT_EQ(svcStoreLoad(path.c_str()), -1) << "case " << i;
  }
  EXPECT_EQ(walk(t), (std::vector<Key>{{1}}));
  EXPECT_EQ(svcServiceFind("new"), nullptr);
  EXPECT_EQ(svcStoreLoad(dir.file("missing.cfg").c_str()), -1);
  EXPECT_EQ(svcStoreLoad(dir.path.c_str()), -1);

  // The largest value is within the bounds, in either case of hex.
  writeText(path, head + "row 1 2\noctet 3 65536 " + std::string(131072, 'A') + "\nend\n");
  ASSERT_EQ(svcStoreLoad(path.c_str()), 0);
  EXPECT_EQ(textOf(t, {2}, 3), std::string(65536, '\xaa'));
}

TEST(SvcStorePersistence, FailedSaveKeepsTheOldFile) {
  FreshStore fresh;
  TempDir dir;
  fillStore();
  const std::string path = dir.file("start.cfg");
  ASSERT_EQ(svcStoreSave(path.c_str()), 0);
  const std::string before = readText(path);
  EXPECT_EQ(svcStoreSave(dir.file("no-such-dir/start.cfg").c_str()), -1);
  // A target that is a non-empty directory: the rename fails once the temporary is written.
  const std::string blocker = dir.file("blocker");
  ASSERT_EQ(mkdir(blocker.c_str(), 0700), 0);
  writeText(blocker + "/x", "x");
  EXPECT_EQ(svcStoreSave(blocker.c_str()), -1);
  unlink((blocker + "/x").c_str());
  rmdir(blocker.c_str());
  EXPECT_EQ(dir.files(), std::vector<std::string>{"start.cfg"});
  EXPECT_EQ(readText(path), before);
}

// ---------------------------------------------------------------- concurrency

TEST(SvcStoreConcurrency, WritersReadersWalkersAndSaves) {
  FreshStore fresh;
  TempDir dir;
  SvcServiceId t = makeTable("fdb");
  constexpr uint32_t kWriters = 8, kRows = 150;
  std::atomic<bool> writing{true};
  std::atomic<int> failures{0};

  auto writer = [&](uint32_t id) {
    for (uint32_t i = 0; i < kRows; ++i) {
      Key k{i % 3, id, i};
      std::string text = std::to_string(id * 1000 + i);
      if (setInt(t, k, 1, 4) != 0 || setInt(t, k, 2, id * 1000 + i) != 0 || setText(t, k, 3, text) != 0)
        failures++;
      uint32_t v = 0;
      if (getInt(t, k, 2, &v) != 0 || v != id * 1000 + i || textOf(t, k, 3) != text) failures++;
      if (i % 5 == 0 && setInt(t, k, 1, 6) != 0) failures++;  // some rows go again
    }
  };
  auto walker = [&] {
    uint32_t key[SVC_MAX_KEY], next[SVC_MAX_KEY], count = 0, nextCount = 0, v;
    do {
      if (svcRowFirst(t, key, &count) != 0) continue;
      for (;;) {
        int rc = svcRowGet(t, key, count, 2, &v);
        if (rc != 0 && rc != kNoRow) failures++;
        if (svcRowNext(t, key, count, next, &nextCount) != 0) break;
        if (!std::lexicographical_compare(key, key + count, next, next + nextCount)) failures++;
        std::copy(next, next + nextCount, key);
        count = nextCount;
      }
    } while (writing.load());
  };
  auto saver = [&] {
    do {
      if (svcStoreSave(dir.file("start.cfg").c_str()) != 0) failures++;
    } while (writing.load());
  };

  std::vector<std::thread> readers, writers;
  for (int i = 0; i < 3; ++i) readers.emplace_back(walker);
  readers.emplace_back(saver);
  for (uint32_t id = 0; id < kWriters; ++id) writers.emplace_back(writer, id);
  for (auto& w : writers) w.join();
  writing = false;
  for (auto& r : readers) r.join();

  EXPECT_EQ(failures.load(), 0);
  const std::vector<Key> rows = walk(t);
  EXPECT_EQ(rows.size(), kWriters * (kRows - kRows / 5));
  EXPECT_EQ(svcRowCount(t), rows.size());
  ASSERT_EQ(svcStoreSave(dir.file("start.cfg").c_str()), 0);
  svcStoreClear();
  ASSERT_EQ(svcStoreLoad(dir.file("start.cfg").c_str()), 0);
  EXPECT_EQ(walk(t), rows);
}

}  // namespace
