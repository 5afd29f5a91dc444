// snmptraptimer: the timed trap, and the variables the device's traps carry.
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/snmp.h"
#include "services/tgp.h"

#include <cstdio>

namespace {

#define TRAPTIMER_ROOT 1, 3, 6, 1, 4, 1, 47391, 2, 4007, 1

constexpr FwEntry kTimer = fwScalars("snmp", {TRAPTIMER_ROOT}, FW_SCALAR_OPS(snmp)).buffer(128);
// The trap variables: the device's identity from the platform; a failed read
// is a generic error.
constexpr FwEntry kTrapVariables =
    fwScalars("tgp", {TRAPTIMER_ROOT, 3}, FW_SCALAR_OPS(tgp)).buffer(128).fail(FW_FAIL_GENERIC);

constexpr FwObject kObjects[] = {
    fwObject(&kTimer, 0, 1, "snmptraptimer:timerTrapInterval").timeticks().attr(94),
    fwObject(&kTimer, 1, 2, "snmptraptimer:timerTrapEnable").integer().attr(92).range(1, 2),
    // No user or address is known to the device: both read empty.
    fwObject(&kTrapVariables, 2, 1, "snmptraptimer:trapUserID").octets(64).ro().constant_(0),
    fwObject(&kTrapVariables, 3, 2, "snmptraptimer:trapIPAddr").octets(64).ro().constant_(0),
    fwObject(&kTrapVariables, 4, 3, "snmptraptimer:trapMacAddr").octets(6).ro().attr(6),
    fwObject(&kTrapVariables, 5, 4, "snmptraptimer:trapDevName").octets(128).ro().attr(50),
    fwObject(&kTrapVariables, 6, 5, "snmptraptimer:trapProductName").octets(128).ro().attr(58),
    fwObject(&kTrapVariables, 7, 6, "snmptraptimer:trapProductSerialNumber").octets(128).ro().attr(49),
};
static_assert(sizeof kObjects / sizeof kObjects[0] == 8, "snmptraptimer has 8 objects");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int snmpTimerTrapMibInit(void) {
  if (fwModuleRegister("snmptraptimer", 0, kBindings.data()) != 0) {
    printf("mdbModuleRegister %s Error\n\r", "snmptraptimer");
    return -1;
  }
  return 0;
}
