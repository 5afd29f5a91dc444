// Accessors and index helpers.
#include "test_support.h"

using namespace mdbtest;

namespace {

MdbCrb crbWith(void* buffer, uint32_t length, uint32_t* index = nullptr, uint32_t count = 0) {
  MdbCrb crb{};
  crb.pValueBuf = buffer;
  crb.valueLen = length;
  crb.pIndex = index;
  crb.indexSubIdCount = count;
  return crb;
}

TEST(Access, FixedSizeValuesAndTheirLengths) {
  alignas(8) uint8_t buffer[16] = {0};
  MdbCrb crb = crbWith(buffer + 1, 0);  // stores must not care about alignment
  ulongSet(&crb, 0xDEADBEEF);
  EXPECT_EQ(4u, crb.valueLen);
  EXPECT_EQ(0xDEADBEEFu, ulongGet(&crb));
  slongSet(&crb, -7);
  EXPECT_EQ(-7, slongGet(&crb));
  ushortSet(&crb, 0xBEEF);
  EXPECT_EQ(2u, crb.valueLen);
  EXPECT_EQ(0xBEEF, ushortGet(&crb));
  ucharSet(&crb, 0x5A);
  EXPECT_EQ(1u, crb.valueLen);
  EXPECT_EQ(0x5A, ucharGet(&crb));

  // 64-bit values: two words, high first.
  quadSet(&crb, 0x0102030405060708ull);
  EXPECT_EQ(8u, crb.valueLen);
  uint32_t words[2];
  memcpy(words, buffer + 1, sizeof words);
  EXPECT_EQ(0x01020304u, words[0]);
  EXPECT_EQ(0x05060708u, words[1]);
  ulonglongSet(&crb, 0xA, 0xB);
  EXPECT_EQ(0x0000000A0000000Bull, quadGet(&crb));

  // A request without a buffer (mdbRemove) reads 0 and takes no store.
  MdbCrb none = crbWith(nullptr, 0);
  EXPECT_EQ(0u, ulongGet(&none));
  ulongSet(&none, 5);
  EXPECT_EQ(4u, none.valueLen);

  // The pointer family keeps the value in the pointer field itself.
  MdbCrb p = crbWith(nullptr, 0);
  pUlongSet(&p, 1234);
  EXPECT_EQ(1234u, reinterpret_cast<uintptr_t>(p.pValueBuf));
  EXPECT_EQ(1234u, pUlongGet(&p));
  EXPECT_EQ(4u, p.valueLen);
  pUcharSet(&p, 9);
  EXPECT_EQ(9, pUcharGet(&p));
}

TEST(Access, OctetsAndOidsRespectTheCapacity) {
  char buffer[16];
  memset(buffer, '#', sizeof buffer);
  MdbCrb crb = crbWith(buffer, 4);
  octetSet(&crb, "0123456789", 10);
  EXPECT_EQ(4u, crb.valueLen);
  EXPECT_EQ(0, memcmp(buffer, "0123#", 5));
  crb.valueLen = 0;
  octetSet(&crb, "0123456789", 10);
  EXPECT_EQ(0u, crb.valueLen);
  crb.valueLen = 16;
  octetSet(&crb, "ab", 2);
  EXPECT_EQ(2u, crb.valueLen);
  EXPECT_EQ(reinterpret_cast<uint8_t*>(buffer), octetGet(&crb));

  uint32_t arcs[4];
  MdbCrb o = crbWith(arcs, sizeof arcs);
  const uint32_t oid[] = {1, 3, 6, 1, 2, 1};
  oidSet(&o, oid, 6);  // six arcs do not fit in four
  EXPECT_EQ(16u, o.valueLen);
  EXPECT_EQ(6u, oidGet(&o)[2]);
  o.valueLen = sizeof arcs;
  oidSet(&o, oid, 2);
  EXPECT_EQ(8u, o.valueLen);
}

TEST(Access, ScalarIndexWalk) {
  uint32_t index[8] = {0};
  MdbCrb crb = crbWith(nullptr, 0, index, 0);
  EXPECT_EQ(0, mdbScalarValidate(MDB_GET_NEXT, &crb));
  EXPECT_EQ(0u, mdbNextScalarIndex(&crb));
  EXPECT_EQ(1u, crb.indexSubIdCount);
  EXPECT_EQ(0u, index[0]);
  // The second step of a walk ends it.
  EXPECT_EQ(-1, mdbScalarValidate(MDB_GET_NEXT, &crb));
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, mdbNextScalarIndex(&crb));
  EXPECT_EQ(0, mdbScalarValidate(MDB_GET, &crb));
  index[0] = 1;
  EXPECT_EQ(-1, mdbScalarValidate(MDB_GET, &crb));
  crb.indexSubIdCount = 2;
  index[0] = 0;
  EXPECT_EQ(-1, mdbScalarValidate(MDB_COMMIT, &crb));
}

TEST(Access, TableIndexSteps) {
  uint32_t index[8] = {0};
  MdbCrb crb = crbWith(nullptr, 0, index, 0);
  for (uint32_t expected : {1u, 2u, 3u}) {
    EXPECT_EQ(0u, mdbNextSimpleIndex(&crb));
    EXPECT_EQ(expected, index[0]);
  }

  auto address = [&](std::initializer_list<uint32_t> from, uint32_t count) {
    std::copy(from.begin(), from.end(), index);
    crb.indexSubIdCount = count;
    mdbNextAddressIndex(&crb);
    return std::vector<uint32_t>(index, index + crb.indexSubIdCount);
  };
  EXPECT_EQ((std::vector<uint32_t>{0, 0, 0, 1}), address({9, 9, 9, 9}, 0));
  EXPECT_EQ((std::vector<uint32_t>{1, 2, 4, 0}), address({1, 2, 3, 255}, 4));
  EXPECT_EQ((std::vector<uint32_t>{0, 0, 1, 0}), address({0, 0, 0, 255}, 4));
  EXPECT_EQ((std::vector<uint32_t>{0, 0, 0, 0}), address({255, 255, 255, 255}, 4));
  EXPECT_EQ((std::vector<uint32_t>{10, 0, 0, 2}), address({10, 0, 0, 1}, 7));  // a wrong count is overwritten

  auto mac = [&](std::initializer_list<uint32_t> from, uint32_t count) {
    std::copy(from.begin(), from.end(), index);
    crb.indexSubIdCount = count;
    mdbNextMACIndex(&crb);
    return std::vector<uint32_t>(index, index + crb.indexSubIdCount);
  };
  EXPECT_EQ((std::vector<uint32_t>{0, 0, 0, 0, 0, 1}), mac({5, 5, 5, 5, 5, 5}, 0));
  EXPECT_EQ((std::vector<uint32_t>{0, 1, 0, 0, 0, 0}), mac({0, 0, 255, 255, 255, 255}, 6));
  EXPECT_EQ((std::vector<uint32_t>{0, 14, 94, 1, 2, 4}), mac({0, 14, 94, 1, 2, 3}, 6));

  const uint32_t a[] = {1, 2, 3}, b[] = {1, 2, 4};
  EXPECT_EQ(1, mdbIndexesAreEqual(a, b, 2));
  EXPECT_EQ(0, mdbIndexesAreEqual(a, b, 3));
}

TEST(Access, OidEqualityAndOrder) {
  const uint32_t a[] = {1, 3}, b[] = {1, 3, 6}, c[] = {1, 4}, big[] = {1, 0x80000000u};
  EXPECT_EQ(0, oidcmp(2, a, 2, nullptr));
  EXPECT_EQ(1, oidcmp(2, a, 2, a));
  EXPECT_EQ(0, oidcmp(2, a, 3, b));
  EXPECT_EQ(-1, oidcmp2(2, a, 3, b));
  EXPECT_EQ(1, oidcmp2(3, b, 2, a));
  EXPECT_EQ(1, oidcmp2(2, c, 3, b));
  EXPECT_EQ(0, oidcmp2(0, a, 0, b));
  EXPECT_EQ(1, oidcmp2(2, big, 2, c));  // arcs compare as unsigned numbers
}

}  // namespace
