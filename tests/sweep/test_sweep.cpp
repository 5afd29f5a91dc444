// The bad-input sweep over the whole catalogue: every writable object of
// every registered module gets what a careless client sends, through the
// public verbs, and must answer with the error its own row or the
// dispatcher's rules give, and keep its value.
//
// The dispatcher's rules (src/mdb_dispatch.cpp), in the order it applies them:
//   a null value buffer (without flag 0x80, which no write verb sets)  mdbErrorNullBuffer
//   more than 256 sub-ids                                              mdbErrorIndexRange
//   more sub-ids than the entry's indexCountMax                        mdbErrorRequestMap(kind):
//                                                                      at Validate, the first pass of
//                                                                      mdbSetApi, mdbErrorNoCreation
//   access 1 (read-only)                                               mdbErrorNotWritable
// It makes no check of the value's length. Fewer sub-ids than the entry's
// minimum are stopped by the dispatcher at Get only; at Set the framework's
// handler refuses an index its codec cannot read with the same
// mdbErrorRequestMap(kind), so mdbErrorNoCreation again.
//
// The handler's own limits (FwObject): FW_CHECK_RANGE and FW_CHECK_SIGNED_RANGE
// give mdbErrorInvalidRange (mdbErrorInvalidLength with lengthError), status
// codes outside 1..6 (RowStatus) or 1..4 (EntryStatus) the same, a length
// limit mdbErrorInvalidLength. A value longer than the catalogued size, and an
// integer that is not 4 bytes, are length errors: mdbErrorInvalidLength.
//
// Hooks (FW_ROLE_HOOK) are held to the code their row states; where it
// states no limit they may refuse with any code or accept, and an accepted
// value is listed for review.
#include "sweep_support.h"

using namespace sweep;

namespace {

class SweepCatalogue : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { Device::start(); }
  static void TearDownTestSuite() { Device::stop(); }
  void SetUp() override { catalogue.load(); }
  Catalogue catalogue;
};

constexpr uint32_t kInvalidRange = MDB_ERR_INVALID_RANGE;
constexpr uint32_t kInvalidLength = MDB_ERR_INVALID_LENGTH;

uint32_t limitError(const FwObject* o) { return o->lengthError ? kInvalidLength : kInvalidRange; }

// A value the object's row accepts, for probes that are about something else.
Bytes acceptableValue(const Target& t) {
  if (t.readable && (!t.intForm() || t.before.size() == 4)) return t.before;
  if (!t.intForm()) return Bytes{'A'};
  if (t.fw == nullptr) return word(1);
  switch (t.fw->check) {
    case FW_CHECK_RANGE: case FW_CHECK_SIGNED_RANGE: return word(t.fw->lo);
    case FW_CHECK_ROW_STATUS: case FW_CHECK_ENTRY_STATUS: return word(1);
    default: return word(0);
  }
}

struct Edge {
  const char* probe;
  uint32_t value;
};

// The values one past each end of the handler's limit that a 32-bit value can
// carry.
std::vector<Edge> pastTheLimit(const FwObject* o) {
  std::vector<Edge> edges;
  switch (o->check) {
    case FW_CHECK_RANGE:
      if (o->lo > 0) edges.push_back({"one below the range", o->lo - 1});
      if (o->hi < UINT32_MAX) edges.push_back({"one above the range", o->hi + 1});
      break;
    case FW_CHECK_SIGNED_RANGE: {
      const int32_t lo = static_cast<int32_t>(o->lo), hi = static_cast<int32_t>(o->hi);
      if (lo > INT32_MIN) edges.push_back({"one below the signed range", static_cast<uint32_t>(lo - 1)});
      if (hi < INT32_MAX) edges.push_back({"one above the signed range", static_cast<uint32_t>(hi + 1)});
      break;
    }
    case FW_CHECK_ROW_STATUS:
      edges.push_back({"RowStatus 0", 0});
      edges.push_back({"RowStatus 7", 7});
      break;
    case FW_CHECK_ENTRY_STATUS:
      edges.push_back({"EntryStatus 0", 0});
      edges.push_back({"EntryStatus 5", 5});
      break;
    default:
      break;
  }
  return edges;
}

TEST_F(SweepCatalogue, EveryBuiltModuleIsRegisteredWithEveryGateOpen) {
  std::set<std::string> registered(catalogue.modules.begin(), catalogue.modules.end());
  uint32_t built = 0;
  for (uint32_t i = 0; i < gMdbInitSequenceLength; i++) {
    for (const MdbInit& init : gMdbInitSequence[i].inits) {
      if (init.name == nullptr || init.fn == nullptr) continue;
      built++;
      EXPECT_EQ(1u, registered.count(init.module)) << init.module << " (" << init.name << ") did not register";
    }
  }
  EXPECT_EQ(1u, registered.count("system"));
  EXPECT_GT(built, 20u);
  // The walk saw every object the dictionary holds, each once.
  EXPECT_EQ(mdbObjectCount(), catalogue.objects.size());
  std::set<std::string> names;
  for (const Target& t : catalogue.objects) EXPECT_TRUE(names.insert(t.name).second) << t.name;

  uint32_t writable = 0, withRow = 0, framework = 0;
  std::map<std::string, uint32_t> perModule;
  for (const Target& t : catalogue.objects) {
    if (t.fw != nullptr) framework++;
    if (!t.writable()) continue;
    writable++;
    perModule[t.module]++;
    if (t.hasRow) withRow++;
  }
  EXPECT_GT(writable, 250u);
  printf("\n[sweep] %zu modules, %zu objects (%u with a framework row), %u writable (%u with an instance, %u in "
         "tables without rows)\n",
         catalogue.modules.size(), catalogue.objects.size(), framework, writable, withRow, writable - withRow);
  for (const auto& [module, n] : perModule) printf("[sweep]   %-24s %4u writable\n", module.c_str(), n);
}

// A value one past each end of the handler's range, and the status codes
// next to the code set; the value stays as it was.
TEST_F(SweepCatalogue, ValuesPastTheHandlersLimitAreRefused) {
  Sweep sweep("values past the handler's limit");
  for (Target& t : catalogue.objects) {
    if (!t.writable() || !t.hasRow || !t.intForm()) continue;
    std::vector<Edge> edges;
    if (t.fw != nullptr) edges = pastTheLimit(t.fw);
    const bool statusType = t.desc->type == MDB_TYPE_ROWSTATUS;
    if (edges.empty() && statusType) {
      // A RowStatus column whose row states no check: the code set is its limit.
      edges = {{"RowStatus 0", 0}, {"RowStatus 7", 7}};
    }
    if (!edges.empty()) {
      sweep.swept(t);
      const uint32_t expected = t.fw != nullptr && t.fw->check != FW_CHECK_NONE ? limitError(t.fw) : kInvalidRange;
      for (const Edge& e : edges) {
        Sent s = sweep.sendValue(t, word(e.value), 4);
        sweep.expect(t, e.probe, s, expected);
      }
      continue;
    }
    // A hook that states no limit: the catalogued range, for review.
    if (!t.hook()) continue;
    const int32_t min = t.desc->min, max = t.desc->max;
    if (min == 0 && max == 0) continue;
    const bool isSigned = t.desc->type == MDB_TYPE_INTEGER;
    std::vector<uint32_t> values;
    if (isSigned ? min > INT32_MIN : static_cast<uint32_t>(min) > 0) values.push_back(static_cast<uint32_t>(min) - 1);
    if (isSigned ? max < INT32_MAX : static_cast<uint32_t>(max) < UINT32_MAX)
      values.push_back(static_cast<uint32_t>(max) + 1);
    if (values.empty()) continue;
    sweep.swept(t);
    for (uint32_t v : values) {
      Bytes illegal = word(v);
      Sent s = sweep.sendValue(t, illegal, 4);
      sweep.lenient(t, "catalogued " + std::to_string(min) + ".." + std::to_string(max) + ", sent " +
                           std::to_string(isSigned ? static_cast<int64_t>(static_cast<int32_t>(v)) : v),
                    s, &illegal);
    }
  }
  EXPECT_GT(sweep.objects(), 100u);
  sweep.report();
}

// One byte past the length limit, one past the catalogued size, and the
// empty string, whose answer is recorded.
TEST_F(SweepCatalogue, OverLongAndEmptyStrings) {
  Sweep sweep("over-long and empty strings");
  for (Target& t : catalogue.objects) {
    if (!t.writable() || !t.hasRow) continue;
    const FwObject* o = t.fw;
    const bool lengthLimit = o != nullptr && o->check == FW_CHECK_LENGTH;
    if (t.intForm() && !lengthLimit) continue;
    sweep.swept(t);
    // The bytes: an integer's own value first, so that only the length is wrong.
    auto longValue = [&](uint32_t length) {
      Bytes v = t.intForm() ? acceptableValue(t) : Bytes{};
      v.resize(length, 'A');
      return v;
    };
    uint32_t limitProbe = 0;
    if (lengthLimit) {
      limitProbe = o->hi + 1;
      Sent s = sweep.sendValue(t, longValue(limitProbe), limitProbe);
      sweep.expect(t, "one byte past the length limit", s, kInvalidLength);
    }
    if (t.intForm()) continue;
    // An OID's size counts sub-ids of 4 bytes: one sub-id past it.
    const uint32_t oversize = t.desc->type == MDB_TYPE_OID ? t.desc->size * 4 + 4 : t.desc->size + 1;
    if (oversize != limitProbe && !(lengthLimit && o->hi >= oversize)) {
      Sent s = sweep.sendValue(t, longValue(oversize), oversize);
      sweep.expect(t, "one past the catalogued size", s, kInvalidLength);
    }
    Sent s = sweep.sendValue(t, Bytes{}, 0);
    sweep.answer(codeName(s.rc) + " to the empty string", t.where());
    if (!documented(s.rc)) sweep.fault(t, "empty string", "0 or a documented error", codeName(s.rc), "");
    if (s.rc != 0 && s.changed)
      sweep.fault(t, "empty string", "value unchanged after a refusal", "value changed", Sweep::consequence(s));
    sweep.checkBuffer(t, "empty string", s);
  }
  EXPECT_GT(sweep.objects(), 50u);
  sweep.report();
}

// An index one sub-id shorter than the entry's minimum, one longer than its
// maximum, and 257 sub-ids, with a value the object takes; tables without
// rows too, at an index made up for their codec.
TEST_F(SweepCatalogue, WrongIndexesAreRefused) {
  Sweep sweep("wrong indexes");
  for (Target& t : catalogue.objects) {
    if (!t.writable()) continue;
    sweep.swept(t);
    const Bytes value = acceptableValue(t);
    const uint32_t length = static_cast<uint32_t>(value.size());
    const uint32_t min = t.entry->indexCountMin, max = t.entry->indexCountMax;
    if (min > 0) {
      Index shorter(t.index.begin(), t.index.begin() + std::min<size_t>(t.index.size(), min - 1));
      Sent s = sweep.send(t, shorter, &value, length);
      sweep.expect(t, "index one sub-id below the entry's minimum", s, MDB_ERR_NO_CREATION);
    }
    Index longer = t.index;
    longer.resize(max + 1, 1);
    Sent s = sweep.send(t, longer, &value, length);
    sweep.expect(t, "index one sub-id above the entry's maximum", s,
                 max + 1 > MDB_MAX_INDEX ? MDB_ERR_INDEX_RANGE : MDB_ERR_NO_CREATION);
    Index huge = t.index;
    huge.resize(MDB_MAX_INDEX + 1, 1);
    s = sweep.send(t, huge, &value, length);
    sweep.expect(t, "index of 257 sub-ids", s, MDB_ERR_INDEX_RANGE);
  }
  EXPECT_GT(sweep.objects(), 250u);
  sweep.report();
}

// A null value buffer with a length, by mdbSetApi and by mdbCommit (which
// validates nothing), and an integer of no bytes.
TEST_F(SweepCatalogue, NullBuffersAndZeroLengths) {
  Sweep sweep("null buffers and zero lengths");
  for (Target& t : catalogue.objects) {
    if (!t.writable()) continue;
    sweep.swept(t);
    const uint32_t length = t.intForm() ? 4 : std::max<uint32_t>(1, t.desc->size);
    Sent s = sweep.send(t, t.index, nullptr, length, Verb::Set);
    sweep.expect(t, "null buffer with a length (mdbSetApi)", s, MDB_ERR_NULL_BUFFER);
    s = sweep.send(t, t.index, nullptr, length, Verb::Commit);
    sweep.expect(t, "null buffer with a length (mdbCommit)", s, MDB_ERR_NULL_BUFFER);
    if (!t.hasRow || !t.intForm()) continue;
    s = sweep.sendValue(t, Bytes{}, 0);
    sweep.expect(t, "integer of 0 bytes", s, kInvalidLength);
  }
  EXPECT_GT(sweep.objects(), 250u);
  sweep.report();
}

// An integer of 2 bytes (what lies behind them is the pad, so a handler that
// reads 4 bytes judges or stores the pad) and of 8 bytes (the object's own
// value, then the pad).
TEST_F(SweepCatalogue, IntegersOfTheWrongWidthAreRefused) {
  Sweep sweep("integers of the wrong width");
  for (Target& t : catalogue.objects) {
    if (!t.writable() || !t.hasRow || !t.intForm()) continue;
    sweep.swept(t);
    const Bytes value = acceptableValue(t);
    Bytes two(value.begin(), value.begin() + 2);
    Sent s = sweep.sendValue(t, two, 2);
    std::string probe = "integer of 2 bytes";
    if (s.changed && containsPad(s.after, 2)) probe += ", stored with 2 bytes read past it";
    sweep.expect(t, probe, s, kInvalidLength);

    Bytes eight = value;
    eight.resize(8, kPad);
    s = sweep.sendValue(t, eight, 8);
    sweep.expect(t, "integer of 8 bytes", s, kInvalidLength);
  }
  EXPECT_GT(sweep.objects(), 200u);
  sweep.report();
}

}  // namespace
