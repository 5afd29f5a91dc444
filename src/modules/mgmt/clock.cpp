// clock: time zone, summer time and the clocks of the switch.
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/clock.h"

#include <cstdio>

namespace {

constexpr FwEntry kScalars =
    fwScalars("clock", {1, 3, 6, 1, 4, 1, 47391, 2, 613, 1}, FW_SCALAR_OPS(clock)).buffer(512);

constexpr FwObject kObjects[] = {
    fwObject(&kScalars, 0, 1, "clock:clockClockTimeZone").octets(128).attr(0).maxLength(128),
    fwObject(&kScalars, 1, 2, "clock:clockClockTimeZoneName").octets(128).attr(6).maxLength(128),
    fwObject(&kScalars, 2, 3, "clock:clockDfltClockTimeZoneName").octets(128).ro().attr(7),
    fwObject(&kScalars, 3, 4, "clock:clockClockTimeZoneOffset").integer().attr(1),
    fwObject(&kScalars, 4, 5, "clock:clockDfltClockTimeZoneOffset").integer().ro().attr(2),
    fwObject(&kScalars, 5, 6, "clock:clockClockSummerTime").octets(512).attr(5).maxLength(512),
    // Both clocks are attribute 3; only the hardware clock is written.
    fwObject(&kScalars, 6, 7, "clock:clockHardWareTime").octets(512).attr(3).maxLength(512),
    fwObject(&kScalars, 7, 8, "clock:clockSoftWareTime").octets(512).ro().attr(3),
};
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int clockMibInit(void) {
  if (fwModuleRegister("clock", 0, kBindings.data()) != 0) {
    printf("mdbModuleRegister %s Error\n\r", "clock");
    return -1;
  }
  return 0;
}
