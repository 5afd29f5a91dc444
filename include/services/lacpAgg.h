// The lacpAgg service: a trunk's LACP aggregator, keyed by the trunk's ifIndex
// (attribute 11: the maximum number of active links).
#ifndef SERVICES_LACPAGG_H
#define SERVICES_LACPAGG_H

#include <cstdint>

int lacpAggGetApi(uint32_t trunkIfIndex, uint32_t attributeId, void* value);
int lacpAggSetApi(uint32_t trunkIfIndex, uint32_t attributeId, void* value);

#endif
