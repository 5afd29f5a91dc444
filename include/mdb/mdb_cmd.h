// The command sockets and the function map they serve.
#ifndef MDB_CMD_H
#define MDB_CMD_H

#include <cstddef>
#include <cstdint>

#include "platform/icm.h"
#include "platform/sil.h"

// Command ids of the map. 1 to 15 are the verbs and queries; 16 is our own
// chained GetNext, which answers up to MDB_CHAIN_MAX_STEPS consecutive
// mdbGetNext results in one reply.
enum MdbCommand : uint16_t {
  MDB_CMD_GET_NEXT = 1,
  MDB_CMD_COMMIT = 2,
  MDB_CMD_VALIDATE = 3,
  MDB_CMD_NVM_SET = 4,
  MDB_CMD_SET_API = 5,
  MDB_CMD_GET_API = 6,
  MDB_CMD_OBJ_INFO_GET = 7,
  MDB_CMD_OBJECT_NAME_NEXT_GET = 8,
  MDB_CMD_OBJ_NAME_GET = 9,
  MDB_CMD_MODULE_GET = 10,
  MDB_CMD_SNMP_INIT = 11,
  MDB_CMD_SYS_STATE_SET = 12,
  MDB_CMD_SCALAR_GET_API = 13,
  MDB_CMD_SCALAR_SET_API = 14,
  MDB_CMD_SCALAR_SYNC_API = 15,
  MDB_CMD_GET_NEXT_CHAIN = 16,
};

enum : uint32_t {
  MDB_FUNC_MAP_ROWS = 17,     // the 16 rows of the verbs, and the chained GetNext
  MDB_CMD_SOCKETS = 25,
  MDB_CHAIN_MAX_STEPS = 256,
};

extern const IcmFuncMapRow gMdbFuncMap[MDB_FUNC_MAP_ROWS];

// The path of command socket `socket` (0-15 "mdbcmd-r<n>", 16-23
// "mdbcmd-w<n>", 24 "mdbcmd") in the run directory. 0 or -1.
inline int mdbCmdSocketPath(char* buffer, size_t capacity, uint32_t socket) {
  char name[32];
  if (socket < 16) snprintf(name, sizeof name, "mdbcmd-r%u.socket", socket);
  else if (socket < 24) snprintf(name, sizeof name, "mdbcmd-w%u.socket", socket - 16);
  else if (socket == 24) snprintf(name, sizeof name, "mdbcmd.socket");
  else return -1;
  return silRunPath(buffer, capacity, name);
}

#endif
