// The substitute services' operations, one line per service prefix.
#include "services/cli.h"
#include "services/clock.h"
#include "services/mirror.h"
#include "services/mirrorGroup.h"
#include "services/mirrorIf.h"
#include "services/mirrorIfMac.h"
#include "services/mirrorVlan.h"
#include "services/mirrorVlanMac.h"

SVC_DEFINE_SCALAR(cli)
SVC_DEFINE_SCALAR(clock)
SVC_DEFINE_SCALAR(mirror)
SVC_DEFINE_TABLE(mirrorGroup)
SVC_DEFINE_TABLE(mirrorIf)
SVC_DEFINE_TABLE(mirrorVlan)
SVC_DEFINE_TABLE(mirrorIfMac)
SVC_DEFINE_TABLE(mirrorVlanMac)
