// The mirrorGroup service: table operations; the key is the integer index.
#ifndef SERVICES_MIRRORGROUP_H
#define SERVICES_MIRRORGROUP_H

#include "services/svc_binding.h"

SVC_DECLARE_TABLE(mirrorGroup)

#endif
