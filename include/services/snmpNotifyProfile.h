// The snmpNotifyProfile service: the filter profile of a target's parameters,
// keyed by the parameters' name.
#ifndef SERVICES_SNMPNOTIFYPROFILE_H
#define SERVICES_SNMPNOTIFYPROFILE_H

#include "services/svc_binding.h"

struct SnmpNotifyProfileKey {
  char name[32];
  uint32_t nameLen;
};
static_assert(sizeof(SnmpNotifyProfileKey) == 36, "the key record of snmpNotifyProfile is 36 bytes");

SVC_DECLARE_TABLE(snmpNotifyProfile)

#endif
