// The tgpEthAgg service: the trunk service: a trunk's attributes, keyed by the trunk number passed by value.
#ifndef SERVICES_TGPETHAGG_H
#define SERVICES_TGPETHAGG_H

#include "services/svc_binding.h"

SVC_DECLARE_TABLE(tgpEthAgg)

#endif
