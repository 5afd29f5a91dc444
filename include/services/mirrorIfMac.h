// The mirrorIfMac service: table operations over a key record.
#ifndef SERVICES_MIRRORIFMAC_H
#define SERVICES_MIRRORIFMAC_H

#include "services/svc_binding.h"

struct MirrorIfMacKey {
  uint32_t ifIndex;
  uint8_t macAddress[6];
  uint16_t mask;
};
static_assert(sizeof(MirrorIfMacKey) == 12, "the key record of mirrorIfMac is 12 bytes");

SVC_DECLARE_TABLE(mirrorIfMac)

#endif
