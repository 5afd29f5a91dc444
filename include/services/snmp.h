// The snmp service: the SNMP agent's own settings, engine and counters, scalar group operations.
#ifndef SERVICES_SNMP_H
#define SERVICES_SNMP_H

#include "services/svc_binding.h"

SVC_DECLARE_SCALAR(snmp)

#endif
