// The verbs (flags, options, caller tag) and the object queries.
#include "test_support.h"

using namespace mdbtest;

namespace {

struct Seen {
  uint32_t kind;
  uint32_t flags;
  bool nullBuffer;
};
std::vector<Seen> gSeen;
uint32_t gStored = 0;

uint32_t verbHandler(uint32_t kind, MdbCrb* crb) {
  gSeen.push_back({kind, crb->flags, crb->pValueBuf == nullptr});
  switch (kind) {
    case MDB_GET_NEXT:
      if (crb->indexSubIdCount != 0 && crb->pIndex[0] >= 2) return mdbErrorNoNextInstance();
      crb->pIndex[0] = crb->indexSubIdCount == 0 ? 1 : crb->pIndex[0] + 1;
      crb->indexSubIdCount = 1;
      ulongSet(crb, crb->pIndex[0] * 10);
      return 0;
    case MDB_GET:
      ulongSet(crb, gStored);
      return 0;
    case MDB_VALIDATE:
      if (crb->pValueBuf != nullptr && ulongGet(crb) > 100) return mdbErrorInvalidRange();
      crb->flags |= MDB_FLAG_VALIDATED;
      return 0;
    default:
      if (crb->pValueBuf != nullptr) gStored = ulongGet(crb);
      return 0;
  }
}

MdbEntryDesc gScalar = makeEntry({1, 3, 6, 1, 4, 1, 47391, 2, 50}, 0, 1);
MdbEntryDesc gRows = makeEntry({1, 3, 6, 1, 4, 1, 47391, 2, 50, 9, 1}, 2, 7, {"verb:ifIndex", "verb:name"});
MdbObjectDesc gObjects[] = {
    makeObject(0, 1, MDB_ACCESS_RW, verbHandler, "verb:value"),
    makeObject(1, 2, MDB_ACCESS_NA, verbHandler, "verb:hidden"),
    makeObject(2, 3, MDB_ACCESS_RW, verbHandler, "verb:alias", 0, 0, "verb:rowValue"),
    makeObject(3, 1, MDB_ACCESS_RO_INDEX, verbHandler, "verb:ifIndex"),
    makeObject(4, 3, MDB_ACCESS_RC, verbHandler, "verb:rowValue", -5, 99, nullptr, MDB_TYPE_GAUGE),
    makeObject(5, 4, MDB_ACCESS_NA, verbHandler, "verb:rowHidden"),
};
MdbObjectBinding gBindings[] = {
    {&gScalar, &gObjects[0]}, {&gScalar, &gObjects[1]}, {&gScalar, &gObjects[2]},
    {&gRows, &gObjects[3]},   {&gRows, &gObjects[4]},   {&gRows, &gObjects[5]},
    {nullptr, nullptr},
};

class Verbs : public DictTest {
 protected:
  void SetUp() override {
    DictTest::SetUp();
    ASSERT_EQ(0, mdbModuleRegister("verb", gBindings));
    gSeen.clear();
    gStored = 0;
  }
  uint32_t index[MDB_MAX_INDEX] = {0};
};

TEST_F(Verbs, SetApiOptionBits) {
  uint32_t v = 42;
  // Without option 1 the call only validates.
  EXPECT_EQ(0u, mdbSetApi("verb:value", index, 1, &v, 4, nullptr, 0));
  ASSERT_EQ(1u, gSeen.size());
  EXPECT_EQ(5u, gSeen[0].kind);
  EXPECT_EQ(0u, gStored);

  // A full write: validation, then validation and commit of the set pass.
  gSeen.clear();
  EXPECT_EQ(0u, mdbSetApi("verb:value", index, 1, &v, 4, nullptr, 0x01 | 0x02 | 0x08 | 0x40));
  ASSERT_EQ(3u, gSeen.size());
  EXPECT_EQ(42u, gStored);
  EXPECT_EQ(MDB_FLAG_TSC | MDB_FLAG_CALLER_A, gSeen[0].flags);
  // The set pass drops 0x1000, adds 0x2000 and the logged-write bit.
  EXPECT_EQ(MDB_FLAG_IMMEDIATE | MDB_FLAG_LOG_A | MDB_FLAG_CALLER_A, gSeen[1].flags);
  EXPECT_EQ(6u, gSeen[2].kind);
  EXPECT_NE(0u, gSeen[2].flags & MDB_FLAG_VALIDATED);

  gSeen.clear();
  EXPECT_EQ(0u, mdbSetApi("verb:value", index, 1, &v, 4, nullptr, 0x01 | 0x10 | 0x20 | 0x80 | 0x04));
  EXPECT_EQ(MDB_FLAG_CALLER_B, gSeen[0].flags);
  EXPECT_EQ(MDB_FLAG_IMMEDIATE | MDB_FLAG_LOG_B | MDB_FLAG_LOG_C | MDB_FLAG_CALLER_B, gSeen[1].flags);

  // A bad value fails in the first validation and never reaches the set pass.
  gSeen.clear();
  v = 500;
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, mdbSetApi("verb:value", index, 1, &v, 4, nullptr, 0x01));
  EXPECT_EQ(1u, gSeen.size());
  EXPECT_EQ(42u, gStored);
  EXPECT_EQ(4u, stat(MDB_STAT_mdbSetCalled));
}

TEST_F(Verbs, StartFlagsAndTheSnmpTag) {
  uint32_t v = 1, len = 4, count = 0;
  auto lastFlags = [] { return gSeen.back().flags; };
  mdbGetApi("verb:value", index, 1, &v, &len, nullptr);
  EXPECT_EQ(0x30u, lastFlags());
  mdbGetApi("verb:value", index, 1, &v, &len, "snmp");
  EXPECT_EQ(0x20030u, lastFlags());
  mdbGetApi("verb:value", index, 1, &v, &len, "snmpd");  // four bytes are compared
  EXPECT_EQ(0x20030u, lastFlags());
  mdbGetApi("verb:value", index, 1, &v, &len, "snm");
  EXPECT_EQ(0x30u, lastFlags());
  mdbGetApi("verb:value", index, 1, &v, &len, "SNMP");
  EXPECT_EQ(0x30u, lastFlags());
  mdbGetNext("verb:value", index, MDB_MAX_INDEX, &count, &v, &len, "snmp");
  EXPECT_EQ(0x20030u, lastFlags());
  mdbNvmGet("verb:value", index, 1, &v, &len);
  EXPECT_EQ(0x130u, lastFlags());
  mdbSetApi("verb:value", index, 1, &v, 4, "snmp", 0);
  EXPECT_EQ(0x20000u, lastFlags());
  mdbCommit("verb:value", index, 1, &v, 4, 0xFF, "snmpd");
  EXPECT_EQ(0x20030u, lastFlags());
  mdbValidate("verb:value", index, 1, &v, 4, 0xFF);
  EXPECT_EQ(0x30u, lastFlags() & ~MDB_FLAG_VALIDATED);
  mdbNvmSet("verb:value", index, 1, &v, 4);
  EXPECT_EQ(4u, gSeen.back().kind);
  EXPECT_EQ(0x30u, lastFlags());
  mdbForceSet("verb:value", index, 1, &v, 4);
  EXPECT_EQ(0x230u, gSeen[gSeen.size() - 2].flags);

  // Remove passes no value: the handler sees kinds 5 and 6 with a null buffer.
  gSeen.clear();
  EXPECT_EQ(0u, mdbRemove("verb:value", index, 1));
  ASSERT_EQ(2u, gSeen.size());
  EXPECT_TRUE(gSeen[0].nullBuffer && gSeen[1].nullBuffer);
  EXPECT_EQ(0xB0u, gSeen[0].flags);

  EXPECT_EQ(5u, stat(MDB_STAT_mdbGetCalled));
  EXPECT_EQ(1u, stat(MDB_STAT_mdbNvmGetCalled));
  EXPECT_EQ(1u, stat(MDB_STAT_mdbGetNextCalled));
  EXPECT_EQ(2u, stat(MDB_STAT_mdbSetCalled));  // mdbSetApi and mdbForceSet
  EXPECT_EQ(1u, stat(MDB_STAT_mdbCommitCalled));
  EXPECT_EQ(1u, stat(MDB_STAT_mdbValidateCalled));
  EXPECT_EQ(1u, stat(MDB_STAT_mdbSetNvmCalled));
  EXPECT_EQ(1u, stat(MDB_STAT_mdbRemoveCalled));
}

TEST_F(Verbs, GetNextWalksFromAnEmptyIndex) {
  uint32_t count = 0, value = 0, len = 4;
  std::vector<uint32_t> seen;
  uint32_t rc;
  while ((rc = mdbGetNext("verb:value", index, MDB_MAX_INDEX, &count, &value, &len, nullptr)) == 0) {
    seen.push_back(index[0]);
    seen.push_back(value);
  }
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, rc);
  EXPECT_EQ((std::vector<uint32_t>{1, 10, 2, 20}), seen);
  EXPECT_EQ(1u, count);

  // mdbScalarIntGet reads through mdbGetApi with index .0.
  gStored = 33;
  uint32_t out = 99;
  EXPECT_EQ(0u, mdbScalarIntGet("verb:value", &out));
  EXPECT_EQ(33u, out);
  EXPECT_EQ(MDB_ERR_NO_SUCH_OBJECT, mdbScalarIntGet("verb:none", &out));
  EXPECT_EQ(0u, out);
}

TEST_F(Verbs, ObjInfoGetFillsOnlyTheMaskedFields) {
  MdbObjInfo info;
  memset(&info, 0xAB, sizeof info);
  EXPECT_EQ(0u, mdbObjInfoGet("verb:rowValue", MDB_INFO_SHOW, &info));
  EXPECT_EQ(3u, info.subId);
  EXPECT_EQ(MDB_TYPE_GAUGE, info.type);
  EXPECT_EQ(12u, info.oidLen);
  EXPECT_EQ(7u, info.indexCountMax);
  EXPECT_EQ(47391u, info.oid[6]);
  EXPECT_EQ(1u, info.oid[10]);
  EXPECT_EQ(0xABABABABu, info.oid[11]);  // beyond oidLen - 1 arcs: left alone
  EXPECT_STREQ("verb:ifIndex", info.indexNames[0]);
  EXPECT_STREQ("verb:name", info.indexNames[1]);
  EXPECT_EQ(0xABABABABu, info.localId);
  EXPECT_EQ(0xABABABABu, info.size);
  EXPECT_EQ(0xABABABABu, info.indexCountMin);
  EXPECT_EQ(0xABABABABu, info.reserved);

  memset(&info, 0, sizeof info);
  EXPECT_EQ(0u, mdbObjInfoGet("verb:alias", 0x3FF, &info));  // the alternate's descriptor
  EXPECT_EQ(4u, info.localId);
  EXPECT_EQ(-5, info.min);
  EXPECT_EQ(99, info.max);
  EXPECT_EQ(2u, info.indexCountMin);
  EXPECT_EQ(0u, info.reserved);

  EXPECT_EQ(MDB_ERR_GEN_ERROR, mdbObjInfoGet("verb:none", 0x3FF, &info));
  EXPECT_EQ(MDB_ERR_GEN_ERROR, mdbObjInfoGet(nullptr, 0x3FF, &info));
  EXPECT_EQ(4u, stat(MDB_STAT_mdbGetInfoCalled));
}

TEST_F(Verbs, ObjectNameNextGetWalksTheModule) {
  char name[64];
  // Skips not-accessible objects and crosses from one table to the next.
  EXPECT_EQ(0u, mdbObjectNameNextGet("verb:value", name, sizeof name));
  EXPECT_STREQ("verb:alias", name);
  // An alternate walks from itself, not from what it stands for.
  EXPECT_EQ(0u, mdbObjectNameNextGet("verb:alias", name, sizeof name));
  EXPECT_STREQ("verb:ifIndex", name);
  EXPECT_EQ(MDB_ERR_NO_SUCH_OBJECT, mdbObjectNameNextGet("verb:rowValue", name, sizeof name));
  EXPECT_EQ(MDB_ERR_NO_SUCH_OBJECT, mdbObjectNameNextGet("verb:none", name, sizeof name));
  EXPECT_EQ(MDB_ERR_GEN_ERROR, mdbObjectNameNextGet(nullptr, name, sizeof name));
  EXPECT_EQ(MDB_ERR_GEN_ERROR, mdbObjectNameNextGet("verb:value", nullptr, 10));
  char tiny[5];
  EXPECT_EQ(0u, mdbObjectNameNextGet("verb:value", tiny, sizeof tiny));
  EXPECT_STREQ("verb", tiny);
}

TEST_F(Verbs, ObjNameGetFindsAnObjectByOid) {
  uint32_t oid[20] = {1, 3, 6, 1, 4, 1, 47391, 2, 50, 9, 1, 3, 9, 9};
  uint32_t oidLen = 0, indexMax = 0, type = 0;
  char name[MDB_NAME_MAX];
  EXPECT_EQ(0, mdbObjNameGet(oid, 14, &oidLen, &indexMax, &type, name));  // instance arcs ignored
  EXPECT_STREQ("verb:rowValue", name);
  EXPECT_EQ(12u, oidLen);
  EXPECT_EQ(7u, indexMax);
  EXPECT_EQ(MDB_TYPE_GAUGE, type);
  EXPECT_EQ(-1, mdbObjNameGet(oid, 11, &oidLen, &indexMax, &type, name));  // shorter than the object
  EXPECT_EQ(-1, mdbObjNameGet(oid, 6, &oidLen, &indexMax, &type, name));
  oid[11] = 77;
  EXPECT_EQ(-1, mdbObjNameGet(oid, 14, &oidLen, &indexMax, &type, name));
  uint32_t scalar[] = {1, 3, 6, 1, 4, 1, 47391, 2, 50, 1, 0};
  EXPECT_EQ(0, mdbObjNameGet(scalar, 11, &oidLen, &indexMax, &type, name));
  EXPECT_STREQ("verb:value", name);
}

TEST_F(Verbs, SystemScalarsOfTheDatabase) {
  uint32_t state = 0;
  EXPECT_EQ(-1, mdbScalarGetApi(0, 3, &state));
  EXPECT_EQ(0, mdbScalarSetApi(0, 3, &state));
  EXPECT_EQ(0, mdbScalarGetApi(0, 2, nullptr));
  EXPECT_EQ(-1, mdbScalarSetApi(0, 5, &state));
  state = 7;
  EXPECT_EQ(0, mdbScalarSetApi(0, 4, &state));
  EXPECT_EQ(0, mdbScalarGetApi(0, 4, &state));
  EXPECT_EQ(3u, state);
  EXPECT_EQ(0, mdbSysStateSet(6));
  EXPECT_EQ(0, mdbScalarGetApi(0, 4, &state));
  EXPECT_EQ(2u, state);
  state = 1;
  EXPECT_EQ(0, mdbScalarSyncApi(0, 4, &state));
  EXPECT_EQ(1u, mdbSysStateGet());

  uint8_t text[64];
  MdbOctetValue holder{text, sizeof text};
  EXPECT_EQ(0, mdbScalarGetApi(0, 5, &holder));
  EXPECT_EQ(std::string("MDB_VL3.00.00.00"), std::string(reinterpret_cast<char*>(text), holder.length));
  holder.length = 3;
  EXPECT_EQ(0, mdbScalarGetApi(0, 5, &holder));
  EXPECT_EQ(3u, holder.length);
  EXPECT_EQ(-1, mdbScalarGetApi(0, 5, nullptr));
  MdbOctetValue empty{nullptr, 10};
  EXPECT_EQ(-1, mdbScalarGetApi(0, 5, &empty));

  // The commit guard: state 2 and the "ospfv2:" family only.
  mdbSysStateSet(2);
  EXPECT_EQ(1u, mdbIoBlock(MDB_COMMIT, "ospfv2:area", nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(0u, mdbIoBlock(MDB_COMMIT, "ospfv3:area", nullptr, nullptr, nullptr, nullptr));
  mdbSysStateSet(1);
  EXPECT_EQ(0u, mdbIoBlock(MDB_COMMIT, "ospfv2:area", nullptr, nullptr, nullptr, nullptr));
}

}  // namespace
