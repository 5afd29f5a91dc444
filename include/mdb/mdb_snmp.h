// Registration with the SNMP agent: the sysORTable rows and the objects the
// agent serves. mdbSnmpInit and mdbOROidReplace are declared with the other
// subsystem entry points in mdb_subsys.h.
#ifndef MDB_SNMP_H
#define MDB_SNMP_H

#include <cstdint>

#include "mdb/mdb_subsys.h"

// One row of the sysORTable list: the MIB's OID and its text.
struct MdbSysORRow {
  uint32_t oidLength;  // number of arcs; 0 ends the list
  uint32_t oid[16];    // unused tail zero
  const char* description;
};

// The MIBs the device implements, whether or not their modules are
// registered; ended by a row with oidLength 0. Writable: the enterprise OID
// rewrite moves the private rows at start-up.
enum : uint32_t { MDB_SYSOR_ROWS = 135 };
extern MdbSysORRow gSystemORList[MDB_SYSOR_ROWS + 1];

// Hands every row of gSystemORList to the agent. 0.
int mdbSnmpORInit(void);
// Hands every object not hidden from the agent to it, module by module,
// under the module read lock. 0, or -1 if the agent refused one with -1.
int mdbSnmpMibInit(void);
// Hides an object from the agent (visible 0) or shows it again, for the next
// registration walk. 0, or mdbErrorNoSuchObject() for an unknown name.
uint32_t mdbObjectSnmpAccess(const char* name, uint32_t visible);

// What the last mdbSnmpORInit and mdbSnmpMibInit did on the calling thread:
// objects offered to the agent, objects skipped as hidden, objects the agent
// refused, and sysORTable rows offered.
struct MdbSnmpTally {
  uint32_t visible;
  uint32_t hidden;
  uint32_t failed;
  uint32_t orRows;
};
void mdbSnmpTallyGet(MdbSnmpTally* out);

// Command 11 over the sockets. With no arguments it runs mdbSnmpInit; with
// (list, offset, maxRows) it reads a page of what the agent was given.
enum : uint32_t {
  MDB_SNMP_LIST_OBJECTS = 1,  // the registered objects
  MDB_SNMP_LIST_SYSOR = 2,    // the sysORTable rows
};

#endif
