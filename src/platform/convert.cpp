// Text conversions of the platform.
#include "platform/convert.h"

#include <cstdio>
#include <cstring>

char* macToStr(const uint8_t* mac, char* buffer, size_t size) {
  if (buffer == nullptr || size == 0) return buffer;
  if (mac == nullptr) {
    buffer[0] = '\0';
    return buffer;
  }
  snprintf(buffer, size, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
  return buffer;
}

uint32_t oid2StrWithSuffix(const uint32_t* oid, uint32_t count, uint32_t suffix, char* buffer, uint32_t maxLength) {
  if (buffer == nullptr) return 0;
  buffer[0] = '\0';
  if (oid == nullptr) count = 0;
  const auto* bytes = reinterpret_cast<const unsigned char*>(oid);
  uint32_t length = 0;
  uint32_t total = count + (suffix != 0 ? 1u : 0u);
  for (uint32_t i = 0; i < total; i++) {
    uint32_t arc = suffix;
    if (i < count) memcpy(&arc, bytes + static_cast<size_t>(i) * sizeof arc, sizeof arc);
    char piece[16];
    int n = snprintf(piece, sizeof piece, i == 0 ? "%u" : ".%u", arc);
    if (n <= 0 || static_cast<uint32_t>(n) > maxLength - length) break;
    memcpy(buffer + length, piece, static_cast<size_t>(n) + 1);
    length += static_cast<uint32_t>(n);
  }
  return length;
}

char* ticksToTimeDateFormat(uint32_t ticks, char* buffer, size_t size) {
  if (buffer == nullptr || size == 0) return buffer;
  uint32_t centis = ticks % 100;
  uint32_t seconds = ticks / 100;
  snprintf(buffer, size, "%u days, %02u:%02u:%02u.%02u", seconds / 86400, seconds / 3600 % 24, seconds / 60 % 60,
           seconds % 60, centis);
  return buffer;
}
