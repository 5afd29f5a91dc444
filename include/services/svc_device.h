// The substitute services at start: the built-in default device, the
// provided attributes (clocks, configuration actions), and the start file.
#ifndef SERVICES_SVC_DEVICE_H
#define SERVICES_SVC_DEVICE_H

#include <cstddef>

// Fills the store with the default device, then loads the start file if one
// was saved. Call once the modules have registered. 0, or -1 if a start file
// exists and could not be loaded (the default device then stays).
int svcStart(void);
// The default device alone (tests).
void svcDefaultDevice(void);
// A path of the switch's "/ram" directory, moved into the directory the
// option "mdb.ramdir" names (default "/ram"). 0, or -1 if it does not fit.
int svcRamPath(const char* path, char* out, size_t capacity);

#endif
