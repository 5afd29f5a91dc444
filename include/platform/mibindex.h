// Index conversions of the platform: between index sub-ids and strings,
// IPv4 and IPv6 addresses.
#ifndef PLATFORM_MIBINDEX_H
#define PLATFORM_MIBINDEX_H

#include <cstdint>

// Copies `length` sub-ids, the low byte of each, into buffer (at most
// capacity bytes). The number of sub-ids taken, or -1 if they do not fit or
// an argument is null.
int mibindex2str(const uint32_t* subIds, uint32_t length, char* buffer, uint32_t capacity);
// Writes `length` bytes of buffer as sub-ids (at most capacity). The number
// written, or -1.
int str2mibindex(const char* buffer, uint32_t length, uint32_t* subIds, uint32_t capacity);
// The address of 4 sub-ids, most significant first, in host order.
uint32_t ip4MibIndex2Addr(const uint32_t* subIds);
void ip4Addr2MibIndex(uint32_t address, uint32_t* subIds);
// 16 sub-ids to 16 bytes and back.
void ip6MibIndex2Addr(const uint32_t* subIds, uint8_t* bytes);
void ip6Addr2MibIndex(const uint8_t* bytes, uint32_t* subIds);

#endif
