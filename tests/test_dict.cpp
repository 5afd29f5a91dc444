// The dictionary: bucket counts, hashing, registration and its failures,
// removal, lookups, the enterprise OID rewrite and start-up.
#include "test_support.h"
#include "platform/tgp.h"

#include <deque>
#include <memory>

using namespace mdbtest;

namespace {

uint32_t nopHandler(uint32_t, MdbCrb*) { return 0; }

// A module built at run time: `count` objects named prefix:o<i>.
struct BuiltModule {
  std::deque<std::string> names;
  std::vector<MdbObjectDesc> objects;
  std::vector<MdbObjectBinding> bindings;
  MdbEntryDesc entry = makeEntry({1, 3, 6, 1, 4, 1, 47391, 2, 3}, 0, 1);

  BuiltModule(const std::string& prefix, uint32_t count, uint32_t first = 0) {
    objects.reserve(count);
    for (uint32_t i = 0; i < count; i++) {
      names.push_back(prefix + ":o" + std::to_string(first + i));
      objects.push_back(makeObject(static_cast<uint16_t>(i), static_cast<uint16_t>(i + 1), MDB_ACCESS_RW,
                                   nopHandler, names.back().c_str()));
    }
    for (auto& o : objects) bindings.push_back({&entry, &o});
    bindings.push_back({nullptr, nullptr});
  }
  const MdbObjectBinding* list() const { return bindings.data(); }
};

using Dict = DictTest;

TEST_F(Dict, BucketCountsAndHash) {
  EXPECT_EQ(7u, mdbNumberBuckets(0));
  EXPECT_EQ(101u, mdbNumberBuckets(300));
  EXPECT_EQ(7001u, mdbNumberBuckets(20480));
  EXPECT_EQ(10007u, mdbNumberBuckets(30021));
  EXPECT_EQ(10007u, mdbNumberBuckets(196608));
  EXPECT_EQ(10007u, mdbNumberBuckets(0x2FFFF));
  EXPECT_EQ(13u, mdbNumberBuckets(21));  // a third of 21 is 7: the next prime above it

  // Sum of the bytes as unsigned, plus the seed, plus the length.
  struct {
    const char* name;
  } key{"ab"}, high{"\xff"};
  EXPECT_EQ((71u + 97 + 98 + 2) % 101, mdbHashFunction(&key, 101, 71));
  EXPECT_EQ((71u + 255 + 1) % 7, mdbHashFunction(&high, 7, 71));
  struct {
    const char* name;
  } other{"ab"};
  EXPECT_EQ(0, mdbHashCompare(&key, &other, 0));
  EXPECT_GT(0, mdbHashCompare(&key, &high, 0));
}

TEST_F(Dict, RegistrationCountsAndDuplicates) {
  BuiltModule first("alpha", 3);
  ASSERT_EQ(0, mdbModuleRegisterEx("alpha", 145, first.list()));
  EXPECT_EQ(1u, stat(MDB_STAT_modTotalCount));
  EXPECT_EQ(3u, stat(MDB_STAT_objTotalCount));
  EXPECT_EQ(3u, stat(MDB_STAT_objNeedsAdding));
  EXPECT_EQ(0, mdbModuleSearch("alpha"));
  EXPECT_EQ(-1, mdbModuleSearch("beta"));
  EXPECT_EQ(-1, mdbModuleSearch(nullptr));

  MdbModuleDesc out{};
  const char* asked = "alpha";
  ASSERT_EQ(0, mdbModuleGet(asked, &out));
  EXPECT_EQ(asked, out.name);  // the pointer passed in
  EXPECT_EQ(first.list(), out.list);
  EXPECT_EQ(145u, out.registrationId);
  EXPECT_EQ(-1, mdbModuleGet(nullptr, &out));
  EXPECT_EQ(-1, mdbModuleGet("alpha", nullptr));
  EXPECT_EQ(-1, mdbModuleGet("beta", &out));

  // A known module name: silent success, none of the new objects added.
  BuiltModule again("fresh", 2);
  EXPECT_EQ(0, mdbModuleRegister("alpha", again.list()));
  EXPECT_EQ(1u, stat(MDB_STAT_modAlreadyExists));
  EXPECT_EQ(nullptr, mdbObjectLookup("fresh:o0"));

  // An object name owned by another module stops that module at that
  // binding: the objects before it stay, the later ones are missing.
  BuiltModule clash("beta", 4);
  clash.objects[2].name = "alpha:o1";
  EXPECT_EQ(-1, mdbModuleRegister("beta", clash.list()));
  EXPECT_EQ(1u, stat(MDB_STAT_objAlreadyExists));
  EXPECT_EQ(0, mdbModuleSearch("beta"));
  ASSERT_NE(nullptr, mdbObjectLookup("beta:o1"));
  EXPECT_EQ(nullptr, mdbObjectLookup("beta:o3"));
  const MdbObjectNode* owner = mdbObjectLookup("alpha:o1");
  ASSERT_NE(nullptr, owner);
  EXPECT_STREQ("alpha", owner->module->name);
  EXPECT_EQ(&first.bindings[1], owner->list);
  EXPECT_EQ(5u, mdbObjectCount());
  EXPECT_EQ(2u, mdbModuleCount());
  EXPECT_EQ(3u, stat(MDB_STAT_modRegisterCalled));
}

TEST_F(Dict, ModuleTableIsBoundedAtItsCapacity) {
  std::deque<std::string> names;
  const MdbObjectBinding empty[] = {{nullptr, nullptr}};
  for (uint32_t i = 0; i < MDB_MAX_MODULES; i++) {
    names.push_back("m" + std::to_string(i));
    ASSERT_EQ(0, mdbModuleRegister(names.back().c_str(), empty));
  }
  EXPECT_EQ(-1, mdbModuleRegister("one-too-many", empty));
  EXPECT_EQ(1u, stat(MDB_STAT_modTableFull));
  EXPECT_EQ(300u, mdbModuleCount());
  EXPECT_EQ(0, mdbModuleSearch("m299"));
}

TEST_F(Dict, ObjectTableIsBoundedAtItsCapacity) {
  BuiltModule big("big", MDB_MAX_OBJECTS + 1);
  EXPECT_EQ(-1, mdbModuleRegister("big", big.list()));
  EXPECT_EQ(1u, stat(MDB_STAT_objTableFull));
  EXPECT_EQ(static_cast<uint32_t>(MDB_MAX_OBJECTS), mdbObjectCount());
  EXPECT_NE(nullptr, mdbObjectLookup("big:o20479"));
  EXPECT_EQ(nullptr, mdbObjectLookup("big:o20480"));
  // Every row can be found again: the buckets hold what was added.
  for (uint32_t i = 0; i < MDB_MAX_OBJECTS; i += 997)
    EXPECT_NE(nullptr, mdbObjectLookup(("big:o" + std::to_string(i)).c_str())) << i;
}

TEST_F(Dict, DeRegisterRemovesTheModuleAndItsObjects) {
  BuiltModule a("gamma", 3);
  ASSERT_EQ(0, mdbModuleRegister("gamma", a.list()));
  EXPECT_EQ(0, mdbModuleDeRegister("unknown"));
  EXPECT_EQ(0, mdbModuleDeRegister("gamma"));
  EXPECT_EQ(-1, mdbModuleSearch("gamma"));
  EXPECT_EQ(nullptr, mdbObjectLookup("gamma:o0"));
  EXPECT_EQ(0u, mdbObjectCount());
  EXPECT_EQ(2u, stat(MDB_STAT_modDeRegisterCalled));
  EXPECT_EQ(1u, stat(MDB_STAT_modDeRegisterFound));
  // The rows went back to the pools: the module registers again.
  ASSERT_EQ(0, mdbModuleRegister("gamma", a.list()));
  EXPECT_EQ(3u, mdbObjectCount());

  // A module whose objects are partly missing fails its removal at the first gap.
  BuiltModule b("delta", 3);
  b.objects[1].name = "gamma:o0";
  EXPECT_EQ(-1, mdbModuleRegister("delta", b.list()));
  EXPECT_EQ(-1, mdbModuleDeRegister("delta"));
}

TEST_F(Dict, EnterpriseOidRewrite) {
  MdbEntryDesc priv = makeEntry({1, 3, 6, 1, 4, 1, 47391, 2, 3}, 0, 1);
  MdbEntryDesc other = makeEntry({1, 3, 6, 1, 4, 1, 47391, 1, 9}, 0, 1);
  MdbEntryDesc std1 = makeEntry({1, 3, 6, 1, 2, 1, 1}, 0, 1);
  MdbObjectDesc objects[] = {makeObject(0, 1, MDB_ACCESS_RW, nopHandler, "r:a"),
                             makeObject(1, 2, MDB_ACCESS_RW, nopHandler, "r:b"),
                             makeObject(2, 1, MDB_ACCESS_RW, nopHandler, "r:c"),
                             makeObject(3, 1, MDB_ACCESS_RW, nopHandler, "r:d")};
  MdbObjectBinding list[] = {
      {&priv, &objects[0]}, {&priv, &objects[1]}, {&other, &objects[2]}, {&std1, &objects[3]}, {nullptr, nullptr}};
  ASSERT_EQ(0, mdbModuleRegister("r", list));

  // Without the option nothing moves; a sub-OID alone has no effect.
  silOptSet("snmp.enterprisesuboid", "7");
  mdbEnterpriseOidRewrite();
  EXPECT_EQ(47391u, priv.oid[6]);

  silOptClear();
  silOptSet("snmp.enterpriseoid", "12345");
  mdbEnterpriseOidRewrite();
  // Shared by two bindings, rewritten once.
  EXPECT_EQ((std::vector<uint32_t>{1, 3, 6, 1, 4, 1, 12345, 2, 3}), std::vector<uint32_t>(priv.oid, priv.oid + 9));
  EXPECT_EQ(12345u, other.oid[6]);
  EXPECT_EQ((std::vector<uint32_t>{1, 3, 6, 1, 2, 1, 1}), std::vector<uint32_t>(std1.oid, std1.oid + 7));

  // With the sub-OID, only the .2 subtree moves, and it takes the new arc.
  priv.oid[6] = other.oid[6] = 47391;
  silOptSet("snmp.enterprisesuboid", "0x7");  // read with base 0
  mdbEnterpriseOidRewrite();
  EXPECT_EQ((std::vector<uint32_t>{1, 3, 6, 1, 4, 1, 12345, 7, 3}), std::vector<uint32_t>(priv.oid, priv.oid + 9));
  EXPECT_EQ((std::vector<uint32_t>{1, 3, 6, 1, 4, 1, 47391, 1, 9}), std::vector<uint32_t>(other.oid, other.oid + 9));

  // The moved object is found under its new OID.
  uint32_t oid[] = {1, 3, 6, 1, 4, 1, 12345, 7, 3, 2, 0};
  char name[MDB_NAME_MAX];
  uint32_t len, max, type;
  ASSERT_EQ(0, mdbObjNameGet(oid, 11, &len, &max, &type, name));
  EXPECT_STREQ("r:b", name);
}

TEST_F(Dict, StartUpHonoursMdbEnable) {
  mdbDictDestroy();
  silOptSet("mdb.enable", "False");
  EXPECT_EQ(0xFFFFFFFFu, mdbOptInit());
  EXPECT_EQ(nullptr, gMdbInfo.moduleTable);  // nothing built
  EXPECT_EQ(0u, stat(MDB_STAT_mdbInitCalled));

  silOptSet("mdb.enable", "");  // set, but not to a text starting with f
  EXPECT_EQ(0u, mdbOptInit());
  EXPECT_NE(nullptr, gMdbInfo.moduleTable);
  EXPECT_EQ(1u, stat(MDB_STAT_mdbInitCalled));
  std::string shown = captureStdout([] { hashTableShow(gMdbInfo.moduleTable); });
  EXPECT_NE(std::string::npos, shown.find("nBuckets 101 nElements 300"));
  shown = captureStdout([] { hashTableShow(gMdbInfo.objectTable); });
  EXPECT_NE(std::string::npos, shown.find("nBuckets 7001 nElements 20480"));
  uint32_t hw = 0;
  EXPECT_EQ(0, tgpHwilScalarGet(0, 499, &hw));
  EXPECT_EQ(296u, hw);
  EXPECT_EQ(1u, mdbSysStateGet());
  EXPECT_EQ(mdbIoBlock, gMdbInfo.ioBlockHook);
  EXPECT_EQ(0u, gMdbInfo.debugMask);
  EXPECT_STREQ("MDB_VL3.00.00.00", gMdbInfo.version);
}

TEST_F(Dict, CentiSecondsFollowTheClock) {
  silClockSet([]() -> uint64_t { return 0x1234567890ull; });
  EXPECT_EQ(static_cast<uint32_t>(0x1234567890ull / 10), mdbCentiSecsGet());
}

}  // namespace
