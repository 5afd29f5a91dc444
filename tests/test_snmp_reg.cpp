// Registration with the SNMP agent: the walk, the hidden switch, the agent's
// refusals, the sysORTable and its enterprise rewrite, and command 11.
#include "test_support.h"
#include "mdb/mdb_modules.h"
#include "platform/logging.h"
#include "platform/snmp_agent.h"

#include <fstream>
#include <memory>
#include <sstream>
#include <thread>

using namespace mdbtest;

namespace {

// A module of `count` objects: two scalars, then the columns of one table:
// an index column (access 17), a not-accessible one (8), the rest read-write.
struct TestModule {
  std::string name;
  std::vector<std::string> names;
  MdbEntryDesc scalars, table;
  std::vector<MdbObjectDesc> objects;
  std::vector<MdbObjectBinding> bindings;

  TestModule(const std::string& module, uint32_t arc, uint32_t count) : name(module) {
    scalars = makeEntry({1, 3, 6, 1, 4, 1, 47391, 2, arc, 1}, 0, 1);
    table = makeEntry({1, 3, 6, 1, 4, 1, 47391, 2, arc, 2, 1}, 1, 33);
    for (uint32_t i = 0; i < count; i++) names.push_back(module + ":object" + std::to_string(i));
    for (uint32_t i = 0; i < count; i++) {
      uint32_t access = i < 2 ? MDB_ACCESS_RO : i == 2 ? MDB_ACCESS_RO_INDEX : i == 3 ? MDB_ACCESS_NA : MDB_ACCESS_RW;
      objects.push_back(makeObject(static_cast<uint16_t>(i), static_cast<uint16_t>(i < 2 ? i + 1 : i - 1), access,
                                   nullptr, names[i].c_str(), 0, 0, nullptr, i % 14));
      bindings.push_back({i < 2 ? &scalars : &table, nullptr});
    }
    objects[2].attributes |= MDB_ATTR_INDEX;
    for (uint32_t i = 0; i < count; i++) bindings[i].object = &objects[i];
    bindings.push_back({nullptr, nullptr});
    EXPECT_EQ(0, mdbModuleRegister(name.c_str(), bindings.data()));
  }
};

// The list as built, before any test of this process rewrote it.
struct ORListCopy {
  MdbSysORRow rows[MDB_SYSOR_ROWS + 1];
  ORListCopy() { memcpy(rows, gSystemORList, sizeof rows); }
};
const ORListCopy kBuilt;

class SnmpReg : public DictTest {
 protected:
  void SetUp() override {
    DictTest::SetUp();
    memcpy(saved, gSystemORList, sizeof saved);
    memcpy(gSystemORList, kBuilt.rows, sizeof saved);
    snmpAgentReset();
  }
  void TearDown() override {
    memcpy(gSystemORList, saved, sizeof saved);
    snmpAgentFailSet(nullptr, 0);
    snmpAgentReset();
    DictTest::TearDown();
  }
  // Modules in table order, the order of the walk.
  static std::vector<const MdbModuleDesc*> modules() {
    std::vector<const MdbModuleDesc*> out;
    mdbModuleForEach([](const MdbModuleDesc* m, void* arg) {
      static_cast<std::vector<const MdbModuleDesc*>*>(arg)->push_back(m);
      return 0;
    }, &out);
    return out;
  }
  // How many times the agent was given the object; 0 if it does not know it.
  static uint32_t told(const std::string& name) {
    SnmpAgentObject o;
    return snmpAgentObjectFind(name.c_str(), &o) == 0 ? o.registrations : 0;
  }
  static MdbSnmpTally tally() {
    MdbSnmpTally t;
    mdbSnmpTallyGet(&t);
    return t;
  }
  MdbSysORRow saved[MDB_SYSOR_ROWS + 1];
};

std::string oidText(const uint32_t* oid, uint32_t length) {
  std::string s;
  for (uint32_t i = 0; i < length; i++) s += (i ? "." : "") + std::to_string(oid[i]);
  return s;
}

std::string orRow(const char* description) {
  for (const MdbSysORRow* r = gSystemORList; r->oidLength != 0; r++)
    if (strcmp(r->description, description) == 0) return oidText(r->oid, r->oidLength);
  return "";
}

TEST_F(SnmpReg, EachRunGivesEveryObjectWithItsFullOidAndEveryTableRowOnce) {
  ASSERT_EQ(0, systemMibInit());
  ASSERT_EQ(0, clockMibInit());
  ASSERT_EQ(0, mirrorMibInit());
  TestModule a("snmpa", 9901, 6);
  for (uint32_t run = 1; run <= 2; run++) {
    ASSERT_EQ(0, mdbSnmpInit());
    uint32_t objects = 0;
    for (const MdbModuleDesc* m : modules()) {
      for (const MdbObjectBinding* b = m->list; b->object != nullptr; b++, objects++) {
        SnmpAgentObject o;
        ASSERT_EQ(0, snmpAgentObjectFind(b->object->name, &o)) << b->object->name;
        EXPECT_EQ(run, o.registrations);
        ASSERT_EQ(b->entry->oidLen, o.oidLength);
        EXPECT_EQ(oidText(b->entry->oid, o.oidLength - 1) + "." + std::to_string(b->object->subId),
                  oidText(o.oid, o.oidLength));
        EXPECT_EQ(b->object->type, o.type);
        EXPECT_EQ(b->object->access, o.access);  // 8 and 17 as well
        EXPECT_EQ(b->entry->indexCountMax, o.indexCountMax);
      }
    }
    // The second run repeats every call; the agent's store does not grow.
    EXPECT_EQ(objects, snmpAgentObjectCount());
    EXPECT_EQ(run * objects, stat(MDB_STAT_snmpObjVisible));
    EXPECT_EQ(run * mdbModuleCount(), stat(MDB_STAT_mdbSnmpRegisterCalled));
    EXPECT_EQ(run, stat(MDB_STAT_mdbSnmpOidInitCalled));
    EXPECT_EQ(objects, tally().visible);
    EXPECT_EQ(MDB_SYSOR_ROWS, tally().orRows);
  }
  ASSERT_EQ(MDB_SYSOR_ROWS, snmpAgentORCount());
  std::vector<std::string> flush;
  for (uint32_t i = 0; i < MDB_SYSOR_ROWS; i++) {
    SnmpAgentORRow row;
    ASSERT_EQ(0, snmpAgentORGet(i, &row));
    EXPECT_STREQ(gSystemORList[i].description, row.description);
    EXPECT_EQ(2u, row.registrations);
    if (strcmp(row.description, "FLUSH-MIB") == 0) flush.push_back(oidText(row.oid, row.oidLength));
  }
  EXPECT_EQ((std::vector<std::string>{"1.3.6.1.4.1.47391.2.1203", "1.3.6.1.4.1.47391.2.1205"}), flush);
}

TEST_F(SnmpReg, HiddenObjectIsSkippedUntilShownAgainAndTheAgentKeepsWhatItKnows) {
  TestModule a("snmpa", 9901, 4);
  const char* index = "snmpa:object2";
  ASSERT_EQ(0u, mdbObjectSnmpAccess(index, 0));
  EXPECT_EQ(MDB_ATTR_ROW | MDB_ATTR_INDEX | MDB_ATTR_HIDDEN, a.objects[2].attributes);
  ASSERT_EQ(0, mdbSnmpInit());
  EXPECT_EQ(0u, told(index));
  EXPECT_EQ(3u, snmpAgentObjectCount());
  EXPECT_EQ(1u, stat(MDB_STAT_snmpObjInvisible));
  EXPECT_EQ(1u, tally().hidden);

  ASSERT_EQ(0u, mdbObjectSnmpAccess(index, 1));
  EXPECT_EQ(MDB_ATTR_ROW | MDB_ATTR_INDEX, a.objects[2].attributes);
  ASSERT_EQ(0, mdbSnmpInit());
  EXPECT_EQ(1u, told(index));
  // Hidden again, it stays out of the next walk, and the agent keeps it.
  ASSERT_EQ(0u, mdbObjectSnmpAccess(index, 0));
  ASSERT_EQ(0, mdbSnmpInit());
  EXPECT_EQ(1u, told(index));
  EXPECT_EQ(2u, stat(MDB_STAT_snmpObjInvisible));

  EXPECT_EQ(MDB_ERR_NO_SUCH_OBJECT, mdbObjectSnmpAccess("snmpa:nope", 0));
  EXPECT_EQ(1u, stat(MDB_STAT_mdbNoSuchObject));
}

TEST_F(SnmpReg, RefusalStopsItsModuleAndMinusOneStopsTheWholeWalkWithTheMessages) {
  TestModule a("snmpa", 9901, 4), b("snmpb", 9902, 4), c("snmpc", 9903, 4);
  const std::vector<const MdbModuleDesc*> order = modules();
  const std::string refused = order[0]->list[1].object->name;
  char logPath[] = "/tmp/mdbtest-snmplog-XXXXXX";
  close(mkstemp(logPath));
  ASSERT_EQ(0, loggingOpen(logPath));
  int rc = -2;

  // Any value but -1 ends only the refused object's module.
  snmpAgentFailSet(refused.c_str(), 7);
  EXPECT_EQ("", captureStdout([&] { rc = mdbSnmpMibInit(); }));
  EXPECT_EQ(0, rc);
  EXPECT_EQ(1u, told(order[0]->list[0].object->name));
  EXPECT_EQ(0u, told(order[0]->list[2].object->name));
  EXPECT_EQ(1u + 4u + 4u, snmpAgentObjectCount());

  // -1 ends the walk; mdbSnmpInit answers 0 all the same.
  snmpAgentReset();
  snmpAgentFailSet(refused.c_str(), -1);
  EXPECT_EQ("Snmp register mib error\r\n", captureStdout([&] { rc = mdbSnmpMibInit(); }));
  EXPECT_EQ(-1, rc);
  EXPECT_EQ(1u, snmpAgentObjectCount());
  EXPECT_EQ(3u + 1u, stat(MDB_STAT_mdbSnmpRegisterCalled));
  EXPECT_EQ("Snmp register mib error\r\n", captureStdout([&] { rc = mdbSnmpInit(); }));
  EXPECT_EQ(0, rc);
  EXPECT_EQ(2u, tally().visible);
  EXPECT_EQ(1u, tally().failed);
  EXPECT_EQ(3u, stat(MDB_STAT_snmpObjRegFailed));

  loggingOpen(nullptr);
  std::stringstream log;
  log << std::ifstream(logPath).rdbuf();
  unlink(logPath);
  const std::string line = "log 81920000 notice: MDB snmp register " + refused + " error.\n";
  size_t lines = 0;
  for (size_t at = log.str().find(line); at != std::string::npos; at = log.str().find(line, at + 1)) lines++;
  EXPECT_EQ(3u, lines) << log.str();
}

TEST_F(SnmpReg, EnterpriseOptionsMoveOnlyThePrivateRows) {
  silOptSet("snmp.enterpriseoid", "12345");
  mdbEnterpriseOidRewrite();
  EXPECT_EQ("1.3.6.1.4.1.12345.2.2611", orRow("MIRROR-MIB"));
  EXPECT_EQ("1.3.6.1.4.1.12345.1.1", orRow("DEVICE-MIB"));
  EXPECT_EQ("1.3.6.1.2.1.1", orRow("RFC 1213-SYSTEM-MIB"));
  EXPECT_EQ("1.0.8802.1.1.2", orRow("LLDP-MIB"));
  for (uint32_t i = 0; i < MDB_SYSOR_ROWS; i++) {
    EXPECT_NE(47391u, gSystemORList[i].oid[6]) << gSystemORList[i].description;
    EXPECT_EQ(kBuilt.rows[i].oidLength, gSystemORList[i].oidLength);
  }

  memcpy(gSystemORList, kBuilt.rows, sizeof saved);
  silOptSet("snmp.enterprisesuboid", "7");
  mdbEnterpriseOidRewrite();
  EXPECT_EQ("1.3.6.1.4.1.12345.7.2611", orRow("MIRROR-MIB"));
  EXPECT_EQ("1.3.6.1.4.1.47391.1.1", orRow("DEVICE-MIB"));
  EXPECT_EQ("1.0.8802.1.1.2.1.5.4795", orRow("LLDP-MED-MIB"));
}

// Command 11 as a socket task serves it, the reply decoded as a client would.
struct Reply {
  uint32_t status = 0;
  std::vector<uint8_t> frame = std::vector<uint8_t>(ICM_MAX_REPLY);
  std::unique_ptr<IcmRequest> args = std::make_unique<IcmRequest>();
  uint32_t u32(uint32_t i) const {
    uint32_t v = 0xDEADBEEF;
    EXPECT_TRUE(icmArgU32(args.get(), i, &v)) << i;
    return v;
  }
  std::string text(uint32_t i) const {
    return std::string(reinterpret_cast<const char*>(args->args[i].data), args->args[i].length);
  }
};

Reply command11(std::vector<uint32_t> in) {
  std::vector<uint8_t> frame(ICM_MAX_REQUEST);
  IcmWriter w;
  icmBegin(&w, frame.data(), ICM_MAX_REQUEST);
  for (uint32_t v : in) icmPutU32(&w, v);
  auto request = std::make_unique<IcmRequest>();
  EXPECT_EQ(0u, icmDecode(frame.data(), icmEnd(&w, 11, 1, 0), request.get(), nullptr, ICM_MAX_ARGS));
  Reply r;
  IcmWriter out;
  icmBegin(&out, r.frame.data(), ICM_MAX_REPLY);
  r.status = gMdbFuncMap[MDB_CMD_SNMP_INIT].fn(request.get(), &out);
  EXPECT_EQ(0u, icmDecode(r.frame.data(), icmEnd(&out, 11, 1, r.status), r.args.get(), nullptr, ICM_MAX_REPLY_ARGS));
  return r;
}

TEST_F(SnmpReg, CommandRunsTheRegistrationAndPagesThroughWhatTheAgentHolds) {
  TestModule big("snmpbig", 9904, 700);
  ASSERT_EQ(0u, mdbObjectSnmpAccess("snmpbig:object5", 0));
  Reply first = command11({});
  ASSERT_EQ(7u, first.args->argCount);
  const uint32_t summary[] = {0, 699, 1, 0, MDB_SYSOR_ROWS, 699, MDB_SYSOR_ROWS};
  for (uint32_t i = 0; i < 7; i++) EXPECT_EQ(summary[i], first.u32(i)) << i;

  // Every object once, in the agent's order, over several full replies.
  uint32_t offset = 0, pages = 0;
  for (; offset < 699 && pages < 100; pages++) {
    Reply page = command11({MDB_SNMP_LIST_OBJECTS, offset, 0});
    const uint32_t count = page.u32(2);
    ASSERT_EQ(0u, page.u32(0));
    EXPECT_EQ(699u, page.u32(1));
    ASSERT_EQ(3 + 5 * count, page.args->argCount);
    ASSERT_GT(count, 0u);
    for (uint32_t i = 0; i < count; i++) {
      SnmpAgentObject o;
      ASSERT_EQ(0, snmpAgentObjectGet(offset + i, &o));
      EXPECT_EQ(o.name, page.text(3 + 5 * i));
    }
    offset += count;
  }
  EXPECT_EQ(699u, offset);
  EXPECT_GE(pages, 4u);
  EXPECT_EQ(0u, command11({MDB_SNMP_LIST_OBJECTS, 0xFFFFFFFF, 0}).u32(2));

  Reply rows = command11({MDB_SNMP_LIST_SYSOR, 0, 0});
  ASSERT_EQ(MDB_SYSOR_ROWS, rows.u32(2));
  EXPECT_EQ("ETHSUBAGGIFSTAT-MIB", rows.text(3 + 2 * (MDB_SYSOR_ROWS - 1)));
  EXPECT_EQ(0xFFFFFFFFu, command11({9, 0, 0}).u32(0));
  EXPECT_EQ(ICM_STATUS_BAD_ARGUMENTS, command11({MDB_SNMP_LIST_OBJECTS, 0}).status);
}

TEST_F(SnmpReg, WalksAndTheHiddenSwitchRunInParallel) {
  TestModule a("snmpa", 9901, 50);
  std::vector<std::thread> threads;
  for (int t = 0; t < 2; t++)
    threads.emplace_back([] {
      for (int i = 0; i < 20; i++) mdbSnmpInit();
    });
  threads.emplace_back([&a] {
    for (uint32_t i = 0; i < 200; i++) mdbObjectSnmpAccess(a.names[i % 50].c_str(), i % 2);
  });
  for (std::thread& t : threads) t.join();
  for (const std::string& name : a.names) mdbObjectSnmpAccess(name.c_str(), 1);
  ASSERT_EQ(0, mdbSnmpInit());
  EXPECT_EQ(50u, snmpAgentObjectCount());
  EXPECT_EQ(41u * 50u, stat(MDB_STAT_snmpObjVisible) + stat(MDB_STAT_snmpObjInvisible));
}

}  // namespace
