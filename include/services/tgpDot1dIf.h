// The tgpDot1dIf service: the bridge's ports, keyed by the bridge port number
// (attribute 87: the port's ifIndex).
#ifndef SERVICES_TGPDOT1DIF_H
#define SERVICES_TGPDOT1DIF_H

#include <cstdint>

int tgpDot1dIfGetApi(uint32_t port, uint32_t attributeId, void* value);

#endif
