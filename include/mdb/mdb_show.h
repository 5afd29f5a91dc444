// Diagnostics: the functions that print the dictionary and the values of
// objects, for a caller with access to the process (a debugger, a tool that
// links libmdbcore.a). The request journal and the two file exports that a
// client can ask for are declared in mdb_subsys.h.
//
// The functions that take a file descriptor print to the standard output
// (stdio) for fd 0, and with write() to any other descriptor; a negative fd
// is taken as 0 except by mdbModuleNodeShow, which refuses it.
#ifndef MDB_SHOW_H
#define MDB_SHOW_H

#include <cstdint>

#include "mdb/mdb_types.h"

// The kinds of mdbObjNameCheck.
enum : uint32_t {
  MDB_NAME_CHECK_MODULE = 1,  // a module's name
  MDB_NAME_CHECK_ROW = 2,     // a table row's entry name, bare or as "module:rowName"
  MDB_NAME_CHECK_OBJECT = 3,  // an object's full name
};

// Prints one object: the instance .0 of a scalar (walk 0), or every instance
// of a table column (walk non-zero). Each read is given 4 bytes, so longer
// values are shown cut. 0, or -1 if the read of a scalar fails.
int mdbObjectAllShow(int fd, const char* name, uint32_t walk);
// Prints one instance: name, OID with the index, and the value by the
// object's type. 0; -1 if the object is unknown; mdbErrorGenError() for a
// null value.
int mdbObjectValueShow(int fd, const char* name, const uint32_t* pIndex, uint32_t indexCount, const void* value,
                       uint32_t valueLen);
// Prints every accessible object of a module. 0, or -1 for an unknown module.
int mdbModuleShow(int fd, const char* moduleName);
// Prints the object "moduleName:shortName". 0 (also when the object is not
// there), or -1 for an unknown module or a negative fd.
int mdbModuleNodeShow(int fd, const char* moduleName, const char* shortName);
// Prints the module names with their object counts and the totals. 0.
int mdbModuleList(void);
// Prints the module table and the object table. 0.
int mdbHashShow(void);
// Prints a request record. 0.
int mdbStructureShow(const MdbCrb* mdb);
// 0 if `name` exists as a name of that kind, else -1.
int mdbObjNameCheck(const char* name, uint32_t kind);

#endif
