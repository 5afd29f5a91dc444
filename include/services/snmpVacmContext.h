// The snmpVacmContext service: the contexts the agent knows.
#ifndef SERVICES_SNMPVACMCONTEXT_H
#define SERVICES_SNMPVACMCONTEXT_H

#include "services/svc_binding.h"

struct SnmpVacmContextKey {
  char name[32];
  uint32_t nameLen;
};
static_assert(sizeof(SnmpVacmContextKey) == 36, "the key record of snmpVacmContext is 36 bytes");

SVC_DECLARE_TABLE(snmpVacmContext)

#endif
