// mdbbench: load on a running mdb over its command sockets, and its start-up.
//
//   mdbbench [--threads N] [--seconds S | --count C] [--mode get|walk|set|mix]
//            [--modules a,b] [--json]
//   mdbbench --walk-compare [--modules a,b]
//   mdbbench --startup DAEMON [-- DAEMON-ARGS...]
//
// Each thread has its own connection; thread t uses socket t modulo 25. The
// objects come from the registered catalogue: every instance of every object
// of the modules named (walked at the start). Reports operations per second,
// latency percentiles and errors (which must be 0).
#include "mdb/mdb_client.h"
#include "mdb/mdb_cmd.h"
#include "mdb/mdb_errors.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

struct Instance {
  std::string name;
  std::vector<uint32_t> index;
  std::vector<uint8_t> value;
  bool writable = false;
};

struct Options {
  int threads = 1;
  double seconds = 5;
  long count = 0;  // per thread; 0: by time
  std::string mode = "get";
  std::vector<std::string> modules = {"clock", "mirror"};
  bool json = false;
};

struct Step {
  std::vector<std::pair<std::vector<uint32_t>, std::vector<uint8_t>>>* out;
};

int collectStep(void* arg, uint32_t rc, const uint32_t* index, uint32_t count, const uint8_t* value, uint32_t n) {
  if (rc == 0) static_cast<Step*>(arg)->out->push_back({{index, index + count}, {value, value + n}});
  return 0;
}

// Every instance of every object of the modules, with its value; writable
// ones are those whose present value validates.
std::vector<Instance> discover(MdbClient* c, const std::vector<std::string>& modules) {
  std::vector<Instance> all;
  for (const std::string& module : modules) {
    MdbClientModule m;
    if (mdbClientModuleGet(c, module.c_str(), &m) != 0) {
      fprintf(stderr, "mdbbench: no module %s\n", module.c_str());
      continue;
    }
    std::string object = m.firstObject;
    while (!object.empty()) {
      std::vector<std::pair<std::vector<uint32_t>, std::vector<uint8_t>>> rows;
      Step step{&rows};
      std::vector<uint32_t> index(ICM_MAX_INDEX);
      uint32_t count = 0, steps = 0, rc;
      do {
        rc = mdbClientGetNextChain(c, object.c_str(), index.data(), ICM_MAX_INDEX, &count, 256, 1024, nullptr,
                                   collectStep, &step, &steps);
      } while (rc == 0 && steps > 0 && rows.size() < 100000);
      for (auto& [idx, value] : rows) {
        Instance in{object, idx, value, false};
        in.writable = mdbClientValidate(c, object.c_str(), idx.data(), static_cast<uint32_t>(idx.size()),
                                        value.data(), static_cast<uint32_t>(value.size()), 0) == 0;
        all.push_back(std::move(in));
      }
      char next[ICM_MAX_NAME + 1];
      if (mdbClientObjectNameNextGet(c, object.c_str(), next, sizeof next) != 0) break;
      object = next;
    }
  }
  return all;
}

struct Result {
  std::vector<uint32_t> latencyNs;
  uint64_t ops = 0;
  uint64_t errors = 0;
};

inline uint64_t nextRandom(uint64_t& s) {
  s ^= s << 13;
  s ^= s >> 7;
  s ^= s << 17;
  return s;
}

void worker(int id, const Options& o, const std::vector<Instance>& items, const std::vector<size_t>& writable,
            Clock::time_point deadline, Result* r) {
  MdbClient* c = mdbClientOpenSocket(static_cast<uint32_t>(id) % MDB_CMD_SOCKETS);
  if (c == nullptr) {
    r->errors++;
    return;
  }
  r->latencyNs.reserve(1 << 20);
  uint64_t seed = 0x9E3779B97F4A7C15ull ^ (static_cast<uint64_t>(id + 1) * 0x2545F4914F6CDD1Dull);
  uint8_t buffer[ICM_MAX_VALUE];
  std::vector<uint32_t> index(ICM_MAX_INDEX);
  for (long n = 0;; n++) {
    if (o.count > 0 ? n >= o.count : (n % 64 == 0 && Clock::now() >= deadline)) break;
    uint64_t pick = nextRandom(seed);
    std::string op = o.mode;
    if (op == "mix") {
      uint64_t p = pick % 100;
      op = p < 80 ? "get" : p < 95 ? "next" : "set";
    }
    if (op == "set" && writable.empty()) op = "get";
    const Instance& in = op == "set" ? items[writable[(pick >> 8) % writable.size()]] : items[(pick >> 8) % items.size()];
    uint32_t rc = 0;
    auto start = Clock::now();
    if (op == "get") {
      uint32_t length = sizeof buffer;
      rc = mdbClientGetApi(c, in.name.c_str(), in.index.data(), static_cast<uint32_t>(in.index.size()), buffer,
                           &length, nullptr);
      r->ops++;
    } else if (op == "next") {
      uint32_t count = 0, length = sizeof buffer;
      rc = mdbClientGetNext(c, in.name.c_str(), index.data(), ICM_MAX_INDEX, &count, buffer, &length, nullptr);
      r->ops++;
    } else if (op == "set") {
      rc = mdbClientSetApi(c, in.name.c_str(), in.index.data(), static_cast<uint32_t>(in.index.size()),
                           in.value.data(), static_cast<uint32_t>(in.value.size()), nullptr, 1);
      r->ops++;
    } else {  // walk: one chain of the whole object; each instance is an operation
      uint32_t count = 0, steps = 0;
      rc = mdbClientGetNextChain(c, in.name.c_str(), index.data(), ICM_MAX_INDEX, &count, 256, 1024, nullptr,
                                 nullptr, nullptr, &steps);
      if (rc == MDB_ERR_NO_NEXT_INSTANCE) rc = 0;
      r->ops += steps > 0 ? steps - 1 : 0;
    }
    r->latencyNs.push_back(
        static_cast<uint32_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now() - start).count()));
    if (rc != 0) r->errors++;
  }
  mdbClientClose(c);
}

double percentile(std::vector<uint32_t>& v, double p) {
  if (v.empty()) return 0;
  size_t k = static_cast<size_t>(p / 100.0 * (v.size() - 1));
  std::nth_element(v.begin(), v.begin() + static_cast<long>(k), v.end());
  return v[k] / 1000.0;
}

int runLoad(const Options& o) {
  MdbClient* c = mdbClientOpenSocket(24);
  if (c == nullptr) {
    fprintf(stderr, "mdbbench: cannot connect to mdb: %s\n", strerror(errno));
    return 2;
  }
  std::vector<Instance> items = discover(c, o.modules);
  mdbClientClose(c);
  if (items.empty()) {
    fprintf(stderr, "mdbbench: no instances to work on\n");
    return 2;
  }
  std::vector<size_t> writable;
  for (size_t i = 0; i < items.size(); i++)
    if (items[i].writable) writable.push_back(i);
  std::vector<Result> results(static_cast<size_t>(o.threads));
  std::vector<std::thread> threads;
  auto start = Clock::now();
  auto deadline = start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(o.seconds));
  for (int t = 0; t < o.threads; t++)
    threads.emplace_back(worker, t, std::cref(o), std::cref(items), std::cref(writable), deadline, &results[static_cast<size_t>(t)]);
  for (auto& t : threads) t.join();
  double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
  Result all;
  for (auto& r : results) {
    all.ops += r.ops;
    all.errors += r.errors;
    all.latencyNs.insert(all.latencyNs.end(), r.latencyNs.begin(), r.latencyNs.end());
  }
  double rate = all.ops / elapsed;
  double p50 = percentile(all.latencyNs, 50), p99 = percentile(all.latencyNs, 99),
         p999 = percentile(all.latencyNs, 99.9);
  if (o.json)
    printf("{\"mode\":\"%s\",\"threads\":%d,\"instances\":%zu,\"ops\":%llu,\"seconds\":%.3f,\"opsPerSecond\":%.0f,"
           "\"p50us\":%.2f,\"p99us\":%.2f,\"p999us\":%.2f,\"errors\":%llu}\n",
           o.mode.c_str(), o.threads, items.size(), static_cast<unsigned long long>(all.ops), elapsed, rate, p50,
           p99, p999, static_cast<unsigned long long>(all.errors));
  else
    printf("mode %s, %d threads, %zu instances (%zu writable): %llu operations in %.2f s = %.0f/s; "
           "latency p50 %.1f us, p99 %.1f us, p99.9 %.1f us; errors %llu\n",
           o.mode.c_str(), o.threads, items.size(), writable.size(), static_cast<unsigned long long>(all.ops),
           elapsed, rate, p50, p99, p999, static_cast<unsigned long long>(all.errors));
  return all.errors == 0 ? 0 : 1;
}

// Instances per second of a walk by single GetNext round trips and by chains.
int walkCompare(const Options& o) {
  MdbClient* c = mdbClientOpenSocket(24);
  if (c == nullptr) return 2;
  std::vector<std::string> objects;
  for (const std::string& module : o.modules) {
    MdbClientModule m;
    if (mdbClientModuleGet(c, module.c_str(), &m) != 0) continue;
    std::string object = m.firstObject;
    char next[ICM_MAX_NAME + 1];
    while (!object.empty()) {
      objects.push_back(object);
      if (mdbClientObjectNameNextGet(c, object.c_str(), next, sizeof next) != 0) break;
      object = next;
    }
  }
  std::vector<uint32_t> index(ICM_MAX_INDEX);
  uint8_t value[ICM_MAX_VALUE];
  auto measure = [&](bool chained) {
    uint64_t instances = 0;
    auto start = Clock::now();
    do {
      for (const std::string& object : objects) {
        uint32_t count = 0, rc;
        if (chained) {
          uint32_t steps = 0;
          do {
            rc = mdbClientGetNextChain(c, object.c_str(), index.data(), ICM_MAX_INDEX, &count, 256, 1024, nullptr,
                                       nullptr, nullptr, &steps);
            instances += rc == 0 ? steps : steps - 1;
          } while (rc == 0 && steps > 0);
        } else {
          uint32_t length = sizeof value;
          while ((rc = mdbClientGetNext(c, object.c_str(), index.data(), ICM_MAX_INDEX, &count, value, &(length = sizeof value),
                                        nullptr)) == 0)
            instances++;
        }
      }
    } while (Clock::now() - start < std::chrono::duration<double>(o.seconds / 2));
    return instances / std::chrono::duration<double>(Clock::now() - start).count();
  };
  double single = measure(false), chained = measure(true);
  mdbClientClose(c);
  printf("walk: %.0f instances/s by single GetNext, %.0f by chained GetNext: %.1f times\n", single, chained,
         chained / single);
  return 0;
}

long rssKiB(pid_t pid) {
  std::ifstream in("/proc/" + std::to_string(pid) + "/status");
  std::string line;
  while (std::getline(in, line))
    if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
  return -1;
}

// Time from exec to all 25 sockets accepting, and resident memory then.
int startup(int argc, char** argv) {
  char dir[] = "/tmp/mdbbench-XXXXXX";
  if (mkdtemp(dir) == nullptr) return 2;
  setenv("MDB_RUNDIR", dir, 1);
  auto start = Clock::now();
  pid_t pid = fork();
  if (pid == 0) {
    execv(argv[0], argv);
    _exit(127);
  }
  (void)argc;
  int ready = 0;
  while (ready < static_cast<int>(MDB_CMD_SOCKETS)) {
    ready = 0;
    for (uint32_t s = 0; s < MDB_CMD_SOCKETS; s++) {
      MdbClient* c = mdbClientOpenSocket(s);
      if (c != nullptr) {
        ready++;
        mdbClientClose(c);
      }
    }
    if (Clock::now() - start > std::chrono::seconds(10)) break;
  }
  double ms = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
  usleep(200000);
  printf("start-up: all %d sockets accepting after %.1f ms; resident memory %ld KiB\n", ready, ms, rssKiB(pid));
  printf("pid %d run directory %s\n", pid, dir);
  fflush(stdout);
  return ready == static_cast<int>(MDB_CMD_SOCKETS) ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  Options o;
  bool walk = false;
  for (int i = 1; i < argc; i++) {
    std::string a = argv[i];
    auto need = [&]() -> const char* {
      if (i + 1 >= argc) {
        fprintf(stderr, "mdbbench: %s needs a value\n", a.c_str());
        exit(2);
      }
      return argv[++i];
    };
    if (a == "--threads") o.threads = std::max(1, atoi(need()));
    else if (a == "--seconds") o.seconds = atof(need());
    else if (a == "--count") o.count = atol(need());
    else if (a == "--mode") o.mode = need();
    else if (a == "--json") o.json = true;
    else if (a == "--modules") {
      o.modules.clear();
      std::stringstream list(need());
      for (std::string m; std::getline(list, m, ',');) o.modules.push_back(m);
    } else if (a == "--walk-compare") walk = true;
    else if (a == "--startup") return startup(argc - i - 1, argv + i + 1);
    else {
      fprintf(stderr, "usage: mdbbench [--threads N] [--seconds S|--count C] [--mode get|walk|set|mix] "
                      "[--modules a,b] [--json] | --walk-compare | --startup DAEMON [ARGS...]\n");
      return 2;
    }
  }
  if (walk) return walkCompare(o);
  if (o.mode != "get" && o.mode != "walk" && o.mode != "set" && o.mode != "mix") {
    fprintf(stderr, "mdbbench: mode is get, walk, set or mix\n");
    return 2;
  }
  return runLoad(o);
}
