// The interface modules' write limits against limits.tsv, a table written by
// hand apart from the modules: each registered object of the table refuses
// the values one past its limit with exactly the table's code, keeps its
// value, and takes the values at the limit (Validate only, nothing written).
// A limit transcribed wrongly into a module shows here.
#include "sweep_support.h"

#include <fstream>
#include <sstream>

using namespace sweep;

namespace {

struct Limit {
  int line;
  std::string object;
  bool length;        // len<=high, else low..high
  uint32_t low, high;
  uint32_t error;
  bool refusalsOnly;
};

std::string limitsPath() {
  if (const char* path = getenv("MDB_SWEEP_LIMITS")) return path;
  std::string here = __FILE__;
  return here.substr(0, here.rfind('/') + 1) + "limits.tsv";
}

bool parseNumber(const std::string& text, uint32_t* out) {
  if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) return false;
  unsigned long long v = strtoull(text.c_str(), nullptr, 10);
  if (v > UINT32_MAX) return false;
  *out = static_cast<uint32_t>(v);
  return true;
}

std::vector<Limit> readLimits(std::vector<std::string>* problems) {
  std::vector<Limit> limits;
  std::ifstream in(limitsPath());
  if (!in) {
    problems->push_back("cannot open " + limitsPath());
    return limits;
  }
  std::string line;
  for (int number = 1; std::getline(in, line); number++) {
    if (line.empty() || line[0] == '#') continue;
    std::vector<std::string> f;
    std::stringstream fields(line);
    for (std::string cell; std::getline(fields, cell, '\t');) f.push_back(cell);
    Limit l{number, f.size() > 0 ? f[0] : "", false, 0, 0, 0, f.size() > 4 && f[4] == "out"};
    bool ok = f.size() >= 4 && (f[3] == "R" || f[3] == "L");
    if (ok) l.error = f[3] == "R" ? MDB_ERR_INVALID_RANGE : MDB_ERR_INVALID_LENGTH;
    if (ok && f[1].rfind("len<=", 0) == 0) {
      l.length = true;
      ok = parseNumber(f[1].substr(5), &l.high) && f[2] == "-";
    } else if (ok) {
      ok = parseNumber(f[1], &l.low) && parseNumber(f[2], &l.high) && l.low <= l.high;
    }
    if (!ok) problems->push_back("limits.tsv line " + std::to_string(number) + " is malformed: " + line);
    else limits.push_back(l);
  }
  return limits;
}

class SweepLimitsTable : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { Device::start(); }
  static void TearDownTestSuite() { Device::stop(); }
  void SetUp() override { catalogue.load(); }
  Catalogue catalogue;
};

uint32_t validate(Target& t, const Bytes& value, uint32_t length) {
  Bytes buffer = value;
  buffer.resize(length);
  buffer.insert(buffer.end(), kPadBytes, kPad);
  Index index = t.index;
  return mdbValidate(t.name.c_str(), index.empty() ? nullptr : index.data(), static_cast<uint32_t>(index.size()),
                     buffer.data(), length, 0);
}

TEST_F(SweepLimitsTable, InterfaceObjectsRefuseWhatTheTableRefuses) {
  std::vector<std::string> problems;
  const std::vector<Limit> limits = readLimits(&problems);
  for (const auto& p : problems) ADD_FAILURE() << p;
  ASSERT_GT(limits.size(), 60u);

  std::map<std::string, Target*> byName;
  for (Target& t : catalogue.objects) byName[t.name] = &t;

  Sweep sweep("interface limits against limits.tsv");
  uint32_t found = 0;
  std::set<std::string> absent;
  std::map<std::string, uint32_t> perModule;
  for (const Limit& l : limits) {
    auto it = byName.find(l.object);
    if (it == byName.end()) {
      absent.insert(l.object);
      continue;
    }
    Target& t = *it->second;
    found++;
    perModule[t.module]++;
    sweep.swept(t);
    if (!t.writable()) {
      sweep.fault(t, "table row " + std::to_string(l.line), "read-write", "registered with access " +
                  std::to_string(t.desc->access), "");
      continue;
    }
    const std::string row = "limits.tsv line " + std::to_string(l.line) + " ";
    if (l.length) {
      // The object's own value (an integer) or letters, to the length wanted.
      auto bytes = [&](uint32_t length) {
        Bytes v;
        if (t.intForm()) {
          v = t.readable && t.before.size() == 4 ? t.before : word(1);
        }
        v.resize(length, 'A');
        return v;
      };
      Sent s = sweep.sendValue(t, bytes(l.high + 1), l.high + 1);
      sweep.expect(t, row + "len<=" + std::to_string(l.high) + ", one byte more", s, l.error);
      if (!l.refusalsOnly) {
        uint32_t rc = validate(t, bytes(l.high), l.high);
        if (rc != 0) sweep.fault(t, row + "len<=" + std::to_string(l.high) + ", at the limit (Validate)", "0",
                                 codeName(rc), "");
      }
      continue;
    }
    const std::string range = std::to_string(l.low) + ".." + std::to_string(l.high);
    if (l.low > 0) {
      Sent s = sweep.sendValue(t, word(l.low - 1), 4);
      sweep.expect(t, row + range + ", one below", s, l.error);
    }
    if (l.high < UINT32_MAX) {
      Sent s = sweep.sendValue(t, word(l.high + 1), 4);
      sweep.expect(t, row + range + ", one above", s, l.error);
    }
    if (!l.refusalsOnly) {
      for (uint32_t v : {l.low, l.high}) {
        uint32_t rc = validate(t, word(v), 4);
        if (rc != 0)
          sweep.fault(t, row + range + ", " + std::to_string(v) + " at the limit (Validate)", "0", codeName(rc), "");
      }
    }
  }
  printf("\n[sweep] limits.tsv: %zu rows, %u of registered objects\n", limits.size(), found);
  for (const auto& [module, n] : perModule) printf("[sweep]   %-24s %3u rows\n", module.c_str(), n);
  for (const auto& name : absent) printf("[sweep]   not registered: %s\n", name.c_str());
  // The interface modules built so far carry most of the table.
  EXPECT_GE(found, 60u);
  sweep.report();
}

}  // namespace
