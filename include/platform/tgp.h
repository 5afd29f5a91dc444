// Hardware layer and event bus of the platform.
#ifndef PLATFORM_TGP_H
#define PLATFORM_TGP_H

#include <cstdint>

// Hardware scalars: a small in-memory record keyed by attribute.
// Set with length 0 stores the u32 at value; with length > 0 stores that many
// bytes (at most 512). 0, or -1 for a null value or an over-long one.
int tgpHwilScalarSet(uint32_t unit, uint32_t attribute, const void* value, uint32_t length);
// Get of a u32 attribute writes 4 bytes at value; of a byte attribute, value is
// an MdbOctetValue whose length is the capacity in and the bytes copied out.
// An attribute never set reads as the u32 0. 0, or -1 for a null value.
int tgpHwilScalarGet(uint32_t unit, uint32_t attribute, void* value);

#endif
