// Fuzzes the command-socket frames: the decoder, and every command of the
// function map with whatever arguments a frame carries, down through the
// verbs, the dispatcher, the handlers and the substitute services.
#include "fuzz_support.h"

#include "mdb/mdb_cmd.h"
#include "platform/icm.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  mdbfuzz::database();
  if (size > ICM_MAX_REQUEST) return 0;
  // The server reads the frame into its own buffer.
  std::vector<uint8_t> frame(data, data + size);
  uint32_t length = 0;
  if (icmParseHeader(frame.data(), static_cast<uint32_t>(frame.size()), ICM_MAX_REQUEST, &length) != ICM_STATUS_OK ||
      length > frame.size())
    return 0;
  static IcmRequest request;
  if (icmDecode(frame.data(), length, &request, nullptr, ICM_MAX_ARGS) != ICM_STATUS_OK) return 0;
  if (request.command >= MDB_FUNC_MAP_ROWS || gMdbFuncMap[request.command].fn == nullptr) return 0;
  // The exports write files where the request says: not here.
  uint32_t attribute = 0;
  if (request.command >= MDB_CMD_SCALAR_GET_API && request.command <= MDB_CMD_SCALAR_SYNC_API &&
      icmArgU32(&request, 1, &attribute) && attribute <= 1)
    return 0;
  static uint8_t reply[ICM_MAX_REPLY];
  IcmWriter w;
  icmBegin(&w, reply, sizeof reply);
  gMdbFuncMap[request.command].fn(&request, &w);
  icmEnd(&w, request.command, request.sequence, 0);
  return 0;
}
