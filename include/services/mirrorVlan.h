// The mirrorVlan service: table operations; the key is the integer index.
#ifndef SERVICES_MIRRORVLAN_H
#define SERVICES_MIRRORVLAN_H

#include "services/svc_binding.h"

SVC_DECLARE_TABLE(mirrorVlan)

#endif
