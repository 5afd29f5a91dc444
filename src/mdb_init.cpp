// Start-up: the global record and mdbOptInit.
#include "mdb/mdb_dict.h"
#include "mdb/mdb_errors.h"
#include "mdb/mdb_subsys.h"
#include "mdb/mdb_verbs.h"
#include "platform/logging.h"
#include "platform/sil.h"
#include "platform/tgp.h"

#include <cstdlib>
#include <cstring>

MdbInfo gMdbInfo;

namespace {
MdbMibInitFn gExtraInits[16];
uint32_t gExtraInitCount = 0;
const uint8_t kDebugLevels[10] = {5, 6, 6, 5, 6, 5, 6, 6, 5, 6};
const uint32_t kEnterprise = 47391;
}  // namespace

void mdbInfoInit(void) {
  snprintf(gMdbInfo.version, sizeof gMdbInfo.version, "%s", "MDB_VL3.00.00.00");
  gMdbInfo.maxObjects = MDB_MAX_OBJECTS;
  gMdbInfo.maxModules = MDB_MAX_MODULES;
  gMdbInfo.sysState = 1;
  gMdbInfo.ioBlockHook = mdbIoBlock;
  gMdbInfo.tscHook = nullptr;
  gMdbInfo.immediateHook = nullptr;
  gMdbInfo.getHook = nullptr;
  gMdbInfo.debugMask = 0;
  memcpy(gMdbInfo.debugLevel, kDebugLevels, sizeof kDebugLevels);
}

void mdbEnterpriseOidRewrite(void) {
  // The private trees live under the enterprise number 47391; an option moves
  // them (and, with the sub-OID option, the subtree .2) before any request.
  char option[512] = {0};
  if (silOptRead(0, "snmp.enterpriseoid", 0, 0, 1, option, 511) <= 0) return;
  uint32_t oldOid[8] = {1, 3, 6, 1, 4, 1, kEnterprise, 2};
  uint32_t newOid[8] = {1, 3, 6, 1, 4, 1, static_cast<uint32_t>(strtoul(option, nullptr, 0)), 0};
  uint32_t length = 7;
  char sub[512] = {0};
  if (silOptRead(0, "snmp.enterprisesuboid", 0, 0, 1, sub, 511) > 0) {
    newOid[7] = static_cast<uint32_t>(strtoul(sub, nullptr, 0));
    length = 8;
  }
  mdbModuleOidReplace(oldOid, newOid, length);
  mdbOROidReplace(oldOid, newOid, length);
}

uint32_t mdbOptInit(void) {
  char enable[64] = {0};
  if (silOptRead(0, "mdb.enable", 0, 0, 1, enable, 63) > 0 && (enable[0] == 'f' || enable[0] == 'F'))
    return static_cast<uint32_t>(-1);

  mdbInfoInit();
  // The debug switches, off unless an option of our own sets them.
  char mask[32] = {0};
  if (silOptRead(0, "mdb.debugmask", 0, 0, 1, mask, sizeof mask - 1) > 0)
    gMdbInfo.debugMask = static_cast<uint32_t>(strtoul(mask, nullptr, 0));
  MDB_COUNT(mdbInitCalled);
  if (mdbDictInit() != 0) return static_cast<uint32_t>(-1);
  gMdbInfo.entryHook = nullptr;
  gMdbInfo.exitHook = nullptr;
  gMdbInfo.translateHook = nullptr;
  gMdbInfo.unknownObjectHook = nullptr;

  mdbUserMibInit();
  for (uint32_t i = 0; i < gExtraInitCount; i++) gExtraInits[i]();

  mdbEnterpriseOidRewrite();

  mdbCmdTaskInit();
  mdbTimerInit();
  loggingSnmpTrapLogRegister();

  static const uint32_t kHwilValue = 296;
  tgpHwilScalarSet(0, 499, &kHwilValue, 0);
  return 0;
}

int mdbMibInitAdd(MdbMibInitFn init) {
  if (init == nullptr || gExtraInitCount == sizeof gExtraInits / sizeof gExtraInits[0]) return -1;
  gExtraInits[gExtraInitCount++] = init;
  return 0;
}
