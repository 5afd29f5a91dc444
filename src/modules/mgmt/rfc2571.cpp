// rfc2571: the SNMP engine's identity and clock (SNMP-FRAMEWORK-MIB).
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/snmp.h"

namespace {

constexpr int32_t kIntMax = 2147483647;

// The engine's values belong to the service; a failed read delivers what
// the slot and buffer hold.
constexpr FwEntry kEngine =
    fwScalars("snmp", {1, 3, 6, 1, 6, 3, 10, 2, 1}, FW_SCALAR_OPS(snmp)).buffer(128).fail(FW_FAIL_IGNORE);

constexpr FwObject kObjects[] = {
    fwObject(&kEngine, 0, 1, "rfc2571:snmpEngineID").octets(32).ro().attr(40),
    fwObject(&kEngine, 1, 2, "rfc2571:snmpEngineBoots").integer().ro().catalogued(1, kIntMax).attr(41),
    fwObject(&kEngine, 2, 3, "rfc2571:snmpEngineTime").integer().ro().catalogued(0, kIntMax).attr(42),
    fwObject(&kEngine, 3, 4, "rfc2571:snmpEngineMaxMessageSize").integer().ro().catalogued(484, kIntMax).attr(43),
};
static_assert(sizeof kObjects / sizeof kObjects[0] == 4, "rfc2571 has 4 objects");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int rfc2571MibInit(void) { return fwModuleRegister("rfc2571", 0, kBindings.data()); }
