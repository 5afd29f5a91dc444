// The platform substitutes: option store, clock, error number, tasks,
// semaphores, hardware scalars, logging.
#include "test_support.h"
#include "platform/logging.h"
#include "platform/tgp.h"

#include <atomic>
#include <fstream>
#include <thread>

namespace {

std::string tempFile(const std::string& text) {
  char path[] = "/tmp/mdbtest-opt-XXXXXX";
  int fd = mkstemp(path);
  EXPECT_GE(fd, 0);
  EXPECT_EQ(static_cast<ssize_t>(text.size()), write(fd, text.data(), text.size()));
  close(fd);
  return path;
}

std::string readOption(const char* key, uint32_t max = 127, int* rc = nullptr) {
  char buffer[256];
  memset(buffer, '?', sizeof buffer);
  int r = silOptRead(0, key, 0, 0, 1, buffer, max);
  if (rc != nullptr) *rc = r;
  return r > 0 ? std::string(buffer) : std::string("<unset>");
}

TEST(PlatformOptions, FileOverridesAndEmptyValues) {
  silOptClear();
  std::string path = tempFile("# a comment\n\nclock.enable = true \nsnmp.enterpriseoid=12345\nempty.key=\nbad line\n");
  char prog[] = "mdb", o1[] = "--options", o3[] = "-o", o4[] = "clock.enable=false", o5[] = "-o",
       o6[] = "gate.off=", extra[] = "--verbose";
  std::string file = path;
  char* argv[] = {prog, o1, file.data(), o3, o4, o5, o6, extra, nullptr};
  int argc = 8;
  // The malformed line is reported, the rest of the file still read.
  EXPECT_EQ(-1, silOptInit(&argc, argv));
  EXPECT_EQ(2, argc);  // only what it does not know stays
  EXPECT_STREQ("--verbose", argv[1]);

  EXPECT_EQ("false", readOption("clock.enable"));  // the command line wins
  EXPECT_EQ("12345", readOption("snmp.enterpriseoid"));
  int rc = 0;
  EXPECT_EQ("", readOption("empty.key", 127, &rc));  // set to the empty text
  EXPECT_EQ(1, rc);
  EXPECT_EQ("", readOption("gate.off", 127, &rc));
  EXPECT_EQ(1, rc);
  EXPECT_EQ("<unset>", readOption("never.set", 127, &rc));
  EXPECT_EQ(0, rc);
  EXPECT_EQ("123", readOption("snmp.enterpriseoid", 3, &rc));  // cut to the caller's length
  EXPECT_EQ(4, rc);
  char buffer[8];
  EXPECT_EQ(-1, silOptRead(0, "clock.enable", 0, 0, 2, buffer, 7));

  setenv("MDB_OPTIONS", path.c_str(), 1);
  silOptClear();
  char* argv2[] = {prog, nullptr};
  argc = 1;
  silOptInit(&argc, argv2);
  EXPECT_EQ("true", readOption("clock.enable"));
  unsetenv("MDB_OPTIONS");

  char missing[] = "/nonexistent/options";
  char* argv3[] = {prog, o1, missing, nullptr};
  argc = 3;
  EXPECT_EQ(-1, silOptInit(&argc, argv3));
  silOptClear();
  unlink(path.c_str());
}

TEST(PlatformClock, ReplaceableClockAndThreadErrno) {
  static std::atomic<uint64_t> now{0};
  silClockSet([]() -> uint64_t { return now.load(); });
  now = 59999;
  EXPECT_EQ(59u, silGetUpTime());
  EXPECT_EQ(59999u, silGetUpTime1ms());
  now = 60000;
  EXPECT_EQ(60u, silGetUpTime());
  silClockSet(nullptr);
  uint64_t a = silGetUpTime1ms();
  silDelayTask(20);
  uint64_t b = silGetUpTime1ms();
  EXPECT_GE(b - a, 19u);
  EXPECT_LT(b, 3600u * 1000u);  // counted from the start of the process

  errnoSet(5);
  uint32_t seen = 1;
  std::thread t([&] { seen = errnoGet(); errnoSet(9); });
  t.join();
  EXPECT_EQ(0u, seen);
  EXPECT_EQ(5u, errnoGet());
}

std::atomic<int> gTaskRan{0};
char gTaskName[16];
void taskBody(uintptr_t arg) {
  pthread_getname_np(pthread_self(), gTaskName, sizeof gTaskName);
  gTaskRan.store(static_cast<int>(arg));
}

TEST(PlatformTasks, NamedTasksAndRecursiveSemaphores) {
  SilTaskId id = 0;
  ASSERT_EQ(0, silCreateTask("mdbtesttask", 50, 0x10000, taskBody, 7, 0, &id));
  for (int i = 0; i < 200 && gTaskRan.load() == 0; i++) silDelayTask(5);
  EXPECT_EQ(7, gTaskRan.load());
  EXPECT_STREQ("mdbtesttask", gTaskName);
  EXPECT_EQ(-1, silCreateTask("none", 50, 0, nullptr, 0, 0, nullptr));

  SilSemId sem = silCreateMSem(0);
  ASSERT_NE(nullptr, sem);
  EXPECT_EQ(0, silTakeSem(sem, -1));
  EXPECT_EQ(0, silTakeSem(sem, 0));  // the owner may take it again
  int other = 0;
  std::thread t([&] { other = silTakeSem(sem, 30); });
  t.join();
  EXPECT_EQ(-1, other);  // held by another task: times out
  EXPECT_EQ(0, silGiveSem(sem));
  EXPECT_EQ(0, silGiveSem(sem));
  std::thread t2([&] { other = silTakeSem(sem, 0); if (other == 0) silGiveSem(sem); });
  t2.join();
  EXPECT_EQ(0, other);
  EXPECT_EQ(0, silDeleteSem(sem));
  EXPECT_EQ(-1, silTakeSem(nullptr, -1));
}

TEST(PlatformHardware, ScalarRecordKeepsNumbersAndBytes) {
  uint32_t v = 296, out = 1;
  EXPECT_EQ(0, tgpHwilScalarGet(0, 12345, &out));  // never set: 0
  EXPECT_EQ(0u, out);
  EXPECT_EQ(0, tgpHwilScalarSet(0, 499, &v, 0));
  EXPECT_EQ(0, tgpHwilScalarGet(0, 499, &out));
  EXPECT_EQ(296u, out);
  EXPECT_EQ(0, tgpHwilScalarSet(0, 65, "V1.2.3", 6));
  uint8_t text[4];
  MdbOctetValue holder{text, sizeof text};
  EXPECT_EQ(0, tgpHwilScalarGet(0, 65, &holder));
  EXPECT_EQ(4u, holder.length);  // cut to the holder's capacity
  EXPECT_EQ(0, memcmp(text, "V1.2", 4));
  EXPECT_EQ(-1, tgpHwilScalarSet(0, 66, nullptr, 0));
  std::string big(600, 'x');
  EXPECT_EQ(-1, tgpHwilScalarSet(0, 66, big.data(), 600));
}

TEST(PlatformLogging, LinesCarryModuleAndSeverity) {
  char path[] = "/tmp/mdbtest-log-XXXXXX";
  close(mkstemp(path));
  ASSERT_EQ(0, loggingOpen(path));
  uint32_t before = loggingLineCount();
  loggingDebugOutput(81920002, 6, 0, "%s:%d: MDB dispatch, object %s null buffer.\r\n", "fn", 12, "a:b");
  loggingLogOutput(81920001, 3, 0x100, "Request:%s", "MDB_GET");
  loggingOpen(nullptr);
  EXPECT_EQ(before + 2, loggingLineCount());
  std::ifstream in(path);
  std::string first, second;
  std::getline(in, first);
  std::getline(in, second);
  EXPECT_NE(std::string::npos, first.find("debug 81920002 info: fn:12: MDB dispatch, object a:b null buffer."));
  EXPECT_EQ('.', first.back());  // the message's own line end is not doubled
  EXPECT_NE(std::string::npos, second.find("log 81920001 err: Request:MDB_GET"));
  unlink(path);
  EXPECT_EQ(-1, loggingOpen("/nonexistent/dir/log"));
  loggingOpen(nullptr);
}

}  // namespace
