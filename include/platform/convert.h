// Text conversions of the platform: a MAC address, an OID and a tick count,
// each into a caller's text buffer. None of them writes past the size it is
// given, and each leaves a NUL-terminated text.
#ifndef PLATFORM_CONVERT_H
#define PLATFORM_CONVERT_H

#include <cstddef>
#include <cstdint>

enum : uint32_t {
  MAC_STR_SIZE = 18,    // "xx:xx:xx:xx:xx:xx" and its NUL
  TICKS_STR_SIZE = 40,  // the longest tick text and its NUL
};

// The 6 bytes at `mac` as "xx:xx:xx:xx:xx:xx" (lower-case hex) in `buffer`
// of `size` bytes, cut to fit. A null `mac` gives the empty text. Returns
// `buffer`.
char* macToStr(const uint8_t* mac, char* buffer, size_t size);

// The `count` arcs at `oid` dotted ("1.3.6.1"), then, if `suffix` is not 0,
// `suffix` as one more arc. At most `maxLength` characters and a NUL, so
// `buffer` holds maxLength + 1 bytes; an arc that does not fit whole ends the
// text. `oid` need not be aligned. Returns the number of characters written.
uint32_t oid2StrWithSuffix(const uint32_t* oid, uint32_t count, uint32_t suffix, char* buffer, uint32_t maxLength);

// A tick count in hundredths of a second as "D days, HH:MM:SS.cc" in
// `buffer` of `size` bytes, cut to fit. Returns `buffer`.
char* ticksToTimeDateFormat(uint32_t ticks, char* buffer, size_t size);

#endif
