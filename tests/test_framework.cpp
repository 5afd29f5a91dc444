// The module framework: index codecs, the Next and Validate rules, the
// generic handler's checks, and registration's row checks, on test tables
// over the substitute store.
#include "test_support.h"
#include "framework/fw.h"
#include "services/svc_binding.h"
#include "wide_key.h"

#include <cstddef>

using namespace mdbtest;

namespace {

SVC_DECLARE_TABLE(fwtWide)
SVC_DEFINE_TABLE(fwtWide)
SVC_DECLARE_TABLE(fwtPair)
SVC_DEFINE_TABLE(fwtPair)
SVC_DECLARE_TABLE(fwtAny)
SVC_DEFINE_TABLE(fwtAny)
SVC_DECLARE_SCALAR(fwtScalar)
SVC_DEFINE_SCALAR(fwtScalar)

constexpr FwEntry kWide =
    wideIndex(fwTable("fwtWide", {1, 3, 6, 1, 4, 1, 47391, 2, 8000, 1, 1}, FW_TABLE_OPS(fwtWide)));

struct PairKey {
  uint32_t a;
  uint32_t b;
};
constexpr FwEntry kPair = fwTable("fwtPair", {1, 3, 6, 1, 4, 1, 47391, 2, 8000, 2, 1}, FW_TABLE_OPS(fwtPair))
                              .key(sizeof(PairKey))
                              .index(fwIdxInt("fwt:a", offsetof(PairKey, a)))
                              .index(fwIdxInt("fwt:b", offsetof(PairKey, b)))
                              .validateFirstBelow(100);
constexpr FwEntry kAny = fwTable("fwtAny", {1, 3, 6, 1, 4, 1, 47391, 2, 8000, 3, 1}, FW_TABLE_OPS(fwtAny))
                             .key(sizeof(PairKey))
                             .index(fwIdxInt("fwt:anyA", offsetof(PairKey, a)))
                             .index(fwIdxInt("fwt:anyB", offsetof(PairKey, b)))
                             .anyIndex()
                             .fail(FW_FAIL_GENERIC);
constexpr FwEntry kEmpty = fwTable("fwtEmpty", {1, 3, 6, 1, 4, 1, 47391, 2, 8000, 4, 1}, FwTableOps{})
                               .intIndex("fwt:emptyIndex")
                               .emptyTable();
constexpr FwEntry kScalar = fwScalars("fwtScalar", {1, 3, 6, 1, 4, 1, 47391, 2, 8000, 5}, FW_SCALAR_OPS(fwtScalar))
                                .buffer(8);

constexpr FwObject kObjects[] = {
    fwObject(&kWide, 0, 1, "fwt:number").integer().ro().indexOf(0),
    fwObject(&kWide, 1, 2, "fwt:name").octets(8).ro().indexOf(5),
    fwObject(&kWide, 2, 3, "fwt:wideValue").integer().attr(1),
    fwObject(&kPair, 3, 1, "fwt:pairValue").gauge().attr(1).range(10, 20),
    fwObject(&kPair, 4, 2, "fwt:pairStatus").rowStatus().rc().attr(2),
    fwObject(&kPair, 5, 3, "fwt:pairText").octets(4).attr(3).maxLength(4),
    fwObject(&kPair, 6, 4, "fwt:pairSigned").integer().attr(4).signedRange(-5, 5).lengthErrors(),
    fwObject(&kAny, 7, 1, "fwt:anyValue").integer().attr(1),
    fwObject(&kEmpty, 8, 1, "fwt:emptyValue").integer().noService(),
    fwObject(&kScalar, 9, 1, "fwt:scalarText").octets(8).attr(1),
    fwObject(&kScalar, 10, 2, "fwt:unserved").integer(),
    fwObject(&kScalar, 11, 3, "fwt:writeOnly").integer().writeOnly(2),
};
constexpr auto kBindings = fwBindings(kObjects);

class Framework : public DictTest {
 protected:
  void SetUp() override {
    DictTest::SetUp();
    svcStoreClear();
    ASSERT_EQ(0, fwModuleRegister("fwt", 0, kBindings.data()));
  }
  uint32_t get(const char* name, std::vector<uint32_t> index, uint32_t* value) {
    uint32_t length = 4;
    return mdbGetApi(name, index.data(), static_cast<uint32_t>(index.size()), value, &length, nullptr);
  }
  uint32_t set(const char* name, std::vector<uint32_t> index, uint32_t value) {
    return mdbSetApi(name, index.data(), static_cast<uint32_t>(index.size()), &value, 4, nullptr, 1);
  }
};

TEST_F(Framework, CodecRoundTripsEveryColumnKind) {
  WideKey key{};
  key.number = 7;
  key.ip4 = 0xC0A80101;
  for (int i = 0; i < 16; i++) key.ip6[i] = static_cast<uint8_t>(i);
  const uint8_t mac[6] = {0, 0x0e, 0x5e, 1, 2, 3};
  memcpy(key.mac, mac, 6);
  key.small = 0xBEEF;
  memcpy(key.name, "abc", 3);
  key.nameLength = 3;
  memcpy(key.fixed, "xyz", 3);
  key.arcs[0] = 1;
  key.arcs[1] = 3;
  key.arcCount = 2;
  memcpy(key.tail, "tl", 2);
  key.tailLength = 2;

  uint32_t index[64];
  uint32_t n = fwIndexEncode(&kWide, reinterpret_cast<uintptr_t>(&key), index, 64);
  const std::vector<uint32_t> expected = {7,   192, 168, 1,  1,  0,   1,   2,   3,   4,  5,  6,  7,  8,  9,
                                          10,  11,  12,  13, 14, 15,  0,   14,  94,  1,  2,  3,  0xBEEF, 3, 97,
                                          98,  99,  120, 121, 122, 2, 1,   3,   116, 108};
  EXPECT_EQ(expected, std::vector<uint32_t>(index, index + n));
  EXPECT_EQ(0u, fwIndexEncode(&kWide, reinterpret_cast<uintptr_t>(&key), index, 20));  // does not fit

  alignas(8) uint8_t record[FW_MAX_KEY];
  uintptr_t decoded;
  ASSERT_EQ(0, fwIndexDecode(&kWide, index, n, &decoded, record));
  EXPECT_EQ(0, memcmp(&key, record, sizeof key));
  // Where each column starts, behind the variable ones.
  EXPECT_EQ(28, fwIndexColumnAt(&kWide, index, n, 5));
  EXPECT_EQ(35, fwIndexColumnAt(&kWide, index, n, 7));
  EXPECT_EQ(38, fwIndexColumnAt(&kWide, index, n, 8));

  // A string longer than its field, or an index cut short, names no row.
  std::vector<uint32_t> longName(index, index + n);
  longName[28] = 9;
  EXPECT_EQ(-1, fwIndexDecode(&kWide, longName.data(), n, &decoded, record));
  EXPECT_EQ(-1, fwIndexDecode(&kWide, index, 30, &decoded, record));
  index[38] = 200;  // the implied tail longer than 5 characters
  std::vector<uint32_t> longTail(index, index + 38);
  for (int i = 0; i < 6; i++) longTail.push_back('a');
  EXPECT_EQ(-1, fwIndexDecode(&kWide, longTail.data(), static_cast<uint32_t>(longTail.size()), &decoded, record));
  // A single integer is passed by value.
  EXPECT_EQ(1u, fwIndexEncode(&kEmpty, 42, index, 4));
  EXPECT_EQ(42u, index[0]);
  EXPECT_EQ(0, fwIndexDecode(&kEmpty, index, 1, &decoded, nullptr));
  EXPECT_EQ(42u, decoded);
  // The entry's counts come from its columns.
  EXPECT_EQ(9u, static_cast<uint32_t>(kWide.desc.indexCountMin));
  EXPECT_EQ(1u + 4 + 16 + 6 + 1 + 9 + 3 + 5 + 5, static_cast<uint32_t>(kWide.desc.indexCountMax));
  EXPECT_STREQ("fwt:tail", kWide.desc.indexNames[8]);
}

TEST_F(Framework, RowsByStatusAndWalksInIndexOrder) {
  // RowStatus: createAndGo makes a row, destroy removes it; the walk is in OID order.
  for (auto key : std::vector<std::vector<uint32_t>>{{2, 1}, {1, 10}, {1, 2}})
    ASSERT_EQ(0u, set("fwt:pairStatus", key, 4)) << key[0] << "." << key[1];
  EXPECT_EQ(MDB_ERR_INCONSIST_VALUE, set("fwt:pairStatus", {1, 2}, 4));  // exists already
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("fwt:pairStatus", {1, 2}, 7));
  EXPECT_EQ(MDB_ERR_INCONSIST_NAME, set("fwt:pairValue", {3, 3}, 15));  // no such row
  ASSERT_EQ(0u, set("fwt:pairValue", {1, 10}, 15));

  uint32_t index[MDB_MAX_INDEX] = {0}, count = 0, value = 0, length = 4;
  std::vector<std::vector<uint32_t>> seen;
  while (mdbGetNext("fwt:pairStatus", index, MDB_MAX_INDEX, &count, &value, &(length = 4), nullptr) == 0)
    seen.emplace_back(index, index + count);
  EXPECT_EQ((std::vector<std::vector<uint32_t>>{{1, 2}, {1, 10}, {2, 1}}), seen);

  // A column without a value in an existing row, and a missing row: the service's code, unchanged.
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("fwt:pairValue", {1, 2}, &value));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("fwt:pairValue", {9, 9}, &value));
  EXPECT_EQ(0u, get("fwt:pairValue", {1, 10}, &value));
  EXPECT_EQ(15u, value);
  // The Validate rule: the first sub-id below 100.
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("fwt:pairValue", {100, 1}, &value));
  EXPECT_EQ(MDB_ERR_NO_CREATION, mdbValidate("fwt:pairValue", std::vector<uint32_t>{100, 1}.data(), 2, &value, 4, 0));
  EXPECT_EQ(0u, set("fwt:pairStatus", {1, 10}, 6));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("fwt:pairStatus", {1, 10}, &value));

  // Full-index rule: a partial index starts the walk again.
  uint32_t partial[MDB_MAX_INDEX] = {2};
  count = 1;
  ASSERT_EQ(0u, mdbGetNext("fwt:pairStatus", partial, MDB_MAX_INDEX, &count, &value, &(length = 4), nullptr));
  EXPECT_EQ((std::vector<uint32_t>{1, 2}), std::vector<uint32_t>(partial, partial + count));
}

TEST_F(Framework, AnyIndexContinuesFromAPartialKey) {
  SvcServiceId any = svcServiceFind("fwtAny");
  ASSERT_NE(nullptr, any);
  for (auto k : std::vector<std::vector<uint32_t>>{{1, 5}, {2, 0}, {2, 7}, {3, 1}}) {
    uint32_t v = k[0] * 10 + k[1];
    ASSERT_EQ(0, svcRowPut(any, k.data(), 2, 1, &v));
  }
  // {2} with the second sub-id read as it stands (0): the next row is {2, 7}.
  uint32_t index[MDB_MAX_INDEX] = {2, 0};
  uint32_t count = 1, value = 0, length = 4;
  ASSERT_EQ(0u, mdbGetNext("fwt:anyValue", index, MDB_MAX_INDEX, &count, &value, &length, nullptr));
  EXPECT_EQ((std::vector<uint32_t>{2, 7}), std::vector<uint32_t>(index, index + count));
  EXPECT_EQ(27u, value);
  index[1] = 99;  // a stale second sub-id is read too
  count = 1;
  ASSERT_EQ(0u, mdbGetNext("fwt:anyValue", index, MDB_MAX_INDEX, &count, &value, &length, nullptr));
  EXPECT_EQ((std::vector<uint32_t>{3, 1}), std::vector<uint32_t>(index, index + count));
  // This entry turns service failures into genError.
  EXPECT_EQ(MDB_ERR_GEN_ERROR, get("fwt:anyValue", {9, 9}, &value));
  // An empty table ends a walk at once, without a service.
  count = 0;
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE,
            mdbGetNext("fwt:emptyValue", index, MDB_MAX_INDEX, &count, &value, &length, nullptr));
}

TEST_F(Framework, HandlerLimitsRolesAndIndexColumns) {
  ASSERT_EQ(0u, set("fwt:pairStatus", {1, 1}, 5));  // createAndWait
  // Unsigned range: 0xFFFFFFFF is far above, not below.
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("fwt:pairValue", {1, 1}, 9));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("fwt:pairValue", {1, 1}, 21));
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, set("fwt:pairValue", {1, 1}, 0xFFFFFFFFu));
  EXPECT_EQ(0u, set("fwt:pairValue", {1, 1}, 10));
  EXPECT_EQ(0u, set("fwt:pairValue", {1, 1}, 20));
  // A signed range whose family reports lengths.
  EXPECT_EQ(0u, set("fwt:pairSigned", {1, 1}, static_cast<uint32_t>(-5)));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, set("fwt:pairSigned", {1, 1}, static_cast<uint32_t>(-6)));
  // Lengths: at most 4; 0 passes; a read cut to the caller's capacity.
  uint32_t key[] = {1, 1};
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, mdbSetApi("fwt:pairText", key, 2, "abcde", 5, nullptr, 1));
  EXPECT_EQ(0u, mdbSetApi("fwt:pairText", key, 2, "", 0, nullptr, 1));
  EXPECT_EQ(0u, mdbSetApi("fwt:pairText", key, 2, "abcd", 4, nullptr, 1));
  char text[8];
  uint32_t length = 2;
  EXPECT_EQ(0u, mdbGetApi("fwt:pairText", key, 2, text, &length, nullptr));
  EXPECT_EQ("ab", std::string(text, length));
  // The validated mark is set by a validation that passes, and only then.
  uint32_t flags = 0, count = 2, v = 9, len = 4;
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, mdbDispatch(MDB_SET, "fwt:pairValue", key, &count, &v, &len, &flags, nullptr));
  EXPECT_EQ(0u, flags & MDB_FLAG_VALIDATED);
  v = 15;
  EXPECT_EQ(0u, mdbDispatch(MDB_SET, "fwt:pairValue", key, &count, &v, &len, &flags, nullptr));
  EXPECT_NE(0u, flags & MDB_FLAG_VALIDATED);
  v = 99;

  // Index columns answer from the index without a service, even for no row; never writable.
  uint32_t wide[64];
  WideKey wk{};
  wk.number = 5;
  memcpy(wk.name, "hi", 2);
  wk.nameLength = 2;
  uint32_t n = fwIndexEncode(&kWide, reinterpret_cast<uintptr_t>(&wk), wide, 64);
  uint32_t number = 0;
  length = 4;
  EXPECT_EQ(0u, mdbGetApi("fwt:number", wide, n, &number, &length, nullptr));
  EXPECT_EQ(5u, number);
  length = sizeof text;
  EXPECT_EQ(0u, mdbGetApi("fwt:name", wide, n, text, &length, nullptr));
  EXPECT_EQ("hi", std::string(text, length));
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, mdbNvmSet("fwt:number", wide, n, &v, 4));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("fwt:wideValue", std::vector<uint32_t>(wide, wide + n), &number));

  // Scalars: a localId the handler does not serve, a write-only object.
  uint32_t zero[] = {0};
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("fwt:unserved", {0}, &number));
  EXPECT_EQ(0u, mdbSetApi("fwt:writeOnly", zero, 1, &v, 4, nullptr, 1));
  number = 1234;
  length = 4;
  EXPECT_EQ(0u, mdbGetApi("fwt:writeOnly", zero, 1, &number, &length, nullptr));
  EXPECT_EQ(1234u, number);  // the read delivers nothing
  uint32_t stored = 0;
  EXPECT_EQ(0, svcScalarGet(svcServiceFind("fwtScalar"), 2, &stored));
  EXPECT_EQ(99u, stored);
  // A scalar's instance is .0 alone.
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("fwt:scalarText", {1}, &number));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, get("fwt:scalarText", {}, &number));
}

// A module whose rows are wrong is refused, and says which row.
constexpr FwEntry kBadScalars = fwScalars("fwtBad", {1, 3, 6, 1, 4, 1, 47391, 2, 8001, 1}, FwScalarOps{});
constexpr FwObject kBadObjects[] = {
    fwObject(&kBadScalars, 0, 1, "bad:forwardsNowhere").integer().role_(FW_ROLE_PLAIN),
};
constexpr auto kBadBindings = fwBindings(kBadObjects);

TEST_F(Framework, RegistrationRefusesAWrongRow) {
  EXPECT_EQ(-1, fwModuleRegister("bad", 0, kBadBindings.data()));
  EXPECT_EQ(-1, mdbModuleSearch("bad"));
  EXPECT_EQ(nullptr, mdbObjectLookup("bad:forwardsNowhere"));
}

}  // namespace
