// The tgpIf service: the interface service: every interface's attributes, keyed by its ifIndex passed by value.
#ifndef SERVICES_TGPIF_H
#define SERVICES_TGPIF_H

#include "services/svc_binding.h"

SVC_DECLARE_TABLE(tgpIf)

#endif
