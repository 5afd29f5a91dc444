// SNMP agent library: the two calls by which the agent is told which objects
// it serves and which MIBs go into its sysORTable.
//
// Our substitute keeps what it is given in a fixed store, so that a client
// (command 11, mdbctl snmp-init --json) and the tests can read it back; a
// product build links the agent's real library in its place. Registrations
// are kept in the order they first arrived. A repeat of a registration (the
// same name or description with the same OID) updates the record in place
// and counts it, so walking the dictionary again does not grow the store.
// All calls are thread-safe.
#ifndef PLATFORM_SNMP_AGENT_H
#define PLATFORM_SNMP_AGENT_H

#include <cstdint>

enum : uint32_t {
  SNMP_AGENT_MAX_OBJECTS = 20480,  // as many objects as the object table holds
  SNMP_AGENT_MAX_OR_ROWS = 256,    // sysORTable rows
  SNMP_AGENT_MAX_OID = 32,         // arcs of an OID
  SNMP_AGENT_MAX_NAME = 128,       // bytes of a name or description, its NUL included
};

// Results of the two registrations.
enum : int {
  SNMP_AGENT_OK = 0,
  SNMP_AGENT_ERR_FULL = -1,     // the store holds no more records
  SNMP_AGENT_ERR_INVALID = 1,   // null name or OID, no arcs, too many arcs, or a name too long
};

// Records one sysORTable row. The OID is copied.
int snmpORObjRegister(const char* description, const uint32_t* oid, uint32_t oidLength);
// Records one object: its full name, its full OID (the object's sub-id the
// last arc), the type code and access bits, and the largest number of index
// sub-ids of an instance. The OID is copied: the caller reuses its array.
int snmpMibObjRegister(const char* objectName, const uint32_t* oid, uint32_t oidLength, uint8_t type,
                       uint8_t access, uint32_t indexCountMax);

// ---------------------------------------------------------------- reading back
struct SnmpAgentObject {
  char name[SNMP_AGENT_MAX_NAME];
  uint32_t oid[SNMP_AGENT_MAX_OID];
  uint32_t oidLength;
  uint8_t type;
  uint8_t access;
  uint32_t indexCountMax;
  uint32_t registrations;  // how many times it was registered
};

struct SnmpAgentORRow {
  char description[SNMP_AGENT_MAX_NAME];
  uint32_t oid[SNMP_AGENT_MAX_OID];
  uint32_t oidLength;
  uint32_t registrations;
};

// Number of records; positions 0 to count - 1 stay valid, as records are
// never removed while the process runs.
uint32_t snmpAgentObjectCount(void);
uint32_t snmpAgentORCount(void);
// Copies the record at `position`. 0, or -1 if there is none.
int snmpAgentObjectGet(uint32_t position, SnmpAgentObject* out);
int snmpAgentORGet(uint32_t position, SnmpAgentORRow* out);
// The record of an object by its name (the first one, if the same name was
// registered under several OIDs). 0, or -1 if the agent does not know it.
int snmpAgentObjectFind(const char* name, SnmpAgentObject* out);

// ---------------------------------------------------------------- tests
// Forgets every record.
void snmpAgentReset(void);
// From now on the registration of the object `objectName` returns `result`
// (non-zero) and records nothing; a null name ends it.
void snmpAgentFailSet(const char* objectName, int result);

#endif
