// The snmpSysOR service: the agent's capabilities (sysORTable), keyed by the
// integer sysORIndex passed by value.
#ifndef SERVICES_SNMPSYSOR_H
#define SERVICES_SNMPSYSOR_H

#include "services/svc_binding.h"

SVC_DECLARE_TABLE(snmpSysOR)

#endif
