// Diagnostics: the request journal, the value forms, the shows, the two file
// exports and the name check, over a small test module.
#include <fcntl.h>

#include <fstream>
#include <functional>
#include <regex>
#include <sstream>
#include <thread>

#include "platform/convert.h"
#include "platform/logging.h"
#include "test_support.h"

using namespace mdbtest;

namespace {

// Scalars count (rw), text (ro), secret (not accessible); a table of two rows
// (ifIndex, ifDescr); a table without rows.
uint32_t gReadError = 0;  // when set: a read of shw:count, or a walk step past row 1, fails with it

uint32_t showHandler(uint32_t kind, MdbCrb* crb) {
  if (kind != MDB_GET && kind != MDB_GET_NEXT) return 0;  // writes are taken and forgotten
  if (kind == MDB_GET_NEXT) {
    if (crb->localId == 5 || (crb->indexSubIdCount != 0 && crb->pIndex[0] >= 2)) return mdbErrorNoNextInstance();
    if (crb->indexSubIdCount != 0 && gReadError != 0) return gReadError;
    crb->pIndex[0] = crb->indexSubIdCount == 0 ? 1 : crb->pIndex[0] + 1;
    crb->indexSubIdCount = 1;
  }
  char text[16];
  switch (crb->localId) {
    case 0:
      if (gReadError != 0) return gReadError;
      ulongSet(crb, 7);
      return 0;
    case 1:
      octetSet(crb, "hello world", 11);
      return 0;
    case 3:
      ulongSet(crb, crb->pIndex[0]);
      return 0;
    default:
      octetSet(crb, text, static_cast<uint32_t>(snprintf(text, sizeof text, "eth%u", crb->pIndex[0])));
      return 0;
  }
}

MdbEntryDesc named(MdbEntryDesc entry, const char* entryName) {
  entry.entryName = entryName;
  return entry;
}

MdbEntryDesc gScalars = makeEntry({1, 3, 6, 1, 4, 1, 47391, 2, 60}, 0, 1);
MdbEntryDesc gIfEntry = named(makeEntry({1, 3, 6, 1, 4, 1, 47391, 2, 60, 5, 1}, 1, 1), "shwIfEntry");
MdbEntryDesc gEmpty = named(makeEntry({1, 3, 6, 1, 4, 1, 47391, 2, 60, 6, 1}, 1, 1), "shwEmptyEntry");
MdbObjectDesc gObjects[] = {
    makeObject(0, 1, MDB_ACCESS_RW, showHandler, "shw:count"),
    makeObject(1, 2, MDB_ACCESS_RO, showHandler, "shw:text", 0, 0, nullptr, MDB_TYPE_OCTET_STRING),
    makeObject(2, 3, MDB_ACCESS_NA, showHandler, "shw:secret"),
    makeObject(3, 1, MDB_ACCESS_RO_INDEX, showHandler, "shw:ifIndex"),
    makeObject(4, 2, MDB_ACCESS_RC, showHandler, "shw:ifDescr", 0, 0, nullptr, MDB_TYPE_OCTET_STRING),
    makeObject(5, 1, MDB_ACCESS_RO, showHandler, "shw:emptyValue"),
};
MdbObjectBinding gBindings[] = {{&gScalars, &gObjects[0]}, {&gScalars, &gObjects[1]}, {&gScalars, &gObjects[2]},
                                {&gIfEntry, &gObjects[3]}, {&gIfEntry, &gObjects[4]}, {&gEmpty, &gObjects[5]},
                                {nullptr, nullptr}};

const std::string kCountShown = "\r\nshw:count-[1.3.6.1.4.1.47391.2.60.1.0]-Integer-{7,0x00000007}\n";
const std::string kIfIndex1 = "\r\nshw:ifIndex-[1.3.6.1.4.1.47391.2.60.5.1.1.1]-Integer-{1,0x00000001}\n";
const std::string kModuleShown =
    kCountShown + "\r\nshw:text-[1.3.6.1.4.1.47391.2.60.2.0]-OctetString-{0x680x650x6c0x6c[ascii=hell]}\n" + kIfIndex1 +
    "\r\nshw:ifIndex-[1.3.6.1.4.1.47391.2.60.5.1.1.2]-Integer-{2,0x00000002}\n" +
    "\r\nshw:ifDescr-[1.3.6.1.4.1.47391.2.60.5.1.2.1]-OctetString-{0x650x740x680x31[ascii=eth1]}\n" +
    "\r\nshw:ifDescr-[1.3.6.1.4.1.47391.2.60.5.1.2.2]-OctetString-{0x650x740x680x32[ascii=eth2]}\n";

class Show : public DictTest {
 protected:
  void SetUp() override {
    DictTest::SetUp();
    ASSERT_EQ(0, mdbModuleRegister("shw", gBindings));
    gReadError = 0;
  }
  void TearDown() override {
    gMdbInfo.debugMask = 0;
    DictTest::TearDown();
  }
};

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

std::string tempPath() {
  char path[] = "/tmp/mdbtest-show-XXXXXX";
  close(mkstemp(path));
  return path;
}

// What fn printed to the descriptor it is given.
std::string fdOutput(const std::function<void(int)>& fn) {
  std::string path = tempPath();
  int fd = open(path.c_str(), O_RDWR | O_TRUNC);
  fn(fd);
  close(fd);
  std::string text = readFile(path);
  unlink(path.c_str());
  return text;
}

// The log messages that fn writes: module id, severity, text. The logger
// drops a message's last line end; a line end inside goes on a line of its own.
struct LogMessage {
  uint32_t moduleId;
  std::string severity, text;
};
std::vector<LogMessage> journal(const std::function<void()>& fn) {
  std::string path = tempPath();
  EXPECT_EQ(0, loggingOpen(path.c_str()));
  fn();
  loggingOpen(nullptr);
  static const std::regex stamp(R"(^[0-9]+\.[0-9]{3} \S* (log|debug) ([0-9]+) ([a-z]+): (.*)$)");
  std::vector<LogMessage> messages;
  bool inLog = false;
  std::istringstream lines(readFile(path));
  unlink(path.c_str());
  std::smatch m;
  for (std::string line; std::getline(lines, line);) {
    if (std::regex_match(line, m, stamp)) {
      inLog = m[1] == "log";
      if (inLog) messages.push_back({static_cast<uint32_t>(std::stoul(m[2])), m[3], m[4]});
    } else if (inLog) {
      messages.back().text += "\n" + line;
    }
  }
  return messages;
}

TEST_F(Show, JournalIsOneMessageBelow255CharactersElseSegments) {
  uint32_t value = 5, index[1] = {0};
  MdbCrb record{};
  record.pIndex = index;
  record.pValueBuf = &value;
  record.valueLen = 4;
  std::string name;
  MdbDictRow row{};  // a row of a chosen name around the binding of shw:count
  row.list = &gBindings[0];
  auto log = [&](size_t nameLength, uint32_t request) {
    name.assign(nameLength, 'n');
    row.name = name.c_str();
    return journal([&] { mdbInfoLog(request, &row, &record, 0); });
  };
  EXPECT_TRUE(log(10, MDB_GET).empty());  // debugMask 0
  gMdbInfo.debugMask = 1;
  EXPECT_TRUE(log(10, 7).empty());

  const std::string head = "Request:MDB_GET  OID:1.3.6.1.4.1.47391.2.60.1\t ObjName:";
  const std::string tail = "  pIndex:{ }  value:Integer-{5,0x00000005}\n  rc:0";
  size_t fits = 254 - head.size() - tail.size() - 2;  // with "\r\n", 254 in all
  std::vector<LogMessage> one = log(fits, MDB_GET);
  ASSERT_EQ(1u, one.size());
  EXPECT_EQ(81920001u, one[0].moduleId);
  EXPECT_EQ("debug", one[0].severity);
  EXPECT_EQ(head + name + tail, one[0].text);

  std::vector<LogMessage> four = log(fits + 1, MDB_SET);
  ASSERT_EQ(4u, four.size());
  EXPECT_EQ("Request:MDB_SET  OID:1.3.6.1.4.1.47391.2.60.1  ObjName:" + name, four[0].text);
  EXPECT_EQ("  pIndex:{ }", four[1].text);
  EXPECT_EQ("  value:Integer-{5,0x00000005}", four[2].text);
  EXPECT_EQ("  rc:0", four[3].text);
  for (size_t i = 0; i < 4; i++) {
    EXPECT_EQ(i == 0 ? 81920001u : 81920000u, four[i].moduleId);
    EXPECT_EQ("notice", four[i].severity);
  }

  // From many tasks at once, every message whole.
  name = "c";
  row.name = name.c_str();
  std::vector<LogMessage> many = journal([&] {
    std::vector<std::thread> tasks;
    for (int t = 0; t < 8; t++)
      tasks.emplace_back([&] {
        for (int i = 0; i < 50; i++) mdbInfoLog(MDB_GET_NEXT, &row, &record, MDB_ERR_NO_NEXT_INSTANCE);
      });
    for (std::thread& task : tasks) task.join();
  });
  ASSERT_EQ(400u, many.size());
  for (const LogMessage& m : many)
    ASSERT_EQ(
        "Request:MDB_GET_NEXT  OID:1.3.6.1.4.1.47391.2.60.1\t ObjName:c  pIndex:{ }  "
        "value:Integer-{5,0x00000005}\n  rc:81920012",
        m.text);
}

TEST_F(Show, JournalOfWritesCutsLongValuesAndTakesRemove) {
  gMdbInfo.debugMask = 1;
  std::string text(300, 'a');
  uint32_t index[1] = {1};
  std::vector<LogMessage> set = journal([&] { mdbSetApi("shw:ifDescr", index, 1, text.data(), 300, nullptr, 1); });
  // The validate pass and the set, each: head, index, 7 pieces of value, rc.
  ASSERT_EQ(20u, set.size());
  EXPECT_EQ("Request:MDB_VALIDATE  OID:1.3.6.1.4.1.47391.2.60.5.1.2  ObjName:shw:ifDescr", set[0].text);
  EXPECT_EQ("Request:MDB_SET  OID:1.3.6.1.4.1.47391.2.60.5.1.2  ObjName:shw:ifDescr", set[10].text);
  std::string joined, bytes;
  for (size_t i = 12; i < 19; i++) {
    EXPECT_EQ(i < 18 ? 254u : 150u, set[i].text.size());  // the last one without its "\n"
    joined += set[i].text;
  }
  for (int i = 1; i <= 300; i++) bytes += "0x61" + (i % 16 == 0 ? "[ascii=" + std::string(16, 'a') + "]" : "");
  EXPECT_EQ("  value:OctetString-{" + bytes + "[ascii=aaaaaaaaaaaa]}", joined);

  // mdbRemove passes no value: an empty value text.
  std::vector<LogMessage> removed = journal([&] { mdbRemove("shw:ifDescr", index, 1); });
  ASSERT_EQ(1u, removed.size());
  EXPECT_EQ("Request:MDB_FORCE_SET  OID:1.3.6.1.4.1.47391.2.60.5.1.2\t ObjName:shw:ifDescr  pIndex:{ }  value:  rc:0",
            removed[0].text);
}

TEST_F(Show, ValueFormsByType) {
  static const char* const names[] = {"t:0", "t:1", "t:2",  "t:3",  "t:4",  "t:5",  "t:6", "t:7",
                                      "t:8", "t:9", "t:10", "t:11", "t:12", "t:13", "t:99"};
  static MdbEntryDesc entry = makeEntry({1, 3, 6, 1, 61}, 0, 1);
  static MdbObjectDesc objects[15];
  static MdbObjectBinding bindings[16];
  for (uint16_t i = 0; i < 15; i++) {
    objects[i] = makeObject(i, static_cast<uint16_t>(i + 1), MDB_ACCESS_RO, showHandler, names[i], 0, 0, nullptr,
                            i < 14 ? i : 99);
    bindings[i] = {&entry, &objects[i]};
  }
  ASSERT_EQ(0, mdbModuleRegister("t", bindings));

  const uint8_t bridge[8] = {0x80, 0x00, 0x00, 0x0e, 0x5e, 0xab, 0xcd, 0xef}, ip[4] = {192, 168, 1, 20};
  const uint32_t arcs[4] = {1, 3, 6, 0}, words[2] = {1, 2}, all = 0xFFFFFFFFu, ticks = 100 * (86400 + 3661) + 7;
  const char octets[] = "ABCDEFGHIJKLMNOP\x01\x7f z";
  struct Case {
    int object;
    const void* value;
    uint32_t length;
    const char* form;
  } cases[] = {
      {1, &all, 4, "Integer-{4294967295,0xffffffff}\n"},
      {2, octets, 20,
       "OctetString-{0x410x420x430x440x450x460x470x480x490x4a0x4b0x4c0x4d0x4e0x4f0x50"
       "[ascii=ABCDEFGHIJKLMNOP]0x010x7f0x200x7a[ascii=.. z]}\n"},
      {2, octets, 0, "OctetString-{}\n"},
      {3, arcs, 16, "ObjectIdentifier-{1.3.6.0}\n"},
      {4, ip, 4, "IPAddress-{192.168.1.20}\n"},
      {5, bridge + 2, 6, "MACAddress-{00:0e:5e:ab:cd:ef}\n"},
      {6, &all, 4, "Counter-{4294967295}\n"},
      {7, &all, 2, "Guage-{65535}\n"},  // a short value reads as far as it goes
      {8, &ticks, 4, "TimeTicks-{1 days, 01:01:01.07}\n"},
      {11, bridge, 8, "BridgeId-{8000-00:0e:5e:ab:cd:ef}\n"},
      {12, words, 8, "Counter64-{4294967298}\n"},
      {13, words, 4, "RowStatus-{1,0x00000001}\n"},
      {0, &all, 4, "Unknown-{Type 0}\n"},
      {14, &all, 4, "Unknown-{Type 99}\n"},
  };
  const uint32_t index[2] = {3, 4};
  for (const Case& c : cases) {
    EXPECT_EQ(
        std::string("\r\n") + names[c.object] + "-[1.3.6.1.61." + std::to_string(c.object + 1) + ".3.4]-" + c.form,
        fdOutput([&](int fd) { EXPECT_EQ(0, mdbObjectValueShow(fd, names[c.object], index, 2, c.value, c.length)); }));
  }
  // A null value or an unknown object: an error, printed only with debugMask set.
  EXPECT_EQ("", fdOutput([&](int fd) { EXPECT_EQ(-1, mdbObjectValueShow(fd, "t:none", index, 2, &all, 4)); }));
  gMdbInfo.debugMask = 1;
  std::string line = captureStdout(
      [&] { EXPECT_EQ(static_cast<int>(MDB_ERR_GEN_ERROR), mdbObjectValueShow(-1, "t:1", index, 2, nullptr, 4)); });
  EXPECT_TRUE(
      std::regex_match(line, std::regex("mdbObjectValueShow:[0-9]+ Object t:1 invalid pointer to dpyInfo\n\r")));
  EXPECT_EQ("Error-{mdbObjInfoGet 04e20002}\n",
            fdOutput([&](int fd) { EXPECT_EQ(-1, mdbObjectValueShow(fd, nullptr, index, 2, &all, 4)); }));

  // The helpers never pass their bounds: whole arcs only.
  char text[32] = {};
  EXPECT_EQ(21u, oid2StrWithSuffix(&all, 1, 4294967295u, text, 30));
  EXPECT_EQ(10u, oid2StrWithSuffix(&all, 1, 4294967295u, text, 20));
  EXPECT_STREQ("01:02", macToStr(reinterpret_cast<const uint8_t*>("\x01\x02\x03\x04\x05\x06"), text, 6));
}

TEST_F(Show, ModuleAndObjectShows) {
  EXPECT_EQ(kModuleShown, fdOutput([](int fd) { EXPECT_EQ(0, mdbModuleShow(fd, "shw")); }));
  EXPECT_EQ(5u, stat(MDB_STAT_mdbObjectShowCalled));  // all but the secret
  EXPECT_EQ(kModuleShown, captureStdout([] { EXPECT_EQ(0, mdbModuleShow(-1, "shw")); }));
  EXPECT_EQ("\r\nError-{mdbModuleShow-invalid nope MDB module name}\n",
            fdOutput([](int fd) { EXPECT_EQ(-1, mdbModuleShow(fd, "nope")); }));

  EXPECT_EQ(kCountShown, fdOutput([](int fd) { EXPECT_EQ(0, mdbModuleNodeShow(fd, "shw", "count")); }));
  EXPECT_EQ("", fdOutput([](int fd) { EXPECT_EQ(0, mdbModuleNodeShow(fd, "shw", "secret")); }));
  EXPECT_EQ("", fdOutput([](int fd) { EXPECT_EQ(0, mdbModuleNodeShow(fd, "shw", "nothing")); }));
  EXPECT_EQ("\r\nError-{mdbModuleShow-invalid nope:count MDB module name}\n",
            fdOutput([](int fd) { EXPECT_EQ(-1, mdbModuleNodeShow(fd, "nope", "count")); }));
  EXPECT_EQ(-1, mdbModuleNodeShow(-1, "shw", "count"));

  // Failed reads.
  auto shown = [](const char* name, uint32_t walk, int rc) {
    return fdOutput([&](int fd) { EXPECT_EQ(rc, mdbObjectAllShow(fd, name, walk)); });
  };
  EXPECT_EQ("", shown("shw:emptyValue", 1, 0));
  EXPECT_EQ("shw:none-\r\nError-{mdbGetApi 04e2000b}\n", shown("shw:none", 0, -1));
  EXPECT_EQ("(null)-\r\nError-{mdbGetApi 04e20002}\n", shown(nullptr, 0, -1));
  gReadError = MDB_ERR_WRONG_LENGTH;
  EXPECT_EQ("shw:count-\r\nError-{mdbGetApi Buffer too Small}\n", shown("shw:count", 0, -1));
  EXPECT_EQ(kIfIndex1 + "shw:ifIndex-Error-{mdbGetApi Buffer too Small}\n", shown("shw:ifIndex", 1, 0));
  gReadError = MDB_ERR_GEN_ERROR;
  EXPECT_EQ("shw:count-\r\nError-{mdbGetApi 04e20002}\n", shown("shw:count", 0, -1));
  EXPECT_EQ(kIfIndex1 + "shw:ifIndex-Error-{mdbGetNext 04e20002}\n", shown("shw:ifIndex", 1, 0));

  // The file of all values, also through the system scalar a client reaches.
  gReadError = 0;
  std::string path = tempPath();
  EXPECT_EQ(0, mdbModuleAllShow(path.c_str()));
  EXPECT_EQ("\r\nModule-{shw} Object Count-{6}\n" + kModuleShown, readFile(path));
  unlink(path.c_str());
  std::vector<uint8_t> holder(4 + path.size());
  uint32_t length = static_cast<uint32_t>(path.size());
  memcpy(holder.data(), &length, 4);
  memcpy(holder.data() + 4, path.data(), path.size());
  MdbOctetValue value{holder.data(), static_cast<uint32_t>(holder.size())};
  EXPECT_EQ(0, mdbScalarGetApi(0, 1, &value));
  EXPECT_EQ("\r\nModule-{shw} Object Count-{6}\n" + kModuleShown, readFile(path));
  unlink(path.c_str());
  EXPECT_EQ(-1, mdbModuleAllShow("/nonexistent/dir/all"));
}

TEST_F(Show, ConsoleShows) {
  static MdbObjectBinding none[] = {{nullptr, nullptr}};
  ASSERT_EQ(0, mdbModuleRegister("none", none));
  std::string list = captureStdout([] { EXPECT_EQ(0, mdbModuleList()); });
  EXPECT_NE(std::string::npos, list.find("Module-{shw} Object Count-{6}\n"));
  EXPECT_NE(std::string::npos, list.find("Module-{none} Object Count-{0}\n"));
  EXPECT_EQ(std::string(42, '-') + "\nTotal  Modules- 2 Objects- 6\n", list.substr(list.size() - 72));

  std::string hash = captureStdout([] { EXPECT_EQ(0, mdbHashShow()); });
  EXPECT_EQ(0u, hash.find("*** MDB+ Module Hash Table ***HashTable @ "));
  EXPECT_NE(std::string::npos, hash.find("\n*** MDB+ Object Hash Table ***HashTable @ "));

  uint32_t index[1] = {9};
  MdbCrb crb{index, 2, 33, nullptr, 4, 0x1F, 0, 0x20030};
  EXPECT_EQ(
      "mdb->pIndex              = 9\nmdb->indexSubIdCount     = 2\nmdb->indexSubIdCountMax  = 33\n"
      "mdb->pValueBuf           = (nil)\nmdb->valueLen            = 0x00000004\n"
      "mdb->localId             = 0x0000001F\nmdb->flags               = 0x00020030\n",
      captureStdout([&] { EXPECT_EQ(0, mdbStructureShow(&crb)); }));
}

std::string pad(const std::string& text, size_t width) {
  return text.size() >= width ? text : text + std::string(width - text.size(), ' ');
}
std::string treeLine(const std::string& name, const std::string& oid, const std::string& access,
                     const std::string& type) {
  return "    " + pad(name, 50) + pad(oid, 40) + pad(access, 10) + pad(type, 25) + "\r\n";
}

TEST_F(Show, TreeFile) {
  // A 16-arc entry under a 69-character row name; names without a colon or
  // longer than their column; access 0; a type past the table; an empty module.
  static const std::string longRow = std::string(60, 'r') + "LongEntry", longName = "odd:" + std::string(60, 'o');
  static MdbEntryDesc entry =
      named(makeEntry({1, 3, 6, 1, 4, 1, 47391, 2, 60, 7, 1, 2, 3, 4, 5, 4294967295u}, 1, 1), longRow.c_str());
  static MdbObjectDesc objects[] = {makeObject(0, 65535, MDB_ACCESS_RO_INDEX, showHandler, longName.c_str()),
                                    makeObject(1, 2, 0, showHandler, "bare", 0, 0, nullptr, 99)};
  static MdbObjectBinding odd[] = {{&entry, &objects[0]}, {&entry, &objects[1]}, {nullptr, nullptr}};
  static MdbObjectBinding none[] = {{nullptr, nullptr}};
  ASSERT_EQ(0, mdbModuleRegister("odd", odd));
  ASSERT_EQ(0, mdbModuleRegister("none", none));

  std::string path = tempPath();
  MdbOctetValue value{reinterpret_cast<uint8_t*>(path.data()), static_cast<uint32_t>(path.size())};
  ASSERT_EQ(0, mdbScalarGetApi(0, 0, &value));
  std::string tree = readFile(path);
  unlink(path.c_str());
  const std::string p = "1.3.6.1.4.1.47391.2.60", oddOid = p + ".7.1.2.3.4.5.4294967295";
  const std::string shw =
      "shw\r\n" + treeLine("count", p + ".1", "rw", "INTEGER") + treeLine("text", p + ".2", "r", "OCTET_STRING") +
      treeLine("secret", p + ".3", "u", "INTEGER") + "  shwIfEntry\r\n" +
      treeLine("ifIndex", p + ".5.1.1", "r", "INTEGER") + treeLine("ifDescr", p + ".5.1.2", "rc", "OCTET_STRING") +
      "  shwEmptyEntry\r\n" + treeLine("emptyValue", p + ".6.1.1", "r", "INTEGER");
  // A row name too long to remember comes again before each of its objects.
  const std::string oddTree = "odd\r\n  " + longRow + "\r\n" +
                              treeLine(std::string(60, 'o'), oddOid + ".65535", "r", "INTEGER") + "  " + longRow +
                              "\r\n" + treeLine("Unknown", oddOid + ".2", "n", "Unknown");
  EXPECT_EQ(0u, tree.find("export mib:\r\n"));
  EXPECT_NE(std::string::npos, tree.find(shw));
  EXPECT_NE(std::string::npos, tree.find(oddTree));
  EXPECT_EQ(13 + shw.size() + oddTree.size(), tree.size());
  EXPECT_EQ(-1, mdbMibTreeExport("/nonexistent/dir/tree"));
  EXPECT_EQ(-1, mdbMibTreeExport(nullptr));
}

TEST_F(Show, NameCheckByKind) {
  static const std::string row122 = std::string(117, 'w') + "Entry", row123 = row122 + "y";
  static MdbEntryDesc entries[] = {named(makeEntry({1, 3, 6, 1, 62}, 1, 1), "ethIfEntry"),
                                   named(makeEntry({1, 3, 6, 1, 63}, 1, 1), row122.c_str()),
                                   named(makeEntry({1, 3, 6, 1, 64}, 1, 1), row123.c_str())};
  static MdbObjectDesc objects[] = {makeObject(0, 1, MDB_ACCESS_RO, showHandler, "ethif:ethIfType"),
                                    makeObject(0, 1, MDB_ACCESS_RO, showHandler, "vlan:a"),
                                    makeObject(0, 1, MDB_ACCESS_RO, showHandler, "vlan:b")};
  static MdbObjectBinding eth[] = {{&entries[0], &objects[0]}, {nullptr, nullptr}};
  static MdbObjectBinding vlan[] = {{&entries[1], &objects[1]}, {&entries[2], &objects[2]}, {nullptr, nullptr}};
  ASSERT_EQ(0, mdbModuleRegister("ethif", eth));
  ASSERT_EQ(0, mdbModuleRegister("vlan", vlan));

  EXPECT_EQ(0, mdbObjNameCheck("ethif", 1));
  EXPECT_EQ(-1, mdbObjNameCheck("ethIf", 1));
  EXPECT_EQ(0, mdbObjNameCheck("ethif:ethIfType", 3));
  EXPECT_EQ(-1, mdbObjNameCheck("ethif", 3));
  for (const char* found : {"ethIfEntry", "ethif:ethIfEntry", "shw:shwIfEntry"})
    EXPECT_EQ(0, mdbObjNameCheck(found, 2));
  for (const char* missing : {"vlan:ethIfEntry", "nope:ethIfEntry", "ethif:", "ethIf"})
    EXPECT_EQ(-1, mdbObjNameCheck(missing, 2));
  // "module:rowName" must be shorter than 128 characters; a bare name has no limit.
  EXPECT_EQ(0, mdbObjNameCheck(("vlan:" + row122).c_str(), 2));
  EXPECT_EQ(-1, mdbObjNameCheck(("vlan:" + row123).c_str(), 2));
  EXPECT_EQ(0, mdbObjNameCheck(row123.c_str(), 2));
  for (uint32_t kind : {0u, 1u, 2u, 3u, 4u}) EXPECT_EQ(-1, mdbObjNameCheck(nullptr, kind));
  EXPECT_EQ(-1, mdbObjNameCheck("ethif", 4));
}

}  // namespace
