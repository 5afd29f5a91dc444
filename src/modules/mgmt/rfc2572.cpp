// rfc2572: the message processing counters (SNMP-MPD-MIB).
#include "framework/fw.h"
#include "mdb/mdb_modules.h"
#include "services/snmp.h"

namespace {

constexpr FwEntry kStats = fwScalars("snmp", {1, 3, 6, 1, 6, 3, 11, 2, 1}, FW_SCALAR_OPS(snmp));

constexpr FwObject kObjects[] = {
    fwObject(&kStats, 0, 1, "rfc2572:snmpUnknownSecurityModels").counter().ro().attr(85),
    fwObject(&kStats, 1, 2, "rfc2572:snmpInvalidMsgs").counter().ro().attr(84),
    fwObject(&kStats, 2, 3, "rfc2572:snmpUnknownPDUHandlers").counter().ro().attr(83),
};
static_assert(sizeof kObjects / sizeof kObjects[0] == 3, "rfc2572 has 3 objects");
constexpr auto kBindings = fwBindings(kObjects);

}  // namespace

int rfc2572MibInit(void) { return fwModuleRegister("rfc2572", 0, kBindings.data()); }
