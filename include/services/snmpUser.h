// The snmpUser service: the users of the user-based security model and
// their keys.
#ifndef SERVICES_SNMPUSER_H
#define SERVICES_SNMPUSER_H

#include "services/svc_binding.h"

// The lengths are 32-bit fields: the index codec keeps every string length
// in 32 bits.
struct SnmpUserKey {
  uint8_t engineId[64];
  char userName[32];
  uint32_t userNameLen;
  uint32_t engineIdLen;
};
static_assert(sizeof(SnmpUserKey) == 104, "the key record of snmpUser is 104 bytes");

SVC_DECLARE_TABLE(snmpUser)

#endif
