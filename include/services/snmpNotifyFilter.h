// The snmpNotifyFilter service: the subtrees a filter profile lets through
// or holds back.
#ifndef SERVICES_SNMPNOTIFYFILTER_H
#define SERVICES_SNMPNOTIFYFILTER_H

#include "services/svc_binding.h"

struct SnmpNotifyFilterKey {
  char profileName[32];
  uint32_t profileNameLen;
  uint32_t subtree[32];
  uint32_t subtreeLen;
};
static_assert(sizeof(SnmpNotifyFilterKey) == 168, "the key record of snmpNotifyFilter is 168 bytes");

SVC_DECLARE_TABLE(snmpNotifyFilter)

#endif
