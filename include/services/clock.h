// The clock service: scalar group operations.
#ifndef SERVICES_CLOCK_H
#define SERVICES_CLOCK_H

#include "services/svc_binding.h"

SVC_DECLARE_SCALAR(clock)

#endif
