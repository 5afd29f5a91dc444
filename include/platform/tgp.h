// Hardware layer and event bus of the platform.
#ifndef PLATFORM_TGP_H
#define PLATFORM_TGP_H

#include <cstddef>
#include <cstdint>
#include <cstdio>

// Hardware scalars: a small in-memory record keyed by attribute.
// Set with length 0 stores the u32 at value; with length > 0 stores that many
// bytes (at most 512). 0, or -1 for a null value or an over-long one.
int tgpHwilScalarSet(uint32_t unit, uint32_t attribute, const void* value, uint32_t length);
// Get of a u32 attribute writes 4 bytes at value; of a byte attribute, value is
// an MdbOctetValue whose length is the capacity in and the bytes copied out.
// An attribute never set reads as the u32 0. 0, or -1 for a null value.
int tgpHwilScalarGet(uint32_t unit, uint32_t attribute, void* value);

// The event bus: a message sent to a group reaches every listener of that
// group. Each listener is a local datagram socket in the run directory named
// "mdbbus-<group>-<id>.socket"; a sender delivers to each such file and
// removes those of listeners that are gone. Needs no privileges.
// Returns the number of listeners reached, or -1 if nothing could be sent.
int tgpNetlinkSGrpSend(uint32_t group, uint32_t flags, const void* message, uint32_t length);

// The prefix of a group's listener files ("mdbbus-90-").
inline int tgpBusPrefix(char* buffer, size_t capacity, uint32_t group) {
  int n = snprintf(buffer, capacity, "mdbbus-%u-", group);
  return n >= 0 && static_cast<size_t>(n) < capacity ? 0 : -1;
}

#endif
