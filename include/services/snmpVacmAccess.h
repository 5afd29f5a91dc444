// The snmpVacmAccess service: the view-based access rights of a group.
#ifndef SERVICES_SNMPVACMACCESS_H
#define SERVICES_SNMPVACMACCESS_H

#include "services/svc_binding.h"

// The lengths are 32-bit fields: the index codec keeps every string length
// in 32 bits.
struct SnmpVacmAccessKey {
  char groupName[32];
  char contextPrefix[32];
  uint8_t reserved[32];
  uint32_t groupNameLen;
  uint32_t contextPrefixLen;
  uint32_t securityModel;
  uint32_t securityLevel;
};
static_assert(sizeof(SnmpVacmAccessKey) == 112, "the key record of snmpVacmAccess is 112 bytes");

SVC_DECLARE_TABLE(snmpVacmAccess)

#endif
