// The mirrorVlanMac service: table operations over a key record, the VLAN id
// in the first field.
#ifndef SERVICES_MIRRORVLANMAC_H
#define SERVICES_MIRRORVLANMAC_H

#include "services/svc_binding.h"

struct MirrorVlanMacKey {
  uint32_t vid;
  uint8_t macAddress[6];
  uint16_t mask;
};
static_assert(sizeof(MirrorVlanMacKey) == 12, "the key record of mirrorVlanMac is 12 bytes");

SVC_DECLARE_TABLE(mirrorVlanMac)

#endif
