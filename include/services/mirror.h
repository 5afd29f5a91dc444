// The mirror service: scalar group operations.
#ifndef SERVICES_MIRROR_H
#define SERVICES_MIRROR_H

#include "services/svc_binding.h"

SVC_DECLARE_SCALAR(mirror)

#endif
