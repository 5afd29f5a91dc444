// The tgpEthAggIf service: a trunk's attributes reached by the trunk's ifIndex
// (its entry status, and the member add and remove actions).
#ifndef SERVICES_TGPETHAGGIF_H
#define SERVICES_TGPETHAGGIF_H

#include <cstdint>

int tgpEthAggIfGetApi(uint32_t trunkIfIndex, uint32_t attributeId, void* value);
int tgpEthAggIfSetApi(uint32_t trunkIfIndex, uint32_t attributeId, void* value);

#endif
