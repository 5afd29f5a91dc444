// mdbtestd: the mdb daemon with a test module "e2e" of its own: scalars of
// every value form, a table of 64 integer-indexed rows and a table indexed by
// a string. The end-to-end tests drive it through the command sockets.
#include "mdb/mdb.h"

#include <cstring>
#include <mutex>
#include <string>

namespace {

std::mutex gLock;
int32_t gInt = 7;
std::string gText = "hello";
uint8_t gIp[4] = {192, 0, 2, 1};
uint8_t gMac[6] = {0x00, 0x0e, 0x5e, 0x01, 0x02, 0x03};
uint32_t gOid[16] = {1, 3, 6, 1, 4, 1, 47391};
uint32_t gOidLen = 7;
uint8_t gBridge[8] = {0x80, 0x00, 0x00, 0x0e, 0x5e, 0x01, 0x02, 0x03};
uint32_t gRowValue[64];
std::string gRowName[64];
const char* const kNames[] = {"beta", "alpha", "gamma"};  // in OID order: by length, then bytes

uint32_t scalarHandler(uint32_t kind, MdbCrb* crb) {
  if (kind == MDB_GET_NEXT) {
    if (mdbScalarValidate(kind, crb) != 0) return mdbErrorNoNextInstance();
    mdbNextScalarIndex(crb);
  } else if (mdbScalarValidate(kind, crb) != 0) {
    return mdbErrorRequestMap(kind);
  }
  std::lock_guard guard(gLock);
  const bool read = kind == MDB_GET_NEXT || kind == MDB_GET;
  switch (crb->localId) {
    case 0:
      if (read) return slongSet(crb, gInt), 0;
      if (kind == MDB_VALIDATE) {
        int32_t v = slongGet(crb);
        if (crb->valueLen != 4) return mdbErrorInvalidLength();
        if (v < 1 || v > 100) return mdbErrorInvalidRange();
        crb->flags |= MDB_FLAG_VALIDATED;
        return 0;
      }
      gInt = slongGet(crb);
      return 0;
    case 1:
      if (read) return octetSet(crb, gText.data(), static_cast<uint32_t>(gText.size())), 0;
      if (kind == MDB_VALIDATE) return crb->valueLen > 32 ? mdbErrorInvalidLength() : 0;
      gText.assign(reinterpret_cast<const char*>(octetGet(crb)), crb->valueLen);
      return 0;
    case 2:
      if (read) return octetSet(crb, gIp, 4), 0;
      if (kind == MDB_VALIDATE) return crb->valueLen != 4 ? mdbErrorInvalidLength() : 0;
      memcpy(gIp, octetGet(crb), 4);
      return 0;
    case 3:
      if (read) return octetSet(crb, gMac, 6), 0;
      if (kind == MDB_VALIDATE) return crb->valueLen != 6 ? mdbErrorInvalidLength() : 0;
      memcpy(gMac, octetGet(crb), 6);
      return 0;
    case 4:
      if (read) return oidSet(crb, gOid, gOidLen), 0;
      if (kind == MDB_VALIDATE) return crb->valueLen % 4 != 0 || crb->valueLen > 64 ? mdbErrorInvalidLength() : 0;
      gOidLen = crb->valueLen / 4;
      memcpy(gOid, oidGet(crb), crb->valueLen);
      return 0;
    case 5:
      if (read) return quadSet(crb, 0x123456789ull), 0;
      return mdbErrorNotWritable();
    case 6:
      if (read) return octetSet(crb, gBridge, 8), 0;
      if (kind == MDB_VALIDATE) return crb->valueLen != 8 ? mdbErrorInvalidLength() : 0;
      memcpy(gBridge, octetGet(crb), 8);
      return 0;
    case 7:
      if (read) return ulongSet(crb, 4000000000u), 0;
      return mdbErrorNotWritable();
    default:
      return mdbErrorNoSuchInstance();
  }
}

uint32_t rowHandler(uint32_t kind, MdbCrb* crb) {
  if (kind == MDB_GET_NEXT) {
    if (crb->indexSubIdCount != 0 && crb->pIndex[0] >= 64) return mdbErrorNoNextInstance();
    mdbNextSimpleIndex(crb);
    if (crb->pIndex[0] < 1) crb->pIndex[0] = 1;
    crb->indexSubIdCount = 1;
  } else if (crb->indexSubIdCount != 1 || crb->pIndex[0] < 1 || crb->pIndex[0] > 64) {
    return mdbErrorRequestMap(kind);
  }
  uint32_t row = crb->pIndex[0] - 1;
  const bool read = kind == MDB_GET_NEXT || kind == MDB_GET;
  std::lock_guard guard(gLock);
  switch (crb->localId) {
    case 10:
      if (read) return ulongSet(crb, row + 1), 0;
      return mdbErrorNotWritable();
    case 11:
      if (read) return ulongSet(crb, gRowValue[row]), 0;
      if (kind != MDB_VALIDATE) gRowValue[row] = ulongGet(crb);
      return 0;
    case 12:
      if (read) return octetSet(crb, gRowName[row].data(), static_cast<uint32_t>(gRowName[row].size())), 0;
      if (kind == MDB_VALIDATE) return crb->valueLen > 32 ? mdbErrorInvalidLength() : 0;
      gRowName[row].assign(reinterpret_cast<const char*>(octetGet(crb)), crb->valueLen);
      return 0;
    default:
      return mdbErrorNoSuchInstance();
  }
}

// A string index: the length, then one sub-id per character.
int findName(const uint32_t* index, uint32_t count) {
  for (int i = 0; i < 3; i++) {
    uint32_t n = static_cast<uint32_t>(strlen(kNames[i]));
    if (count != n + 1 || index[0] != n) continue;
    bool same = true;
    for (uint32_t k = 0; k < n && same; k++) same = index[1 + k] == static_cast<unsigned char>(kNames[i][k]);
    if (same) return i;
  }
  return -1;
}

uint32_t nameHandler(uint32_t kind, MdbCrb* crb) {
  int row;
  if (kind == MDB_GET_NEXT) {
    row = crb->indexSubIdCount == 0 ? 0 : findName(crb->pIndex, crb->indexSubIdCount) + 1;
    if (row <= 0 && crb->indexSubIdCount != 0) return mdbErrorNoNextInstance();  // unknown start: end here
    if (row >= 3) return mdbErrorNoNextInstance();
    uint32_t n = static_cast<uint32_t>(strlen(kNames[row]));
    crb->pIndex[0] = n;
    for (uint32_t k = 0; k < n; k++) crb->pIndex[1 + k] = static_cast<unsigned char>(kNames[row][k]);
    crb->indexSubIdCount = n + 1;
  } else {
    row = findName(crb->pIndex, crb->indexSubIdCount);
    if (row < 0) return mdbErrorRequestMap(kind);
  }
  if (kind != MDB_GET_NEXT && kind != MDB_GET) return mdbErrorNotWritable();
  if (crb->localId == 20) return octetSet(crb, kNames[row], static_cast<uint32_t>(strlen(kNames[row]))), 0;
  return ulongSet(crb, static_cast<uint32_t>(row + 1) * 11), 0;
}


const MdbEntryDesc gScalars = mdbEntryMake({1, 3, 6, 1, 4, 1, 47391, 2, 9990, 1}, 0, 1);
const MdbEntryDesc gRows = mdbEntryMake({1, 3, 6, 1, 4, 1, 47391, 2, 9990, 2, 1}, 1, 1, {"e2e:rowIndex"});
const MdbEntryDesc gNames = mdbEntryMake({1, 3, 6, 1, 4, 1, 47391, 2, 9990, 3, 1}, 1, 33, {"e2e:nameKey"});
const MdbObjectDesc gObjects[] = {
    {0, 1, 4, 1, 100, MDB_TYPE_INTEGER, MDB_ACCESS_RW, 1, scalarHandler, nullptr, "e2e:int"},
    {1, 2, 32, 0, 0, MDB_TYPE_OCTET_STRING, MDB_ACCESS_RW, 1, scalarHandler, nullptr, "e2e:text"},
    {2, 3, 4, 0, 0, MDB_TYPE_IPADDRESS, MDB_ACCESS_RW, 1, scalarHandler, nullptr, "e2e:ip"},
    {3, 4, 6, 0, 0, MDB_TYPE_MACADDRESS, MDB_ACCESS_RW, 1, scalarHandler, nullptr, "e2e:mac"},
    {4, 5, 64, 0, 0, MDB_TYPE_OID, MDB_ACCESS_RW, 1, scalarHandler, nullptr, "e2e:oid"},
    {5, 6, 8, 0, 0, MDB_TYPE_COUNTER64, MDB_ACCESS_RO, 1, scalarHandler, nullptr, "e2e:c64"},
    {6, 7, 8, 0, 0, MDB_TYPE_BRIDGEID, MDB_ACCESS_RW, 1, scalarHandler, nullptr, "e2e:bridge"},
    {7, 8, 4, 0, 0, MDB_TYPE_COUNTER, MDB_ACCESS_RO, 1, scalarHandler, nullptr, "e2e:counter"},
    {0, 9, 4, 0, 0, MDB_TYPE_INTEGER, MDB_ACCESS_RW, 1, scalarHandler, "e2e:int", "e2e:alias"},
    {8, 10, 4, 0, 0, MDB_TYPE_INTEGER, MDB_ACCESS_NA, 1, scalarHandler, nullptr, "e2e:hidden"},
    {10, 1, 4, 1, 64, MDB_TYPE_INTEGER, MDB_ACCESS_RO_INDEX, 17, rowHandler, nullptr, "e2e:rowIndex"},
    {11, 2, 4, 0, 0, MDB_TYPE_GAUGE, MDB_ACCESS_RW, 1, rowHandler, nullptr, "e2e:rowValue"},
    {12, 3, 32, 0, 0, MDB_TYPE_OCTET_STRING, MDB_ACCESS_RW, 1, rowHandler, nullptr, "e2e:rowName"},
    {20, 1, 32, 0, 0, MDB_TYPE_OCTET_STRING, MDB_ACCESS_RO_INDEX, 17, nameHandler, nullptr, "e2e:nameKey"},
    {21, 2, 4, 0, 0, MDB_TYPE_INTEGER, MDB_ACCESS_RO, 1, nameHandler, nullptr, "e2e:nameValue"},
};
const MdbObjectBinding gBindings[] = {
    {&gScalars, &gObjects[0]}, {&gScalars, &gObjects[1]},  {&gScalars, &gObjects[2]},  {&gScalars, &gObjects[3]},
    {&gScalars, &gObjects[4]}, {&gScalars, &gObjects[5]},  {&gScalars, &gObjects[6]},  {&gScalars, &gObjects[7]},
    {&gScalars, &gObjects[8]}, {&gScalars, &gObjects[9]},  {&gRows, &gObjects[10]},    {&gRows, &gObjects[11]},
    {&gRows, &gObjects[12]},   {&gNames, &gObjects[13]},   {&gNames, &gObjects[14]},   {nullptr, nullptr},
};

int e2eMibInit() {
  for (uint32_t i = 0; i < 64; i++) gRowValue[i] = (i + 1) * 10;
  return mdbModuleRegisterEx("e2e", 77, gBindings);
}

}  // namespace

int main(int argc, char** argv) {
  mdbMibInitAdd(e2eMibInit);
  return mdbProcessMain(argc, argv);
}
