// The snmpCommunity service: community strings and the view each one gives.
#ifndef SERVICES_SNMPCOMMUNITY_H
#define SERVICES_SNMPCOMMUNITY_H

#include "services/svc_binding.h"

struct SnmpCommunityKey {
  char name[32];
  uint32_t nameLen;
};
static_assert(sizeof(SnmpCommunityKey) == 36, "the key record of snmpCommunity is 36 bytes");

SVC_DECLARE_TABLE(snmpCommunity)

#endif
