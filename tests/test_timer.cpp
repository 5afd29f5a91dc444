// Timer lists, the coalesced configuration-change event and the event bus,
// on a clock the tests move by hand.
#include "test_support.h"
#include "mdb/mdb_timer.h"
#include "platform/tgp.h"
#include "mdb/mdb_client.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <atomic>

using namespace mdbtest;

namespace {

std::atomic<uint64_t> gNowMs{0};
uint64_t testClock() { return gNowMs.load(); }

std::vector<uintptr_t> gFired;
int recordFire(uintptr_t a0, uintptr_t, uintptr_t) {
  gFired.push_back(a0);
  return 0;
}

TEST(TimerList, FiresDueTimersInOrderOnce) {
  silClockSet(testClock);
  gNowMs = 1000;
  gFired.clear();
  SilTimerList list;
  silTimerListInit(&list);
  EXPECT_EQ(-1, silTimerListNextTimeout(&list));
  EXPECT_EQ(0, silTimerListCheck(&list));

  SilTimer a{}, b{}, c{}, d{};
  silTimerStart(&list, &a, 300, recordFire, 1, 0, 0);
  silTimerStart(&list, &b, 100, recordFire, 2, 0, 0);
  silTimerStart(&list, &c, 200, recordFire, 3, 0, 0);
  silTimerStart(&list, &d, 200, recordFire, 4, 0, 0);  // due with c: fires after it
  EXPECT_EQ(100, silTimerListNextTimeout(&list));
  EXPECT_EQ(-1, silTimerStart(&list, nullptr, 1, recordFire, 0, 0, 0));
  EXPECT_EQ(-1, silTimerStart(&list, &a, 1, nullptr, 0, 0, 0));

  gNowMs = 1099;
  EXPECT_EQ(0, silTimerListCheck(&list));
  EXPECT_EQ(1, silTimerListNextTimeout(&list));
  gNowMs = 1250;
  EXPECT_EQ(0, silTimerListNextTimeout(&list));
  EXPECT_EQ(3, silTimerListCheck(&list));
  EXPECT_EQ((std::vector<uintptr_t>{2, 3, 4}), gFired);
  EXPECT_EQ(0, silTimerListCheck(&list));  // fired timers are idle

  // Restarting moves a running timer; stopping takes it out; stopping an idle one is fine.
  silTimerStart(&list, &b, 500, recordFire, 5, 0, 0);  // due 1750
  silTimerStart(&list, &a, 10, recordFire, 6, 0, 0);   // was due 1300, now 1260
  silTimerStart(&list, &c, 20, recordFire, 7, 0, 0);
  EXPECT_EQ(0, silTimerStop(&list, &c));
  EXPECT_EQ(0, silTimerStop(&list, &c));
  EXPECT_EQ(0, silTimerStop(&list, &d));
  EXPECT_EQ(2u, list.count);
  gNowMs = 2000;
  EXPECT_EQ(2, silTimerListCheck(&list));
  EXPECT_EQ((std::vector<uintptr_t>{2, 3, 4, 6, 5}), gFired);
  EXPECT_EQ(-1, silTimerListNextTimeout(&list));
  silClockSet(nullptr);
}

// A listener of the bus group, reading what has arrived.
struct Listener {
  explicit Listener(uint32_t group) : events(mdbClientEventsOpen(group)) { EXPECT_NE(nullptr, events); }
  ~Listener() { mdbClientEventsClose(events); }
  std::vector<MdbConfgEvent> drain() {
    std::vector<MdbConfgEvent> got;
    MdbConfgEvent e;
    int n;
    while ((n = mdbClientEventsRead(events, &e, sizeof e, 0)) > 0) {
      EXPECT_EQ(32, n);
      got.push_back(e);
    }
    return got;
  }
  MdbClientEvents* events;
};

class ChangeEvent : public ::testing::Test {
 protected:
  void SetUp() override {
    char dir[] = "/tmp/mdbtest-timer-XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(dir));
    runDir = dir;
    setenv("MDB_RUNDIR", dir, 1);
    silClockSet(testClock);
    gNowMs = 100000;
    mdbTimerInit();
    // Timers that earlier tests of this process started (their logged writes)
    // must not fire here.
    mdbTimerLock();
    silTimerListInit(&gMdbTimer.list);
    mdbTimerUnlock();
  }
  void TearDown() override {
    silClockSet(nullptr);
    unsetenv("MDB_RUNDIR");
    int ignored = system(("rm -rf " + runDir).c_str());
    (void)ignored;
  }
  // Moves the clock to `seconds` and fires what is due by then.
  void at(uint32_t seconds) {
    gNowMs = uint64_t{seconds} * 1000;
    mdbTimerLock();
    silTimerListCheck(&gMdbTimer.list);
    mdbTimerUnlock();
  }
  void write() { mdbConfgChangeNotify(nullptr, nullptr, 0, 0); }
  std::string runDir;
};

TEST_F(ChangeEvent, OneEventTenSecondsAfterTheFirstChangeOfABurst) {
  Listener bus(MDB_CONFG_EVENT_GROUP), other(91);
  at(100);
  write();
  at(109);
  EXPECT_TRUE(bus.drain().empty());
  gNowMs = 109999;
  at(109);
  EXPECT_TRUE(bus.drain().empty());
  at(110);
  auto events = bus.drain();
  ASSERT_EQ(1u, events.size());
  const MdbConfgEvent& e = events[0];
  EXPECT_EQ(32u, e.length);
  EXPECT_EQ(357u, e.type);
  EXPECT_EQ(0u, e.flags);
  EXPECT_EQ(0u, e.sequence);
  EXPECT_EQ(0u, e.pid);
  EXPECT_EQ(0u, e.arg);
  EXPECT_EQ(110000u, e.timeMs);
  const uint8_t* raw = reinterpret_cast<const uint8_t*>(&e);
  for (int i = 16; i < 24; i++) EXPECT_EQ(0, raw[i]) << i;
  EXPECT_TRUE(other.drain().empty());  // another group hears nothing

  // A write 9 seconds after the first moves nothing: the event stays at +10.
  at(300);
  write();
  at(309);
  write();
  at(310);
  EXPECT_EQ(1u, bus.drain().size());
  at(319);
  EXPECT_TRUE(bus.drain().empty());
}

TEST_F(ChangeEvent, SteadyWritesGiveOneEventPerPeriod) {
  // Later than any other test's clock: the coalescing state is the process's.
  Listener bus(MDB_CONFG_EVENT_GROUP);
  const uint32_t sentBefore = mdbConfgEventCount(), callsBefore = mdbConfgChangeCount();
  std::vector<uint32_t> eventTimes;
  for (uint32_t t = 1000; t < 1025; t++) {
    at(t);
    for (auto& e : bus.drain()) eventTimes.push_back(e.timeMs / 1000);
    write();
  }
  for (uint32_t t : {1029u, 1030u, 1040u}) {
    at(t);
    for (auto& e : bus.drain()) eventTimes.push_back(e.timeMs / 1000);
  }
  EXPECT_EQ((std::vector<uint32_t>{1010, 1020, 1030}), eventTimes);
  EXPECT_EQ(3u, mdbConfgEventCount() - sentBefore);
  EXPECT_EQ(25u, mdbConfgChangeCount() - callsBefore);
}

TEST_F(ChangeEvent, BusReachesEveryListenerAndForgetsTheGone) {
  Listener a(MDB_CONFG_EVENT_GROUP), b(MDB_CONFG_EVENT_GROUP), other(91);
  // A listener that died without removing its file.
  std::string dead = runDir + "/mdbbus-90-dead.socket";
  int fd = socket(AF_UNIX, SOCK_DGRAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  snprintf(address.sun_path, sizeof address.sun_path, "%s", dead.c_str());
  ASSERT_EQ(0, bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address));
  close(fd);

  const uint8_t message[32] = {1, 2, 3};
  EXPECT_EQ(2, tgpNetlinkSGrpSend(MDB_CONFG_EVENT_GROUP, 0, message, 32));
  EXPECT_EQ(1u, a.drain().size());
  EXPECT_EQ(1u, b.drain().size());
  EXPECT_TRUE(other.drain().empty());
  EXPECT_NE(0, access(dead.c_str(), F_OK));  // removed
  EXPECT_EQ(-1, tgpNetlinkSGrpSend(MDB_CONFG_EVENT_GROUP, 0, nullptr, 32));
}

}  // namespace
