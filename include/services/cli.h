// The cli service: scalar group operations.
#ifndef SERVICES_CLI_H
#define SERVICES_CLI_H

#include "services/svc_binding.h"

SVC_DECLARE_SCALAR(cli)

#endif
