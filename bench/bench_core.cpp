// In-process micro-benchmarks of the request path: the verbs on a scalar and
// on a table column, a walk step, a full write, the dictionary lookup and the
// lookup by OID, over the modules of the default device.
#include <benchmark/benchmark.h>

#include "mdb/mdb.h"
#include "mdb/mdb_modules.h"
#include "platform/sil.h"
#include "services/svc_device.h"

namespace {

struct Database {
  Database() {
    mdbInfoInit();
    mdbDictInit();
    clockMibInit();
    mirrorMibInit();
    systemMibInit();
    svcDefaultDevice();
  }
};
const Database& database() {
  static Database db;
  return db;
}

void BM_GetScalar(benchmark::State& state) {
  database();
  uint32_t index[1] = {0};
  for (auto _ : state) {
    uint32_t value = 0, length = 4;
    benchmark::DoNotOptimize(mdbGetApi("clock:clockClockTimeZoneOffset", index, 1, &value, &length, nullptr));
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(BM_GetScalar);

void BM_GetTableColumn(benchmark::State& state) {
  database();
  uint32_t index[1] = {1};
  for (auto _ : state) {
    uint32_t value = 0, length = 4;
    benchmark::DoNotOptimize(mdbGetApi("mirror:mirrorGroupVlan", index, 1, &value, &length, nullptr));
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(BM_GetTableColumn);

void BM_GetNextStep(benchmark::State& state) {
  database();
  for (auto _ : state) {
    uint32_t index[MDB_MAX_INDEX] = {0};
    uint32_t count = 0, value = 0, length = 4;
    benchmark::DoNotOptimize(mdbGetNext("mirror:mirrorGroupTpId", index, MDB_MAX_INDEX, &count, &value, &length, nullptr));
  }
}
BENCHMARK(BM_GetNextStep);

void BM_SetFull(benchmark::State& state) {
  database();
  uint32_t index[1] = {1};
  uint32_t value = 100;
  for (auto _ : state) {
    benchmark::DoNotOptimize(mdbSetApi("mirror:mirrorGroupVlan", index, 1, &value, 4, nullptr, 1));
    value = value == 100 ? 200 : 100;
  }
}
BENCHMARK(BM_SetFull);

void BM_DictionaryLookup(benchmark::State& state) {
  database();
  for (auto _ : state) benchmark::DoNotOptimize(mdbObjectLookup("mirror:mirrorVlanMacOutEnable"));
}
BENCHMARK(BM_DictionaryLookup);

void BM_ObjNameGet(benchmark::State& state) {
  database();
  const uint32_t oid[] = {1, 3, 6, 1, 4, 1, 47391, 2, 2611, 6, 1, 8, 1, 0, 0, 0, 0, 0, 1, 0};
  char name[MDB_NAME_MAX];
  uint32_t oidLen, indexMax, type;
  for (auto _ : state) benchmark::DoNotOptimize(mdbObjNameGet(oid, 20, &oidLen, &indexMax, &type, name));
}
BENCHMARK(BM_ObjNameGet);

}  // namespace

BENCHMARK_MAIN();
