// The snmpVacmSecGroup service: which group a security name belongs to.
#ifndef SERVICES_SNMPVACMSECGROUP_H
#define SERVICES_SNMPVACMSECGROUP_H

#include "services/svc_binding.h"

struct SnmpVacmSecGroupKey {
  uint32_t securityModel;
  char securityName[32];
  uint32_t securityNameLen;
};
static_assert(sizeof(SnmpVacmSecGroupKey) == 40, "the key record of snmpVacmSecGroup is 40 bytes");

SVC_DECLARE_TABLE(snmpVacmSecGroup)

#endif
