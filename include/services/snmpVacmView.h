// The snmpVacmView service: the subtree families that make up a view.
#ifndef SERVICES_SNMPVACMVIEW_H
#define SERVICES_SNMPVACMVIEW_H

#include "services/svc_binding.h"

// The lengths are 32-bit fields: the index codec keeps every string and OID
// length in 32 bits.
struct SnmpVacmViewKey {
  char viewName[32];
  uint32_t subtree[32];
  uint32_t viewNameLen;
  uint32_t subtreeLen;
};
static_assert(sizeof(SnmpVacmViewKey) == 168, "the key record of snmpVacmView is 168 bytes");

SVC_DECLARE_TABLE(snmpVacmView)

#endif
