// Index conversions: each sub-id of an address or a string carries one byte.
#include "platform/mibindex.h"

int mibindex2str(const uint32_t* subIds, uint32_t length, char* buffer, uint32_t capacity) {
  if (subIds == nullptr || buffer == nullptr || length > capacity) return -1;
  for (uint32_t i = 0; i < length; i++) buffer[i] = static_cast<char>(subIds[i] & 0xFFu);
  return static_cast<int>(length);
}

int str2mibindex(const char* buffer, uint32_t length, uint32_t* subIds, uint32_t capacity) {
  if (subIds == nullptr || (buffer == nullptr && length != 0) || length > capacity) return -1;
  for (uint32_t i = 0; i < length; i++) subIds[i] = static_cast<unsigned char>(buffer[i]);
  return static_cast<int>(length);
}

uint32_t ip4MibIndex2Addr(const uint32_t* s) {
  return ((s[0] & 0xFFu) << 24) | ((s[1] & 0xFFu) << 16) | ((s[2] & 0xFFu) << 8) | (s[3] & 0xFFu);
}

void ip4Addr2MibIndex(uint32_t address, uint32_t* s) {
  s[0] = address >> 24;
  s[1] = (address >> 16) & 0xFFu;
  s[2] = (address >> 8) & 0xFFu;
  s[3] = address & 0xFFu;
}

void ip6MibIndex2Addr(const uint32_t* s, uint8_t* bytes) {
  for (int i = 0; i < 16; i++) bytes[i] = static_cast<uint8_t>(s[i] & 0xFFu);
}

void ip6Addr2MibIndex(const uint8_t* bytes, uint32_t* s) {
  for (int i = 0; i < 16; i++) s[i] = bytes[i];
}
