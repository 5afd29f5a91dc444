// The snmpNotify service: which targets (by tag) receive notifications, and how.
#ifndef SERVICES_SNMPNOTIFY_H
#define SERVICES_SNMPNOTIFY_H

#include "services/svc_binding.h"

struct SnmpNotifyKey {
  char name[32];
  uint32_t nameLen;
};
static_assert(sizeof(SnmpNotifyKey) == 36, "the key record of snmpNotify is 36 bytes");

SVC_DECLARE_TABLE(snmpNotify)

#endif
