// The snmpTargetParams service: how notifications are sent to a target (the
// message model, security model, name and level).
#ifndef SERVICES_SNMPTARGETPARAMS_H
#define SERVICES_SNMPTARGETPARAMS_H

#include "services/svc_binding.h"

// The same record as snmpTargetAddr's: a name of at most 115 characters.
struct SnmpTargetParamsKey {
  char name[116];
  uint32_t nameLen;
};
static_assert(sizeof(SnmpTargetParamsKey) == 120, "the key record of snmpTargetParams is 120 bytes");

SVC_DECLARE_TABLE(snmpTargetParams)

#endif
