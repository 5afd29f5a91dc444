// The tgp service: the platform's device scalars (uptime, base MAC address, names), scalar group operations.
#ifndef SERVICES_TGP_H
#define SERVICES_TGP_H

#include "services/svc_binding.h"

SVC_DECLARE_SCALAR(tgp)

#endif
