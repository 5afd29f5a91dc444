// The snmpTargetAddr service: where notifications go (SNMP-TARGET-MIB's
// address table and the private columns of the same rows).
#ifndef SERVICES_SNMPTARGETADDR_H
#define SERVICES_SNMPTARGETADDR_H

#include "services/svc_binding.h"

enum : uint32_t { SNMP_TARGET_NAME_MAX = 115 };  // characters of a name; the field keeps one more byte

struct SnmpTargetAddrKey {
  char name[116];
  uint32_t nameLen;
};
static_assert(sizeof(SnmpTargetAddrKey) == 120, "the key record of snmpTargetAddr is 120 bytes");

SVC_DECLARE_TABLE(snmpTargetAddr)

#endif
