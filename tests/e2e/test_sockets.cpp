// End to end: a daemon with the test module "e2e", driven through its 25
// command sockets by the client library, raw frames and mdbctl.
#include "daemon.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "mdb/mdb_errors.h"
#include "platform/icm.h"

using namespace mdbtest;

namespace {

class Sockets : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(daemon.start(MDB_TESTD_PATH));
    client = mdbClientOpen(daemon.socketPath(24).c_str());
    ASSERT_NE(nullptr, client);
  }
  void TearDown() override {
    mdbClientClose(client);
    daemon.stop();
  }

  uint32_t getU32(const char* name, std::vector<uint32_t> index, uint32_t* value) {
    uint32_t length = 4;
    return mdbClientGetApi(client, name, index.data(), static_cast<uint32_t>(index.size()), value, &length, nullptr);
  }

  TestDaemon daemon;
  MdbClient* client = nullptr;
};

TEST_F(Sockets, EveryCommandOfTheMap) {
  const uint32_t zero[] = {0};
  uint32_t value = 0, length = 4;
  // 6 get, 5 set (validate then set), 3 validate, 2 commit, 4 nvmset.
  ASSERT_EQ(0u, mdbClientGetApi(client, "e2e:int", zero, 1, &value, &length, nullptr));
  EXPECT_EQ(7u, value);
  EXPECT_EQ(4u, length);
  value = 42;
  EXPECT_EQ(0u, mdbClientSetApi(client, "e2e:int", zero, 1, &value, 4, "cli", 1));
  value = 43;
  EXPECT_EQ(0u, mdbClientValidate(client, "e2e:int", zero, 1, &value, 4, 0));
  EXPECT_EQ(0u, mdbClientSetApi(client, "e2e:int", zero, 1, &value, 4, nullptr, 0));  // validation only
  EXPECT_EQ(0u, getU32("e2e:int", {0}, &value));
  EXPECT_EQ(42u, value);
  value = 44;
  EXPECT_EQ(0u, mdbClientCommit(client, "e2e:int", zero, 1, &value, 4, 0, nullptr));
  EXPECT_EQ(0u, getU32("e2e:alias", {0}, &value));
  EXPECT_EQ(44u, value);
  value = 45;
  EXPECT_EQ(0u, mdbClientNvmSet(client, "e2e:int", zero, 1, &value, 4));
  EXPECT_EQ(0u, getU32("e2e:int", {0}, &value));
  EXPECT_EQ(45u, value);

  // 1 getnext: from an empty index to the first row, then on.
  uint32_t index[ICM_MAX_INDEX] = {0};
  uint32_t count = 0;
  length = 4;
  ASSERT_EQ(0u, mdbClientGetNext(client, "e2e:rowValue", index, ICM_MAX_INDEX, &count, &value, &length, nullptr));
  EXPECT_EQ(1u, count);
  EXPECT_EQ(1u, index[0]);
  EXPECT_EQ(10u, value);
  index[0] = 64;
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE,
            mdbClientGetNext(client, "e2e:rowValue", index, ICM_MAX_INDEX, &count, &value, &length, nullptr));

  // 7 info, 8 next name, 9 name by OID, 10 module.
  MdbObjInfo info;
  ASSERT_EQ(0u, mdbClientObjInfoGet(client, "e2e:alias", 0x3FF, &info));
  EXPECT_EQ(1u, info.subId);  // the alternate's descriptor
  EXPECT_EQ(11u, info.oidLen);
  EXPECT_EQ(9990u, info.oid[8]);
  ASSERT_EQ(0u, mdbClientObjInfoGet(client, "e2e:nameValue", MDB_INFO_INDEXNAMES | MDB_INFO_INDEXMAX, &info));
  EXPECT_STREQ("e2e:nameKey", info.indexNames[0]);
  EXPECT_EQ(33u, info.indexCountMax);
  EXPECT_EQ(MDB_ERR_GEN_ERROR, mdbClientObjInfoGet(client, "e2e:none", 0x3FF, &info));
  char name[256];
  ASSERT_EQ(0u, mdbClientObjectNameNextGet(client, "e2e:alias", name, sizeof name));
  EXPECT_STREQ("e2e:rowIndex", name);  // e2e:hidden is not accessible
  EXPECT_EQ(MDB_ERR_NO_SUCH_OBJECT, mdbClientObjectNameNextGet(client, "e2e:nameValue", name, sizeof name));
  const uint32_t oid[] = {1, 3, 6, 1, 4, 1, 47391, 2, 9990, 3, 1, 2, 4, 98, 101, 116, 97};
  uint32_t oidLen = 0, indexMax = 0, type = 0;
  ASSERT_EQ(0u, mdbClientObjNameGet(client, oid, 17, &oidLen, &indexMax, &type, name, sizeof name));
  EXPECT_STREQ("e2e:nameValue", name);
  EXPECT_EQ(12u, oidLen);
  EXPECT_EQ(33u, indexMax);
  EXPECT_EQ(MDB_TYPE_INTEGER, type);
  EXPECT_EQ(0xFFFFFFFFu, mdbClientObjNameGet(client, oid, 6, &oidLen, &indexMax, &type, name, sizeof name));
  MdbClientModule module;
  ASSERT_EQ(0u, mdbClientModuleGet(client, "e2e", &module));
  EXPECT_STREQ("e2e", module.name);
  EXPECT_EQ(77u, module.registrationId);
  uint32_t before = module.lastChange;
  usleep(30000);
  value = 46;
  ASSERT_EQ(0u, mdbClientSetApi(client, "e2e:int", zero, 1, &value, 4, nullptr, 1));
  ASSERT_EQ(0u, mdbClientModuleGet(client, "e2e", &module));
  EXPECT_GE(module.lastChange, before + 2);  // centiseconds of uptime at the last write
  EXPECT_STREQ("e2e:int", module.firstObject);
  EXPECT_EQ(0xFFFFFFFFu, mdbClientModuleGet(client, "nope", &module));

  // 11 SNMP registration, 12 system state, 13-15 system scalars.
  EXPECT_EQ(0u, mdbClientSnmpInit(client));
  EXPECT_EQ(0u, mdbClientSysStateSet(client, 6));
  uint32_t state = 0;
  length = 4;
  EXPECT_EQ(0u, mdbClientScalarGetApi(client, 0, 4, nullptr, 0, &state, &length));
  EXPECT_EQ(2u, state);
  state = 1;
  EXPECT_EQ(0u, mdbClientScalarSetApi(client, 0, 4, &state, 4, nullptr, nullptr));
  state = 3;
  EXPECT_EQ(0u, mdbClientScalarSyncApi(client, 0, 4, &state, 4, nullptr, nullptr));
  length = 4;
  EXPECT_EQ(0u, mdbClientScalarGetApi(client, 0, 4, nullptr, 0, &state, &length));
  EXPECT_EQ(3u, state);
  char version[64];
  length = sizeof version;
  ASSERT_EQ(0u, mdbClientScalarGetApi(client, 0, 5, nullptr, 0, version, &length));
  EXPECT_EQ("MDB_VL3.00.00.00", std::string(version, length));
  EXPECT_EQ(0xFFFFFFFFu, mdbClientScalarGetApi(client, 0, 3, nullptr, 0, nullptr, nullptr));
  EXPECT_EQ(0u, mdbClientScalarSetApi(client, 0, 3, nullptr, 0, nullptr, nullptr));
}

TEST_F(Sockets, ErrorCodesPassThrough) {
  const uint32_t zero[] = {0};
  int32_t bad = 101;
  EXPECT_EQ(MDB_ERR_INVALID_RANGE, mdbClientSetApi(client, "e2e:int", zero, 1, &bad, 4, nullptr, 1));
  EXPECT_EQ(MDB_ERR_INVALID_LENGTH, mdbClientSetApi(client, "e2e:int", zero, 1, &bad, 2, nullptr, 1));
  EXPECT_EQ(MDB_ERR_NOT_WRITABLE, mdbClientSetApi(client, "e2e:counter", zero, 1, &bad, 4, nullptr, 1));
  EXPECT_EQ(MDB_ERR_NO_SUCH_OBJECT, mdbClientSetApi(client, "e2e:none", zero, 1, &bad, 4, nullptr, 1));
  EXPECT_EQ(MDB_ERR_NULL_BUFFER, mdbClientSetApi(client, "e2e:int", zero, 1, nullptr, 0, nullptr, 1));
  uint32_t value;
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, getU32("e2e:rowValue", {65}, &value));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, getU32("e2e:rowValue", {}, &value));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, getU32("e2e:int", {1}, &value));
  // An index of 257 sub-ids reaches the dispatcher, which refuses it.
  EXPECT_EQ(MDB_ERR_INDEX_RANGE, getU32("e2e:rowValue", std::vector<uint32_t>(257, 1), &value));
  EXPECT_EQ(MDB_ERR_NO_SUCH_INSTANCE, getU32("e2e:rowValue", std::vector<uint32_t>(256, 1), &value));
  // Larger than the protocol carries: refused by the client itself.
  EXPECT_EQ(MDB_CLIENT_ERR_ARGS, getU32("e2e:rowValue", std::vector<uint32_t>(ICM_MAX_INDEX + 1, 1), &value));
  std::string longName(300, 'x');
  EXPECT_EQ(MDB_CLIENT_ERR_ARGS, getU32(longName.c_str(), {0}, &value));
  // A string value cut to the reader's capacity.
  const char text[] = "abcdefgh";
  EXPECT_EQ(0u, mdbClientSetApi(client, "e2e:text", zero, 1, text, 8, nullptr, 1));
  char out[4];
  uint32_t length = sizeof out;
  EXPECT_EQ(0u, mdbClientGetApi(client, "e2e:text", zero, 1, out, &length, nullptr));
  EXPECT_EQ("abcd", std::string(out, length));
}

struct Collected {
  std::vector<std::vector<uint32_t>> indexes;
  std::vector<uint32_t> values;
  uint32_t lastRc = 0;
};

int collect(void* arg, uint32_t rc, const uint32_t* index, uint32_t count, const uint8_t* value, uint32_t length) {
  auto* c = static_cast<Collected*>(arg);
  c->lastRc = rc;
  if (rc != 0) return 0;
  c->indexes.emplace_back(index, index + count);
  uint32_t v = 0;
  memcpy(&v, value, length < 4 ? length : 4);
  c->values.push_back(v);
  return 0;
}

TEST_F(Sockets, ChainedWalkEqualsSingleSteps) {
  for (const char* object : {"e2e:rowValue", "e2e:nameValue", "e2e:int"}) {
    // One GetNext round trip per instance.
    Collected single;
    uint32_t index[ICM_MAX_INDEX] = {0};
    uint32_t count = 0, value = 0, length = 4, rc;
    while ((rc = mdbClientGetNext(client, object, index, ICM_MAX_INDEX, &count, &value, &(length = 4), nullptr)) ==
           0) {
      single.indexes.emplace_back(index, index + count);
      single.values.push_back(value);
      ASSERT_LT(single.values.size(), 100u);
    }
    EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, rc);

    // Chains of 5: each starts where the last ended, the last reports the end.
    Collected chained;
    count = 0;
    uint32_t steps = 0, rounds = 0;
    do {
      rc = mdbClientGetNextChain(client, object, index, ICM_MAX_INDEX, &count, 5, 4, nullptr, collect, &chained,
                                 &steps);
      rounds++;
    } while (rc == 0 && steps == 5);
    EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, rc);
    EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, chained.lastRc);
    EXPECT_EQ(single.indexes, chained.indexes) << object;
    EXPECT_EQ(single.values, chained.values) << object;
    EXPECT_EQ(single.values.size() / 5 + 1, rounds) << object;
    for (size_t i = 1; i < chained.indexes.size(); i++) EXPECT_LT(chained.indexes[i - 1], chained.indexes[i]);
  }
  // 64 rows in one round trip, and an unknown object ends the chain at once.
  Collected all;
  uint32_t index[ICM_MAX_INDEX] = {0}, count = 0, steps = 0;
  EXPECT_EQ(MDB_ERR_NO_NEXT_INSTANCE, mdbClientGetNextChain(client, "e2e:rowIndex", index, ICM_MAX_INDEX, &count,
                                                            256, 4, nullptr, collect, &all, &steps));
  EXPECT_EQ(65u, steps);
  EXPECT_EQ(64u, all.values.size());
  count = 0;
  EXPECT_EQ(MDB_ERR_NO_SUCH_OBJECT, mdbClientGetNextChain(client, "e2e:none", index, ICM_MAX_INDEX, &count, 10, 4,
                                                          nullptr, collect, &all, &steps));
  EXPECT_EQ(1u, steps);
}

TEST_F(Sockets, ManyClientsOnAllSockets) {
  // 50 clients over the 25 sockets, each writing and reading back its own row.
  constexpr int kClients = 50;
  constexpr int kRounds = 100;
  std::atomic<int> failures{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kClients; t++) {
    threads.emplace_back([&, t] {
      MdbClient* c = mdbClientOpen(daemon.socketPath(static_cast<uint32_t>(t % MDB_CMD_SOCKETS)).c_str());
      if (c == nullptr) {
        failures++;
        return;
      }
      uint32_t row[] = {static_cast<uint32_t>(t + 1)};
      for (int i = 0; i < kRounds; i++) {
        uint32_t v = static_cast<uint32_t>(t * 1000 + i), back = 0, length = 4;
        if (mdbClientSetApi(c, "e2e:rowValue", row, 1, &v, 4, nullptr, 1) != 0 ||
            mdbClientGetApi(c, "e2e:rowValue", row, 1, &back, &length, nullptr) != 0 || back != v)
          failures++;
      }
      mdbClientClose(c);
    });
  }
  for (auto& t : threads) t.join();
  EXPECT_EQ(0, failures.load());
  uint32_t value = 0;
  EXPECT_EQ(0u, getU32("e2e:rowValue", {50}, &value));
  EXPECT_EQ(49u * 1000 + kRounds - 1, value);
}

// ---------------------------------------------------------------- raw frames
class RawConnection {
 public:
  explicit RawConnection(const std::string& path) {
    fd = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un a{};
    a.sun_family = AF_UNIX;
    strncpy(a.sun_path, path.c_str(), sizeof a.sun_path - 1);
    if (connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0) {
      close(fd);
      fd = -1;
    }
    timeval tv{5, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &tv, sizeof tv);
  }
  ~RawConnection() {
    if (fd >= 0) close(fd);
  }
  bool send(const std::vector<uint8_t>& bytes, int flags = 0) {
    return ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL | flags) == static_cast<ssize_t>(bytes.size());
  }
  // The next reply's header status and its arguments; -1 if the connection closed.
  int64_t reply(IcmRequest* decoded = nullptr) {
    uint8_t header[ICM_HEADER_SIZE];
    if (!readAll(header, sizeof header)) return -1;
    uint32_t length = icmLoad32(header);
    body.assign(header, header + ICM_HEADER_SIZE);
    body.resize(length);
    if (length > ICM_HEADER_SIZE && !readAll(body.data() + ICM_HEADER_SIZE, length - ICM_HEADER_SIZE)) return -1;
    static IcmRequest scratch;
    IcmRequest* out = decoded != nullptr ? decoded : &scratch;
    uint32_t status = 0;
    icmDecode(body.data(), length, out, &status, ICM_MAX_REPLY_ARGS);
    return status;
  }
  bool closedByPeer() {
    uint8_t b;
    return recv(fd, &b, 1, 0) == 0;
  }
  int fd;
  std::vector<uint8_t> body;

 private:
  bool readAll(uint8_t* p, size_t n) {
    while (n > 0) {
      ssize_t r = recv(fd, p, n, 0);
      if (r <= 0) return false;
      p += r;
      n -= static_cast<size_t>(r);
    }
    return true;
  }
};

// A get request for e2e:int.0, with arguments that may be overridden.
std::vector<uint8_t> getFrame(uint16_t command = MDB_CMD_GET_API, uint32_t sequence = 1, bool wrongType = false) {
  std::vector<uint8_t> frame(ICM_MAX_REQUEST);
  IcmWriter w;
  icmBegin(&w, frame.data(), static_cast<uint32_t>(frame.size()));
  icmPutString(&w, "e2e:int");
  const uint32_t zero = 0;
  icmPutU32Array(&w, &zero, 1);
  if (wrongType) icmPutString(&w, "4");
  else icmPutU32(&w, 4);
  icmPutNone(&w);
  frame.resize(icmEnd(&w, command, sequence, 0));
  return frame;
}

TEST_F(Sockets, MalformedFramesAreAnsweredNotObeyed) {
  {
    // Pipelined requests, answered in order, and the protocol's refusals on
    // one connection that stays usable.
    RawConnection raw(daemon.socketPath(3));
    std::vector<uint8_t> batch;
    for (uint32_t seq : {11u, 12u, 13u}) {
      auto f = getFrame(MDB_CMD_GET_API, seq);
      batch.insert(batch.end(), f.begin(), f.end());
    }
    ASSERT_TRUE(raw.send(batch));
    for (uint32_t seq : {11u, 12u, 13u}) {
      IcmRequest r;
      ASSERT_EQ(0, raw.reply(&r));
      EXPECT_EQ(seq, r.sequence);
      uint32_t rc = 1;
      EXPECT_TRUE(icmArgU32(&r, 0, &rc));
      EXPECT_EQ(0u, rc);
    }
    ASSERT_TRUE(raw.send(getFrame(99)));
    EXPECT_EQ(ICM_STATUS_UNKNOWN_COMMAND, raw.reply());
    ASSERT_TRUE(raw.send(getFrame(0)));  // row 0 has no function
    EXPECT_EQ(ICM_STATUS_UNKNOWN_COMMAND, raw.reply());
    ASSERT_TRUE(raw.send(getFrame(MDB_CMD_GET_API, 2, true)));
    EXPECT_EQ(ICM_STATUS_BAD_ARGUMENTS, raw.reply());
    auto badVersion = getFrame();
    icmStore16(badVersion.data() + 4, 9);
    ASSERT_TRUE(raw.send(badVersion));
    EXPECT_EQ(ICM_STATUS_BAD_VERSION, raw.reply());
    auto badArg = getFrame();
    badArg[ICM_HEADER_SIZE] = 77;  // no such argument type
    ASSERT_TRUE(raw.send(badArg));
    EXPECT_EQ(ICM_STATUS_BAD_FRAME, raw.reply());
    auto overrun = getFrame();
    icmStore32(overrun.data() + ICM_HEADER_SIZE + 4, 1000);  // an argument longer than its frame
    ASSERT_TRUE(raw.send(overrun));
    EXPECT_EQ(ICM_STATUS_BAD_FRAME, raw.reply());
    // An index beyond what the protocol carries.
    std::vector<uint8_t> frame(ICM_MAX_REQUEST);
    IcmWriter w;
    icmBegin(&w, frame.data(), ICM_MAX_REQUEST);
    icmPutString(&w, "e2e:int");
    std::vector<uint32_t> huge(ICM_MAX_INDEX + 1, 1);
    icmPutU32Array(&w, huge.data(), static_cast<uint32_t>(huge.size()));
    icmPutU32(&w, 4);
    icmPutNone(&w);
    frame.resize(icmEnd(&w, MDB_CMD_GET_API, 3, 0));
    ASSERT_TRUE(raw.send(frame));
    EXPECT_EQ(ICM_STATUS_BAD_ARGUMENTS, raw.reply());
    ASSERT_TRUE(raw.send(getFrame()));
    EXPECT_EQ(0, raw.reply());
  }
  {
    // A frame announced above the maximum: refused, then the connection closes.
    RawConnection raw(daemon.socketPath(4));
    auto f = getFrame();
    icmStore32(f.data(), ICM_MAX_REQUEST + 1);
    ASSERT_TRUE(raw.send(f));
    EXPECT_EQ(ICM_STATUS_TOO_BIG, raw.reply());
    EXPECT_TRUE(raw.closedByPeer());
  }
  {
    // A length shorter than a header cannot be followed either.
    RawConnection raw(daemon.socketPath(5));
    std::vector<uint8_t> f(ICM_HEADER_SIZE, 0);
    icmStore32(f.data(), 3);
    ASSERT_TRUE(raw.send(f));
    EXPECT_EQ(ICM_STATUS_BAD_FRAME, raw.reply());
    EXPECT_TRUE(raw.closedByPeer());
  }
  {
    // Half a frame held open does not stop the others on the same task; a
    // frame cut off by a closing client is dropped.
    RawConnection slow(daemon.socketPath(6));
    auto f = getFrame();
    ASSERT_TRUE(slow.send(std::vector<uint8_t>(f.begin(), f.begin() + 20)));
    MdbClient* other = mdbClientOpen(daemon.socketPath(6).c_str());
    ASSERT_NE(nullptr, other);
    uint32_t value = 0, length = 4;
    const uint32_t zero[] = {0};
    EXPECT_EQ(0u, mdbClientGetApi(other, "e2e:int", zero, 1, &value, &length, nullptr));
    ASSERT_TRUE(slow.send(std::vector<uint8_t>(f.begin() + 20, f.end())));
    EXPECT_EQ(0, slow.reply());  // the rest arrives: answered
    mdbClientClose(other);
    RawConnection cut(daemon.socketPath(6));
    ASSERT_TRUE(cut.send(std::vector<uint8_t>(f.begin(), f.end() - 4)));
  }
  {
    // Garbage bytes, and a client that sends and never reads its replies.
    RawConnection junk(daemon.socketPath(7));
    std::vector<uint8_t> noise(5000);
    for (size_t i = 0; i < noise.size(); i++) noise[i] = static_cast<uint8_t>(i * 7919u);
    junk.send(noise, MSG_DONTWAIT);
    RawConnection deaf(daemon.socketPath(8));
    std::vector<uint8_t> many;
    auto f = getFrame();
    for (int i = 0; i < 400; i++) many.insert(many.end(), f.begin(), f.end());
    for (int i = 0; i < 20; i++) deaf.send(many, MSG_DONTWAIT);  // until its buffers are full
  }
  EXPECT_TRUE(daemon.alive());
  uint32_t value = 0;
  EXPECT_EQ(0u, getU32("e2e:int", {0}, &value));
  EXPECT_EQ(7u, value);
}

TEST(SocketFiles, StaleFilesReplacedAndModeSet) {
  char dir[] = "/tmp/mdbtest-stale-XXXXXX";
  ASSERT_NE(nullptr, mkdtemp(dir));
  std::string stale = std::string(dir) + "/mdbcmd-w3.socket";
  FILE* f = fopen(stale.c_str(), "w");
  ASSERT_NE(nullptr, f);
  fclose(f);
  setenv("MDB_RUNDIR", dir, 1);
  TestDaemon d;
  pid_t pid = fork();
  if (pid == 0) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    execl(MDB_TESTD_PATH, MDB_TESTD_PATH, nullptr);
    _exit(127);
  }
  d.pid = pid;
  d.runDir = dir;
  MdbClient* c = nullptr;
  for (int i = 0; i < 500 && c == nullptr; i++) {
    c = mdbClientOpen(d.socketPath(24).c_str());
    if (c == nullptr) usleep(10000);
  }
  unsetenv("MDB_RUNDIR");
  ASSERT_NE(nullptr, c);
  mdbClientClose(c);
  for (uint32_t i = 0; i < MDB_CMD_SOCKETS; i++) {
    struct stat st;
    ASSERT_EQ(0, stat(d.socketPath(i).c_str(), &st)) << i;
    EXPECT_TRUE(S_ISSOCK(st.st_mode)) << i;
    EXPECT_EQ(0660u, st.st_mode & 0777) << i;
  }
  c = mdbClientOpen(stale.c_str());
  EXPECT_NE(nullptr, c);
  mdbClientClose(c);
}

}  // namespace
