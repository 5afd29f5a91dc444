// The public interface of the mdb core, for programs that link libmdbcore.a
// and call the database in-process.
#ifndef MDB_MDB_H
#define MDB_MDB_H

#include "mdb/mdb_types.h"
#include "mdb/mdb_errors.h"
#include "mdb/containers.h"
#include "mdb/mdb_dict.h"
#include "mdb/mdb_dispatch.h"
#include "mdb/mdb_verbs.h"
#include "mdb/mdb_access.h"
#include "mdb/mdb_subsys.h"
#include "mdb/mdb_show.h"
#include "mdb/mdb_snmp.h"
#include "mdb/mdb_cmd.h"

#endif
