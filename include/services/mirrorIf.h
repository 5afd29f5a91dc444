// The mirrorIf service: table operations; the key is the integer index.
#ifndef SERVICES_MIRRORIF_H
#define SERVICES_MIRRORIF_H

#include "services/svc_binding.h"

SVC_DECLARE_TABLE(mirrorIf)

#endif
