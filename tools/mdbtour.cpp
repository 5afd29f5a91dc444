// mdbtour: an in-process tour of the object database. It starts the core the
// way the daemon does, registers a small demonstration module of its own, and
// reads, walks and writes it through the public verbs.
#include "mdb/mdb.h"
#include "platform/sil.h"

#include <cstdio>
#include <cstring>

namespace {

// The demonstration module: a scalar group and a table of three ports.
char gHostName[64] = "switch-1";
uint32_t gPortSpeed[3] = {1000, 1000, 10000};

uint32_t demoHandler(uint32_t kind, MdbCrb* crb) {
  const bool scalar = crb->localId < 10;
  if (scalar) {
    if (kind == MDB_GET_NEXT) {
      if (mdbScalarValidate(kind, crb) != 0) return mdbErrorNoNextInstance();
      mdbNextScalarIndex(crb);
    } else if (mdbScalarValidate(kind, crb) != 0) {
      return mdbErrorRequestMap(kind);
    }
  } else if (kind == MDB_GET_NEXT) {
    mdbNextSimpleIndex(crb);
    if (crb->pIndex[0] < 1 || crb->pIndex[0] > 3) return mdbErrorNoNextInstance();
  } else if (crb->indexSubIdCount != 1 || crb->pIndex[0] < 1 || crb->pIndex[0] > 3) {
    return mdbErrorRequestMap(kind);
  }
  switch (crb->localId) {
    case 0:  // demo:hostName
      if (kind <= MDB_GET) return octetSet(crb, gHostName, static_cast<uint32_t>(strlen(gHostName))), 0;
      if (kind == MDB_VALIDATE) return crb->valueLen > 63 ? mdbErrorInvalidLength() : 0;
      memcpy(gHostName, octetGet(crb), crb->valueLen);
      gHostName[crb->valueLen] = '\0';
      return 0;
    case 1:  // demo:upTime
      if (kind <= MDB_GET) return ulongSet(crb, mdbCentiSecsGet()), 0;
      return mdbErrorNotWritable();
    case 10:  // demo:portIndex
      if (kind <= MDB_GET) return ulongSet(crb, crb->pIndex[0]), 0;
      return mdbErrorNotWritable();
    case 11:  // demo:portSpeed
      if (kind <= MDB_GET) return ulongSet(crb, gPortSpeed[crb->pIndex[0] - 1]), 0;
      if (kind == MDB_VALIDATE) {
        uint32_t v = ulongGet(crb);
        return v == 10 || v == 100 || v == 1000 || v == 10000 ? 0 : mdbErrorInvalidRange();
      }
      gPortSpeed[crb->pIndex[0] - 1] = ulongGet(crb);
      return 0;
    default:
      return mdbErrorNoSuchInstance();
  }
}


const MdbEntryDesc gScalars = mdbEntryMake({1, 3, 6, 1, 4, 1, 47391, 2, 9999, 1}, 0, 1);
const MdbEntryDesc gPorts = mdbEntryMake({1, 3, 6, 1, 4, 1, 47391, 2, 9999, 2, 1}, 1, 1, {"demo:portIndex"});
const MdbObjectDesc gObjects[] = {
    {0, 1, 64, 0, 0, MDB_TYPE_OCTET_STRING, MDB_ACCESS_RW, MDB_ATTR_ROW | MDB_ATTR_DISPLAY, demoHandler, nullptr,
     "demo:hostName"},
    {1, 2, 4, 0, 0, MDB_TYPE_TIMETICKS, MDB_ACCESS_RO, MDB_ATTR_ROW, demoHandler, nullptr, "demo:upTime"},
    {10, 1, 4, 1, 3, MDB_TYPE_INTEGER, MDB_ACCESS_RO_INDEX, MDB_ATTR_ROW | MDB_ATTR_INDEX, demoHandler, nullptr,
     "demo:portIndex"},
    {11, 2, 4, 10, 10000, MDB_TYPE_GAUGE, MDB_ACCESS_RW, MDB_ATTR_ROW, demoHandler, nullptr, "demo:portSpeed"},
    {0, 3, 64, 0, 0, MDB_TYPE_OCTET_STRING, MDB_ACCESS_RW, MDB_ATTR_ROW, demoHandler, "demo:hostName",
     "demo:sysName"},
};
const MdbObjectBinding gBindings[] = {{&gScalars, &gObjects[0]}, {&gScalars, &gObjects[1]}, {&gPorts, &gObjects[2]},
                                      {&gPorts, &gObjects[3]},   {&gScalars, &gObjects[4]}, {nullptr, nullptr}};

void showResult(const char* what, uint32_t rc) {
  printf("  %-44s -> %s (%u)\n", what, mdbErrorName(rc), rc);
}

}  // namespace

int main(int argc, char** argv) {
  if (silOptInit(&argc, argv) != 0) return 2;
  if (mdbOptInit() != 0) {
    printf("mdb is disabled by the option mdb.enable\n");
    return 1;
  }
  mdbModuleRegister("demo", gBindings);
  printf("mdb %s: %u modules, %u objects registered\n\n", gMdbInfo.version, mdbModuleCount(), mdbObjectCount());

  uint32_t index[MDB_MAX_INDEX] = {0};
  char text[128];
  uint32_t len = sizeof text;
  printf("read demo:hostName.0\n");
  uint32_t rc = mdbGetApi("demo:hostName", index, 1, text, &len, "tour");
  showResult("mdbGetApi", rc);
  printf("  value \"%.*s\"\n\n", static_cast<int>(len), text);

  printf("walk demo:portSpeed\n");
  uint32_t count = 0, speed = 0;
  len = sizeof speed;
  while ((rc = mdbGetNext("demo:portSpeed", index, MDB_MAX_INDEX, &count, &speed, &len, "tour")) == 0)
    printf("  demo:portSpeed.%u = %u\n", index[0], speed);
  showResult("end of walk", rc);

  printf("\nwrite demo:portSpeed.2 = 10000, then 12345\n");
  index[0] = 2;
  speed = 10000;
  showResult("mdbSetApi (validate and set)", mdbSetApi("demo:portSpeed", index, 1, &speed, 4, "tour", 1));
  speed = 12345;
  showResult("mdbSetApi (validate and set)", mdbSetApi("demo:portSpeed", index, 1, &speed, 4, "tour", 1));
  len = sizeof speed;
  mdbGetApi("demo:portSpeed", index, 1, &speed, &len, "tour");
  printf("  demo:portSpeed.2 = %u\n", speed);
  index[0] = 0;
  showResult("mdbSetApi demo:upTime (read-only)", mdbSetApi("demo:upTime", index, 1, &speed, 4, "tour", 1));
  showResult("mdbGetApi no:such", mdbGetApi("no:such", index, 1, &speed, &len, "tour"));

  printf("\nwrite through the alternate demo:sysName.0\n");
  showResult("mdbSetApi", mdbSetApi("demo:sysName", index, 1, "core-7", 6, "tour", 1));
  len = sizeof text;
  mdbGetApi("demo:hostName", index, 1, text, &len, "tour");
  printf("  demo:hostName.0 = \"%.*s\"\n", static_cast<int>(len), text);

  printf("\nfind by OID 1.3.6.1.4.1.47391.2.9999.2.1.2.3\n");
  const uint32_t oid[] = {1, 3, 6, 1, 4, 1, 47391, 2, 9999, 2, 1, 2, 3};
  uint32_t oidLen = 0, indexMax = 0, type = 0;
  char name[MDB_NAME_MAX];
  if (mdbObjNameGet(oid, 13, &oidLen, &indexMax, &type, name) == 0)
    printf("  %s (type %u, index of up to %u sub-ids, instance .%u)\n", name, type, indexMax, oid[oidLen]);

  printf("\ncounters\n");
  printf("  dispatched %u requests: %u reads, %u walk steps, %u sets; %u not writable, %u no such object\n",
         mdbStatGet(MDB_STAT_mdbDispatchCalled), mdbStatGet(MDB_STAT_mdbDispatchGet),
         mdbStatGet(MDB_STAT_mdbDispatchGetNext), mdbStatGet(MDB_STAT_mdbDispatchSet),
         mdbStatGet(MDB_STAT_mdbNotWritable), mdbStatGet(MDB_STAT_mdbNoSuchObject));
  return 0;
}
