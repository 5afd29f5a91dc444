// The interface service's substitute: the interfaces of the default device,
// their position records, trunks and growing traffic counters.
#ifndef SERVICES_SVC_IF_H
#define SERVICES_SVC_IF_H

#include <cstdint>

// Declares the interface services' attributes and fills in the default
// device: 24 Ethernet ports and 2 uplinks on slot 1, trunk 1 of two members,
// a management port, VLAN interface 1, two sub-interfaces of port 1/0/1 and
// one of the trunk.
void svcIfDefaults(void);

// An interface of the substitute service, for tests and the default device:
// its class (attribute 8), position record words and the filter flag byte.
struct SvcIfPosition {
  uint32_t system, slot, port, sub, unit, card;
  uint8_t flag;
};
int svcIfAdd(uint32_t ifIndex, uint32_t ifClass, const SvcIfPosition& position);

// Well-known interfaces of the default device.
enum : uint32_t {
  SVC_IF_ETH_FIRST = 1,     // ethernet1/0/1 .. 1/0/24: 1 .. 24
  SVC_IF_UPLINK_FIRST = 25, // ethernet1/1/1, 1/1/2: 25, 26
  SVC_IF_METH = 100,        // meth0
  SVC_IF_TRUNK_BASE = 200,  // eth-trunk n: 200 + n
  SVC_IF_VLAN_BASE = 300,   // vlan n: 300 + n
  SVC_IF_SUB_BASE = 1000,   // ethernet1/0/1.n: 1000 + n
  SVC_IF_TRUNK_SUB_BASE = 1100,  // eth-trunk1.n: 1100 + n
};

#endif
